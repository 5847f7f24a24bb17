// Results that a connection recognises instead of having them described: they look as if they had been described.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "ado/odbc/odbc_api.h"
#include "ado/rowset/postgres_test.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

using test::Do;
using test::Postgres;
using test::Query;
using test::Show;

/// Counts the columns that the driver describes while it lives.
class Descriptions {
public:
    Descriptions() : former_(SetOdbcForTest(Counting())) {}
    ~Descriptions() { SetOdbcForTest(former_); }
    Descriptions(const Descriptions&) = delete;
    Descriptions& operator=(const Descriptions&) = delete;

    /// What the call asks for.
    template <class Call>
    static int Of(Call&& call) {
        count_ = 0;
        call();
        return count_;
    }

    /// True when one of several such calls asks for none: each may come too late on a machine that is busy.
    template <class Call>
    static bool AreSpared(Call&& call) {
        constexpr int kTries = 20;
        for (int i = 0; i < kTries; ++i) {
            if (Of(call) == 0) return true;
        }
        return false;
    }

private:
    static const OdbcApi& Counting() {
        static const OdbcApi counting = [] {
            OdbcApi api;
            api.DescribeCol = [](SQLHSTMT statement, SQLUSMALLINT column, SQLCHAR* name, SQLSMALLINT room,
                                 SQLSMALLINT* length, SQLSMALLINT* type, SQLULEN* size, SQLSMALLINT* digits,
                                 SQLSMALLINT* nullable) {
                ++count_;
                return ::SQLDescribeCol(statement, column, name, room, length, type, size, digits, nullable);
            };
            return api;
        }();
        return counting;
    }

    static inline std::atomic<int> count_ = 0;
    const OdbcApi& former_;
};

class KnownResultsTest : public Postgres {
protected:
    void SetUp() override {
        Postgres::SetUp();
        if (IsSkipped()) return;
        session_ = Open();
        other_ = Open("ApplicationName=other");
        DoElsewhere("drop table if exists probe");
    }
    void TearDown() override {
        if (session_) DoElsewhere("drop table if exists probe");
        session_.reset();
        other_.reset();
        Postgres::TearDown();
    }

    /// By the other session.
    void DoElsewhere(const std::string& sql) { Do(*other_, sql); }

    /// As the result of a text is told when the driver has to describe it.
    void ExpectAsDescribed(const std::string& sql) {
        SCOPED_TRACE(sql);
        const auto rows = Query(session_, sql);
        const auto described = Query(session_, sql + " -- a comment");
        ASSERT_EQ(rows->ColumnCount(), described->ColumnCount());
        for (std::size_t i = 0; i < rows->ColumnCount(); ++i) {
            SCOPED_TRACE(i);
            const Column& column = rows->Columns()[i];
            const Column& wanted = described->Columns()[i];
            EXPECT_EQ(column.name, wanted.name);
            EXPECT_EQ(column.type, wanted.type);
            EXPECT_EQ(column.dbType, wanted.dbType);
            EXPECT_EQ(column.kind, wanted.kind);
            EXPECT_EQ(column.definedSize, wanted.definedSize);
            EXPECT_EQ(column.precision, wanted.precision);
            EXPECT_EQ(column.scale, wanted.scale);
            EXPECT_EQ(column.sqlType, wanted.sqlType);
            EXPECT_EQ(column.attributes, wanted.attributes);
            EXPECT_EQ(column.isExpression, wanted.isExpression);
        }
        ASSERT_EQ(rows->CountRows(), described->CountRows());
        for (std::size_t row = 0; row < rows->CountRows(); ++row) {
            for (std::size_t i = 0; i < rows->ColumnCount(); ++i)
                EXPECT_EQ(Show(*rows, row, i), Show(*described, row, i));
        }
    }

    bool IsNullable(const std::string& sql) const {
        return (Query(session_, sql)->Columns()[0].attributes & kFieldIsNullable) != 0;
    }

    std::shared_ptr<Session> session_;
    std::shared_ptr<Session> other_;
};

TEST_F(KnownResultsTest, AreDescribedNoMoreFromTheThirdTimeOn) {
    DoElsewhere("create table probe (id integer primary key, a varchar(20), b numeric(8,2), c timestamp(3), d bigint)");
    DoElsewhere("insert into probe values (1, 'one', 1.25, '2003-07-04 01:02:03.5', 1), (2, 'two', 2.25, null, 2)");
    const Descriptions descriptions;
    const auto query = [&](const char* id) {
        return Query(session_, std::string("select * from probe where id = ") + id);
    };
    EXPECT_EQ(Descriptions::Of([&] { query("0"); }), 5);
    EXPECT_EQ(Descriptions::Of([&] { query("1"); }), 5);
    std::shared_ptr<RowSet> rows;
    EXPECT_TRUE(Descriptions::AreSpared([&] { rows = query("2"); }));
    EXPECT_EQ(Show(*rows, 0, 1), "BSTR two");
    EXPECT_EQ(Show(*rows, 0, 2), "DECIMAL 2.25");
    EXPECT_EQ(Show(*rows, 0, 3), "NULL");
    ExpectAsDescribed("select * from probe where id = 1");
}

TEST_F(KnownResultsTest, AreManyAtOnce) {
    DoElsewhere("create table probe (id integer primary key, a varchar(20), b integer)");
    const Descriptions descriptions;
    EXPECT_TRUE(Descriptions::AreSpared([&] {
        for (const char* columns : {"id", "a", "id, b"})
            Query(session_, std::string("select ") + columns + " from probe where id = 1");
    }));
}

