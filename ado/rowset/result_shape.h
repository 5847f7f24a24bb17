// ado/rowset/result_shape.h - what the columns of a result are and where their cells are kept.
//
// A shape never changes and is shared: by the statement, by the row set that its rows go to, and by the handle, which
// gives it to the next statement when the driver describes the same columns again.
#pragma once

#include <string>
#include <vector>

#include "ado/rowset/chunk.h"
#include "ado/rowset/column.h"
#include "ado/rowset/plain_cell.h"

namespace tk::ado {

/// One column in the driver's words.
struct ToldColumn {
    std::string name;  // UTF-8
    short sqlType = 0;
    unsigned long size = 0;
    short digits = 0;
    short nullable = 0;
    bool isUnsigned = false;
    bool isComputed = false;  // asked for 64-bit integers only

    bool operator==(const ToldColumn&) const = default;
};

struct ResultShape {
    ResultShape(std::vector<ToldColumn> from, std::vector<Column> described, bool allVariable)
        : told(std::move(from)), columns(std::move(described)), layout(columns, allVariable) {}
    ResultShape(std::vector<Column> described, RowLayout places)
        : columns(std::move(described)), layout(std::move(places)) {}

    std::vector<ToldColumn> told;  // empty: not described by a driver
    std::vector<Column> columns;
    RowLayout layout;
    std::vector<PlainCell> plain = PlainCellsOf(columns);
};

}  // namespace tk::ado
