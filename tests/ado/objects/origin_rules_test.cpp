// Which table and row a changed value goes to: never another one than it was read from, on every database system.
#include <gtest/gtest.h>

#include "database_systems.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class OriginRulesTest : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        Drop(u"staff");
        Do(u"create table staff (id integer primary key, name varchar(20), boss integer)");
        Do(u"insert into staff values (1, 'ann', null)");
        Do(u"insert into staff values (2, 'bob', 1)");
    }
    std::string Names() const {
        return AskFor(u"select name from staff where id = 1") + "," + AskFor(u"select name from staff where id = 2");
    }
};

/// For types that the others do not have, and for locks that a description does not pass there.
class PostgresOriginRulesTest : public OriginRulesTest {};

TEST_P(OriginRulesTest, WritesNoRowOfATableThatIsJoinedWithItself) {
    Do(u"drop view if exists pairs_of_staff");
    Do(u"create view pairs_of_staff as select a.id, b.name from staff a join staff b on b.id = a.boss");
    for (const char16_t* source : {
             u"select a.id, b.name from staff a join staff b on b.id = a.boss",
             u"select a.id, b.name from staff as a, staff as b where b.id = a.boss",
             u"select a.id, b.name from \"staff\" a join (select * from staff) b on b.id = a.boss",
             u"select a.id, (select b.name from staff b where b.id = a.boss) as name from staff a where a.id = 2",
             u"select * from pairs_of_staff",
         }) {
        SCOPED_TRACE(ToUtf8(source));
        const Object rows = OpenRows(connection_, Sql(source));
        ASSERT_EQ(ValueOf(rows, u"name"), "ann");
        PutValue(rows, u"name", Text(u"zoe"));
        EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80004005u);
        EXPECT_EQ(Names(), "ann,bob");
    }
    Do(u"drop view pairs_of_staff");
}

TEST_P(OriginRulesTest, WritesWhereATableIsNamedOnceOnly) {
    for (const char16_t* source : {
             u"select * from staff where id = 2",
             u"select s.id, s.name from staff s where s.id in (select max(id) from staff)",
             u"select staff.id, staff.name from staff where staff.id = 2 order by staff.id",
             GetParam() == SystemKind::MariaDb ? u"select id, name from staff where id = 2"
                                               : u"select id, name from (select * from staff where id = 2) s",
         }) {
        SCOPED_TRACE(ToUtf8(source));
        SetUp();
        const Object rows = OpenRows(connection_, source);
        PutValue(rows, u"name", Text(u"zoe"));
        const Outcome written = rows.Call(kUpdate);
        ASSERT_TRUE(written.Ok()) << written;
        EXPECT_EQ(Names(), "ann,zoe");
    }
}

TEST_P(OriginRulesTest, WritesThroughAViewWhereTheSystemTellsWhatIsBehindIt) {
    Do(u"drop view if exists some_staff");
    Do(u"drop view if exists named_staff");
    Do(u"create view named_staff as select id, name from staff");
    Do(u"create view some_staff as select * from named_staff where id > 1");
    {
        const Object rows = OpenRows(connection_, u"select * from some_staff");
        PutValue(rows, u"name", Text(u"zoe"));
        const bool isTold = GetParam() == SystemKind::Sqlite;
        EXPECT_EQ(rows.Call(kUpdate).Error(), isTold ? 0u : 0x80004005u);
        EXPECT_EQ(Names(), isTold ? "ann,zoe" : "ann,bob");
    }
    Do(u"drop view some_staff");
    Do(u"drop view named_staff");
}

TEST_P(OriginRulesTest, WritesToTheTableThatTheNameMeantWhenItWasOpened) {
    // The first edit comes after the meaning of the name has changed.
    const Object rows = OpenRows(connection_, u"select * from staff order by id");
    switch (GetParam()) {
        case SystemKind::Sqlite:
            Do(u"create temp table staff (id integer primary key, name varchar(20), boss integer)");
            break;
        case SystemKind::Postgres:
            Do(u"drop schema if exists elsewhere cascade");
            Do(u"create schema elsewhere");
            Do(u"create table elsewhere.staff (id integer primary key, name varchar(20), boss integer)");
            Do(u"set search_path to elsewhere");
            break;
        case SystemKind::MariaDb:
            Do(u"drop database if exists elsewhere");
            Do(u"create database elsewhere");
            Do(u"create table elsewhere.staff (id integer primary key, name varchar(20), boss integer)");
            EXPECT_TRUE(connection_.Put(connection::kDefaultDatabase, Text(u"elsewhere")).Ok());
            break;
    }
    Do(u"insert into staff values (1, 'other', null)");
    PutValue(rows, u"name", Text(u"zoe"));
    const Outcome written = rows.Call(kUpdate);
    EXPECT_EQ(AskFor(u"select name from staff where id = 1"), "other");
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Ask(Connect(), u"select name from staff where id = 1"), "zoe");
}

TEST_P(PostgresOriginRulesTest, KeepsTheFirstMeaningOfANameThroughFurtherChanges) {
    const Object rows = OpenRows(connection_, u"select * from staff order by id");
    Do(u"drop schema if exists elsewhere cascade");
    Do(u"create schema elsewhere");
    Do(u"create table elsewhere.staff (id integer primary key, name varchar(20), boss integer)");
    Do(u"insert into elsewhere.staff values (1, 'ann', null)");
    Do(u"set search_path to elsewhere");
    // A second view of the rows wants to be told as well.
    const Object clone = rows.Call(kClone).Result();
    Do(u"set search_path to elsewhere, public");
    PutValue(clone, u"name", Text(u"zoe"));
    const Outcome written = clone.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(AskFor(u"select name from elsewhere.staff"), "ann");
    EXPECT_EQ(AskFor(u"select name from public.staff where id = 1"), "zoe");
}

