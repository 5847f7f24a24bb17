#include "util/platform_calls.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <stdexcept>
#include <thread>
#include <utility>

namespace tk::test {
namespace {

std::atomic<PlatformCalls*> listening = nullptr;
std::atomic<int> callers = 0;
int logObject = 0;  // its address is the handle

/// The one that listens, if any, for the time of a call: it is not destroyed meanwhile. Not for calls in which tests
/// make a fault happen: that leaves them without an end.
class Listener {
public:
    Listener() {
        ++callers;
        calls_ = listening;
    }
    ~Listener() { --callers; }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    explicit operator bool() const { return calls_ != nullptr; }
    PlatformCalls* operator->() const { return calls_; }

private:
    PlatformCalls* calls_;
};

}  // namespace

PlatformCalls::PlatformCalls() {
    static const bool inFront = StandInFront();
    if (!inFront) throw std::runtime_error("the library's calls cannot be listened to");
    listening = this;
}

PlatformCalls::~PlatformCalls() {
    listening = nullptr;
    while (callers != 0)
        std::this_thread::yield();
}

PlatformCalls* PlatformCalls::Listening() {
    return listening;
}

std::vector<LogRecord> PlatformCalls::Records() {
    const std::lock_guard guard(lock_);
    return records_;
}

std::vector<LogRecord> PlatformCalls::TakeRecords() {
    const std::lock_guard guard(lock_);
    return std::exchange(records_, {});
}

std::vector<std::string> PlatformCalls::Steps() {
    const std::lock_guard guard(lock_);
    return steps_;
}

std::vector<std::string> PlatformCalls::Tones() {
    const std::lock_guard guard(lock_);
    return tones_;
}

bool PlatformCalls::WaitForTones(std::size_t count) {
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, std::chrono::seconds(10), [&] { return tones_.size() >= count; });
}

void PlatformCalls::OnStep(std::string step) {
    if (onStep) onStep(step);
    if (!remembersSteps) return;
    const std::lock_guard guard(lock_);
    if (step.starts_with("beep")) tones_.push_back(step);
    steps_.push_back(std::move(step));
    changed_.notify_all();
}

HANDLE PlatformCalls::OnOpen(const char* machine, const char* source) {
    OnStep(machine == nullptr ? "open" : "open elsewhere");
    {
        const std::lock_guard guard(lock_);
        source_ = source;
    }
    return logOpens ? &logObject : nullptr;
}

BOOL PlatformCalls::OnReport(HANDLE log, LogRecord record) {
    OnStep(log == &logObject ? "report" : "report elsewhere");
    const std::lock_guard guard(lock_);
    record.source = source_;
    records_.push_back(std::move(record));
    return recordIsTaken ? TRUE : FALSE;
}

BOOL PlatformCalls::OnClose(HANDLE log) {
    OnStep(log == &logObject ? "close" : "close elsewhere");
    return closeResult;
}

DWORD PlatformCalls::OnProgramPath(char* path, DWORD size) {
    // A path that does not fit fills the buffer to its last byte: old systems leave no room for a terminator.
    const std::size_t length = std::min<std::size_t>(std::strlen(programPath), size);
    std::copy_n(programPath, length, path);
    if (length < size) path[length] = '\0';
    return static_cast<DWORD>(length);
}

BOOL WINAPI FrontBeep(DWORD hertz, DWORD ms) {
    if (const Listener listener; listener) {
        listener->OnStep("beep " + std::to_string(hertz) + " " + std::to_string(ms));
        return TRUE;
    }
    return Own().beep(hertz, ms);
}

void WINAPI FrontSleep(DWORD ms) {
    if (const Listener listener; listener) return listener->OnStep("sleep " + std::to_string(ms));
    return Own().sleep(ms);
}

HANDLE WINAPI FrontRegisterEventSource(LPCSTR machine, LPCSTR source) {
    if (PlatformCalls::Listening() == nullptr) return Own().registerEventSource(machine, source);
    return PlatformCalls::Listening()->OnOpen(machine, source);
}

BOOL WINAPI FrontReportEvent(HANDLE log, WORD type, WORD category, DWORD eventId, PSID user, WORD stringCount,
                             DWORD dataSize, LPCSTR* strings, LPVOID data) {
    if (PlatformCalls::Listening() == nullptr) {
        return Own().reportEvent(log, type, category, eventId, user, stringCount, dataSize, strings, data);
    }
    LogRecord record;
    record.type = type;
    record.category = category;
    record.eventId = eventId;
    record.hasUser = user != nullptr;
    record.strings.assign(strings, strings + stringCount);
    record.data.assign(static_cast<const char*>(data), dataSize);
    return PlatformCalls::Listening()->OnReport(log, std::move(record));
}

BOOL WINAPI FrontDeregisterEventSource(HANDLE log) {
    if (PlatformCalls::Listening() == nullptr) return Own().deregisterEventSource(log);
    return PlatformCalls::Listening()->OnClose(log);
}

DWORD WINAPI FrontGetTickCount() {
    PlatformCalls* const calls = PlatformCalls::Listening();
    return calls != nullptr && calls->clock ? calls->clock() : Own().getTickCount();
}

DWORD WINAPI FrontGetModuleFileName(HMODULE module, LPSTR path, DWORD size) {
    PlatformCalls* calls = PlatformCalls::Listening();
    if (calls == nullptr || calls->programPath == nullptr || module != nullptr) {
        return Own().getModuleFileName(module, path, size);
    }
    return calls->OnProgramPath(path, size);
}

}  // namespace tk::test
