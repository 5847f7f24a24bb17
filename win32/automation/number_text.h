// number_text.h - reads a number as people write it, and turns it into any of the number types, rounding once.
#pragma once

#include <cstdint>
#include <string_view>

#include "win32/automation/locale_facts.h"
#include "win32/automation/wide_integer.h"
#include "win32/include/oleauto.h"

namespace tk::automation {

/// The digits of a number: 0.d0d1d2... times 10^point. No zeros at either end; zero has no digits.
struct ParsedNumber {
    // A double near a halfway point is decided within 768 digits; a last digit stands for all beyond.
    static constexpr int kMaxDigits = 800;

    bool negative = false;
    bool radix = false;  // &H or &O: `bits` is the value, and there are no digits
    std::uint64_t bits = 0;
    int count = 0;
    std::int64_t point = 0;
    char digit[kMaxDigits + 1];
};

/// Blanks around, one sign in front or behind, or parentheses for negative; the locale's currency sign before or
/// behind; digits grouped by commas; a decimal point; an exponent. Or &H and &O with digits of their kind.
/// @return DISP_E_TYPEMISMATCH for anything else, DISP_E_OVERFLOW for more than 64 bits after &H and &O
HRESULT ParseNumber(std::u16string_view text, const LocaleFacts& locale, ParsedNumber& number) noexcept;

/// The nearest double. DISP_E_OVERFLOW when too large; too small is zero.
HRESULT RealFromParsed(const ParsedNumber& number, double& value) noexcept;
/// The number times 10^places, rounded to even. DISP_E_OVERFLOW beyond 38 digits.
HRESULT IntegerFromParsed(const ParsedNumber& number, int places, Int128& value) noexcept;
HRESULT DecimalFromParsed(const ParsedNumber& number, DECIMAL& value) noexcept;

}  // namespace tk::automation
