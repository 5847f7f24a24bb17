// The catalog of a server: schemata, procedures, named keys, sessions of other databases; and a server that stands in
// for DB2, with the table that DB2 is asked for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalog/listed_names.h"
#include "catalog/odd_circumstances.h"
#include "support/postgres_server.h"
#include "support/registered_class.h"
#include "tkkernel/driver.h"

namespace tk::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

PostgresServer& TheServer() {
    static PostgresServer server;
    return server;
}

/// The schema "tester" is the one of the user of that name.
void Prepare(CTDatabase& database) {
    static bool prepared = false;
    if (prepared) return;
    static constexpr const char* kStatements[] = {
        "create schema tester",
        "create schema \"库\"",
        "create table tester.\"订单\" (\"编号\" integer not null, \"名称\" varchar(20) not null default '无', \"单价\" "
        "numeric(10,2), constraint \"PK_订单\" primary key (\"编号\"))",
        "create table tester.\"Order Lines\" (\"OrderId\" integer, line smallint, made timestamp, constraint pk_lines "
        "primary key (line, \"OrderId\"), constraint \"FK_Order\" foreign key (\"OrderId\") references "
        "tester.\"订单\" (\"编号\"))",
        "create table \"库\".other (id integer constraint pk_other primary key, \"订单\" integer constraint fk_other "
        "references tester.\"订单\" (\"编号\"))",
        "create index ix_other on \"库\".other (\"订单\")",
        "create view tester.\"视图\" as select \"编号\" from tester.\"订单\"",
        "create index \"IX_名称\" on tester.\"订单\" (\"名称\")",
        "create function tester.p_save() returns integer language sql as 'select 1'",
        "create function \"库\".p_load() returns integer language sql as 'select 1'",
        "create schema sysibm",
        "create table sysibm.syskeycoluse (colname varchar(128), tbname varchar(128), tbcreator varchar(128), colseq "
        "integer)",
        "insert into sysibm.syskeycoluse values ('ID', 'ORDERS', 'DB2ADMIN', 1), ('编号', 'ORDERS', 'DB2ADMIN', 2), "
        "('X', 'ORDERS', 'OTHER', 1), ('Y', 'orders', 'DB2ADMIN', 1)",
    };
    for (const char* statement : kStatements)
        ASSERT_EQ(database.ExecuteSQL(statement), 1) << statement << "\n" << database.GetLastErrorString();
    prepared = true;
}

class PostgresCatalog : public ::testing::Test {
protected:
    void Open(CTDatabase& database, const char* dbmsName = nullptr) {
        std::string connection = TheServer().ConnectionString();
        if (dbmsName != nullptr) connection += std::string(";DBMS Name=") + dbmsName;
        ASSERT_EQ(database.Open(connection.c_str()), 1) << database.GetLastErrorString();
        Prepare(database);
    }

    Apartment apartment_;
};

TEST_F(PostgresCatalog, ListsWhatTheServerHas) {
    CTDatabase database;
    Open(database);
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllTables(ar); }),
                ElementsAre("syskeycoluse", "Order Lines", "订单", "other"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllViews(ar); }), Contains("视图"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("订单", ar); }),
                ElementsAre("编号", "名称", "单价"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllDatabases(ar); }), Contains("postgres"));
    const auto schemata = Names([&](CStringArray& ar) { return database.GetSchemas(ar); });
    EXPECT_THAT(schemata, Contains("tester"));
    EXPECT_THAT(schemata, Contains("库"));
    auto all = Names([&](CStringArray& ar) { return database.GetAllSchemas(ar); });
    ASSERT_EQ(all.size(), schemata.size() + 1);
    EXPECT_EQ(all.back(), "tester") << "the user once more";
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetTypeNames(ar); }), Contains("varchar"));
}

TEST_F(PostgresCatalog, ProceduresAreThoseOfTheUsersSchema) {
    CTDatabase database;
    Open(database);
    ASSERT_STREQ(database.GetCurSchema(), "tester");
    const auto procedures = Names([&](CStringArray& ar) { return database.GetAllProcedures(ar); });
    EXPECT_THAT(procedures, Contains("p_save"));
    EXPECT_THAT(procedures, Not(Contains("p_load")));
    EXPECT_EQ(database.IsProcedureExist("p_save"), 1);
    EXPECT_EQ(database.IsProcedureExist("P_SAVE"), 0);
    EXPECT_EQ(database.IsProcedureExist("p_load"), 0);
    EXPECT_EQ(database.IsProcedureExist("tester.p_save"), 0) << "nothing is called \"tester.p_save\"";
}

