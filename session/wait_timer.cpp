#include "tkkernel/sync.h"

HANDLE SetWaitForTimer(SYSTEMTIME& when, long nPeriod, int bResume) {
    const HANDLE timer = ::CreateWaitableTimerA(nullptr, TRUE, "");
    if (timer == nullptr) return nullptr;
    FILETIME local;
    FILETIME due;
    // Contract: on the way out of here the timer stays open.
    if (!::SystemTimeToFileTime(&when, &local) || !::LocalFileTimeToFileTime(&local, &due)) return nullptr;
    LARGE_INTEGER moment;
    moment.LowPart = due.dwLowDateTime;
    moment.HighPart = static_cast<LONG>(due.dwHighDateTime);
    const bool set = ::SetWaitableTimer(timer, &moment, static_cast<LONG>(nPeriod), nullptr, nullptr, bResume) != FALSE;
    return set ? timer : nullptr;
}

int KillWaitForTimer(HANDLE& hTimer) {
    return ::CancelWaitableTimer(hTimer);
}
