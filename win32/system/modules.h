// The shared objects of the process under the platform's handles.
#pragma once

#include <string>

#include "windef.h"

namespace tk::system {

/// The program's own file, UTF-8; empty when the system does not tell.
std::string ProgramPath();

}  // namespace tk::system
