#include "ado/objects/call.h"

namespace tk::ado {
namespace {

/// A reference to a reference is seen through, but not one that leads to itself.
const VARIANT& Follow(const VARIANT& argument) noexcept {
    constexpr int kMostSteps = 8;
    const VARIANT* value = &argument;
    for (int i = 0; i < kMostSteps && value->vt == (VT_VARIANT | VT_BYREF) && value->pvarVal != nullptr; ++i)
        value = value->pvarVal;
    return *value;
}

/// The default member of an object, read.
Value ReadDefault(IDispatch& object) {
    DISPPARAMS none{};
    Value value;
    const HRESULT result =
        object.Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, value.Out(), nullptr, nullptr);
    if (FAILED(result)) throw CallFault{DISP_E_TYPEMISMATCH, 0};
    return value;
}

}  // namespace

Call::Call(const DISPPARAMS& parameters) {
    if (parameters.cArgs > kMostArguments || parameters.cNamedArgs > parameters.cArgs) {
        throw CallFault{DISP_E_BADPARAMCOUNT, 0};
    }
    const UINT named = parameters.cNamedArgs;
    const UINT positional = parameters.cArgs - named;
    for (UINT i = 0; i < positional; ++i) {
        places_[i] = parameters.cArgs - 1 - i;
        arguments_[i] = &parameters.rgvarg[places_[i]];
    }
    count_ = positional;
    for (UINT i = 0; i < named; ++i) {
        const DISPID name = parameters.rgdispidNamedArgs[i];
        if (name == DISPID_PROPERTYPUT && i == 0) continue;
        if (name < 0 || name >= static_cast<DISPID>(kMostArguments)) throw CallFault{DISP_E_PARAMNOTFOUND, i};
        const UINT place = static_cast<UINT>(name);
        if (place < count_ && arguments_[place] != nullptr) throw CallFault{DISP_E_PARAMNOTFOUND, i};
        places_[place] = i;
        arguments_[place] = &parameters.rgvarg[i];
        if (place >= count_) count_ = place + 1;
    }
    // The value of a put comes after its index arguments.
    if (named > 0 && parameters.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT) {
        if (count_ == kMostArguments) throw CallFault{DISP_E_BADPARAMCOUNT, 0};
        places_[count_] = 0;
        arguments_[count_++] = &parameters.rgvarg[0];
    }
}

bool Call::IsOmitted(UINT index) const noexcept {
    if (index >= count_ || arguments_[index] == nullptr) return true;
    const VARIANT& value = Follow(*arguments_[index]);
    return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

bool Call::IsNullText(UINT index) const noexcept {
    if (IsOmitted(index)) return false;
    const VARIANT& value = Follow(*arguments_[index]);
    return value.vt == VT_BSTR && value.bstrVal == nullptr;
}

bool Call::IsNothing(UINT index) const noexcept {
    if (IsOmitted(index)) return true;
    const VARIANT& value = Follow(*arguments_[index]);
    return value.vt == VT_EMPTY || value.vt == VT_NULL ||
           ((value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) && value.punkVal == nullptr);
}

const VARIANT& Call::Argument(UINT index) const {
    if (IsOmitted(index)) throw Fault(DISP_E_PARAMNOTOPTIONAL, index);
    return Follow(*arguments_[index]);
}

Value Call::Converted(UINT index, VARTYPE type) const {
    const VARIANT& argument = Argument(index);
    VARIANT converted;
    VariantInit(&converted);
    const HRESULT result = VariantChangeType(&converted, &argument, 0, type);
    if (FAILED(result)) {
        throw Fault(result == DISP_E_OVERFLOW ? DISP_E_OVERFLOW : DISP_E_TYPEMISMATCH, index);
    }
    return Value::Adopt(converted);
}

LONG Call::Long(UINT index) const {
    const VARIANT& argument = Argument(index);
    if (argument.vt == VT_I4) return argument.lVal;
    if (argument.vt == VT_I2) return argument.iVal;
    return Converted(index, VT_I4).Get().lVal;
}

bool Call::Boolean(UINT index) const {
    const VARIANT& argument = Argument(index);
    return (argument.vt == VT_BOOL ? argument.boolVal : Converted(index, VT_BOOL).Get().boolVal) != VARIANT_FALSE;
}

BYTE Call::Byte(UINT index) const {
    const LONG number = Long(index);
    if (number < 0 || number > 255) throw Fault(DISP_E_OVERFLOW, index);
    return static_cast<BYTE>(number);
}

std::u16string Call::Text(UINT index) const {
    Value converted;
    return std::u16string(Text(index, converted));
}

std::u16string_view Call::Text(UINT index, Value& converted) const {
    const VARIANT& argument = Argument(index);
    if (argument.vt == VT_BSTR) return ViewOf(argument.bstrVal);
    converted = Converted(index, VT_BSTR);
    return ViewOf(converted.Get().bstrVal);
}

Value Call::Variant(UINT index) const {
    if (IsOmitted(index)) return {};
    try {
        return Value(Follow(*arguments_[index]));
    } catch (const BadVariant& bad) {
        throw Fault(bad.code, index);
    }
}

Value Call::PlainValue(UINT index) const {
    Value value = Variant(index);
    if (value.Type() != VT_DISPATCH) return value;
    if (value.Get().pdispVal == nullptr) throw Fault(DISP_E_TYPEMISMATCH, index);
    return ReadDefault(*value.Get().pdispVal);
}

IUnknown* Call::Object(UINT index) const {
    const VARIANT& argument = Argument(index);
    switch (argument.vt) {
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return argument.punkVal;
        case VT_DISPATCH | VT_BYREF:
        case VT_UNKNOWN | VT_BYREF:
            return argument.ppunkVal == nullptr ? nullptr : *argument.ppunkVal;
        case VT_EMPTY:
            return nullptr;
        default:
            throw Fault(DISP_E_TYPEMISMATCH, index);
    }
}

void Call::ReturnByte(BYTE number) noexcept {
    VARIANT* const place = result_.Out();
    place->vt = VT_UI1;
    place->bVal = number;
}

void Call::Store(UINT index, Value value) {
    if (index >= count_ || arguments_[index] == nullptr) return;
    VARIANT* target = arguments_[index];
    if (target->vt == (VT_VARIANT | VT_BYREF)) {
        target = const_cast<VARIANT*>(&Follow(*target));
        if ((target->vt & VT_BYREF) == 0) {
            VariantClear(target);
            *target = value.Detach();
            return;
        }
    }
    // A plain integer by reference takes the number.
    if (target->vt == (VT_I4 | VT_BYREF) && value.Type() == VT_I4 && target->plVal != nullptr) {
        *target->plVal = value.Get().lVal;
    }
}

void Call::ReturnObject(IDispatch* object) noexcept {
    VARIANT* const place = result_.Out();
    place->vt = VT_DISPATCH;
    place->pdispVal = object;
}

void Call::ReturnUnknown(IUnknown* object) noexcept {
    VARIANT* const place = result_.Out();
    place->vt = VT_UNKNOWN;
    place->punkVal = object;
}

}  // namespace tk::ado
