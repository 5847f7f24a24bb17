// tests/support/tds/decimal_digits.h - decimals as texts and as the numbers that travel.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/tds/cell.h"

namespace tk::test::tds {

/// A sign and up to 38 digits as one number of 16 bytes, least first.
struct DecimalDigits {
    bool isNegative = false;
    std::string magnitude;
};

/// With so many decimals, rounded. @throws SqlError when the cell is no number or has too many digits
DecimalDigits DigitsOf(const Cell& cell, unsigned precision, unsigned scale);
/// @param magnitude  up to 16 bytes, least first
std::string DecimalText(bool isNegative, std::string_view magnitude, unsigned scale);

}  // namespace tk::test::tds
