// ado/rowset/value.h - cells made of what the driver gave, and VARIANTs made of cells.
//
// A database may keep anything in any column. A text that is not what its column's type says is handed out as the text
// it is, a number of another size or kind as the smallest type that holds it: never a wrong number.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <string_view>

#include "ado/rowset/cell.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// The cell of a value that came as text or bytes; data() null means NULL.
Cell CellFromText(CellKind kind, std::string_view text) noexcept;

/// The VARIANT that Field.Value gives for the cell.
/// @param value  uninitialised on entry
/// @throws std::bad_alloc
void MakeVariant(const Cell& cell, const Column& column, VARIANT& value);

/// The opposite, for rows that are built here: the text or bytes that CellFromText reads back; false for NULL.
/// @throws AdoError DataConversion for values that no column can hold
bool TextFromVariant(const VARIANT& value, std::string& text);

/// @throws std::bad_alloc
BSTR MakeBstr(std::string_view utf8);

}  // namespace tk::ado
