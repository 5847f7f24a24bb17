// synchapi.h - waiting and critical sections.
//
//   CRITICAL_SECTION lock;
//   InitializeCriticalSection(&lock);
//   EnterCriticalSection(&lock);  // the owner may enter again, and leaves as often
//   LeaveCriticalSection(&lock);
//   DeleteCriticalSection(&lock);
#pragma once

#include "windef.h"

/// Opaque; never copied or moved between initialising and deleting.
struct CRITICAL_SECTION {
    alignas(void*) unsigned char storage[64];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

WINBASEAPI void InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
/// The spin count is taken as a hint and not used. @return TRUE
WINBASEAPI BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount);
WINBASEAPI void EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
/// @return FALSE when another thread is inside
WINBASEAPI BOOL TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
WINBASEAPI void LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
WINBASEAPI void DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection);

/// Waits the whole time, signals notwithstanding. 0 gives up the rest of the time slice, INFINITE never returns.
WINBASEAPI void Sleep(DWORD dwMilliseconds);
