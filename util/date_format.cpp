#include <array>
#include <cmath>

#include "tkkernel/util.h"
#include "util/messages.h"
#include "util/text.h"
#include "util/text_builder.h"

namespace tk::util {
namespace {

constexpr std::string_view kDefaultFormat = "YYYY/MM/DD hh:mm:ss";

/// The letters of a format, which count when they stand twice, in the order of DateParts.
constexpr std::string_view kLetters = "YMDhms";  // Y: the last two digits; all of them when it stands four times
using DateParts = std::array<unsigned, kLetters.size()>;

constexpr signed char kNoPart = -1;
constexpr auto kPartOf = [] {
    std::array<signed char, 256> parts{};
    parts.fill(kNoPart);
    for (std::size_t i = 0; i < kLetters.size(); ++i)
        parts[static_cast<unsigned char>(kLetters[i])] = static_cast<signed char>(i);
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
std::size_t AddNext(TextBuilder& result, std::string_view format, const DateParts& parts, unsigned weekday) {
    const char ch = format.front();
    if (format.size() > 1 && format[1] == ch) {
        if (const signed char part = kPartOf[static_cast<unsigned char>(ch)]; part != kNoPart) {
            const unsigned value = parts[static_cast<std::size_t>(part)];
            if (format.starts_with("YYYY")) {
                AddYear(result, value);
                return 4;
            }
            result.AddTwoDigits(value);
            return 2;
        }
    }
    if (ch == 'W') {
        // Contract: one day ahead: Sunday is called Tuesday. Saturday, beyond the end of the names, takes the first.
        result.Add(kWeekdays[(weekday + 1) % 7]);
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
    const DateParts parts = {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
    TextBuilder result;
    while (!rest.empty())
        rest.remove_prefix(AddNext(result, rest, parts, time.wDayOfWeek));
    return result.Take();
}
