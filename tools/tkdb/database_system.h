// tools/tkdb/database_system.h - what kind of database a connection leads to, and what that asks of its statements.
#pragma once

#include <tkkernel/tkkernel.h>

#include <string>
#include <string_view>

namespace tk::tools {

/// The systems that tables are made in by the types of their columns; they count from 0.
enum class DatabaseSystem { Sqlite, Postgres, MariaDb, Other };

DatabaseSystem SystemOf(CTDatabase& database);

/// Whether the library writes scripts for it: by its tag, ignoring case, as the library compares it.
bool HasScripts(CTDatabase& database);

/// The first three letters of what the database calls itself.
CString TagOf(CTDatabase& database);

/// Whether making a table ends the transaction, so that it cannot be undone.
inline bool CommitsTables(DatabaseSystem system) {
    return system == DatabaseSystem::MariaDb;
}

/// Whether a transaction that is rolled back brings a dropped table back, by what the driver says.
bool UndoesTables(CTDatabase& database);

/// A name for a table that stands in for another one for a while: always the same, and short enough for every system.
/// @param purpose  a word
std::string NameApart(std::string_view purpose, std::string_view table);

/// A name in double quotes.
std::string Quoted(std::string_view name);

/// Runs what has to be run once on a connection before names in double quotes are names. @return 1, or 0
int UseQuotes(CTDatabase& database);

}  // namespace tk::tools
