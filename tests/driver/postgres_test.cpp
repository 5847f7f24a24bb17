// What only a server can show: logins, sessions, and a server that goes away.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "driver/end_to_end.h"
#include "driver/postgres_system.h"
#include "support/registered_class.h"
#include "support/values.h"
#include "tkkernel/driver.h"

namespace tk::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

class Postgres : public ::testing::Test {
protected:
    template <typename Wrapper>
    static std::string Error(Wrapper& wrapper) {
        return std::string(wrapper.GetLastErrorString());
    }
    static std::string With(std::string connection, const std::string& from, const std::string& to) {
        return connection.replace(connection.find(from), from.size(), to);
    }

    Apartment apartment_;
};

TEST_F(Postgres, AWrongPasswordIsReportedWithoutShowingIt) {
    CTDatabase database;
    EXPECT_EQ(database.Open(With(TheSystem().connection, "PWD=pw", "PWD=wrong-one").c_str()), 0);
    EXPECT_THAT(Error(database), HasSubstr("password authentication failed"));
    EXPECT_THAT(Error(database), EndsWith("\r\n打开数据库失败"));
    EXPECT_THAT(Error(database), ::testing::Not(HasSubstr("wrong-one")));
}

TEST_F(Postgres, AnUnknownDatabaseIsReported) {
    CTDatabase database;
    EXPECT_EQ(database.Open(With(TheSystem().connection, "Database=postgres", "Database=no_such").c_str()), 0);
    EXPECT_THAT(Error(database), HasSubstr("no_such"));
}

TEST_F(Postgres, APortWithoutAServerIsReported) {
    CTDatabase database;
    const std::string port = "Port=" + std::to_string(TheServer().Port());
    EXPECT_EQ(database.Open(With(TheSystem().connection, port, "Port=1").c_str()), 0);
    EXPECT_THAT(Error(database), EndsWith("\r\n打开数据库失败"));
}

TEST_F(Postgres, TheConnectionStringIsGivenBackWithoutThePassword) {
    CTDatabase database;
    ASSERT_EQ(database.Open(TheSystem().connection.c_str()), 1) << Error(database);
    EXPECT_THAT(std::string(database.GetConnectionString()), ::testing::Not(HasSubstr("PWD=pw")));
    CTRecordset records(&database);
    EXPECT_EQ(records.OpenSQL("select 1", 1), 1) << "a recordset opens against it all the same: " << Error(records);
}

TEST_F(Postgres, ProceduresAreCalledByName) {
    CTDatabase database;
    ASSERT_EQ(database.Open(TheSystem().connection.c_str()), 1) << Error(database);
    ASSERT_EQ(database.ExecuteSQL("create or replace function numbers() returns setof integer language sql as "
                                  "'select generate_series(1, 3)'"),
              1)
        << Error(database);
    CTRecordset records(&database);
    ASSERT_EQ(records.OpenProcedure("numbers", 1), 1) << Error(records);
    EXPECT_EQ(records.GetRecordCount(), 3);
    EXPECT_EQ(records.GetIntValue(0L), 1);
}

TEST_F(Postgres, NumbersKeepTheirDigits) {
    CTDatabase database;
    ASSERT_EQ(database.Open(TheSystem().connection.c_str()), 1) << Error(database);
    CTRecordset records(&database);
    ASSERT_EQ(records.OpenSQL("select cast(12345678901234.1234 as numeric(20,4)) as d, cast(1.5 as real) as r, "
                              "cast('2020-02-29' as date) as day, count(*) as n from pg_class where false",
                              1),
              1)
        << Error(records);
    EXPECT_STREQ(records.GetStringValue("d"), "12345678901234.1234");
    EXPECT_EQ(records.GetDoubleValue("d"), 12345678901234.1234);
    EXPECT_EQ(records.GetDoubleValue("r"), 1.5);
    EXPECT_EQ(records.GetDateValue("day"), 43890.0);
    EXPECT_EQ(records.GetIntValue("n"), 0);
}

TEST_F(Postgres, AServerThatGoesAwayIsReportedAndComesBack) {
    CTDatabase database;
    ASSERT_EQ(database.Open(TheSystem().connection.c_str()), 1) << Error(database);
    CTRecordset records(&database);
    ASSERT_EQ(records.OpenSQL("select generate_series(1, 10) as n", 1), 1) << Error(records);
    TheServer().Stop();
    EXPECT_EQ(database.ExecuteSQL("select 1"), 0);
    EXPECT_THAT(Error(database), EndsWith("\r\nselect 1"));
    EXPECT_EQ(records.GetRecordCount(), 10) << "rows that are here already stay";
    records.MoveLast();
    EXPECT_EQ(records.GetIntValue("n"), 10);
    EXPECT_EQ(records.OpenSQL("select 2", 1), 0);
    EXPECT_THAT(Error(records), EndsWith("\r\nOpen"));
    TheServer().Start();
    database.Close();
    EXPECT_EQ(database.Open(TheSystem().connection.c_str()), 1) << Error(database);
    EXPECT_EQ(database.ExecuteSQL("select 1"), 1) << Error(database);
    EXPECT_EQ(records.OpenSQL("select 2", 1), 1) << Error(records);
}

}  // namespace
}  // namespace tk::test
