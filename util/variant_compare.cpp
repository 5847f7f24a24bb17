#include <charconv>
#include <cstdint>

#include "tkkernel/util.h"
#include "util/text.h"

namespace {

template <class T>
int Order(T first, T second) {
    return first > second ? 1 : first < second ? -1 : 0;
}

/// Contract: the plain difference, which wraps around for distant numbers.
int Difference(std::int32_t first, std::int32_t second) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(first) - static_cast<std::uint32_t>(second));
}

double DecimalValue(const VARIANT& value) {
    const CString text = VariantToString(value);
    const std::string_view digits = tk::util::View(text);
    double number = 0.0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

}  // namespace

int CompareVariant(const VARIANT& first, const VARIANT& second) {
    if (first.vt != second.vt) return -1;
    switch (first.vt) {
        case VT_I2:
            return Difference(first.iVal, second.iVal);
        case VT_I4:
            return Difference(first.lVal, second.lVal);
        case VT_UI1:
            return Difference(first.bVal, second.bVal);
        case VT_R4:
            return Order(first.fltVal, second.fltVal);
        case VT_R8:
            return Order(first.dblVal, second.dblVal);
        case VT_DATE:
            return Order(first.date, second.date);
        case VT_BOOL:
            return Order(first.boolVal, second.boolVal);  // Contract: true is -1 and comes before false
        case VT_BSTR:
            return lstrcmpA(VariantToString(first), VariantToString(second));
        case VT_DECIMAL:
            return Order(DecimalValue(first), DecimalValue(second));
        default:
            return 0;
    }
}
