// tools/tkdb/column_type_text.h - a column's type in words that no database system owns.
#pragma once

#include <string>

namespace tk::tools {

/// The type of a column that a schema rowset describes: it calls texts and binaries of every kind by one code.
/// @param flags  COLUMN_FLAGS
/// @return an ADO data type code
long ExactType(long type, unsigned flags);

/// "numeric(12,2)", "varchar(20)", "integer"; "type 999" for a code without a word.
/// @param type  an ADO data type code
/// @param size  characters or bytes; 0: without limit, or not known
std::string ColumnTypeText(long type, long size, long precision, long scale);

}  // namespace tk::tools
