// tests/support/tds/messages.h - the errors that the server tells, in Chinese as such a server does.
#pragma once

#include <string>

#include "support/tds/sql_error.h"

struct sqlite3;

namespace tk::test::tds {

SqlError LoginError(const std::string& user);
SqlError ConversionError();
SqlError OverflowError();
SqlError TruncationError();
SqlError NoDatabaseError(const std::string& name);
SqlError NoProcedureError(const std::string& name);
SqlError NoHandleError(long long handle);
SqlError NoParameterError(const std::string& procedure, const std::string& parameter);
SqlError SyntaxError(const std::string& near);

/// What SQLite said last, under the number that such a server uses for it.
SqlError ErrorOf(sqlite3* database);

}  // namespace tk::test::tds
