#include "tools/tkdb/commands.h"
#include "tools/tkdb/print.h"
#include "tools/tkdb/terminal_text.h"

namespace tk::tools {
namespace {

std::string FirstLine(const std::string& sql) {
    const std::size_t end = sql.find_first_of("\r\n");
    return end == std::string::npos ? sql : sql.substr(0, end) + " ...";
}

}  // namespace

int ExecuteStatements(const std::string& connection, const std::vector<std::string>& statements, bool inTransaction) {
    CTDatabase database;
    if (!OpenDatabase(database, connection)) return Refuse(database.GetLastErrorString());
    try {
        if (inTransaction) database.BeginTrans();
        for (const auto& statement : statements) {
            // A count of 0 is an answer too: what tells a failure is that it left a text.
            const CString before = database.GetLastErrorString();
            // "%s" keeps percent signs of the statement out of the format.
            const long rows = database.ExecSQL("%s", TerminalToGbk(statement).c_str());
            const CString error = database.GetLastErrorString();
            if (rows == 0 && error != before) {
                if (inTransaction) database.RollbackTrans();
                return Refuse(error);
            }
            Print("{} row(s): {}\n", rows, FirstLine(statement));
        }
        if (inTransaction) database.CommitTrans();
    } catch (CException* e) {
        return Refuse(e);
    }
    return kSuccess;
}

}  // namespace tk::tools
