#include "support/mariadb_server.h"

#include <sys/stat.h>

#include <cstdio>

#include "support/server_process.h"

namespace tk::test {

namespace {

constexpr char kServerUser[] = "nobody";
constexpr char kServer[] = "/usr/sbin/mariadbd";
constexpr char kInstaller[] = "/usr/bin/mariadb-install-db";
constexpr int kStartSeconds = 60;
constexpr int kStopSeconds = 30;

// Run by the server before it takes its first connection. A client on the loopback address is "localhost" to it.
constexpr char kFirstStatements[] =
    "CREATE DATABASE IF NOT EXISTS test CHARACTER SET utf8mb4;\n"
    "CREATE USER IF NOT EXISTS tester@localhost IDENTIFIED BY 'pw';\n"
    "GRANT ALL ON *.* TO tester@localhost WITH GRANT OPTION;\n";

}  // namespace

MariaDbServer::MariaDbServer() : port_(FreePort()) {
    if (access(kServer, X_OK) != 0 || access(kInstaller, X_OK) != 0) {
        throw std::runtime_error("MariaDB is not installed: no /usr/sbin/mariadbd (package mariadb-server-core)");
    }
    Give(kServerUser, folder_.Path());
    std::ofstream(folder_.File("first.sql")) << kFirstStatements;
    Give(kServerUser, folder_.File("first.sql"));
    // A server that starts removes what it takes for leftovers of others from its temporary folder: one of its own.
    const std::string temporary = folder_.File("temporary");
    if (mkdir(temporary.c_str(), 0700) != 0) throw std::runtime_error("no folder " + temporary);
    Give(kServerUser, temporary);
    const std::string log = folder_.File("install.log");
    const pid_t install = Spawn(kServerUser,
                                {kInstaller, "--no-defaults", "--datadir=" + folder_.File("data"),
                                 "--tmpdir=" + temporary, "--auth-root-authentication-method=normal", "--skip-test-db"},
                                log);
    int status = 0;
    if (!WaitFor(install, kStartSeconds, &status)) {
        kill(install, SIGKILL);
        waitpid(install, &status, 0);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error("mariadb-install-db failed:\n" + LastLines(log));
    }
    Start();
}

MariaDbServer::~MariaDbServer() {
    Stop();
}

std::string MariaDbServer::ConnectionString() const {
    return "Driver={MariaDB Unicode};Server=127.0.0.1;Port=" + std::to_string(port_) +
           ";Database=test;UID=tester;PWD=pw";
}

void MariaDbServer::Start() {
    if (server_ != 0) return;
    const std::string log = folder_.File("server.log");
    server_ =
        Spawn(kServerUser,
              {kServer, "--no-defaults", "--datadir=" + folder_.File("data"), "--tmpdir=" + folder_.File("temporary"),
               "--socket=" + folder_.File("s"), "--pid-file=" + folder_.File("pid"), "--port=" + std::to_string(port_),
               "--bind-address=127.0.0.1", "--character-set-server=utf8mb4", "--skip-name-resolve=0",
               "--innodb-flush-log-at-trx-commit=2", "--innodb-buffer-pool-size=64M", "--innodb-lock-wait-timeout=5",
               "--init-file=" + folder_.File("first.sql")},
              log, SIGKILL);
    const std::time_t end = std::time(nullptr) + kStartSeconds;
    for (;;) {
        int status = 0;
        if (waitpid(server_, &status, WNOHANG) == server_) {
            server_ = 0;
            throw std::runtime_error("the MariaDB server ended at its start:\n" + LastLines(log));
        }
        if (HasSaid(log, "ready for connections") && Answers(port_)) return;
        if (std::time(nullptr) > end) {
            const std::string lines = LastLines(log);  // which go with the server
            Stop();
            throw std::runtime_error("the MariaDB server does not answer:\n" + lines);
        }
        Pause();
    }
}

void MariaDbServer::Stop() {
    if (server_ == 0) return;
    End(server_, SIGTERM, kStopSeconds);
    server_ = 0;
    std::remove(folder_.File("server.log").c_str());
}

void MariaDbServer::Cut() {
    if (server_ == 0) return;
    tk::test::Cut(server_);
    server_ = 0;
    std::remove(folder_.File("server.log").c_str());
}

void MariaDbServer::Hold(bool isHeld) {
    if (server_ != 0) tk::test::Hold(server_, isHeld);
}

}  // namespace tk::test
