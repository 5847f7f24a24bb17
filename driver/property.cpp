#include "driver/ids.h"
#include "driver/invoke.h"

using namespace tk::driver;

CTProperty::CTProperty() = default;
CTProperty::CTProperty(IDispatch* pDispatch) : COleDispatchDriver(pDispatch) {}
CTProperty::CTProperty(const CTProperty& other) = default;
CTProperty& CTProperty::operator=(const CTProperty& other) = default;

VARIANT CTProperty::GetValue() {
    return GetVariant(*this, property::kValue);
}

void CTProperty::SetValue(const VARIANT& value) {
    PutVariant(*this, property::kValue, value);
}

CString CTProperty::GetName() {
    return GetText(*this, property::kName);
}

long CTProperty::GetType() {
    return GetLong(*this, property::kType);
}

long CTProperty::GetAttributes() {
    return GetLong(*this, property::kAttributes);
}

void CTProperty::SetAttributes(long nAttributes) {
    PutLong(*this, property::kAttributes, nAttributes);
}

CTProperties::CTProperties() = default;
CTProperties::CTProperties(IDispatch* pDispatch) : COleDispatchDriver(pDispatch) {}
CTProperties::CTProperties(const CTProperties& other) = default;
CTProperties& CTProperties::operator=(const CTProperties& other) = default;

long CTProperties::GetCount() {
    return GetLong(*this, properties::kCount);
}

CTProperty CTProperties::GetItem(const VARIANT& index) {
    static constexpr BYTE parms[] = VTS_VARIANT;
    IDispatch* item = nullptr;
    InvokeHelper(properties::kItem, DISPATCH_PROPERTYGET, VT_DISPATCH, &item, parms, &index);
    return CTProperty(item);
}
