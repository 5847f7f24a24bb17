#include <charconv>

#include "catalog/value_kind.h"
#include "tkkernel/catalog.h"
#include "tkkernel/util.h"

namespace tk::catalog {
namespace {

template <typename Integer>
CString IntegerText(Integer value) {
    char text[24];
    const auto end = std::to_chars(text, text + sizeof(text), value).ptr;
    return {text, static_cast<int>(end - text)};
}

/// Contract: quotes inside the text are not doubled, and a zero character ends it.
CString Quoted(const CString& text) {
    CString literal;
    literal.Format("'%s'", static_cast<LPCTSTR>(text));
    return literal;
}

/// The display text, and that of the integers that have none.
CString NumberText(const VARIANT& value) {
    switch (V_VT(&value)) {
        case VT_I1:
            return IntegerText(static_cast<int>(static_cast<signed char>(V_I1(&value))));
        case VT_UI2:
            return IntegerText(static_cast<unsigned>(V_UI2(&value)));
        case VT_UI4:
        case VT_UINT:
            return IntegerText(V_UI4(&value));
        case VT_INT:
            return IntegerText(V_I4(&value));
        case VT_I8:
            return IntegerText(V_I8(&value));
        case VT_UI8:
            return IntegerText(V_UI8(&value));
        default:
            return VariantToString(value);
    }
}

}  // namespace
}  // namespace tk::catalog

CString ChangeToSqlFormat(VARIANT value, const char* /*szDbms*/) {
    using namespace tk::catalog;
    switch (KindOf(V_VT(&value))) {
        case ValueKind::Null:
            return "null";
        case ValueKind::Number:
            return NumberText(value);
        case ValueKind::Date:
            return Quoted(DateToString(V_DATE(&value), "YYYY/MM/DD"));
        case ValueKind::Text:
            return Quoted(VariantToString(value));
        default:
            return {};
    }
}

CString MakeEqualString(const char* szNames, const char* szValues, const char* szJoin) {
    CStringArray names;
    CStringArray values;
    StringToArray(names, szNames, ",");
    StringToArray(values, szValues, ",");
    CString text;
    int value = 0;
    for (int i = 0; i < names.GetSize(); ++i) {
        if (names[i].IsEmpty()) continue;
        if (!text.IsEmpty()) text += szJoin;
        text += names[i];
        text += '=';
        // Of empty pieces only the last one is there, which is as good as none.
        if (value < values.GetSize()) text += values[value++];
    }
    return text;
}
