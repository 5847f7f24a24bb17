#include "win32/kernel/objects.h"
#include "winbase.h"

namespace tk::kernel {
namespace {

HANDLE Create(const GivenName& name, LONG count, LONG most, LPSECURITY_ATTRIBUTES attributes) noexcept {
    if (most < 1 || count < 0 || count > most) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const Initial initial = {Kind::kSemaphore, static_cast<std::uint32_t>(count), 0, static_cast<std::uint32_t>(most)};
    return CreateObject(name, initial, false, attributes, SEMAPHORE_ALL_ACCESS);
}

BOOL Fail(DWORD error) noexcept {
    SetLastError(error);
    return FALSE;
}

}  // namespace
}  // namespace tk::kernel

using namespace tk::kernel;

HANDLE CreateSemaphoreA(LPSECURITY_ATTRIBUTES lpSemaphoreAttributes, LONG lInitialCount, LONG lMaximumCount,
                        LPCSTR lpName) {
    return Made([&] { return Create(GivenName(lpName), lInitialCount, lMaximumCount, lpSemaphoreAttributes); });
}

HANDLE CreateSemaphoreW(LPSECURITY_ATTRIBUTES lpSemaphoreAttributes, LONG lInitialCount, LONG lMaximumCount,
                        LPCWSTR lpName) {
    return Made([&] { return Create(GivenName(lpName), lInitialCount, lMaximumCount, lpSemaphoreAttributes); });
}

HANDLE OpenSemaphoreA(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCSTR lpName) {
    return Made([&] {
        return OpenObject(GivenName(lpName), Kind::kSemaphore, dwDesiredAccess, bInheritHandle, SEMAPHORE_ALL_ACCESS,
                          SEMAPHORE_MODIFY_STATE);
    });
}

HANDLE OpenSemaphoreW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName) {
    return Made([&] {
        return OpenObject(GivenName(lpName), Kind::kSemaphore, dwDesiredAccess, bInheritHandle, SEMAPHORE_ALL_ACCESS,
                          SEMAPHORE_MODIFY_STATE);
    });
}

BOOL ReleaseSemaphore(HANDLE hSemaphore, LONG lReleaseCount, LPLONG lpPreviousCount) {
    if (lReleaseCount < 1) return Fail(ERROR_INVALID_PARAMETER);
    const HandleUse semaphore(hSemaphore, Kind::kSemaphore, SEMAPHORE_MODIFY_STATE);
    if (!semaphore) return FALSE;
    State& state = semaphore->GetState();
    const auto more = static_cast<std::uint32_t>(lReleaseCount);
    const auto report = [&](std::uint32_t before) {
        if (lpPreviousCount != nullptr) *lpPreviousCount = static_cast<LONG>(before);
        return TRUE;
    };

    Word word = state.word.load(std::memory_order_relaxed);
    while ((word & kSlow) == 0) {
        if (more > state.limit - ValueOf(word)) return Fail(ERROR_TOO_MANY_POSTS);
        if (state.word.compare_exchange_weak(word, word + more * kOne, std::memory_order_acq_rel)) {
            return report(ValueOf(word));
        }
    }
    Dispatcher& dispatcher = semaphore->GetDispatcher();
    Dispatcher::Hold hold(dispatcher);
    if (!hold) return Fail(ERROR_TIMEOUT);
    dispatcher.Freeze(state);
    const std::uint32_t before = ValueOf(state.word.load(std::memory_order_relaxed));
    const bool fits = more <= state.limit - before;
    if (fits) {
        Dispatcher::SetValue(state, before + more);
        dispatcher.Offer(state, hold);
    }
    dispatcher.Thaw(state);
    return fits ? report(before) : Fail(ERROR_TOO_MANY_POSTS);
}
