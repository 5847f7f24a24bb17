// ado/rowset/cell_reader.h - a whole cell by SQLGetData, however long it is.
#pragma once

#include <string>

#include "ado/odbc/statement_impl.h"

namespace tk::ado {

/// @param cType  SQL_C_CHAR or SQL_C_BINARY
/// @return false for NULL
/// @throws AdoError with the driver's diagnostics
bool ReadWholeCell(Statement::Impl& statement, int number, SQLSMALLINT cType, std::string& value);

/// `{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}` of a GUID in any of its usual spellings; other texts stay as they are.
void NormalizeGuid(std::string& text);

}  // namespace tk::ado
