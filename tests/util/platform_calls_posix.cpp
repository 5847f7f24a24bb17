// A program's symbols come before those of its libraries: defining them here puts us in front.
#include <dlfcn.h>

#include "util/platform_calls.h"

namespace tk::test {
namespace {

template <class Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

bool StandInFront() {
    return true;
}

const OwnFunctions& Own() {
    static const OwnFunctions own = {
        Next<decltype(&FrontBeep)>("Beep"),
        Next<decltype(&FrontSleep)>("Sleep"),
        Next<decltype(&FrontRegisterEventSource)>("RegisterEventSourceA"),
        Next<decltype(&FrontReportEvent)>("ReportEventA"),
        Next<decltype(&FrontDeregisterEventSource)>("DeregisterEventSource"),
        Next<decltype(&FrontGetModuleFileName)>("GetModuleFileNameA"),
        Next<decltype(&FrontGetTickCount)>("GetTickCount"),
    };
    return own;
}

const SamplePath kSamplePath = {
    "/opt/库存/bin/stock.v2.exe", "", "/opt/库存/bin/", "stock.v2", ".exe", "/opt/库存/bin/"};
const SamplePath kSamplePathWithoutExtension = {"/stock", "", "/", "stock", "", "/"};

std::string LongFolder() {
    return "/" + std::string(120, 'a') + "/" + std::string(120, 'a') + "/";
}

}  // namespace tk::test

BOOL Beep(DWORD dwFreq, DWORD dwDuration) {
    return tk::test::FrontBeep(dwFreq, dwDuration);
}

void Sleep(DWORD dwMilliseconds) {
    tk::test::FrontSleep(dwMilliseconds);
}

HANDLE RegisterEventSourceA(LPCSTR lpUNCServerName, LPCSTR lpSourceName) {
    return tk::test::FrontRegisterEventSource(lpUNCServerName, lpSourceName);
}

BOOL ReportEventA(HANDLE hEventLog, WORD wType, WORD wCategory, DWORD dwEventID, PSID lpUserSid, WORD wNumStrings,
                  DWORD dwDataSize, LPCSTR* lpStrings, LPVOID lpRawData) {
    return tk::test::FrontReportEvent(hEventLog, wType, wCategory, dwEventID, lpUserSid, wNumStrings, dwDataSize,
                                      lpStrings, lpRawData);
}

BOOL DeregisterEventSource(HANDLE hEventLog) {
    return tk::test::FrontDeregisterEventSource(hEventLog);
}

DWORD GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize) {
    return tk::test::FrontGetModuleFileName(hModule, lpFilename, nSize);
}

DWORD GetTickCount() {
    return tk::test::FrontGetTickCount();
}
