// What a failed system call means in the platform's codes.
#pragma once

#include "windef.h"

namespace tk::system {

/// @param error  an errno value
DWORD ErrorFromErrno(int error) noexcept;

/// Stores the code of the current errno as the last error. @return false, for `return FailCall();`
bool FailCall() noexcept;

}  // namespace tk::system
