#include "win32/system/dialog_program.h"

#include <errno.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>

#include "win32/system/file_descriptor.h"

extern char** environ;

namespace tk::system {
namespace {

std::string ReadAll(int descriptor) {
    std::string output;
    char piece[256];
    for (;;) {
        const ssize_t count = read(descriptor, piece, sizeof piece);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return output;
        output.append(piece, static_cast<std::size_t>(count));
    }
}

/// The choice whose number a text begins with.
std::optional<std::size_t> ChoiceOf(const std::string& text, std::size_t count) {
    std::size_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || number == 0 || number > count) return std::nullopt;
    return number - 1;
}

}  // namespace

bool HasDisplay() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && value[0] != 0) return true;
    }
    return false;
}

std::optional<DialogOutcome> RunDialog(std::vector<std::string> arguments) {
    if (!HasDisplay()) return std::nullopt;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);

    std::string program = "zenity";
    std::vector<char*> pointers = {program.data()};
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

    DialogOutcome outcome{0, ReadAll(reading.Get())};
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(child, &status, 0)) < 0 && errno == EINTR) {}
    // A program that ignores its children leaves no status to read. Beyond 1 no window could be shown.
    if (ended != child || !WIFEXITED(status) || WEXITSTATUS(status) > 1) return std::nullopt;
    outcome.exitCode = WEXITSTATUS(status);
    return outcome;
}

bool HasTerminal() {
    return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
}

void ShowOnTerminal(const std::string& text) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

std::optional<std::string> ReadFromTerminal() {
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

std::optional<std::size_t> AskChoice(const std::string& title, const std::vector<std::string>& choices) {
    if (choices.empty()) return std::nullopt;
    std::vector<std::string> arguments = {"--list",          "--title=" + title, "--hide-header",    "--column=number",
                                          "--column=choice", "--hide-column=1",  "--print-column=1", "--"};
    for (std::size_t i = 0; i < choices.size(); ++i) {
        arguments.push_back(std::to_string(i + 1));
        arguments.push_back(choices[i]);
    }
    if (const auto outcome = RunDialog(std::move(arguments))) {
        return outcome->exitCode == 0 ? ChoiceOf(outcome->output, choices.size()) : std::nullopt;
    }
    if (!HasTerminal()) return std::nullopt;
    std::string question = title + "\n";
    for (std::size_t i = 0; i < choices.size(); ++i)
        question += "  " + std::to_string(i + 1) + "  " + choices[i] + "\n";
    for (;;) {
        ShowOnTerminal(question + "> ");
        const auto line = ReadFromTerminal();
        if (!line || line->empty()) return std::nullopt;
        if (const auto choice = ChoiceOf(*line, choices.size())) return choice;
    }
}

}  // namespace tk::system
