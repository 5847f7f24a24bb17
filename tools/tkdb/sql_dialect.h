// tools/tkdb/sql_dialect.h - the four dialects that scripts are written in, as the command line names them.
#pragma once

#include <tkkernel/tkkernel.h>

#include <map>
#include <string>

namespace tk::tools {

enum class Dialect { OfTheDatabase, SqlServer, Sybase, Db2, Oracle };

/// The words of the command line.
const std::map<std::string, Dialect>& DialectNames();

/// A connection string under which the database counts as one of that dialect, whatever it is.
std::string InDialect(const std::string& connection, Dialect dialect);

/// A table script of one dialect in another; needs no connection.
CString ConvertScript(const CString& script, Dialect from, Dialect to);

}  // namespace tk::tools
