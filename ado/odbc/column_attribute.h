// ado/odbc/column_attribute.h - what a driver says of one column of a result.
#pragma once

#include <string>

#include "ado/odbc/odbc_api.h"

namespace tk::ado {

/// @param number  of the column, from 1
/// @return UTF-8; empty when the driver does not say
std::string TextAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute);
SQLLEN NumberAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute, SQLLEN otherwise);

}  // namespace tk::ado