TEST_F(PostgresCatalog, KeysHaveNames) {
    CTDatabase database;
    Open(database);
    EXPECT_STREQ(database.GetPrimaryKey("订单"), "编号");
    EXPECT_STREQ(database.GetPrimaryKeyName("订单"), "PK_订单");
    EXPECT_STREQ(database.GetPrimaryKey("Order Lines"), "line,OrderId");
    EXPECT_STREQ(database.GetPrimaryKeyName("Order Lines"), "pk_lines");
    EXPECT_STREQ(database.GetPrimaryKey("syskeycoluse"), "");
    EXPECT_STREQ(database.GetPrimaryKey("no such"), "");
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetForeignKeyNames("Order Lines", ar); }),
                ElementsAre("FK_Order"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetForeignKeyNames("订单", ar); }), IsEmpty());
}

TEST_F(PostgresCatalog, IndexesAreThoseOfTheUsersSchema) {
    CTDatabase database;
    Open(database);
    CStringArray names;
    EXPECT_EQ(database.GetAllIndexes(names), 1);
    EXPECT_STREQ(names[0], "IX_名称");
}

TEST_F(PostgresCatalog, ExistenceAndNulls) {
    CTDatabase database;
    Open(database);
    static const struct {
        const char* name;
        int exists;
    } kRows[] = {{"订单", 1},    {"Order Lines", 1}, {"视图", 1},    {"other", 1},  {"order lines", 0},
                 {"no such", 0}, {"o%", 0},          {"IX_名称", 0}, {"PK_订单", 0}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(database.IsTableExist(row.name), row.exists);
    }
    EXPECT_EQ(database.IsFieldNull("订单", "单价"), 1);
    EXPECT_EQ(database.IsFieldNull("syskeycoluse", "colname"), 0);
}

// Its driver looks for tables without a schema only where the user's own are.
TEST_F(PostgresCatalog, ATableOfAnotherSchemaIsFoundWithoutIt) {
    CTDatabase database;
    Open(database);
    EXPECT_EQ(database.IsTableExist("other"), 1);
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("other", ar); }), ElementsAre("id", "订单"));
    EXPECT_STREQ(database.GetPrimaryKey("other"), "id");
    EXPECT_STREQ(database.GetPrimaryKeyName("other"), "pk_other");
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetForeignKeyNames("other", ar); }),
                ElementsAre("fk_other"));
    CTRecordset indexes(&database);
    COleDispatchDriver rowset(database.GetIndexSet("other", "ix_other", nullptr));
    ASSERT_EQ(indexes.OpenField(rowset.m_lpDispatch), 1);
    ASSERT_EQ(indexes.GetRecordCount(), 1);
    EXPECT_STREQ(indexes.GetStringValue("TABLE_SCHEMA"), "库");
    EXPECT_STREQ(indexes.GetStringValue("COLUMN_NAME"), "订单");
}

TEST_F(PostgresCatalog, TheUsersOwnTableHidesOthersOfItsName) {
    CTDatabase database;
    Open(database);
    ASSERT_EQ(
        database.ExecuteSQL("create table \"库\".shared (far integer); create table tester.shared (near integer)"), 1);
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("shared", ar); }), ElementsAre("near"));
    CStringArray names;
    COleDispatchDriver rowset(database.GetFieldSet("shared", "库"));
    CTRecordset columns(&database);
    ASSERT_EQ(columns.OpenField(rowset.m_lpDispatch), 1);
    EXPECT_EQ(columns.GetFieldNames(names), 1);
    EXPECT_STREQ(names[0], "far");
    EXPECT_EQ(database.ExecuteSQL("drop table \"库\".shared; drop table tester.shared"), 1);
}

TEST_F(PostgresCatalog, WritesTheTableInTheDialectAskedFor) {
    CTDatabase database;
    Open(database, "DB2");
    EXPECT_STREQ(database.GetTableStruct("Order Lines"),
                 "CREATE TABLE \"ORDER LINES\" (\r\n"
                 "\t\"ORDERID\"\tINT\t\t NOT NULL,\r\n"
                 "\t\"LINE\"\tSMALLINT\t\t NOT NULL,\r\n"
                 "\t\"MADE\"\tTIMESTAMP ,\r\n"
                 "\tPRIMARY KEY (\"LINE\",\"ORDERID\"))");
}

TEST_F(PostgresCatalog, ADb2StandInTellsItsKeys) {
    CTDatabase database;
    Open(database, "DB2/LINUX");
    EXPECT_STREQ(database.GetDB2PrimaryKey("ORDERS", "DB2ADMIN"), "ID,编号");
    EXPECT_STREQ(database.GetDB2PrimaryKey("ORDERS", "OTHER"), "X");
    EXPECT_STREQ(database.GetDB2PrimaryKey("orders", "DB2ADMIN"), "Y");
    EXPECT_STREQ(database.GetDB2PrimaryKey("ORDERS", "nobody"), "");
    EXPECT_STREQ(database.GetDB2PrimaryKey("a'b", "DB2ADMIN"), "") << "names are inserted as they are";
    EXPECT_THAT(std::string(database.GetLastErrorString()), ::testing::HasSubstr("syntax error"));
}

