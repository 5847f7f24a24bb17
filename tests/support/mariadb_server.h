// mariadb_server.h - a MariaDB server of the test's own: in a temporary folder, on a free port of the loopback address,
// gone when the object is or when the test ends in any other way.
//
//   MariaDbServer server;                        // throws when MariaDB is not installed or does not start
//   database.Open(server.ConnectionString().c_str());
//
// The one user is "tester" with the password "pw"; the database is "test", in utf8mb4. A test that runs as root starts
// the server as the user "nobody".
#pragma once

#include <sys/types.h>

#include <string>

#include "support/temporary_folder.h"

namespace tk::test {

class MariaDbServer {
public:
    MariaDbServer();
    MariaDbServer(const MariaDbServer&) = delete;
    MariaDbServer& operator=(const MariaDbServer&) = delete;
    ~MariaDbServer();

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
    int port_ = 0;
    pid_t server_ = 0;
};

}  // namespace tk::test
