// Indexes, stored texts, maintenance and lookups on a real file; and files that stand in for other systems, with the
// tables that those are asked for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "support/registered_class.h"
#include "support/temporary_folder.h"
#include "tkkernel/tkkernel.h"

namespace tk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Mover : public CTDatabase {
public:
    using CTDatabase::OnDataMove;
};

std::vector<std::string> TextsOf(const CStringArray& names) {
    std::vector<std::string> texts;
    for (int i = 0; i < names.GetSize(); ++i)
        texts.emplace_back(names.GetAt(i));
    return texts;
}

class SqliteScripts : public ::testing::Test {
protected:
    /// Opens the file, as another system when a name is given.
    void Open(CTDatabase& database, const char* dbmsName = nullptr) {
        std::string connection = "Driver=SQLite3;Database=" + folder_.File("库存.db") + ";Timeout=5000";
        if (dbmsName != nullptr) connection += std::string(";DBMS Name=") + dbmsName;
        ASSERT_EQ(database.Open(connection.c_str()), 1) << Error(database);
    }
    void Run(CTDatabase& database, std::initializer_list<const char*> statements) {
        for (const char* statement : statements)
            ASSERT_EQ(database.ExecuteSQL(statement), 1) << statement << ": " << Error(database);
    }
    static std::string Error(CTDatabase& database) { return std::string(database.GetLastErrorString()); }

    Apartment apartment_;
    TemporaryFolder folder_;
};

// ---- indexes -----------------------------------------------------------------------------------------------------

TEST_F(SqliteScripts, IndexesBecomeStatements) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    Run(database,
        {"create table \"订单\" (\"编号\" integer not null, \"名称\" varchar(20), kind smallint, primary key "
         "(\"编号\", kind))",
         "create table plain (id integer primary key)", "create index \"ix_名称\" on \"订单\" (\"名称\", kind desc)",
         "create unique index ix_kind on \"订单\" (kind)", "create index ix_plain on plain (id)"});
    CStringArray names;
    EXPECT_EQ(database.GetIndexNames("订单", names, nullptr), 1);
    EXPECT_THAT(TextsOf(names), ::testing::UnorderedElementsAre("ix_名称", "ix_kind"));
    EXPECT_STREQ(database.GetIndex("订单", "ix_名称", nullptr), "名称,kind");
    EXPECT_STREQ(database.GetIndex("订单", "no such", nullptr), "");
    EXPECT_STREQ(database.GetIndex("no such", "ix_名称", nullptr), "");
    CStringArray statements;
    EXPECT_EQ(database.GetIndexesContext("订单", statements), 1);
    EXPECT_THAT(TextsOf(statements),
                ::testing::UnorderedElementsAre("CREATE INDEX \"IX_名称\" ON \"订单\" (\"名称\",\"KIND\")",
                                                "CREATE INDEX \"IX_KIND\" ON \"订单\" (\"KIND\")"));
    EXPECT_STREQ(database.GetAllIndexName("plain"), "\"id\"");
    EXPECT_STREQ(database.GetAllIndexName("no such"), "");
    CStringArray all;
    EXPECT_EQ(database.GetAllIndexes(all), 3);
    EXPECT_THAT(TextsOf(all), ::testing::UnorderedElementsAre("ix_名称", "ix_kind", "ix_plain"));

    // What was written can be run again.
    Run(database, {"drop index \"ix_名称\"", "drop index ix_kind"});
    for (int i = 0; i < statements.GetSize(); ++i)
        EXPECT_EQ(database.ExecuteSQL(statements[i]), 1) << Error(database);
}

