// tests/support/tds/moment.h - dates and times as texts, as SQLite keeps them, and as the numbers that travel.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tk::test::tds {

struct Moment {
    std::int64_t day = 0;    // since 0001-01-01
    std::int64_t ticks = 0;  // of 100 ns, since midnight
};

constexpr std::int64_t kTicksOfSecond = 10'000'000;
constexpr std::int64_t kTicksOfDay = 86'400 * kTicksOfSecond;
constexpr std::int64_t kDay1900 = 693'595;

enum class MomentForm : std::uint8_t { Date, Time, Both };

/// "2003-07-04", "13:05:09.123" or both with a blank or T between them.
std::optional<Moment> ParseMoment(std::string_view text);
/// The fraction without the zeros at its end.
std::string FormatMoment(const Moment& moment, MomentForm form);

}  // namespace tk::test::tds
