// ado/odbc/parameter.h - one parameter marker's value on its way to the driver, and what the driver gave back.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstddef>
#include <string>
#include <vector>

#include "ado/rowset/cell.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// The values of one '?' for many executions in one call, each in as many bytes.
struct ParameterArray {
    std::string bytes;
    std::size_t width = 0;                // of each value
    std::vector<std::ptrdiff_t> lengths;  // of each value, in bytes; -1: NULL
    // Integer and Real: eight bytes each. Bytes as they are, everything else as UTF-8 texts.
    Cell::Form form = Cell::Form::Text;
};

/// A value for one '?': a VARIANT, or a cell of a row set as it was read (exact to the last digit and nanosecond, which
/// a VARIANT is not). Borrowed until the Execute call returns.
struct Parameter {
    const VARIANT* value = nullptr;  // null: the cell counts
    Cell cell;

    /// The column that the value is stored in or compared with, when it is known: it decides the type that the driver
    /// is told, so that a NULL or a text reaches a number or date column without a type conflict. May be null.
    /// An output must have one: it decides the size that is left for the value, too.
    const Column* column = nullptr;

    enum class Direction : unsigned char { Input, InputOutput, Output };
    Direction direction = Direction::Input;

    /// Instead of a value, for an input with a column: then all parameters have one, equally long.
    const ParameterArray* array = nullptr;
};

/// The values of a statement's output parameters, as the driver leaves them.
class ParameterOutputs {
public:
    virtual ~ParameterOutputs() = default;

    /// Reads an output parameter, by its place from 0. Some drivers fill it when the statement's last result has been
    /// left, not before.
    /// @param value  uninitialised on entry; NULL when the driver has not said anything
    virtual void Read(std::size_t place, const Column& column, VARIANT& value) const = 0;

    // --- for a driver that gives the values as a row as well (output_row.h) ---

    /// How many of the parameters are outputs.
    virtual std::size_t Count() const noexcept = 0;

    /// The C type in which an output is kept; outputs count from 0, inputs left out.
    virtual short CType(std::size_t output) const = 0;

    /// @param value  null: NULL
    virtual void Put(std::size_t output, const std::string* value) = 0;
};

}  // namespace tk::ado
