#include "support/tds/moment.h"

#include <array>
#include <cstdio>

namespace tk::test::tds {
namespace {

// Days of a calendar that begins in March, so that the leap day is the last of its year.
std::int64_t DayOf(std::int64_t year, std::int64_t month, std::int64_t day) {
    if (month <= 2) --year;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return era * 146'097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 306;
}

struct Calendar {
    int year, month, day;
};

Calendar CalendarOf(std::int64_t number) {
    number += 306;
    const std::int64_t era = (number >= 0 ? number : number - 146'096) / 146'097;
    const std::int64_t dayOfEra = number - era * 146'097;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t part = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = part < 10 ? part + 3 : part - 9;
    const std::int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    return {static_cast<int>(year), static_cast<int>(month), static_cast<int>(dayOfYear - (153 * part + 2) / 5 + 1)};
}

/// Takes digits from the front; -1 when there are not so many.
int TakeDigits(std::string_view& text, std::size_t count) {
    if (text.size() < count) return -1;
    int number = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (text[i] < '0' || text[i] > '9') return -1;
        number = number * 10 + (text[i] - '0');
    }
    text.remove_prefix(count);
    return number;
}

bool Take(std::string_view& text, char mark) {
    if (text.empty() || text.front() != mark) return false;
    text.remove_prefix(1);
    return true;
}

bool ParseDate(std::string_view& text, Moment& moment) {
    const int year = TakeDigits(text, 4);
    if (year < 1 || !Take(text, '-')) return false;
    const int month = TakeDigits(text, 2);
    if (month < 1 || month > 12 || !Take(text, '-')) return false;
    const int day = TakeDigits(text, 2);
    if (day < 1 || day > 31) return false;
    moment.day = DayOf(year, month, day);
    const Calendar back = CalendarOf(moment.day);
    return back.month == month && back.day == day;
}

bool ParseTime(std::string_view& text, Moment& moment) {
    const int hour = TakeDigits(text, 2);
    if (hour < 0 || hour > 23 || !Take(text, ':')) return false;
    const int minute = TakeDigits(text, 2);
    if (minute < 0 || minute > 59) return false;
    int second = 0;
    if (Take(text, ':')) second = TakeDigits(text, 2);
    if (second < 0 || second > 59) return false;
    moment.ticks = ((hour * 60 + minute) * std::int64_t{60} + second) * kTicksOfSecond;
    if (!Take(text, '.')) return true;
    for (std::int64_t worth = kTicksOfSecond / 10; !text.empty() && text[0] >= '0' && text[0] <= '9'; worth /= 10) {
        moment.ticks += worth * (text[0] - '0');
        text.remove_prefix(1);
    }
    return true;
}

}  // namespace

std::optional<Moment> ParseMoment(std::string_view text) {
    Moment moment;
    moment.day = kDay1900;
    if (text.size() > 4 && text[4] == '-') {
        if (!ParseDate(text, moment)) return std::nullopt;
        if (text.empty()) return moment;
        if (!Take(text, ' ') && !Take(text, 'T')) return std::nullopt;
    }
    if (!ParseTime(text, moment) || !text.empty()) return std::nullopt;
    return moment;
}

std::string FormatMoment(const Moment& moment, MomentForm form) {
    std::array<char, 80> room;
    std::string text;
    if (form != MomentForm::Time) {
        const Calendar date = CalendarOf(moment.day);
        std::snprintf(room.data(), room.size(), "%04d-%02d-%02d", date.year, date.month, date.day);
        text = room.data();
    }
    if (form == MomentForm::Date) return text;
    if (!text.empty()) text += ' ';
    const std::int64_t seconds = moment.ticks / kTicksOfSecond;
    std::snprintf(room.data(), room.size(), "%02d:%02d:%02d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    text += room.data();
    const std::int64_t fraction = moment.ticks % kTicksOfSecond;
    if (fraction == 0) return text;
    std::snprintf(room.data(), room.size(), ".%07d", static_cast<int>(fraction));
    text += room.data();
    while (text.back() == '0')
        text.pop_back();
    return text;
}

}  // namespace tk::test::tds
