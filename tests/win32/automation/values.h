// values.h - values for the tables of these tests, and objects that count who holds them.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>
#include <string_view>

#include "win32/automation/heap.h"
#include "win32/include/oleauto.h"

namespace tk::test {

/// A VARIANT that clears itself.
class Value {
public:
    Value() { VariantInit(&value_); }
    Value(const Value& other) : Value() { EXPECT_EQ(VariantCopy(&value_, &other.value_), S_OK); }
    Value& operator=(const Value& other) {
        EXPECT_EQ(VariantCopy(&value_, &other.value_), S_OK);
        return *this;
    }
    ~Value() { VariantClear(&value_); }
    VARIANT* operator&() { return &value_; }
    const VARIANT* operator&() const { return &value_; }
    VARIANT* operator->() { return &value_; }
    const VARIANT* operator->() const { return &value_; }
    const VARIANT& Get() const { return value_; }
    VARTYPE Type() const { return value_.vt; }

private:
    VARIANT value_;
};

template <class T>
Value Make(VARTYPE type, T content) {
    Value value;
    std::memcpy(&value->llVal, &content, sizeof(content));
    value->vt = type;
    return value;
}
inline Value Empty() {
    return {};
}
inline Value Null() {
    return Make(VT_NULL, 0);
}
inline Value I1(int number) {
    return Make(VT_I1, static_cast<signed char>(number));
}
inline Value UI1(int number) {
    return Make(VT_UI1, static_cast<BYTE>(number));
}
inline Value I2(int number) {
    return Make(VT_I2, static_cast<SHORT>(number));
}
inline Value UI2(int number) {
    return Make(VT_UI2, static_cast<USHORT>(number));
}
inline Value I4(LONG number) {
    return Make(VT_I4, number);
}
inline Value UI4(ULONG number) {
    return Make(VT_UI4, number);
}
inline Value I8(LONGLONG number) {
    return Make(VT_I8, number);
}
inline Value UI8(ULONGLONG number) {
    return Make(VT_UI8, number);
}
inline Value R4(float number) {
    return Make(VT_R4, number);
}
inline Value R8(double number) {
    return Make(VT_R8, number);
}
inline Value Date(double number) {
    return Make(VT_DATE, number);
}
inline Value Bool(bool truth) {
    return Make(VT_BOOL, truth ? VARIANT_TRUE : VARIANT_FALSE);
}
inline Value Cy(LONGLONG units) {
    return Make(VT_CY, units);
}
inline Value Error(SCODE code) {
    return Make(VT_ERROR, code);
}
inline Value Text(std::u16string_view text) {
    Value value;
    value->bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    value->vt = VT_BSTR;
    return value;
}
/// A decimal from its digits: "-12.750" has scale 3.
inline DECIMAL Dec(std::string_view text) {
    DECIMAL decimal{};
    __extension__ unsigned __int128 magnitude = 0;
    bool fraction = false;
    for (const char character : text) {
        if (character == '-') {
            decimal.sign = DECIMAL_NEG;
        } else if (character == '.') {
            fraction = true;
        } else {
            magnitude = magnitude * 10 + static_cast<unsigned>(character - '0');
            if (fraction) ++decimal.scale;
        }
    }
    decimal.Hi32 = static_cast<ULONG>(magnitude >> 64);
    decimal.Lo64 = static_cast<ULONGLONG>(magnitude);
    return decimal;
}
inline Value Decimal(std::string_view text) {
    Value value;
    value->decVal = Dec(text);
    value->vt = VT_DECIMAL;
    return value;
}

/// A decimal with all its places, trailing zeros included: what arithmetic left, to the digit.
inline std::string Spell(const DECIMAL& decimal) {
    __extension__ unsigned __int128 magnitude = decimal.Hi32;
    magnitude = (magnitude << 64) | decimal.Lo64;
    std::string digits;
    do {
        digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(magnitude % 10)));
        magnitude /= 10;
    } while (magnitude != 0 || digits.size() <= decimal.scale);
    if (decimal.scale != 0) digits.insert(digits.size() - decimal.scale, ".");
    return (decimal.sign != 0 ? "-" : "") + digits;
}

/// UTF-16 as UTF-8, so that a failure can be read.
inline std::string Show(std::u16string_view text) {
    std::string shown;
    for (const char16_t unit : text) {
        const auto code = static_cast<unsigned>(unit);
        if (code < 0x80) {
            shown += static_cast<char>(code);
        } else if (code < 0x800) {
            shown += {static_cast<char>(0xC0 | (code >> 6)), static_cast<char>(0x80 | (code & 63))};
        } else {
            shown += {static_cast<char>(0xE0 | (code >> 12)), static_cast<char>(0x80 | ((code >> 6) & 63)),
                      static_cast<char>(0x80 | (code & 63))};
        }
    }
    return shown;
}

