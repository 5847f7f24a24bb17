// Field values of the current record: as the automation object gives them, and as plain types.
#include <charconv>
#include <clocale>
#include <cstdlib>
#include <cstring>

#include "driver/guard.h"
#include "driver/ids.h"
#include "driver/invoke.h"
#include "driver/messages.h"
#include "driver/row_text.h"
#include "tkkernel/row_access.h"
#include "tkkernel/util.h"

using namespace tk::driver;

namespace {

/// A number at the beginning of a text: as atof reads it, but with a decimal point whatever the locale.
double LeadingDouble(const char* text) {
    text += std::strspn(text, " \t\n\v\f\r");
    const char* digits = *text == '+' ? text + 1 : text;
    if (digits != text && *digits == '-') return 0.0;
    double value = 0.0;
    const auto read = std::from_chars(digits, digits + std::strlen(digits), value);
    const bool isHexadecimal = value == 0.0 && (*read.ptr == 'x' || *read.ptr == 'X');  // it stopped behind "0"
    if (read.ec != std::errc::result_out_of_range && !isHexadecimal) return value;

    // Without what might be the locale's own point, and with that in place of ours.
    CString number(text, static_cast<int>(std::strspn(text, "+-.0123456789ABCDEFabcdefXxPp")));
    number.Replace(".", std::localeconv()->decimal_point);
    return std::strtod(number, nullptr);
}

/// The low 32 bits of the integer at the beginning of a text.
int LeadingInt(const char* text) noexcept {
    return static_cast<int>(std::strtoll(text, nullptr, 10));
}

// Contract: each getter knows the types listed in it and no other; what is missing (a 16-bit integer as a double, a
// text as an integer) gives the default.

double DoubleOf(const VARIANT& value) {
    switch (V_VT(&value)) {
        case VT_I4:
            return V_I4(&value);
        case VT_R4:
            return static_cast<double>(V_R4(&value));
        case VT_R8:
            return V_R8(&value);
        case VT_BSTR:
            return LeadingDouble(CString(V_BSTR(&value)));
        case VT_DECIMAL:
            return LeadingDouble(VariantToString(value));
        default:
            return 0.0;
    }
}

int IntOf(const VARIANT& value) {
    switch (V_VT(&value)) {
        case VT_I2:
            return V_I2(&value);
        case VT_I4:
        case VT_UI4:
            return V_I4(&value);
        case VT_UI2:
            return V_UI2(&value);
        case VT_BOOL:
            return static_cast<unsigned short>(V_BOOL(&value)) > 65534 ? 1 : 0;
        case VT_DECIMAL:
            return LeadingInt(VariantToString(value));
        default:
            return 0;
    }
}

char CharOf(const VARIANT& value) {
    return V_VT(&value) == VT_BSTR ? CString(V_BSTR(&value)).GetAt(0) : '\0';
}

DATE DateOf(const VARIANT& value) noexcept {
    return V_VT(&value) == VT_DATE ? V_DATE(&value) : 0.0;
}

}  // namespace

// ---- reading -------------------------------------------------------------------------------------------------------

// One VARIANT in each, so that it is written where the caller wants it.

VARIANT CTRecordset::GetValue(const char* szName) {
    VARIANT value;
    LONG index = 0;
    IRowAccess* const rows = rows_.Of(dispatch_.m_lpDispatch);
    const bool isRead = rows != nullptr && FindField(*rows, szName, &index) && rows->GetValue(index, &value) == S_OK;
    if (!isRead) value = ReadField(COleVariant(szName, VT_BSTR));
    return value;
}

VARIANT CTRecordset::GetValue(long nIndex) {
    VARIANT value;
    IRowAccess* const rows = rows_.Of(dispatch_.m_lpDispatch);
    const bool isRead = rows != nullptr && rows->GetValue(static_cast<LONG>(nIndex), &value) == S_OK;
    if (!isRead) value = ReadField(COleVariant(nIndex));
    return value;
}

