// oaidl.h - VARIANT, SAFEARRAY and the dispatch interface.
//
// Memory forms are the platform's: a VARIANT is 24 bytes on 64-bit systems, DECIMAL overlays it (its reserved word is
// vt), SAFEARRAY bounds are stored last dimension first.
#pragma once

#include "unknwn.h"
#include "wtypes.h"

struct IDispatch;
struct IRecordInfo;
struct ITypeInfo;

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};
using LPSAFEARRAYBOUND = SAFEARRAYBOUND*;

#define FADF_AUTO 0x1
#define FADF_STATIC 0x2
#define FADF_EMBEDDED 0x4
#define FADF_FIXEDSIZE 0x10
#define FADF_RECORD 0x20
#define FADF_HAVEIID 0x40
#define FADF_HAVEVARTYPE 0x80
#define FADF_BSTR 0x100
#define FADF_UNKNOWN 0x200
#define FADF_DISPATCH 0x400
#define FADF_VARIANT 0x800
#define FADF_RESERVED 0xF008

struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1];  // cDims of them
};
using LPSAFEARRAY = SAFEARRAY*;

struct VARIANT {
    union {
        __extension__ struct {
            VARTYPE vt;
            WORD wReserved1;
            WORD wReserved2;
            WORD wReserved3;
            union {
                LONGLONG llVal;
                LONG lVal;
                BYTE bVal;
                SHORT iVal;
                FLOAT fltVal;
                DOUBLE dblVal;
                VARIANT_BOOL boolVal;
                SCODE scode;
                CY cyVal;
                DATE date;
                BSTR bstrVal;
                IUnknown* punkVal;
                IDispatch* pdispVal;
                SAFEARRAY* parray;
                BYTE* pbVal;
                SHORT* piVal;
                LONG* plVal;
                LONGLONG* pllVal;
                FLOAT* pfltVal;
                DOUBLE* pdblVal;
                VARIANT_BOOL* pboolVal;
                SCODE* pscode;
                CY* pcyVal;
                DATE* pdate;
                BSTR* pbstrVal;
                IUnknown** ppunkVal;
                IDispatch** ppdispVal;
                SAFEARRAY** pparray;
                VARIANT* pvarVal;
                PVOID byref;
                CHAR cVal;
                USHORT uiVal;
                ULONG ulVal;
                ULONGLONG ullVal;
                INT intVal;
                UINT uintVal;
                DECIMAL* pdecVal;
                CHAR* pcVal;
                USHORT* puiVal;
                ULONG* pulVal;
                ULONGLONG* pullVal;
                INT* pintVal;
                UINT* puintVal;
                __extension__ struct {
                    PVOID pvRecord;
                    IRecordInfo* pRecInfo;
                };
            };
        };
        DECIMAL decVal;
    };
};
using VARIANTARG = VARIANT;
using LPVARIANT = VARIANT*;
using LPVARIANTARG = VARIANT*;
using LPCVARIANT = const VARIANT*;
static_assert(sizeof(void*) != 8 || sizeof(VARIANT) == 24);

#define DISPID_VALUE 0
#define DISPID_UNKNOWN (-1)
#define DISPID_PROPERTYPUT (-3)
#define DISPID_NEWENUM (-4)
#define DISPID_COLLECT (-8)

#define DISPATCH_METHOD 0x1
#define DISPATCH_PROPERTYGET 0x2
#define DISPATCH_PROPERTYPUT 0x4
#define DISPATCH_PROPERTYPUTREF 0x8

/// Arguments of one call, last argument first; named ones come first in rgvarg.
struct DISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

/// What a failing member reports; the receiver frees the three texts.
struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    PVOID pvReserved;
    HRESULT(STDAPICALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};
using LPEXCEPINFO = EXCEPINFO*;

inline constexpr IID IID_IDispatch = {0x00020400, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IEnumVARIANT = {0x00020404, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                                    DISPID* rgDispId) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
                                             DISPPARAMS* pDispParams, VARIANT* pVarResult, EXCEPINFO* pExcepInfo,
                                             UINT* puArgErr) = 0;

protected:
    ~IDispatch() = default;
};
using LPDISPATCH = IDispatch*;

struct IEnumVARIANT : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG celt, VARIANT* rgVar, ULONG* pCeltFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG celt) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** ppEnum) = 0;

