// ado/rowset/describe.h - the columns of a result, as the driver describes them right after execution.
#pragma once

#include <memory>

#include "ado/odbc/statement_handle.h"
#include "ado/rowset/result_shape.h"

namespace tk::ado {

/// What can be described without asking the database: names, types, sizes; and for 64-bit integers whether they are
/// computed, on which the type of the value depends.
/// @throws AdoError with the driver's diagnostics
std::shared_ptr<const ResultShape> DescribeResult(StatementHandle& handle, int count);

/// True when every column comes from a table.
bool HasOnlyTableColumns(StatementHandle& handle, int count) noexcept;

}  // namespace tk::ado
