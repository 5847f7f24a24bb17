#include "tkkernel/sync.h"

HANDLE SetWaitForTimer(SYSTEMTIME& when, long nPeriod, int bResume) {
    const auto period = static_cast<LONG>(nPeriod);
    if (period != nPeriod) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const HANDLE timer = ::CreateWaitableTimerA(nullptr, TRUE, "");
    if (timer == nullptr) return nullptr;
    FILETIME local;
    FILETIME due;
    // Contract: on the way out of here the timer stays open.
    if (!::SystemTimeToFileTime(&when, &local) || !::LocalFileTimeToFileTime(&local, &due)) return nullptr;
    LARGE_INTEGER moment;
    moment.LowPart = due.dwLowDateTime;
    moment.HighPart = static_cast<LONG>(due.dwHighDateTime);
    // In universal time the first hours of the calendar may lie before it; negative moments would be spans.
    if (moment.QuadPart < 0) moment.QuadPart = 0;
    const bool set = ::SetWaitableTimer(timer, &moment, period, nullptr, nullptr, bResume) != FALSE;
    return set ? timer : nullptr;
}

int KillWaitForTimer(HANDLE& hTimer) {
    return ::CancelWaitableTimer(hTimer);
}