TEST_F(SqliteScripts, ATableGoesToAnotherSystem) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    Run(database, {"create table \"订单\" (\"编号\" integer primary key, \"名称\" varchar(255) not null default '无', "
                   "made timestamp, price double, memo text)"});
    const CString script = database.GetTableStruct("订单");
    const CString target = database.VeriFySQLPragramer(script, "DB2");
    EXPECT_STREQ(target,
                 "CREATE TABLE \"订单\" (\r\n"
                 "\t\"编号\"\tINT\t\t NOT NULL,\r\n"
                 "\t\"名称\"\tVARCHAR (254)\t\t NOT NULL\tWITH DEFAULT ('无'),\r\n"
                 "\t\"MADE\"\tTIMESTAMP,\r\n"
                 "\t\"PRICE\"\tDOUBLE,\r\n"
                 "\t\"MEMO\"\tBLOB ,\r\n"
                 "\tPRIMARY KEY (\"编号\"))");
    const CString oracle = database.VeriFySQLPragramer(script, "ORA");
    EXPECT_EQ(database.DropTable("订单"), 1);
    EXPECT_EQ(database.ExecuteSQL(oracle), 1) << Error(database);
}

// ---- stored texts --------------------------------------------------------------------------------------------------

TEST_F(SqliteScripts, AnOracleStandInKeepsItsTexts) {
    CTDatabase database;
    Open(database, "Oracle");
    const std::string schema(database.GetCurSchema());
    Run(database,
        {"create table USER_SOURCE (NAME varchar(30), TYPE varchar(12), LINE integer, TEXT varchar(4000))",
         "insert into USER_SOURCE values ('P_保存', 'PROCEDURE', 1, 'procedure P_保存 is' || char(10)), "
         "('P_保存', 'FUNCTION', 1, 'function'), ('P_保存', 'PROCEDURE', 2, 'begin' || char(13, 10)), "
         "('P_OTHER', 'PROCEDURE', 1, 'other'), ('P_保存', 'PROCEDURE', 3, 'end;')",
         "create table DBA_VIEWS (OWNER varchar(30), VIEW_NAME varchar(30), TEXT_LENGTH integer, TEXT text)"});
    EXPECT_STREQ(database.GetProcedureContext("P_保存"), "procedure P_保存 is\nbegin\r\nend;");
    EXPECT_STREQ(database.GetProcedureContext("p_保存"), "");
    EXPECT_STREQ(database.GetProcedureContext("nothing"), "");
    ASSERT_EQ(database.ExecuteEx("insert into DBA_VIEWS values ('%s', 'V', 8, 'select 1'), ('SOMEBODY', 'W', 8, "
                                 "'select 2')",
                                 schema.c_str()),
              1);
    EXPECT_STREQ(database.GetViewContext("V"), "select 1");
    EXPECT_STREQ(database.GetViewContext("W"), "") << "another owner's";
    EXPECT_STREQ(database.GetViewContext("a'b"), "") << "names are inserted as they are";
    EXPECT_THAT(Error(database), HasSubstr("syntax error"));
}

TEST_F(SqliteScripts, AMegabyteOfSourceIsReadWhole) {
    CTDatabase database;
    Open(database, "Oracle");
    Run(database, {"create table USER_SOURCE (NAME varchar(30), TYPE varchar(12), LINE integer, TEXT varchar(4000))",
                   "insert into USER_SOURCE with recursive n (i) as (select 1 union all select i + 1 from n where i < "
                   "20000) select 'P', 'PROCEDURE', i, printf('-- %05d 这是一行很长的中文注释，用来占地方。', i) || "
                   "char(10) from n"});
    std::string expected;
    for (int i = 1; i <= 20000; ++i) {
        std::string number = std::to_string(i);
        number.insert(0, 5 - number.size(), '0');
        expected += "-- " + number + " 这是一行很长的中文注释，用来占地方。\n";
    }
    const CString text = database.GetProcedureContext("P");
    EXPECT_EQ(text.GetLength(), static_cast<int>(expected.size()));
    EXPECT_TRUE(text == expected.c_str());
}

TEST_F(SqliteScripts, ASystemWithoutTheTablesOrCommandsSaysSo) {
    static const struct {
        const char* system;
        const char* reason;
    } kRows[] = {{"Microsoft SQL Server", "SP_HELPTEXT"},
                 {"Adaptive Server", "SP_HELPTEXT"},
                 {"DB2", "SYSIBM.SYS"},
                 {"Oracle", "no such table"}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.system);
        CTDatabase database;
        Open(database, row.system);
        EXPECT_STREQ(database.GetViewContext("V"), "");
        EXPECT_THAT(Error(database), HasSubstr(row.reason));
        EXPECT_STREQ(database.GetProcedureContext("P"), "");
        EXPECT_THAT(Error(database), HasSubstr(row.reason));
    }
    CTDatabase database;
    Open(database, "DB2");
    EXPECT_STREQ(database.GetIndex("T", "IX", nullptr), "ERROR!");
    EXPECT_THAT(Error(database), HasSubstr("SYSIBM.SYSINDEXES"));
}

