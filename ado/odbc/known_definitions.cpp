#include "ado/odbc/known_definitions.h"

#include <algorithm>
#include <atomic>
#include <span>
#include <utility>
#include <vector>

#include "ado/odbc/coarse_clock.h"

namespace tk::ado {
namespace {

// What other processes may have changed is looked at that often while queries follow each other: a look costs as much
// as one of them.
constexpr std::int64_t kTrusted = 8 * kMillisecond;

// How often sessions of this process have begun or ended what may change tables.
constinit std::atomic<std::uint64_t> definitions = 0;

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

/// The main one comes first; the others are attached.
std::vector<Named> DatabasesOf(SQLHDBC connection, const DefinitionQueries& queries, bool alsoAttached) {
    std::vector<Named> databases = {{{}, Quoted(queries.mainDatabase)}};
    if (!alsoAttached) return databases;
    ForEachRow(connection, queries.databases, [&](const OdbcStatement& row) {
        std::string number = ReadText(row, 1);
        const std::string name = ReadText(row, 2);
        if (name == queries.mainDatabase || name == queries.ownDatabase) return;
        databases.push_back({std::move(number), Quoted(name)});
    });
    return databases;
}

std::string VersionOf(SQLHDBC connection, const DefinitionQueries& queries, const std::string& name) {
    std::string version;
    ForEachRow(connection, queries.version.front + name + queries.version.back,
               [&](const OdbcStatement& row) { version = ReadText(row, 1); });
    return version;
}

/// True also when that cannot be told. Takes no lock.
bool Uses(SQLHDBC connection, const DefinitionQueries& queries, const std::string& text,
          const std::string& number) try {
    const OdbcStatement statement(connection);
    std::string query = queries.plan + text;
    Expect(statement, Odbc().Prepare(statement.Get(), reinterpret_cast<SQLCHAR*>(query.data()), SQL_NTS));
    SQLSMALLINT markers = 0;
    Expect(statement, Odbc().NumParams(statement.Get(), &markers));
    SQLLEN isNull = SQL_NULL_DATA;
    for (SQLSMALLINT i = 1; i <= markers; ++i) {
        Expect(statement, Odbc().BindParameter(statement.Get(), static_cast<SQLUSMALLINT>(i), SQL_PARAM_INPUT,
                                               SQL_C_CHAR, SQL_VARCHAR, 1, 0, nullptr, 0, &isNull));
    }
    Expect(statement, Odbc().Execute(statement.Get()));
    bool isUsed = false;
    while (!isUsed && Expect(statement, Odbc().Fetch(statement.Get())))
        isUsed = ReadText(statement, 2) == queries.useStep && ReadText(statement, 3) == number;
    return isUsed;
} catch (const AdoError&) {
    return true;
}

/// Only a statement that has been stepped into makes the driver read them again.
void StepInto(SQLHDBC connection, const DefinitionQueries& queries, std::span<const std::string> names) {
    std::string query;
    for (const std::string& name : names)
        query.append(query.empty() ? "" : " union all ").append(queries.tables.front + name + queries.tables.back);
    ForEachRow(connection, query + " limit 1", [](const OdbcStatement&) {});
}

}  // namespace

void KnownDefinitions::NoteDefined() noexcept {
    definitions.fetch_add(1, std::memory_order_release);
}

void KnownDefinitions::Forget() noexcept {
    *this = {};
}

bool KnownDefinitions::MayBeOutdated() const noexcept {
    return definitions.load(std::memory_order_acquire) != seen_ || CoarseNow() - time_ >= kTrusted;
}

bool KnownDefinitions::Follow(SQLHDBC connection, const DefinitionQueries& queries, bool alsoAttached,
                              const std::string& text) {
    const std::uint64_t noted = definitions.load(std::memory_order_acquire);
    std::vector<Database> found;
    bool isWhole = true;
    for (const auto& [number, name] : DatabasesOf(connection, queries, alsoAttached)) {
        try {
            found.push_back({name, VersionOf(connection, queries, name)});
        } catch (const AdoError&) {
            if (number.empty() || Uses(connection, queries, text, number)) throw;
            isWhole = false;
        }
    }
    const bool isChanged = !std::ranges::all_of(
        found, [&](const Database& each) { return std::ranges::find(databases_, each) != databases_.end(); });
    if (isChanged) {
        std::vector<std::string> names;
        for (const Database& each : found)
            names.push_back(each.name);
        StepInto(connection, queries, names);
    }
    databases_ = std::move(found);
    if (isWhole) {
        seen_ = noted;
        time_ = CoarseNow();
    }
    return isChanged;
}

void KnownDefinitions::Refresh(SQLHDBC connection, const DefinitionQueries& queries) {
    const std::string name = Quoted(queries.mainDatabase);
    StepInto(connection, queries, {&name, 1});
}

}  // namespace tk::ado