protected:
    ~IEnumVARIANT() = default;
};

inline constexpr IID IID_IRecordInfo = {0x0000002F, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IErrorInfo = {0x1CF2B120, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
inline constexpr IID IID_ICreateErrorInfo = {
    0x22F03340, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};

/// The layout of a record type; VT_RECORD values carry one beside the record.
struct IRecordInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE RecordInit(PVOID pvNew) = 0;
    virtual HRESULT STDMETHODCALLTYPE RecordClear(PVOID pvExisting) = 0;
    virtual HRESULT STDMETHODCALLTYPE RecordCopy(PVOID pvExisting, PVOID pvNew) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetGuid(GUID* pguid) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetName(BSTR* pbstrName) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSize(ULONG* pcbSize) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(ITypeInfo** ppTypeInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetField(PVOID pvData, LPCOLESTR szFieldName, VARIANT* pvarField) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFieldNoCopy(PVOID pvData, LPCOLESTR szFieldName, VARIANT* pvarField,
                                                     PVOID* ppvDataCArray) = 0;
    virtual HRESULT STDMETHODCALLTYPE PutField(ULONG wFlags, PVOID pvData, LPCOLESTR szFieldName,
                                               VARIANT* pvarField) = 0;
    virtual HRESULT STDMETHODCALLTYPE PutFieldNoCopy(ULONG wFlags, PVOID pvData, LPCOLESTR szFieldName,
                                                     VARIANT* pvarField) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFieldNames(ULONG* pcNames, BSTR* rgBstrNames) = 0;
    virtual BOOL STDMETHODCALLTYPE IsMatchingType(IRecordInfo* pRecordInfo) = 0;
    virtual PVOID STDMETHODCALLTYPE RecordCreate() = 0;
    virtual HRESULT STDMETHODCALLTYPE RecordCreateCopy(PVOID pvSource, PVOID* ppvDest) = 0;
    virtual HRESULT STDMETHODCALLTYPE RecordDestroy(PVOID pvRecord) = 0;

protected:
    ~IRecordInfo() = default;
};

/// What went wrong, in words; the getters hand out texts that the caller frees.
struct IErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetGUID(GUID* pGUID) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSource(BSTR* pBstrSource) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDescription(BSTR* pBstrDescription) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* pBstrHelpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* pdwHelpContext) = 0;

protected:
    ~IErrorInfo() = default;
};

struct ICreateErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SetGUID(REFGUID rguid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR szSource) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR szDescription) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR szHelpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD dwHelpContext) = 0;

protected:
    ~ICreateErrorInfo() = default;
};

#define V_VT(x) ((x)->vt)
#define V_ISBYREF(x) (V_VT(x) & VT_BYREF)
#define V_ISARRAY(x) (V_VT(x) & VT_ARRAY)
#define V_UNION(x, member) ((x)->member)
#define V_UI1(x) V_UNION(x, bVal)
#define V_I1(x) V_UNION(x, cVal)
#define V_I2(x) V_UNION(x, iVal)
#define V_I4(x) V_UNION(x, lVal)
#define V_I8(x) V_UNION(x, llVal)
#define V_UI2(x) V_UNION(x, uiVal)
#define V_UI4(x) V_UNION(x, ulVal)
#define V_UI8(x) V_UNION(x, ullVal)
#define V_INT(x) V_UNION(x, intVal)
#define V_UINT(x) V_UNION(x, uintVal)
#define V_R4(x) V_UNION(x, fltVal)
#define V_R8(x) V_UNION(x, dblVal)
#define V_CY(x) V_UNION(x, cyVal)
#define V_DATE(x) V_UNION(x, date)
#define V_BOOL(x) V_UNION(x, boolVal)
#define V_BSTR(x) V_UNION(x, bstrVal)
#define V_ERROR(x) V_UNION(x, scode)
#define V_DISPATCH(x) V_UNION(x, pdispVal)
#define V_UNKNOWN(x) V_UNION(x, punkVal)
#define V_ARRAY(x) V_UNION(x, parray)
#define V_ARRAYREF(x) V_UNION(x, pparray)
#define V_VARIANTREF(x) V_UNION(x, pvarVal)
#define V_BSTRREF(x) V_UNION(x, pbstrVal)
#define V_BYREF(x) V_UNION(x, byref)
#define V_DECIMAL(x) ((x)->decVal)
