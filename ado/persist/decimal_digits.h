// ado/persist/decimal_digits.h - plain decimal numbers of up to 38 digits as an integer and a scale.
#pragma once

#include <string_view>

namespace tk::ado {

__extension__ using WideInteger = unsigned __int128;

struct DecimalDigits {
    WideInteger magnitude = 0;
    int scale = 0;
    bool isNegative = false;
};

/// Reads sign, digits and point; false for anything else, for more than 38 digits, and for spellings (a leading zero in
/// front of many digits) that would not come back as the same value.
bool ReadDigits(std::string_view text, DecimalDigits& digits) noexcept;

inline constexpr std::size_t kDigitsRoom = 96;

/// The plain spelling. @param buffer  of kDigitsRoom bytes @param digits  a scale of 0 to 38
std::string_view SpellDigits(const DecimalDigits& digits, char* buffer) noexcept;

}  // namespace tk::ado
