// tools/tkdb/read_all.h - a whole file, or standard input.
#pragma once

#include <string>

namespace tk::tools {

/// @param file  "-": standard input
/// @return false when it cannot be opened
bool ReadAll(const std::string& file, std::string& content);

}  // namespace tk::tools