// ---- maintenance -------------------------------------------------------------------------------------------------

TEST_F(SqliteScripts, RowsAndObjectsAreDeleted) {
    CTDatabase database;
    Open(database, "DB2");
    Run(database, {"create table \"订单\" (id integer primary key, name varchar(20))",
                   "create view \"视图\" as select id from \"订单\"",
                   "insert into \"订单\" values (1, '螺丝'), (2, '螺母'), (3, 'It''s'), (4, NULL)"});
    EXPECT_EQ(database.GetRecordCount("\"订单\""), 4);
    EXPECT_EQ(database.GetRecordCount("\"订单\" where id > 1"), 3);
    EXPECT_EQ(database.GetRecordCount("订单"), 4) << "this system takes the name without quotes as well";
    EXPECT_EQ(database.GetRecordCount("nothing"), -1);
    EXPECT_EQ(database.Delete("订单", "  name = '螺丝'"), 1);
    EXPECT_EQ(database.GetRecordCount("\"订单\""), 3);
    EXPECT_EQ(database.Delete("订单", "id ="), 0);
    EXPECT_THAT(Error(database), HasSubstr("DELETE  FROM \"订单\" WHERE id ="));
    EXPECT_EQ(database.TruncateTable("订单"), 1) << "a DELETE, as on DB2";
    EXPECT_EQ(database.GetRecordCount("\"订单\""), 0);
    Run(database, {"insert into \"订单\" values (5, NULL)"});
    EXPECT_EQ(database.Delete("订单", "   "), 1);
    EXPECT_EQ(database.GetRecordCount("\"订单\""), 0);
    EXPECT_EQ(database.DropTable("视图"), 0) << "it is a view";
    EXPECT_EQ(database.DropView("视图"), 1);
    EXPECT_EQ(database.DropTable("订单"), 1);
    EXPECT_EQ(database.DropTable("订单"), 0);
    EXPECT_EQ(database.DropProcedure("P"), 0) << "there are no procedures here";

    CTDatabase oracle;
    Open(oracle, "Oracle");
    Run(oracle, {"create table t (id integer)"});
    EXPECT_EQ(oracle.TruncateTable("t"), 0) << "a command that this system has not";
    EXPECT_THAT(Error(oracle), HasSubstr("TRUNCATE TABLE \"t\" "));
}

// ---- lookups -----------------------------------------------------------------------------------------------------

TEST_F(SqliteScripts, ValuesAreLookedUp) {
    CTDatabase database;
    Open(database);
    Run(database, {"create table t (id integer primary key, name varchar(20), price double, made timestamp)",
                   "insert into t values (1, '螺丝', 1.5, '2020-02-29 13:45:06'), (2, 'b', NULL, NULL)"});
    EXPECT_STREQ(VariantToString(database.GetFirstValue("select * from t order by id", "NAME")), "螺丝");
    EXPECT_STREQ(VariantToString(database.GetFirstValue("select * from t order by id desc", 1L)), "b");
    EXPECT_EQ(V_VT(&database.GetFirstValue("select price from t where id = 2", 0L)), VT_NULL);
    EXPECT_EQ(V_VT(&database.GetFirstValue("select * from t where id = 9", 0L)), VT_EMPTY);
    EXPECT_EQ(V_VT(&database.GetFirstValue("select * from nothing", 0L)), VT_EMPTY);
    EXPECT_STREQ(database.GetSpecialValue("select * from t order by id", "name|price|made"),
                 "螺丝|        1.5|2020-02-29 13:45:06");
    EXPECT_STREQ(database.GetSpecialValue("select * from t order by id", "made"), "1");
    EXPECT_STREQ(database.GetSpecialValue("select * from t where id = 2", "name|price|made"), "b");
    EXPECT_STREQ(database.GetSpecialValue("select * from nothing", "name"), "");
    EXPECT_STREQ(database.GetRecordValues("select * from t order by id", "|"),
                 "1|螺丝|        1.5|2020-02-29 13:45:06\r\n2|b\r\n");
    EXPECT_STREQ(database.GetRecordValues("select * from t where id = 9", "|"), "");
    EXPECT_STREQ(database.GetRecordValues("not a query", "|"), "");
}

