// ado/rowset/origins.h - which table and column stands behind a result's column, and which columns are its key.
//
// Asked only when somebody wants to know (updates, Field.Properties): it costs statements of its own.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ado/odbc/session.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// Fills in the base names, auto-increment, key and updatable members. What the database does not tell stays empty,
/// and a column without a base column cannot be written.
/// @throws AdoError when it was cancelled or the time was over; the columns are as they were then
void DescribeOrigins(Session& session, std::string_view sql, std::vector<Column>& columns, LONG timeoutSeconds);

/// The column behind each item of a SELECT's list: its name, "" for an expression, "*" for all columns of a table.
/// Empty when the text is no plain SELECT.
std::vector<std::string> ReadSelectList(std::string_view sql);

/// The tables and views that a SELECT reads for its columns, those of its joins and inner queries included, each as
/// often as it is named; without their schemas. What stands behind WHERE is not looked at.
std::vector<std::string> ReadTables(std::string_view sql);

/// The parts of the name of the table that a SELECT reads, which may be empty in front of the last one.
/// Empty when it reads another number of tables than one, or has queries inside that are its tables.
std::vector<std::string> ReadOnlyTable(std::string_view sql);

}  // namespace tk::ado
