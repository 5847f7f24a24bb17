// tools/tkdb/commands.h - what tkdb does, apart from its command line. Texts come in the terminal's character set.
#pragma once

#include <string>
#include <vector>

#include "tools/tkdb/result_writer.h"

namespace tk::tools {

/// Exit codes of the program.
enum ExitCode { kSuccess = 0, kDatabaseRefused = 1, kWrongUsage = 2 };

/// Runs statements in order and reports the rows each one changed; stops at the first that fails.
/// @param inTransaction  all of them or none
int ExecuteStatements(const std::string& connection, const std::vector<std::string>& statements, bool inTransaction);

/// Runs one query and prints its rows.
/// @param maxRows  0 prints all of them
int PrintQuery(const std::string& connection, const std::string& sql, Format format, long maxRows);

/// Splits the text of a script at the semicolons that end statements; those inside quotes and comments do not.
std::vector<std::string> SplitScript(const std::string& script);

}  // namespace tk::tools
