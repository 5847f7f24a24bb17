#include "support/values.h"

#include <cstdio>
#include <cstdlib>

#include "support/scripted_object.h"

namespace tk::test {

namespace {

struct TypeName {
    VARTYPE type;
    const char* name;
};

constexpr TypeName kTypeNames[] = {
    {VT_EMPTY, "EMPTY"}, {VT_NULL, "NULL"}, {VT_I2, "I2"},           {VT_I4, "I4"},           {VT_R4, "R4"},
    {VT_R8, "R8"},       {VT_CY, "CY"},     {VT_DATE, "DATE"},       {VT_BSTR, "BSTR"},       {VT_DISPATCH, "DISPATCH"},
    {VT_ERROR, "ERROR"}, {VT_BOOL, "BOOL"}, {VT_VARIANT, "VARIANT"}, {VT_UNKNOWN, "UNKNOWN"}, {VT_DECIMAL, "DECIMAL"},
    {VT_I1, "I1"},       {VT_UI1, "UI1"},   {VT_UI2, "UI2"},         {VT_UI4, "UI4"},         {VT_I8, "I8"},
    {VT_UI8, "UI8"},
};

std::string NameOf(VARTYPE type) {
    for (const auto& row : kTypeNames) {
        if (row.type == (type & VT_TYPEMASK)) {
            return std::string(row.name) + (type & VT_ARRAY ? "[]" : "") + (type & VT_BYREF ? "&" : "");
        }
    }
    return "type " + std::to_string(type);
}

std::string Number(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof(text), format, value);
    return text;
}

std::string ObjectText(IUnknown* object) {
    if (object == nullptr) return " null";
    const std::string name = ScriptedObject::NameOf(object);
    return name.empty() ? "" : " " + name;
}

/// The elements of a one-dimensional array of values.
std::string ElementsText(SAFEARRAY* array) {
    LONG first = 0;
    LONG last = -1;
    if (SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetLBound(array, 1, &first)) ||
        FAILED(SafeArrayGetUBound(array, 1, &last))) {
        return "";
    }
    std::string text = first == 0 ? " {" : " from " + std::to_string(first) + " {";
    for (LONG i = first; i <= last; ++i) {
        COleVariant element;
        if (FAILED(SafeArrayGetElement(array, &i, &element))) return "";
        text += (i == first ? "" : ", ") + Describe(element);
    }
    return text + "}";
}

std::string ValueText(const VARIANT& value) {
    switch (V_VT(&value)) {
        case VT_I2:
            return " " + std::to_string(V_I2(&value));
        case VT_I4:
            return " " + std::to_string(V_I4(&value));
        case VT_R4:
            return Number(" %g", static_cast<double>(V_R4(&value)));
        case VT_R8:
            return Number(" %.15g", V_R8(&value));
        case VT_DATE:
            return Number(" %.10g", V_DATE(&value));
        case VT_BOOL:
            return V_BOOL(&value) == VARIANT_FALSE ? " false" : " true";
        case VT_ERROR:
            return V_ERROR(&value) == DISP_E_PARAMNOTFOUND ? " missing" : Number(" %.0f", V_ERROR(&value));
        case VT_DISPATCH:
            return ObjectText(V_DISPATCH(&value));
        case VT_UNKNOWN:
            return ObjectText(V_UNKNOWN(&value));
        case VT_BSTR:
            if (V_BSTR(&value) == nullptr) return " null";
            return " \"" + std::string(CString(V_BSTR(&value))) + "\"";
        case VT_ARRAY | VT_VARIANT:
            return ElementsText(V_ARRAY(&value));
        case VT_BYREF | VT_VARIANT:
            return " " + Describe(*V_VARIANTREF(&value));
        default:
            return "";
    }
}

}  // namespace

COleVariant Null() {
    COleVariant value;
    V_VT(&value) = VT_NULL;
    return value;
}

COleVariant Short(short value) {
    return COleVariant(value);
}

COleVariant Long(long value) {
    return COleVariant(value);
}

COleVariant Float(float value) {
    return COleVariant(value);
}

COleVariant Real(double value) {
    return COleVariant(value);
}

COleVariant Date(DATE value) {
    COleVariant date;
    V_VT(&date) = VT_DATE;
    V_DATE(&date) = value;
    return date;
}

COleVariant Flag(bool value) {
    COleVariant flag;
    V_VT(&flag) = VT_BOOL;
    V_BOOL(&flag) = value ? VARIANT_TRUE : VARIANT_FALSE;
    return flag;
}

COleVariant Text(const char* value) {
    COleVariant text;
    V_VT(&text) = VT_BSTR;
    V_BSTR(&text) = value == nullptr ? nullptr : CString(value).AllocSysString();
    return text;
}

COleVariant Decimal(long long value, int scale) {
    COleVariant decimal;
    DECIMAL& number = V_DECIMAL(&decimal);
    number.Hi32 = 0;
    number.Lo64 = static_cast<ULONGLONG>(std::llabs(value));
    number.scale = static_cast<BYTE>(scale);
    number.sign = value < 0 ? DECIMAL_NEG : static_cast<BYTE>(0);
    V_VT(&decimal) = VT_DECIMAL;  // last: the type overlays the record
    return decimal;
}

COleVariant Integer(VARTYPE type, long long value) {
    COleVariant integer;
    V_I8(&integer) = value;
    V_VT(&integer) = type;
    return integer;
}

COleVariant Object(IDispatch* object) {
    COleVariant value;
    if (object != nullptr) object->AddRef();
    V_VT(&value) = VT_DISPATCH;
    V_DISPATCH(&value) = object;
    return value;
}

COleVariant Unknown(IUnknown* object) {
    COleVariant value;
    if (object != nullptr) object->AddRef();
    V_VT(&value) = VT_UNKNOWN;
    V_UNKNOWN(&value) = object;
    return value;
}

std::string Describe(const VARIANT& value) {
    return NameOf(V_VT(&value)) + ValueText(value);
}

}  // namespace tk::test
