#include "session/handle_value.h"
#include "tkkernel/sync.h"
#include "tkkernel/util.h"

CTEvent::CTEvent() = default;
CTEvent::CTEvent(const CTEvent& other) = default;
CTEvent& CTEvent::operator=(const CTEvent& other) = default;

CTEvent::~CTEvent() {
    ::CloseHandle(handle_);
}

int CTEvent::OpenEventA(const char* szName) {
    name_ = szName;
    handle_ = ::CreateEventA(nullptr, FALSE, FALSE, szName);
    if (tk::session::IsHandle(handle_) && ::GetLastError() != ERROR_ALREADY_EXISTS) return TRUE;
    // Contract: the handle of an event that was there already is left open and replaced by a second one.
    handle_ = ::OpenEventA(EVENT_ALL_ACCESS, TRUE, szName);
    if (tk::session::IsHandle(handle_)) return TRUE;
    lastError_ = GetLastErrorText();
    return FALSE;
}

int CTEvent::SetEvent() {
    if (::SetEvent(handle_)) return TRUE;
    lastError_ = GetLastErrorText();
    return FALSE;
}

int CTEvent::ResetEvent() {
    if (::ResetEvent(handle_)) return TRUE;
    lastError_ = GetLastErrorText();
    return FALSE;
}

int CTEvent::WaitForEvent(unsigned long nTimeout) {
    // Contract: a wait that fails counts as one that succeeded.
    return ::WaitForSingleObject(handle_, tk::session::TimeoutOf(nTimeout)) != WAIT_TIMEOUT ? TRUE : FALSE;
}

int CTEvent::CloseEvent() {
    return ::CloseHandle(handle_);
}

CString CTEvent::GetEventName() {
    return name_;
}

CString CTEvent::GetLastErrorString() {
    return lastError_;
}
