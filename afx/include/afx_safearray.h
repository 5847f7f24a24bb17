// afx_safearray.h - COleSafeArray, a VARIANT that owns an array of any type and number of dimensions.
//
//   COleSafeArray bytes;
//   bytes.CreateOneDim(VT_UI1, 4, data);
//   field.AppendChunk(bytes);
//
// Dimensions count from 1, the leftmost first; indexes are given leftmost first. A failing operation raises
// COleException with the automation code, a lack of memory CMemoryException. Threads: as for any value.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "afx_export.h"

using LPCSAFEARRAY = const SAFEARRAY*;
using LPCVARIANT = const VARIANT*;

class AFX_API COleSafeArray : public VARIANT {
public:
    COleSafeArray() noexcept;
    /// @param vtSrc  the type of the elements, without VT_ARRAY
    COleSafeArray(const SAFEARRAY& saSrc, VARTYPE vtSrc);
    COleSafeArray(LPCSAFEARRAY pSrc, VARTYPE vtSrc);
    COleSafeArray(const COleSafeArray& saSrc);
    COleSafeArray(const VARIANT& varSrc);
    COleSafeArray(LPCVARIANT pSrc);
    ~COleSafeArray();
    COleSafeArray& operator=(const COleSafeArray& saSrc);
    COleSafeArray& operator=(const VARIANT& varSrc);
    COleSafeArray& operator=(LPCVARIANT pSrc);

    void Create(VARTYPE vtSrc, DWORD dwDims, DWORD* rgElements);
    void Create(VARTYPE vtSrc, DWORD dwDims, SAFEARRAYBOUND* rgsabounds);
    /// @param pvSrcData  elements to copy; null leaves them zero
    void CreateOneDim(VARTYPE vtSrc, DWORD dwElements, const void* pvSrcData = NULL, long nLBound = 0);
    void Clear();
    void Destroy();
    /// Takes over the array of a variant, which is empty afterwards.
    void Attach(VARIANT& varSrc);
    VARIANT Detach() noexcept;

    DWORD GetDim() const noexcept;
    DWORD GetElemSize() const noexcept;
    void GetLBound(DWORD dwDim, long* pLBound) const;
    void GetUBound(DWORD dwDim, long* pUBound) const;
    DWORD GetOneDimSize() const;
    /// Changes the rightmost dimension; elements that remain are kept.
    void Redim(SAFEARRAYBOUND* psaboundNew);
    void ResizeOneDim(DWORD dwElements);

    /// Copies an element: texts as BSTR, variants and objects with a reference, all the receiver's.
    void GetElement(const long* rgIndices, void* pvData) const;
    /// Texts, variants and objects are passed as themselves, other elements by their address.
    void PutElement(const long* rgIndices, void* pvData);
    void PtrOfIndex(const long* rgIndices, void** ppvData);
    void AccessData(void** ppvData);
    void UnaccessData();
    void Lock();
    void Unlock();

    /// Same type, bounds and elements; elements that are texts, variants or objects never compare as equal.
    BOOL operator==(const SAFEARRAY& saSrc) const noexcept;
    BOOL operator==(const VARIANT& varSrc) const noexcept;
    BOOL operator==(const COleSafeArray& saSrc) const noexcept { return *this == static_cast<const VARIANT&>(saSrc); }

    operator LPVARIANT() noexcept { return this; }
    operator LPCVARIANT() const noexcept { return this; }
};
