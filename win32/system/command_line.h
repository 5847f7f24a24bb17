// Command lines as the platform writes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tk::system {

/// The words of a line. Blanks part them, quotation marks keep blanks; a backslash counts only before a quotation mark,
/// where two stand for one and an odd one makes the mark a part of the word.
std::vector<std::string> SplitCommandLine(std::string_view line);

}  // namespace tk::system
