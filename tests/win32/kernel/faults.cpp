#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <time.h>

#include "tests/win32/kernel/support.h"

namespace tk::test {

Faults& TheFaults() {
    static Faults faults;
    return faults;
}

}  // namespace tk::test

using tk::test::Faults;
using tk::test::TheFaults;

// These stand in front of the system's own.

extern "C" [[gnu::visibility("default")]] int posix_fallocate(int descriptor, off_t offset, off_t length) {
    Faults& faults = TheFaults();
    if (faults.fullAfter == 0) {
        if (faults.signalWhenFull != 0) raise(faults.signalWhenFull);
        return ENOSPC;
    }
    if (faults.fullAfter > 0) --faults.fullAfter;
    static const auto real = reinterpret_cast<int (*)(int, off_t, off_t)>(dlsym(RTLD_NEXT, "posix_fallocate"));
    return real(descriptor, offset, length);
}

extern "C" [[gnu::visibility("default")]] int pthread_mutex_consistent(pthread_mutex_t* mutex) noexcept {
    static const auto real = reinterpret_cast<int (*)(pthread_mutex_t*)>(dlsym(RTLD_NEXT, "pthread_mutex_consistent"));
    ++Faults::repairs;
    return real(mutex);
}

extern "C" [[gnu::visibility("default")]] int clock_gettime(clockid_t clock, timespec* time) noexcept {
    static const auto real = reinterpret_cast<int (*)(clockid_t, timespec*)>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int result = real(clock, time);
    const std::int64_t behind = clock == CLOCK_MONOTONIC  ? Faults::clockBehind.load()
                                : clock == CLOCK_REALTIME ? Faults::wallClockBehind.load()
                                                          : 0;
    if (result == 0 && behind != 0) {
        const std::int64_t moment = time->tv_sec * std::int64_t{1'000'000'000} + time->tv_nsec - behind;
        time->tv_sec = moment / 1'000'000'000;
        time->tv_nsec = moment % 1'000'000'000;
    }
    return result;
}

#ifdef __SANITIZE_THREAD__
// The thread sanitizer understands a lock taken over from a process that ended in pthread_mutex_trylock, and not here.
extern "C" [[gnu::visibility("default")]] int pthread_mutex_timedlock(pthread_mutex_t* mutex,
                                                                      const timespec* until) noexcept {
    for (;;) {
        const int result = pthread_mutex_trylock(mutex);
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        if (result != EBUSY || now.tv_sec > until->tv_sec) return result == EBUSY ? ETIMEDOUT : result;
        const timespec pause = {0, 50'000};
        nanosleep(&pause, nullptr);
    }
}
#endif
