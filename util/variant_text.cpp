#include <cstring>

#include "tkkernel/util.h"
#include "util/currency_rounding.h"
#include "util/date_text.h"
#include "util/number_text.h"
#include "util/text.h"
#include "util/variant_types.h"

namespace tk::util {
namespace {

CString WideText(BSTR text) {
    return {text, static_cast<int>(SysStringLen(text))};
}

CString DecimalText(const VARIANT& value) {
    CString text = DecimalToString(DecimalOf(value));
    if (text.IsEmpty()) text = "0";
    return text;
}

/// The bytes of a one-dimensional array up to the first zero one.
CString BytesText(SAFEARRAY* array) {
    if (array == nullptr || SafeArrayGetDim(array) != 1 || SafeArrayGetElemsize(array) != 1) return {};
    LONG lower = 0;
    LONG upper = 0;
    void* bytes = nullptr;
    if (FAILED(SafeArrayGetLBound(array, 1, &lower)) || FAILED(SafeArrayGetUBound(array, 1, &upper))) return {};
    const auto count = static_cast<LONGLONG>(upper) - lower + 1;
    if (count < 1 || FAILED(SafeArrayAccessData(array, &bytes))) return {};
    const char* text = static_cast<const char*>(bytes);
    const auto length = static_cast<std::size_t>(count);
    const void* zero = std::memchr(text, '\0', length);
    CString result(text, static_cast<int>(zero != nullptr ? static_cast<const char*>(zero) - text : count));
    SafeArrayUnaccessData(array);
    return result;
}

/// The text enclosed in single quotes, those inside doubled. No second byte of a character equals a quote.
CString Quoted(const CString& text) {
    CString result = text;
    result.Replace("'", "''");
    return "'" + result + "'";
}

/// The platform's text of a value in single quotes; "" when it has none. Arrays have none, whatever the platform makes
/// of their bytes.
CString CoercedText(const VARIANT& value) {
    if ((value.vt & VT_ARRAY) != 0) return {};
    VARIANT text;
    VariantInit(&text);
    // The platform's function takes a source it could write to, but does not.
    if (FAILED(VariantChangeType(&text, const_cast<VARIANT*>(&value), 0, VT_BSTR))) return {};
    // Contract: the quotes of a coerced text are not doubled.
    CString result = "'" + WideText(text.bstrVal) + "'";
    VariantClear(&text);
    return result;
}

}  // namespace
}  // namespace tk::util

CString VariantToString(const VARIANT& value) {
    using namespace tk::util;
    switch (value.vt) {
        case VT_I2:
            return IntegerText(value.iVal);
        case VT_I4:
            return IntegerText(value.lVal);
        case VT_UI1:
            return IntegerText(static_cast<unsigned>(value.bVal));
        case VT_R4:
            return AmountText(static_cast<double>(value.fltVal));
        case VT_R8:
            return AmountText(value.dblVal);
        case VT_CY:
            return AmountText(RoundCurrency(value.cyVal));
        case VT_DATE:
            return DateText(value.date);
        case VT_BSTR:
            return WideText(value.bstrVal);
        case VT_BOOL:
            return value.boolVal != 0 ? "True" : "False";
        case VT_DECIMAL:
        case kNumericType:
            return DecimalText(value);
        case VT_ARRAY | VT_UI1:
            return BytesText(value.parray);
        default:
            return {};
    }
}

CString VARIANTToString(const VARIANT& value) {
    using namespace tk::util;
    switch (value.vt) {
        case VT_DATE:
            return "'" + DateText(value.date) + "'";
        case VT_BSTR:
            return Quoted(WideText(value.bstrVal));
        case VT_EMPTY:
        case VT_NULL:
        case VT_I2:
        case VT_I4:
        case VT_UI1:
        case VT_R4:
        case VT_R8:
        case VT_CY:
        case VT_BOOL:
        case VT_DECIMAL:
        case kNumericType:
            return VariantToString(value);
        default:
            return CoercedText(value);
    }
}

CString VariantToTrimString(const VARIANT& value) {
    CString text = VariantToString(value);
    text.TrimLeft();
    text.TrimRight();
    return text;
}
