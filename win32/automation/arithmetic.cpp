// VarAdd, VarSub, VarMul, VarNeg: the type of a result is looked up, then made wider until the value fits.
#include <cfloat>
#include <cmath>

#include "win32/automation/number.h"
#include "win32/automation/operand.h"

using namespace tk::automation;

namespace {

// ---- Types

// The types that arithmetic is done in; others are turned into one of them first.
enum Rank : unsigned char { kByte, kI2, kI4, kI8, kR4, kR8, kCy, kDate, kDec, kRanks };
constexpr VARTYPE kTypeOfRank[kRanks] = {VT_UI1, VT_I2, VT_I4, VT_I8, VT_R4, VT_R8, VT_CY, VT_DATE, VT_DECIMAL};

struct RankRow {
    VARTYPE type;
    Rank rank;
};
constexpr RankRow kRankRows[] = {
    {VT_UI1, kByte}, {VT_I1, kI2},  {VT_I2, kI2},     {VT_BOOL, kI2}, {VT_UI2, kI4},      {VT_I4, kI4},
    {VT_INT, kI4},   {VT_UI4, kI8}, {VT_UINT, kI8},   {VT_I8, kI8},   {VT_UI8, kDec},     {VT_R4, kR4},
    {VT_R8, kR8},    {VT_CY, kCy},  {VT_DATE, kDate}, {VT_BSTR, kR8}, {VT_DECIMAL, kDec},
};

Rank RankOf(VARTYPE type) {
    for (const RankRow& row : kRankRows) {
        if (row.type == type) return row.rank;
    }
    return kI2;  // VT_EMPTY beside another VT_EMPTY
}

// clang-format off
constexpr Rank kSumTypes[kRanks][kRanks] = {
    //          byte   I2     I4     I8     R4     R8     CY     DATE   DECIMAL
    /* byte */ {kByte, kI2,   kI4,   kI8,   kR4,   kR8,   kCy,   kDate, kDec},
    /* I2   */ {kI2,   kI2,   kI4,   kI8,   kR4,   kR8,   kCy,   kDate, kDec},
    /* I4   */ {kI4,   kI4,   kI4,   kI8,   kR8,   kR8,   kCy,   kDate, kDec},
    /* I8   */ {kI8,   kI8,   kI8,   kI8,   kR8,   kR8,   kCy,   kDate, kDec},
    /* R4   */ {kR4,   kR4,   kR8,   kR8,   kR4,   kR8,   kCy,   kDate, kDec},
    /* R8   */ {kR8,   kR8,   kR8,   kR8,   kR8,   kR8,   kCy,   kDate, kDec},
    /* CY   */ {kCy,   kCy,   kCy,   kCy,   kCy,   kCy,   kCy,   kDate, kDec},
    /* DATE */ {kDate, kDate, kDate, kDate, kDate, kDate, kDate, kDate, kDate},
    /* DEC  */ {kDec,  kDec,  kDec,  kDec,  kDec,  kDec,  kDec,  kDate, kDec},
};
// A product of an amount and a real is a real, and dates are reals.
constexpr Rank kProductTypes[kRanks][kRanks] = {
    //          byte   I2     I4     I8     R4     R8     CY     DATE   DECIMAL
    /* byte */ {kByte, kI2,   kI4,   kI8,   kR4,   kR8,   kCy,   kR8,   kDec},
    /* I2   */ {kI2,   kI2,   kI4,   kI8,   kR4,   kR8,   kCy,   kR8,   kDec},
    /* I4   */ {kI4,   kI4,   kI4,   kI8,   kR8,   kR8,   kCy,   kR8,   kDec},
    /* I8   */ {kI8,   kI8,   kI8,   kI8,   kR8,   kR8,   kCy,   kR8,   kDec},
    /* R4   */ {kR4,   kR4,   kR8,   kR8,   kR4,   kR8,   kR8,   kR8,   kDec},
    /* R8   */ {kR8,   kR8,   kR8,   kR8,   kR8,   kR8,   kR8,   kR8,   kDec},
    /* CY   */ {kCy,   kCy,   kCy,   kCy,   kR8,   kR8,   kCy,   kR8,   kDec},
    /* DATE */ {kR8,   kR8,   kR8,   kR8,   kR8,   kR8,   kR8,   kR8,   kDec},
    /* DEC  */ {kDec,  kDec,  kDec,  kDec,  kDec,  kDec,  kDec,  kDec,  kDec},
};
// clang-format on

// Where a value goes that does not fit; a type that is not listed overflows.
constexpr RankRow kWider[] = {{VT_UI1, kI2}, {VT_I2, kI4}, {VT_I4, kR8}, {VT_I8, kR8}, {VT_R4, kR8}, {VT_DATE, kR8}};

bool Widen(Rank& rank) {
    for (const RankRow& row : kWider) {
        if (row.type != kTypeOfRank[rank]) continue;
        rank = row.rank;
        return true;
    }
    return false;
}

// ---- Operations

struct Operation {
    const Rank (*types)[kRanks];
    Int128 (*integers)(Int128, Int128);
    double (*reals)(double, double);
    HRESULT (*currencies)(CY, CY, CY*);
    HRESULT (*decimals)(LPDECIMAL, LPDECIMAL, LPDECIMAL);
};
constexpr Operation kAdd = {kSumTypes, [](Int128 a, Int128 b) { return a + b; },
                            [](double a, double b) { return a + b; }, VarCyAdd, VarDecAdd};
constexpr Operation kSubtract = {kSumTypes, [](Int128 a, Int128 b) { return a - b; },
                                 [](double a, double b) { return a - b; }, VarCySub, VarDecSub};
constexpr Operation kMultiply = {kProductTypes, [](Int128 a, Int128 b) { return a * b; },
                                 [](double a, double b) { return a * b; }, VarCyMul, VarDecMul};

// Both operands in the type of the result.
struct Pair {
    VARIANT left;
    VARIANT right;
};

HRESULT ComputeReal(const Operation& operation, double left, double right, VARTYPE type, VARIANT& result) {
    const double value = operation.reals(left, right);
    if (!std::isfinite(value) && std::isfinite(left) && std::isfinite(right)) return DISP_E_OVERFLOW;
    return StoreReal(value, type, result);
}

HRESULT ComputeIn(Rank rank, const Operation& operation, const VARIANT& left, const VARIANT& right, VARIANT& result) {
    const VARTYPE type = kTypeOfRank[rank];
    Number leftNumber;
    Number rightNumber;
    LoadNumber(left, leftNumber);
    LoadNumber(right, rightNumber);
    const Form form = NumberTypeOf(type).form;
    if (form == Form::Integer) {
        return StoreInteger(operation.integers(leftNumber.integer, rightNumber.integer), type, result);
    }
    if (form == Form::Real) return ComputeReal(operation, RealOf(leftNumber), RealOf(rightNumber), type, result);
    Pair pair;
    HRESULT outcome = StoreNumber(leftNumber, type, pair.left);
    if (SUCCEEDED(outcome)) outcome = StoreNumber(rightNumber, type, pair.right);
    if (FAILED(outcome)) return outcome;
    VARIANT value;
    if (form == Form::Currency) {
        outcome = operation.currencies(pair.left.cyVal, pair.right.cyVal, &value.cyVal);
    } else {
        outcome = operation.decimals(&pair.left.decVal, &pair.right.decVal, &value.decVal);
    }
    if (FAILED(outcome)) return outcome;
    value.vt = type;
    result = value;
    return S_OK;
}

// A text counts as the real it spells.
HRESULT NumberFrom(const VARIANT& source, LCID locale, VARIANT& number) {
    if (source.vt == VT_BSTR) {
        ConvertRules rules;
        rules.locale = locale;
        return ConvertText(source.bstrVal, VT_R8, rules, number);
    }
    number = source;
    return S_OK;
}

HRESULT Compute(const Operation& operation, const VARIANT& left, const VARIANT& right, VARIANT& result) {
    VARIANT leftNumber;
    VARIANT rightNumber;
    HRESULT outcome = NumberFrom(left, 0, leftNumber);
    if (SUCCEEDED(outcome)) outcome = NumberFrom(right, 0, rightNumber);
    if (FAILED(outcome)) return outcome;
    // Nothing takes the type of the other side.
    const Rank leftRank = RankOf(left.vt != VT_EMPTY ? left.vt : right.vt);
    const Rank rightRank = RankOf(right.vt != VT_EMPTY ? right.vt : left.vt);
    Rank rank = operation.types[leftRank][rightRank];
    // Contract: the difference of two dates is a number of days.
    if (&operation == &kSubtract && left.vt == VT_DATE && right.vt == VT_DATE) rank = kR8;
    do {
        outcome = ComputeIn(rank, operation, leftNumber, rightNumber, result);
    } while (outcome == DISP_E_OVERFLOW && Widen(rank));
    return outcome;
}

// The result may be one of the operands; any other result is overwritten, as an output is.
void Deliver(const VARIANT& value, const VARIANT* left, const VARIANT* right, VARIANT* result) {
    if (result == left || result == right) VariantClear(result);
    *result = value;
}

HRESULT Operate(const Operation& operation, LPVARIANT left, LPVARIANT right, LPVARIANT result) {
    if (left == nullptr || right == nullptr || result == nullptr) return E_INVALIDARG;
    Operand first;
    Operand second;
    HRESULT outcome = first.Take(left, 0);
    if (SUCCEEDED(outcome)) outcome = second.Take(right, 0);
    if (FAILED(outcome)) return outcome;
    VARIANT value;
    VariantInit(&value);
    const bool joins = &operation == &kAdd && (first.Type() == VT_BSTR || first.Type() == VT_EMPTY) &&
                       (second.Type() == VT_BSTR || second.Type() == VT_EMPTY) && first.Type() + second.Type() != 0;
    if (first.Type() == VT_NULL || second.Type() == VT_NULL) {
        value.vt = VT_NULL;
    } else if (joins) {
        outcome = VarBstrCat(first.Type() == VT_BSTR ? first.Value().bstrVal : nullptr,
                             second.Type() == VT_BSTR ? second.Value().bstrVal : nullptr, &value.bstrVal);
        if (SUCCEEDED(outcome)) value.vt = VT_BSTR;
    } else {
        outcome = Compute(operation, first.Value(), second.Value(), value);
    }
    if (SUCCEEDED(outcome)) Deliver(value, left, right, result);
    return outcome;
}

}  // namespace

