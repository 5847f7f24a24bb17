// The catalog members against a server that calls itself Microsoft SQL Server: nothing is named otherwise here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalog/listed_names.h"
#include "support/registered_class.h"
#include "support/tds/tds_server.h"
#include "tkkernel/driver.h"
#include "tkwin32/text.h"

namespace tk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::string Utf8(const std::string& gbk) {
    return text::GbkToUtf8(gbk);
}

class SqlServerCatalog : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(database_.Open(server_.ConnectionString().c_str()), 1) << Error();
        static constexpr const char* kStatements[] = {
            "create table \"厂家\" (land nvarchar(30) not null, code char(4) not null, name nvarchar(40), "
            "constraint PK_maker primary key (land, code))",
            "create table goods (id integer primary key, name nvarchar(20) not null default N'无', price "
            "decimal(12,2), "
            "made datetime, sold bit, kind tinyint, weight real, size float, cost money, code varchar(8), body ntext, "
            "note text, longer nvarchar(max), picture image, data varbinary(16), mark uniqueidentifier, land "
            "nvarchar(30), constraint FK_maker foreign key (land, code) references \"厂家\" (land, code))",
            "create index IX_name on goods (name, price)",
            "create unique index \"IX_代码\" on goods (code)",
            "create view cheap as select id, name from goods where price < 10",
        };
        for (const char* statement : kStatements)
            ASSERT_EQ(database_.ExecuteSQL(statement), 1) << statement << "\n" << Error();
    }
    std::string Error() { return std::string(database_.GetLastErrorString()); }

    Apartment apartment_;
    TdsServer server_;
    CTDatabase database_;
};

TEST_F(SqlServerCatalog, IsKnownByItsOwnName) {
    EXPECT_STREQ(database_.GetDbmsName(), "Microsoft SQL Server");
    EXPECT_STREQ(database_.GetDBMS(), "Mic");
    EXPECT_STREQ(database_.GetCurSchema(), "dbo");
    EXPECT_STREQ(database_.GetCurDbName(), "test");
    EXPECT_THAT(std::string(database_.GetDbInfor()), HasSubstr("Microsoft SQL Server:"));
    EXPECT_THAT(std::string(database_.GetDbInfor()), HasSubstr(":test"));
}

TEST_F(SqlServerCatalog, ListsWhatTheServerHas) {
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetAllTables(ar); }), ElementsAre("goods", "厂家"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetAllViews(ar); }), ElementsAre("cheap"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetAllFields("厂家", ar); }),
                ElementsAre("land", "code", "name"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetAllDatabases(ar); }), ElementsAre("test"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetSchemas(ar); }), ElementsAre("dbo"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetAllSchemas(ar); }), ElementsAre("dbo", "sa"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetTypeNames(ar); }),
                ::testing::IsSupersetOf({"int", "nvarchar", "datetime", "image"}));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetAllProcedures(ar); }), IsEmpty());
    EXPECT_EQ(database_.IsTableExist("goods"), 1);
    EXPECT_EQ(database_.IsViewExist("cheap"), 1);
    EXPECT_EQ(database_.IsTableExist("NOSUCH"), 0);
    EXPECT_EQ(database_.IsTableExist("good_"), 0) << "no pattern";
    EXPECT_EQ(database_.IsFieldNull("goods", "name"), 1);
}

