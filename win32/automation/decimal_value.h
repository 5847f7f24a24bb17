// decimal_value.h - DECIMAL taken apart and put together again, with the one rounding rule of all its makers.
#pragma once

#include "win32/automation/wide_integer.h"
#include "win32/include/oleauto.h"

namespace tk::automation {

inline constexpr int kMaxScale = 28;

/// The largest DECIMAL without its scale: 2^96 - 1.
inline constexpr UInt128 kMaxMagnitude = (UInt128{1} << 96) - 1;

inline UInt128 MagnitudeOf(const DECIMAL& value) noexcept {
    return (UInt128{value.Hi32} << 64) | value.Lo64;
}
inline bool IsNegative(const DECIMAL& value) noexcept {
    return (value.sign & DECIMAL_NEG) != 0;
}
/// A scale beyond 28 or a strange sign byte makes no decimal.
inline bool IsDecimal(const DECIMAL& value) noexcept {
    return value.scale <= kMaxScale && (value.sign & ~DECIMAL_NEG) == 0;
}

/// The magnitude fits 96 bits and the scale is right. wReserved, which is the type of a VARIANT, is left alone.
/// Zero has no sign.
inline void StoreDecimal(UInt128 magnitude, int scale, bool negative, DECIMAL& out) noexcept {
    out.Hi32 = static_cast<ULONG>(magnitude >> 64);
    out.Lo64 = static_cast<ULONGLONG>(magnitude);
    out.scale = static_cast<BYTE>(scale);
    out.sign = negative && magnitude != 0 ? DECIMAL_NEG : BYTE{0};
}

/// Stores magnitude / 10^scale, dropping as many decimal places as it takes to fit, rounded to even.
/// @param scale  not negative
/// @param sticky  the true value is a little larger than the magnitude says
/// @return DISP_E_OVERFLOW when the integer part does not fit
HRESULT StoreRounded(Wide magnitude, int scale, bool sticky, bool negative, DECIMAL& out) noexcept;

/// Removes zeros at the end of the fraction down to `keptScale` places.
void StripZeros(DECIMAL& value, int keptScale) noexcept;

/// Divides by 10^places and rounds to even.
UInt128 ScaleDownToEven(UInt128 magnitude, int places) noexcept;

/// The nearest double.
double RealFromDecimal(const DECIMAL& value) noexcept;

/// The decimal with the given number of significant digits that is nearest to the value.
HRESULT DecimalFromReal(double value, int significantDigits, DECIMAL& out) noexcept;

}  // namespace tk::automation