TEST_F(KnownResultsTest, AreDescribedAgainAfterASecond) {
    DoElsewhere("create table probe (id integer primary key)");
    const Descriptions descriptions;
    const auto query = [&] { Query(session_, "select id from probe"); };
    EXPECT_TRUE(Descriptions::AreSpared(query));
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    EXPECT_EQ(Descriptions::Of(query), 1);
    EXPECT_TRUE(Descriptions::AreSpared(query));
}

TEST_F(KnownResultsTest, AreNotTakenForThoseOfAnotherType) {
    static constexpr const char* kTypes[] = {
        "smallint",      "integer",       "bigint",       "numeric",      "numeric(10,2)", "numeric(10,3)",
        "numeric(12,2)", "real",          "float8",       "money",        "varchar",       "varchar(20)",
        "varchar(30)",   "varchar(5000)", "text",         "char(5)",      "char(6)",       "\"char\"",
        "name",          "boolean",       "bytea",        "date",         "time",          "time(2)",
        "timetz",        "timestamp",     "timestamp(0)", "timestamp(3)", "timestamptz",   "timestamptz(2)",
        "interval",      "interval(2)",   "uuid",         "json",         "jsonb",         "xml",
        "oid",           "xid",           "inet",         "bit(3)",       "varbit(5)",     "integer[]",
        "point",         "int4range",     "regclass",     "macaddr"};
    const std::string sql = "select a from probe";
    // Each type after each of some others, near and far.
    for (const std::size_t step : {1u, 5u, 17u}) {
        for (std::size_t i = 0; i < std::size(kTypes); ++i) {
            const char* type = kTypes[i * step % std::size(kTypes)];
            SCOPED_TRACE(type);
            DoElsewhere("drop table if exists probe");
            DoElsewhere(std::string("create table probe (a ") + type + ")");
            DoElsewhere("insert into probe values (null)");
            for (int times = 0; times < 3; ++times)
                ExpectAsDescribed(sql);
        }
    }
}

TEST_F(KnownResultsTest, FollowTheTypesOfLiterals) {
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(Show(*Query(session_, "select 1 as a, 'x' as b"), 0, 0), "I4 1");
    EXPECT_EQ(Show(*Query(session_, "select 99999999999 as a, 'long text' as b"), 0, 0), "DECIMAL 99999999999");
    for (const char* sql : {"select 99999999999999999999 as a, '' as b", "select 2 as a, 'y' as b"})
        ExpectAsDescribed(sql);
}

TEST_F(KnownResultsTest, FollowColumnsThatComeAndGoAndChangeTheirNames) {
    DoElsewhere("create table probe (a integer, b integer)");
    DoElsewhere("insert into probe values (1, 2)");
    const auto readThrice = [&] {
        for (int i = 0; i < 3; ++i)
            ExpectAsDescribed("select * from probe");
    };
    readThrice();
    DoElsewhere("alter table probe rename b to c");
    readThrice();
    EXPECT_EQ(Query(session_, "select * from probe")->Columns()[1].name, u"c");
    DoElsewhere("alter table probe add d integer");
    readThrice();
    DoElsewhere("alter table probe drop a");
    readThrice();
    EXPECT_EQ(Query(session_, "select * from probe")->Columns()[0].name, u"c");
}

TEST_F(KnownResultsTest, KnowWhatTheirSessionDefines) {
    Do(*session_, "create table probe (a integer)");
    const std::string sql = "select a from probe";
    const auto expect = [&](bool isNullable) {
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(IsNullable(sql), isNullable);
    };
    expect(true);
    Do(*session_, "alter table probe alter a set not null");
    expect(false);
    Do(*session_, "alter table probe alter a drop not null");
    expect(true);
    session_->Begin(0);
    Do(*session_, "drop table probe");
    Do(*session_, "create table probe (a integer not null)");
    expect(false);
    session_->Rollback();
    expect(true);
    Do(*session_, "create schema if not exists aside");
    Do(*session_, "drop table if exists aside.probe");
    Do(*session_, "create table aside.probe (a integer not null)");
    expect(true);
    Do(*session_, "set search_path = aside");
    expect(false);
    Do(*session_, "drop schema aside cascade");
    Do(*session_, "set search_path = public");
}

TEST_F(KnownResultsTest, HearWithinASecondWhatAnotherSessionHasMadeNullable) {
    DoElsewhere("create table probe (a integer not null)");
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(IsNullable("select a from probe"));
    DoElsewhere("drop table probe");
    DoElsewhere("create table probe (a integer)");
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    EXPECT_TRUE(IsNullable("select a from probe"));
}

TEST_F(KnownResultsTest, TellComputedNumbersFromThoseOfTables) {
    DoElsewhere("create table probe (n bigint not null)");
    DoElsewhere("insert into probe values (7)");
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(Query(session_, "select n from probe")->Columns()[0].isExpression);
        EXPECT_TRUE(Query(session_, "select count(*) as n from probe")->Columns()[0].isExpression);
    }
}

TEST_F(KnownResultsTest, AreReadByParametersAndByCursorsToo) {
    DoElsewhere("create table probe (id integer primary key, a varchar(20))");
    DoElsewhere("insert into probe select n, 'name ' || n from generate_series(1, 9000) n");
    for (int i = 0; i < 3; ++i) {
        const auto rows = Query(session_, "select * from probe");
        ASSERT_EQ(rows->CountRows(), 9000u);
        EXPECT_EQ(rows->Columns()[1].name, u"a");
    }
    DoElsewhere("alter table probe alter a type text");
    EXPECT_EQ(Query(session_, "select * from probe")->Columns()[1].type, 201);
}

}  // namespace
}  // namespace tk::ado
