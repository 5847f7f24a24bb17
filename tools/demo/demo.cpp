#include "tools/demo/demo.h"

#include <stdlib.h>
#include <tkkernel/tkkernel.h>
#include <tkwin32/text.h>
#include <unistd.h>

#include <stdexcept>

#include "tools/demo/iso_codes.h"
#include "tools/tkdb/commands.h"
#include "tools/tkdb/progress.h"
#include "tools/tkdb/standard_streams.h"
#include "tools/tkdb/terminal_text.h"

static_assert(sizeof("库") == 3 || sizeof("库") == 4);  // GBK, or UTF-8 for tools that only read the source

namespace tk::tools {
namespace {

void Say(const CString& text) {
    PrintText(GbkToTerminal(static_cast<const char*>(text)) + "\n");
}

void Headline(const char* text) {
    Say("");
    Say(CString("== ") + text);
}

void SayError(CTDataDriver& source) {
    CString text = source.GetLastErrorString();
    text.Replace("\r\n", "\n   ");
    Say("   " + text);
}

// An embedded database in a temporary file that goes when the demonstration ends.
class TemporaryDatabase {
public:
    TemporaryDatabase() {
        const int file = mkstemps(path_, 3);
        if (file >= 0) close(file);
    }
    ~TemporaryDatabase() {
        unlink(path_);
        for (const char* tail : {"-wal", "-shm", "-journal"})
            unlink((std::string(path_) + tail).c_str());
    }
    TemporaryDatabase(const TemporaryDatabase&) = delete;
    TemporaryDatabase& operator=(const TemporaryDatabase&) = delete;

