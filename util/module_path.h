// util/module_path.h - the running program's name, which is also the source of its event-log records.
#pragma once

#include "tkkernel/util.h"

namespace tk::util {

/// Splits a path into the six parts, each cut to its width behind a whole character.
void SplitPath(const char* path, _tagPATHITEM& item);

}  // namespace tk::util
