// The shared objects of the process under the platform's handles.
#pragma once

#include <string>

#include "windef.h"

namespace tk::system {

/// The program's own file, UTF-8; empty when the system does not tell.
std::string ProgramPath();

/// Why the loader refused a file: it is no library of this machine (ERROR_BAD_EXE_FORMAT), or it, or something it
/// needs, is not there (ERROR_MOD_NOT_FOUND).
DWORD WhyNotLoaded(const std::string& path);

}  // namespace tk::system
