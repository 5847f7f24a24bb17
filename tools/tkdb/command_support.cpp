#include "tools/tkdb/command_support.h"

#include <tkwin32/text.h>

#include "tools/tkdb/print.h"
#include "tools/tkdb/terminal_text.h"

namespace tk::tools {

int Refuse(const CString& error) {
    std::string text = GbkToTerminal(static_cast<const char*>(error));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    ComplainText(text);
    return kDatabaseRefused;
}

int Refuse(CException* e) {
    char text[1024] = {};
    e->GetErrorMessage(text, sizeof text);
    e->Delete();
    return Refuse(CString(text));
}

int Unwritable(const std::string& what, const std::string& reason) {
    Complain("cannot write {}: {}", what, reason);
    return kNotWritten;
}

int Unwritable(const std::string& what, const std::error_code& error) {
    return Unwritable(what, error.message());
}

bool OpenDatabase(CTDatabase& database, const std::string& connection) {
    return database.Open(TerminalToGbk(connection).c_str()) != 0;
}

std::vector<std::string> ColumnNames(CTRecordset& records) {
    std::vector<std::string> names;
    const long count = records.GetFieldCount();
    for (long i = 0; i < count; ++i)
        names.push_back(text::GbkToUtf8(static_cast<const char*>(records.GetFieldName(i))));
    return names;
}

}  // namespace tk::tools
