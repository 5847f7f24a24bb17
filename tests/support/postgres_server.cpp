#include "support/postgres_server.h"

#include <glob.h>

#include <cstdio>

#include "support/server_process.h"

namespace tk::test {

namespace {

constexpr char kServerUser[] = "postgres";
constexpr int kStartSeconds = 60;
constexpr int kStopSeconds = 30;

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

}  // namespace

PostgresServer::PostgresServer() : programs_(ProgramFolder()), port_(FreePort()) {
    Give(kServerUser, folder_.Path());
    const std::string passwords = folder_.File("passwords");
    std::ofstream(passwords) << "pw\n";
    Give(kServerUser, passwords);
    const std::string log = folder_.File("initdb.log");
    const pid_t initdb = Spawn(kServerUser,
                               {programs_ + "/initdb", "-D", folder_.File("data"), "-E", "UTF8", "--locale=C.UTF-8",
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
    server_ = Spawn(kServerUser,
                    {programs_ + "/postgres", "-D", folder_.File("data"), "-p", std::to_string(port_), "-k",
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
        if (HasSaid(log, "ready to accept connections") && Answers(port_)) return;
        if (std::time(nullptr) > end) {
            const std::string lines = LastLines(log);  // which go with the server
            Stop();
            throw std::runtime_error("the PostgreSQL server does not answer:\n" + lines);
        }
        Pause();
    }
}

void PostgresServer::Stop() {
    if (server_ == 0) return;
    End(server_, SIGINT, kStopSeconds);  // ends the sessions, then the server
    server_ = 0;
    std::remove(folder_.File("server.log").c_str());
}

void PostgresServer::Cut() {
    if (server_ == 0) return;
    tk::test::Cut(server_);
    server_ = 0;
    std::remove(folder_.File("server.log").c_str());
}

void PostgresServer::Hold(bool isHeld) {
    if (server_ != 0) tk::test::Hold(server_, isHeld);
}

}  // namespace tk::test
