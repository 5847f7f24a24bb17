// tools/tkdb/row_count.h - how many rows a table has, as its own connection sees it.
#pragma once

#include <tkkernel/tkkernel.h>

#include <string>

namespace tk::tools {

/// Rows that the connection has not committed yet included.
/// @param table  GBK; UseQuotes has been called
/// @return "" or why not
CString CountRowsOf(CTDatabase& database, const std::string& table, long& count);

}  // namespace tk::tools