    std::string ConnectionString() const { return std::string("Driver=SQLite3;Database=") + path_; }

private:
    char path_[32] = "/tmp/tkdb-demo-XXXXXX.db";
};

// A text as SQL wants it, or NULL.
CString Literal(const std::string& utf8) {
    if (utf8.empty()) return "NULL";
    VARIANT value;
    StringToVariant(value, text::Utf8ToGbk(utf8).c_str());
    CString literal = VARIANTToString(value);
    VariantClear(&value);
    return literal;
}

bool CreateTables(CTDatabase& database) {
    Headline("建表");
    for (const char* statement : {
             "CREATE TABLE country (code varchar(2) PRIMARY KEY, number integer, name varchar(80), 名称 varchar(80))",
             "CREATE TABLE subdivision (code varchar(8) PRIMARY KEY, country varchar(2), kind varchar(60), "
             "name varchar(120), 名称 varchar(120))",
             "CREATE TABLE currency (code varchar(3) PRIMARY KEY, number integer, name varchar(80), 名称 varchar(80))",
         }) {
        if (!database.ExecuteSQL(statement)) return false;
        Say(CString("   ") + statement);
    }
    return true;
}

void LoadData(CTDatabase& database, const IsoCodes& codes) {
    Headline("装入 ISO 3166 与 ISO 4217 代码表");
    Progress progress("rows");
    database.BeginTrans();
    for (const auto& row : codes.countries) {
        database.ExecuteEx("INSERT INTO country VALUES (%s,%d,%s,%s)", (LPCTSTR)Literal(row.code), row.number,
                           (LPCTSTR)Literal(row.name), (LPCTSTR)Literal(row.chineseName));
        progress.Advance();
    }
    for (const auto& row : codes.subdivisions) {
        database.ExecuteEx("INSERT INTO subdivision VALUES (%s,%s,%s,%s,%s)", (LPCTSTR)Literal(row.code),
                           (LPCTSTR)Literal(row.country), (LPCTSTR)Literal(row.kind), (LPCTSTR)Literal(row.name),
                           (LPCTSTR)Literal(row.chineseName));
        progress.Advance();
    }
    for (const auto& row : codes.currencies) {
        database.ExecuteEx("INSERT INTO currency VALUES (%s,%d,%s,%s)", (LPCTSTR)Literal(row.code), row.number,
                           (LPCTSTR)Literal(row.name), (LPCTSTR)Literal(row.chineseName));
        progress.Advance();
    }
    database.CommitTrans();
    CString text;
    text.Format("   国家和地区 %zu 行, 行政区划 %zu 行, 货币 %zu 行", codes.countries.size(), codes.subdivisions.size(),
                codes.currencies.size());
    Say(text);
}

void ShowQuery(CTDatabase& database) {
    Headline("查询: 各国一级行政区划最多的十个国家");
    CTRecordset records(&database);
    if (!records.OpenSQL("SELECT c.名称 AS 国家, c.code AS 代码, count(*) AS 区划数 FROM subdivision s "
                         "JOIN country c ON c.code = s.country GROUP BY c.code ORDER BY 3 DESC, 2 LIMIT 10",
                         1)) {
        return SayError(records);
    }
    for (; !records.GetEof(); records.MoveNext()) {
        CString line;
        line.Format("   %-12s %s %4d", (LPCTSTR)records.GetStringValue("国家"), (LPCTSTR)records.GetStringValue("代码"),
                    records.GetIntValue("区划数"));
        Say(line);
    }
}

void ShowPages(CTDatabase& database) {
    Headline("分页: 行政区划每页 1000 行");
    CTRecordset records(&database);
    if (!records.OpenTable("subdivision", 1)) return SayError(records);
    records.SetPageSize(1000);
    for (long page = 1; page <= records.GetPageCount(); ++page) {
        records.SetAbsolutePage(page);
        CString line;
        line.Format("   第 %ld/%ld 页从第 %ld 行开始: %s %s", page, records.GetPageCount(),
                    records.GetAbsolutePosition(), (LPCTSTR)records.GetStringValue("code"),
                    (LPCTSTR)records.GetStringValue("name"));
        Say(line);
    }
}

void ShowSearch(CTDatabase& database) {
    Headline("查找、筛选与排序: 中国的行政区划");
    CTRecordset records(&database);
    if (!records.OpenSQL("SELECT code, country, kind, 名称 FROM subdivision", 1)) return SayError(records);
    records.FindFirst("code = 'CN-XZ'");
    Say("   查找 CN-XZ: " + records.GetStringValue("名称"));

    records.SetFilter("country = 'CN' AND 名称 LIKE '%自治区%'");
    records.SetSort("名称");
    CString line;
    line.Format("   名称含“自治区”的有 %ld 个, 按名称排序:", records.GetRecordCount());
    Say(line);
    for (records.MoveFirst(); !records.GetEof(); records.MoveNext()) {
        Say("      " + records.GetStringValue("code") + " " + records.GetStringValue("名称"));
    }
    records.SetFilter("");
    line.Format("   取消筛选后共 %ld 行", records.GetRecordCount());
    Say(line);
}

void ShowTypedValues(CTDatabase& database) {
    Headline("按类型取值");
    CTRecordset records(&database);
    if (!records.OpenSQL(
            "SELECT code, number, 名称, number / 7.0 AS ratio FROM currency WHERE code IN ('CNY','HKD','JPY')", 1)) {
        return SayError(records);
    }
    for (; !records.GetEof(); records.MoveNext()) {
        CString line;
        line.Format("   %s  整数 %03d  实数 %.4f  文本 %s", (LPCTSTR)records.GetStringValue("code"),
                    records.GetIntValue("number"), records.GetDoubleValue("ratio"),
                    (LPCTSTR)records.GetStringValue("名称"));
        Say(line);
    }
}

void ShowErrors(CTDatabase& database) {
    Headline("出错时的说明");
    Say(" - 表不存在:");
    database.ExecuteSQL("SELECT * FROM 没有的表");
    SayError(database);
    Say(" - 主键重复:");
    database.ExecuteSQL("INSERT INTO currency VALUES ('CNY',156,'x','x')");
    SayError(database);
    Say(" - 记录集没有绑定数据库:");
    CTRecordset unbound;
    unbound.OpenSQL("SELECT 1", 1);
    SayError(unbound);
    CTRecordset records(&database);
    records.OpenSQL("SELECT code FROM currency", 1);
    Say(" - 字段不存在:");
    records.GetValue("没有的字段");
    SayError(records);
}

int Run(const std::string& connection, const IsoCodes& codes) {
    CTDatabase database;
    if (!database.Open(TerminalToGbk(connection).c_str())) {
        SayError(database);
        return kDatabaseRefused;
    }
    Headline("连接");
    Say("   数据库系统: " + database.GetDbmsName() + ", 数据库: " + database.GetCurDbName());
    if (!CreateTables(database)) {
        SayError(database);
        return kDatabaseRefused;
    }
    LoadData(database, codes);
    ShowQuery(database);
    ShowPages(database);
    ShowSearch(database);
    ShowTypedValues(database);
    ShowErrors(database);
    return kSuccess;
}

}  // namespace

int RunDemo(const std::string& connection) {
    try {
        const IsoCodes codes = LoadIsoCodes();
        if (!connection.empty()) return Run(connection, codes);
        const TemporaryDatabase temporary;
        return Run(temporary.ConnectionString(), codes);
    } catch (CException* e) {
        char text[256] = {};
        e->GetErrorMessage(text, sizeof text);
        e->Delete();
        Say(text);
    } catch (const std::exception& e) {
        ComplainText(e.what());
    }
    return kDatabaseRefused;
}

}  // namespace tk::tools
