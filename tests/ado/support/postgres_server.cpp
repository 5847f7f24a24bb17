#include "ado/support/postgres_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>

namespace tk::test {
namespace {

/// The newest installed server's programs, "" when there is none.
std::string ProgramFolder() {
    std::string newest;
    int newestVersion = 0;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/lib/postgresql", ignored)) {
        const int version = atoi(entry.path().filename().c_str());
        const std::string programs = entry.path() / "bin";
        if (version <= newestVersion || !std::filesystem::exists(programs + "/initdb")) continue;
        newestVersion = version;
        newest = programs;
    }
    return newest;
}

int FreePort() {
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    int port = 0;
    if (bind(probe, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
        getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size) == 0) {
        port = ntohs(address.sin_port);
    }
    close(probe);
    return port;
}

/// Runs a command line; as the server's own user when we are root, which the server refuses.
bool Command(const std::string& line) {
    const std::string whole = geteuid() == 0 ? "setpriv --reuid=postgres --regid=postgres --init-groups " + line : line;
    return std::system((whole + " >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace

const PostgresServer* PostgresServer::Instance() {
    static const std::unique_ptr<PostgresServer> server = [] {
        std::unique_ptr<PostgresServer> made(new PostgresServer);
        if (!made->Start()) made.reset();
        return made;
    }();
    return server.get();
}

bool PostgresServer::Start() {
    const std::string programs = ProgramFolder();
    if (programs.empty()) return false;
    std::string pattern = (std::filesystem::temp_directory_path() / "tkado-pg-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) return false;
    folder_ = pattern;
    if (geteuid() == 0) {
        const passwd* user = getpwnam("postgres");
        if (user == nullptr || chown(folder_.c_str(), user->pw_uid, user->pw_gid) != 0) return false;
    }
    const std::string data = folder_ + "/data";
    if (!Command(programs + "/initdb -D " + data + " -E UTF8 --locale=C.UTF-8 -U tester --auth=trust -N")) return false;
    for (int attempt = 0; attempt < 5 && !isRunning_; ++attempt) {  // another program may take the port first
        port_ = FreePort();
        char options[256];
        std::snprintf(options, sizeof options,
                      "-p %d -k %s -c listen_addresses=127.0.0.1 -c fsync=off -c max_connections=50", port_,
                      folder_.c_str());
        isRunning_ =
            Command(programs + "/pg_ctl -D " + data + " -w -t 30 -l " + folder_ + "/log -o '" + options + "' start");
    }
    return isRunning_;
}

PostgresServer::~PostgresServer() {
    if (isRunning_) Command(ProgramFolder() + "/pg_ctl -D " + folder_ + "/data -w -t 30 -m immediate stop");
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
}

std::string PostgresServer::Connection(std::string_view more) const {
    return "Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=" + std::to_string(port_) +
           ";Database=postgres;UID=tester;PWD=x;" + std::string(more);
}

void PostgresServer::EndSessions() const {
    Command(ProgramFolder() + "/psql -h 127.0.0.1 -p " + std::to_string(port_) +
            " -U tester -d postgres -c \"select pg_terminate_backend(pid) from pg_stat_activity where pid <> "
            "pg_backend_pid() and backend_type = 'client backend'\"");
}

}  // namespace tk::test
