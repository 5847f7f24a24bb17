// Arithmetic of decimals: exact inside, rounded once to what a DECIMAL holds.
#include <cmath>

#include "win32/automation/decimal_value.h"

using namespace tk::automation;

namespace {

struct Aligned {
    Wide left;
    Wide right;
    int scale;
};

// Both magnitudes at the larger of the two scales: 96 bits and 10^28 make 190.
Aligned Align(const DECIMAL& left, const DECIMAL& right) {
    Aligned pair{Wide(MagnitudeOf(left)), Wide(MagnitudeOf(right)), left.scale};
    if (left.scale < right.scale) {
        pair.left.MultiplyByTenTo(right.scale - left.scale);
        pair.scale = right.scale;
    } else {
        pair.right.MultiplyByTenTo(left.scale - right.scale);
    }
    return pair;
}

bool AreDecimals(const DECIMAL* left, const DECIMAL* right, const DECIMAL* result) {
    return left != nullptr && right != nullptr && result != nullptr && IsDecimal(*left) && IsDecimal(*right);
}

HRESULT AddSigned(const DECIMAL& left, const DECIMAL& right, bool rightNegative, DECIMAL& result) {
    Aligned pair = Align(left, right);
    bool negative = IsNegative(left);
    if (negative == rightNegative) {
        pair.left += pair.right;
    } else if (pair.left >= pair.right) {
        pair.left -= pair.right;
    } else {
        pair.right -= pair.left;
        pair.left = pair.right;
        negative = rightNegative;
    }
    return StoreRounded(pair.left, pair.scale, false, negative, result);
}

int SignOf(const DECIMAL& value) {
    if (MagnitudeOf(value) == 0) return 0;
    return IsNegative(value) ? -1 : 1;
}

HRESULT CompareResult(std::strong_ordering order) {
    if (order == std::strong_ordering::equal) return VARCMP_EQ;
    return order == std::strong_ordering::less ? VARCMP_LT : VARCMP_GT;
}

HRESULT CompareDecimals(const DECIMAL& left, const DECIMAL& right) {
    const int sign = SignOf(left);
    if (sign != SignOf(right)) return CompareResult(sign <=> SignOf(right));
    const Aligned pair = Align(left, right);
    return CompareResult(sign >= 0 ? pair.left <=> pair.right : pair.right <=> pair.left);
}

enum class Cut : unsigned char { TowardsZero, Down };

HRESULT CutFraction(const DECIMAL* in, Cut cut, DECIMAL* result) {
    if (in == nullptr || result == nullptr || !IsDecimal(*in)) return E_INVALIDARG;
    Wide magnitude(MagnitudeOf(*in));
    const bool negative = IsNegative(*in);
    const std::uint64_t upper = magnitude.Divide(kPowersOfTen[in->scale < kTenPowers ? in->scale : kTenPowers - 1]);
    const std::uint64_t lower = in->scale < kTenPowers ? 0 : magnitude.Divide(kPowersOfTen[in->scale - kTenPowers + 1]);
    const bool down = cut == Cut::Down && negative && (upper != 0 || lower != 0);
    // One more than the integer part fits: a fraction means the integer part is below 2^96 / 10.
    StoreDecimal(magnitude.Low() + (down ? 1 : 0), 0, negative, *result);
    return S_OK;
}

}  // namespace

HRESULT VarDecAdd(LPDECIMAL pdecLeft, LPDECIMAL pdecRight, LPDECIMAL pdecResult) {
    if (!AreDecimals(pdecLeft, pdecRight, pdecResult)) return E_INVALIDARG;
    return AddSigned(*pdecLeft, *pdecRight, IsNegative(*pdecRight), *pdecResult);
}

HRESULT VarDecSub(LPDECIMAL pdecLeft, LPDECIMAL pdecRight, LPDECIMAL pdecResult) {
    if (!AreDecimals(pdecLeft, pdecRight, pdecResult)) return E_INVALIDARG;
    return AddSigned(*pdecLeft, *pdecRight, !IsNegative(*pdecRight), *pdecResult);
}

HRESULT VarDecMul(LPDECIMAL pdecLeft, LPDECIMAL pdecRight, LPDECIMAL pdecResult) {
    if (!AreDecimals(pdecLeft, pdecRight, pdecResult)) return E_INVALIDARG;
    const Wide product = Wide(MagnitudeOf(*pdecLeft)) * Wide(MagnitudeOf(*pdecRight));
    const bool negative = IsNegative(*pdecLeft) != IsNegative(*pdecRight);
    return StoreRounded(product, pdecLeft->scale + pdecRight->scale, false, negative, *pdecResult);
}

