// Sleeping on a number in memory until somebody changes and wakes it.
#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>

namespace tk::kernel {

/// When a sleep ends at the latest. Moments are nanoseconds of the clock they belong to.
struct Moment {
    static constexpr std::int64_t kNever = INT64_MAX;

    std::int64_t at = kNever;
    clockid_t clock = CLOCK_MONOTONIC;
};

inline std::int64_t Now(clockid_t clock) noexcept {
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * std::int64_t{1'000'000'000} + now.tv_nsec;
}

/// Sleeps while the number is what is expected, until a wake, the moment, or for no reason at all.
inline void FutexWait(const std::atomic<std::uint32_t>& number, std::uint32_t expected, Moment until,
                      bool shared) noexcept {
    timespec limit{};
    limit.tv_sec = until.at / 1'000'000'000;
    limit.tv_nsec = until.at % 1'000'000'000;
    // The bitset form takes a moment instead of a span: a signal handler in between does not lengthen the sleep.
    int operation = FUTEX_WAIT_BITSET;
    if (!shared) operation |= FUTEX_PRIVATE_FLAG;
    if (until.clock == CLOCK_REALTIME) operation |= FUTEX_CLOCK_REALTIME;
    syscall(SYS_futex, &number, operation, expected, until.at == Moment::kNever ? nullptr : &limit, nullptr,
            FUTEX_BITSET_MATCH_ANY);
}

/// @return how many slept there: 0 or 1
inline int FutexWakeOne(const std::atomic<std::uint32_t>* number, bool shared) noexcept {
    const int operation = shared ? FUTEX_WAKE : FUTEX_WAKE_PRIVATE;
    return static_cast<int>(syscall(SYS_futex, number, operation, 1, nullptr, nullptr, 0));
}

}  // namespace tk::kernel
