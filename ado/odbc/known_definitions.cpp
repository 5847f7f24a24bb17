#include "ado/odbc/known_definitions.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <span>
#include <utility>
#include <vector>

#include "ado/odbc/coarse_clock.h"

namespace tk::ado {
namespace {

// What other processes may have changed is looked at that often while queries follow each other: a look costs as much
// as one of them.
constexpr std::int64_t kTrusted = 8 * kMillisecond;

// What sessions of this process do that may change tables: how many of them are at it in the lower bits, how often one
// has begun or ended above these.
constinit std::atomic<std::uint64_t> definitions = 0;
constexpr std::uint64_t kOneMore = 1 << 20;
constexpr std::uint64_t kAtIt = kOneMore - 1;

// Queries pass it together, whoever defines tables alone.
constinit std::shared_timed_mutex gate;

/// @return false for SQL_NO_DATA
bool Expect(const OdbcStatement& statement, SQLRETURN result) {
    if (!SQL_SUCCEEDED(result) && result != SQL_NO_DATA) ThrowDiagnostics(SQL_HANDLE_STMT, statement.Get(), result);
    return result != SQL_NO_DATA;
}

/// A text of the row that the statement is on.
std::string ReadText(const OdbcStatement& statement, SQLUSMALLINT column) {
    std::string text;
    SQLRETURN result = SQL_SUCCESS_WITH_INFO;  // there is more of it
    while (result == SQL_SUCCESS_WITH_INFO) {
        char part[128] = "";
        result = Odbc().GetData(statement.Get(), column, SQL_C_CHAR, part, sizeof part, nullptr);
        Expect(statement, result);
        text += part;
    }
    return text;
}

/// Runs a query and tells of each row.
template <class Row>
void ForEachRow(SQLHDBC connection, std::string query, Row&& row) {
    const OdbcStatement statement(connection);
    Expect(statement, Odbc().ExecDirect(statement.Get(), reinterpret_cast<SQLCHAR*>(query.data()), SQL_NTS));
    while (Expect(statement, Odbc().Fetch(statement.Get())))
        row(statement);
}

/// As a part of a statement.
std::string Quoted(std::string_view name) {
    std::string quoted = "\"";
    for (const char letter : name)
        quoted.append(letter == '"' ? 2 : 1, letter);
    return quoted += '"';
}

struct Named {
    std::string number;
    std::string name;  // quoted
};

std::vector<Named> DatabasesOf(SQLHDBC connection, const DefinitionQueries& queries, bool alsoAttached) {
    if (!alsoAttached) return {{queries.mainNumber, Quoted(queries.mainDatabase)}};
    std::vector<Named> databases;
    ForEachRow(connection, queries.databases, [&](const OdbcStatement& row) {
        std::string number = ReadText(row, 1);
        const std::string name = ReadText(row, 2);
        if (name != queries.ownDatabase) databases.push_back({std::move(number), Quoted(name)});
    });
    return databases;
}

std::string VersionOf(SQLHDBC connection, const DefinitionQueries& queries, const std::string& name) {
    std::string version;
    ForEachRow(connection, queries.version.front + name + queries.version.back,
               [&](const OdbcStatement& row) { version = ReadText(row, 1); });
    return version;
}

/// The numbers of the databases that a text uses. Takes no lock.
class UsedDatabases {
public:
    UsedDatabases(SQLHDBC connection, const DefinitionQueries& queries, const std::string& text)
        : connection_(connection), queries_(queries), text_(text) {}

