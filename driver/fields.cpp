#include "driver/ids.h"
#include "driver/invoke.h"

using namespace tk::driver;

CTFields::CTFields() = default;
CTFields::CTFields(IDispatch* pDispatch) : COleDispatchDriver(pDispatch) {}
CTFields::CTFields(const CTFields& other) = default;
CTFields& CTFields::operator=(const CTFields& other) = default;

long CTFields::GetCount() {
    return GetLong(*this, fields::kCount);
}

void CTFields::Refresh() {
    Call(*this, fields::kRefresh);
}

CTField CTFields::GetItem(const VARIANT& index) {
    static constexpr BYTE parms[] = VTS_VARIANT;
    IDispatch* item = nullptr;
    InvokeHelper(fields::kItem, DISPATCH_PROPERTYGET, VT_DISPATCH, &item, parms, &index);
    return CTField(item);
}

void CTFields::Append(const char* szName, long nType, long nDefinedSize, long nAttributes) {
    static constexpr BYTE parms[] = VTS_BSTR VTS_I4 VTS_I4 VTS_I4;
    Call(*this, fields::kAppend, parms, szName, nType, nDefinedSize, nAttributes);
}

void CTFields::Append(const char* szName, long nType, long nDefinedSize, long nAttributes, const VARIANT& value) {
    static constexpr BYTE parms[] = VTS_BSTR VTS_I4 VTS_I4 VTS_I4 VTS_VARIANT;
    Call(*this, fields::kAppend, parms, szName, nType, nDefinedSize, nAttributes, &value);
}

void CTFields::Delete(const VARIANT& index) {
    static constexpr BYTE parms[] = VTS_VARIANT;
    Call(*this, fields::kDelete, parms, &index);
}

void CTFields::Update() {
    Call(*this, fields::kUpdate);
}

void CTFields::Resync(long nResync) {
    CallWithLong(*this, fields::kResync, nResync);
}

void CTFields::CancelUpdate() {
    Call(*this, fields::kCancelUpdate);
}

void CTFields::GetNames(CStringArray& names) {
    // Contract: the count is read again after every item, and the index travels as VT_I2.
    for (int i = 0; i < GetCount(); ++i)
        names.Add(GetItem(COleVariant(static_cast<short>(i))).GetName());
}
