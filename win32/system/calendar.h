// Dates as the platform counts them: 100 ns units since 1601-01-01 in the proleptic Gregorian calendar.
#pragma once

#include "windef.h"

namespace tk::system {

inline constexpr std::int64_t kTicksPerSecond = 10'000'000;
inline constexpr std::int64_t kTicksPerDay = kTicksPerSecond * 86'400;
inline constexpr std::int64_t kUnixEpochTicks = 11'644'473'600 * kTicksPerSecond;

constexpr std::int64_t ToTicks(const FILETIME& time) noexcept {
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
}

constexpr FILETIME FromTicks(std::int64_t ticks) noexcept {
    const auto bits = static_cast<std::uint64_t>(ticks);
    return {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)};
}

constexpr FILETIME ToFileTime(std::int64_t unixSeconds, std::int64_t nanoseconds) noexcept {
    return FromTicks(unixSeconds * kTicksPerSecond + nanoseconds / 100 + kUnixEpochTicks);
}

}  // namespace tk::system
