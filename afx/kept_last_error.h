// afx/kept_last_error.h - calls whose failure is expected, or told in another way, leave no code behind.
#pragma once

#include <windows.h>

namespace tk::afx {

/// Gives the thread's last error back at the end of a scope: applications read theirs after our work, and
/// CTDatabase::ExecuteSQL tells whether there is one.
class KeptLastError {
public:
    KeptLastError() noexcept : code_(GetLastError()) {}
    KeptLastError(const KeptLastError&) = delete;
    KeptLastError& operator=(const KeptLastError&) = delete;
    ~KeptLastError() { SetLastError(code_); }

private:
    DWORD code_;
};

}  // namespace tk::afx
