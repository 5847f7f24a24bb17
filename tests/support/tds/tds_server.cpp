#include "support/tds/tds_server.h"

#include <arpa/inet.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "support/tds/tds_connection.h"

namespace tk::test {
namespace {

constexpr std::size_t kMostClients = 200;

// What the server keeps beside the tables of the test.
constexpr char kOwnTables[] =
    "pragma journal_mode = wal; pragma synchronous = off;"
    "create table tds_sources (name text primary key, text text);"
    "create table tds_procedures (name text primary key, statements text, outputs text);"
    "create table tds_parameters (procedure text, place integer, name text, type text, is_output integer)";

}  // namespace

TdsServer::TdsServer() : settings_(std::make_unique<tds::ServerSettings>()) {
    *settings_ = {folder_.File("test.db"), "sa", "pw", "test"};
    const tds::Database database = tds::OpenDatabase(settings_->file);
    if (sqlite3_exec(database.get(), kOwnTables, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error("cannot make the database of the server");
    }
    Listen();
    acceptor_ = std::thread([this] { Accept(); });
}

TdsServer::~TdsServer() {
    isStopping_ = true;
    shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    close(listener_);
    CutConnections();
    Reap(true);
}

std::string TdsServer::ConnectionString() const {
    return "Driver=FreeTDS;Server=127.0.0.1;Port=" + std::to_string(port_) +
           ";Database=test;UID=sa;PWD=pw;TDS_Version=7.4;ClientCharset=UTF-8";
}

void TdsServer::Listen() {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* const place = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, place, size) != 0 || listen(listener_, SOMAXCONN) != 0 ||
        getsockname(listener_, place, &size) != 0) {
        close(listener_);
        throw std::runtime_error("cannot listen on the loopback address");
    }
    port_ = ntohs(address.sin_port);
}

void TdsServer::Accept() {
    while (!isStopping_) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) continue;
        Reap(false);
        Admit(socket);
    }
}

void TdsServer::Admit(int socket) {
    const std::lock_guard lock(mutex_);
    if (clients_.size() >= kMostClients) {
        close(socket);
        return;
    }
    Client& client = clients_.emplace_back();
    client.socket = socket;
    client.thread = std::thread([this, &client] {
        tds::TdsConnection(client.socket, *settings_).Serve();
        // The socket is closed where the thread is joined: its number must not mean another one before.
        shutdown(client.socket, SHUT_RDWR);
        client.isDone = true;
    });
}

void TdsServer::Reap(bool all) {
    std::list<Client> done;
    {
        const std::lock_guard lock(mutex_);
        for (auto client = clients_.begin(); client != clients_.end();) {
            const auto next = std::next(client);
            if (all || client->isDone) done.splice(done.end(), clients_, client);
            client = next;
        }
    }
    for (Client& client : done) {
        client.thread.join();
        close(client.socket);
    }
}

void TdsServer::CutConnections() {
    const std::lock_guard lock(mutex_);
    for (const Client& client : clients_)
        shutdown(client.socket, SHUT_RDWR);
}

void TdsServer::Store(const char* sql, const std::vector<std::string>& values) {
    const tds::Database database = tds::OpenDatabase(settings_->file);
    constexpr int kMilliseconds = 5000;
    sqlite3_busy_timeout(database.get(), kMilliseconds);
    sqlite3_stmt* statement = nullptr;
    bool isStored = sqlite3_prepare_v2(database.get(), sql, -1, &statement, nullptr) == SQLITE_OK;
    for (std::size_t i = 0; i < values.size(); ++i)
        sqlite3_bind_text(statement, static_cast<int>(i) + 1, values[i].c_str(), -1, SQLITE_TRANSIENT);
    isStored = isStored && sqlite3_step(statement) == SQLITE_DONE;
    sqlite3_finalize(statement);
    if (!isStored) throw std::runtime_error(sqlite3_errmsg(database.get()));
}

void TdsServer::SetSource(const std::string& name, const std::string& text) {
    Store("insert or replace into tds_sources values (?, ?)", {name, text});
}

void TdsServer::Define(const Procedure& procedure) {
    Store("insert or replace into tds_procedures values (?, ?, ?)",
          {procedure.name, procedure.statements, procedure.outputs});
    Store("delete from tds_parameters where procedure = ?", {procedure.name});
    for (std::size_t i = 0; i < procedure.parameters.size(); ++i) {
        const Parameter& parameter = procedure.parameters[i];
        Store("insert into tds_parameters values (?, cast(? as integer), ?, ?, cast(? as integer))",
              {procedure.name, std::to_string(i + 1), parameter.name, parameter.type, parameter.isOutput ? "1" : "0"});
    }
}

}  // namespace tk::test
