// tools/tkdb/schema_commands.h - what tkdb tells of a database's tables, and the scripts it writes. Texts come in the
// terminal's character set. Every function prints what went wrong and returns an exit code.
#pragma once

#include <string>
#include <vector>

#include "tools/tkdb/command_support.h"
#include "tools/tkdb/result_writer.h"
#include "tools/tkdb/sql_dialect.h"

namespace tk::tools {

/// Prints the names of the tables.
int ListTables(const std::string& connection, Format format);

/// Prints the names of the views; with names, the text of each of these.
int PrintViews(const std::string& connection, const std::vector<std::string>& names, Format format);

/// Prints one row for each column of a table.
int DescribeTable(const std::string& connection, const std::string& table, Format format);

/// Prints CREATE TABLE and CREATE INDEX statements; without names, of every table.
int PrintScripts(const std::string& connection, const std::vector<std::string>& tables);

/// Prints CREATE INDEX statements; without names, of every table.
int PrintIndexes(const std::string& connection, const std::vector<std::string>& tables);

/// Prints how many rows tables have; without names, every table.
int CountRows(const std::string& connection, const std::vector<std::string>& tables, Format format);

/// Prints a table script in another dialect.
/// @param file  "-": standard input
int PrintConverted(const std::string& file, Dialect from, Dialect to);

}  // namespace tk::tools
