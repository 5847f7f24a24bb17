// ado/cursor/columns.h - finding a column by name, and bringing a value into the form a column keeps.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "ado/cursor/value.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// Bits of Column::attributes that the code asks for.
inline constexpr LONG kFieldUpdatable = 0x4;
inline constexpr LONG kFieldUnknownUpdatable = 0x8;
inline constexpr LONG kFieldFixed = 0x10;
inline constexpr LONG kFieldNullable = 0x20;
inline constexpr LONG kFieldMayBeNull = 0x40;
inline constexpr LONG kFieldLong = 0x80;
inline constexpr LONG kFieldKeyColumn = 0x8000;

/// The first column of that name, without regard to case.
std::optional<std::size_t> LookUpColumn(const std::vector<Column>& columns, std::u16string_view name) noexcept;

/// @throws AdoError 3265
std::size_t FindColumn(const std::vector<Column>& columns, std::u16string_view name);

/// A value as a cell of the column gives it back.
/// @throws AdoError 3421 when there is no such value
Value ConvertForColumn(const VARIANT& value, const Column& column);

}  // namespace tk::ado
