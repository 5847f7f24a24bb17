// Results that a connection recognises instead of having them described: they look as if they had been described.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>

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

    /// True when the third of three such calls asks for none. They are made with other texts again when they came too
    /// late, on a machine that is busy. @param call  gets a name for something in its text
    template <class Call>
    static bool SparesTheThird(Call&& call) {
        constexpr int kTries = 20;
        std::string name = "n";
        for (int i = 0; i < kTries; ++i, name += 'n') {
            call(name);
            call(name);
            if (Of([&] { call(name); }) == 0) return true;
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
        DoElsewhere("drop table if exists probe cascade");
    }
    void TearDown() override {
        if (session_) {
            session_.reset();
            DoElsewhere("drop table if exists probe cascade");
            DoElsewhere("drop schema if exists aside cascade");
        }
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

    /// That many times, which is how often it takes until it could be recognised.
    void ReadThrice(const std::string& sql) {
        for (int i = 0; i < 3; ++i)
            ExpectAsDescribed(sql);
    }

    /// A table `probe` in another schema, where it is nullable here.
    void MakeProbeAside() {
        Do(*session_, "create table probe (a integer)");
        Do(*session_, "drop schema if exists aside cascade");
        Do(*session_, "create schema aside");
        Do(*session_, "create table aside.probe (a integer not null)");
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
    const auto query = [&](const std::string& name, const char* id) {
        return Query(session_, "select " + name + ".* from probe " + name + " where id = " + id);
    };
    EXPECT_EQ(Descriptions::Of([&] { query("p", "0"); }), 5);
    EXPECT_EQ(Descriptions::Of([&] { query("p", "1"); }), 5);
    std::shared_ptr<RowSet> rows;
    EXPECT_TRUE(Descriptions::SparesTheThird([&](const std::string& name) { rows = query(name, "2"); }));
    EXPECT_EQ(Show(*rows, 0, 1), "BSTR two");
    EXPECT_EQ(Show(*rows, 0, 2), "DECIMAL 2.25");
    EXPECT_EQ(Show(*rows, 0, 3), "NULL");
    ReadThrice("select * from probe where id = 1");
}

TEST_F(KnownResultsTest, AreManyAtOnce) {
    DoElsewhere("create table probe (id integer primary key)");
    const Descriptions descriptions;
    EXPECT_TRUE(Descriptions::SparesTheThird([&](const std::string& name) {
        std::string text = "select id from probe " + name;
        for (int i = 0; i < 32; ++i)
            Query(session_, text += " ");
    }));
}

TEST_F(KnownResultsTest, AreDescribedAgainAfterASecond) {
    DoElsewhere("create table probe (id integer primary key)");
    const Descriptions descriptions;
    std::string sql;
    EXPECT_TRUE(Descriptions::SparesTheThird([&](const std::string& name) {
        sql = "select id from probe " + name;
        Query(session_, sql);
    }));
    usleep(1'100'000);
    EXPECT_EQ(Descriptions::Of([&] { Query(session_, sql); }), 1);
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
            ReadThrice(sql);
        }
    }
}

