#include "win32/automation/decimal_value.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "win32/automation/plain_text.h"

namespace tk::automation {

namespace {

// What was cut off, as rounding sees it: the first digit, and whether anything follows it.
struct CutOff {
    std::uint64_t digit = 0;
    bool more = false;

    bool RoundsUp(bool odd) const { return digit > 5 || (digit == 5 && (more || odd)); }
};

void CutDigits(Wide& magnitude, int places, CutOff& cut) {
    while (places > 0) {
        const int step = std::min(places, kTenPowers - 1);
        const std::uint64_t remainder = magnitude.Divide(kPowersOfTen[step]);
        cut.more = cut.more || cut.digit != 0 || remainder % kPowersOfTen[step - 1] != 0;
        cut.digit = remainder / kPowersOfTen[step - 1];
        places -= step;
    }
}

// A magnitude of so many bits has at least so many digits too many; one more may turn out to be.
int DigitsBeyond96Bits(int bits) {
    return bits <= 96 ? 0 : (bits - 97) * 30103 / 100000;
}

}  // namespace

HRESULT StoreRounded(Wide magnitude, int scale, bool sticky, bool negative, DECIMAL& out) noexcept {
    CutOff cut{0, sticky};
    int places = std::max(scale - kMaxScale, DigitsBeyond96Bits(magnitude.Bits()));
    for (;;) {
        if (places > scale) return DISP_E_OVERFLOW;
        CutDigits(magnitude, places, cut);
        scale -= places;
        places = 1;
        if (magnitude.Bits() > 96) continue;
        const UInt128 rounded = magnitude.Low() + (cut.RoundsUp(magnitude.IsOdd()) ? 1 : 0);
        if (rounded > kMaxMagnitude) continue;  // rounds again from the unrounded digits, so never twice
        StoreDecimal(rounded, scale, negative, out);
        return S_OK;
    }
}

void StripZeros(DECIMAL& value, int keptScale) noexcept {
    Wide magnitude(MagnitudeOf(value));
    int scale = value.scale;
    while (scale > keptScale) {
        Wide shorter = magnitude;
        if (shorter.Divide(10) != 0) break;
        magnitude = shorter;
        --scale;
    }
    StoreDecimal(magnitude.Low(), scale, IsNegative(value), value);
}

UInt128 ScaleDownToEven(UInt128 magnitude, int places) noexcept {
    Wide wide(magnitude);
    CutOff cut;
    CutDigits(wide, places, cut);
    return wide.Low() + (cut.RoundsUp(wide.IsOdd()) ? 1 : 0);
}

double RealFromDecimal(const DECIMAL& value) noexcept {
    const UInt128 magnitude = MagnitudeOf(value);
    double result = 0;
    constexpr int kExactPowers = 22;  // 10^22 is the last power of ten that a double holds exactly
    if (magnitude <= (UInt128{1} << 53) && value.scale <= kExactPowers) {
        // Both are exact, so the division rounds once.
        double divisor = static_cast<double>(kPowersOfTen[std::min<int>(value.scale, kTenPowers - 1)]);
        if (value.scale >= kTenPowers) divisor *= static_cast<double>(kPowersOfTen[value.scale - (kTenPowers - 1)]);
        result = static_cast<double>(static_cast<std::uint64_t>(magnitude)) / divisor;
    } else {
        char digits[48];
        char* end = PutDigits(digits, magnitude);
        *end++ = 'e';
        end = std::to_chars(end, digits + sizeof(digits), -static_cast<int>(value.scale)).ptr;
        std::from_chars(digits, end, result);
    }
    return IsNegative(value) ? -result : result;
}

HRESULT DecimalFromReal(double value, int significantDigits, DECIMAL& out) noexcept {
    if (!std::isfinite(value)) return DISP_E_OVERFLOW;
    RealDigits digits;
    SplitReal(value, significantDigits, digits);
    std::uint64_t mantissa = 0;
    std::from_chars(digits.digit, digits.digit + digits.count, mantissa);
    Wide magnitude{UInt128{mantissa}};
    int scale = digits.count - 1 - digits.exponent;
    constexpr int kHopeless = 30;  // beyond 96 bits by any mantissa
    if (scale < -kHopeless) return mantissa == 0 ? (StoreDecimal(0, 0, false, out), S_OK) : DISP_E_OVERFLOW;
    if (scale < 0) {
        magnitude.MultiplyByTenTo(-scale);
        scale = 0;
    }
    const HRESULT result = StoreRounded(magnitude, scale, false, digits.negative, out);
    if (SUCCEEDED(result)) StripZeros(out, 0);
    return result;
}

}  // namespace tk::automation
