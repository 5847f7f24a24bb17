#include "afx_variant.h"

#include <cstring>

#include "afx/dispatch_call.h"
#include "afx/ole_check.h"
#include "afx/text_codes.h"

using tk::afx::NewBstr;
using tk::afx::ThrowIfFailed;

// ---- construction: empty first, then as an assignment

COleVariant::COleVariant(const VARIANT& varSrc) : COleVariant() {
    *this = varSrc;
}
COleVariant::COleVariant(LPCVARIANT pSrc) : COleVariant() {
    *this = pSrc;
}
COleVariant::COleVariant(const COleVariant& varSrc) : COleVariant() {
    *this = varSrc;
}
COleVariant::COleVariant(COleVariant&& varSrc) noexcept : COleVariant() {
    Attach(varSrc);
}
COleVariant::COleVariant(LPCTSTR lpszSrc) : COleVariant() {
    *this = lpszSrc;
}
COleVariant::COleVariant(LPCTSTR lpszSrc, VARTYPE vtSrc) : COleVariant() {
    SetString(lpszSrc, vtSrc);
}
COleVariant::COleVariant(const CString& strSrc) : COleVariant() {
    *this = strSrc;
}
COleVariant::COleVariant(BYTE nSrc) noexcept : COleVariant() {
    *this = nSrc;
}

COleVariant::COleVariant(short nSrc, VARTYPE vtSrc) : COleVariant() {
    if (vtSrc != VT_I2 && vtSrc != VT_BOOL) AfxThrowInvalidArgException();
    vt = vtSrc;
    *this = nSrc;
}

COleVariant::COleVariant(long lSrc, VARTYPE vtSrc) : COleVariant() {
    if (vtSrc != VT_I4 && vtSrc != VT_ERROR && vtSrc != VT_BOOL) AfxThrowInvalidArgException();
    vt = vtSrc;
    *this = lSrc;
}

COleVariant::COleVariant(const COleCurrency& curSrc) noexcept : COleVariant() {
    *this = curSrc;
}
COleVariant::COleVariant(float fltSrc) noexcept : COleVariant() {
    *this = fltSrc;
}
COleVariant::COleVariant(double dblSrc) noexcept : COleVariant() {
    *this = dblSrc;
}
COleVariant::COleVariant(const COleDateTime& timeSrc) noexcept : COleVariant() {
    *this = timeSrc;
}
COleVariant::COleVariant(const CByteArray& arrSrc) : COleVariant() {
    *this = arrSrc;
}

COleVariant::~COleVariant() {
    tk::afx::ClearVariant(*this);
}

// ---- as a whole

void COleVariant::Clear() noexcept {
    VariantClear(this);
}

void COleVariant::ChangeType(VARTYPE vartype, LPVARIANT pSrc) {
    ThrowIfFailed(VariantChangeType(this, pSrc == nullptr ? this : pSrc, 0, vartype));
}

void COleVariant::Attach(VARIANT& varSrc) noexcept {
    if (this == &varSrc) return;
    VariantClear(this);
    static_cast<VARIANT&>(*this) = varSrc;
    varSrc.vt = VT_EMPTY;
}

VARIANT COleVariant::Detach() noexcept {
    const VARIANT value = *this;
    vt = VT_EMPTY;
    return value;
}

void COleVariant::SetString(LPCTSTR lpszSrc, VARTYPE vtSrc) {
    if (vtSrc != VT_BSTR) AfxThrowInvalidArgException();
    *this = lpszSrc;
}

// ---- assignment. What may fail is made before the old value goes.

const COleVariant& COleVariant::operator=(const VARIANT& varSrc) {
    if (this != &varSrc) ThrowIfFailed(VariantCopy(this, const_cast<VARIANT*>(&varSrc)));
    return *this;
}

const COleVariant& COleVariant::operator=(LPCVARIANT pSrc) {
    if (pSrc == nullptr) return Clear(), *this;
    return *this = *pSrc;
}

const COleVariant& COleVariant::operator=(const COleVariant& varSrc) {
    return *this = static_cast<const VARIANT&>(varSrc);
}

const COleVariant& COleVariant::operator=(COleVariant&& varSrc) noexcept {
    Attach(varSrc);
    return *this;
}

const COleVariant& COleVariant::operator=(LPCTSTR lpszSrc) {
    const BSTR text = NewBstr(lpszSrc);
    Clear();
    vt = VT_BSTR;
    bstrVal = text;
    return *this;
}

const COleVariant& COleVariant::operator=(const CString& strSrc) {
    const BSTR text = strSrc.AllocSysString();
    Clear();
    vt = VT_BSTR;
    bstrVal = text;
    return *this;
}

const COleVariant& COleVariant::operator=(BYTE nSrc) noexcept {
    Clear();
    vt = VT_UI1;
    bVal = nSrc;
    return *this;
}

const COleVariant& COleVariant::operator=(short nSrc) noexcept {
    if (vt == VT_BOOL) {
        boolVal = nSrc != 0 ? VARIANT_TRUE : VARIANT_FALSE;
        return *this;
    }
    Clear();
    vt = VT_I2;
    iVal = nSrc;
    return *this;
}

const COleVariant& COleVariant::operator=(long lSrc) noexcept {
    if (vt == VT_BOOL) {
        boolVal = lSrc != 0 ? VARIANT_TRUE : VARIANT_FALSE;
        return *this;
    }
    if (vt != VT_ERROR) {
        Clear();
        vt = VT_I4;
    }
    lVal = static_cast<LONG>(lSrc);
    return *this;
}

const COleVariant& COleVariant::operator=(const COleCurrency& curSrc) noexcept {
    Clear();
    vt = VT_CY;
    cyVal = curSrc.m_cur;
    return *this;
}

const COleVariant& COleVariant::operator=(float fltSrc) noexcept {
    Clear();
    vt = VT_R4;
    fltVal = fltSrc;
    return *this;
}

const COleVariant& COleVariant::operator=(double dblSrc) noexcept {
    Clear();
    vt = VT_R8;
    dblVal = dblSrc;
    return *this;
}

const COleVariant& COleVariant::operator=(const COleDateTime& timeSrc) noexcept {
    Clear();
    vt = VT_DATE;
    date = timeSrc.m_dt;
    return *this;
}

const COleVariant& COleVariant::operator=(const CByteArray& arrSrc) {
    SAFEARRAY* const bytes = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(arrSrc.GetSize()));
    if (bytes == nullptr) AfxThrowMemoryException();
    if (arrSrc.GetSize() > 0) std::memcpy(bytes->pvData, arrSrc.GetData(), static_cast<std::size_t>(arrSrc.GetSize()));
    Clear();
    vt = VT_ARRAY | VT_UI1;
    parray = bytes;
    return *this;
}