TEST_P(OriginRulesTest, ChangesNoneOfSeveralTablesWhenOneOfThemRefuses) {
    Drop(u"rooms");
    Do(u"create table rooms (room integer primary key, owner integer, seats integer check (seats < 10))");
    Do(u"insert into rooms values (7, 2, 3)");
    const Object rows =
        OpenRows(connection_, u"select id, name, room, seats from staff join rooms on owner = id order by id");
    for (const bool isInside : {false, true}) {
        SCOPED_TRACE(isInside);
        if (isInside) {
            connection_.Call(connection::kBeginTrans);
            Do(u"insert into staff values (3, 'cat', 1)");
        }
        PutValue(rows, u"name", Text(u"zoe"));
        PutValue(rows, u"seats", Number(99));
        EXPECT_FALSE(rows.Call(kUpdate).Ok());
        rows.Call(kCancelUpdate);
        EXPECT_EQ(AskFor(u"select name from staff where id = 2"), "bob");
        // What the caller did before stays his to decide.
        if (isInside) {
            ASSERT_TRUE(connection_.Call(connection::kCommitTrans).Ok());
        }
    }
    EXPECT_EQ(AskFor(u"select count(*) from staff"), "3");
    PutValue(rows, u"name", Text(u"zoe"));
    PutValue(rows, u"seats", Number(9));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Names(), "ann,zoe");
    EXPECT_EQ(AskFor(u"select seats from rooms"), "9");
}

TEST_P(OriginRulesTest, TakesARoundedValueForTheOneThatIsStored) {
    Drop(u"prices");
    const char16_t* const moment = GetParam() == SystemKind::Postgres ? u"timestamp(0)" : u"datetime";
    Do(u"create table prices (id integer primary key, amount numeric(7,2), moment " + std::u16string(moment) + u")");
    Do(u"insert into prices values (1, 1.5, null)");
    const Object rows = OpenRows(connection_, u"select * from prices");
    PutValue(rows, u"amount", Text(u"1.239"));
    PutValue(rows, u"moment", Text(u"2024-02-29 12:30:45.678"));
    const Outcome first = rows.Call(kUpdate);
    ASSERT_TRUE(first.Ok()) << first;
    PutValue(rows, u"amount", Number(2));
    PutValue(rows, u"moment", Value::Null());
    const Outcome second = rows.Call(kUpdate);
    ASSERT_TRUE(second.Ok()) << second;
    rows.Call(kAddNew);
    PutValue(rows, u"id", Number(2));
    PutValue(rows, u"amount", Text(u"7.777"));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    PutValue(rows, u"amount", Text(u"3.333"));
    const Outcome third = rows.Call(kUpdate);
    ASSERT_TRUE(third.Ok()) << third;
    const Object batch = OpenRows(connection_, u"select * from prices order by id", 4);
    for (const char16_t* amount : {u"4.444", u"5.555"}) {
        PutValue(batch, u"amount", Text(amount));
        const Outcome sent = batch.Call(kUpdateBatch);
        ASSERT_TRUE(sent.Ok()) << sent;
    }
}

TEST_P(PostgresOriginRulesTest, ComparesTypesThatTheSystemCannotCompareAsText) {
    Drop(u"places");
    Do(u"create table places (id integer primary key, spot point, facts json, tags integer[], n integer)");
    Do(u"insert into places values (1, '(1,2)', '{\"a\": 1}', '{1,2}', 5)");
    const Object rows = OpenRows(connection_, u"select * from places");
    SetProperty(rows, u"Update Criteria", Number(1));
    PutValue(rows, u"n", Number(6));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    PutValue(rows, u"facts", Text(u"[1, 2]"));
    PutValue(rows, u"spot", Text(u"(3,4)"));
    const Outcome again = rows.Call(kUpdate);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(AskFor(u"select facts from places"), "[1, 2]");
    Execute(Connect(), u"update places set facts = '{}'");
    PutValue(rows, u"n", Number(7));
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80040E38u);
}

TEST_P(PostgresOriginRulesTest, AsksForTheOriginWithinTheTimeOfAnUpdate) {
    const Object rows = OpenRows(connection_, u"select * from staff order by id");
    SetProperty(rows, u"Command Time Out", Number(1));
    const Object other = Connect();
    other.Call(connection::kBeginTrans);
    Execute(other, u"lock table staff in access exclusive mode");
    PutValue(rows, u"name", Text(u"zoe"));
    const DWORD start = GetTickCount();
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80040E31u);
    EXPECT_LT(GetTickCount() - start, 10000u);
    other.Call(connection::kRollbackTrans);
    // It is asked again: the failure was no answer.
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Names(), "zoe,bob");
}

TEST_P(OriginRulesTest, StoresATextWithAZeroCharacterWholeOrNotAtAll) {
    const Object rows = OpenRows(connection_, u"select * from staff order by id");
    PutValue(rows, u"name", Text(std::u16string_view(u"a\0b", 3)));
    const Outcome written = rows.Call(kUpdate);
    if (GetParam() == SystemKind::Postgres) {
        EXPECT_EQ(written.Error(), 3421u) << written;
        EXPECT_EQ(Names(), "ann,bob");
    } else {
        ASSERT_TRUE(written.Ok()) << written;
        EXPECT_EQ(AskFor(u"select hex(name) from staff where id = 1"), "610062");
    }
}

INSTANTIATE_TEST_SUITE_P(All, OriginRulesTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

INSTANTIATE_TEST_SUITE_P(Only, PostgresOriginRulesTest, ::testing::Values(SystemKind::Postgres), SystemName);

}  // namespace
}  // namespace tk::ado::test