TEST_F(KnownResultsTest, AreNotTakenForThoseOfAnotherUnknownType) {
    // The driver has one name for all of them, and one size by these options.
    session_ = Open("TextAsLongVarchar=0;UnknownsAsLongVarchar=1;UnknownSizes=2");
    for (const char* type : {"json", "bit(3)", "json"}) {
        SCOPED_TRACE(type);
        DoElsewhere("drop table if exists probe");
        DoElsewhere(std::string("create table probe (a ") + type + ")");
        ReadThrice("select a from probe");
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
    ReadThrice("select * from probe");
    DoElsewhere("alter table probe rename b to c");
    ReadThrice("select * from probe");
    EXPECT_EQ(Query(session_, "select * from probe")->Columns()[1].name, u"c");
    DoElsewhere("alter table probe add d integer");
    ReadThrice("select * from probe");
    DoElsewhere("alter table probe drop a");
    ReadThrice("select * from probe");
    EXPECT_EQ(Query(session_, "select * from probe")->Columns()[0].name, u"c");
}

TEST_F(KnownResultsTest, FollowNamesThatNoStarStandsFor) {
    DoElsewhere("create table probe (a integer)");
    const std::string sql = "with x as (select 1) table probe";
    ReadThrice(sql);
    DoElsewhere("alter table probe rename a to b");
    ReadThrice(sql);
    for (const char* escape : {"!", "#"}) {
        const std::string end = std::string(" uescape '") + escape + "'";
        ReadThrice("select 1 as U&\"a!0062\"" + end);
    }
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
}

TEST_F(KnownResultsTest, KnowWhatTheEndOfATransactionUndoes) {
    const std::string sql = "select a from probe";
    Do(*session_, "create table probe (a integer)");
    ReadThrice(sql);
    session_->Begin(0);
    Do(*session_, "drop table probe");
    Do(*session_, "create table probe (a integer not null)");
    ReadThrice(sql);
    session_->Rollback();
    EXPECT_TRUE(IsNullable(sql));
    session_->Begin(0);
    Do(*session_, "create temp table probe (a integer not null) on commit drop");
    ReadThrice(sql);
    session_->Commit();
    EXPECT_TRUE(IsNullable(sql));
}

TEST_F(KnownResultsTest, KnowWhatAFailedCommitUndoes) {
    const std::string sql = "select a from probe";
    Do(*session_, "create table probe (a integer)");
    Do(*session_, "create table if not exists parent (id integer primary key)");
    Do(*session_, "create table if not exists child (id integer references parent deferrable initially deferred)");
    session_->Begin(0);
    Do(*session_, "drop table probe");
    Do(*session_, "create table probe (a integer not null)");
    Do(*session_, "insert into child values (5)");
    ReadThrice(sql);
    EXPECT_NE(Failure([&] { session_->Commit(); }), static_cast<unsigned>(S_OK));
    EXPECT_TRUE(IsNullable(sql));
    if (session_->InTransaction()) session_->Rollback();
    EXPECT_TRUE(IsNullable(sql));
    Do(*session_, "drop table child, parent");
}

TEST_F(KnownResultsTest, KnowWhichSchemaTheSessionHasChosen) {
    const std::string sql = "select a from probe";
    MakeProbeAside();
    ReadThrice(sql);
    session_->Begin(0);
    Do(*session_, "set local search_path = aside");
    ReadThrice(sql);
    EXPECT_FALSE(IsNullable(sql));
    session_->Commit();
    EXPECT_TRUE(IsNullable(sql));
    ReadThrice(sql);
    Do(*session_, "set search_path = aside");
    EXPECT_FALSE(IsNullable(sql));
}

TEST_F(KnownResultsTest, KnowThatAFunctionMayHaveDefinedSomething) {
    const std::string sql = "select a from probe";
    MakeProbeAside();
    Do(*session_,
       "create function aside.\"enter\"() returns text language sql as "
       "'select set_config(''search_path'', ''aside,public'', false)'");
    for (const char* call : {"select aside.enter() as done", "select aside.\"enter\"()"}) {
        Do(*session_, "set search_path = public");
        ReadThrice(sql);
        EXPECT_TRUE(IsNullable(sql));
        Query(session_, call);
        EXPECT_FALSE(IsNullable(sql));
    }
}

TEST_F(KnownResultsTest, HearWithinASecondWhatAnotherSessionHasMadeNullable) {
    DoElsewhere("create table probe (a integer not null)");
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(IsNullable("select a from probe"));
    DoElsewhere("drop table probe");
    DoElsewhere("create table probe (a integer)");
    usleep(1'100'000);
    EXPECT_TRUE(IsNullable("select a from probe"));
}

TEST_F(KnownResultsTest, TellComputedNumbersFromThoseOfTables) {
    DoElsewhere("create table probe (n bigint not null)");
    DoElsewhere("insert into probe values (7)");
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(Query(session_, "select n from probe")->Columns()[0].isExpression);
        EXPECT_TRUE(Query(session_, "select count(*) as n from probe")->Columns()[0].isExpression);
    }
    Do(*session_, "drop table probe");  // what was a column becomes a function of the row
    Do(*session_, "create table probe (id integer)");
    Do(*session_, "create function n(probe) returns bigint language sql as 'select 8::bigint'");
    ReadThrice("select probe.n from probe");
    EXPECT_TRUE(Query(session_, "select probe.n from probe")->Columns()[0].isExpression);
}

TEST_F(KnownResultsTest, HaveTheTypesOfParameters) {
    const auto query = [&](const char* sql, VARIANT& value, bool prepared) {
        ExecuteOptions options;
        options.prepared = prepared;
        Parameter parameter;
        parameter.value = &value;
        return RowSet::Fetch(session_->Execute(sql, std::span<const Parameter>(&parameter, 1), options), session_, {});
    };
    VARIANT number = {};
    number.vt = VT_I4;
    number.lVal = 5;
    VARIANT real = {};
    real.vt = VT_R8;
    real.dblVal = 2.5;
    for (const bool prepared : {false, true}) {
        for (VARIANT* value : {&number, &number, &number, &real, &real, &real, &number}) {
            const auto rows = query("select ? as a", *value, prepared);
            const auto described = query("select ? as a -- a comment", *value, prepared);
            EXPECT_EQ(rows->Columns()[0].sqlType, described->Columns()[0].sqlType);
            EXPECT_EQ(rows->Columns()[0].definedSize, described->Columns()[0].definedSize);
            EXPECT_EQ(Show(*rows, 0, 0), Show(*described, 0, 0));
        }
    }
}

TEST_F(KnownResultsTest, AreReadByCursorsToo) {
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
