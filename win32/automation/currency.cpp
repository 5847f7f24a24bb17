// Arithmetic of currency values: 64-bit units of 1/10000.
#include <cmath>
#include <limits>

#include "win32/automation/number.h"

using namespace tk::automation;

namespace {

HRESULT StoreUnits(Int128 units, CY* result) {
    if (result == nullptr) return E_INVALIDARG;
    if (units > std::numeric_limits<LONGLONG>::max() || units < std::numeric_limits<LONGLONG>::min()) {
        return DISP_E_OVERFLOW;
    }
    result->int64 = static_cast<LONGLONG>(units);
    return S_OK;
}

HRESULT Compare(double left, double right) {
    if (std::isnan(right)) return VARCMP_NULL;
    if (left == right) return VARCMP_EQ;
    return left < right ? VARCMP_LT : VARCMP_GT;
}

}  // namespace

HRESULT VarCyAdd(CY cyLeft, CY cyRight, CY* pcyResult) {
    return StoreUnits(Int128{cyLeft.int64} + cyRight.int64, pcyResult);
}

HRESULT VarCySub(CY cyLeft, CY cyRight, CY* pcyResult) {
    return StoreUnits(Int128{cyLeft.int64} - cyRight.int64, pcyResult);
}

HRESULT VarCyMul(CY cyLeft, CY cyRight, CY* pcyResult) {
    return StoreUnits(RoundToEven(Int128{cyLeft.int64} * cyRight.int64, kCurrencyPlaces), pcyResult);
}

HRESULT VarCyMulI4(CY cyLeft, LONG lRight, CY* pcyResult) {
    return StoreUnits(Int128{cyLeft.int64} * lRight, pcyResult);
}

HRESULT VarCyMulI8(CY cyLeft, LONG64 lRight, CY* pcyResult) {
    return StoreUnits(Int128{cyLeft.int64} * lRight, pcyResult);
}

HRESULT VarCyAbs(CY cyIn, CY* pcyResult) {
    const Int128 units = cyIn.int64;
    return StoreUnits(units < 0 ? -units : units, pcyResult);
}

HRESULT VarCyNeg(CY cyIn, CY* pcyResult) {
    return StoreUnits(-Int128{cyIn.int64}, pcyResult);
}

HRESULT VarCyFix(CY cyIn, CY* pcyResult) {
    return StoreUnits(cyIn.int64 / kCurrencyUnits * Int128{kCurrencyUnits}, pcyResult);
}

HRESULT VarCyInt(CY cyIn, CY* pcyResult) {
    const LONGLONG whole = cyIn.int64 / kCurrencyUnits - (cyIn.int64 % kCurrencyUnits < 0 ? 1 : 0);
    return StoreUnits(Int128{whole} * kCurrencyUnits, pcyResult);
}

HRESULT VarCyRound(CY cyIn, INT cDecimals, CY* pcyResult) {
    if (cDecimals < 0) return E_INVALIDARG;
    if (cDecimals >= kCurrencyPlaces) return StoreUnits(cyIn.int64, pcyResult);
    const int places = kCurrencyPlaces - cDecimals;
    return StoreUnits(RoundToEven(cyIn.int64, places) * static_cast<Int128>(kPowersOfTen[places]), pcyResult);
}

HRESULT VarCyCmp(CY cyLeft, CY cyRight) {
    if (cyLeft.int64 == cyRight.int64) return VARCMP_EQ;
    return cyLeft.int64 < cyRight.int64 ? VARCMP_LT : VARCMP_GT;
}

HRESULT VarCyCmpR8(CY cyLeft, DOUBLE dblRight) {
    return Compare(static_cast<double>(cyLeft.int64) / static_cast<double>(kCurrencyUnits), dblRight);
}
