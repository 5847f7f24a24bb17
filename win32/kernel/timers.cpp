#include <sys/timerfd.h>

#include <algorithm>

#include "win32/kernel/objects.h"
#include "win32/system/calendar.h"
#include "winbase.h"

using tk::system::FileDescriptor;

namespace tk::kernel {
namespace {

HANDLE Create(const GivenName& name, BOOL manual, LPSECURITY_ATTRIBUTES attributes) noexcept {
    return CreateObject(name, {Kind::kTimer, 0, manual != FALSE ? 1u : 0u, 0}, false, attributes, TIMER_ALL_ACCESS);
}

BOOL Fail(DWORD error) noexcept {
    SetLastError(error);
    return FALSE;
}

/// 100 ns units as nanoseconds; what is centuries away does not come.
std::int64_t Nanoseconds(std::int64_t ticks) noexcept {
    return ticks > Moment::kNever / 100 ? Moment::kNever : ticks * 100;
}

Moment DueOf(std::int64_t given) noexcept {
    if (given >= 0) {
        const std::int64_t since1970 = given - system::kUnixEpochTicks;
        return {since1970 < 0 ? 0 : Nanoseconds(since1970), CLOCK_REALTIME};
    }
    const std::int64_t span = given == INT64_MIN ? Moment::kNever : Nanoseconds(-given);
    const std::int64_t now = Now(CLOCK_MONOTONIC);
    return {span > Moment::kNever - now ? Moment::kNever : now + span, CLOCK_MONOTONIC};
}

/// A clock of the system that wakes the machine. @return none when this process may not, or there is none
FileDescriptor AlarmAt(Moment due, std::int64_t period) noexcept {
    const clockid_t clock = due.clock == CLOCK_REALTIME ? CLOCK_REALTIME_ALARM : CLOCK_BOOTTIME_ALARM;
    FileDescriptor alarm(timerfd_create(clock, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!alarm) return alarm;
    std::int64_t slept = 0;  // which only one of the two clocks counts
    if (due.clock != CLOCK_REALTIME) slept = std::max<std::int64_t>(0, Now(CLOCK_BOOTTIME) - Now(CLOCK_MONOTONIC));
    const std::int64_t at = due.at > Moment::kNever - slept ? Moment::kNever : due.at + slept;
    itimerspec when{};
    when.it_value = {at / 1'000'000'000, at % 1'000'000'000 + (at == 0 ? 1 : 0)};
    when.it_interval = {period / 1'000'000'000, period % 1'000'000'000};
    if (timerfd_settime(alarm.Get(), TFD_TIMER_ABSTIME, &when, nullptr) != 0) return FileDescriptor();
    return alarm;
}

/// Not signalled, and due at the moment given. @return false when the lock cannot be had
bool Set(Target& timer, Moment due, std::int64_t period) noexcept {
    State& state = timer.GetState();
    Dispatcher& dispatcher = timer.GetDispatcher();
    Dispatcher::Hold hold(dispatcher);
    if (!hold) return false;
    dispatcher.Freeze(state);
    // Stopped first: at whatever step this process ends, the timer is no mixture.
    state.due.store(Moment::kNever, std::memory_order_release);
    Dispatcher::Reset(state);
    state.period.store(period, std::memory_order_relaxed);
    state.wallClock.store(due.clock == CLOCK_REALTIME ? 1 : 0, std::memory_order_relaxed);
    state.due.store(due.at, std::memory_order_release);
    dispatcher.Expire(state, hold);
    dispatcher.PokeAll(state, hold);  // they sleep until another moment
    dispatcher.Thaw(state);
    return true;
}

}  // namespace
}  // namespace tk::kernel

using namespace tk::kernel;

HANDLE CreateWaitableTimerA(LPSECURITY_ATTRIBUTES lpTimerAttributes, BOOL bManualReset, LPCSTR lpTimerName) {
    return Made([&] { return Create(GivenName(lpTimerName), bManualReset, lpTimerAttributes); });
}

HANDLE CreateWaitableTimerW(LPSECURITY_ATTRIBUTES lpTimerAttributes, BOOL bManualReset, LPCWSTR lpTimerName) {
    return Made([&] { return Create(GivenName(lpTimerName), bManualReset, lpTimerAttributes); });
}

HANDLE OpenWaitableTimerA(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpTimerName) {
    return Made([&] {
        return OpenObject(GivenName(lpTimerName), Kind::kTimer, dwDesiredAccess, bInheritHandle, TIMER_ALL_ACCESS,
                          TIMER_MODIFY_STATE);
    });
}

HANDLE OpenWaitableTimerW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpTimerName) {
    return Made([&] {
        return OpenObject(GivenName(lpTimerName), Kind::kTimer, dwDesiredAccess, bInheritHandle, TIMER_ALL_ACCESS,
                          TIMER_MODIFY_STATE);
    });
}

BOOL SetWaitableTimer(HANDLE hTimer, const LARGE_INTEGER* lpDueTime, LONG lPeriod,
                      PTIMERAPCROUTINE pfnCompletionRoutine, LPVOID, BOOL fResume) {
    if (lpDueTime == nullptr) return Fail(ERROR_NOACCESS);
    if (lPeriod < 0) return Fail(ERROR_INVALID_PARAMETER);
    const HandleUse timer(hTimer, Kind::kTimer, TIMER_MODIFY_STATE);
    if (!timer) return FALSE;
    if (pfnCompletionRoutine != nullptr) return Fail(ERROR_NOT_SUPPORTED);
    const Moment due = DueOf(lpDueTime->QuadPart);
    const std::int64_t period = lPeriod * std::int64_t{1'000'000};
    if (!Set(*timer, due, period)) return Fail(ERROR_TIMEOUT);
    bool wakes = true;
    if (fResume != FALSE && due.at != Moment::kNever) {
        FileDescriptor clock = AlarmAt(due, period);
        wakes = static_cast<bool>(clock);
        timer->SetAlarm(std::move(clock));
    } else {
        timer->SetAlarm(FileDescriptor());
    }
    SetLastError(wakes ? NO_ERROR : ERROR_NOT_SUPPORTED);
    return TRUE;
}

BOOL CancelWaitableTimer(HANDLE hTimer) {
    const HandleUse timer(hTimer, Kind::kTimer, TIMER_MODIFY_STATE);
    if (!timer) return FALSE;
    Dispatcher::Hold hold(timer->GetDispatcher());
    if (!hold) return Fail(ERROR_TIMEOUT);
    // A moment that has come before this call counts.
    timer->GetDispatcher().Expire(timer->GetState(), hold);
    timer->GetState().due.store(Moment::kNever, std::memory_order_release);
    timer->GetDispatcher().PokeAll(timer->GetState(), hold);
    timer->SetAlarm(FileDescriptor());
    return TRUE;
}
