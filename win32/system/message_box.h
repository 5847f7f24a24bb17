// The buttons of a message box, and the ways to ask for one of them.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "windef.h"

namespace tk::system {

struct Button {
    int id;
    const char16_t* label;
    char key;  // the letter that chooses it on a terminal
};

struct Question {
    std::string text;     // UTF-8
    std::string caption;  // UTF-8
    UINT icon;            // MB_ICON...
    std::span<const Button> buttons;
    std::size_t preselected;  // what Enter alone chooses
    int safeAnswer;           // when nobody can be asked, or whoever was asked went away
};

/// @return nothing when there is no display, no zenity, or it could not show the question
std::optional<int> AskInWindow(const Question& question);
/// @return nothing when standard input and standard error are not both a terminal
std::optional<int> AskOnTerminal(const Question& question);

}  // namespace tk::system
