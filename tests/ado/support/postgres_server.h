// tests/ado/support/postgres_server.h - a PostgreSQL server of the test's own: temporary folder, free port of loopback,
// stopped at the end of the process.
#pragma once

#include <string>
#include <string_view>

namespace tk::test {

class PostgresServer {
public:
    /// The process's server, started at first use; null when no server is installed.
    static const PostgresServer* Instance();

    std::string Connection(std::string_view more = {}) const;

    /// Ends every session of the server but the caller's, as an administrator would.
    void EndSessions() const;

    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;
    ~PostgresServer();

private:
    PostgresServer() = default;
    bool Start();

    std::string folder_;
    int port_ = 0;
    bool isRunning_ = false;
};

}  // namespace tk::test
