#include "ado/rowset/date_value.h"

#include <cmath>
#include <cstdio>

namespace tk::ado {
namespace {

constexpr int kMsPerDay = 86'400'000;
constexpr int kDaysTo1899 = 693'899;  // from 0000-03-01 of the era below to 1899-12-30
constexpr int kDaysPerEra = 146'097;

/// Days since 1899-12-30 in the Gregorian calendar, backwards without end.
constexpr int DaysFromCivil(int year, int month, int day) noexcept {
    year -= month <= 2 ? 1 : 0;
    const int era = (year >= 0 ? year : year - 399) / 400;
    const int yearOfEra = year - era * 400;
    const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * kDaysPerEra + dayOfEra - kDaysTo1899;
}

constexpr void CivilFromDays(int days, CalendarTime& time) noexcept {
    days += kDaysTo1899;
    const int era = (days >= 0 ? days : days - (kDaysPerEra - 1)) / kDaysPerEra;
    const int dayOfEra = days - era * kDaysPerEra;
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int shifted = (5 * dayOfYear + 2) / 153;
    time.day = dayOfYear - (153 * shifted + 2) / 5 + 1;
    time.month = shifted < 10 ? shifted + 3 : shifted - 9;
    time.year = yearOfEra + era * 400 + (time.month <= 2 ? 1 : 0);
}

constexpr bool IsLeap(int year) noexcept {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int DaysOfMonth(int year, int month) noexcept {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

/// Reads digits of a text from left to right.
class DigitReader {
public:
    explicit DigitReader(std::string_view text) noexcept : at_(text.data()), end_(text.data() + text.size()) {}

    bool AtEnd() const noexcept { return at_ == end_; }
    char Peek() const noexcept { return at_ == end_ ? '\0' : *at_; }
    void Skip() noexcept { ++at_; }

    /// At least one and at most `most` digits; -1 when there is none.
    int Number(int most) noexcept {
        int value = -1;
        for (int count = 0; count < most && at_ != end_ && *at_ >= '0' && *at_ <= '9'; ++count, ++at_) {
            value = (value < 0 ? 0 : value * 10) + (*at_ - '0');
        }
        return value;
    }

    /// The digits of a fraction as nanoseconds; digits after the ninth are dropped.
    int Fraction() noexcept {
        int value = 0;
        int count = 0;
        for (; at_ != end_ && *at_ >= '0' && *at_ <= '9'; ++at_) {
            if (count++ < 9) value = value * 10 + (*at_ - '0');
        }
        if (count == 0) return -1;
        for (; count < 9; ++count)
            value *= 10;
        return value;
    }

private:
    const char* at_;
    const char* end_;
};

bool ReadTime(DigitReader& reader, int hour, CalendarTime& time) noexcept {
    time.hour = hour;
    reader.Skip();  // ':'
    time.minute = reader.Number(2);
    time.second = 0;
    if (reader.Peek() == ':') {
        reader.Skip();
        time.second = reader.Number(2);
        if (reader.Peek() == '.' || reader.Peek() == ',') {
            reader.Skip();
            time.nanosecond = reader.Fraction();
        }
    }
    return time.hour >= 0 && time.hour <= 23 && time.minute >= 0 && time.minute <= 59 && time.second >= 0 &&
           time.second <= 59 && time.nanosecond >= 0;
}

/// `Z`, `+08`, `+08:00`, `+0800`, with a blank before it or not.
bool SkipZone(DigitReader& reader) noexcept {
    if (reader.Peek() == ' ') reader.Skip();
    if (reader.Peek() == 'Z' || reader.Peek() == 'z') {
        reader.Skip();
    } else if (reader.Peek() == '+' || reader.Peek() == '-') {
        reader.Skip();
        if (reader.Number(4) < 0) return false;
        while (reader.Peek() == ':') {
            reader.Skip();
            if (reader.Number(2) < 0) return false;
        }
    }
    return reader.AtEnd();
}

/// `2003-07-04 13:05:09`, the commonest form by far. Nullopt for every other text, of which some are moments too.
std::optional<CalendarTime> ParseUsualMoment(std::string_view text) noexcept {
    constexpr std::size_t kLetters = 19;
    if (text.size() != kLetters) return std::nullopt;
    bool isUsual = text[4] == '-' && text[7] == '-' && text[10] == ' ' && text[13] == ':' && text[16] == ':';
    const auto pair = [&](std::size_t at) {
        const auto tens = static_cast<unsigned>(text[at] - '0');
        const auto ones = static_cast<unsigned>(text[at + 1] - '0');
        isUsual &= tens <= 9 && ones <= 9;
        return static_cast<int>(tens * 10 + ones);
    };
    const CalendarTime time = {pair(0) * 100 + pair(2), pair(5), pair(8), pair(11), pair(14), pair(17), 0};
    isUsual = isUsual && time.month >= 1 && time.month <= 12 && time.day >= 1 && time.hour <= 23 && time.minute <= 59 &&
              time.second <= 59;
    if (!isUsual || time.day > DaysOfMonth(time.year, time.month)) return std::nullopt;
    return time;
}

}  // namespace

std::optional<DATE> ToAutomationDate(const CalendarTime& time) noexcept {
    if (time.year < 100 || time.year > 9999 || time.month < 1 || time.month > 12 || time.day < 1 ||
        time.day > DaysOfMonth(time.year, time.month)) {
        return std::nullopt;
    }
    const int days = DaysFromCivil(time.year, time.month, time.day);
    const int ms = ((time.hour * 60 + time.minute) * 60 + time.second) * 1000 + time.nanosecond / 1'000'000;
    const double fraction = ms / static_cast<double>(kMsPerDay);
    return days >= 0 ? days + fraction : days - fraction;
}

CalendarTime FromAutomationDate(DATE date, long nanoseconds) noexcept {
    constexpr double kFirst = -657'434;
    constexpr double kLast = 2'958'466;
    CalendarTime time;
    if (!(date > kFirst - 1 && date < kLast)) date = 0;
    int days = static_cast<int>(date);
    int ms = static_cast<int>(std::lround(std::fabs(date - days) * kMsPerDay));
    if (ms >= kMsPerDay) {
        ms -= kMsPerDay;
        ++days;
    }
    CivilFromDays(days, time);
    time.nanosecond = nanoseconds >= 0 ? static_cast<int>(nanoseconds) : ms % 1000 * 1'000'000;
    const int seconds = ms / 1000;
    time.hour = seconds / 3600;
    time.minute = seconds / 60 % 60;
    time.second = seconds % 60;
    return time;
}

std::optional<CalendarTime> ParseCalendarTime(std::string_view text) noexcept {
    if (const auto usual = ParseUsualMoment(text)) return usual;
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    DigitReader reader(text);
    CalendarTime time;
    const int first = reader.Number(4);
    if (first < 0) return std::nullopt;
    if (reader.Peek() == ':') {
        if (!ReadTime(reader, first, time) || !SkipZone(reader)) return std::nullopt;
        return time;
    }
    const char separator = reader.Peek();
    if (separator != '-' && separator != '/' && separator != '.') return std::nullopt;
    reader.Skip();
    time.year = first;
    time.month = reader.Number(2);
    if (reader.Peek() != separator) return std::nullopt;
    reader.Skip();
    time.day = reader.Number(2);
    if (time.month < 1 || time.month > 12 || time.day < 1 || time.day > DaysOfMonth(time.year, time.month)) {
        return std::nullopt;
    }
    if (reader.AtEnd()) return time;
    if (reader.Peek() != ' ' && reader.Peek() != 'T') return std::nullopt;
    reader.Skip();
    const int hour = reader.Number(2);
    if (reader.Peek() != ':' || !ReadTime(reader, hour, time) || !SkipZone(reader)) return std::nullopt;
    return time;
}

std::string FormatCalendarTime(const CalendarTime& time, CalendarForm form) {
    char buffer[64];
    std::string text;
    if (form != CalendarForm::Time) {
        std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", time.year, time.month, time.day);
        text = buffer;
    }
    if (form == CalendarForm::Date) return text;
    std::snprintf(buffer, sizeof buffer, "%s%02d:%02d:%02d", text.empty() ? "" : " ", time.hour, time.minute,
                  time.second);
    text += buffer;
    if (time.nanosecond != 0) {
        std::snprintf(buffer, sizeof buffer, ".%09d", time.nanosecond);
        text += buffer;
        while (text.back() == '0')
            text.pop_back();
    }
    return text;
}

}  // namespace tk::ado