inline std::string Narrow(BSTR text) {
    return text == nullptr ? "" : Show({text, SysStringLen(text)});
}

/// The HRESULT as people write it.
inline std::string Code(HRESULT result) {
    char text[16];
    std::snprintf(text, sizeof(text), "%08X", static_cast<unsigned>(result));
    return text;
}

/// "I4 12", "BSTR 12", "DEC 1.50", or a code: the whole outcome of a conversion in one text.
inline std::string Describe(const VARIANT& value) {
    char text[64];
    switch (value.vt) {
        case VT_EMPTY:
            return "EMPTY";
        case VT_NULL:
            return "NULL";
        case VT_I1:
            return "I1 " + std::to_string(static_cast<signed char>(value.cVal));
        case VT_UI1:
            return "UI1 " + std::to_string(value.bVal);
        case VT_I2:
            return "I2 " + std::to_string(value.iVal);
        case VT_UI2:
            return "UI2 " + std::to_string(value.uiVal);
        case VT_I4:
            return "I4 " + std::to_string(value.lVal);
        case VT_UI4:
            return "UI4 " + std::to_string(value.ulVal);
        case VT_INT:
            return "INT " + std::to_string(value.intVal);
        case VT_UINT:
            return "UINT " + std::to_string(value.uintVal);
        case VT_I8:
            return "I8 " + std::to_string(value.llVal);
        case VT_UI8:
            return "UI8 " + std::to_string(value.ullVal);
        case VT_BOOL:
            return "BOOL " + std::to_string(value.boolVal);
        case VT_CY:
            return "CY " + std::to_string(value.cyVal.int64);
        case VT_R4:
            std::snprintf(text, sizeof(text), "R4 %.9g", static_cast<double>(value.fltVal));
            return text;
        case VT_R8:
            std::snprintf(text, sizeof(text), "R8 %.17g", value.dblVal);
            return text;
        case VT_DATE:
            std::snprintf(text, sizeof(text), "DATE %.17g", value.date);
            return text;
        case VT_BSTR:
            return "BSTR " + Narrow(value.bstrVal);
        case VT_DECIMAL:
            return "DEC " + Spell(value.decVal);
        default:
            return "vt " + std::to_string(value.vt);
    }
}

/// Converts and describes: the value, or the code.
inline std::string Change(const Value& source, VARTYPE target, USHORT flags = 0, LCID locale = 0x0804) {
    Value result = Text(u"kept");
    const HRESULT outcome = VariantChangeTypeEx(&result, &source, locale, flags, target);
    if (SUCCEEDED(outcome)) return Describe(result.Get());
    EXPECT_EQ(Describe(result.Get()), "BSTR kept") << "a failure leaves the destination alone";
    return Code(outcome);
}

/// Makes the room's n-th allocation from now fail, and those after it.
class MemoryRunsOut {
public:
    explicit MemoryRunsOut(int allocationsLeft) : saved_(automation::heap) {
        left_ = allocationsLeft;
        automation::heap.take = [](std::size_t bytes) -> void* { return left_-- > 0 ? std::malloc(bytes) : nullptr; };
    }
    ~MemoryRunsOut() { automation::heap = saved_; }
    MemoryRunsOut(const MemoryRunsOut&) = delete;
    MemoryRunsOut& operator=(const MemoryRunsOut&) = delete;

private:
    automation::Heap saved_;
    static inline int left_ = 0;
};

/// An automation object on the stack: counts its references and answers its default value.
class CountedObject final : public IDispatch {
public:
    HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
        const bool known = riid == IID_IUnknown || (riid == IID_IDispatch && !plain);
        *ppvObject = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return static_cast<ULONG>(++references); }
    ULONG Release() override { return static_cast<ULONG>(--references); }
    HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS*, VARIANT* answer, EXCEPINFO*, UINT*) override {
        ++asked;
        EXPECT_EQ(id, DISPID_VALUE);
        EXPECT_EQ(kind, DISPATCH_PROPERTYGET);
        if (FAILED(failure)) return failure;
        return VariantCopy(answer, &value);
    }

    int references = 1;
    int asked = 0;
    bool plain = false;  // has no IDispatch
    HRESULT failure = S_OK;
    Value value;
};

inline Value Dispatch(CountedObject& object) {
    Value value;
    object.AddRef();
    value->pdispVal = &object;
    value->vt = VT_DISPATCH;
    return value;
}
inline Value Unknown(CountedObject& object) {
    Value value = Dispatch(object);
    value->vt = VT_UNKNOWN;
    return value;
}

}  // namespace tk::test
