// ado/odbc/procedure_name.h - the name in the call of a stored procedure.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tk::ado {

/// The name of a stored procedure as the database's catalog has it, and how many characters of the text it takes.
struct ProcedureName {
    std::string schema;  // of what stands in front of the name, the part next to it
    std::string name;
    bool isQuoted = false;
    std::size_t length = 0;
};

/// Reads the name that a text begins with: bare, or in double quotes, grave accents or brackets.
ProcedureName ReadProcedureName(std::string_view text);

/// The name that a statement calls, "{? = call name(?)}" or "CALL name(?)"; empty when it is no call.
std::string ReadCalledName(std::string_view sql);

}  // namespace tk::ado
