// tests/util/platform_calls.h - what the library asks of the event log, the speaker and the clock while somebody
// listens.
//
//   PlatformCalls calls;                 // from here on nothing is logged, sounded or waited for
//   AddWarnLog("a", "b", 0, NULL);
//   EXPECT_EQ(calls.Records().at(0).strings, ...);
//
// The calls reach us because this program stands in front of the platform: by its symbols where programs come first in
// the search for them, by the library's import table elsewhere.
#pragma once

#include <windows.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace tk::test {

struct LogRecord {
    std::string source;
    WORD type = 0;
    WORD category = 0;
    DWORD eventId = 0;
    bool hasUser = false;
    std::vector<std::string> strings;
    std::string data;

    bool operator==(const LogRecord&) const = default;
};

/// One at a time. A thread of the library that is about a sound or a pause is waited for at the end.
class PlatformCalls {
public:
    PlatformCalls();
    PlatformCalls(const PlatformCalls&) = delete;
    PlatformCalls& operator=(const PlatformCalls&) = delete;
    ~PlatformCalls();

    // What the platform answers.
    bool logOpens = true;
    bool recordIsTaken = true;
    BOOL closeResult = 7;                            // any nonzero value, handed on
    const char* programPath = "";                    // "" is a failure; null asks the platform; cut where it is long
    std::function<DWORD()> clock;                    // the tick count; none asks the platform
    std::function<void(const std::string&)> onStep;  // called at each step; may throw
    bool remembersSteps = true;                      // false keeps the steps of a long run from piling up

    std::vector<LogRecord> Records();
    /// The records so far, which are forgotten.
    std::vector<LogRecord> TakeRecords();
    /// "beep 2300 50", "sleep 100", "open", "report", "close", in order, from all threads.
    std::vector<std::string> Steps();
    /// The beeps among the steps; starting a thread may sleep as well.
    std::vector<std::string> Tones();
    /// Waits until there are that many beeps, for ten seconds at most. @return whether there are
    bool WaitForTones(std::size_t count);

    // The library's calls arrive here.
    static PlatformCalls* Listening();
    void OnStep(std::string step);
    HANDLE OnOpen(const char* machine, const char* source);
    BOOL OnReport(HANDLE log, LogRecord record);
    BOOL OnClose(HANDLE log);
    DWORD OnProgramPath(char* path, DWORD size);

private:
    std::mutex lock_;
    std::condition_variable changed_;
    std::vector<LogRecord> records_;
    std::vector<std::string> steps_;
    std::vector<std::string> tones_;
    std::string source_;
};

/// Puts the functions below in front of the library's; returns false where that cannot be done.
bool StandInFront();

// The platform's functions as the library should reach them: the listener's, or the platform's own.
BOOL WINAPI FrontBeep(DWORD hertz, DWORD ms);
void WINAPI FrontSleep(DWORD ms);
HANDLE WINAPI FrontRegisterEventSource(LPCSTR machine, LPCSTR source);
BOOL WINAPI FrontReportEvent(HANDLE log, WORD type, WORD category, DWORD eventId, PSID user, WORD stringCount,
                             DWORD dataSize, LPCSTR* strings, LPVOID data);
BOOL WINAPI FrontDeregisterEventSource(HANDLE log);
DWORD WINAPI FrontGetModuleFileName(HMODULE module, LPSTR path, DWORD size);
DWORD WINAPI FrontGetTickCount();

/// The platform's own functions.
struct OwnFunctions {
    decltype(&FrontBeep) beep;
    decltype(&FrontSleep) sleep;
    decltype(&FrontRegisterEventSource) registerEventSource;
    decltype(&FrontReportEvent) reportEvent;
    decltype(&FrontDeregisterEventSource) deregisterEventSource;
    decltype(&FrontGetModuleFileName) getModuleFileName;
    decltype(&FrontGetTickCount) getTickCount;
};
const OwnFunctions& Own();

/// A program's path as this platform writes it, and its parts.
struct SamplePath {
    const char* full;
    const char* drive;
    const char* folder;
    const char* name;
    const char* extension;
    const char* home;
};
extern const SamplePath kSamplePath;
extern const SamplePath kSamplePathWithoutExtension;
/// "<root><120 a's><separator><120 a's><separator>" of this platform.
std::string LongFolder();

}  // namespace tk::test