HRESULT VarDecDiv(LPDECIMAL pdecLeft, LPDECIMAL pdecRight, LPDECIMAL pdecResult) {
    if (!AreDecimals(pdecLeft, pdecRight, pdecResult)) return E_INVALIDARG;
    const UInt128 divisor = MagnitudeOf(*pdecRight);
    if (divisor == 0) return DISP_E_DIVBYZERO;
    Wide quotient(MagnitudeOf(*pdecLeft));
    // As many places as 256 bits have room for: the quotient then has over 150 bits, more than can be kept.
    const int extraPlaces = (255 - quotient.Bits()) * 30102 / 100000;
    quotient.MultiplyByTenTo(extraPlaces);
    const bool rest = quotient.DivideBy96Bits(divisor) != 0;
    const int keptScale = pdecLeft->scale > pdecRight->scale ? pdecLeft->scale - pdecRight->scale : 0;
    const bool negative = IsNegative(*pdecLeft) != IsNegative(*pdecRight);
    const int scale = extraPlaces + pdecLeft->scale - pdecRight->scale;  // 19 at least
    DECIMAL result{};
    const HRESULT outcome = StoreRounded(quotient, scale, rest, negative, result);
    if (FAILED(outcome)) return outcome;
    StripZeros(result, keptScale);
    StoreDecimal(MagnitudeOf(result), result.scale, negative, *pdecResult);
    return S_OK;
}

HRESULT VarDecAbs(LPDECIMAL pdecIn, LPDECIMAL pdecResult) {
    if (pdecIn == nullptr || pdecResult == nullptr || !IsDecimal(*pdecIn)) return E_INVALIDARG;
    StoreDecimal(MagnitudeOf(*pdecIn), pdecIn->scale, false, *pdecResult);
    return S_OK;
}

HRESULT VarDecNeg(LPDECIMAL pdecIn, LPDECIMAL pdecResult) {
    if (pdecIn == nullptr || pdecResult == nullptr || !IsDecimal(*pdecIn)) return E_INVALIDARG;
    StoreDecimal(MagnitudeOf(*pdecIn), pdecIn->scale, !IsNegative(*pdecIn), *pdecResult);
    return S_OK;
}

HRESULT VarDecFix(LPDECIMAL pdecIn, LPDECIMAL pdecResult) {
    return CutFraction(pdecIn, Cut::TowardsZero, pdecResult);
}

HRESULT VarDecInt(LPDECIMAL pdecIn, LPDECIMAL pdecResult) {
    return CutFraction(pdecIn, Cut::Down, pdecResult);
}

HRESULT VarDecRound(LPDECIMAL pdecIn, INT cDecimals, LPDECIMAL pdecResult) {
    if (pdecIn == nullptr || pdecResult == nullptr || !IsDecimal(*pdecIn) || cDecimals < 0) return E_INVALIDARG;
    const int dropped = pdecIn->scale > cDecimals ? pdecIn->scale - cDecimals : 0;
    StoreDecimal(ScaleDownToEven(MagnitudeOf(*pdecIn), dropped), pdecIn->scale - dropped, IsNegative(*pdecIn),
                 *pdecResult);
    return S_OK;
}

HRESULT VarDecCmp(LPDECIMAL pdecLeft, LPDECIMAL pdecRight) {
    if (!AreDecimals(pdecLeft, pdecRight, pdecLeft)) return E_INVALIDARG;
    return CompareDecimals(*pdecLeft, *pdecRight);
}

HRESULT VarDecCmpR8(LPDECIMAL pdecLeft, DOUBLE dblRight) {
    if (pdecLeft == nullptr || !IsDecimal(*pdecLeft)) return E_INVALIDARG;
    constexpr double kBeyondDecimals = 0x1p96;
    if (std::isnan(dblRight)) return VARCMP_NULL;
    if (dblRight >= kBeyondDecimals) return VARCMP_LT;
    if (dblRight <= -kBeyondDecimals) return VARCMP_GT;
    DECIMAL right{};
    const HRESULT result = VarDecFromR8(dblRight, &right);
    if (result == DISP_E_OVERFLOW) return dblRight > 0 ? VARCMP_LT : VARCMP_GT;  // rounded up to 2^96
    return FAILED(result) ? result : CompareDecimals(*pdecLeft, right);
}
