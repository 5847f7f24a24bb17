// date_value.h - days of the Gregorian calendar, and DATE values taken apart and put together.
#pragma once

#include "win32/include/oleauto.h"

namespace tk::automation {

struct CivilDate {
    int year;
    int month;  // 1 to 12
    int day;    // 1 to 31
};

inline constexpr int kFirstYear = 100;
inline constexpr int kLastYear = 9999;
inline constexpr int kSecondsPerDay = 86400;

constexpr bool IsLeapYear(int year) noexcept {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int DaysInMonth(int year, int month) noexcept {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

/// Days since 30 December 1899. Years count from March inside, so that the leap day is the last of its year.
constexpr int DayNumber(const CivilDate& date) noexcept {
    const int year = date.month <= 2 ? date.year - 1 : date.year;
    const int era = year / 400;  // years are positive
    const int yearOfEra = year - era * 400;
    const int dayOfYear = (153 * (date.month + (date.month > 2 ? -3 : 9)) + 2) / 5 + date.day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    constexpr int kDaysFromEraToEpoch = 693899;
    return era * 146097 + dayOfEra - kDaysFromEraToEpoch;
}

constexpr CivilDate DateOfDay(int dayNumber) noexcept {
    const int day = dayNumber + 693899;
    const int era = day / 146097;
    const int dayOfEra = day - era * 146097;
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int monthFromMarch = (5 * dayOfYear + 2) / 153;
    const int month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const int year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    return {year, month, dayOfYear - (153 * monthFromMarch + 2) / 5 + 1};
}

static_assert(DayNumber({1899, 12, 30}) == 0);
static_assert(DayNumber({kFirstYear, 1, 1}) == VTDATEGRE_MIN && DayNumber({kLastYear, 12, 31}) == VTDATEGRE_MAX);

/// Whether such a day exists in the range of DATE.
constexpr bool IsCivilDate(const CivilDate& date) noexcept {
    return date.year >= kFirstYear && date.year <= kLastYear && date.month >= 1 && date.month <= 12 && date.day >= 1 &&
           date.day <= DaysInMonth(date.year, date.month);
}

/// 0 is Sunday. Day 0, 30 December 1899, was a Saturday.
constexpr int WeekdayOf(int dayNumber) noexcept {
    return ((dayNumber + 6) % 7 + 7) % 7;
}

/// Two digits of a year: 00 to 29 are of this century, 30 to 99 of the last.
constexpr int FullYear(int twoDigits) noexcept {
    return twoDigits < 30 ? 2000 + twoDigits : 1900 + twoDigits;
}

struct DayAndTime {
    int day;      // since 30 December 1899
    int seconds;  // of the day
};

/// Rounds the time to the second, a half upwards; the last half second of the last day stays in it.
/// @return false out of range and for what is no number
bool SplitDate(DATE date, DayAndTime& parts) noexcept;

/// The fraction is the time of day whatever the sign of the day.
constexpr DATE JoinDate(const DayAndTime& parts) noexcept {
    const double time = static_cast<double>(parts.seconds) / kSecondsPerDay;
    return parts.day < 0 ? parts.day - time : parts.day + time;
}

/// Whether the number is a date.
constexpr bool IsDate(double value) noexcept {
    return value > VTDATEGRE_MIN - 1.0 && value < VTDATEGRE_MAX + 1.0;
}

}  // namespace tk::automation
