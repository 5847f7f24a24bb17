#include "tkwin32/event_log.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

#include "tkwin32/text.h"
#include "win32/system/event_sinks.h"
#include "win32/system/local_machine.h"
#include "win32/system/system_call_error.h"
#include "winbase.h"

namespace tk::system {
namespace {

struct EventSource {
    std::string name;
    std::unique_ptr<EventSink> sink;
    bool journal;
    std::mutex lock;  // records of one source go one after the other
};

/// Sources by handle. A handle is a number that is not used twice soon, so a closed one is not mistaken for a new one.
struct EventSources {
    std::mutex lock;
    std::map<HANDLE, std::shared_ptr<EventSource>> open;
    UINT_PTR lastHandle = 0;
};

EventSources& TheSources() {
    static auto& sources = *new EventSources;
    return sources;
}

std::string TimeNow() {
    FILETIME now;
    SYSTEMTIME parts;
    GetSystemTimeAsFileTime(&now);
    FileTimeToSystemTime(&now, &parts);
    const ULONGLONG ticks = static_cast<ULONGLONG>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
    char text[64];
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%06uZ", parts.wYear, parts.wMonth, parts.wDay,
                  parts.wHour, parts.wMinute, parts.wSecond, static_cast<unsigned>(ticks / 10 % 1'000'000));
    return text;
}

/// A file the environment names is asked for; without one the journal comes first.
std::shared_ptr<EventSource> OpenSource(const char* name) {
    auto source = std::make_shared<EventSource>();
    source->name = text::GbkToUtf8(name);
    const char* named = secure_getenv("TKKERNEL_EVENT_LOG");
    if (named == nullptr || named[0] == 0) source->sink = OpenJournal();
    source->journal = source->sink != nullptr;
    if (!source->journal) source->sink = OpenEventFile(EventLogPath());
    return source->sink != nullptr ? source : nullptr;
}

std::shared_ptr<EventSource> FindSource(HANDLE handle) {
    EventSources& sources = TheSources();
    const std::lock_guard lock(sources.lock);
    const auto found = sources.open.find(handle);
    return found != sources.open.end() ? found->second : nullptr;
}

bool WriteRecord(EventSource& source, const EventRecord& record) {
    const std::lock_guard lock(source.lock);
    if (source.sink->Write(record)) return true;
    if (!source.journal) return false;
    // The journal ended meanwhile, or takes nothing: the file keeps the record.
    auto file = OpenEventFile(EventLogPath());
    if (file == nullptr) return false;
    source.sink = std::move(file);
    source.journal = false;
    return source.sink->Write(record);
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

}  // namespace
}  // namespace tk::system

using namespace tk::system;

HANDLE RegisterEventSourceA(LPCSTR lpUNCServerName, LPCSTR lpSourceName) {
    if (lpSourceName == nullptr || lpSourceName[0] == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (lpUNCServerName != nullptr && !IsThisMachine(tk::text::GbkToUtf16(lpUNCServerName))) {
        SetLastError(RPC_S_SERVER_UNAVAILABLE);
        return nullptr;
    }
    auto source = OpenSource(lpSourceName);
    if (source == nullptr) {
        FailCall();
        return nullptr;
    }
    EventSources& sources = TheSources();
    const std::lock_guard lock(sources.lock);
    const auto handle = reinterpret_cast<HANDLE>(++sources.lastHandle);
    sources.open.emplace(handle, std::move(source));
    return handle;
}

BOOL DeregisterEventSource(HANDLE hEventLog) {
    EventSources& sources = TheSources();
    std::shared_ptr<EventSource> closed;  // closed behind the lock, or by the last writer
    const std::lock_guard lock(sources.lock);
    const auto found = sources.open.find(hEventLog);
    if (found == sources.open.end()) return Fail(ERROR_INVALID_HANDLE);
    closed = std::move(found->second);
    sources.open.erase(found);
    return TRUE;
}

BOOL ReportEventA(HANDLE hEventLog, WORD wType, WORD wCategory, DWORD dwEventID, PSID lpUserSid, WORD wNumStrings,
                  DWORD dwDataSize, LPCSTR* lpStrings, LPVOID lpRawData) {
    const auto source = FindSource(hEventLog);
    if (source == nullptr) return Fail(ERROR_INVALID_HANDLE);
    const bool missing = (wNumStrings != 0 && lpStrings == nullptr) || (dwDataSize != 0 && lpRawData == nullptr);
    if (missing || lpUserSid != nullptr) return Fail(ERROR_INVALID_PARAMETER);

    EventRecord record;
    record.time = TimeNow();
    record.source = source->name;
    record.type = wType;
    record.category = wCategory;
    record.id = dwEventID;
    record.process = GetCurrentProcessId();
    for (WORD i = 0; i < wNumStrings; ++i) {
        record.strings.push_back(lpStrings[i] != nullptr ? tk::text::GbkToUtf8(lpStrings[i]) : std::string());
    }
    const auto* bytes = static_cast<const BYTE*>(lpRawData);
    record.data.assign(bytes, bytes + dwDataSize);
    return WriteRecord(*source, record) || FailCall();
}
