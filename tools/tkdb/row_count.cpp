#include "tools/tkdb/row_count.h"

#include "tools/tkdb/rowset.h"

namespace tk::tools {

int UseQuotes(CTDatabase& database) {
    const std::string system(database.GetDbmsName());
    const bool isOther = system.find("MariaDB") != std::string::npos || system.find("MySQL") != std::string::npos;
    return isOther ? database.ExecuteSQL("SET SESSION sql_mode = CONCAT(@@sql_mode, ',ANSI_QUOTES')") : 1;
}

CString CountRowsOf(CTDatabase& database, const std::string& table, long& count) {
    CTRecordset rows(&database);
    const Rowset rowset(database.GetRecordset(("SELECT COUNT(*) FROM \"" + table + "\"").c_str()));
    if (rowset.Get() == nullptr) return database.GetLastErrorString();
    if (rows.OpenDispatch(rowset.Get()) == 0) return rows.GetLastErrorString();
    count = rows.GetIntValue(0L);
    return "";
}

}  // namespace tk::tools
