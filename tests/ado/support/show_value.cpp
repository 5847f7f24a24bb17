#include <tkwin32/text.h>

#include <cstdio>

#include "ado/rowset/date_value.h"
#include "ado/rowset/number_value.h"
#include "ado/support/sqlite_file.h"

namespace tk::test {
namespace {

std::string Real(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

}  // namespace

std::string Show(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return "EMPTY";
        case VT_NULL:
            return "NULL";
        case VT_I2:
            return "I2 " + std::to_string(value.iVal);
        case VT_I4:
            return "I4 " + std::to_string(value.lVal);
        case VT_UI1:
            return "UI1 " + std::to_string(value.bVal);
        case VT_R4:
            return "R4 " + Real(static_cast<double>(value.fltVal));
        case VT_R8:
            return "R8 " + Real(value.dblVal);
        case VT_BOOL:
            return value.boolVal == VARIANT_TRUE    ? "BOOL true"
                   : value.boolVal == VARIANT_FALSE ? "BOOL false"
                                                    : "BOOL ?";
        case VT_DECIMAL:
            return "DECIMAL " + ado::FormatDecimal(value.decVal);
        case VT_DATE:
            return "DATE " + ado::FormatCalendarTime(ado::FromAutomationDate(value.date), ado::CalendarForm::DateTime);
        case VT_BSTR:
            return "BSTR " + text::Utf16ToUtf8({value.bstrVal, SysStringLen(value.bstrVal)});
        case VT_ARRAY | VT_UI1: {
            std::string shown = "BYTES ";
            const auto* bytes = static_cast<const unsigned char*>(value.parray->pvData);
            for (ULONG i = 0; i < value.parray->rgsabound[0].cElements; ++i) {
                char digits[4];
                std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
                shown += digits;
            }
            return shown;
        }
        default:
            return "type " + std::to_string(value.vt);
    }
}

std::string Show(const ado::RowSet& rows, std::size_t row, std::size_t column) {
    Value value;
    rows.Read(row, column, value);
    return Show(value);
}

}  // namespace tk::test
