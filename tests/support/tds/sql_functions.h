// tests/support/tds/sql_functions.h - functions that SQLite does not have.
#pragma once

#include <string>
#include <string_view>

#include "support/tds/sql_session.h"

namespace tk::test::tds {

/// db_name(), getdate(), @@version and such, and those that the catalog procedures are written with:
///   tds_like(pattern, text)      a NULL or empty pattern fits everything; \ and [] take the meaning from a character
///   tds_type(declaration, what)  what is told of a type: 'name', 'odbc', 'precision', …
///   tds_key_name(sql, number)    the name of a constraint in a CREATE TABLE: 0 the key, 1 the first foreign key, …
void AddFunctions(sqlite3* database, const ServerSettings& settings);

bool IsLike(std::string_view pattern, std::string_view text);

/// Whether a column that is an expression was given this name, by AS or by its place behind the expression.
bool IsGivenName(sqlite3_stmt* statement, std::string_view name);

}  // namespace tk::test::tds
