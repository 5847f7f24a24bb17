// The catalog and the values of Jet files, read through a driver that tells little of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "catalog/listed_names.h"
#include "support/registered_class.h"
#include "support/temporary_folder.h"
#include "tkkernel/driver.h"

namespace tk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// By the name of the file: two formats of one database.
class MdbCatalog : public ::testing::TestWithParam<const char*> {
protected:
    static void SetUpTestSuite() {
        folder_ = new TemporaryFolder;
        for (const char* name : {"jet4.mdb", "ace2007.accdb"}) {
            const std::string unpack = "gzip -dc " TEST_DATA "/" + std::string(name) + ".gz > " + folder_->File(name);
            ASSERT_EQ(std::system(unpack.c_str()), 0);
        }
    }
    static void TearDownTestSuite() {
        delete folder_;
        folder_ = nullptr;
    }
    static std::string File() { return folder_->File(GetParam()); }

    /// As Access files are opened, as another system when a name is given.
    void Open(CTDatabase& database, const char* dbmsName = nullptr) {
        std::string connection = "Provider=Microsoft.ACE.OLEDB.12.0;Data Source=" + File();
        if (dbmsName != nullptr) connection += std::string(";DBMS Name=") + dbmsName;
        ASSERT_EQ(database.Open(connection.c_str()), 1) << database.GetLastErrorString();
    }
    static std::string Error(CTDatabase& database) { return std::string(database.GetLastErrorString()); }

    Apartment apartment_;

private:
    static inline TemporaryFolder* folder_ = nullptr;
};

TEST_P(MdbCatalog, OpensByTheStringForAccessFiles) {
    CTDatabase database;
    ASSERT_EQ(database.OpenDAO(File().c_str(), nullptr, nullptr), 1) << Error(database);
    EXPECT_STREQ(database.GetDbmsName(), "MDBTOOLS");
    EXPECT_EQ(database.IsTableExist("ord"), 1);
    CTDatabase missing;
    EXPECT_EQ(missing.OpenDAO((File() + ".no").c_str(), nullptr, nullptr), 0);
    EXPECT_NE(Error(missing), "");
}

TEST_P(MdbCatalog, ListsTablesAndColumns) {
    CTDatabase database;
    Open(database);
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllTables(ar); }),
                ElementsAre("big", "name with space", "ord", "订单明细"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllViews(ar); }), IsEmpty());
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("订单明细", ar); }),
                ElementsAre("编号", "商品"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("name with space", ar); }),
                ElementsAre("a b"));
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllFields("ord", ar); }),
                ElementsAre("id", "名称", "si", "by", "d", "f", "n", "mon", "ts", "b", "memo", "ole", "g", "bin"));
    // One after the other on the same connection.
    for (const char* table : {"big", "ord", "订单明细", "name with space"})
        EXPECT_EQ(database.IsTableExist(table), 1) << table;
    for (const char* name : {"no such", "", "OR", "o%", "a\"b"})
        EXPECT_EQ(database.IsTableExist(name), 0) << name;
}

TEST_P(MdbCatalog, HasNoKeysIndexesAndProceduresToTell) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    EXPECT_STREQ(database.GetPrimaryKey("ord"), "");
    EXPECT_STREQ(database.GetPrimaryKeyName("ord"), "");
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetForeignKeyNames("ord", ar); }), IsEmpty());
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetIndexNames("ord", ar, nullptr); }), IsEmpty());
    EXPECT_THAT(Names([&](CStringArray& ar) { return database.GetAllProcedures(ar); }), IsEmpty());
    CStringArray indexes;
    EXPECT_EQ(database.GetIndexesContext("ord", indexes), 1);
    EXPECT_EQ(indexes.GetSize(), 0);
    EXPECT_EQ(database.GetAllIndexes(indexes), 0);
    EXPECT_EQ(database.IsProcedureExist("ord"), 0);
}

TEST_P(MdbCatalog, WritesTheTableInTheDialectAskedFor) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    EXPECT_STREQ(database.GetTableStruct("ord"),
                 "CREATE TABLE \"ORD\" (\r\n"
                 "\t\"ID\"\tINT,\r\n"
                 "\t\"名称\"\tVARCHAR (50),\r\n"
                 "\t\"SI\"\tSMALLINT,\r\n"
                 "\t\"BY\"\tTINYINT,\r\n"
                 "\t\"D\"\tFLOAT,\r\n"
                 "\t\"F\"\tREAL,\r\n"
                 "\t\"N\"\tVARCHAR (40),\r\n"
                 "\t\"MON\"\tNUMERIC (19,4),\r\n"
                 "\t\"TS\"\tDATETIME,\r\n"
                 "\t\"B\"\tBIT,\r\n"
                 "\t\"MEMO\"\tTEXT,\r\n"
                 "\t\"OLE\"\tIMAGE,\r\n"
                 "\t\"G\"\tUNIQUEIDENTIFIER,\r\n"
                 "\t\"BIN\"\tVARBINARY (20) )");
    EXPECT_STREQ(database.GetTableStruct("订单明细"),
                 "CREATE TABLE \"订单明细\" (\r\n\t\"编号\"\tINT,\r\n\t\"商品\"\tVARCHAR (255) )");
}

