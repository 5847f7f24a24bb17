#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "tkwin32/message_box.h"
#include "tkwin32/text.h"
#include "win32/system/file_descriptor.h"
#include "win32/system/message_box.h"

extern char** environ;

namespace tk::system {
namespace {

bool HasDisplay() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && value[0] != 0) return true;
    }
    return false;
}

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
    std::vector<std::string> arguments = {"zenity", KindOf(question), "--no-markup", "--title=" + question.caption,
                                          "--text=" + question.text,
                                          // Of several buttons only one is the safe answer, so another one is "OK".
                                          // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker)
                                          "--ok-label=" + label(*layout.ok)};
    if (layout.cancel != nullptr) arguments.push_back("--cancel-label=" + label(*layout.cancel));
    if (layout.extra != nullptr) arguments.push_back("--extra-button=" + label(*layout.extra));
    if (&question.buttons[question.preselected] == layout.cancel) arguments.emplace_back("--default-cancel");
    return arguments;
}

struct Outcome {
    int exitCode;
    std::string output;
};

std::optional<Outcome> Run(std::vector<std::string> arguments) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);

    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing.Get(), STDOUT_FILENO);
    pid_t child = 0;
    const int error = posix_spawnp(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    writing = FileDescriptor();
    if (error != 0) return std::nullopt;

    Outcome outcome{};
    char piece[256];
    for (;;) {
        const ssize_t count = read(reading.Get(), piece, sizeof piece);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        outcome.output.append(piece, static_cast<std::size_t>(count));
    }
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(child, &status, 0)) < 0 && errno == EINTR) {}
    // A program that ignores its children leaves no status to read.
    if (ended != child || !WIFEXITED(status)) return std::nullopt;
    outcome.exitCode = WEXITSTATUS(status);
    return outcome;
}

}  // namespace

std::optional<int> AskInWindow(const Question& question) {
    if (!HasDisplay()) return std::nullopt;
    const Layout layout = LayOut(question.buttons, question.safeAnswer);
    const auto outcome = Run(Arguments(question, layout));
    // 0 and 1 are answers; anything else says that no window could be shown.
    if (!outcome || outcome->exitCode > 1) return std::nullopt;
    if (outcome->exitCode == 0) return layout.ok->id;
    if (layout.extra != nullptr && outcome->output.starts_with(text::Utf16ToUtf8(layout.extra->label))) {
        return layout.extra->id;
    }
    return question.safeAnswer;
}

}  // namespace tk::system
