#include <errno.h>
#include <pthread.h>
#include <sched.h>
#include <time.h>

#include <cstdlib>
#include <new>

#include "winbase.h"

namespace {

static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION));
static_assert(alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION));

pthread_mutex_t* Mutex(LPCRITICAL_SECTION section) noexcept {
    return std::launder(reinterpret_cast<pthread_mutex_t*>(section->storage));
}

}  // namespace

void InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (lpCriticalSection->storage) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION lpCriticalSection, DWORD) {
    InitializeCriticalSection(lpCriticalSection);
    return TRUE;
}

void EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    pthread_mutex_lock(Mutex(lpCriticalSection));
}

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    return pthread_mutex_trylock(Mutex(lpCriticalSection)) == 0 ? TRUE : FALSE;
}

void LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    pthread_mutex_unlock(Mutex(lpCriticalSection));
}

void DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    pthread_mutex_destroy(Mutex(lpCriticalSection));
}

void Sleep(DWORD dwMilliseconds) {
    if (dwMilliseconds == 0) {
        sched_yield();
        return;
    }
    timespec until{};
    clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += dwMilliseconds / 1000;
    until.tv_nsec += static_cast<long>(dwMilliseconds % 1000) * 1'000'000;
    if (until.tv_nsec >= 1'000'000'000) {
        ++until.tv_sec;
        until.tv_nsec -= 1'000'000'000;
    }
    // An absolute moment, so that a signal handler in between does not lengthen the wait.
    do {  // NOLINT(bugprone-infinite-loop): INFINITE is meant so
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {}
        until.tv_sec += dwMilliseconds / 1000;
    } while (dwMilliseconds == INFINITE);
}
