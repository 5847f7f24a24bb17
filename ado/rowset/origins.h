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

/// Fills in the base names, auto-increment, key and updatable members. Never fails: what the database does not tell
/// stays empty, and a column without a base column cannot be written.
void DescribeOrigins(Session& session, std::string_view sql, std::span<Column> columns) noexcept;

/// The column behind each item of a SELECT's list: its name, "" for an expression, "*" for all columns of a table.
/// Empty when the text is no plain SELECT.
std::vector<std::string> ReadSelectList(std::string_view sql);

}  // namespace tk::ado
