#include <vector>

#include "tkwin32/message_box.h"
#include "tkwin32/text.h"
#include "win32/system/dialog_program.h"
#include "win32/system/message_box.h"

namespace tk::system {
namespace {

const char* KindOf(const Question& question) {
    if (question.buttons.size() > 1) return "--question";
    switch (question.icon) {
        case MB_ICONERROR:
            return "--error";
        case MB_ICONWARNING:
            return "--warning";
        default:
            return "--info";
    }
}

/// How the buttons are laid out: zenity has an "OK", a "Cancel", which closing the window means too, and extra ones.
struct Layout {
    const Button* ok;
    const Button* cancel = nullptr;  // the safe answer
    const Button* extra = nullptr;
};

Layout LayOut(std::span<const Button> buttons, int safeAnswer) {
    if (buttons.size() == 1) return {&buttons[0]};
    Layout layout{};
    for (const Button& button : buttons) {
        const Button*& place = button.id == safeAnswer ? layout.cancel
                               : layout.ok == nullptr  ? layout.ok
                                                       : layout.extra;
        place = &button;
    }
    return layout;
}

std::vector<std::string> Arguments(const Question& question, const Layout& layout) {
    const auto label = [](const Button& button) { return text::Utf16ToUtf8(button.label); };
    std::vector<std::string> arguments = {KindOf(question), "--no-markup", "--title=" + question.caption,
                                          "--text=" + question.text,
                                          // Of several buttons only one is the safe answer, so another one is "OK".
                                          // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker)
                                          "--ok-label=" + label(*layout.ok)};
    if (layout.cancel != nullptr) arguments.push_back("--cancel-label=" + label(*layout.cancel));
    if (layout.extra != nullptr) arguments.push_back("--extra-button=" + label(*layout.extra));
    if (&question.buttons[question.preselected] == layout.cancel) arguments.emplace_back("--default-cancel");
    return arguments;
}

}  // namespace

std::optional<int> AskInWindow(const Question& question) {
    const Layout layout = LayOut(question.buttons, question.safeAnswer);
    const auto outcome = RunDialog(Arguments(question, layout));
    if (!outcome) return std::nullopt;
    if (outcome->exitCode == 0) return layout.ok->id;
    if (layout.extra != nullptr && outcome->output.starts_with(text::Utf16ToUtf8(layout.extra->label))) {
        return layout.extra->id;
    }
    return question.safeAnswer;
}

}  // namespace tk::system
