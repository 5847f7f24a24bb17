#include <time.h>

#include "win32/system/calendar.h"
#include "winbase.h"

namespace {

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

std::uint64_t Nanoseconds(clockid_t clock) noexcept {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * kNanosecondsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
}

}  // namespace

// The boot clock counts suspended time as the platform's counter does.
ULONGLONG GetTickCount64() {
    return Nanoseconds(CLOCK_BOOTTIME) / 1'000'000;
}
DWORD GetTickCount() {
    return static_cast<DWORD>(Nanoseconds(CLOCK_BOOTTIME) / 1'000'000);
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* lpPerformanceCount) {
    lpPerformanceCount->QuadPart = static_cast<LONGLONG>(Nanoseconds(CLOCK_MONOTONIC));
    return TRUE;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* lpFrequency) {
    lpFrequency->QuadPart = static_cast<LONGLONG>(kNanosecondsPerSecond);
    return TRUE;
}

void GetSystemTimeAsFileTime(FILETIME* lpSystemTimeAsFileTime) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    *lpSystemTimeAsFileTime = tk::system::ToFileTime(now.tv_sec, now.tv_nsec);
}

void GetSystemTime(SYSTEMTIME* lpSystemTime) {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    FileTimeToSystemTime(&now, lpSystemTime);
}

void GetLocalTime(SYSTEMTIME* lpSystemTime) {
    FILETIME now;
    FILETIME local;
    GetSystemTimeAsFileTime(&now);
    FileTimeToLocalFileTime(&now, &local);
    FileTimeToSystemTime(&local, lpSystemTime);
}
