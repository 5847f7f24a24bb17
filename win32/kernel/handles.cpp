#include <array>
#include <optional>

#include "win32/kernel/handle_table.h"
#include "win32/kernel/wait.h"
#include "winbase.h"

using namespace tk::kernel;

namespace {

BOOL Fail(DWORD error) noexcept {
    SetLastError(error);
    return FALSE;
}

DWORD FailWait(DWORD error) noexcept {
    SetLastError(error);
    return WAIT_FAILED;
}

}  // namespace

HANDLE GetCurrentProcess() {
    return INVALID_HANDLE_VALUE;
}

BOOL CloseHandle(HANDLE hObject) {
    return ShutHandle(hObject) ? TRUE : FALSE;
}

BOOL DuplicateHandle(HANDLE hSourceProcessHandle, HANDLE hSourceHandle, HANDLE hTargetProcessHandle,
                     LPHANDLE lpTargetHandle, DWORD dwDesiredAccess, BOOL bInheritHandle, DWORD dwOptions) {
    if (hSourceProcessHandle != GetCurrentProcess() || hTargetProcessHandle != GetCurrentProcess()) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    HANDLE copy = nullptr;
    DWORD error = NO_ERROR;
    {
        const EntryUse source(hSourceHandle);
        if (!source) return Fail(ERROR_INVALID_HANDLE);
        const DWORD access = (dwOptions & DUPLICATE_SAME_ACCESS) != 0 ? source->access : dwDesiredAccess;
        if ((access & ~source->access) != 0) {
            error = ERROR_ACCESS_DENIED;
        } else if (lpTargetHandle != nullptr) {
            source->thing->AddUse();
            copy = OpenHandle(source->thing, access, bInheritHandle != FALSE);
            if (copy == nullptr) error = GetLastError();
        }
    }
    if ((dwOptions & DUPLICATE_CLOSE_SOURCE) != 0) ShutHandle(hSourceHandle);
    if (error != NO_ERROR) return Fail(error);
    if (lpTargetHandle != nullptr) *lpTargetHandle = copy;
    return TRUE;
}

BOOL GetHandleInformation(HANDLE hObject, LPDWORD lpdwFlags) {
    const EntryUse entry(hObject);
    if (!entry) return Fail(ERROR_INVALID_HANDLE);
    if (lpdwFlags == nullptr) return Fail(ERROR_NOACCESS);
    *lpdwFlags = entry->flags.load(std::memory_order_relaxed);
    return TRUE;
}

BOOL SetHandleInformation(HANDLE hObject, DWORD dwMask, DWORD dwFlags) {
    constexpr DWORD kKnown = HANDLE_FLAG_INHERIT | HANDLE_FLAG_PROTECT_FROM_CLOSE;
    if ((dwMask & ~kKnown) != 0) return Fail(ERROR_INVALID_PARAMETER);
    const EntryUse entry(hObject);
    if (!entry) return Fail(ERROR_INVALID_HANDLE);
    DWORD flags = entry->flags.load(std::memory_order_relaxed);
    while (!entry->flags.compare_exchange_weak(flags, (flags & ~dwMask) | (dwFlags & dwMask))) {}
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) {
    const HandleUse object(hHandle, SYNCHRONIZE);
    if (!object) return WAIT_FAILED;
    WaitSet set;
    set.targets[0] = &*object;
    set.count = 1;
    return WaitFor(set, dwMilliseconds);
}

DWORD WaitForSingleObjectEx(HANDLE hHandle, DWORD dwMilliseconds, BOOL) {
    return WaitForSingleObject(hHandle, dwMilliseconds);
}

DWORD WaitForMultipleObjects(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds) {
    if (nCount == 0 || nCount > MAXIMUM_WAIT_OBJECTS) return FailWait(ERROR_INVALID_PARAMETER);
    if (lpHandles == nullptr) return FailWait(ERROR_NOACCESS);
    std::array<std::optional<HandleUse>, MAXIMUM_WAIT_OBJECTS> objects;
    WaitSet set;
    set.count = static_cast<int>(nCount);
    set.all = bWaitAll != FALSE;
    for (DWORD i = 0; i < nCount; ++i) {
        const HandleUse& object = objects[i].emplace(lpHandles[i], SYNCHRONIZE);
        if (!object) return WAIT_FAILED;
        set.targets[i] = &*object;
        for (DWORD j = 0; set.all && j < i; ++j) {
            if (&set.targets[j]->GetState() == &object->GetState()) return FailWait(ERROR_INVALID_PARAMETER);
        }
    }
    return WaitFor(set, dwMilliseconds);
}

DWORD WaitForMultipleObjectsEx(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds, BOOL) {
    return WaitForMultipleObjects(nCount, lpHandles, bWaitAll, dwMilliseconds);
}