TEST_F(SqlServerCatalog, ListsProceduresWithoutTheirNumbers) {
    server_.Define({Utf8("P_保存"), {{"@id", "int"}}, "select 1", ""});
    server_.Define({"P_SAVE", {}, "select 1", ""});
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetAllProcedures(ar); }),
                ElementsAre("P_SAVE", "P_保存"));
    CTRecordset rows(&database_);
    const COleDispatchDriver rowset(database_.GetProcedureSet("dbo"));
    ASSERT_EQ(rows.OpenField(rowset.m_lpDispatch), 1);
    EXPECT_STREQ(rows.GetStringValue("PROCEDURE_NAME"), "P_SAVE;1");
    // A procedure is there by its name, with the number and without it.
    EXPECT_EQ(database_.IsProcedureExist("P_SAVE"), 1);
    EXPECT_EQ(database_.IsProcedureExist("P_SAVE;1"), 1);
    EXPECT_EQ(database_.IsProcedureExist("P_SAVE;2"), 0);
    EXPECT_EQ(database_.IsProcedureExist("P_保存"), 1);
    EXPECT_EQ(database_.IsProcedureExist("P_NONE"), 0);
    EXPECT_EQ(database_.IsProcedureExist("P_SAV_"), 0);
}

TEST_F(SqlServerCatalog, KnowsKeysAndIndexes) {
    EXPECT_STREQ(database_.GetPrimaryKey("厂家"), "land,code");
    EXPECT_STREQ(database_.GetPrimaryKeyName("厂家"), "PK_maker");
    EXPECT_STREQ(database_.GetPrimaryKey("goods"), "id");
    EXPECT_STREQ(database_.GetPrimaryKey("cheap"), "");
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetForeignKeyNames("goods", ar); }),
                ElementsAre("FK_maker"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database_.GetIndexNames("goods", ar, nullptr); }),
                ElementsAre("IX_代码", "IX_name"));
    EXPECT_STREQ(database_.GetIndex("goods", "IX_name", "dbo"), "name,price");
    EXPECT_STREQ(database_.GetIndex("goods", "IX_none", nullptr), "");
    EXPECT_STREQ(database_.GetAllIndexName("goods"), "\"code\",\"name\",\"price\"");
    CStringArray names;
    EXPECT_EQ(database_.GetAllIndexes(names), 2);
    CStringArray statements;
    ASSERT_EQ(database_.GetIndexesContext("goods", statements), 1);
    ASSERT_EQ(statements.GetSize(), 2);
    EXPECT_STREQ(statements[0], "CREATE INDEX \"IX_代码\" ON \"GOODS\" (\"CODE\")");
    EXPECT_STREQ(statements[1], "CREATE INDEX \"IX_NAME\" ON \"GOODS\" (\"NAME\",\"PRICE\")");
}

constexpr char kGoods[] =
    "CREATE TABLE \"GOODS\" (\r\n"
    "\t\"ID\"\tINT\t\t NOT NULL,\r\n"
    "\t\"NAME\"\tNVARCHAR (20)\t\t NOT NULL\tDEFAULT (('无')),\r\n"
    "\t\"PRICE\"\tNUMERIC (12,2),\r\n"
    "\t\"MADE\"\tDATETIME,\r\n"
    "\t\"SOLD\"\tBIT,\r\n"
    "\t\"KIND\"\tTINYINT,\r\n"
    "\t\"WEIGHT\"\tREAL,\r\n"
    "\t\"SIZE\"\tFLOAT,\r\n"
    "\t\"COST\"\tNUMERIC (19,4),\r\n"
    "\t\"CODE\"\tVARCHAR (8),\r\n"
    "\t\"BODY\"\tNTEXT (1073741823),\r\n"
    "\t\"NOTE\"\tTEXT,\r\n"
    "\t\"LONGER\"\tNTEXT (1073741823),\r\n"
    "\t\"PICTURE\"\tIMAGE,\r\n"
    "\t\"DATA\"\tVARBINARY (16),\r\n"
    "\t\"MARK\"\tUNIQUEIDENTIFIER,\r\n"
    "\t\"LAND\"\tNVARCHAR (30) ,\r\n"
    "\tPRIMARY KEY (\"ID\"))";

