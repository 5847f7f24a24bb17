// Reads a date text: the time is found by its signs, what remains is the date, in the locale's order first.
#include <ctime>
#include <span>

#include "win32/automation/date_text.h"
#include "win32/automation/date_words.h"

namespace tk::automation {

namespace {

using Kind = DateTokenKind;

// ---- Time of day

bool IsClockTime(const DateTokens& tokens, int at) {
    return tokens.Is(at, Kind::Number) &&
           (tokens.Is(at + 1, Kind::Separator, u':') || tokens.IsMark(at + 1, DateMark::Hour));
}

bool StartsTime(const DateTokens& tokens, int at) {
    if (tokens.Is(at, Kind::HalfDay) || IsClockTime(tokens, at)) return true;
    // In 7-4 PM 1:05 the half of the day belongs to what follows it.
    return tokens.Is(at, Kind::Number) && tokens.Is(at + 1, Kind::HalfDay) && !IsClockTime(tokens, at + 2);
}

// Takes a number and the mark behind it.
bool TakeMarked(const DateTokens& tokens, int& at, DateMark mark, int& value) {
    if (!tokens.Is(at, Kind::Number) || !tokens.IsMark(at + 1, mark)) return false;
    value = tokens.token[at].value;
    at += 2;
    return true;
}

// Takes a colon and the number behind it.
bool TakeAfterColon(const DateTokens& tokens, int& at, int& value) {
    if (!tokens.Is(at, Kind::Separator, u':') || !tokens.Is(at + 1, Kind::Number)) return false;
    value = tokens.token[at + 1].value;
    at += 2;
    return true;
}

bool ApplyHalfDay(int half, int& hour) {
    if (half == 0 && hour > 12) return false;
    if (hour <= 12) hour = hour % 12 + half;
    return true;
}

bool TakeTime(const DateTokens& tokens, int& at, int& seconds) {
    constexpr int kNoHalf = -1;
    int half = kNoHalf;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (tokens.Is(at, Kind::HalfDay)) half = tokens.token[at++].value;
    if (!tokens.Is(at, Kind::Number)) return false;
    bool complete = half != kNoHalf;  // an hour alone needs its half of the day
    if (TakeMarked(tokens, at, DateMark::Hour, hour)) {
        complete = true;
        if (TakeMarked(tokens, at, DateMark::Minute, minute)) TakeMarked(tokens, at, DateMark::Second, second);
    } else {
        hour = tokens.token[at++].value;
        if (TakeAfterColon(tokens, at, minute)) {
            complete = true;
            TakeAfterColon(tokens, at, second);
        }
    }
    if (half == kNoHalf && tokens.Is(at, Kind::HalfDay)) {
        half = tokens.token[at++].value;
        complete = true;
    }
    if (!complete || hour > 23 || minute > 59 || second > 59) return false;
    if (half != kNoHalf && !ApplyHalfDay(half, hour)) return false;
    seconds = hour * 3600 + minute * 60 + second;
    return true;
}

// ---- Date

int CurrentYear() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local.tm_year + 1900;
}

int YearOf(const DateToken& number) {
    return number.digits <= 2 ? FullYear(number.value) : number.value;
}
// Nobody would take it for a day.
bool LooksLikeYear(const DateToken& number) {
    return number.digits > 2 || number.value > 31;
}

// Which of the numbers is what; kNone takes the current year, or the first day.
constexpr int kNone = -1;
struct Order {
    int year;
    int month;
    int day;
};
constexpr Order kChineseThree[] = {{0, 1, 2}, {2, 0, 1}, {2, 1, 0}};
constexpr Order kEnglishThree[] = {{2, 0, 1}, {2, 1, 0}, {0, 1, 2}};
constexpr Order kChineseTwo[] = {{kNone, 0, 1}, {kNone, 1, 0}, {0, 1, kNone}, {1, 0, kNone}};
constexpr Order kEnglishTwo[] = {{kNone, 0, 1}, {kNone, 1, 0}, {1, 0, kNone}, {0, 1, kNone}};

bool TryOrder(const Order& order, std::span<const DateToken> numbers, CivilDate& date) {
    if (order.day == kNone && !LooksLikeYear(numbers[order.year])) return false;
    date.year = order.year == kNone ? CurrentYear() : YearOf(numbers[order.year]);
    date.month = numbers[order.month].value;
    date.day = order.day == kNone ? 1 : numbers[order.day].value;
    return IsCivilDate(date);
}

// 7-4, 2003/7/4, 2003.7.4: one separator all through.
bool DateFromNumbers(const DateTokens& tokens, DateOrder locale, CivilDate& date) {
    if (tokens.count != 3 && tokens.count != 5) return false;
    DateToken numbers[3];
    int count = 0;
    const int separator = tokens.token[1].value;
    if (separator != u'-' && separator != u'/' && !(separator == u'.' && tokens.count == 5)) return false;
    for (int i = 0; i < tokens.count; ++i) {
        const bool isNumber = i % 2 == 0;
        if (isNumber ? !tokens.Is(i, Kind::Number) : !tokens.Is(i, Kind::Separator, separator)) return false;
        if (isNumber) numbers[count++] = tokens.token[i];
    }
    const bool chinese = locale == DateOrder::YearMonthDay;
    const std::span<const Order> orders = count == 3 ? std::span<const Order>(chinese ? kChineseThree : kEnglishThree)
                                                     : std::span<const Order>(chinese ? kChineseTwo : kEnglishTwo);
    for (const Order& order : orders) {
        if (TryOrder(order, {numbers, static_cast<std::size_t>(count)}, date)) return true;
    }
    return false;
}

// 2003年7月4日, 7月4日, 2003年7月; the last 日 may be missing.
bool DateFromMarks(const DateTokens& tokens, CivilDate& date) {
    int at = 0;
    DateToken year{};
    const bool hasYear = tokens.Is(0, Kind::Number) && tokens.IsMark(1, DateMark::Year);
    if (hasYear) {
        year = tokens.token[0];
        at = 2;
    }
    if (!TakeMarked(tokens, at, DateMark::Month, date.month)) {
        if (!tokens.Is(at, Kind::Month)) return false;
        date.month = tokens.token[at++].value;
    }
    date.year = hasYear ? YearOf(year) : CurrentYear();
    date.day = 1;
    bool hasDay = TakeMarked(tokens, at, DateMark::Day, date.day);
    if (!hasDay && at + 1 == tokens.count && tokens.Is(at, Kind::Number)) {
        date.day = tokens.token[at++].value;
        hasDay = true;
    }
    return at == tokens.count && (hasYear || hasDay) && IsCivilDate(date);
}

// The month by name with one or two numbers around it, in any order; single separators in between.
bool DateFromMonthName(const DateTokens& tokens, DateOrder locale, CivilDate& date) {
    DateToken numbers[2];
    int count = 0;
    int numbersBefore = kNone;
    bool separated = true;
    for (int i = 0; i < tokens.count; ++i) {
        const DateToken& token = tokens.token[i];
        if (token.kind == Kind::Separator) {
            if (separated || token.value == u':') return false;
            separated = true;
            continue;
        }
        separated = false;
        if (token.kind == Kind::Month && numbersBefore == kNone) {
            date.month = token.value;
            numbersBefore = count;
        } else if (token.kind == Kind::Number && count < 2) {
            numbers[count++] = token;
        } else {
            return false;
        }
    }
    if (separated || numbersBefore == kNone || count == 0) return false;
    if (count == 1) {
        const bool isYear = LooksLikeYear(numbers[0]);
        date.year = isYear ? YearOf(numbers[0]) : CurrentYear();
        date.day = isYear ? 1 : numbers[0].value;
        return IsCivilDate(date);
    }
    int yearAt = locale == DateOrder::YearMonthDay && numbersBefore > 0 ? 0 : 1;
    for (int attempt = 0; attempt < 2; ++attempt, yearAt = 1 - yearAt) {
        date.year = YearOf(numbers[yearAt]);
        date.day = numbers[1 - yearAt].value;
        if (IsCivilDate(date)) return true;
    }
    return false;
}

// The name of a weekday says nothing new; it goes with its comma.
void DropWeekday(DateTokens& tokens) {
    DateTokens kept;
    for (int i = 0; i < tokens.count; ++i) {
        const bool weekday = tokens.Is(i, Kind::Weekday);
        if (!weekday) kept.Add(tokens.token[i]);
        if (weekday && tokens.Is(i + 1, Kind::Separator, u',')) ++i;
    }
    tokens = kept;
}

bool DateFromTokens(DateTokens tokens, DateOrder locale, CivilDate& date) {
    DropWeekday(tokens);
    bool marks = false;
    bool month = false;
    for (int i = 0; i < tokens.count; ++i) {
        marks = marks || tokens.Is(i, Kind::Mark);
        month = month || tokens.Is(i, Kind::Month);
    }
    if (marks) return DateFromMarks(tokens, date);
    return month ? DateFromMonthName(tokens, locale, date) : DateFromNumbers(tokens, locale, date);
}

}  // namespace

