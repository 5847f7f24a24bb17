// Asking whoever sits at the machine: through a program that shows a window, or on the terminal.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tk::system {

bool HasDisplay();

struct DialogOutcome {
    int exitCode;        // 0 and 1 are answers
    std::string output;  // what the program printed
};

/// Runs zenity with these arguments and waits for it.
/// @return nothing when there is no display, no zenity, or it could not show its window
std::optional<DialogOutcome> RunDialog(std::vector<std::string> arguments);

/// Whether standard input and standard error are both a terminal.
bool HasTerminal();
void ShowOnTerminal(const std::string& text);
/// A line as typed, without its end; nothing at the end of the input.
std::optional<std::string> ReadFromTerminal();

/// Offers numbered choices, in a window or on the terminal.
/// @return the chosen one; nothing when none was chosen or nobody can be asked
std::optional<std::size_t> AskChoice(const std::string& title, const std::vector<std::string>& choices);

}  // namespace tk::system
