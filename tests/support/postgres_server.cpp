#include "support/postgres_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <glob.h>
#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace tk::test {

namespace {

constexpr char kServerUser[] = "postgres";
constexpr int kStartSeconds = 60;
constexpr int kStopSeconds = 30;

void Pause() {
    const timespec pause = {0, 20'000'000};
    nanosleep(&pause, nullptr);
}

std::string ProgramFolder() {
    glob_t found = {};
    std::string folder;
    if (glob("/usr/lib/postgresql/*/bin/initdb", 0, nullptr, &found) == 0 && found.gl_pathc > 0) {
        folder = found.gl_pathv[found.gl_pathc - 1];
        folder.erase(folder.rfind('/'));
    }
    globfree(&found);
    if (folder.empty()) {
        throw std::runtime_error(
            "PostgreSQL is not installed: no /usr/lib/postgresql/*/bin/initdb (package postgresql)");
    }
    return folder;
}

int FreePort() {
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

bool Answers(int port) {
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const bool connected = connect(client, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    close(client);
    return connected;
}

std::string LastLines(const std::string& file) {
    std::ifstream log(file);
    const std::string text{std::istreambuf_iterator<char>(log), {}};
    constexpr std::size_t kEnough = 2000;
    return text.size() > kEnough ? text.substr(text.size() - kEnough) : text;
}

/// Runs a program as the server's user when this one is root; its output goes to the log. It ends with this process.
pid_t Spawn(const std::vector<std::string>& command, const std::string& log) {
    const passwd* user = geteuid() == 0 ? getpwnam(kServerUser) : nullptr;
    if (geteuid() == 0 && user == nullptr) throw std::runtime_error("there is no user postgres to run the server");
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child != 0) return child;
    if (user != nullptr && (setgid(user->pw_gid) != 0 || setuid(user->pw_uid) != 0)) _exit(126);
    prctl(PR_SET_PDEATHSIG, SIGQUIT);
    const int output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
}

/// @return whether the child ended within the time; it is no more then
bool WaitFor(pid_t child, int seconds, int* status) {
    const std::time_t end = std::time(nullptr) + seconds;
    do {
        if (waitpid(child, status, WNOHANG) == child) return true;
        Pause();
    } while (std::time(nullptr) <= end);
    return false;
}

void Give(const std::string& path) {
    const passwd* user = geteuid() == 0 ? getpwnam(kServerUser) : nullptr;
    if (user != nullptr && chown(path.c_str(), user->pw_uid, user->pw_gid) != 0) {
        throw std::runtime_error("cannot give " + path + " to the user postgres");
    }
}

}  // namespace

PostgresServer::PostgresServer() : programs_(ProgramFolder()), port_(FreePort()) {
    Give(folder_.Path());
    const std::string passwords = folder_.File("passwords");
    std::ofstream(passwords) << "pw\n";
    Give(passwords);
    const std::string log = folder_.File("initdb.log");
    const pid_t initdb = Spawn({programs_ + "/initdb", "-D", folder_.File("data"), "-E", "UTF8", "--locale=C.UTF-8",
                                "-U", "tester", "--auth=scram-sha-256", "--pwfile=" + passwords, "--no-sync"},
                               log);
    int status = 0;
    if (!WaitFor(initdb, kStartSeconds, &status)) {
        kill(initdb, SIGKILL);
        waitpid(initdb, &status, 0);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error("initdb failed:\n" + LastLines(log));
    Start();
}

PostgresServer::~PostgresServer() {
    Stop();
}

std::string PostgresServer::ConnectionString() const {
    return "Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=" + std::to_string(port_) +
           ";Database=postgres;UID=tester;PWD=pw;BoolsAsChar=0";
}

void PostgresServer::Start() {
    if (server_ != 0) return;
    const std::string log = folder_.File("server.log");
    server_ = Spawn({programs_ + "/postgres", "-D", folder_.File("data"), "-p", std::to_string(port_), "-k",
                     folder_.Path(), "-c", "listen_addresses=127.0.0.1", "-c", "fsync=off"},
                    log);
    const std::time_t end = std::time(nullptr) + kStartSeconds;
    for (;;) {
        int status = 0;
        if (waitpid(server_, &status, WNOHANG) == server_) {
            server_ = 0;
            throw std::runtime_error("the PostgreSQL server ended at its start:\n" + LastLines(log));
        }
        // The socket answers before recovery is over; the log says when it is.
        if (Answers(port_) && LastLines(log).find("ready to accept connections") != std::string::npos) return;
        if (std::time(nullptr) > end) {
            Stop();
            throw std::runtime_error("the PostgreSQL server does not answer:\n" + LastLines(log));
        }
        Pause();
    }
}

void PostgresServer::Stop() {
    if (server_ == 0) return;
    int status = 0;
    kill(server_, SIGINT);  // ends the sessions, then the server
    if (!WaitFor(server_, kStopSeconds, &status)) {
        kill(server_, SIGKILL);
        waitpid(server_, &status, 0);
    }
    server_ = 0;
    std::remove(folder_.File("server.log").c_str());
}

}  // namespace tk::test
