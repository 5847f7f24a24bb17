#include <array>
#include <cmath>

#include "tkkernel/util.h"
#include "util/messages.h"
#include "util/text.h"
#include "util/text_builder.h"

namespace tk::util {
namespace {

constexpr std::string_view kDefaultFormat = "YYYY/MM/DD hh:mm:ss";

/// The letters of a format, which count when they stand twice.
struct Letter {
    char letter;
    WORD SYSTEMTIME::*part;
};
constexpr Letter kLetters[] = {
    {'Y', &SYSTEMTIME::wYear},  // the last two digits; all of them when it stands four times
    {'M', &SYSTEMTIME::wMonth},  {'D', &SYSTEMTIME::wDay},    {'h', &SYSTEMTIME::wHour},
    {'m', &SYSTEMTIME::wMinute}, {'s', &SYSTEMTIME::wSecond},
};

constexpr auto kPartOf = [] {
    std::array<WORD SYSTEMTIME::*, 256> parts{};
    for (const Letter& letter : kLetters)
        parts[static_cast<unsigned char>(letter.letter)] = letter.part;
    return parts;
}();

void AddYear(TextBuilder& result, unsigned year) {
    if (year >= 1000) {
        result.AddTwoDigits(year / 100);
    } else {
        result.Add(static_cast<char>('0' + year / 100));  // dates begin with the year 100
    }
    result.AddTwoDigits(year);
}

/// Writes what the beginning of a format stands for. No value holds a letter of the format, so one walk gives what
/// replacing one token after the other does.
/// @return the bytes of the format that were used
std::size_t AddNext(TextBuilder& result, std::string_view format, const SYSTEMTIME& time) {
    const char ch = format.front();
    if (format.size() > 1 && format[1] == ch) {
        if (const auto part = kPartOf[static_cast<unsigned char>(ch)]; part != nullptr) {
            if (format.starts_with("YYYY")) {
                AddYear(result, time.wYear);
                return 4;
            }
            result.AddTwoDigits(time.*part);
            return 2;
        }
    }
    if (ch == 'W') {
        // Contract: one day ahead: Sunday is called Tuesday. Saturday, beyond the end of the names, takes the first.
        result.Add(kWeekdays[(time.wDayOfWeek + 1) % 7]);
        return 1;
    }
    const std::size_t length = CharacterLength(format, 0);
    result.Add(ch);
    if (length == 2) result.Add(format[1]);
    return length;
}

}  // namespace
}  // namespace tk::util

CString DateToString(DATE date, const char* szFormat) {
    using namespace tk::util;
    SYSTEMTIME time;
    // Not every platform refuses what is no number.
    if (!std::isfinite(date) || VariantTimeToSystemTime(date, &time) == 0) return {};
    std::string_view rest = View(szFormat);
    if (rest.empty()) rest = kDefaultFormat;
    TextBuilder result;
    while (!rest.empty())
        rest.remove_prefix(AddNext(result, rest, time));
    return result.Take();
}
