// The catalog of a server whose databases are catalogs and that has no schemata.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalog/listed_names.h"
#include "catalog/odd_circumstances.h"
#include "support/mariadb_server.h"
#include "support/registered_class.h"
#include "tkkernel/driver.h"

namespace tk::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

MariaDbServer& TheServer() {
    static MariaDbServer server;
    return server;
}

class MariaDbCatalog : public ::testing::Test {
protected:
    void Open(CTDatabase& database, const char* dbmsName = nullptr) {
        std::string connection = TheServer().ConnectionString();
        if (dbmsName != nullptr) connection += std::string(";DBMS Name=") + dbmsName;
        ASSERT_EQ(database.Open(connection.c_str()), 1) << database.GetLastErrorString();
    }

    static void SetUpTestSuite() {
        Apartment apartment;
        CTDatabase database;
        ASSERT_EQ(database.Open(TheServer().ConnectionString().c_str()), 1) << database.GetLastErrorString();
        static constexpr const char* kStatements[] = {
            "create table `订单` (`编号` integer not null primary key, `名称` varchar(20) not null default '无', "
            "`单价` "
            "decimal(10,2), key `IX_名称` (`名称`))",
            "create table `Order Lines` (`OrderId` integer not null, line smallint not null, made datetime, note "
            "longtext, "
            "primary key (line, `OrderId`), constraint `FK_Order` foreign key (`OrderId`) references `订单` (`编号`))",
            "create view `视图` as select `编号` from `订单`",
            "create procedure p_save() select 1",
        };
        for (const char* statement : kStatements)
            ASSERT_EQ(database.ExecuteSQL(statement), 1) << statement << "\n" << database.GetLastErrorString();
    }

    Apartment apartment_;
};

TEST_F(MariaDbCatalog, ListsWhatTheServerHas) {
    CTDatabase database;
    Open(database);
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllTables(ar); }), ElementsAre("Order Lines", "订单"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllViews(ar); }), ElementsAre("视图"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("订单", ar); }),
                ElementsAre("编号", "名称", "单价"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllDatabases(ar); }), Contains("test"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetSchemas(ar); }), IsEmpty());
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetTypeNames(ar); }), Contains("VARCHAR"));
}

TEST_F(MariaDbCatalog, KnowsKeysAndIndexes) {
    CTDatabase database;
    Open(database);
    EXPECT_STREQ(database.GetPrimaryKey("订单"), "编号");
    EXPECT_STREQ(database.GetPrimaryKeyName("订单"), "PRIMARY");
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetForeignKeyNames("Order Lines", ar); }),
                ElementsAre("FK_Order"));
    CTRecordset indexes(&database);
    COleDispatchDriver rowset(database.GetIndexSet("订单", nullptr, nullptr));
    ASSERT_EQ(indexes.OpenField(rowset.m_lpDispatch), 1);
    ASSERT_EQ(indexes.GetRecordCount(), 2);
    EXPECT_STREQ(indexes.GetStringValue("INDEX_NAME"), "PRIMARY");
    EXPECT_EQ(indexes.GetIntValue("PRIMARY_KEY"), 1);
    indexes.MoveNext();
    EXPECT_STREQ(indexes.GetStringValue("INDEX_NAME"), "IX_名称");
    EXPECT_EQ(indexes.GetIntValue("PRIMARY_KEY"), 0);
    CStringArray names;
    EXPECT_EQ(database.GetIndexNames("订单", names, nullptr), 1);
    ASSERT_EQ(names.GetSize(), 1);
    EXPECT_STREQ(names[0], "IX_名称");
    EXPECT_EQ(database.GetAllIndexes(names), 0) << "without schemata there is none of the user's name";
}

TEST_F(MariaDbCatalog, ExistenceAndNulls) {
    CTDatabase database;
    Open(database);
    EXPECT_EQ(database.IsTableExist("订单"), 1);
    EXPECT_EQ(database.IsTableExist("视图"), 1);
    EXPECT_EQ(database.IsTableExist("no such"), 0);
    EXPECT_EQ(database.IsFieldNull("订单", "单价"), 1);
}

