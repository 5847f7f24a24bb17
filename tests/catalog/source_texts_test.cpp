// The stored texts of views and procedures: which query each system gets, and how its rows become one text.
#include "catalog/catalog_fixture.h"

namespace tk::test {
namespace {

constexpr char kCreated[] = "返回编码:[0x00000000]操作完全成功。";

class SourceTexts : public CatalogTest {
protected:
    /// The next recordset shows one column of these texts.
    void ShowLines(std::vector<const char*> lines) {
        std::vector<Row> rows;
        for (const char* line : lines)
            rows.push_back({{"TEXT", line == nullptr ? Null() : Text(line)}, {"LINE", Long(1)}});
        ShowInRecordset(std::move(rows));
        recordsets_->Give(records_.Get());
    }

    /// The query that was opened.
    std::string Opened() {
        for (const std::string& line : journal_.Take()) {
            if (line.starts_with("records.call 1022")) return line;
        }
        return "nothing";
    }
    static std::string Query(const std::string& sql) {
        return "records.call 1022 (BSTR \"" + sql + "\", BSTR \"DSN=stock\", I4 0, I4 1, I4 1)";
    }
};

TEST_F(SourceTexts, EachSystemIsAskedInItsWay) {
    static const struct {
        const char* system;
        const char* view;
        const char* procedure;
    } kRows[] = {
        {"Microsoft SQL Server", "SP_HELPTEXT \"%s视图\"", "SP_HELPTEXT \"%s视图\""},
        {"MS SQL", "SP_HELPTEXT \"%s视图\"", "SP_HELPTEXT \"%s视图\""},
        {"ada", "SP_HELPTEXT \"%s视图\"", "SP_HELPTEXT \"%s视图\""},
        {"DB2/NT", "SELECT VARCHAR(TEXT) FROM SYSIBM.SYSVIEWS WHERE NAME='%s视图'",
         "SELECT VARCHAR(TEXT) FROM SYSIBM.SYSPROCEDURES WHERE PROCNAME='%s视图'"},
        {"Oracle", "SELECT TEXT FROM DBA_VIEWS WHERE OWNER='dbo' AND VIEW_NAME='%s视图'",
         "SELECT TEXT FROM USER_SOURCE WHERE NAME='%s视图' AND TYPE='PROCEDURE'"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.system);
        CTDatabase database;
        Open(database, row.system);
        ShowLines({"x"});
        EXPECT_STREQ(database.GetViewContext("%s视图"), "x");
        EXPECT_EQ(Opened(), Query(row.view));
        ShowLines({"y"});
        EXPECT_STREQ(database.GetProcedureContext("%s视图"), "y");
        EXPECT_EQ(Opened(), Query(row.procedure));
        EXPECT_EQ(ErrorOf(database), kCreated);
    }
}

TEST_F(SourceTexts, NullNamesAreEmptyOnes) {
    CTDatabase database;
    Open(database, "Oracle");
    ShowLines({});
    EXPECT_STREQ(database.GetViewContext(nullptr), "");
    EXPECT_EQ(Opened(), Query("SELECT TEXT FROM DBA_VIEWS WHERE OWNER='dbo' AND VIEW_NAME=''"));
    ShowLines({});
    EXPECT_STREQ(database.GetProcedureContext(nullptr), "");
    EXPECT_EQ(Opened(), Query("SELECT TEXT FROM USER_SOURCE WHERE NAME='' AND TYPE='PROCEDURE'"));
}

TEST_F(SourceTexts, RowsFollowEachOtherWithNothingBetween) {
    static const struct {
        const char* label;
        std::vector<const char*> lines;
        const char* text;
    } kRows[] = {
        {"none", {}, ""},
        {"line ends are the lines' own",
         {"create view V as\r\n", "select 1\r\n", "-- 完"},
         "create view V as\r\nselect 1\r\n-- 完"},
        {"torn lines", {"sel", "ect ", "名", "称"}, "select 名称"},
        {"empty and null ones add nothing", {"a", "", nullptr, "b", ""}, "ab"},
        {"blanks stay", {"  a  ", "  b  "}, "  a    b  "},
        {"quotes and percent signs stay", {"'%s'", "\"%n\""}, "'%s'\"%n\""},
    };
    for (const char* system : {"Microsoft SQL Server", "Adaptive Server", "DB2", "Oracle"}) {
        CTDatabase database;
        Open(database, system);
        for (const auto& row : kRows) {
            SCOPED_TRACE(row.label);
            ShowLines(row.lines);
            EXPECT_STREQ(database.GetViewContext("V"), row.text);
            ShowLines(row.lines);
            EXPECT_STREQ(database.GetProcedureContext("P"), row.text);
        }
    }
}

TEST_F(SourceTexts, OneWalkReadsThem) {
    CTDatabase database;
    Open(database, "Oracle");
    ShowLines({"a", "b"});
    database.GetViewContext("V");
    EXPECT_THAT(
        journal_.Take(),
        ElementsAre("connection.get 18", "connection.get 0", "connection.get 18", "records.get 1054",
                    "records.put 1051 (I4 3)", Query("SELECT TEXT FROM DBA_VIEWS WHERE OWNER='dbo' AND VIEW_NAME='V'"),
                    "records.put 1004 (I4 1000)",                                                     //
                    "records.get 1006", "records.get 0", "fields.get 0 (I4 0)", "field.get 0",        //
                    "records.call 1018", "records.get 1006", "records.get 0", "fields.get 0 (I4 0)",  //
                    "field.get 0", "records.call 1018", "records.get 1006", "records.get 1054"));
}

TEST_F(SourceTexts, AnUnknownSystemIsToldInTwoWordings) {
    for (const char* system : {"PostgreSQL", "SQLite", ""}) {
        SCOPED_TRACE(system);
        CTDatabase database;
        Open(database, system);
        EXPECT_STREQ(database.GetViewContext("V"), "");
        EXPECT_EQ(ErrorOf(database), "无法识别的数据库管理系统(RDBMS SYSTEM ERROR)!\r\n");
        EXPECT_STREQ(database.GetProcedureContext("P"), "");
        EXPECT_EQ(ErrorOf(database), "无法识别的数据库管理系统(DBMS SYSTEM ERROR)!\r\n");
        EXPECT_THAT(journal_.Take(), IsEmpty());
    }
}

TEST_F(SourceTexts, AQueryThatCannotBeOpenedGivesNothingAndItsReason) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    records_->On(Call(1022)).Fails("没有这个对象");
    recordsets_->Give(records_.Get());
    EXPECT_STREQ(database.GetViewContext("V"), "");
    EXPECT_EQ(ErrorOf(database), Failure("没有这个对象", "Open"));
    recordsets_->Give(records_.Get());
    EXPECT_STREQ(database.GetProcedureContext("P"), "");
}

TEST_F(SourceTexts, AnExceptionInTheWalkGivesNothingAndItsReason) {
    CTDatabase database;
    Open(database, "Adaptive Server");
    for (const Member member : {Get(1006), Call(1018)}) {
        SCOPED_TRACE(member.id);
        ShowLines({"a", "b"});
        records_->On(member) = Script();
        records_->On(member).Fails("断开");
        EXPECT_STREQ(database.GetViewContext("V"), "") << "half a text is none";
        EXPECT_EQ(ErrorOf(database), Failure("断开", "SP_HELPTEXT \"V\""));
        recordsets_->Give(records_.Get());
        EXPECT_STREQ(database.GetProcedureContext("P"), "");
    }
}

}  // namespace
}  // namespace tk::test
