// ole2.h - components with automation: the start-up of programs with a user interface, and what comes with it.
#pragma once

#include "objbase.h"
#include "oleauto.h"

inline constexpr IID IID_IRunnableObject = {0x00000126, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

struct IBindCtx;

/// An object that has a running state.
struct IRunnableObject : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetRunningClass(LPCLSID lpClsid) = 0;
    virtual HRESULT STDMETHODCALLTYPE Run(IBindCtx* pbc) = 0;
    virtual BOOL STDMETHODCALLTYPE IsRunning() = 0;
    virtual HRESULT STDMETHODCALLTYPE LockRunning(BOOL fLock, BOOL fLastUnlockCloses) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetContainedObject(BOOL fContained) = 0;

protected:
    ~IRunnableObject() = default;
};

/// Enters a single-threaded apartment; RPC_E_CHANGED_MODE in the multithreaded one.
WINOLEAPI OleInitialize(LPVOID pvReserved);
WINOLEAPI_(void) OleUninitialize();
/// Brings an object that has a running state into it; success for one that has none.
WINOLEAPI OleRun(LPUNKNOWN pUnknown);
