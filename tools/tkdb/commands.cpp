#include "tools/tkdb/commands.h"

#include <fmt/format.h>
#include <tkkernel/tkkernel.h>
#include <tkwin32/text.h>

#include <algorithm>

#include "tools/tkdb/progress.h"
#include "tools/tkdb/terminal_text.h"

namespace tk::tools {
namespace {

int Refuse(const CString& error) {
    std::string text = GbkToTerminal(static_cast<const char*>(error));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    fmt::print(stderr, "tkdb: {}\n", text);
    return kDatabaseRefused;
}

int Refuse(COleDispatchException* e) {
    char text[1024] = {};
    e->GetErrorMessage(text, sizeof text);
    e->Delete();
    return Refuse(CString(text));
}

bool OpenDatabase(CTDatabase& database, const std::string& connection) {
    return database.Open(TerminalToGbk(connection).c_str()) != 0;
}

std::string FirstLine(const std::string& sql) {
    const std::size_t end = sql.find_first_of("\r\n");
    return end == std::string::npos ? sql : sql.substr(0, end) + " ...";
}

std::string ColumnName(CTRecordset& records, long index) {
    return text::GbkToUtf8(static_cast<const char*>(records.GetFieldName(index)));
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
            fmt::print("{} row(s): {}\n", rows, FirstLine(statement));
        }
        if (inTransaction) database.CommitTrans();
    } catch (COleDispatchException* e) {
        return Refuse(e);
    }
    return kSuccess;
}

int PrintQuery(const std::string& connection, const std::string& sql, Format format, long maxRows) {
    CTRecordset records;
    CTDatabase database;
    if (!OpenDatabase(database, connection)) return Refuse(database.GetLastErrorString());
    if (records.OpenDatabase(&database) == 0) return Refuse(records.GetLastErrorString());
    if (records.OpenSQL(TerminalToGbk(sql).c_str(), 1) == 0) return Refuse(records.GetLastErrorString());
    if (records.GetState() == 0) return kSuccess;  // a statement without rows

    try {
        const auto writer = MakeResultWriter(format, stdout);
        const long fields = records.GetFieldCount();
        std::vector<std::string> names;
        for (long i = 0; i < fields; ++i)
            names.push_back(ColumnName(records, i));
        writer->Columns(names);

        Progress progress("rows");
        std::vector<CellText> cells(static_cast<std::size_t>(fields));
        for (long row = 0; records.GetEof() == 0 && (maxRows == 0 || row < maxRows); ++row) {
            for (long i = 0; i < fields; ++i) {
                VARIANT value = records.GetValue(i);
                cells[static_cast<std::size_t>(i)] = ToCellText(value);
                VariantClear(&value);
            }
            writer->Row(cells);
            progress.Advance();
            records.MoveNext();
        }
        writer->Finish();
    } catch (COleDispatchException* e) {
        return Refuse(e);
    }
    return kSuccess;
}

std::vector<std::string> SplitScript(const std::string& script) {
    std::vector<std::string> statements;
    std::string current;
    const auto finish = [&] {
        const std::size_t first = current.find_first_not_of(" \t\r\n");
        if (first != std::string::npos) {
            const std::size_t last = current.find_last_not_of(" \t\r\n");
            statements.push_back(current.substr(first, last - first + 1));
        }
        current.clear();
    };
    for (std::size_t i = 0; i < script.size(); ++i) {
        const char c = script[i];
        std::size_t end = i;  // the last character of a quoted part or comment
        if (c == '\'' || c == '"' || c == '`') {
            end = std::min(script.find(c, i + 1), script.size() - 1);
        } else if (script.compare(i, 2, "--") == 0) {
            end = std::min(script.find('\n', i), script.size() - 1);
        } else if (script.compare(i, 2, "/*") == 0) {
            const std::size_t close = script.find("*/", i + 2);
            end = close == std::string::npos ? script.size() - 1 : close + 1;
        }
        if (end != i) {
            current.append(script, i, end - i + 1);
            i = end;
        } else if (c == ';') {
            finish();
        } else {
            current += c;
        }
    }
    finish();
    return statements;
}

}  // namespace tk::tools
