// tests/support/tds/sql_session.h - the SQLite side of one connection: batches and calls, and what they answer.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/tds/answer.h"
#include "support/tds/call.h"

struct sqlite3;
struct sqlite3_stmt;

namespace tk::test::tds {

/// What the server shares with its connections, and does not change.
struct ServerSettings {
    std::string file;
    std::string user;
    std::string password;
    std::string database;
};

struct CloseDatabase {
    void operator()(sqlite3* database) const;
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

/// @throws std::runtime_error
Database OpenDatabase(const std::string& file);

/// A column of an answer whose type does not depend on what SQLite knows of it.
struct FixedColumn {
    const char* name;
    const char* declaration;
};

/// A row with the names of its columns.
using NamedCells = std::vector<std::pair<std::string, Cell>>;

/// Runs statements that go on until they are done or the client wants no more. One thread uses it.
class SqlSession {
public:
    /// @throws std::runtime_error
    SqlSession(const ServerSettings& settings, const PacketStream& packets);
    SqlSession(const SqlSession&) = delete;
    SqlSession& operator=(const SqlSession&) = delete;
    ~SqlSession();

    /// Runs the statements of a text. An error is told in the answer; one that does not end the batch lets the next
    /// statement run.
    /// @return whether there was none  @throws Cancelled
    bool RunBatch(std::string_view text, std::span<const Argument> arguments, Answer& answer);

    /// Calls a procedure; the arguments take the output values. @throws Cancelled
    void RunCall(Call& call, Answer& answer);

    /// @throws SqlError
    void Begin();
    void End(bool isCommitted);
    bool IsInTransaction() const;

    // For the procedures that are part of the server.

    /// Runs one SELECT; its columns have these names and types.
    void RunFixed(std::string_view sql, std::span<const FixedColumn> columns, std::span<const Argument> arguments,
                  Answer& answer);
    const std::string& DatabaseName() const { return settings_.database; }
    sqlite3* Handle() const { return database_.get(); }

private:
    struct Prepared {
        std::string text;
        std::vector<std::string> names;
    };

    void RunStatement(const std::string& text, std::span<const Argument> arguments, Answer& answer);
    bool RunOwnWords(const std::string& text, Answer& answer);
    void RunSql(sqlite3_stmt* statement, std::span<const FixedColumn> fixed, std::span<const Argument> arguments,
                Answer& answer);
    /// The rows of a question that the client does not see.
    std::vector<NamedCells> Select(const std::string& sql, std::span<const Argument> arguments);
    bool Step(sqlite3_stmt* statement);
    void Simple(const char* sql);
    void Wait(std::string_view time);
    std::int32_t RunProcedure(Call& call, Answer& answer);
    std::int32_t RunDefined(Call& call, Answer& answer);
    std::int32_t RunPrepared(const Prepared& prepared, std::span<Argument> values, Answer& answer);
    void DescribePrepared(const Prepared& prepared, Answer& answer);
    bool IsWantedNoMore();

    static int OnProgress(void* session);
    static int OnBusy(void* session, int tries);

    ServerSettings settings_;
    const PacketStream& packets_;
    Database database_;
    std::map<std::int64_t, Prepared> prepared_;
    std::int64_t lastHandle_ = 0;
    bool isCancelled_ = false;
};

}  // namespace tk::test::tds