TEST_F(PostgresCatalog, ADb2StandInTellsTheColumnsOfItsIndexes) {
    CTDatabase database;
    Open(database, "DB2/LINUX");
    for (const char* statement :
         {"create table sysibm.sysindexes (name varchar(128), tbname varchar(128), colnames varchar(640))",
          "insert into sysibm.sysindexes values ('IX_名称', '订单', '+名称-单价'), ('IX_名称', 'OTHER', '+X')"}) {
        ASSERT_EQ(database.ExecuteSQL(statement), 1) << database.GetLastErrorString();
    }
    EXPECT_STREQ(database.GetIndex("订单", "IX_名称", nullptr), "名称,单价");
    EXPECT_STREQ(database.GetIndex("订单", "ix_名称", nullptr), "");
    CStringArray statements;
    EXPECT_EQ(database.GetIndexesContext("订单", statements), 1);
    ASSERT_EQ(statements.GetSize(), 1);
    EXPECT_STREQ(statements[0], "CREATE INDEX \"IX_名称\" ON \"订单\" (\"名称\",\"单价\")");
    EXPECT_EQ(database.ExecuteSQL("drop table sysibm.sysindexes"), 1);
    EXPECT_STREQ(database.GetIndex("订单", "IX_名称", nullptr), "ERROR!");
    EXPECT_STREQ(database.GetAllIndexName("订单"), "\"ERROR!\"");
}

TEST_F(PostgresCatalog, TellsNothingOfATableThatIsGone) {
    CTDatabase database;
    CTDatabase other;
    Open(database, "Microsoft SQL Server");
    Open(other);
    ExpectNothingOfATableThatIsGone(database, other);
}

TEST_F(PostgresCatalog, AClosedConnectionTellsNothing) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    database.Close();
    ExpectNothingOfAClosedConnection(database);
}

TEST_F(PostgresCatalog, ShowsTheTablesOfASchemaWithoutRightsAndNothingInThem) {
    CTDatabase database;
    Open(database);
    for (const char* statement : {"create role guest login password 'pw'", "create schema shut",
                                  "create table shut.secret (id integer not null primary key, n integer)"}) {
        ASSERT_EQ(database.ExecuteSQL(statement), 1) << database.GetLastErrorString();
    }
    std::string connection = TheServer().ConnectionString() + ";DBMS Name=Microsoft SQL Server";
    connection.replace(connection.find("UID=tester"), 10, "UID=guest");
    {
        CTDatabase guest;
        ASSERT_EQ(guest.Open(connection.c_str()), 1) << guest.GetLastErrorString();
        EXPECT_EQ(guest.IsTableExist("secret"), 1);
        EXPECT_STREQ(
            guest.GetTableStruct("secret"),
            "CREATE TABLE \"SECRET\" (\r\n\t\"ID\"\tINT\t\t NOT NULL,\r\n\t\"N\"\tINT ,\r\n\tPRIMARY KEY (\"ID\"))");
        EXPECT_EQ(guest.GetRecordCount("shut.secret"), -1);
        EXPECT_STREQ(guest.GetSpecialValue("select * from shut.secret", "id"), "");
        EXPECT_EQ(guest.ExecuteSQL("drop table shut.secret"), 0);
        EXPECT_THAT(std::string(guest.GetLastErrorString()), ::testing::HasSubstr("权限不足"));
    }
    EXPECT_EQ(database.ExecuteSQL("drop schema shut cascade; drop role guest"), 1) << database.GetLastErrorString();
}

TEST_F(PostgresCatalog, AServerThatIsGoneIsToldAsSuch) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    TheServer().Stop();
    CStringArray names;
    EXPECT_EQ(database.GetAllFields("订单", names), 0);
    const std::string error(database.GetLastErrorString());
    EXPECT_THAT(error, ::testing::HasSubstr("OpenSchema"));
    EXPECT_EQ(database.GetAllTables(names), 0);
    EXPECT_EQ(names.GetSize(), 0);
    EXPECT_STREQ(database.GetTableStruct("订单"), "");
    EXPECT_EQ(database.GetIndexNames("订单", names, nullptr), 0);
    EXPECT_EQ(database.IsTableExist("订单"), 0);
    EXPECT_EQ(database.GetRecordCount("tester.\"订单\""), -1);
    TheServer().Start();
    CTDatabase again;
    Open(again);
    EXPECT_EQ(again.IsTableExist("订单"), 1);
}

}  // namespace
}  // namespace tk::test