TEST_F(SqlServerCatalog, WritesTablesInItsOwnDialect) {
    EXPECT_STREQ(database_.GetTableStruct("goods"), kGoods);
    EXPECT_STREQ(database_.GetTableStruct("厂家"),
                 "CREATE TABLE \"厂家\" (\r\n"
                 "\t\"LAND\"\tNVARCHAR (30)\t\t NOT NULL,\r\n"
                 "\t\"CODE\"\tCHAR (4)\t\t NOT NULL,\r\n"
                 "\t\"NAME\"\tNVARCHAR (40) ,\r\n"
                 "\tPRIMARY KEY (\"LAND\",\"CODE\"))");
    CTArray<_tagFIELDINFO, _tagFIELDINFO&> fields;
    ASSERT_EQ(database_.GetTableStruct("goods", fields), 1) << Error();
    ASSERT_EQ(fields.GetSize(), 17);
    EXPECT_STREQ(fields[0].szName, "id");
    EXPECT_EQ(fields[0].nPrimaryKey, 1);
    EXPECT_STREQ(fields[1].szType, "NVARCHAR (20)");
    EXPECT_STREQ(fields[1].szDefault, "('无')");
    EXPECT_EQ(fields[1].nHasDefault, -1);
    EXPECT_STREQ(fields[1].szCatalog, "test");
    EXPECT_STREQ(fields[1].szSchema, "dbo");
    EXPECT_EQ(fields[12].nSize, 1073741823);
    EXPECT_EQ(fields[12].nFlags & 0x80u, 0x80u);
}

TEST_F(SqlServerCatalog, ConvertsItsTablesForOtherSystems) {
    const CString script = database_.GetTableStruct("goods");
    EXPECT_STREQ(database_.VeriFySQLPragramer(script, "Mic"), kGoods);
    EXPECT_STREQ(database_.VeriFySQLPragramer(script, "ADA"), kGoods);
    EXPECT_STREQ(database_.VeriFySQLPragramer(script, "DB2"),
                 "CREATE TABLE \"GOODS\" (\r\n"
                 "\t\"ID\"\tINT\t\t NOT NULL,\r\n"
                 "\t\"NAME\"\tLONG VARCHAR \t\t NOT NULL\tWITH DEFAULT (('无')),\r\n"
                 "\t\"PRICE\"\tDECIMAL (12,2),\r\n"
                 "\t\"MADE\"\tTIMESTAMP,\r\n"
                 "\t\"SOLD\"\tBIT,\r\n"
                 "\t\"KIND\"\tSMALLINT,\r\n"
                 "\t\"WEIGHT\"\tREAL,\r\n"
                 "\t\"SIZE\"\tDOUBLE,\r\n"
                 "\t\"COST\"\tDECIMAL (19,4),\r\n"
                 "\t\"CODE\"\tVARCHAR (8),\r\n"
                 "\t\"BODY\"\tNBLOB (1073741823),\r\n"
                 "\t\"NOTE\"\tBLOB,\r\n"
                 "\t\"LONGER\"\tNBLOB (1073741823),\r\n"
                 "\t\"PICTURE\"\tGRPHIC,\r\n"
                 "\t\"DATA\"\tVARBINARY (16),\r\n"
                 "\t\"MARK\"\tUNIQUEIDENTIFIER,\r\n"
                 "\t\"LAND\"\tNVARCHAR (30) ,\r\n"
                 "\tPRIMARY KEY (\"ID\"))");
    const std::string oracle(database_.VeriFySQLPragramer(script, "ORA"));
    for (const char* line :
         {"\"NAME\"\tVARCHAR22 (20)", "\"PRICE\"\tNUMBER (12,2)", "\"MADE\"\tDATE,", "\"BODY\"\tNLONG (1073741823)",
          "\"NOTE\"\tLONG,", "\"PICTURE\"\tLONG ROW", "\"DATA\"\tVARNUMBER (16)"}) {
        EXPECT_THAT(oracle, HasSubstr(line));
    }
    EXPECT_STREQ(database_.VeriFySQLPragramer(script, "SQLite"), kGoods);
    EXPECT_THAT(Error(), HasSubstr("无法识别的数据库管理系统（RDBMS SYSTEM ERROR）!"));
}

