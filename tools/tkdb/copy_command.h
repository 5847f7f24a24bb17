// tools/tkdb/copy_command.h - carries tables with their rows from one data source to another.
#pragma once

#include <string>
#include <vector>

namespace tk::tools {

/// Copies tables one after the other: creates the table, inserts the rows, creates its indexes, compares the counts. A
/// table arrives whole or not at all; one that is there already with as many rows is passed over, so that a copy that
/// was stopped is taken up again by the same command.
/// @param source, target  connection strings
/// @param tables   names in the source
/// @param replace  a table that is there with other rows gives way to the copy, instead of being an error; not where it
///                 could be lost, nor where others refer to it and would be left behind
/// @return an exit code; what went wrong has been printed
int CopyTables(const std::string& source, const std::vector<std::string>& tables, const std::string& target,
               bool replace);

}  // namespace tk::tools
