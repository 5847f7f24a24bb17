#include "win32/automation/number.h"

#include <array>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>

#include "win32/automation/date_value.h"

namespace tk::automation {

namespace {

static_assert(std::endian::native == std::endian::little, "an integer lies in the low bytes of the value field");

struct NumberTypeRow {
    VARTYPE type;
    NumberType facts;
};
constexpr NumberTypeRow kNumberTypes[] = {
    {VT_I1, {Form::Integer, 1, true}},       {VT_UI1, {Form::Integer, 1, false}},  {VT_I2, {Form::Integer, 2, true}},
    {VT_UI2, {Form::Integer, 2, false}},     {VT_I4, {Form::Integer, 4, true}},    {VT_UI4, {Form::Integer, 4, false}},
    {VT_INT, {Form::Integer, 4, true}},      {VT_UINT, {Form::Integer, 4, false}}, {VT_I8, {Form::Integer, 8, true}},
    {VT_UI8, {Form::Integer, 8, false}},     {VT_BOOL, {Form::Integer, 2, true}},  {VT_R4, {Form::Real, 4, true}},
    {VT_R8, {Form::Real, 8, true}},          {VT_DATE, {Form::Real, 8, true}},     {VT_CY, {Form::Currency, 8, true}},
    {VT_DECIMAL, {Form::Decimal, 16, true}},
};
constexpr auto kByType = [] {
    std::array<NumberType, VT_UINT + 1> types{};
    for (const NumberTypeRow& row : kNumberTypes)
        types[row.type] = row.facts;
    return types;
}();

Int128 LoadInteger(const VARIANT& source, NumberType facts) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &source.llVal, facts.bytes);
    if (!facts.isSigned) return bits;
    const int unused = 64 - facts.bytes * 8;
    return static_cast<std::int64_t>(bits << unused) >> unused;
}

void PutBits(const void* bits, std::size_t bytes, VARTYPE type, VARIANT& out) {
    std::memcpy(&out.llVal, bits, bytes);
    out.vt = type;
}

HRESULT IntegerOf(const Number& number, Int128& integer) {
    switch (number.form) {
        case Form::Real:
            return RoundReal(number.real, integer);
        case Form::Currency:
            integer = RoundToEven(number.integer, kCurrencyPlaces);
            return S_OK;
        case Form::Decimal:
            integer = static_cast<Int128>(ScaleDownToEven(MagnitudeOf(number.decimal), number.decimal.scale));
            if (IsNegative(number.decimal)) integer = -integer;
            return S_OK;
        default:
            integer = number.integer;
            return S_OK;
    }
}

// A half is a half of the product as a double, as it is on the platform.
HRESULT CurrencyOfReal(double value, Int128& units) {
    constexpr double kExactIntegers = 0x1p53;
    const double product = value * static_cast<double>(kCurrencyUnits);
    if (!(std::fabs(product) > kExactIntegers)) return RoundReal(product, units);
    // Beyond that the product would lose units; the integer part is multiplied by itself.
    const double whole = std::trunc(value);
    Int128 wholeUnits = 0;
    HRESULT result = RoundReal(whole, wholeUnits);
    if (SUCCEEDED(result)) result = RoundReal((value - whole) * static_cast<double>(kCurrencyUnits), units);
    if (SUCCEEDED(result)) units += wholeUnits * kCurrencyUnits;
    return result;
}

HRESULT CurrencyOf(const Number& number, Int128& units) {
    switch (number.form) {
        case Form::Real:
            return CurrencyOfReal(number.real, units);
        case Form::Currency:
            units = number.integer;
            return S_OK;
        case Form::Decimal: {
            const UInt128 magnitude = MagnitudeOf(number.decimal);  // below 2^96, so the factor fits
            const int places = number.decimal.scale - kCurrencyPlaces;
            const UInt128 scaled = places >= 0 ? ScaleDownToEven(magnitude, places) : magnitude * kPowersOfTen[-places];
            units = IsNegative(number.decimal) ? -static_cast<Int128>(scaled) : static_cast<Int128>(scaled);
            return S_OK;
        }
        default:
            units = number.integer * kCurrencyUnits;
            return S_OK;
    }
}

HRESULT DecimalOf(const Number& number, DECIMAL& decimal) {
    switch (number.form) {
        case Form::Real:
            return DecimalFromReal(number.real, number.type == VT_R4 ? FLT_DIG + 1 : DBL_DIG, decimal);
        case Form::Decimal:
            StoreDecimal(MagnitudeOf(number.decimal), number.decimal.scale, IsNegative(number.decimal), decimal);
            return S_OK;
        default: {
            const bool negative = number.integer < 0;
            const Int128 magnitude = negative ? -number.integer : number.integer;
            const bool currency = number.form == Form::Currency;
            StoreDecimal(static_cast<UInt128>(magnitude), currency ? kCurrencyPlaces : 0, negative, decimal);
            if (currency) StripZeros(decimal, 0);
            return S_OK;
        }
    }
}

bool IsTrue(const Number& number) {
    if (number.form == Form::Real) return number.real != 0;
    if (number.form == Form::Decimal) return MagnitudeOf(number.decimal) != 0;
    return number.integer != 0;
}

