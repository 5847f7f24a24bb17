#include <poll.h>
#include <unistd.h>

#include "tkwin32/text.h"
#include "win32/system/message_box.h"

namespace tk::system {
namespace {

void Show(const std::string& text) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

/// A line as typed, without its end; nothing at the end of the input. Byte by byte, so that what follows the line stays
/// for the program.
std::optional<std::string> ReadLine() {
    std::string line;
    for (;;) {
        char character = 0;
        const ssize_t count = read(STDIN_FILENO, &character, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return std::nullopt;
        if (character == '\n') return line;
        line += character;
    }
}

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
    if (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0) return std::nullopt;
    Show(question.caption + ": " + question.text + "\n");
    for (;;) {
        Show(Choices(question));
        const auto line = ReadLine();
        if (!line) return question.safeAnswer;
        if (const Button* chosen = Chosen(question, *line)) return chosen->id;
    }
}

}  // namespace tk::system
