#include "ado/odbc/known_definitions.h"

#include <atomic>
#include <span>
#include <utility>
#include <vector>

#include "ado/odbc/coarse_clock.h"
#include "ado/odbc/first_row.h"

namespace tk::ado {
namespace {

// What other processes may have changed is looked at that often while queries follow each other: a look costs as much
// as one of them.
constexpr std::int64_t kTrusted = 8 * kMillisecond;

// How often sessions of this process have begun or ended what may change tables.
constinit std::atomic<std::uint64_t> definitions = 0;

[[noreturn]] void Throw(const OdbcStatement& statement, SQLRETURN result) {
    ThrowDiagnostics(SQL_HANDLE_STMT, statement.Get(), result);
}

/// A short text of the row that the statement is on.
std::string ReadText(const OdbcStatement& statement, SQLUSMALLINT column) {
    char text[512] = "";
    const SQLRETURN result = Odbc().GetData(statement.Get(), column, SQL_C_CHAR, text, sizeof text, nullptr);
    if (!SQL_SUCCEEDED(result)) Throw(statement, result);
    return text;
}

/// As a part of a statement.
std::string Quoted(std::string_view name) {
    std::string quoted = "\"";
    for (const char letter : name)
        quoted.append(letter == '"' ? 2 : 1, letter);
    return quoted += '"';
}

std::vector<std::string> NamesOf(SQLHDBC connection, const DefinitionQueries& queries, bool alsoAttached) {
    std::vector<std::string> names = {Quoted(queries.mainDatabase)};
    if (!alsoAttached) return names;
    const OdbcStatement statement(connection);
    SQLRETURN result = FetchFirst(statement, queries.databases);
    for (; SQL_SUCCEEDED(result); result = Odbc().Fetch(statement.Get())) {
        const std::string name = ReadText(statement, 2);
        if (name != queries.mainDatabase && name != queries.ownDatabase) names.push_back(Quoted(name));
    }
    if (result != SQL_NO_DATA) Throw(statement, result);
    return names;
}

std::string VersionOf(SQLHDBC connection, const DefinitionQueries& queries, const std::string& name) {
    const OdbcStatement statement(connection);
    const SQLRETURN result = FetchFirst(statement, queries.version.front + name + queries.version.back);
    if (!SQL_SUCCEEDED(result)) Throw(statement, result);
    return ReadText(statement, 1);
}

/// Only a statement that has been stepped into makes the driver read them again.
void StepInto(SQLHDBC connection, const DefinitionQueries& queries, std::span<const std::string> names) {
    std::string query;
    for (const std::string& name : names)
        query.append(query.empty() ? "" : " union all ").append(queries.tables.front + name + queries.tables.back);
    const OdbcStatement statement(connection);
    const SQLRETURN result = FetchFirst(statement, query + " limit 1");
    if (!SQL_SUCCEEDED(result) && result != SQL_NO_DATA) Throw(statement, result);
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

bool KnownDefinitions::Follow(SQLHDBC connection, const DefinitionQueries& queries, bool alsoAttached) {
    const std::uint64_t noted = definitions.load(std::memory_order_acquire);
    const std::vector<std::string> names = NamesOf(connection, queries, alsoAttached);
    std::string versions;
    for (const std::string& name : names)
        versions += name + VersionOf(connection, queries, name);
    const bool isChanged = versions != versions_;
    if (isChanged) StepInto(connection, queries, names);
    seen_ = noted;
    time_ = CoarseNow();
    versions_ = std::move(versions);
    return isChanged;
}

void KnownDefinitions::Refresh(SQLHDBC connection, const DefinitionQueries& queries) {
    StepInto(connection, queries, NamesOf(connection, queries, false));
}

}  // namespace tk::ado
