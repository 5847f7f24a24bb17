#include "tools/tkdb/cell_text.h"

#include <fmt/format.h>
#include <tkkernel/util.h>
#include <tkwin32/text.h>

#include <charconv>
#include <iterator>

namespace tk::tools {
namespace {

void SetHexDigits(SAFEARRAY* array, std::string& text) {
    static constexpr char kDigits[] = "0123456789abcdef";
    text.clear();
    void* data = nullptr;
    LONG lower = 0;
    LONG upper = -1;
    if (array == nullptr || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
        FAILED(SafeArrayGetUBound(array, 1, &upper)) || FAILED(SafeArrayAccessData(array, &data))) {
        return;
    }
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (LONG i = 0; i <= upper - lower; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0xF];
    }
    SafeArrayUnaccessData(array);
}

void SetInteger(LONG value, std::string& text) {
    char digits[16];
    text.assign(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// The shortest text that reads back the same.
template <typename Real>
void SetReal(Real value, std::string& text) {
    text.clear();
    fmt::format_to(std::back_inserter(text), "{}", value);
}

void SetWide(BSTR wide, std::string& text) {
    text = text::Utf16ToUtf8({wide, SysStringLen(wide)});
}

void SetCoerced(const VARIANT& value, std::string& text) {
    VARIANT coerced;
    VariantInit(&coerced);
    text.clear();
    if (SUCCEEDED(VariantChangeType(&coerced, &value, 0, VT_BSTR))) SetWide(coerced.bstrVal, text);
    VariantClear(&coerced);
}

}  // namespace

void SetCellText(const VARIANT& value, CellText& cell) {
    cell.nature = CellNature::Number;
    switch (value.vt) {
        case VT_EMPTY:
        case VT_NULL:
            cell.nature = CellNature::Null;
            return cell.utf8.clear();
        case VT_BSTR:
            cell.nature = CellNature::Text;
            return SetWide(value.bstrVal, cell.utf8);
        case VT_BOOL:
            cell.nature = CellNature::Boolean;
            cell.utf8 = value.boolVal != VARIANT_FALSE ? "true" : "false";
            return;
        case VT_I2:
            return SetInteger(value.iVal, cell.utf8);
        case VT_I4:
            return SetInteger(value.lVal, cell.utf8);
        case VT_R4:
            return SetReal(value.fltVal, cell.utf8);
        case VT_R8:
            return SetReal(value.dblVal, cell.utf8);
        case VT_DATE:
            cell.nature = CellNature::Text;
            cell.utf8 = static_cast<const char*>(VariantToString(value));  // digits and marks, in every character set
            return;
        case VT_ARRAY | VT_UI1:
            cell.nature = CellNature::Text;
            return SetHexDigits(value.parray, cell.utf8);
        default:
            return SetCoerced(value, cell.utf8);
    }
}

}  // namespace tk::tools
