// ado/odbc/coarse_clock.h - the time for what lasts a second or more: read without a detour through the hardware.
#pragma once

#include <cstdint>
#include <ctime>

namespace tk::ado {

inline constexpr std::int64_t kMillisecond = 1'000'000;
inline constexpr std::int64_t kSecond = 1000 * kMillisecond;

/// Nanoseconds of a clock that only goes forward, some milliseconds late.
inline std::int64_t CoarseNow() noexcept {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return time.tv_sec * kSecond + time.tv_nsec;
}

}  // namespace tk::ado
