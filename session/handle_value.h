// Whether the platform gave a handle: functions differ in what they give instead.
#pragma once

#include <windows.h>

namespace tk::session {

inline bool IsHandle(HANDLE handle) noexcept {
    return handle != nullptr && handle != INVALID_HANDLE_VALUE;
}

}  // namespace tk::session
