#include "session/handle_value.h"
#include "tkkernel/sync.h"
#include "tkkernel/util.h"

CTSemaphore::CTSemaphore() = default;
CTSemaphore::CTSemaphore(const CTSemaphore& other) = default;
CTSemaphore& CTSemaphore::operator=(const CTSemaphore& other) = default;
// Contract: the handle is not closed, unlike that of an event.
CTSemaphore::~CTSemaphore() = default;

int CTSemaphore::OpenSemaphoreA(const char* szName) {
    name_ = szName;
    handle_ = ::OpenSemaphoreA(SEMAPHORE_ALL_ACCESS, FALSE, szName);
    // Contract: opening does not set the code on success, so that a 2 from before leads to the second step.
    if (tk::session::IsHandle(handle_) && ::GetLastError() != ERROR_FILE_NOT_FOUND) return TRUE;
    handle_ = ::CreateSemaphoreA(nullptr, 0, 0x7FFFFFFF, szName);
    if (tk::session::IsHandle(handle_)) return TRUE;
    lastError_ = GetLastErrorText();
    return FALSE;
}

int CTSemaphore::WaitSemaphore(unsigned long nTimeout) {
    if (::WaitForSingleObject(handle_, tk::session::TimeoutOf(nTimeout)) == WAIT_TIMEOUT) return FALSE;
    return SetSemaphore();
}

int CTSemaphore::SetSemaphore() {
    return ::ReleaseSemaphore(handle_, 1, nullptr);
}

int CTSemaphore::CloseSemaphore() {
    return ::CloseHandle(handle_);
}

CString CTSemaphore::GetEventName() {
    return name_;
}

CString CTSemaphore::GetLastErrorString() {
    return lastError_;
}
