#include "atlbase.h"

HRESULT CComModule::Init(void* p, HINSTANCE h) {
    if (p != nullptr) return E_NOTIMPL;
    m_hInst = m_hInstResource = h;
    m_nLockCnt = 0;
    return S_OK;
}

void CComModule::Term() {
    m_hInst = m_hInstResource = nullptr;
}

LONG CComModule::Lock() {
    return InterlockedIncrement(&m_nLockCnt);
}
LONG CComModule::Unlock() {
    return InterlockedDecrement(&m_nLockCnt);
}
LONG CComModule::GetLockCount() const {
    return m_nLockCnt;
}
