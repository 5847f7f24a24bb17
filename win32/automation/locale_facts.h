// locale_facts.h - what the served locales disagree about: currency signs, order and spelling of dates.
#pragma once

#include <string_view>

#include "win32/include/windef.h"

namespace tk::automation {

enum class DateOrder : unsigned char { YearMonthDay, MonthDayYear };

struct LocaleFacts {
    std::u16string_view currencySigns;  // each one character
    DateOrder order;
    bool paddedDate;    // MM/dd/yyyy instead of M/d/yyyy; without effect where the year stands first
    bool halfDayClock;  // h:mm:ss tt
    bool paddedHour;
};

/// Facts of a locale identifier; its sort order does not matter. 0, 0x400 and 0x800 are the system's: Chinese.
const LocaleFacts& FactsOfLocale(LCID locale) noexcept;

/// ASCII for the full-width form that a Chinese keyboard writes, a blank for the other blanks; others unchanged.
constexpr char16_t Narrow(char16_t character) noexcept {
    if (character >= 0xFF01 && character <= 0xFF5E) return static_cast<char16_t>(character - 0xFEE0);
    if (character == 0x3000 || character == 0xA0 || (character >= 0x09 && character <= 0x0D)) return u' ';
    return character;
}

constexpr char16_t LowerAscii(char16_t character) noexcept {
    return character >= u'A' && character <= u'Z' ? static_cast<char16_t>(character + 32) : character;
}
constexpr bool IsDigit(char16_t character) noexcept {
    return character >= u'0' && character <= u'9';
}

}  // namespace tk::automation