HRESULT ParseDate(std::u16string_view text, const LocaleFacts& locale, ULONG flags, DATE& date) noexcept {
    DateTokens tokens;
    if (!CutDateText(text, tokens)) return DISP_E_TYPEMISMATCH;
    DateTokens dateTokens;
    bool hasTime = false;
    bool dateEnded = false;
    int seconds = 0;
    for (int at = 0; at < tokens.count;) {
        if (!hasTime && StartsTime(tokens, at)) {
            if (!TakeTime(tokens, at, seconds)) return DISP_E_TYPEMISMATCH;
            hasTime = true;
            dateEnded = dateTokens.count != 0;
        } else {
            if (dateEnded) return DISP_E_TYPEMISMATCH;  // a time stands before or behind the date, not inside
            dateTokens.Add(tokens.token[at++]);
        }
    }
    if (dateTokens.count == 0 && !hasTime) return DISP_E_TYPEMISMATCH;
    DayAndTime parts{0, seconds};
    if (dateTokens.count != 0) {
        CivilDate civil{};
        if (!DateFromTokens(dateTokens, locale.order, civil)) return DISP_E_TYPEMISMATCH;
        parts.day = DayNumber(civil);
    }
    if ((flags & VAR_TIMEVALUEONLY) != 0) parts.day = 0;
    if ((flags & VAR_DATEVALUEONLY) != 0) parts.seconds = 0;
    date = JoinDate(parts);
    return S_OK;
}

}  // namespace tk::automation
