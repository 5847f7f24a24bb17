// ado/rowset/cell.h - one value of a row set, read in place.
#pragma once

#include <string_view>

namespace tk::ado {

/// A cell in place; views stay valid as long as the row set.
struct Cell {
    enum class Form : unsigned char { Null, Integer, Real, Boolean, Text, Bytes, Decimal, Date } form = Form::Null;
    long long integer = 0;  // Integer, Boolean (0 or 1); Date: the fraction of a second in nanoseconds
    double real = 0;        // Real; Date as an automation date
    std::string_view
        text;  // Text (UTF-8), Bytes, Decimal (as digits); of any form the driver's own text if it gave one
};

}  // namespace tk::ado
