#include "tools/tkdb/commands.h"
#include "tools/tkdb/terminal_text.h"
#include "tools/tkdb/write_rows.h"

namespace tk::tools {

int PrintQuery(const std::string& connection, const std::string& sql, Format format, long maxRows) {
    CTRecordset records;
    CTDatabase database;
    if (!OpenDatabase(database, connection)) return Refuse(database.GetLastErrorString());
    if (records.OpenDatabase(&database) == 0) return Refuse(records.GetLastErrorString());
    if (records.OpenSQL(TerminalToGbk(sql).c_str(), 1) == 0) return Refuse(records.GetLastErrorString());
    if (records.GetState() == 0) return kSuccess;  // a statement without rows

    try {
        WriteRows(records, format, stdout, Charset::Terminal, maxRows);
    } catch (CException* e) {
        return Refuse(e);
    }
    return kSuccess;
}

}  // namespace tk::tools
