// synchapi.h - events, semaphores, mutexes, timers, waiting for them, and critical sections.
//
//   HANDLE ready = CreateEvent(NULL, FALSE, FALSE, "Stock.Ready");  // shared by the name with other processes
//   if (WaitForSingleObject(ready, 500) == WAIT_TIMEOUT) Report();
//   CloseHandle(ready);
//
// Objects: the names of events, semaphores, mutexes and timers are one name space, case-sensitive, at most 260
// characters, shared by the processes of one user; win32/README.md has the rules. An empty or null name makes an object
// of this process alone. An object lives while a handle to it is open in a living process. Security descriptors are not
// looked at.
// Failures: null or FALSE with GetLastError(): 2 no such name, 3 or 161 a wrong backslash, 5 a missing right, 6 no such
// handle or a name of another kind, 87, 206 a name too long, 1450 out of room for objects. Creating what is there
// already gives a handle and ERROR_ALREADY_EXISTS; a new object sets 0.
// Threads: any.
//
//   CRITICAL_SECTION lock;
//   InitializeCriticalSection(&lock);
//   EnterCriticalSection(&lock);  // the owner may enter again, and leaves as often
//   LeaveCriticalSection(&lock);
//   DeleteCriticalSection(&lock);
#pragma once

#include "handleapi.h"
#include "windef.h"

/// Opaque; never copied or moved between initialising and deleting.
struct CRITICAL_SECTION {
    alignas(void*) unsigned char storage[64];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

WINBASEAPI void InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
/// The spin count is taken as a hint and not used. @return TRUE
WINBASEAPI BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount);
/// Tries for a moment, at most some microseconds, before it sleeps.
WINBASEAPI void EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
/// @return FALSE when another thread is inside
WINBASEAPI BOOL TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
WINBASEAPI void LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
WINBASEAPI void DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection);

/// Waits the whole time, signals notwithstanding. 0 gives up the rest of the time slice, INFINITE never returns.
WINBASEAPI void Sleep(DWORD dwMilliseconds);

// --- Events ---

#define EVENT_MODIFY_STATE 0x2u
#define EVENT_ALL_ACCESS 0x1F0003u

WINBASEAPI HANDLE CreateEventA(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState,
                               LPCSTR lpName);
WINBASEAPI HANDLE CreateEventW(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState,
                               LPCWSTR lpName);
WINBASEAPI HANDLE OpenEventA(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpName);
WINBASEAPI HANDLE OpenEventW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName);
/// Lets every waiter through (manual reset) or one; with nobody waiting the event stays signalled.
WINBASEAPI BOOL SetEvent(HANDLE hEvent);
WINBASEAPI BOOL ResetEvent(HANDLE hEvent);
/// SetEvent for those who wait at this moment, and not signalled afterwards.
WINBASEAPI BOOL PulseEvent(HANDLE hEvent);

// --- Semaphores ---

#define SEMAPHORE_MODIFY_STATE 0x2u
#define SEMAPHORE_ALL_ACCESS 0x1F0003u

/// @param lInitialCount  0 to lMaximumCount, which is at least 1; otherwise ERROR_INVALID_PARAMETER
WINBASEAPI HANDLE CreateSemaphoreA(LPSECURITY_ATTRIBUTES lpSemaphoreAttributes, LONG lInitialCount, LONG lMaximumCount,
                                   LPCSTR lpName);
WINBASEAPI HANDLE CreateSemaphoreW(LPSECURITY_ATTRIBUTES lpSemaphoreAttributes, LONG lInitialCount, LONG lMaximumCount,
                                   LPCWSTR lpName);
WINBASEAPI HANDLE OpenSemaphoreA(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpName);
WINBASEAPI HANDLE OpenSemaphoreW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName);
/// @param lReleaseCount  at least 1
/// @param lpPreviousCount  may be null
/// @return FALSE with ERROR_TOO_MANY_POSTS, nothing changed, when the maximum would be passed
WINBASEAPI BOOL ReleaseSemaphore(HANDLE hSemaphore, LONG lReleaseCount, LPLONG lpPreviousCount);

// --- Mutexes ---

#define MUTEX_MODIFY_STATE 0x1u
#define MUTEX_ALL_ACCESS 0x1F0001u

