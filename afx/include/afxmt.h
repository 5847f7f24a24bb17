// afxmt.h - locks: CCriticalSection and the scope guard CSingleLock.
//
//   CCriticalSection guard;
//   CSingleLock lock(&guard, TRUE);  // left with the scope
//
// Threads: a critical section is for all of them; a CSingleLock belongs to one.
#pragma once

#include "afx.h"

class AFX_API CSyncObject : public CObject {
    DECLARE_DYNAMIC(CSyncObject)
public:
    ~CSyncObject() override;

    virtual BOOL Lock(DWORD dwTimeout = INFINITE) = 0;
    virtual BOOL Unlock() = 0;

protected:
    CSyncObject();
};

/// A lock of one process; its owner may enter again and leaves as often.
class AFX_API CCriticalSection : public CSyncObject {
    DECLARE_DYNAMIC(CCriticalSection)
public:
    CCriticalSection();
    ~CCriticalSection() override;

    BOOL Lock();
    /// @param dwTimeout  0 tries; any other time waits without end, as critical sections do
    /// @return FALSE only for a try that failed
    BOOL Lock(DWORD dwTimeout) override;
    BOOL Unlock() override;

    operator CRITICAL_SECTION*() noexcept { return &m_sect; }

    CRITICAL_SECTION m_sect;
};

/// Enters an object and leaves it at the latest with the scope. Locking twice counts once.
class AFX_API CSingleLock {
public:
    explicit CSingleLock(CSyncObject* pObject, BOOL bInitialLock = FALSE);
    CSingleLock(const CSingleLock&) = delete;
    CSingleLock& operator=(const CSingleLock&) = delete;
    ~CSingleLock();

    BOOL Lock(DWORD dwTimeOut = INFINITE);
    BOOL Unlock();
    BOOL IsLocked() const noexcept { return locked_; }

private:
    CSyncObject* object_;
    BOOL locked_ = FALSE;
};
