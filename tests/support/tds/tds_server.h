// tests/support/tds/tds_server.h - a server of the test's own that clients take for Microsoft SQL Server: it speaks
// TDS 7.4 on a free port of the loopback address, over a SQLite database in a temporary folder.
//
//   TdsServer server;
//   database.Open(server.ConnectionString().c_str());
//
// The one user is "sa" with the password "pw", the database "test", its owner "dbo". Statements are SQLite's, one
// behind the other with semicolons between them; types are those that the columns of tables are declared with, as such
// a server spells them ("nvarchar(20)", "decimal(12,2)", "datetime"); texts that are not national travel in code page
// 936. What else is understood: SET, USE, PRINT, RAISERROR, WAITFOR DELAY, SAVE and ROLLBACK TRANSACTION, EXEC.
//
// Each client has a thread. They and their sockets are gone when the object is.
#pragma once

#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/temporary_folder.h"

namespace tk::test {

namespace tds {
struct ServerSettings;
}

class TdsServer {
public:
    /// @throws std::runtime_error
    TdsServer();
    TdsServer(const TdsServer&) = delete;
    TdsServer& operator=(const TdsServer&) = delete;
    ~TdsServer();

    std::string ConnectionString() const;
    int Port() const { return port_; }

    /// The text that SP_HELPTEXT tells of a view or procedure, in UTF-8; a view has one without this.
    void SetSource(const std::string& name, const std::string& text);

    struct Parameter {
        std::string name;  // with its @
        std::string type;
        bool isOutput = false;
    };
    /// Makes a procedure that can be called and is in the lists.
    struct Procedure {
        std::string name;
        std::vector<Parameter> parameters;
        std::string statements;  // the parameters are in them by name
        std::string outputs;     // a SELECT whose columns are called like output parameters, or @RETURN_VALUE
    };
    void Define(const Procedure& procedure);

    /// Ends every connection without a word, as a server that dies.
    void CutConnections();

private:
    struct Client {
        int socket = -1;
        std::atomic<bool> isDone = false;
        std::thread thread;
    };

    void Listen();
    void Accept();
    void Admit(int socket);
    void Reap(bool all);
    void Store(const char* sql, const std::vector<std::string>& values);

    TemporaryFolder folder_;
    int listener_ = -1;
    int port_ = 0;
    std::unique_ptr<tds::ServerSettings> settings_;
    std::mutex mutex_;
    std::list<Client> clients_;
    std::atomic<bool> isStopping_ = false;
    std::thread acceptor_;
};

}  // namespace tk::test
