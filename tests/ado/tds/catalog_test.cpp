// The catalog of the server as rowsets, and the texts of its views and procedures.
#include "tds_test.h"

namespace tk::ado::test {
namespace {

class TdsCatalogTest : public TdsTest {
protected:
    void SetUp() override {
        TdsTest::SetUp();
        Do(u"create table maker (land nvarchar(30) not null, code char(4) not null, name nvarchar(40), "
           u"constraint PK_厂家 primary key (land, code))");
        Do(u"create table 货物 (id integer primary key, name nvarchar(20) not null default N'无', price "
           u"decimal(12,2), made datetime, body ntext, code char(4), land nvarchar(30), "
           u"constraint FK_货物 foreign key (land, code) references maker (land, code) on delete cascade)");
        Do(u"create unique index IX_货物 on 货物 (name desc, price)");
        Do(u"create index IX_land on 货物 (land)");
        Do(u"create view cheap as select * from 货物 where price < 10");
    }
    Object Schema(LONG number, const std::vector<Value>& restrictions = {}) const {
        const Outcome outcome = connection_.Call(connection::kOpenSchema, {Number(number), Array(restrictions)});
        EXPECT_TRUE(outcome.Ok()) << outcome;
        return outcome.Result();
    }
    enum : LONG {
        kCatalogs = 1,
        kColumns = 4,
        kIndexes = 12,
        kProcedures = 16,
        kSchemata = 17,
        kTables = 20,
        kProviderTypes = 22,
        kProcedureParameters = 26,
        kForeignKeys = 27,
        kPrimaryKeys = 28
    };
};

TEST_F(TdsCatalogTest, ListsTablesAndViews) {
    const auto names = {u"TABLE_CATALOG", u"TABLE_SCHEMA", u"TABLE_NAME", u"TABLE_TYPE"};
    EXPECT_EQ(List(Schema(kTables), names), ToUtf8(u"test,dbo,maker,TABLE;test,dbo,货物,TABLE;test,dbo,cheap,VIEW;"));
    EXPECT_EQ(List(Schema(kTables, {Value(), Text(u"dbo"), Value(), Text(u"VIEW")}), {u"TABLE_NAME"}), "cheap;");
    EXPECT_EQ(List(Schema(kTables, {Value(), Value(), Text(u"货物")}), {u"TABLE_NAME"}), ToUtf8(u"货物;"));
    EXPECT_EQ(List(Schema(kTables, {Value(), Text(u"other")}), {u"TABLE_NAME"}), "");
}

TEST_F(TdsCatalogTest, ListsColumns) {
    const Object columns = Schema(kColumns, {Value(), Value(), Text(u"货物")});
    EXPECT_EQ(List(columns, {u"COLUMN_NAME", u"ORDINAL_POSITION", u"DATA_TYPE", u"COLUMN_FLAGS", u"IS_NULLABLE"}),
              "id,1,3,20,0;name,2,130,4,0;price,3,131,116,-1;made,4,135,116,-1;body,5,130,228,-1;code,6,129,116,-1;"
              "land,7,130,100,-1;");
    columns.Call(recordset::kMoveFirst);
    EXPECT_EQ(List(columns, {u"COLUMN_NAME", u"CHARACTER_MAXIMUM_LENGTH", u"NUMERIC_PRECISION", u"NUMERIC_SCALE"}),
              "id,NULL,10,NULL;name,20,NULL,NULL;price,NULL,12,2;made,NULL,NULL,NULL;body,1073741823,NULL,NULL;"
              "code,4,NULL,NULL;land,30,NULL,NULL;");
    columns.Call(recordset::kMoveFirst);
    EXPECT_EQ(List(columns, {u"COLUMN_HASDEFAULT", u"COLUMN_DEFAULT"}).substr(0, 24),
              ToUtf8(u"0,NULL;-1,('无');0,NULL"));
}

TEST_F(TdsCatalogTest, ListsColumnsWithoutLimit) {
    Do(u"create table unlimited (a varchar(max), b nvarchar(max), c varbinary(max), d varchar(8000), e nvarchar(4000), "
       u"f text, g image, h binary(8))");
    const Object columns = Schema(kColumns, {Value(), Value(), Text(u"unlimited")});
    // The server tells their size as 0.
    EXPECT_EQ(List(columns, {u"COLUMN_NAME", u"DATA_TYPE", u"COLUMN_FLAGS", u"CHARACTER_MAXIMUM_LENGTH",
                             u"CHARACTER_OCTET_LENGTH"}),
              "a,129,228,2147483647,2147483647;b,130,228,1073741823,2147483646;c,128,228,2147483647,2147483647;"
              "d,129,100,8000,8000;e,130,100,4000,8000;f,129,228,2147483647,2147483647;"
              "g,128,228,2147483647,2147483647;h,128,116,8,8;");
}

TEST_F(TdsCatalogTest, ListsKeys) {
    EXPECT_EQ(List(Schema(kPrimaryKeys, {Value(), Value(), Text(u"maker")}),
                   {u"TABLE_SCHEMA", u"COLUMN_NAME", u"ORDINAL", u"PK_NAME"}),
              ToUtf8(u"dbo,land,1,PK_厂家;dbo,code,2,PK_厂家;"));
    EXPECT_EQ(List(Schema(kPrimaryKeys, {Value(), Value(), Text(u"货物")}), {u"COLUMN_NAME", u"PK_NAME"}),
              ToUtf8(u"id,PK_货物;"));
    const auto names = {u"PK_TABLE_NAME", u"PK_COLUMN_NAME", u"FK_TABLE_NAME", u"FK_COLUMN_NAME", u"ORDINAL",
                        u"UPDATE_RULE",   u"DELETE_RULE",    u"FK_NAME",       u"PK_NAME"};
    const std::string keys = ToUtf8(
        u"maker,land,货物,land,1,NO ACTION,CASCADE,FK_货物,PK_厂家;"
        u"maker,code,货物,code,2,NO ACTION,CASCADE,FK_货物,PK_厂家;");
    EXPECT_EQ(List(Schema(kForeignKeys, {Value(), Value(), Value(), Value(), Value(), Text(u"货物")}), names), keys);
    EXPECT_EQ(List(Schema(kForeignKeys, {Value(), Value(), Text(u"maker")}), names), keys);
}

TEST_F(TdsCatalogTest, ListsIndexes) {
    const auto names = {u"INDEX_SCHEMA", u"INDEX_NAME",  u"PRIMARY_KEY",      u"UNIQUE",
                        u"CLUSTERED",    u"COLUMN_NAME", u"ORDINAL_POSITION", u"COLLATION"};
    EXPECT_EQ(List(Schema(kIndexes, {Value(), Value(), Value(), Value(), Text(u"货物")}), names),
              ToUtf8(u"dbo,PK_货物,-1,-1,-1,id,1,1;dbo,IX_货物,0,-1,0,name,1,2;dbo,IX_货物,0,-1,0,price,2,1;"
                     u"dbo,IX_land,0,0,0,land,1,1;"));
    EXPECT_EQ(
        List(Schema(kIndexes, {Value(), Text(u"dbo"), Text(u"IX_land"), Value(), Text(u"货物")}), {u"COLUMN_NAME"}),
        "land;");
}

TEST_F(TdsCatalogTest, ListsProceduresDatabasesAndTypes) {
    server_.Define({ToUtf8(u"p_存货"), {{"@id", "int"}, {"@total", "decimal(12,2)", true}}, "select 1", ""});
    EXPECT_EQ(List(Schema(kProcedures), {u"PROCEDURE_SCHEMA", u"PROCEDURE_NAME"}), ToUtf8(u"dbo,p_存货;1;"));
    EXPECT_EQ(List(Schema(kCatalogs), {u"CATALOG_NAME"}), "test;");
    EXPECT_EQ(List(Schema(kSchemata), {u"SCHEMA_NAME"}), "dbo;");
    const std::string types = List(Schema(kProviderTypes), {u"TYPE_NAME", u"DATA_TYPE", u"COLUMN_SIZE"});
    for (const char* type : {"int,3,10;", "nvarchar,130,4000;", "datetime,135,23;", "image,128,2147483647;"})
        EXPECT_NE(types.find(type), std::string::npos) << type << " in " << types;
}

TEST_F(TdsCatalogTest, ReadsSourcesInPieces) {
    std::u16string source = u"CREATE PROCEDURE p_save AS\r\n";
    while (source.size() < 600)
        source += u"-- 保存库存\r\n";
    server_.SetSource("p_save", ToUtf8(source));
    const Object rows = connection_.Call(connection::kExecute, {Text(u"SP_HELPTEXT \"p_save\"")}).Result();
    std::string whole;
    int count = 0;
    for (; !rows.Get(recordset::kEof).True(); rows.Call(recordset::kMoveNext), ++count)
        whole += ValueOf(rows, u"Text");
    EXPECT_EQ(count, 3);
    EXPECT_EQ(whole, ToUtf8(source));
    EXPECT_EQ(AskFor(u"SP_HELPTEXT \"cheap\""), ToUtf8(u"CREATE VIEW cheap as select * from 货物 where price < 10"));
    Fail(u"SP_HELPTEXT \"nosuch\"");
    EXPECT_EQ(FirstError().substr(0, 5), "15009");
}

}  // namespace
}  // namespace tk::ado::test
