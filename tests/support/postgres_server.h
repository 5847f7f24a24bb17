// postgres_server.h - a PostgreSQL server of the test's own: in a temporary folder, on a free port of the loopback
// address, gone when the object is or when the test ends in any other way.
//
//   PostgresServer server;                       // throws when PostgreSQL is not installed or does not start
//   database.Open(server.ConnectionString().c_str());
//   server.Stop();                               // what a client sees then
//   server.Start();
//
// The one user is "tester" with the password "pw" (scram-sha-256); the database is "postgres", in UTF-8. The server
// refuses to run as root, so a test that does starts it as the user "postgres".
#pragma once

#include <sys/types.h>

#include <string>

#include "support/temporary_folder.h"

namespace tk::test {

class PostgresServer {
public:
    PostgresServer();
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;
    ~PostgresServer();

    std::string ConnectionString() const;
    int Port() const { return port_; }

    /// Starts it again, on the same port. @throws std::runtime_error with the end of the server's log
    void Start();
    /// Ends every session and the server. Nothing happens when it does not run.
    void Stop();
    /// Ends it as a power cut does: it says nothing to anybody. Nothing happens when it does not run.
    void Cut();
    /// Holds all of its processes where they are, connections and all, or lets them go on.
    void Hold(bool isHeld);

private:
    TemporaryFolder folder_;
    std::string programs_;  // the folder of initdb and postgres
    int port_ = 0;
    pid_t server_ = 0;
};

}  // namespace tk::test
