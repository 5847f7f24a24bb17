// date_words.h - the words and signs that a date text may hold, cut into tokens.
#pragma once

#include <array>
#include <string_view>

#include "win32/include/oleauto.h"

namespace tk::automation {

enum class DateTokenKind : unsigned char { Number, Month, Weekday, HalfDay, Mark, Separator };

/// What the Chinese signs behind a number say about it.
enum class DateMark : unsigned char { Year, Month, Day, Hour, Minute, Second };

struct DateToken {
    DateTokenKind kind;
    int value;   // the number; month 1 to 12; 0 before noon, 12 after; the mark; the separator's character
    int digits;  // of a number
};

struct DateTokens {
    static constexpr int kMost = 24;  // weekday, date and time with every sign are fewer
    std::array<DateToken, kMost> token;
    int count = 0;

    bool Is(int index, DateTokenKind kind) const { return index < count && token[index].kind == kind; }
    bool Is(int index, DateTokenKind kind, int value) const { return Is(index, kind) && token[index].value == value; }
    bool IsMark(int index, DateMark mark) const { return Is(index, DateTokenKind::Mark, static_cast<int>(mark)); }
    bool Add(const DateToken& added) {
        if (count == kMost) return false;
        token[count++] = added;
        return true;
    }
};

/// @return false when the text holds anything that no date has
bool CutDateText(std::u16string_view text, DateTokens& tokens) noexcept;

}  // namespace tk::automation
