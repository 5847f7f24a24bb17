#include "tkkernel/util.h"
#include "util/variant_types.h"

CString FormatVariant(VARIANT value, const char* szFormat) {
    switch (value.vt) {
        case VT_I2:
            return IntToString(value.iVal, szFormat);
        case VT_BOOL:
            return IntToString(value.boolVal, szFormat);
        case VT_I4:
            return IntToString(value.lVal, szFormat);
        case VT_UI1:
            return IntToString(value.bVal, szFormat);
        case VT_R4:
            return DoubleToString(static_cast<double>(value.fltVal), szFormat);
        case VT_R8:
            return DoubleToString(value.dblVal, szFormat);
        case VT_DECIMAL:
            return DoubleToString(DecimalToDouble(tk::util::DecimalOf(value)), szFormat);
        case VT_DATE:
            return DateToString(value.date, szFormat);
        case VT_BSTR:
            return {value.bstrVal, static_cast<int>(SysStringLen(value.bstrVal))};
        default:
            // Contract: currency has no formatted text, though it has a display text.
            return {};
    }
}
