// wine.h - whether the Windows build runs on Wine, for the few places where Wine does not do what Windows does.
#pragma once

#include <windows.h>

namespace tk::test {

inline bool RunsUnderWine() {
    HMODULE system = GetModuleHandleA("ntdll.dll");  // there is none on POSIX
    return system != nullptr && GetProcAddress(system, "wine_get_version") != nullptr;
}

}  // namespace tk::test
