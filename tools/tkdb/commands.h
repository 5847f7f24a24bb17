// tools/tkdb/commands.h - what tkdb does, apart from its command line; one source a command. Texts come in the
// terminal's character set. Every function prints what went wrong and returns an exit code.
#pragma once

#include <string>
#include <vector>

#include "tools/tkdb/command_support.h"
#include "tools/tkdb/result_writer.h"

namespace tk::tools {

/// Runs statements in order and reports the rows each one changed; stops at the first that fails.
/// @param inTransaction  all of them or none
int ExecuteStatements(const std::string& connection, const std::vector<std::string>& statements, bool inTransaction);

/// Runs one query and prints its rows.
/// @param maxRows  0 prints all of them
int PrintQuery(const std::string& connection, const std::string& sql, Format format, long maxRows);

enum class ExportFormat { FromName, Csv, Json, Markdown, Xml, TableGram };

/// Writes the rows of a query or table to a file, which takes its place when it is whole.
/// @param source  a query; or the name of a table, with its schema before a point when it needs one
/// @param format  FromName: what the end of the file's name says
int ExportRows(const std::string& connection, const std::string& source, ExportFormat format, const std::string& file);

/// What PrintTexts makes of each text.
enum class TextWork { Currency, Numeral, Pinyin, Date, Number };

/// Prints one line for each text; without texts, for each line of standard input.
/// @param mode    of currency: 2 is the form with every place written out
/// @param format  of dates and numbers
int PrintTexts(TextWork work, const std::vector<std::string>& texts, int mode, const std::string& format);

}  // namespace tk::tools