/// @param bInitialOwner  counts for a mutex that did not exist yet
WINBASEAPI HANDLE CreateMutexA(LPSECURITY_ATTRIBUTES lpMutexAttributes, BOOL bInitialOwner, LPCSTR lpName);
WINBASEAPI HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES lpMutexAttributes, BOOL bInitialOwner, LPCWSTR lpName);
WINBASEAPI HANDLE OpenMutexA(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpName);
WINBASEAPI HANDLE OpenMutexW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName);
/// @return FALSE with ERROR_NOT_OWNER for a thread that does not own it
WINBASEAPI BOOL ReleaseMutex(HANDLE hMutex);

// --- Waitable timers ---

#define TIMER_QUERY_STATE 0x1u
#define TIMER_MODIFY_STATE 0x2u
#define TIMER_ALL_ACCESS 0x1F0003u

using PTIMERAPCROUTINE = void(APIENTRY*)(LPVOID lpArgToCompletionRoutine, DWORD dwTimerLowValue,
                                         DWORD dwTimerHighValue);

WINBASEAPI HANDLE CreateWaitableTimerA(LPSECURITY_ATTRIBUTES lpTimerAttributes, BOOL bManualReset, LPCSTR lpTimerName);
WINBASEAPI HANDLE CreateWaitableTimerW(LPSECURITY_ATTRIBUTES lpTimerAttributes, BOOL bManualReset, LPCWSTR lpTimerName);
WINBASEAPI HANDLE OpenWaitableTimerA(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpTimerName);
WINBASEAPI HANDLE OpenWaitableTimerW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpTimerName);
/// Not signalled from now until the due time, then signalled; a due time that has passed signals at once.
/// @param lpDueTime  100 ns units: a moment since 1601-01-01 UTC, which follows the system's clock, or negative: from
/// now
/// @param lPeriod    milliseconds between later signals, 0 for none; at least 0
/// @param pfnCompletionRoutine  null; there are no completion routines here: ERROR_NOT_SUPPORTED
/// @param fResume    TRUE wakes the machine from suspend where this process may do that; elsewhere the timer is set all
///                   the same and the last error is ERROR_NOT_SUPPORTED
/// @return TRUE; the last error is 0 or, as said, ERROR_NOT_SUPPORTED
WINBASEAPI BOOL SetWaitableTimer(HANDLE hTimer, const LARGE_INTEGER* lpDueTime, LONG lPeriod,
                                 PTIMERAPCROUTINE pfnCompletionRoutine, LPVOID lpArgToCompletionRoutine, BOOL fResume);
/// Stops the timer; whether it is signalled stays as it is.
WINBASEAPI BOOL CancelWaitableTimer(HANDLE hTimer);

// --- Waiting ---

#define MAXIMUM_WAIT_OBJECTS 64
#define WAIT_OBJECT_0 0x0u
#define WAIT_ABANDONED 0x80u
#define WAIT_ABANDONED_0 0x80u
#define WAIT_IO_COMPLETION 0xC0u
#define WAIT_TIMEOUT 0x102u
#define WAIT_FAILED 0xFFFFFFFFu

/// @param dwMilliseconds  0 looks and does not wait; INFINITE has no end. Signals of the system do not end a wait.
/// @return WAIT_OBJECT_0; WAIT_ABANDONED for a mutex whose owner ended without releasing it, which the caller now owns;
///         WAIT_TIMEOUT; WAIT_FAILED
WINBASEAPI DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds);
/// @param bAlertable  nothing here queues calls to a thread, so no wait ends with WAIT_IO_COMPLETION
WINBASEAPI DWORD WaitForSingleObjectEx(HANDLE hHandle, DWORD dwMilliseconds, BOOL bAlertable);
/// Waits for one of the objects, the first signalled one in their order, or for all of them at once: nothing is taken
/// from any before all are signalled.
/// @param nCount  1 to MAXIMUM_WAIT_OBJECTS
/// @param lpHandles  may name an object twice, unless bWaitAll (ERROR_INVALID_PARAMETER)
/// @return WAIT_OBJECT_0 or WAIT_ABANDONED_0 plus the index (of any, or 0 for all); WAIT_TIMEOUT; WAIT_FAILED
WINBASEAPI DWORD WaitForMultipleObjects(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds);
WINBASEAPI DWORD WaitForMultipleObjectsEx(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds,
                                          BOOL bAlertable);

#define CreateEvent CreateEventA
#define OpenEvent OpenEventA
#define CreateSemaphore CreateSemaphoreA
#define OpenSemaphore OpenSemaphoreA
#define CreateMutex CreateMutexA
#define OpenMutex OpenMutexA
#define CreateWaitableTimer CreateWaitableTimerA
#define OpenWaitableTimer OpenWaitableTimerA