VARIANT CTRecordset::GetValue(VARIANT key) {
    VARIANT value;
    const bool isIndex = V_VT(&key) == VT_I4 || V_VT(&key) == VT_I2;
    IRowAccess* const rows = isIndex ? rows_.Of(dispatch_.m_lpDispatch) : nullptr;
    const bool isRead =
        rows != nullptr && rows->GetValue(V_VT(&key) == VT_I4 ? V_I4(&key) : V_I2(&key), &value) == S_OK;
    if (!isRead) value = ReadField(key);
    return value;
}

/// Fields.Item(key).Value by late-bound calls; VT_EMPTY with the reason in the last-error text when that fails.
VARIANT CTRecordset::ReadField(const VARIANT& key) {
    VARIANT none;
    VariantInit(&none);
    return Guard::Run(*this, kGetValueFailed, none, [&] { return GetFields().GetItem(key).GetValue(); });
}

// ---- writing -------------------------------------------------------------------------------------------------------

void CTRecordset::SetValue(const char* szName, VARIANT value) {
    SetValue(static_cast<const VARIANT&>(COleVariant(szName, VT_BSTR)), value);
}

void CTRecordset::SetValue(long nIndex, VARIANT value) {
    SetValue(static_cast<const VARIANT&>(COleVariant(nIndex)), value);
}

void CTRecordset::SetValue(VARIANT key, VARIANT value) {
    Guard::Do(*this, kSetValueFailed, [&] { GetFields().GetItem(key).SetValue(value); });
}

// ---- texts ---------------------------------------------------------------------------------------------------------

CString CTRecordset::GetStringValue(const char* szName) {
    CString text;
    if (IRowAccess* rows = rows_.Of(dispatch_.m_lpDispatch)) {
        LONG index = 0;
        if (FindField(*rows, szName, &index)) {
            VARIANT value;
            if (ReadText(*rows, index, &text)) return text;
            if (rows->GetValue(index, &value) == S_OK) return Take(VariantToString, value);
        }
    }
    return Take(VariantToString, ReadField(COleVariant(szName, VT_BSTR)));
}

CString CTRecordset::GetStringValue(long nIndex) {
    CString text;
    if (IRowAccess* rows = rows_.Of(dispatch_.m_lpDispatch);
        rows != nullptr && ReadText(*rows, static_cast<LONG>(nIndex), &text)) {
        return text;
    }
    return Take(VariantToString, GetValue(nIndex));
}

CString CTRecordset::GetStringValueStr(const char* szName) {
    return Take(VARIANTToString, GetValue(szName));
}

CString CTRecordset::GetStringValueStr(long nIndex) {
    CString text;
    if (IRowAccess* rows = rows_.Of(dispatch_.m_lpDispatch);
        rows != nullptr && ReadLiteral(*rows, static_cast<LONG>(nIndex), &text)) {
        return text;
    }
    return Take(VARIANTToString, GetValue(nIndex));
}

// ---- plain types ---------------------------------------------------------------------------------------------------

double CTRecordset::GetDoubleValue(const char* szName) {
    return Take(DoubleOf, GetValue(szName));
}

double CTRecordset::GetDoubleValue(long nIndex) {
    return Take(DoubleOf, GetValue(nIndex));
}

int CTRecordset::GetIntValue(const char* szName) {
    return Take(IntOf, GetValue(szName));
}

int CTRecordset::GetIntValue(long nIndex) {
    return Take(IntOf, GetValue(nIndex));
}

char CTRecordset::GetCharValue(const char* szName) {
    return Take(CharOf, GetValue(szName));
}

char CTRecordset::GetCharValue(long nIndex) {
    return Take(CharOf, GetValue(nIndex));
}

DATE CTRecordset::GetDateValue(const char* szName) {
    return Take(DateOf, GetValue(szName));
}

DATE CTRecordset::GetDateValue(long nIndex) {
    return Take(DateOf, GetValue(nIndex));
}
