// ado/rowset/date_value.h - calendar fields, automation dates and their texts.
#pragma once

#include <windows.h>

#include <wtypes.h>

#include <optional>
#include <string>
#include <string_view>

#include "ado/rowset/column.h"

namespace tk::ado {

/// A moment as databases keep it.
struct CalendarTime {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int nanosecond = 0;
};

/// The automation date: days since 1899-12-30, the fraction counted away from zero; to the millisecond.
/// nullopt for years outside 100 to 9999 and for fields that are no date.
std::optional<DATE> ToAutomationDate(const CalendarTime& time) noexcept;

/// The fields of an automation date, to the millisecond; nanoseconds replace its fraction of a second when not
/// negative.
CalendarTime FromAutomationDate(DATE date, long nanoseconds = -1) noexcept;

/// Reads `2003-07-04`, `2003-07-04 13:05:09.123456`, `…T13:05`, with or without a zone after it, and `13:05:09.5`.
/// The separators may be '/' or '.'; nullopt for anything else. A zone is dropped: the digits count as they stand.
std::optional<CalendarTime> ParseCalendarTime(std::string_view text) noexcept;

enum class CalendarForm : unsigned char { Date, Time, DateTime };

/// The part of a moment that a column of the kind takes.
constexpr CalendarForm CalendarFormOf(CellKind kind) noexcept {
    if (kind == CellKind::Date) return CalendarForm::Date;
    return kind == CellKind::Time ? CalendarForm::Time : CalendarForm::DateTime;
}

/// `2003-07-04`, `13:05:09`, `2003-07-04 13:05:09`; a fraction follows without trailing zeros when there is one.
std::string FormatCalendarTime(const CalendarTime& time, CalendarForm form);

}  // namespace tk::ado
