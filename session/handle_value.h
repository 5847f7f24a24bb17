// What the platform gives and takes: whether it is a handle, and waits as it counts them.
#pragma once

#include <windows.h>

#include <algorithm>

namespace tk::session {

inline bool IsHandle(HANDLE handle) noexcept {
    return handle != nullptr && handle != INVALID_HANDLE_VALUE;
}

/// Longer than the platform can say is for ever.
inline DWORD TimeoutOf(unsigned long milliseconds) noexcept {
    return static_cast<DWORD>(std::min<unsigned long>(milliseconds, INFINITE));
}

}  // namespace tk::session
