#include <cmath>

#include "tkkernel/util.h"
#include "util/messages.h"
#include "util/text.h"
#include "util/text_builder.h"

namespace tk::util {
namespace {

constexpr std::string_view kDefaultFormat = "YYYY/MM/DD hh:mm:ss";

struct Token {
    std::string_view text;
    void (*add)(TextBuilder& result, const SYSTEMTIME& time);
};

void AddYear(TextBuilder& result, unsigned year) {
    if (year >= 1000) {
        result.AddTwoDigits(year / 100);
    } else {
        result.Add(static_cast<char>('0' + year / 100));  // dates begin with the year 100
    }
    result.AddTwoDigits(year);
}

/// The longer of two that begin alike comes first. No value holds the letters of a token, so one walk gives what
/// replacing token after token does.
constexpr Token kTokens[] = {
    {"YYYY", [](TextBuilder& result, const SYSTEMTIME& time) { AddYear(result, time.wYear); }},
    {"YY", [](TextBuilder& result, const SYSTEMTIME& time) { result.AddTwoDigits(time.wYear); }},
    {"MM", [](TextBuilder& result, const SYSTEMTIME& time) { result.AddTwoDigits(time.wMonth); }},
    {"DD", [](TextBuilder& result, const SYSTEMTIME& time) { result.AddTwoDigits(time.wDay); }},
    {"hh", [](TextBuilder& result, const SYSTEMTIME& time) { result.AddTwoDigits(time.wHour); }},
    {"mm", [](TextBuilder& result, const SYSTEMTIME& time) { result.AddTwoDigits(time.wMinute); }},
    {"ss", [](TextBuilder& result, const SYSTEMTIME& time) { result.AddTwoDigits(time.wSecond); }},
    // Contract: one day ahead: Sunday is called Tuesday. Saturday, beyond the end of the names, takes the first one.
    {"W", [](TextBuilder& result, const SYSTEMTIME& time) { result.Add(kWeekdays[(time.wDayOfWeek + 1) % 7]); }},
};

constexpr bool BeginsToken(char ch) {
    return ch == 'Y' || ch == 'M' || ch == 'D' || ch == 'h' || ch == 'm' || ch == 's' || ch == 'W';
}

const Token* FindToken(std::string_view text) {
    if (!BeginsToken(text.front())) return nullptr;
    for (const Token& token : kTokens) {
        if (text.starts_with(token.text)) return &token;
    }
    return nullptr;
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
    while (!rest.empty()) {
        if (const Token* const token = FindToken(rest)) {
            token->add(result, time);
            rest.remove_prefix(token->text.size());
        } else {
            const std::size_t length = CharacterLength(rest, 0);
            result.Add(rest.substr(0, length));
            rest.remove_prefix(length);
        }
    }
    return result.Take();
}
