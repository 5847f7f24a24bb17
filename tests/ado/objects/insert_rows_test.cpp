// Connection.InsertRows: rows of a recordset into a table of another connection, on every database system.
#include <gtest/gtest.h>

#include "database_systems.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class InsertRowsTest : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        source_ = ConnectTo(SystemKind::Sqlite);
        Execute(source_, u"drop table if exists goods");
        Execute(source_,
                u"create table goods (id integer primary key, name varchar(40), price decimal(12,4), "
                u"made timestamp, data blob, n bigint)");
        Drop(u"wares");
        const char16_t* const moment = GetParam() == SystemKind::MariaDb ? u"datetime(6)" : u"timestamp";
        Do(u"create table wares (id integer primary key, name varchar(40), price numeric(12,4), made " +
           std::u16string(moment) + u", data " + Words().blob + u", n bigint)");
    }
    void Fill(int rows) const {
        Execute(source_,
                u"insert into goods with recursive r(i) as (select 1 union all select i + 1 from r where i < " +
                    NumberText(rows) +
                    u") select i, '名称 ' || i, i || '.2500', '2024-02-29 12:30:45.678', x'000102', "
                    u"9007199254740993 from r");
        Execute(source_,
                u"update goods set name = null, price = null, made = null, data = null, n = null where id % 7 = 3");
    }
    Object Goods() const { return OpenRows(source_, u"select * from goods order by id", 1); }
    Outcome Insert(const Object& rows, Value limit, std::u16string_view table = u"\"wares\"") const {
        // A member of this server's own: found by its name.
        OLECHAR name[] = OLESTR("InsertRows");
        LPOLESTR names[] = {name};
        DISPID member = 0;
        EXPECT_EQ(connection_.Dispatch()->GetIDsOfNames(IID_NULL, names, 1, 0, &member), S_OK);
        return connection_.Call(member, {rows.AsValue(), Text(table), std::move(limit)});
    }

    Object source_;
};

TEST_P(InsertRowsTest, CarriesEveryValue) {
    Fill(2500);
    const Object rows = Goods();
    const Outcome inserted = Insert(rows, Omitted());
    ASSERT_TRUE(inserted.Ok()) << inserted;
    EXPECT_EQ(inserted.Long(), 2500);
    EXPECT_TRUE(rows.Get(kEof).True());
    EXPECT_EQ(AskFor(u"select count(*) from wares"), "2500");
    EXPECT_EQ(AskFor(u"select count(*) from wares where name is null and price is null and made is null and data is "
                     u"null and n is null"),
              "357");
    const Object copy = OpenRows(connection_, u"select * from wares where id in (1, 2500) order by id", 1);
    EXPECT_EQ(ValueOf(copy, u"name"), ToUtf8(u"名称 1"));
    EXPECT_EQ(ValueOf(copy, u"price"), "1.25");
    EXPECT_EQ(ValueOf(copy, u"n"), "9007199254740993");
    const Object original = OpenRows(source_, u"select * from goods where id in (1, 2500) order by id", 1);
    for (const char16_t* name : {u"id", u"name", u"n"}) {
        EXPECT_EQ(ValueOf(copy, name), ValueOf(original, name)) << ToUtf8(name);
    }
}

TEST_P(InsertRowsTest, TakesAPartAtATimeAndGoesBehindIt) {
    Fill(25);
    const Object rows = Goods();
    rows.Call(kMoveNext);
    for (const LONG expected : {10, 10, 4, 0}) {
        const Outcome inserted = Insert(rows, Number(10));
        ASSERT_TRUE(inserted.Ok()) << inserted;
        EXPECT_EQ(inserted.Long(), expected);
    }
    EXPECT_EQ(AskFor(u"select count(*) from wares"), "24");
    EXPECT_EQ(AskFor(u"select min(id) from wares"), "2");
}

TEST_P(InsertRowsTest, InsertsWhatTheFilterShowsInTheOrderOfTheSort) {
    Fill(20);
    const Object rows = Goods();
    rows.Put(kSort, Text(u"id desc"));
    rows.Put(kFilter, Text(u"id > 15"));
    EXPECT_EQ(Insert(rows, Number(2)).Long(), 2);
    EXPECT_EQ(AskFor(u"select min(id) from wares"), "19");
    EXPECT_EQ(Insert(rows, Omitted()).Long(), 3);
    EXPECT_EQ(AskFor(u"select count(*) from wares"), "5");
}

TEST_P(InsertRowsTest, InsertsAllRowsOrNone) {
    Fill(3000);
    Do(u"insert into wares (id) values (2900)");
    const Object rows = Goods();
    EXPECT_EQ(Insert(rows, Omitted()).Error(), 0x80040E2Fu);
    EXPECT_EQ(AskFor(u"select count(*) from wares"), "1");
    // Within a transaction of the program's own, what it did itself stays its own to keep.
    connection_.Call(connection::kBeginTrans);
    Do(u"insert into wares (id) values (9999)");
    EXPECT_EQ(Insert(rows, Omitted()).Error(), 0x80040E2Fu);
    ASSERT_TRUE(connection_.Call(connection::kCommitTrans).Ok());
    EXPECT_EQ(AskFor(u"select count(*) from wares"), "2");
    // The recordset is where it was.
    EXPECT_EQ(ValueOf(rows, u"id"), "1");
}

TEST_P(InsertRowsTest, RefusesWhatItCannotInsert) {
    Fill(1);
    const Object rows = Goods();
    EXPECT_FALSE(Insert(rows, Omitted(), u"\"no such table\"").Ok());
    EXPECT_EQ(Insert(rows, Omitted(), u"").Error(), 3001u);
    EXPECT_EQ(Insert(rows, Number(-1)).Error(), 3001u);
    EXPECT_EQ(Insert(connection_, Omitted()).Error(), 3001u);
    const Object others = OpenRows(source_, u"select id, 1 as nowhere from goods", 1);
    EXPECT_FALSE(Insert(others, Omitted()).Ok());
    rows.Call(kClose);
    EXPECT_EQ(Insert(rows, Omitted()).Error(), 3704u);
    const Object again = Goods();
    connection_.Call(connection::kClose);
    EXPECT_EQ(Insert(again, Omitted()).Error(), 3704u);
}

using InsertRowsMariaDbTest = InsertRowsTest;

/// A year, bits and a choice mean something else by the text of a number.
TEST_P(InsertRowsMariaDbTest, SendsNumbersAsNumbers) {
    Execute(source_, u"drop table if exists odd");
    Execute(source_, u"create table odd (id integer primary key, y integer, b integer, e integer, r double)");
    Execute(source_, u"insert into odd values (1, 0, 5, 1, 0.1), (2, 99, 53, 2, 2.5), (3, null, null, null, null)");
    Drop(u"odd");
    Do(u"create table odd (id integer primary key, y year, b bit(8), e enum('2', '1'), r double)");
    const Outcome inserted = Insert(OpenRows(source_, u"select * from odd order by id", 1), Omitted(), u"odd");
    ASSERT_TRUE(inserted.Ok()) << inserted;
    EXPECT_EQ(AskFor(u"select group_concat(concat_ws(' ', id, y, b + 0, e, r) order by id separator ', ') from odd"),
              "1 0000 5 2 0.1, 2 1999 53 1 2.5, 3");
}

INSTANTIATE_TEST_SUITE_P(Server, InsertRowsMariaDbTest, ::testing::Values(SystemKind::MariaDb), SystemName);
INSTANTIATE_TEST_SUITE_P(All, InsertRowsTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

}  // namespace
}  // namespace tk::ado::test
