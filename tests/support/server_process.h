// server_process.h - running a server program for a test: as another user when this one is root, on a free port of the
// loopback address, with its output in a log; it ends with this process.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tk::test {

inline void Pause() {
    const timespec pause = {0, 20'000'000};
    nanosleep(&pause, nullptr);
}

inline int FreePort() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    const bool bound = bind(listener, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                       getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    close(listener);
    if (!bound) throw std::runtime_error("no free port on the loopback address");
    return ntohs(address.sin_port);
}

inline bool Answers(int port) {
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const bool connected = connect(client, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    close(client);
    return connected;
}

inline std::string WholeText(const std::string& file) {
    std::ifstream text(file);
    return {std::istreambuf_iterator<char>(text), {}};
}

/// Anywhere in the log: a server may write much behind it, a line about each connection that says nothing among it.
inline bool HasSaid(const std::string& log, std::string_view words) {
    return WholeText(log).find(words) != std::string::npos;
}

inline std::string LastLines(const std::string& file) {
    const std::string text = WholeText(file);
    constexpr std::size_t kEnough = 2000;
    return text.size() > kEnough ? text.substr(text.size() - kEnough) : text;
}

/// The user that a server runs as: none unless this process is root. @throws std::runtime_error without such a user
inline const passwd* ServerUser(const char* name) {
    if (geteuid() != 0) return nullptr;
    const passwd* const user = getpwnam(name);
    if (user == nullptr) throw std::runtime_error(std::string("there is no user to run the server: ") + name);
    return user;
}

/// Runs a program as the server's user when this one is root; its output goes to the log. It ends with this process.
/// @param lastSignal  what ends it then
inline pid_t Spawn(const char* userName, const std::vector<std::string>& command, const std::string& log,
                   int lastSignal = SIGQUIT) {
    const passwd* user = ServerUser(userName);
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child != 0) return child;
    if (user != nullptr && (setgid(user->pw_gid) != 0 || setuid(user->pw_uid) != 0)) _exit(126);
    prctl(PR_SET_PDEATHSIG, lastSignal);
    const int output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
}

/// @return whether the child ended within the time; it is no more then
inline bool WaitFor(pid_t child, int seconds, int* status) {
    const std::time_t end = std::time(nullptr) + seconds;
    do {
        if (waitpid(child, status, WNOHANG) == child) return true;
        Pause();
    } while (std::time(nullptr) <= end);
    return false;
}

/// Ends a child for good. @param signal  the polite way, tried first
inline void End(pid_t child, int signal, int seconds) {
    int status = 0;
    kill(child, signal);
    if (WaitFor(child, seconds, &status)) return;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
}

/// The processes that a process has started and not outlived.
inline std::vector<pid_t> ChildrenOf(pid_t parent) {
    const std::string process = "/proc/" + std::to_string(parent);
    std::ifstream list(process + "/task/" + std::to_string(parent) + "/children");
    return {std::istream_iterator<pid_t>(list), {}};
}

/// Ends a child and those it started as a power cut does: none of them gets to do anything about it. What they shared
/// is let go when this returns.
inline void Cut(pid_t child) {
    kill(child, SIGSTOP);  // starts no more of them meanwhile
    const std::vector<pid_t> started = ChildrenOf(child);
    kill(child, SIGKILL);
    for (const pid_t each : started)
        kill(each, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    constexpr int kSeconds = 30;
    const std::time_t end = std::time(nullptr) + kSeconds;
    for (const pid_t each : started) {
        // One that nobody waits for stays in the list of processes, but without memory.
        while (std::ifstream("/proc/" + std::to_string(each) + "/maps").get() != std::ifstream::traits_type::eof()) {
            if (std::time(nullptr) > end) throw std::runtime_error("a process of the server does not end");
            Pause();
        }
    }
}

/// True when no thread of a process runs any more, as a stopping signal does not tell at once.
inline bool IsHeld(pid_t process) {
    const std::string tasks = "/proc/" + std::to_string(process) + "/task";
    std::error_code failure;
    for (const auto& task : std::filesystem::directory_iterator(tasks, failure)) {
        std::string stat;
        std::getline(std::ifstream(task.path() / "stat"), stat);
        const std::size_t behindName = stat.rfind(')');
        if (behindName == std::string::npos || behindName + 2 >= stat.size()) continue;  // it has ended
        if (std::string_view("TZX").find(stat[behindName + 2]) == std::string_view::npos) return false;
    }
    return true;
}

/// Holds a child and those it started where they are, without a word, or lets them go on.
inline void Hold(pid_t child, bool isHeld) {
    kill(child, isHeld ? SIGSTOP : SIGCONT);  // starts no more of them meanwhile
    std::vector<pid_t> all = ChildrenOf(child);
    for (const pid_t each : all)
        kill(each, isHeld ? SIGSTOP : SIGCONT);
    if (!isHeld) return;
    all.push_back(child);
    constexpr int kSeconds = 30;
    const std::time_t end = std::time(nullptr) + kSeconds;
    for (const pid_t each : all) {
        while (!IsHeld(each)) {
            if (std::time(nullptr) > end) throw std::runtime_error("a process of the server does not stop");
            Pause();
        }
    }
}

inline void Give(const char* userName, const std::string& path) {
    const passwd* const user = ServerUser(userName);
    if (user != nullptr && chown(path.c_str(), user->pw_uid, user->pw_gid) != 0) {
        throw std::runtime_error("cannot give " + path + " to the user " + userName);
    }
}

}  // namespace tk::test
