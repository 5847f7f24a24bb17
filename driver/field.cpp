#include "driver/ids.h"
#include "driver/invoke.h"

using namespace tk::driver;

CTField::CTField() = default;
CTField::CTField(IDispatch* pDispatch) : COleDispatchDriver(pDispatch) {}
CTField::CTField(const CTField& other) = default;
CTField& CTField::operator=(const CTField& other) = default;

CTProperties CTField::GetProperties() {
    return CTProperties(GetObject(*this, field::kProperties));
}

long CTField::GetActualSize() {
    return GetLong(*this, field::kActualSize);
}

long CTField::GetAttributes() {
    return GetLong(*this, field::kAttributes);
}

void CTField::SetAttributes(long nAttributes) {
    PutLong(*this, field::kAttributes, nAttributes);
}

long CTField::GetDefinedSize() {
    return GetLong(*this, field::kDefinedSize);
}

void CTField::SetDefinedSize(long nSize) {
    PutLong(*this, field::kDefinedSize, nSize);
}

CString CTField::GetName() {
    return GetText(*this, field::kName);
}

long CTField::GetType() {
    return GetLong(*this, field::kType);
}

void CTField::SetType(long nType) {
    PutLong(*this, field::kType, nType);
}

VARIANT CTField::GetValue() {
    return GetVariant(*this, field::kValue);
}

void CTField::SetValue(const VARIANT& value) {
    PutVariant(*this, field::kValue, value);
}

void CTField::AppendChunk(const VARIANT& data) {
    static constexpr BYTE parms[] = VTS_VARIANT;
    Call(*this, field::kAppendChunk, parms, &data);
}

VARIANT CTField::GetChunk(long nLength) {
    static constexpr BYTE parms[] = VTS_I4;
    VARIANT result;
    VariantInit(&result);
    InvokeHelper(field::kGetChunk, DISPATCH_METHOD, VT_VARIANT, &result, parms, nLength);
    return result;
}

VARIANT CTField::GetOriginalValue() {
    return GetVariant(*this, field::kOriginalValue);
}

VARIANT CTField::GetUnderlyingValue() {
    return GetVariant(*this, field::kUnderlyingValue);
}

IUnknown* CTField::GetDataFormat() {
    return GetUnknown(*this, field::kDataFormat);
}

void CTField::SetRefDataFormat(IUnknown* pFormat) {
    static constexpr BYTE parms[] = VTS_UNKNOWN;
    InvokeHelper(field::kDataFormat, DISPATCH_PROPERTYPUTREF, VT_EMPTY, nullptr, parms, pFormat);
}

long CTField::GetStatus() {
    return GetLong(*this, field::kStatus);
}

long CTField::GetPrecision() {
    return GetLong(*this, field::kPrecision);
}

void CTField::SetPrecision(long nPrecision) {
    PutLong(*this, field::kPrecision, nPrecision);
}

long CTField::GetNumericScale() {
    return GetLong(*this, field::kNumericScale);
}

void CTField::SetNumericScale(long nScale) {
    PutLong(*this, field::kNumericScale, nScale);
}
