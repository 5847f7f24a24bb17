#include "tkwin32/text.h"
#include "win32/system/dialog_program.h"
#include "win32/system/message_box.h"

namespace tk::system {
namespace {

std::string Choices(const Question& question) {
    std::string choices = "[";
    for (std::size_t i = 0; i < question.buttons.size(); ++i) {
        const Button& button = question.buttons[i];
        if (i != 0) choices += " / ";
        choices += text::Utf16ToUtf8(button.label);
        choices += " (";
        choices += i == question.preselected ? button.key : static_cast<char>(button.key + ('a' - 'A'));
        choices += ')';
    }
    return choices + "] ";
}

/// The button whose letter or label was typed.
const Button* Chosen(const Question& question, const std::string& line) {
    if (line.empty()) return &question.buttons[question.preselected];
    for (const Button& button : question.buttons) {
        const bool letter = line.size() == 1 && (line[0] == button.key || line[0] == button.key + ('a' - 'A'));
        if (letter || line == text::Utf16ToUtf8(button.label)) return &button;
    }
    return nullptr;
}

}  // namespace

std::optional<int> AskOnTerminal(const Question& question) {
    if (!HasTerminal()) return std::nullopt;
    ShowOnTerminal(question.caption + ": " + question.text + "\n");
    for (;;) {
        ShowOnTerminal(Choices(question));
        const auto line = ReadFromTerminal();
        if (!line) return question.safeAnswer;
        if (const Button* chosen = Chosen(question, *line)) return chosen->id;
    }
}

}  // namespace tk::system
