#include "tkwin32/programs.h"

#include <errno.h>
#include <signal.h>
#include <spawn.h>
#include <strings.h>
#include <sys/wait.h>

#include <cstring>
#include <span>
#include <system_error>
#include <thread>

#include "win32/system/command_line.h"
#include "win32/system/dialog_program.h"
#include "win32/system/file_names.h"

extern char** environ;

namespace tk::system {
namespace {

constexpr UINT kStarted = 33;
constexpr char kWindowsFolder[] = "C:\\WINDOWS";

/// Programs of the platform, and what does their work here. All of them need a display.
constexpr const char* kOdbcAdministrators[] = {"ODBCManageDataSourcesQ5", "ODBCManageDataSourcesQ4",
                                               "ODBCManageDataSources", "ODBCConfig", "gODBCConfig"};
constexpr struct {
    const char* name;
    std::span<const char* const> standIns;
} kPrograms[] = {
    {"odbcad32.exe", kOdbcAdministrators},
    {"odbcad32", kOdbcAdministrators},
};

UINT CodeOf(int error) noexcept {
    switch (error) {
        case ENOTDIR:
            return 3;
        case EACCES:
        case EPERM:
            return 5;
        case ENOEXEC:
            return 11;
        case ENOMEM:
        case EAGAIN:
            return 8;
        default:
            return 2;
    }
}

/// @return 0, or why it does not run
int Start(std::vector<std::string> words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    // A session of its own: what ends the terminal or this program does not end it. Nothing is blocked or ignored
    // there.
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t child = 0;
    const int error = posix_spawnp(&child, pointers[0], nullptr, &attributes, pointers.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) return error;
    // Somebody has to take note of its end, or it stays in the system's list.
    try {
        std::thread([child] {
            while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {}
        }).detach();
    } catch (const std::system_error&) {
        return 0;  // then it stays there until this program ends
    }
    return 0;
}

/// Starts the first of the programs that is installed.
int StartFirst(std::span<const char* const> standIns, const std::vector<std::string>& words) {
    if (!HasDisplay()) return ENOENT;
    int error = ENOENT;
    for (const char* standIn : standIns) {
        std::vector<std::string> command = words;
        command[0].assign(standIn);
        error = Start(std::move(command));
        if (error == 0) break;
    }
    return error;
}

}  // namespace
}  // namespace tk::system

UINT WinExec(LPCSTR lpCmdLine, UINT) {
    using namespace tk::system;
    const std::vector<std::string> words = SplitCommandLine(ToFileSystem(lpCmdLine));
    if (words.empty() || words[0].empty()) return CodeOf(ENOENT);
    const std::string name = words[0].substr(words[0].find_last_of("\\/") + 1);
    for (const auto& program : kPrograms) {
        if (strcasecmp(name.c_str(), program.name) != 0) continue;
        const int error = StartFirst(program.standIns, words);
        return error == 0 ? kStarted : CodeOf(error);
    }
    const int error = Start(words);
    return error == 0 ? kStarted : CodeOf(error);
}

UINT GetWindowsDirectoryA(LPSTR lpBuffer, UINT uSize) {
    constexpr UINT kLength = sizeof(tk::system::kWindowsFolder) - 1;
    if (lpBuffer == nullptr || uSize <= kLength) return kLength + 1;
    std::memcpy(lpBuffer, tk::system::kWindowsFolder, kLength + 1);
    return kLength;
}
