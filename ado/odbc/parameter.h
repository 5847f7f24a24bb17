// ado/odbc/parameter.h - one parameter marker's value on its way to the driver.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "ado/rowset/cell.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// A value for one '?': a VARIANT, or a cell of a row set as it was read (exact to the last digit and nanosecond, which
/// a VARIANT is not). Borrowed until the Execute call returns.
struct Parameter {
    const VARIANT* value = nullptr;  // null: the cell counts
    Cell cell;

    /// The column that the value is stored in or compared with, when it is known: it decides the type that the driver
    /// is told, so that a NULL or a text reaches a number or date column without a type conflict. May be null.
    const Column* column = nullptr;
};

}  // namespace tk::ado
