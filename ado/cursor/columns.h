// ado/cursor/columns.h - finding a column by name, and bringing a value into the form a column keeps.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "ado/cursor/value.h"
#include "ado/rowset/column.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {

/// The first column of that name, without regard to case.
std::optional<std::size_t> LookUpColumn(const std::vector<Column>& columns, std::u16string_view name) noexcept;

/// @throws AdoError 3265
std::size_t FindColumn(const std::vector<Column>& columns, std::u16string_view name);

/// A value as a cell of the column gives it back.
/// @throws AdoError 3421 when there is no such value
Value ConvertForColumn(const VARIANT& value, const Column& column);

}  // namespace tk::ado
