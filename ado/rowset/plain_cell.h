// ado/rowset/plain_cell.h - the commonest cells, which become VARIANTs without a Cell in between.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <span>
#include <string_view>
#include <vector>

#include "ado/odbc/odbc_api.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// What a column's cells are as a rule; the layout says whether as fixed-width values or as texts of them.
enum class PlainCell : unsigned char { None, Long, Double, Moment };

/// Of each column.
std::vector<PlainCell> PlainCellsOf(std::span<const Column> columns);

// Each gives the VARIANT of a cell that is not NULL; false, and nothing done, for a value that is not of the plain
// kind.
bool ReadPlainMoment(const SQL_TIMESTAMP_STRUCT& stamp, VARIANT& value) noexcept;
bool ReadPlainText(PlainCell form, std::string_view text, VARIANT& value) noexcept;

}  // namespace tk::ado