    /// True also when it cannot be told.
    bool Have(const std::string& number) {
        if (!isRead_) Read();
        isRead_ = true;
        return isUnknown_ || std::ranges::find(numbers_, number) != numbers_.end();
    }

private:
    void Read() try {
        const OdbcStatement statement(connection_);
        std::string query = queries_.plan + text_;
        Expect(statement, Odbc().Prepare(statement.Get(), reinterpret_cast<SQLCHAR*>(query.data()), SQL_NTS));
        SQLSMALLINT markers = 0;
        Expect(statement, Odbc().NumParams(statement.Get(), &markers));
        SQLLEN isNull = SQL_NULL_DATA;
        for (SQLSMALLINT i = 1; i <= markers; ++i) {
            Expect(statement, Odbc().BindParameter(statement.Get(), static_cast<SQLUSMALLINT>(i), SQL_PARAM_INPUT,
                                                   SQL_C_CHAR, SQL_VARCHAR, 1, 0, nullptr, 0, &isNull));
        }
        Expect(statement, Odbc().Execute(statement.Get()));
        while (Expect(statement, Odbc().Fetch(statement.Get()))) {
            if (ReadText(statement, 2) == queries_.useStep) numbers_.push_back(ReadText(statement, 3));
        }
    } catch (const AdoError&) {
        isUnknown_ = true;
    }

    SQLHDBC connection_;
    const DefinitionQueries& queries_;
    const std::string& text_;
    bool isRead_ = false;
    bool isUnknown_ = false;
    std::vector<std::string> numbers_;
};

/// Only a statement that has been stepped into makes the driver read them again.
void StepInto(SQLHDBC connection, const DefinitionQueries& queries, std::span<const std::string> names) {
    std::string query;
    for (const std::string& name : names)
        query.append(query.empty() ? "" : " union all ").append(queries.tables.front + name + queries.tables.back);
    ForEachRow(connection, query + " limit 1", [](const OdbcStatement&) {});
}

}  // namespace

KnownDefinitions::Defining::Defining(bool isLikely) noexcept : gate_(gate, std::defer_lock) {
    definitions.fetch_add(kOneMore + 1);
    // A query that takes longer than it may wait for a lock has, as a rule, begun to read: it has seen its tables.
    if (isLikely) static_cast<void>(gate_.try_lock_for(std::chrono::milliseconds(150)));
}

KnownDefinitions::Passing::Passing() noexcept : gate_(gate, std::try_to_lock) {}

KnownDefinitions::Defining::~Defining() {
    definitions.fetch_add(kOneMore - 1);
}

bool KnownDefinitions::IsOutdated(const Database& database) noexcept {
    const std::uint64_t now = definitions.load(std::memory_order_acquire);
    return now != database.seen || (now & kAtIt) != 0 || CoarseNow() - database.time >= kTrusted;
}

bool KnownDefinitions::MayBeOutdated() const noexcept {
    return databases_.empty() || std::ranges::any_of(databases_, IsOutdated);
}

bool KnownDefinitions::Follow(SQLHDBC connection, const DefinitionQueries& queries, bool alsoAttached,
                              bool isInTransaction, const std::string& text) {
    const std::uint64_t seen = definitions.load(std::memory_order_acquire);
    std::vector<Database> found;
    std::vector<std::string> changed;
    UsedDatabases used(connection, queries, text);
    for (const auto& [number, name] : DatabasesOf(connection, queries, alsoAttached)) {
        const auto former = std::ranges::find(databases_, name, &Database::name);
        // What is not looked at stays outdated.
        Database& now = found.emplace_back(former != databases_.end() ? *former : Database{name, {}});
        if (isInTransaction && !used.Have(number)) continue;
        try {
            std::string version = VersionOf(connection, queries, name);
            if (now.version != version) changed.push_back(name);
            now = {name, std::move(version), seen, CoarseNow()};
        } catch (const AdoError&) {
            if (used.Have(number)) throw;
        }
    }
    if (!changed.empty()) StepInto(connection, queries, changed);
    databases_ = std::move(found);
    return !changed.empty();
}

void KnownDefinitions::Refresh(SQLHDBC connection, const DefinitionQueries& queries) {
    const std::string name = Quoted(queries.mainDatabase);
    StepInto(connection, queries, {&name, 1});
}

}  // namespace tk::ado
