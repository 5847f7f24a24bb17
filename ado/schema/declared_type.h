// ado/schema/declared_type.h - a column's declared type, as written in CREATE TABLE, as the SQL type it means.
#pragma once

#include <string_view>

namespace tk::ado {

struct DeclaredType {
    int sqlType = 0;  // ODBC code
    int size = 0;     // characters, bytes or digits; 0: not said
    int digits = 0;   // after the point, or of a second
};

/// @param declaration  such as "numeric(12, 2)"; empty where the column has none
DeclaredType ReadDeclaredType(std::string_view declaration) noexcept;

}  // namespace tk::ado
