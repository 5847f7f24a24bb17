// What only a database in a file can show: other holders of the file, and files that are none.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "support/registered_class.h"
#include "support/temporary_folder.h"
#include "tkkernel/driver.h"

namespace tk::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

class SqliteFile : public ::testing::Test {
protected:
    std::string Connection(const std::string& file, const char* more = "") const {
        return "Driver=SQLite3;Database=" + folder_.File(file) + ";Timeout=100;" + more;
    }
    template <typename Wrapper>
    static std::string Error(Wrapper& wrapper) {
        return std::string(wrapper.GetLastErrorString());
    }

    Apartment apartment_;
    TemporaryFolder folder_;
};

TEST_F(SqliteFile, AnotherWriterLocksItForATime) {
    CTDatabase writer;
    CTDatabase other;
    ASSERT_EQ(writer.Open(Connection("a.db").c_str()), 1) << Error(writer);
    ASSERT_EQ(other.Open(Connection("a.db").c_str()), 1) << Error(other);
    ASSERT_EQ(writer.ExecuteSQL("create table t (id integer primary key, name text)"), 1) << Error(writer);
    writer.BeginTrans();
    ASSERT_EQ(writer.ExecuteSQL("insert into t values (1, 'held')"), 1) << Error(writer);
    EXPECT_EQ(other.ExecSQL("insert into t values (2, 'waiting')"), 0);
    EXPECT_THAT(Error(other), HasSubstr("locked"));
    EXPECT_THAT(Error(other), EndsWith("\r\ninsert into t values (2, 'waiting')"));
    writer.CommitTrans();
    EXPECT_EQ(other.ExecSQL("insert into t values (2, 'waiting')"), 1) << Error(other);
}

TEST_F(SqliteFile, AFileThatIsNoDatabaseIsReported) {
    std::ofstream(folder_.File("broken.db")) << std::string(8192, 'x');
    CTDatabase database;
    if (database.Open(Connection("broken.db").c_str())) {
        EXPECT_EQ(database.ExecuteSQL("create table t (id integer)"), 0);
    }
    EXPECT_THAT(Error(database), HasSubstr("not a database"));
}

TEST_F(SqliteFile, AFileThatMayNotBeWrittenCanBeRead) {
    {
        CTDatabase database;
        ASSERT_EQ(database.Open(Connection("ro.db").c_str()), 1);
        ASSERT_EQ(database.ExecuteSQL("create table t (id integer primary key)"), 1);
        ASSERT_EQ(database.ExecuteSQL("insert into t values (1)"), 1);
    }
    ASSERT_EQ(chmod(folder_.File("ro.db").c_str(), 0444), 0);
    ASSERT_EQ(chmod(folder_.Path().c_str(), 0555), 0);
    const uid_t before = geteuid();
    constexpr uid_t kNobody = 65534;
    if (before == 0) {
        ASSERT_EQ(seteuid(kNobody), 0) << "root may write everything";
    }
    {
        CTDatabase database;
        EXPECT_EQ(database.Open(Connection("ro.db", "OLE DB Services=-2").c_str()), 1) << Error(database);
        CTRecordset records(&database);
        EXPECT_EQ(records.OpenTable("t", 1), 1) << Error(records);
        EXPECT_EQ(records.GetRecordCount(), 1);
        EXPECT_EQ(database.ExecSQL("insert into t values (2)"), 0);
        EXPECT_THAT(Error(database), HasSubstr("readonly"));
    }
    if (before == 0) {
        ASSERT_EQ(seteuid(before), 0);
    }
    ASSERT_EQ(chmod(folder_.Path().c_str(), 0755), 0);
}

TEST_F(SqliteFile, AFolderThatDoesNotExistIsReported) {
    CTDatabase database;
    EXPECT_EQ(database.Open(Connection("no/such/folder.db").c_str()), 0);
    EXPECT_THAT(Error(database), EndsWith("\r\n打开数据库失败"));
    EXPECT_EQ(database.IsOpen(), 0);
}

TEST_F(SqliteFile, AMissingFileIsRefusedWhenItMayNotBeMade) {
    CTDatabase database;
    EXPECT_EQ(database.Open(Connection("missing.db", "NoCreat=1").c_str()), 0);
    EXPECT_THAT(Error(database), HasSubstr("connect failed"));
    EXPECT_NE(access(folder_.File("missing.db").c_str(), F_OK), 0);
}

TEST_F(SqliteFile, ChineseFileAndTableNamesWork) {
    CTDatabase database;
    ASSERT_EQ(database.Open(("Driver=SQLite3;Database=" + folder_.File("库存.db")).c_str()), 1) << Error(database);
    ASSERT_EQ(database.ExecuteSQL("create table \"订单\" (\"编号\" integer primary key, \"名称\" varchar(10))"), 1)
        << Error(database);
    ASSERT_EQ(database.ExecuteSQL("insert into \"订单\" values (1, '甲')"), 1) << Error(database);
    CTRecordset orders(&database);
    ASSERT_EQ(orders.OpenTable("订单", 1), 1) << Error(orders);
    EXPECT_STREQ(orders.GetStringValue("名称"), "甲");
    EXPECT_STREQ(orders.GetFieldName(0), "编号");
    EXPECT_EQ(orders.GetFieldIndex("名称"), 1);
}

TEST_F(SqliteFile, TheNameInTheConnectionStringDecidesTheTag) {
    CTDatabase database;
    ASSERT_EQ(database.Open(Connection("tag.db", "DBMS Name=ORACLE").c_str()), 1) << Error(database);
    EXPECT_STREQ(database.GetDBMS(), "ORA");
    CTRecordset records(&database);
    EXPECT_STREQ(records.GetDBMS(), "ORA");
}

}  // namespace
}  // namespace tk::test