TEST_F(SqliteScripts, EveryRowOfALargeResultIsReadOnce) {
    CTDatabase database;
    Open(database);
    for (const int count : {1, 999, 1000, 1001, 3000, 4321}) {
        SCOPED_TRACE(count);
        const std::string sql = "with recursive n (i) as (select 1 union all select i + 1 from n where i < " +
                                std::to_string(count) + ") select i, 'x' || i from n";
        std::string expected;
        for (int i = 1; i <= count; ++i)
            expected += std::to_string(i) + "|x" + std::to_string(i) + "\r\n";
        EXPECT_TRUE(database.GetRecordValues(sql.c_str(), "|") == expected.c_str());
    }
}

TEST_F(SqliteScripts, ARecordsetIsStoredAndOpenedAgain) {
    CTDatabase database;
    Open(database);
    Run(database, {"create table t (id integer primary key, name varchar(20))", "insert into t values (1, '螺丝')"});
    const std::string file = folder_.File("rows.adtg");
    EXPECT_EQ(database.StoreRecordsetToFile("select * from t", file.c_str()), 1) << Error(database);
    EXPECT_EQ(database.StoreRecordsetToFile("select * from t", file.c_str()), 1) << "over the file of before";
    EXPECT_EQ(IsFileExist(file.c_str()), 1);
    EXPECT_EQ(database.StoreRecordsetToFile("select * from t", folder_.File("no/such/folder").c_str()), 0);
    EXPECT_THAT(Error(database), HasSubstr("SaveAsFile!"));
    EXPECT_EQ(database.StoreRecordsetToFile("select * from nothing", folder_.File("other").c_str()), 0);
    EXPECT_EQ(IsFileExist(folder_.File("other").c_str()), 0);
}

TEST_F(SqliteScripts, TheConnectionIsDescribed) {
    CTDatabase database;
    Open(database, "Oracle");
    EXPECT_EQ(std::string(database.GetDbInfor()),
              "Oracle:" + std::string(database.GetServer()) + ":" + std::string(database.GetCurDbName()));
}

TEST_F(SqliteScripts, AThreadMovesRowsOfARecordset) {
    CTDatabase database;
    Open(database);
    Run(database, {"create table t (id integer primary key, name varchar(20), note text)",
                   "insert into t values (1, '螺丝', 'It''s'), (2, 'b', NULL), (3, NULL, 'c'), (4, 'd', 'd')"});
    CStringList rows;
    CString names;
    COleDispatchDriver source(database.GetRecordset("select * from t order by id"));
    MSG message;
    PeekMessage(&message, nullptr, 0, 0, PM_NOREMOVE);
    struct {
        DWORD notifiedThread;
        CStringList* rows;
        CString* names;
        IDispatch* source;
        CTDatabase* database;
    } block = {GetCurrentThreadId(), &rows, &names, source.m_lpDispatch, &database};
    std::thread([&] { EXPECT_EQ(Mover::OnDataMove(&block), 0u); }).join();
    std::vector<std::string> moved;
    for (POSITION at = rows.GetHeadPosition(); at != nullptr;)
        moved.emplace_back(rows.GetNext(at));
    EXPECT_THAT(moved, ElementsAre("1,'螺丝','It''s'", "2,'b'", "3,,'c'"));
    EXPECT_STREQ(names, "id,name,note");
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(PeekMessage(&message, nullptr, 0, 0, PM_REMOVE));
        EXPECT_EQ(message.message, 1224u);
    }
    EXPECT_FALSE(PeekMessage(&message, nullptr, 0, 0, PM_REMOVE));
}

}  // namespace
}  // namespace tk::test