TEST_F(SqlServerCatalog, ReadsTheSourcesOfViewsAndProcedures) {
    EXPECT_STREQ(database_.GetViewContext("cheap"), "CREATE VIEW cheap as select id, name from goods where price < 10");
    // Whatever is in it, and wherever the pieces end that it comes in.
    std::vector<std::string> sources = {"CREATE PROCEDURE p AS",
                                        "",
                                        "--",
                                        "\r\n\r\n",
                                        "SELECT '\"' + \"a\"\"b\" -- 'x",
                                        "中",
                                        " leading and trailing ",
                                        "CREATE PROCEDURE p AS\nSELECT '%d %s'"};
    std::string large = "CREATE PROCEDURE p AS\r\n";
    while (large.size() < 9000)
        large += "-- 保存库存 a\r\n";
    sources.push_back(large);
    sources.push_back(std::string(255, 'x'));
    sources.push_back(std::string(254, 'x') + "中中");
    for (const std::string& source : sources) {
        SCOPED_TRACE(source.substr(0, 40));
        server_.SetSource("p", Utf8(source));
        EXPECT_EQ(std::string(database_.GetProcedureContext("p")), source);
        server_.SetSource("cheap", Utf8(source));
        EXPECT_EQ(std::string(database_.GetViewContext("cheap")), source);
    }
    server_.SetSource(Utf8("存 储"), Utf8("CREATE PROCEDURE 存"));
    EXPECT_STREQ(database_.GetProcedureContext("存 储"), "CREATE PROCEDURE 存");
    EXPECT_STREQ(database_.GetProcedureContext("nosuch"), "");
    EXPECT_THAT(Error(), HasSubstr("nosuch"));
    EXPECT_STREQ(database_.GetProcedureContext("a\" select 1 --"), "");
    EXPECT_STREQ(database_.GetProcedureContext(nullptr), "");
}

TEST_F(SqlServerCatalog, LooksValuesUpAndMaintainsData) {
    ASSERT_EQ(
        database_.ExecuteSQL("insert into goods (id, name, price, code) values (1, N'苹果', 1.5, 'a'), (2, N'梨', "
                             "20, ''), (3, N'空', null, null)"),
        1)
        << Error();
    EXPECT_EQ(database_.GetRecordCount("goods"), 3);
    EXPECT_EQ(database_.GetRecordCount("goods where price > 10"), 1);
    EXPECT_EQ(database_.GetRecordCount("nosuch"), -1);
    EXPECT_STREQ(database_.GetSpecialValue("select name, code from goods order by id", "code|name"), "a|苹果");
    EXPECT_STREQ(database_.GetSpecialValue("select name, code from goods order by id", "code"), "苹果")
        << "a single name is not looked at";
    EXPECT_STREQ(database_.GetSpecialValue("select name from goods where id = 9", "name"), "");
    EXPECT_STREQ(database_.GetRecordValues("select name, code from goods order by id", "|"), "苹果|a\r\n梨\r\n空\r\n");
    COleVariant value(database_.GetFirstValue("select name from goods order by id", 0L));
    EXPECT_STREQ(CString(value.bstrVal), "苹果");
    EXPECT_EQ(database_.Delete("goods", "id = 3"), 1) << Error();
    EXPECT_EQ(database_.GetRecordCount("goods"), 2);
    EXPECT_EQ(database_.Delete("goods", "  "), 1) << Error();
    EXPECT_EQ(database_.GetRecordCount("goods"), 0);
    EXPECT_EQ(database_.DropView("cheap"), 1) << Error();
    EXPECT_EQ(database_.DropTable("goods"), 1) << Error();
    EXPECT_EQ(database_.IsTableExist("goods"), 0);
    EXPECT_EQ(database_.DropTable("goods"), 0);
    EXPECT_THAT(Error(), HasSubstr("goods"));
}

}  // namespace
}  // namespace tk::test
