#include "tools/tkdb/row_count.h"

#include <cstdlib>

#include "tools/tkdb/database_system.h"

namespace tk::tools {

CString CountRowsOf(CTDatabase& database, const std::string& table, long& count) {
    CTRecordset rows(&database);
    const COleDispatchDriver rowset(database.GetRecordset(("SELECT COUNT(*) FROM " + Quoted(table)).c_str()));
    if (rowset.m_lpDispatch == nullptr) return database.GetLastErrorString();
    if (rows.OpenDispatch(rowset.m_lpDispatch) == 0) return rows.GetLastErrorString();
    // Some drivers tell it as a text.
    count = std::strtol(rows.GetStringValue(0L), nullptr, 10);
    return "";
}

}  // namespace tk::tools
