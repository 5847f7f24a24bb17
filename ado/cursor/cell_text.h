// ado/cursor/cell_text.h - a cell as the text that a database reads it back from.
#pragma once

#include <string>
#include <string_view>

#include "ado/rowset/cell.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// Bytes as they are.
/// @param target   the column that the value goes to: says which part of a moment it takes
/// @param scratch  holds what had to be made
/// @return valid as long as the cell and the scratch; of NULL nothing
std::string_view CellText(const Cell& cell, const Column& target, std::string& scratch);

}  // namespace tk::ado
