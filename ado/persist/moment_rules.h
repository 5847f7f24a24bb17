// ado/persist/moment_rules.h - which calendar fields a saved date may have.
#pragma once

#include "ado/rowset/date_value.h"

namespace tk::ado {

/// Fields that are a date and a time of some calendar; the day may be beyond its month's end, never beyond any.
constexpr bool IsSayable(const CalendarTime& moment) noexcept {
    return moment.year >= -32768 && moment.year <= 32767 && moment.month >= 1 && moment.month <= 12 &&
           moment.day >= 1 && moment.day <= 31 && moment.hour >= 0 && moment.hour <= 23 && moment.minute >= 0 &&
           moment.minute <= 59 && moment.second >= 0 && moment.second <= 59 && moment.nanosecond >= 0 &&
           moment.nanosecond <= 999'999'999;
}

constexpr bool IsSameMoment(const CalendarTime& first, const CalendarTime& second) noexcept {
    return first.year == second.year && first.month == second.month && first.day == second.day &&
           first.hour == second.hour && first.minute == second.minute && first.second == second.second &&
           first.nanosecond == second.nanosecond;
}

}  // namespace tk::ado
