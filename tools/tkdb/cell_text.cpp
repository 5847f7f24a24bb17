#include "tools/tkdb/cell_text.h"

#include <fmt/format.h>
#include <tkkernel/util.h>
#include <tkwin32/text.h>

namespace tk::tools {
namespace {

std::string HexDigits(SAFEARRAY* array) {
    std::string result;
    void* data = nullptr;
    LONG lower = 0;
    LONG upper = -1;
    if (array == nullptr || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
        FAILED(SafeArrayGetUBound(array, 1, &upper)) || FAILED(SafeArrayAccessData(array, &data))) {
        return result;
    }
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (LONG i = 0; i <= upper - lower; ++i)
        result += fmt::format("{:02x}", bytes[i]);
    SafeArrayUnaccessData(array);
    return result;
}

CellText Coerced(const VARIANT& value, CellNature nature) {
    VARIANT text;
    VariantInit(&text);
    CellText cell{nature, {}};
    if (SUCCEEDED(VariantChangeType(&text, &value, 0, VT_BSTR))) {
        cell.utf8 = text::Utf16ToUtf8({text.bstrVal, SysStringLen(text.bstrVal)});
    }
    VariantClear(&text);
    return cell;
}

}  // namespace

CellText ToCellText(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
        case VT_NULL:
            return {};
        case VT_BSTR:
            return {CellNature::Text, text::Utf16ToUtf8({value.bstrVal, SysStringLen(value.bstrVal)})};
        case VT_BOOL:
            return {CellNature::Boolean, value.boolVal != VARIANT_FALSE ? "true" : "false"};
        case VT_R4:
            return {CellNature::Number, fmt::format("{}", value.fltVal)};  // shortest text that reads back the same
        case VT_R8:
            return {CellNature::Number, fmt::format("{}", value.dblVal)};
        case VT_DATE:
            return {CellNature::Text, text::GbkToUtf8(static_cast<const char*>(VariantToString(value)))};
        case VT_ARRAY | VT_UI1:
            return {CellNature::Text, HexDigits(value.parray)};
        default:
            return Coerced(value, CellNature::Number);
    }
}

}  // namespace tk::tools
