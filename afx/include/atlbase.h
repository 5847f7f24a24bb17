// atlbase.h - CComModule: which module a program's resources are in.
//
//   CComModule module;
//   module.Init(NULL, GetModuleHandle(NULL));
//
// Threads: Init and Term alone; the rest from any.
#pragma once

#include <windows.h>

#include "afx_export.h"

class AFX_API CComModule {
public:
    /// @param p  a table of classes, which this form of the module does not register: null
    /// @return S_OK; E_NOTIMPL for a table
    HRESULT Init(void* p, HINSTANCE h);
    void Term();

    HINSTANCE GetModuleInstance() const noexcept { return m_hInst; }
    HINSTANCE GetResourceInstance() const noexcept { return m_hInstResource; }

    /// Objects that keep the module in use. @return how many there are now
    LONG Lock();
    LONG Unlock();
    LONG GetLockCount() const;

    HINSTANCE m_hInst = NULL;
    HINSTANCE m_hInstResource = NULL;
    LONG m_nLockCnt = 0;
};
