// ado/persist/saved_column.h - a column as every reader of a saved recordset understands it, and what only we know
// about it.
//
// A file describes a column by its plain type, a size, precision, scale and flags. What else a Column holds follows
// from those; where it does not, the difference is saved beside them, so that a column comes back exactly as it was.
// Readers that do not know of the differences skip them and have the column as described.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "ado/rowset/column.h"

namespace tk::ado {

/// What every reader understands.
struct PlainColumn {
    LONG dbType = 130;
    std::optional<LONG> size;       // characters or bytes; none: no limit known
    std::optional<LONG> precision;  // none: the type's own
    std::optional<LONG> scale;
    LONG attributes = 0;
    bool isKey = false;
    bool isAutoIncrement = false;
};

/// The column that follows from it; nameless. The type has to be a known one.
Column ColumnOf(const PlainColumn& plain);

/// One figure of a column that may differ from what follows.
struct ColumnFigure {
    int number;             // in binary files
    std::string_view name;  // in XML
    LONG (*read)(const Column& column);
    void (*write)(Column& column, LONG value);
    LONG least;
    LONG most;
};

std::span<const ColumnFigure> ColumnFigures() noexcept;

/// Sets a figure read from a file; false when the value is none.
bool SetFigure(Column& column, const ColumnFigure& figure, long long value) noexcept;

}  // namespace tk::ado
