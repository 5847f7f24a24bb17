// number.h - the number inside a VARIANT, in the exact form its type has, and its way into any other number type.
#pragma once

#include "win32/automation/decimal_value.h"
#include "win32/automation/wide_integer.h"
#include "win32/include/oleauto.h"

namespace tk::automation {

inline constexpr int kCurrencyPlaces = 4;
inline constexpr LONGLONG kCurrencyUnits = 10000;

enum class Form : unsigned char { None, Integer, Real, Currency, Decimal };

/// How a type code holds its number.
struct NumberType {
    Form form = Form::None;
    unsigned char bytes = 0;
    bool isSigned = false;
};

/// Form::None for types that hold no number. VT_DATE is a real, VT_BOOL an integer.
NumberType NumberTypeOf(VARTYPE type) noexcept;

struct Number {
    VARTYPE type = VT_EMPTY;
    Form form = Form::None;
    Int128 integer = 0;  // Integer; Currency in its units
    double real = 0;
    DECIMAL decimal{};
};

/// Takes the number out of a variant that is no reference. VT_EMPTY is the integer 0.
/// @return DISP_E_TYPEMISMATCH for types without a number, E_INVALIDARG for a broken decimal
HRESULT LoadNumber(const VARIANT& source, Number& number) noexcept;

/// Puts the number into a variant of another number type; the variant is untouched on failure.
HRESULT StoreNumber(const Number& number, VARTYPE target, VARIANT& out) noexcept;

/// The integer as a variant of an integer type. @return DISP_E_OVERFLOW
HRESULT StoreInteger(Int128 value, VARTYPE target, VARIANT& out) noexcept;
/// The real as VT_R4, VT_R8 or VT_DATE. @return DISP_E_OVERFLOW
HRESULT StoreReal(double value, VARTYPE target, VARIANT& out) noexcept;
/// Units of 1/10000. @return DISP_E_OVERFLOW
HRESULT StoreCurrency(Int128 units, VARIANT& out) noexcept;

double RealOf(const Number& number) noexcept;

/// The real rounded to an integer, a half to the even one. @return DISP_E_OVERFLOW beyond 100 bits
HRESULT RoundReal(double value, Int128& integer) noexcept;

/// Divides by 10^places and rounds to even.
Int128 RoundToEven(Int128 value, int places) noexcept;

}  // namespace tk::automation
