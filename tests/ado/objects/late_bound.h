// tests/ado/objects/late_bound.h - calls of automation objects as programs make them: by id, with VARIANT arguments.
//
//   Object connection = Object::Create(kConnectionClass);
//   Outcome opened = connection.Call(10, {Text(u"Driver=SQLite3;Database=:memory:")});
//   EXPECT_TRUE(opened.Ok()) << opened;
#pragma once

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <ostream>
#include <string>
#include <vector>

#include "ado/cursor/text.h"
#include "ado/cursor/value.h"

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object);
STDAPI DllCanUnloadNow();

namespace tk::ado::test {

constexpr ULONG kCommandClass = 0x00000507;
constexpr ULONG kParameterClass = 0x0000050B;
constexpr ULONG kConnectionClass = 0x00000514;
constexpr ULONG kRecordsetClass = 0x00000535;

inline Value Text(std::u16string_view text) {
    return Value::Text(text);
}
inline Value Number(LONG number) {
    return Value(number);
}
inline Value Short(SHORT number) {
    Value value;
    VARIANT* place = value.Out();
    place->vt = VT_I2;
    place->iVal = number;
    return value;
}
inline Value Omitted() {
    Value value;
    VARIANT* place = value.Out();
    place->vt = VT_ERROR;
    place->scode = DISP_E_PARAMNOTFOUND;
    return value;
}
inline Value Array(const std::vector<Value>& items) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(items.size()));
    for (LONG i = 0; i < static_cast<LONG>(items.size()); ++i) {
        SafeArrayPutElement(array, &i, const_cast<VARIANT*>(&items[static_cast<std::size_t>(i)].Get()));
    }
    Value value;
    VARIANT* place = value.Out();
    place->vt = VT_ARRAY | VT_VARIANT;
    place->parray = array;
    return value;
}

class Object;

/// What a call gave: the result, or why there is none.
struct Outcome {
    HRESULT result = S_OK;
    Value value;
    HRESULT code = 0;  // of the error record
    std::u16string description;
    std::u16string source;
    DWORD helpContext = 0;
    UINT argument = 99;

    bool Ok() const { return result == S_OK; }

    /// 0, an ADO error number, or 0x8… for every other failure.
    unsigned Error() const {
        if (result == S_OK) return 0;
        const unsigned bits = static_cast<unsigned>(result == DISP_E_EXCEPTION ? code : result);
        return (bits & 0xFFFF0000u) == 0x800A0000u ? bits & 0xFFFF : bits;
    }
    LONG Long() const {
        HRESULT converted = S_OK;
        const Value number = value.As(VT_I4, converted);
        return SUCCEEDED(converted) ? number.Get().lVal : -987654321;
    }
    bool True() const { return value.Type() == VT_BOOL && value.Get().boolVal == VARIANT_TRUE; }
    bool False() const { return value.Type() == VT_BOOL && value.Get().boolVal == VARIANT_FALSE; }

    /// As text, UTF-8; "NULL" and "EMPTY" for those, "?" for what has none.
    std::string Utf8() const {
        if (value.IsNull()) return "NULL";
        if (value.IsEmpty()) return "EMPTY";
        HRESULT converted = S_OK;
        const Value text = value.As(VT_BSTR, converted);
        return SUCCEEDED(converted) ? ToUtf8(ViewOf(text.Get().bstrVal)) : "?";
    }
    inline Object Result() const;
};

inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << "result " << std::hex << outcome.result << " error " << outcome.Error() << ": "
                  << ToUtf8(outcome.description);
}

class Object {
public:
    Object() = default;
    explicit Object(IDispatch* owned) : dispatch_(owned) {}
    Object(const Object& other) : dispatch_(other.dispatch_) {
        if (dispatch_ != nullptr) dispatch_->AddRef();
    }
    Object& operator=(Object other) {
        std::swap(dispatch_, other.dispatch_);
        return *this;
    }
    ~Object() {
        if (dispatch_ != nullptr) dispatch_->Release();
    }

    /// From the server's own class object.
    static Object Create(ULONG number) {
        const CLSID clsid = {number, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x6D, 0x2E, 0xA4}};
        IClassFactory* factory = nullptr;
        if (FAILED(DllGetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)))) return {};
        IDispatch* made = nullptr;
        factory->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(&made));
        factory->Release();
        return Object(made);
    }

    IDispatch* Dispatch() const { return dispatch_; }
    explicit operator bool() const { return dispatch_ != nullptr; }
    Value AsValue(VARTYPE type = VT_DISPATCH) const {
        Value value;
        VARIANT* place = value.Out();
        place->vt = type;
        place->pdispVal = dispatch_;
        if (dispatch_ != nullptr) dispatch_->AddRef();
        return value;
    }

    Outcome Invoke(DISPID id, WORD flags, std::vector<Value> arguments, bool named = false) const {
        Outcome outcome;
        std::vector<VARIANT> reversed;
        for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument) {
            reversed.push_back(argument->Get());
        }
        DISPID putName = DISPID_PROPERTYPUT;
        DISPPARAMS parameters{reversed.data(), named ? &putName : nullptr, static_cast<UINT>(reversed.size()),
                              named ? 1u : 0u};
        EXCEPINFO exception{};
        VARIANT result;
        VariantInit(&result);
        outcome.result = dispatch_->Invoke(id, IID_NULL, 0, flags, &parameters, &result, &exception, &outcome.argument);
        outcome.value = Value::Adopt(result);
        outcome.code = exception.scode;
        outcome.description = ViewOf(exception.bstrDescription);
        outcome.source = ViewOf(exception.bstrSource);
        outcome.helpContext = exception.dwHelpContext;
        SysFreeString(exception.bstrDescription);
        SysFreeString(exception.bstrSource);
        SysFreeString(exception.bstrHelpFile);
        return outcome;
    }
    Outcome Get(DISPID id, std::vector<Value> arguments = {}) const {
        return Invoke(id, DISPATCH_PROPERTYGET, std::move(arguments));
    }
    Outcome Put(DISPID id, Value value) const { return Invoke(id, DISPATCH_PROPERTYPUT, {std::move(value)}, true); }
    Outcome PutRef(DISPID id, Value value) const {
        return Invoke(id, DISPATCH_PROPERTYPUTREF, {std::move(value)}, true);
    }
    Outcome Call(DISPID id, std::vector<Value> arguments = {}) const {
        return Invoke(id, DISPATCH_METHOD, std::move(arguments));
    }

private:
    IDispatch* dispatch_ = nullptr;
};

inline Object Outcome::Result() const {
    if (value.Type() != VT_DISPATCH || value.Get().pdispVal == nullptr) return {};
    value.Get().pdispVal->AddRef();
    return Object(value.Get().pdispVal);
}

}  // namespace tk::ado::test
