// tools/demo/demo.h - the library's main job on real data, written as an application would write it.
#pragma once

#include <string>

namespace tk::tools {

/// Creates tables, loads the ISO lists and works with them; prints what it does.
/// @param connection  empty: an embedded database in a temporary file, removed at the end
/// @return an exit code of the program
int RunDemo(const std::string& connection);

}  // namespace tk::tools
