// unknwn.h - the root interfaces of every component.
//
// Ownership: AddRef and Release count references; a pointer handed out by QueryInterface is the caller's.
#pragma once

#include "guiddef.h"
#include "winerror.h"

#define interface struct
#define PURE = 0
#define STDMETHOD(method) virtual HRESULT STDMETHODCALLTYPE method
#define STDMETHOD_(type, method) virtual type STDMETHODCALLTYPE method
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE
#define STDAPI EXTERN_C TKWIN32_API HRESULT
#define STDAPI_(type) EXTERN_C TKWIN32_API type

inline constexpr IID IID_IUnknown = {0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IClassFactory = {0x00000001, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

    template <class Q>
    HRESULT QueryInterface(REFIID riid, Q** object) {
        return QueryInterface(riid, reinterpret_cast<void**>(object));
    }

protected:
    ~IUnknown() = default;  // objects destroy themselves in Release
};
using LPUNKNOWN = IUnknown*;

struct IClassFactory : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) = 0;

protected:
    ~IClassFactory() = default;
};
using LPCLASSFACTORY = IClassFactory*;
