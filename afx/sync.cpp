#include "afxmt.h"

IMPLEMENT_DYNAMIC(CSyncObject, CObject)
IMPLEMENT_DYNAMIC(CCriticalSection, CSyncObject)

CSyncObject::CSyncObject() = default;

CSyncObject::~CSyncObject() = default;

CCriticalSection::CCriticalSection() {
    InitializeCriticalSection(&m_sect);
}

CCriticalSection::~CCriticalSection() {
    DeleteCriticalSection(&m_sect);
}

BOOL CCriticalSection::Lock() {
    EnterCriticalSection(&m_sect);
    return TRUE;
}

BOOL CCriticalSection::Lock(DWORD dwTimeout) {
    return dwTimeout == 0 ? TryEnterCriticalSection(&m_sect) : Lock();
}

BOOL CCriticalSection::Unlock() {
    LeaveCriticalSection(&m_sect);
    return TRUE;
}

CSingleLock::CSingleLock(CSyncObject* pObject, BOOL bInitialLock) : object_(pObject) {
    if (object_ == nullptr) AfxThrowInvalidArgException();
    if (bInitialLock) Lock();
}

CSingleLock::~CSingleLock() {
    Unlock();
}

BOOL CSingleLock::Lock(DWORD dwTimeOut) {
    if (!locked_) locked_ = object_->Lock(dwTimeOut);
    return locked_;
}

BOOL CSingleLock::Unlock() {
    if (locked_) locked_ = !object_->Unlock();
    return !locked_;
}
