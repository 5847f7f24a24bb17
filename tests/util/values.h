// tests/util/values.h - values for table rows: made in a word, cleared with their scope.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <afx.h>

#include <initializer_list>
#include <string>
#include <string_view>

namespace tk::test {

/// Owns a VARIANT; copies are deep.
class Value {
public:
    Value() { VariantInit(&value_); }
    explicit Value(VARTYPE type) : Value() { value_.vt = type; }
    Value(const Value& other) : Value() { VariantCopy(&value_, const_cast<VARIANT*>(&other.value_)); }
    Value& operator=(const Value& other) {
        if (this != &other) VariantCopy(&value_, const_cast<VARIANT*>(&other.value_));
        return *this;
    }
    ~Value() { VariantClear(&value_); }

    operator const VARIANT&() const { return value_; }
    VARIANT* operator->() { return &value_; }
    const VARIANT* operator->() const { return &value_; }
    VARIANT& Get() { return value_; }

private:
    VARIANT value_;
};

#define TK_VALUE_MAKER(name, type, tag, member) \
    inline Value name(type number) {            \
        Value value(tag);                       \
        value->member = number;                 \
        return value;                           \
    }
TK_VALUE_MAKER(Int2, SHORT, VT_I2, iVal)
TK_VALUE_MAKER(Int4, LONG, VT_I4, lVal)
TK_VALUE_MAKER(Byte, BYTE, VT_UI1, bVal)
TK_VALUE_MAKER(Real4, float, VT_R4, fltVal)
TK_VALUE_MAKER(Real8, double, VT_R8, dblVal)
TK_VALUE_MAKER(Date, double, VT_DATE, date)
TK_VALUE_MAKER(Bool, VARIANT_BOOL, VT_BOOL, boolVal)
TK_VALUE_MAKER(SmallInt1, CHAR, VT_I1, cVal)
TK_VALUE_MAKER(Unsigned2, USHORT, VT_UI2, uiVal)
TK_VALUE_MAKER(Unsigned4, ULONG, VT_UI4, ulVal)
TK_VALUE_MAKER(Int8, LONGLONG, VT_I8, llVal)
TK_VALUE_MAKER(Unsigned8, ULONGLONG, VT_UI8, ullVal)
TK_VALUE_MAKER(Integer, INT, VT_INT, intVal)
TK_VALUE_MAKER(UnsignedInteger, UINT, VT_UINT, uintVal)
TK_VALUE_MAKER(Error, SCODE, VT_ERROR, scode)
#undef TK_VALUE_MAKER

/// @param units  ten-thousandths
inline Value Currency(LONGLONG units) {
    Value value(VT_CY);
    value->cyVal.int64 = units;
    return value;
}

inline Value WideText(const OLECHAR* text) {
    Value value(VT_BSTR);
    value->bstrVal = SysAllocString(text);
    return value;
}

/// @param text  GBK
inline Value Text(const char* text) {
    Value value(VT_BSTR);
    value->bstrVal = CString(text).AllocSysString();
    return value;
}

inline DECIMAL MakeDecimal(ULONGLONG low, BYTE scale, bool negative = false, ULONG high = 0) {
    DECIMAL decimal = {};
    decimal.Lo64 = low;
    decimal.Hi32 = high;
    decimal.scale = scale;
    decimal.sign = negative ? DECIMAL_NEG : 0;
    return decimal;
}

/// @param type  VT_DECIMAL or 131, the database layer's own tag
inline Value Decimal(ULONGLONG low, BYTE scale, bool negative = false, VARTYPE type = VT_DECIMAL) {
    Value value;
    value->decVal = MakeDecimal(low, scale, negative);
    value->vt = type;
    return value;
}

/// An array of bytes with a lower bound.
inline Value Bytes(std::string_view bytes, LONG lower = 0) {
    SAFEARRAYBOUND bound = {static_cast<ULONG>(bytes.size()), lower};
    Value value(VT_ARRAY | VT_UI1);
    value->parray = SafeArrayCreate(VT_UI1, 1, &bound);
    void* data = nullptr;
    if (!bytes.empty() && SUCCEEDED(SafeArrayAccessData(value->parray, &data))) {
        bytes.copy(static_cast<char*>(data), bytes.size());
        SafeArrayUnaccessData(value->parray);
    }
    return value;
}

inline std::string Std(const CString& text) {
    return {static_cast<LPCTSTR>(text), static_cast<std::size_t>(text.GetLength())};
}

}  // namespace tk::test
