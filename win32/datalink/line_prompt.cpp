#include "win32/datalink/line_prompt.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "win32/system/file_descriptor.h"

extern char** environ;

namespace tk::datalink {
namespace {

using system::FileDescriptor;

bool HasDisplay() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && value[0] != '\0') return true;
    }
    return false;
}

std::string ReadAll(int descriptor) {
    std::string output;
    char piece[256];
    for (;;) {
        const ssize_t count = read(descriptor, piece, sizeof(piece));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return output;
        output.append(piece, static_cast<std::size_t>(count));
    }
}

enum class Shown { kAnswered, kCancelled, kNot };

Shown AskInWindow(std::string title, std::string question, std::string* line) {
    if (!HasDisplay()) return Shown::kNot;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return Shown::kNot;
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    std::string program = "zenity";
    std::string kind = "--entry";
    title.insert(0, "--title=");
    question.insert(0, "--text=");
    char* arguments[] = {program.data(), kind.data(), title.data(), question.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing.Get(), STDOUT_FILENO);
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    writing = FileDescriptor();
    if (error != 0) return Shown::kNot;
    *line = ReadAll(reading.Get());
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(child, &status, 0)) < 0 && errno == EINTR) {}
    // 0 and 1 are answers; anything else says that no window could be shown.
    if (ended != child || !WIFEXITED(status) || WEXITSTATUS(status) > 1) return Shown::kNot;
    if (WEXITSTATUS(status) == 1) return Shown::kCancelled;
    while (!line->empty() && line->back() == '\n')
        line->pop_back();
    return Shown::kAnswered;
}

std::optional<std::string> AskOnTerminal(const std::string& title, const std::string& question) {
    if (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0) return std::nullopt;
    const std::string shown = title + ": " + question + " ";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, shown.data(), shown.size());
    std::string line;
    for (;;) {  // byte by byte, so that what follows the line stays for the program
        char character = 0;
        const ssize_t count = read(STDIN_FILENO, &character, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return std::nullopt;
        if (character == '\n') return line;
        line += character;
    }
}

}  // namespace

std::optional<std::string> AskLine(const std::string& title, const std::string& question) {
    std::string line;
    switch (AskInWindow(title, question, &line)) {
        case Shown::kAnswered:
            return line;
        case Shown::kCancelled:
            return std::nullopt;
        case Shown::kNot:
            break;
    }
    return AskOnTerminal(title, question);
}

}  // namespace tk::datalink
