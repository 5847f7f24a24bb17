// afx_variant.h - COleVariant, a VARIANT that owns what it holds.
//
//   COleVariant key("name"), count(3L);
//   recordset.SetValue(key, count);
//
// A conversion that is not possible raises COleException with the automation code, a lack of memory CMemoryException.
// Threads: as for any value.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "afx_array.h"
#include "afx_currency.h"
#include "afx_datetime.h"
#include "afx_export.h"
#include "afxstr.h"

using LPCVARIANT = const VARIANT*;

class AFX_API COleVariant : public VARIANT {
public:
    COleVariant() noexcept { VariantInit(this); }
    COleVariant(const VARIANT& varSrc);
    COleVariant(LPCVARIANT pSrc);
    COleVariant(const COleVariant& varSrc);
    COleVariant(COleVariant&& varSrc) noexcept;
    COleVariant(LPCTSTR lpszSrc);
    /// @param vtSrc  VT_BSTR
    COleVariant(LPCTSTR lpszSrc, VARTYPE vtSrc);
    COleVariant(const CString& strSrc);
    COleVariant(BYTE nSrc) noexcept;
    /// @param vtSrc  VT_I2 or VT_BOOL
    COleVariant(short nSrc, VARTYPE vtSrc = VT_I2);
    /// @param vtSrc  VT_I4, VT_ERROR or VT_BOOL
    COleVariant(long lSrc, VARTYPE vtSrc = VT_I4);
    COleVariant(int nSrc, VARTYPE vtSrc = VT_I4) : COleVariant(static_cast<long>(nSrc), vtSrc) {}
    COleVariant(const COleCurrency& curSrc) noexcept;
    COleVariant(float fltSrc) noexcept;
    COleVariant(double dblSrc) noexcept;
    COleVariant(const COleDateTime& timeSrc) noexcept;
    /// An array of VT_UI1 from index 0.
    COleVariant(const CByteArray& arrSrc);
    ~COleVariant();

    void Clear() noexcept;
    /// Converts a variant, its own value when null, into this one.
    void ChangeType(VARTYPE vartype, LPVARIANT pSrc = NULL);
    /// Takes over a variant, which is empty afterwards.
    void Attach(VARIANT& varSrc) noexcept;
    VARIANT Detach() noexcept;
    /// @param vtSrc  VT_BSTR
    void SetString(LPCTSTR lpszSrc, VARTYPE vtSrc);

    /// Same type and same value, without a conversion; arrays as COleSafeArray compares them.
    BOOL operator==(const VARIANT& varSrc) const noexcept;
    BOOL operator==(const COleVariant& varSrc) const noexcept { return *this == static_cast<const VARIANT&>(varSrc); }
    BOOL operator==(LPCVARIANT pSrc) const noexcept { return *this == *pSrc; }

    const COleVariant& operator=(const VARIANT& varSrc);
    const COleVariant& operator=(LPCVARIANT pSrc);
    const COleVariant& operator=(const COleVariant& varSrc);
    const COleVariant& operator=(COleVariant&& varSrc) noexcept;
    const COleVariant& operator=(LPCTSTR lpszSrc);
    const COleVariant& operator=(const CString& strSrc);
    const COleVariant& operator=(BYTE nSrc) noexcept;
    /// Keeps VT_BOOL when it is held: non-zero is true.
    const COleVariant& operator=(short nSrc) noexcept;
    /// Keeps VT_BOOL or VT_ERROR when it is held.
    const COleVariant& operator=(long lSrc) noexcept;
    const COleVariant& operator=(int nSrc) noexcept { return *this = static_cast<long>(nSrc); }
    const COleVariant& operator=(const COleCurrency& curSrc) noexcept;
    const COleVariant& operator=(float fltSrc) noexcept;
    const COleVariant& operator=(double dblSrc) noexcept;
    const COleVariant& operator=(const COleDateTime& timeSrc) noexcept;
    const COleVariant& operator=(const CByteArray& arrSrc);

    operator LPVARIANT() noexcept { return this; }
    operator LPCVARIANT() const noexcept { return this; }
};
