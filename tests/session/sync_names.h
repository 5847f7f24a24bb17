// Names of objects that no other run of the tests uses.
#pragma once

#include <windows.h>

#include <string>

namespace tk::test {

inline std::string OwnName(const std::string& name) {
    static int count = 0;
    return "tk-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count) + "-" + name;
}

/// Whether somebody has an event of that name. Looks without leaving a trace.
inline bool EventExists(const std::string& name) {
    const HANDLE found = OpenEventA(SYNCHRONIZE, FALSE, name.c_str());
    if (found != nullptr) CloseHandle(found);
    return found != nullptr;
}

inline bool SemaphoreExists(const std::string& name) {
    const HANDLE found = OpenSemaphoreA(SYNCHRONIZE, FALSE, name.c_str());
    if (found != nullptr) CloseHandle(found);
    return found != nullptr;
}

}  // namespace tk::test
