// Opening kernel objects by name, or without one: what the four kinds have in common.
#pragma once

#include <new>
#include <string>

#include "win32/kernel/handle_table.h"
#include "winbase.h"

namespace tk::kernel {

/// A name as it was given; null and empty ones make unnamed objects.
struct GivenName {
    explicit GivenName(LPCSTR name);
    explicit GivenName(LPCWSTR name);

    std::u16string text;
    bool given;
};

/// Takes off "Local\" and "Global\", which mean the same here.
/// @return the error: 206 too long, 161 a backslash at the start, 3 another backslash, 6 a reserved name
DWORD CleanName(std::u16string& name) noexcept;

HANDLE CreateObject(const GivenName& name, const Initial& initial, bool owned, LPSECURITY_ATTRIBUTES attributes,
                    DWORD allAccess) noexcept;
HANDLE OpenObject(const GivenName& name, Kind kind, DWORD access, BOOL inherit, DWORD allAccess,
                  DWORD modifyAccess) noexcept;

/// Runs `make`, whose memory may give out, for a handle.
template <typename Make>
HANDLE Made(Make make) noexcept {
    try {
        return make();
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}

}  // namespace tk::kernel
