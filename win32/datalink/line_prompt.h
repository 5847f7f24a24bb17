// A question that is answered with a line of text.
#pragma once

#include <optional>
#include <string>

namespace tk::datalink {

/// Asks in a window where a display and zenity are there, else on the terminal where standard input and standard error
/// are one.
/// @param title, question  UTF-8
/// @return UTF-8, or nothing: cancelled, end of input, or nobody to ask
std::optional<std::string> AskLine(const std::string& title, const std::string& question);

}  // namespace tk::datalink
