#include "win32/automation/locale_facts.h"

namespace tk::automation {

namespace {

struct LocaleRow {
    WORD language;
    LocaleFacts facts;
};

constexpr LocaleFacts kChinese{u"\u00A5\uFFE5", DateOrder::YearMonthDay, false, false, false};
constexpr LocaleFacts kEnglish{u"$", DateOrder::MonthDayYear, false, true, false};
constexpr LocaleFacts kInvariant{u"\u00A4", DateOrder::MonthDayYear, true, false, true};

constexpr LocaleRow kLocales[] = {
    {0x0000, kChinese},  // neutral, user's and system's default
    {0x0400, kChinese}, {0x0800, kChinese}, {0x0004, kChinese},
    {0x0804, kChinese}, {0x0009, kEnglish}, {0x0409, kEnglish},
};

}  // namespace

const LocaleFacts& FactsOfLocale(LCID locale) noexcept {
    for (const LocaleRow& row : kLocales) {
        if (row.language == LOWORD(locale)) return row.facts;
    }
    return kInvariant;
}

}  // namespace tk::automation
