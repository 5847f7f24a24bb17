// util/number_text.h - numbers as display text without a formatter: the hot path of every value shown.
#pragma once

#include <afx.h>

#include <charconv>
#include <concepts>
#include <cstdint>

namespace tk::util {

CString IntegerText(std::integral auto value) {
    char text[24];
    const auto end = std::to_chars(text, text + sizeof(text), value).ptr;
    return {text, static_cast<int>(end - text)};
}

/// "%12.2f" without the zeros at its end and without a bare point, its leading blanks kept; "" for what prints as zero
/// and for what is not finite. Exact: halves of the binary value go to the even digit, as printf does it.
CString AmountText(double value);

/// From here on a double has no fraction.
inline constexpr double kFirstWithoutFraction = 9007199254740992.0;  // 2^53

/// A magnitude below kFirstWithoutFraction times a power of ten up to 1000, as printf rounds it.
std::uint64_t ScaledExactly(double magnitude, std::uint64_t power);

}  // namespace tk::util