TEST_F(MariaDbCatalog, WritesTheTableInTheDialectAskedFor) {
    static const struct {
        const char* dbmsName;
        const char* text;
    } kRows[] = {
        {"Microsoft SQL Server",
         "CREATE TABLE \"订单\" (\r\n"
         "\t\"编号\"\tINT\t\t NOT NULL,\r\n"
         "\t\"名称\"\tNVARCHAR (20)\t\t NOT NULL\tDEFAULT ('无'),\r\n"
         "\t\"单价\"\tNUMERIC (10,2) ,\r\n"
         "\tPRIMARY KEY (\"编号\"))"},
        // Its driver describes every text as wide, which Oracle has no type for.
        {"Oracle",
         "CREATE TABLE \"订单\" (\r\n"
         "\t\"编号\"\tFLOAT (10,0)\t\t NOT NULL,\r\n"
         "\t\"名称\"\tUNKNOWN\t\t NOT NULL\tDEFAULT ('无'),\r\n"
         "\t\"单价\"\tNUMBER (10,2) ,\r\n"
         "\tPRIMARY KEY (\"编号\"))"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.dbmsName);
        CTDatabase database;
        Open(database, row.dbmsName);
        EXPECT_STREQ(database.GetTableStruct("订单"), row.text);
    }
}

TEST_F(MariaDbCatalog, TellsNothingOfATableThatIsGone) {
    CTDatabase database;
    CTDatabase other;
    Open(database, "Microsoft SQL Server");
    Open(other);
    ExpectNothingOfATableThatIsGone(database, other);
}

TEST_F(MariaDbCatalog, LongNamesAreCutInRecordsAlone) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    constexpr int kMost = 45;  // in the name of its file each takes five bytes
    ExpectLongNamesAreCutInRecordsAlone(database, kMost, "`");
}

TEST_F(MariaDbCatalog, AClosedConnectionTellsNothing) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    database.Close();
    ExpectNothingOfAClosedConnection(database);
}

TEST_F(MariaDbCatalog, ShowsAUserWhatItHasRightsTo) {
    CTDatabase database;
    Open(database);
    for (const char* statement :
         {"create table secret (id integer not null primary key, n integer)",
          "create user guest@localhost identified by 'pw'", "create user guest@'127.0.0.1' identified by 'pw'",
          "grant select on test.`订单` to guest@localhost", "grant select on test.`订单` to guest@'127.0.0.1'"}) {
        ASSERT_EQ(database.ExecuteSQL(statement), 1) << statement << "\n" << database.GetLastErrorString();
    }
    std::string connection = TheServer().ConnectionString() + ";DBMS Name=Microsoft SQL Server";
    connection.replace(connection.find("UID=tester"), 10, "UID=guest");
    CTDatabase guest;
    ASSERT_EQ(guest.Open(connection.c_str()), 1) << guest.GetLastErrorString();
    EXPECT_THAT(Names([&](CStringArray& ar) { return guest.GetAllTables(ar); }), ElementsAre("订单"));
    EXPECT_EQ(guest.IsTableExist("secret"), 0);
    EXPECT_STREQ(guest.GetTableStruct("secret"), "CREATE TABLE \"SECRET\" ( )");
    EXPECT_EQ(guest.GetRecordCount("secret"), -1);
    EXPECT_EQ(guest.GetRecordCount("`订单`"), 0);
    EXPECT_EQ(guest.ExecuteSQL("drop table secret"), 0);
    EXPECT_THAT(std::string(guest.GetLastErrorString()), ::testing::HasSubstr("权限不足"));
    for (const char* statement : {"drop table secret", "drop user guest@localhost", "drop user guest@'127.0.0.1'"})
        EXPECT_EQ(database.ExecuteSQL(statement), 1) << database.GetLastErrorString();
}

}  // namespace
}  // namespace tk::test
