// ado/odbc/first_row.h - a question of ours to a connection: a query of which the first row is all that matters.
#pragma once

#include <string>

#include "ado/odbc/odbc_handle.h"

namespace tk::ado {

/// Runs the query and goes to its first row. @return SQL_NO_DATA when it has none
inline SQLRETURN FetchFirst(const OdbcStatement& statement, std::string query) {
    const SQLRETURN result = Odbc().ExecDirect(statement.Get(), reinterpret_cast<SQLCHAR*>(query.data()), SQL_NTS);
    return SQL_SUCCEEDED(result) ? Odbc().Fetch(statement.Get()) : result;
}

}  // namespace tk::ado
