// afx_dispatch.h - COleDispatchDriver, the holder that calls an automation object late-bound.
//
//   COleDispatchDriver connection;
//   if (!connection.CreateDispatch("{00000514-0000-0010-8000-00AA006D2EA4}")) return;
//   static const BYTE parms[] = VTS_BSTR VTS_BSTR VTS_BSTR VTS_I4;
//   connection.InvokeHelper(10, DISPATCH_METHOD, VT_EMPTY, NULL, parms, "DSN=stock", "sa", "", -1L);
//
// Failures: DISP_E_EXCEPTION raises COleDispatchException with what the server tells, any other failure COleException
// with its code. A holder without an object raises COleException with E_POINTER. On every way out the temporaries of
// the call are freed. Up to eight arguments cost no allocation besides the BSTRs of texts. Threads: as the object
// behind it; one caller at a time per holder.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstdarg>

#include "afx_export.h"
#include "afx_ole_exception.h"

// Parameter codes: one byte an argument, first argument first. What is passed for each:
#define VTS_I2 "\x02"         // int
#define VTS_I4 "\x03"         // long, of which the low 32 bits travel
#define VTS_R4 "\x04"         // double
#define VTS_R8 "\x05"         // double
#define VTS_CY "\x06"         // const CY*
#define VTS_DATE "\x07"       // DATE
#define VTS_WBSTR "\x08"      // LPCOLESTR, up to its NUL; a null pointer stays one
#define VTS_DISPATCH "\x09"   // IDispatch*, borrowed
#define VTS_SCODE "\x0A"      // SCODE
#define VTS_BOOL "\x0B"       // int, 0 or not
#define VTS_VARIANT "\x0C"    // const VARIANT*, borrowed
#define VTS_UNKNOWN "\x0D"    // IUnknown*, borrowed
#define VTS_BSTR "\x0E"       // LPCSTR in code page 936; a null pointer is a BSTR that is null
#define VTS_I1 "\x10"         // int
#define VTS_UI1 "\x11"        // int
#define VTS_UI2 "\x12"        // int
#define VTS_UI4 "\x13"        // unsigned long, of which the low 32 bits travel
#define VTS_I8 "\x14"         // long long
#define VTS_UI8 "\x15"        // unsigned long long
#define VTS_PI2 "\x42"        // short*
#define VTS_PI4 "\x43"        // long*, sign-extended when the call returns
#define VTS_PR4 "\x44"        // float*
#define VTS_PR8 "\x45"        // double*
#define VTS_PCY "\x46"        // CY*
#define VTS_PDATE "\x47"      // DATE*
#define VTS_PBSTR "\x48"      // BSTR*
#define VTS_PDISPATCH "\x49"  // IDispatch**
#define VTS_PSCODE "\x4A"     // SCODE*
#define VTS_PBOOL "\x4B"      // VARIANT_BOOL*
#define VTS_PVARIANT "\x4C"   // VARIANT*
#define VTS_PUNKNOWN "\x4D"   // IUnknown**
#define VTS_PUI1 "\x51"       // BYTE*
#define VTS_NONE ""

class AFX_API COleDispatchDriver {
public:
    COleDispatchDriver() noexcept = default;
    /// Takes over the caller's reference when bAutoRelease is set, borrows otherwise.
    explicit COleDispatchDriver(LPDISPATCH lpDispatch, BOOL bAutoRelease = TRUE) noexcept;
    /// Shares the object, with a reference of its own.
    COleDispatchDriver(const COleDispatchDriver& dispatchSrc) noexcept;
    COleDispatchDriver(COleDispatchDriver&& other) noexcept;
    COleDispatchDriver& operator=(const COleDispatchDriver& dispatchSrc);
    COleDispatchDriver& operator=(COleDispatchDriver&& other) noexcept;
    ~COleDispatchDriver();

    operator LPDISPATCH() const noexcept { return m_lpDispatch; }

    /// Creates an object and holds it; the one held so far is released only then.
    /// @param pError  receives the code in m_sc when nothing could be created; may be null
    /// @return FALSE when nothing could be created
    BOOL CreateDispatch(REFCLSID clsid, COleException* pError = NULL);
    /// @param lpszProgID  a program id, or a braced class id
    BOOL CreateDispatch(LPCTSTR lpszProgID, COleException* pError = NULL);
    void AttachDispatch(LPDISPATCH lpDispatch, BOOL bAutoRelease = TRUE);
    /// @return the interface with its reference, the caller's
    LPDISPATCH DetachDispatch() noexcept;
    void ReleaseDispatch();

    /// Calls a member.
    /// @param wFlags  DISPATCH_METHOD, _PROPERTYGET, _PROPERTYPUT or _PROPERTYPUTREF
    /// @param vtRet, pvRet  the wanted result, converted when the member gives another type, and where it goes:
    ///        VT_EMPTY nothing, VT_I2 short, VT_I4 long, VT_R4 float, VT_R8 double, VT_CY CY, VT_DATE DATE, VT_BSTR
    ///        CString, VT_DISPATCH IDispatch*, VT_UNKNOWN IUnknown*, VT_BOOL BOOL, VT_ERROR SCODE, VT_VARIANT VARIANT,
    ///        VT_UI1 BYTE, VT_I8 long long. What was there is overwritten, not freed; objects are the caller's.
    /// @param pbParamInfo  the parameter codes, null for none; then the arguments
    void InvokeHelper(DISPID dwDispID, WORD wFlags, VARTYPE vtRet, void* pvRet, const BYTE* pbParamInfo, ...);
    void InvokeHelperV(DISPID dwDispID, WORD wFlags, VARTYPE vtRet, void* pvRet, const BYTE* pbParamInfo,
                       va_list argList);

    /// Puts a property. VT_BSTR takes a narrow text; by-reference types carry VT_BYREF.
    void SetProperty(DISPID dwDispID, VARTYPE vtProp, ...);
    void GetProperty(DISPID dwDispID, VARTYPE vtProp, void* pvProp) const;

    LPDISPATCH m_lpDispatch = NULL;
    BOOL m_bAutoRelease = TRUE;
};
