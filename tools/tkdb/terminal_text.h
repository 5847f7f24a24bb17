// tools/tkdb/terminal_text.h - text between the library (GBK), the wire (UTF-8, UTF-16) and the terminal's locale.
#pragma once

#include <string>
#include <string_view>

namespace tk::tools {

/// Reads the locale of the environment; call once at the start of the program.
void UseTerminalLocale();

/// From the terminal or the command line to the library.
std::string TerminalToGbk(std::string_view text);

/// From the library to the terminal; what the terminal cannot show becomes '?'.
std::string GbkToTerminal(std::string_view text);
std::string Utf8ToTerminal(std::string_view text);

/// Columns that UTF-8 text takes on a terminal: 2 for wide characters, 0 for combining ones.
std::size_t DisplayWidth(std::string_view utf8);

}  // namespace tk::tools