TEST_P(MdbCatalog, ReadsEveryType) {
    CTDatabase database;
    Open(database);
    CTRecordset rows(&database);
    ASSERT_EQ(rows.OpenSQL("select * from ord", 1), 1) << rows.GetLastErrorString();
    ASSERT_EQ(rows.GetRecordCount(), 3);
    EXPECT_EQ(rows.GetIntValue("id"), 1);
    EXPECT_EQ(rows.GetIntValue("si"), 7);
    EXPECT_STREQ(rows.GetStringValue("by"), "200");
    EXPECT_EQ(rows.GetDoubleValue("d"), 1.5);
    EXPECT_STREQ(rows.GetStringValue("n"), "1234567890.12");
    EXPECT_STREQ(rows.GetStringValue("ts"), "2024-02-29 12:34:56");
    EXPECT_STREQ(rows.GetStringValue("memo"), "短备注");
    EXPECT_STREQ(rows.GetStringValue("g"), "12345678-1234-1234-1234-123456789ABC");
    EXPECT_STREQ(rows.GetStringValue("名称").Left(8), "中文名称");
    rows.MoveNext();
    EXPECT_STREQ(rows.GetStringValue("名称"), "plain ascii");
    EXPECT_EQ(rows.GetIntValue("si"), -7);
    EXPECT_STREQ(rows.GetStringValue("n"), "-0.01");
    EXPECT_STREQ(rows.GetStringValue("ts"), "1899-12-30 00:00:00");
    // The driver gives no more of a long text.
    EXPECT_EQ(rows.GetStringValue("memo").GetLength(), 16383 / 3 * 2);
    rows.MoveNext();
    for (const char* name : {"si", "by", "d", "f", "n", "mon", "memo", "ole", "g", "bin"}) {
        VARIANT value = rows.GetValue(name);
        EXPECT_EQ(V_VT(&value), VT_NULL) << name;
        VariantClear(&value);
    }
}

TEST_P(MdbCatalog, ReadsManyRows) {
    CTDatabase database;
    Open(database);
    CTRecordset rows(&database);
    ASSERT_EQ(rows.OpenTable("big", 1), 1) << rows.GetLastErrorString();
    EXPECT_EQ(rows.GetRecordCount(), 100'000);
    rows.MoveLast();
    EXPECT_EQ(rows.GetIntValue("id"), 100'000);
    EXPECT_STREQ(database.GetSpecialValue("select count(*) from \"big\"", "count"), "100000");
}

TEST_P(MdbCatalog, SaysThatItCannotWrite) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    static constexpr struct {
        const char* statement;
        const char* word;
    } kRows[] = {{"insert into ord (id) values (4)", "insert"},
                 {"update ord set id = 4", "update"},
                 {" /* all */ delete from ord", "delete"},
                 {"create table t (id int)", "create"},
                 {"drop table ord", "drop"},
                 {"alter table ord add x int", "alter"}};
    for (const auto& row : kRows) {
        EXPECT_EQ(database.ExecuteSQL(row.statement), 0) << row.statement;
        EXPECT_THAT(Error(database), HasSubstr("对象或驱动程序不支持此功能")) << row.statement;
        EXPECT_THAT(Error(database), HasSubstr(row.word));
    }
    EXPECT_EQ(database.DropTable("ord"), 0);
    EXPECT_EQ(database.TruncateTable("ord"), 0);
    EXPECT_EQ(database.IsTableExist("ord"), 1);
    EXPECT_EQ(database.ExecuteSQL("select nonsense from nowhere"), 0);
    EXPECT_THAT(Error(database), HasSubstr("语法错误"));
}

INSTANTIATE_TEST_SUITE_P(Formats, MdbCatalog, ::testing::Values("jet4.mdb", "ace2007.accdb"),
                         [](const auto& each) { return std::string(each.param).substr(0, 4); });

}  // namespace
}  // namespace tk::test
