#include <cmath>
#include <cstdint>

#include "tkkernel/util.h"
#include "util/currency_rounding.h"
#include "util/text.h"
#include "util/variant_types.h"

namespace tk::util {
namespace {

constexpr std::int32_t kNotANumber = 2147483647;  // what the interface gives for values it cannot convert

long Truncated(double value) {
    const double whole = std::trunc(value);
    return whole >= -2147483648.0 && whole <= 2147483647.0 ? static_cast<long>(whole) : kNotANumber;
}

/// What "%d" reads from the first ten characters of a decimal's text.
/// Contract: the fraction is dropped and a longer number cut; nine billion and more wrap around in 32 bits.
std::int32_t DecimalHead(const VARIANT& value) {
    const CString text = DecimalToString(DecimalOf(value));
    if (text.IsEmpty()) return kNotANumber;
    std::string_view digits = View(text).substr(0, 10);
    const bool negative = digits.starts_with('-');
    if (negative) digits.remove_prefix(1);
    std::int64_t number = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') break;
        number = number * 10 + (digit - '0');
    }
    return static_cast<std::int32_t>(negative ? -number : number);
}

}  // namespace
}  // namespace tk::util

long VariantToLong(const VARIANT& value) {
    using namespace tk::util;
    switch (value.vt) {
        case VT_I2:
            return value.iVal;
        case VT_BOOL:
            return value.boolVal;
        case VT_I4:
            return value.lVal;
        case VT_UI1:
            return value.bVal;
        case VT_R4:
            return Truncated(static_cast<double>(value.fltVal));
        case VT_R8:
            return Truncated(value.dblVal);
        case VT_DATE:
            return Truncated(value.date);
        case VT_CY:
            return Truncated(RoundCurrency(value.cyVal));
        case VT_DECIMAL:
        case kNumericType:
            return DecimalHead(value);
        default:
            return kNotANumber;
    }
}

double VariantToDouble(const VARIANT& value) {
    using namespace tk::util;
    switch (value.vt) {
        case VT_I2:
            return value.iVal;
        case VT_BOOL:
            return value.boolVal;
        case VT_I4:
            return value.lVal;
        case VT_UI1:
            return value.bVal;
        case VT_R4:
            return static_cast<double>(value.fltVal);
        case VT_R8:
            return value.dblVal;
        case VT_DATE:
            return value.date;
        case VT_CY:
            return RoundCurrency(value.cyVal);
        case VT_DECIMAL:
        case kNumericType:
            return DecimalHead(value);  // Contract: the fraction is dropped here too
        default:
            return kNotANumber;
    }
}
