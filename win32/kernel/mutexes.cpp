#include "win32/kernel/objects.h"
#include "winbase.h"

namespace tk::kernel {
namespace {

HANDLE Create(const GivenName& name, BOOL owned, LPSECURITY_ATTRIBUTES attributes) noexcept {
    return CreateObject(name, {Kind::kMutex, 0, 0, 0}, owned != FALSE, attributes, MUTEX_ALL_ACCESS);
}

BOOL Fail(DWORD error) noexcept {
    SetLastError(error);
    return FALSE;
}

}  // namespace
}  // namespace tk::kernel

using namespace tk::kernel;

HANDLE CreateMutexA(LPSECURITY_ATTRIBUTES lpMutexAttributes, BOOL bInitialOwner, LPCSTR lpName) {
    return Made([&] { return Create(GivenName(lpName), bInitialOwner, lpMutexAttributes); });
}

HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES lpMutexAttributes, BOOL bInitialOwner, LPCWSTR lpName) {
    return Made([&] { return Create(GivenName(lpName), bInitialOwner, lpMutexAttributes); });
}

HANDLE OpenMutexA(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpName) {
    return Made([&] {
        return OpenObject(GivenName(lpName), Kind::kMutex, dwDesiredAccess, bInheritHandle, MUTEX_ALL_ACCESS,
                          MUTEX_MODIFY_STATE);
    });
}

HANDLE OpenMutexW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName) {
    return Made([&] {
        return OpenObject(GivenName(lpName), Kind::kMutex, dwDesiredAccess, bInheritHandle, MUTEX_ALL_ACCESS,
                          MUTEX_MODIFY_STATE);
    });
}

BOOL ReleaseMutex(HANDLE hMutex) {
    const HandleUse mutex(hMutex, Kind::kMutex, 0);
    if (!mutex) return FALSE;
    State& state = mutex->GetState();
    const std::uint32_t owner = mutex->Owner();
    Word word = state.word.load(std::memory_order_relaxed);
    if (ValueOf(word) != owner) return Fail(ERROR_NOT_OWNER);
    if (state.recursion.load(std::memory_order_relaxed) > 1) {
        state.recursion.fetch_sub(1, std::memory_order_relaxed);
        return TRUE;
    }
    while ((word & kSlow) == 0) {
        if (state.word.compare_exchange_weak(word, WithValue(word, 0), std::memory_order_acq_rel)) return TRUE;
    }
    Dispatcher& dispatcher = mutex->GetDispatcher();
    Dispatcher::Hold hold(dispatcher);
    if (!hold) return Fail(ERROR_TIMEOUT);
    dispatcher.Freeze(state);
    Dispatcher::SetValue(state, 0);
    dispatcher.Offer(state, hold);
    dispatcher.Thaw(state);
    return TRUE;
}