HRESULT VarAdd(LPVARIANT pvarLeft, LPVARIANT pvarRight, LPVARIANT pvarResult) {
    return Operate(kAdd, pvarLeft, pvarRight, pvarResult);
}

HRESULT VarSub(LPVARIANT pvarLeft, LPVARIANT pvarRight, LPVARIANT pvarResult) {
    return Operate(kSubtract, pvarLeft, pvarRight, pvarResult);
}

HRESULT VarMul(LPVARIANT pvarLeft, LPVARIANT pvarRight, LPVARIANT pvarResult) {
    return Operate(kMultiply, pvarLeft, pvarRight, pvarResult);
}

HRESULT VarNeg(LPVARIANT pvarIn, LPVARIANT pvarResult) {
    if (pvarIn == nullptr || pvarResult == nullptr) return E_INVALIDARG;
    Operand operand;
    HRESULT outcome = operand.Take(pvarIn, 0);
    if (FAILED(outcome)) return outcome;
    VARIANT value;
    VariantInit(&value);
    if (operand.Type() == VT_NULL) {
        value.vt = VT_NULL;
    } else {
        VARIANT zero;
        zero.vt = VT_I2;  // signed, so that a byte becomes signed with it
        zero.iVal = 0;
        outcome = Compute(kSubtract, zero, operand.Value(), value);
    }
    if (SUCCEEDED(outcome)) Deliver(value, pvarIn, nullptr, pvarResult);
    return outcome;
}
