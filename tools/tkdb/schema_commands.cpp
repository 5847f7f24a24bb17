#include "tools/tkdb/schema_commands.h"

#include <tkwin32/text.h>

#include "tools/tkdb/column_type_text.h"
#include "tools/tkdb/database_system.h"
#include "tools/tkdb/print.h"
#include "tools/tkdb/read_all.h"
#include "tools/tkdb/row_count.h"
#include "tools/tkdb/standard_streams.h"
#include "tools/tkdb/terminal_text.h"

namespace tk::tools {
namespace {

using Names = std::vector<std::string>;  // GBK

Names NamesOf(const CStringArray& list) {
    Names names;
    for (int i = 0; i < static_cast<int>(list.GetSize()); ++i)
        names.emplace_back(list.GetAt(i));
    return names;
}

/// An empty text is nothing to be told.
CellText TextCell(const char* gbk) {
    return {*gbk == '\0' ? CellNature::Null : CellNature::Text, text::GbkToUtf8(gbk)};
}

CellText NumberCell(long number) {
    return {CellNature::Number, std::to_string(number)};
}

void PrintGbk(const char* gbk) {
    Print("{}\n", GbkToTerminal(gbk));
}

/// Runs the work on an open database. @return its exit code, or that of what it threw
template <class Work>
int OnDatabase(const std::string& connection, Work&& work) {
    CTDatabase database;
    if (!OpenDatabase(database, connection) || UseQuotes(database) == 0) return Refuse(database.GetLastErrorString());
    try {
        return work(database);
    } catch (CException* e) {
        return Refuse(e);
    }
}

/// Runs the work for each table named, or for all of them, up to the first that fails or that nobody will read of.
template <class Work>
int OnTables(const std::string& connection, const Names& named, Work&& work) {
    return OnDatabase(connection, [&](CTDatabase& database) {
        Names tables;
        for (const std::string& name : named)
            tables.push_back(TerminalToGbk(name));
        if (tables.empty()) {
            CStringArray all;
            if (database.GetAllTables(all) == 0) return Refuse(database.GetLastErrorString());
            tables = NamesOf(all);
        }
        int code = kSuccess;
        for (std::size_t i = 0; i < tables.size() && code == kSuccess && !IsOutputLost(); ++i) {
            const char* const table = tables[i].c_str();
            code = database.IsTableExist(table) != 0 ? work(database, table)
                                                     : Refuse(("no such table or view: " + tables[i]).c_str());
        }
        return code;
    });
}

/// In the dialect of the database, where that is a known one.
std::string TypeText(CTRecordset& columns, const _tagFIELDINFO& field) {
    if (field.szType[0] != '\0') return field.szType;
    return ColumnTypeText(ExactType(columns.GetIntValue("DATA_TYPE"), field.nFlags), field.nSize, field.nPrecision,
                          field.nScale);
}

/// One column of texts.
int PrintNames(const char* heading, const CStringArray& list, Format format) {
    const auto writer = MakeResultWriter(format, stdout, Charset::Terminal);
    writer->Columns({heading});
    for (const std::string& name : NamesOf(list))
        writer->Row({TextCell(name.c_str())});
    writer->Finish();
    return kSuccess;
}

/// Each on a line of its own.
int PrintTexts(const CStringArray& texts) {
    for (const std::string& text : NamesOf(texts))
        PrintGbk(text.c_str());
    return kSuccess;
}

}  // namespace

int ListTables(const std::string& connection, Format format) {
    return OnDatabase(connection, [&](CTDatabase& database) {
        CStringArray tables;
        if (database.GetAllTables(tables) == 0) return Refuse(database.GetLastErrorString());
        return PrintNames("table", tables, format);
    });
}

int PrintViews(const std::string& connection, const std::vector<std::string>& names, Format format) {
    return OnDatabase(connection, [&](CTDatabase& database) {
        if (names.empty()) {
            CStringArray views;
            if (database.GetAllViews(views) == 0) return Refuse(database.GetLastErrorString());
            return PrintNames("view", views, format);
        }
        for (const std::string& name : names) {
            const CString text = database.GetViewContext(TerminalToGbk(name).c_str());
            if (text.IsEmpty()) return Refuse(database.GetLastErrorString());
            PrintGbk(text);
        }
        return static_cast<int>(kSuccess);
    });
}

int DescribeTable(const std::string& connection, const std::string& table, Format format) {
    return OnTables(connection, {table}, [&](CTDatabase& database, const char* name) {
        const std::string key = "," + std::string(database.GetPrimaryKey(name)) + ",";
        CTRecordset columns(&database);
        const COleDispatchDriver rows(database.GetFieldSet(name, nullptr));
        if (columns.OpenField(rows.m_lpDispatch) == 0) return Refuse(columns.GetLastErrorString());
        const auto writer = MakeResultWriter(format, stdout, Charset::Terminal);
        writer->Columns({"column", "type", "nulls", "default", "key"});
        for (; !columns.GetEof(); columns.MoveNext()) {
            _tagFIELDINFO field = {};
            if (columns.GetFieldInfoCurrent(&field) == 0) return Refuse(columns.GetLastErrorString());
            const bool isKey = key.find("," + std::string(columns.GetStringValue("COLUMN_NAME")) + ",") != key.npos;
            writer->Row({TextCell(field.szName), TextCell(TypeText(columns, field).c_str()),
                         TextCell(field.nNullable != 0 ? "yes" : "no"), TextCell(field.szDefault),
                         TextCell(isKey ? "yes" : "")});
        }
        writer->Finish();
        return static_cast<int>(kSuccess);
    });
}

int PrintScripts(const std::string& connection, const std::vector<std::string>& tables) {
    return OnTables(connection, tables, [](CTDatabase& database, const char* name) {
        const CString script = database.GetTableStruct(name);
        if (script.IsEmpty()) return Refuse(database.GetLastErrorString());
        CStringArray indexes;
        if (database.GetIndexesContext(name, indexes) == 0) return Refuse(database.GetLastErrorString());
        PrintGbk(script);
        return PrintTexts(indexes);
    });
}

int PrintIndexes(const std::string& connection, const std::vector<std::string>& tables) {
    return OnTables(connection, tables, [](CTDatabase& database, const char* name) {
        CStringArray indexes;
        if (database.GetIndexesContext(name, indexes) == 0) return Refuse(database.GetLastErrorString());
        return PrintTexts(indexes);
    });
}

int CountRows(const std::string& connection, const std::vector<std::string>& tables, Format format) {
    const auto writer = MakeResultWriter(format, stdout, Charset::Terminal);
    writer->Columns({"table", "rows"});
    const int code = OnTables(connection, tables, [&](CTDatabase& database, const char* name) {
        long count = 0;
        const CString reason = CountRowsOf(database, name, count);
        if (!reason.IsEmpty()) return Refuse(reason);
        writer->Row({TextCell(name), NumberCell(count)});
        return static_cast<int>(kSuccess);
    });
    if (code == kSuccess) writer->Finish();
    return code;
}

int PrintConverted(const std::string& file, Dialect from, Dialect to) {
    std::string script;
    if (!ReadAll(file, script)) {
        Complain("cannot read {}", file);
        return kWrongUsage;
    }
    const CString converted = ConvertScript(TerminalToGbk(script).c_str(), from, to);
    PrintText(GbkToTerminal(static_cast<const char*>(converted)));
    return kSuccess;
}

}  // namespace tk::tools