HRESULT StoreAsInteger(const Number& number, VARTYPE target, NumberType facts, VARIANT& out) {
    if (target == VT_BOOL) {
        const VARIANT_BOOL truth = IsTrue(number) ? VARIANT_TRUE : VARIANT_FALSE;
        PutBits(&truth, sizeof(truth), VT_BOOL, out);
        return S_OK;
    }
    if (number.type == VT_BOOL) {
        // Contract: True is all bits, so it is 255 in a byte; no range is checked.
        const auto bits = static_cast<std::int64_t>(number.integer);
        PutBits(&bits, facts.bytes, target, out);
        return S_OK;
    }
    Int128 integer = 0;
    const HRESULT result = IntegerOf(number, integer);
    return FAILED(result) ? result : StoreInteger(integer, target, out);
}

}  // namespace

NumberType NumberTypeOf(VARTYPE type) noexcept {
    return type < kByType.size() ? kByType[type] : NumberType{};
}

HRESULT LoadNumber(const VARIANT& source, Number& number) noexcept {
    const NumberType facts = NumberTypeOf(source.vt);
    number.type = source.vt;
    number.form = source.vt == VT_EMPTY ? Form::Integer : facts.form;
    switch (facts.form) {
        case Form::Integer:
            number.integer = LoadInteger(source, facts);
            return S_OK;
        case Form::Real:
            number.real = source.vt == VT_R4 ? static_cast<double>(source.fltVal) : source.dblVal;
            return S_OK;
        case Form::Currency:
            number.integer = source.cyVal.int64;
            return S_OK;
        case Form::Decimal:
            number.decimal = source.decVal;
            return IsDecimal(source.decVal) ? S_OK : E_INVALIDARG;
        case Form::None:
            break;
    }
    return source.vt == VT_EMPTY ? S_OK : DISP_E_TYPEMISMATCH;
}

HRESULT StoreNumber(const Number& number, VARTYPE target, VARIANT& out) noexcept {
    const NumberType facts = NumberTypeOf(target);
    HRESULT result = DISP_E_TYPEMISMATCH;
    if (facts.form == Form::Integer) return StoreAsInteger(number, target, facts, out);
    if (facts.form == Form::Real) return StoreReal(RealOf(number), target, out);
    if (facts.form == Form::Currency) {
        Int128 units = 0;
        result = CurrencyOf(number, units);
        return FAILED(result) ? result : StoreCurrency(units, out);
    }
    if (facts.form == Form::Decimal) {
        DECIMAL decimal{};
        result = DecimalOf(number, decimal);
        if (FAILED(result)) return result;
        out.decVal = decimal;
        out.vt = VT_DECIMAL;
    }
    return result;
}

HRESULT StoreInteger(Int128 value, VARTYPE target, VARIANT& out) noexcept {
    const NumberType facts = NumberTypeOf(target);
    const int bits = facts.bytes * 8;
    const Int128 limit = Int128{1} << (facts.isSigned ? bits - 1 : bits);
    if (value >= limit || value < (facts.isSigned ? -limit : Int128{0})) return DISP_E_OVERFLOW;
    const auto low = static_cast<std::uint64_t>(value);
    PutBits(&low, facts.bytes, target, out);
    return S_OK;
}

HRESULT StoreReal(double value, VARTYPE target, VARIANT& out) noexcept {
    if (target == VT_R4) {
        if (std::fabs(value) > FLT_MAX) return DISP_E_OVERFLOW;
        const auto single = static_cast<float>(value);
        PutBits(&single, sizeof(single), VT_R4, out);
        return S_OK;
    }
    if (target == VT_DATE && !IsDate(value)) return DISP_E_OVERFLOW;
    PutBits(&value, sizeof(value), target, out);
    return S_OK;
}

HRESULT StoreCurrency(Int128 units, VARIANT& out) noexcept {
    if (units > std::numeric_limits<LONGLONG>::max() || units < std::numeric_limits<LONGLONG>::min()) {
        return DISP_E_OVERFLOW;
    }
    const auto value = static_cast<LONGLONG>(units);
    PutBits(&value, sizeof(value), VT_CY, out);
    return S_OK;
}

double RealOf(const Number& number) noexcept {
    switch (number.form) {
        case Form::Real:
            return number.real;
        case Form::Currency:
            return static_cast<double>(number.integer) / static_cast<double>(kCurrencyUnits);
        case Form::Decimal:
            return RealFromDecimal(number.decimal);
        default:
            return static_cast<double>(number.integer);
    }
}

HRESULT RoundReal(double value, Int128& integer) noexcept {
    constexpr double kLimit = 0x1p100;
    if (!(std::fabs(value) < kLimit)) return DISP_E_OVERFLOW;  // NaN too
    const double whole = std::trunc(value);
    const double rest = std::fabs(value - whole);  // exact
    integer = static_cast<Int128>(whole);
    if (rest > 0.5 || (rest == 0.5 && (integer & 1) != 0)) integer += value < 0 ? -1 : 1;
    return S_OK;
}

Int128 RoundToEven(Int128 value, int places) noexcept {
    const UInt128 magnitude = ScaleDownToEven(static_cast<UInt128>(value < 0 ? -value : value), places);
    return value < 0 ? -static_cast<Int128>(magnitude) : static_cast<Int128>(magnitude);
}

}  // namespace tk::automation
