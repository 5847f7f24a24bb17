#include "win32/kernel/objects.h"
#include "winbase.h"

namespace tk::kernel {
namespace {

HANDLE Create(const GivenName& name, BOOL manual, BOOL signalled, LPSECURITY_ATTRIBUTES attributes) noexcept {
    const Initial initial = {Kind::kEvent, signalled != FALSE ? 1u : 0u, manual != FALSE ? 1u : 0u, 0};
    return CreateObject(name, initial, false, attributes, EVENT_ALL_ACCESS);
}

BOOL TimedOut() noexcept {
    SetLastError(ERROR_TIMEOUT);
    return FALSE;
}

constexpr Word WhenSet(Word word) noexcept {
    return WithValue(word, 1);
}

/// Changes the word at once when nobody waits. @return false when somebody may
bool ChangeQuickly(State& state, Word (*change)(Word)) noexcept {
    Word word = state.word.load(std::memory_order_relaxed);
    while ((word & kSlow) == 0) {
        // Stored also when nothing changes: what was written before this call is seen by who the event lets through.
        if (state.word.compare_exchange_weak(word, change(word), std::memory_order_acq_rel)) return true;
    }
    return false;
}

}  // namespace
}  // namespace tk::kernel

using namespace tk::kernel;

HANDLE CreateEventA(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState, LPCSTR lpName) {
    return Made([&] { return Create(GivenName(lpName), bManualReset, bInitialState, lpEventAttributes); });
}

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState, LPCWSTR lpName) {
    return Made([&] { return Create(GivenName(lpName), bManualReset, bInitialState, lpEventAttributes); });
}

HANDLE OpenEventA(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpName) {
    return Made([&] {
        return OpenObject(GivenName(lpName), Kind::kEvent, dwDesiredAccess, bInheritHandle, EVENT_ALL_ACCESS,
                          EVENT_MODIFY_STATE);
    });
}

HANDLE OpenEventW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName) {
    return Made([&] {
        return OpenObject(GivenName(lpName), Kind::kEvent, dwDesiredAccess, bInheritHandle, EVENT_ALL_ACCESS,
                          EVENT_MODIFY_STATE);
    });
}

BOOL SetEvent(HANDLE hEvent) {
    const HandleUse event(hEvent, Kind::kEvent, EVENT_MODIFY_STATE);
    if (!event) return FALSE;
    State& state = event->GetState();
    if (ChangeQuickly(state, WhenSet)) return TRUE;
    Dispatcher::Hold hold(event->GetDispatcher());
    if (!hold) return TimedOut();
    event->GetDispatcher().Freeze(state);
    Dispatcher::SetValue(state, 1);
    event->GetDispatcher().Offer(state, hold);
    event->GetDispatcher().Thaw(state);
    return TRUE;
}

BOOL ResetEvent(HANDLE hEvent) {
    const HandleUse event(hEvent, Kind::kEvent, EVENT_MODIFY_STATE);
    if (!event) return FALSE;
    State& state = event->GetState();
    if (ChangeQuickly(state, WhenReset)) return TRUE;
    const Dispatcher::Hold hold(event->GetDispatcher());
    if (!hold) return TimedOut();
    event->GetDispatcher().Freeze(state);
    Dispatcher::Reset(state);
    event->GetDispatcher().Thaw(state);
    return TRUE;
}

BOOL PulseEvent(HANDLE hEvent) {
    const HandleUse event(hEvent, Kind::kEvent, EVENT_MODIFY_STATE);
    if (!event) return FALSE;
    State& state = event->GetState();
    Dispatcher::Hold hold(event->GetDispatcher());
    if (!hold) return TimedOut();
    event->GetDispatcher().Freeze(state);
    Dispatcher::SetValue(state, 1);
    event->GetDispatcher().Offer(state, hold);
    Dispatcher::Reset(state);
    event->GetDispatcher().Thaw(state);
    return TRUE;
}
