// tools/tkdb/split_script.h - the statements of a script.
#pragma once

#include <string>
#include <vector>

namespace tk::tools {

/// Splits the text of a script at the semicolons that end statements; those inside quotes and comments do not.
std::vector<std::string> SplitScript(const std::string& script);

}  // namespace tk::tools
