// What tkdb tells of tables, and how it carries them: run as a user runs it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tkdb_run.h"

namespace {

using namespace tk::tools::test;
using testing::HasSubstr;

class TkdbSchema : public Tkdb {
protected:
    void SetUp() override {
        Tkdb::SetUp();
        // U+7F16 U+53F7: a name of Chinese characters
        ASSERT_EQ(
            RunTkdb("exec " + connection_ +
                    " 'create table item (id integer primary key, name varchar(20) not null, price numeric(12,2), "
                    "note text)' 'create unique index item_name on item (name, price)'"
                    " 'create view cheap as select id from item where price < 2'"
                    " 'create table \"\xE7\xBC\x96\xE5\x8F\xB7\" (\"a b\" integer)'"
                    " \"insert into item values (1,'\xE4\xB8\xAD',1.25,null),(2,'b',null,'x')\"")
                .code,
            0);
        target_ = std::string("'Driver=SQLite3;Database=") + folder_ + "/target.db'";
    }

    std::string target_;
};

TEST_F(TkdbSchema, ListsTablesAndViews) {
    EXPECT_EQ(RunTkdb("tables " + connection_ + " --format csv").output,
              "table\r\nitem\r\n\xE7\xBC\x96\xE5\x8F\xB7\r\n");
    EXPECT_EQ(RunTkdb("views " + connection_ + " --format csv").output, "view\r\ncheap\r\n");
    EXPECT_EQ(RunTkdb("tables 'Driver=NoSuchDriver'").code, 1);
}

TEST_F(TkdbSchema, DescribesTheColumnsOfATable) {
    EXPECT_EQ(RunTkdb("describe " + connection_ + " item --format csv").output,
              "column,type,nulls,default,key\r\n"
              "id,integer,no,,yes\r\n"
              "name,varchar(20),no,,\r\n"
              "price,\"numeric(12,2)\",yes,,\r\n"
              "note,text,yes,,\r\n");
    EXPECT_THAT(RunTkdb("describe " + connection_ + " item --format csv --dialect oracle").output,
                HasSubstr("name,VARCHAR2 (20),no,,\r\n"));
    EXPECT_EQ(RunTkdb("describe " + connection_ + " '\xE7\xBC\x96\xE5\x8F\xB7' --format csv").output,
              "column,type,nulls,default,key\r\na b,integer,yes,,\r\n");
    const Outcome missing = RunTkdb("describe " + connection_ + " missing", "2>&1");
    EXPECT_EQ(missing.code, 1);
    EXPECT_EQ(missing.output, "tkdb: no such table or view: missing\n");
}

TEST_F(TkdbSchema, WritesScriptsInADialect) {
    const Outcome script = RunTkdb("script " + connection_ + " item --dialect mssql");
    EXPECT_EQ(script.code, 0);
    EXPECT_EQ(script.output,
              "CREATE TABLE \"ITEM\" (\r\n\t\"ID\"\tINT\t\t NOT NULL,\r\n\t\"NAME\"\tVARCHAR (20)\t\t NOT NULL,\r\n"
              "\t\"PRICE\"\tNUMERIC (12,2),\r\n\t\"NOTE\"\tTEXT ,\r\n\tPRIMARY KEY (\"ID\"))\n"
              "CREATE INDEX \"ITEM_NAME\" ON \"ITEM\" (\"NAME\",\"PRICE\")\n");
    EXPECT_EQ(RunTkdb("indexes " + connection_ + " item --dialect oracle").output,
              "CREATE INDEX \"ITEM_NAME\" ON \"ITEM\" (\"NAME\",\"PRICE\")\n");
    EXPECT_EQ(RunTkdb("script " + connection_ + " item --dialect nonsense").code, 2);
}

TEST_F(TkdbSchema, ConvertsAScriptWithoutADatabase) {
    const Outcome converted = RunTkdb("convert --from mssql --to oracle", "2>/dev/null",
                                      "printf 'create table \"T\" (\"A\" varchar (20))' | ");
    EXPECT_EQ(converted.code, 0);
    EXPECT_EQ(converted.output, "CREATE TABLE \"T\" (\"A\" VARCHAR2 (20))");
    EXPECT_EQ(RunTkdb("convert --from mssql --to oracle /no/such/file").code, 2);
    EXPECT_EQ(RunTkdb("convert --from mssql").code, 2);
}

TEST_F(TkdbSchema, CountsRows) {
    EXPECT_EQ(RunTkdb("count " + connection_ + " --format csv").output,
              "table,rows\r\nitem,2\r\n\xE7\xBC\x96\xE5\x8F\xB7,0\r\n");
    EXPECT_EQ(RunTkdb("count " + connection_ + " cheap --format csv").output, "table,rows\r\ncheap,1\r\n");
}

TEST_F(TkdbSchema, CopiesTablesWithTheirKeysAndIndexes) {
    const Outcome copied = RunTkdb("copy " + connection_ + " item '\xE7\xBC\x96\xE5\x8F\xB7' " + target_, "2>&1");
    EXPECT_EQ(copied.code, 0);
    EXPECT_EQ(copied.output, "item: 2 row(s)\n\xE7\xBC\x96\xE5\x8F\xB7: 0 row(s)\n");
    EXPECT_EQ(RunTkdb("query " + target_ + " 'select * from item order by id' --format csv").output,
              "id,name,price,note\r\n1,\xE4\xB8\xAD,1.25,\r\n2,b,,x\r\n");
    EXPECT_EQ(
        RunTkdb("query " + target_ + " 'select sql from sqlite_master order by name' --format json").output,
        "[\n  {\"sql\": \"CREATE TABLE \\\"item\\\" (\\\"id\\\" bigint NOT NULL, \\\"name\\\" varchar(20) NOT NULL, "
        "\\\"price\\\" decimal(12,2), \\\"note\\\" text, PRIMARY KEY (\\\"id\\\"))\"},\n"
        "  {\"sql\": \"CREATE UNIQUE INDEX \\\"item_name\\\" ON \\\"item\\\" (\\\"name\\\", \\\"price\\\")\"},\n"
        "  {\"sql\": null},\n"
        "  {\"sql\": \"CREATE TABLE \\\"\xE7\xBC\x96\xE5\x8F\xB7\\\" (\\\"a b\\\" bigint)\"}\n]\n");
}

TEST_F(TkdbSchema, CopiesATableWithoutIndexesThatNeedMoreThanColumns) {
    ASSERT_EQ(RunTkdb("exec " + connection_ +
                      " 'create unique index partial on item (price) where id > 1'"
                      " 'create index shown on item (lower(name))' 'insert into item values (3,1,1.25,null)'")
                  .code,
              0);
    const Outcome copied = RunTkdb("copy " + connection_ + " item " + target_, "2>&1");
    EXPECT_EQ(copied.code, 0);
    EXPECT_EQ(copied.output,
              "tkdb: item: without its index partial, which is of some rows or of an expression\n"
              "tkdb: item: without its index shown, which is of some rows or of an expression\n"
              "item: 3 row(s)\n");
    EXPECT_EQ(RunTkdb("indexes " + target_ + " item --dialect mssql").output,
              "CREATE INDEX \"ITEM_NAME\" ON \"ITEM\" (\"NAME\",\"PRICE\")\n");
}

TEST_F(TkdbSchema, TakesACopyUpAgain) {
    const std::string copy = "copy " + connection_ + " item " + target_;
    ASSERT_EQ(RunTkdb(copy).code, 0);
    const Outcome again = RunTkdb(copy);
    EXPECT_EQ(again.code, 0);
    EXPECT_EQ(again.output, "item: there already\n");
    ASSERT_EQ(RunTkdb("exec " + connection_ + " \"insert into item values (3,'c',1,null)\"").code, 0);
    const Outcome other = RunTkdb(copy, "2>&1");
    EXPECT_EQ(other.code, 1);
    EXPECT_EQ(other.output, "tkdb: item: there already, with 2 other rows: item\n");
    EXPECT_EQ(RunTkdb(copy + " --replace").output, "item: 3 row(s)\n");
}

TEST_F(TkdbSchema, LeavesNothingOfATableThatCannotBeCopied) {
    ASSERT_EQ(RunTkdb("exec " + connection_ +
                      " 'create table large (id integer, words text)'"
                      " 'insert into large with recursive r(i) as (select 1 union all select i+1 from r where i<30000) "
                      "select i, hex(zeroblob(50)) from r'")
                  .code,
              0);
    ASSERT_EQ(RunTkdb("exec " + target_ + " 'create table log (x text)'").code, 0);
    // A limit on the size of files stands for the full disk: some of the rows are in by then.
    const Outcome failed =
        RunTkdb("copy " + connection_ + " large " + target_, "2>&1", "ulimit -f 2000; trap '' XFSZ; ");
    EXPECT_EQ(failed.code, 1) << failed.output;
    EXPECT_EQ(RunTkdb("tables " + target_ + " --format csv").output, "table\r\nlog\r\n");
    EXPECT_EQ(RunTkdb("copy " + connection_ + " large " + target_).output, "large: 30000 row(s)\n");
}

TEST_F(TkdbSchema, KeepsATableThatCannotBeReplaced) {
    ASSERT_EQ(RunTkdb("exec " + connection_ +
                      " 'create table pair (a integer, b integer)' "
                      "'insert into pair values (1, 1), (1, 2)' 'create table other (a integer)' "
                      "'create index taken on pair (a)'")
                  .code,
              0);
    // The name of the index is another table's there.
    ASSERT_EQ(RunTkdb("exec " + target_ +
                      " 'create table pair (a integer)' 'insert into pair values (7)' "
                      "'create table other (a integer)' 'create index taken on other (a)'")
                  .code,
              0);
    EXPECT_EQ(RunTkdb("copy --replace " + connection_ + " pair " + target_).code, 1);
    EXPECT_EQ(RunTkdb("query " + target_ + " 'select * from pair' --format csv").output, "a\r\n7\r\n");
}

TEST_F(TkdbSchema, StopsAtATableThatIsNotThere) {
    const Outcome failed = RunTkdb("copy " + connection_ + " item missing " + target_, "2>&1");
    EXPECT_EQ(failed.code, 1);
    EXPECT_EQ(failed.output, "item: 2 row(s)\ntkdb: missing: no such table: missing\n");
    EXPECT_EQ(RunTkdb("copy " + connection_ + " item").code, 2);
}

TEST_F(TkdbSchema, CopiesBetweenTwoDialectsByTheScriptOfTheTable) {
    const auto as = [](std::string connection, const char* name) {
        return connection.insert(connection.size() - 1, std::string(";DBMS Name=") + name);
    };
    // As the systems write their names; the tag is compared in any case of letters.
    const std::string target = as(target_, "DB2/NT");
    const Outcome copied = RunTkdb("copy " + as(connection_, "Oracle") + " item " + target, "2>&1");
    EXPECT_EQ(copied.code, 0);
    EXPECT_EQ(copied.output, "item: 2 row(s)\n");
    EXPECT_EQ(RunTkdb("tables " + target + " --format csv").output, "table\r\nITEM\r\n");
    EXPECT_THAT(RunTkdb("query " + target + " 'select sql from sqlite_master' --format csv").output,
                HasSubstr("CREATE INDEX"));
    // What stands behind the name undoes the making of tables.
    ASSERT_EQ(RunTkdb("exec " + target_ + " 'delete from ITEM where ID = 1'").code, 0);
    EXPECT_EQ(RunTkdb("copy --replace " + as(connection_, "Oracle") + " item " + target, "2>&1").output,
              "item: 2 row(s)\n");
}

}  // namespace
