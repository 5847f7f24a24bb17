#include "util/number_text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace tk::util {
namespace {

constexpr int kWidth = 12;

/// From 2^53 on there is no fraction, and every text is longer than the width.
CString WholeNumberText(double value) {
    if (!std::isfinite(value)) return {};
    char text[std::numeric_limits<double>::max_exponent10 + 3];
    const auto end = std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed, 0).ptr;
    return {text, static_cast<int>(end - text)};
}

}  // namespace

std::uint64_t ScaledExactly(double magnitude, std::uint64_t power) {
    static_assert(std::numeric_limits<double>::is_iec559);
    // A double is m * 2^-s with m below 2^53, so m times 1000 fits into 63 bits, and what the shift drops decides the
    // rounding.
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const int exponent = static_cast<int>(bits >> 52);
    const std::uint64_t mantissa = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{exponent != 0} << 52);
    const int shift = 1075 - exponent;
    const std::uint64_t scaled = mantissa * power;
    if (shift <= 0) return scaled;  // exactly 0: 2^52 and more are whole numbers
    if (shift >= 64) return 0;      // below half a unit
    const std::uint64_t whole = scaled >> shift;
    const std::uint64_t rest = scaled & ((std::uint64_t{1} << shift) - 1);
    const std::uint64_t half = std::uint64_t{1} << (shift - 1);
    return whole + (rest > half || (rest == half && (whole & 1) != 0));
}

CString AmountText(double value) {
    const double magnitude = std::fabs(value);
    if (!(magnitude < kFirstWithoutFraction)) return WholeNumberText(value);
    const std::uint64_t hundredths = ScaledExactly(magnitude, 100);
    if (hundredths == 0) return {};

    char digits[24];  // sign, 16 digits
    char* end = digits;
    if (value < 0) *end++ = '-';
    end = std::to_chars(end, digits + sizeof(digits), hundredths / 100).ptr;

    char text[32];
    const auto length = end - digits;
    char* at = std::fill_n(text, std::max<std::ptrdiff_t>(0, kWidth - 3 - length), ' ');  // ".00" takes three
    at = std::copy(digits, end, at);
    if (const auto fraction = static_cast<int>(hundredths % 100); fraction != 0) {
        *at++ = '.';
        *at++ = static_cast<char>('0' + fraction / 10);
        if (fraction % 10 != 0) *at++ = static_cast<char>('0' + fraction % 10);
    }
    return {text, static_cast<int>(at - text)};
}

}  // namespace tk::util
