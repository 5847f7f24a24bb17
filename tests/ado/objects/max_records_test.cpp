// Recordset.MaxRecords on the database systems.
#include <gtest/gtest.h>

#include "database_systems.h"

namespace tk::ado::test {
namespace {

class MaxRecordsTest : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        Drop(u"steps");
        Do(u"create table steps (id integer primary key)");
        Do(u"insert into steps values (1), (2), (3), (4), (5), (6), (7), (8), (9)");
    }

    LONG CountOf(std::u16string_view text, LONG most) const {
        const Object rows = Object::Create(kRecordsetClass);
        rows.Put(recordset::kCursorLocation, Number(3));
        rows.Put(recordset::kMaxRecords, Number(most));
        const Outcome opened = rows.Call(recordset::kOpen, {Text(text), connection_.AsValue()});
        EXPECT_TRUE(opened.Ok()) << opened << " in " << ToUtf8(text);
        return opened.Ok() ? rows.Get(recordset::kRecordCount).Long() : -1;
    }
};

TEST_P(MaxRecordsTest, LimitWhateverTextGivesTheRows) {
    for (const char16_t* text : {u"select id from steps", u"select id from steps order by id limit 5",
                                 u"select id from steps -- all of them", u"/* some */ select id from steps",
                                 u"select id from steps;", u"select id from steps union all select id from steps",
                                 u"with a as (select id from steps) select * from a"}) {
        EXPECT_EQ(CountOf(text, 3), 3) << ToUtf8(text);
    }
    EXPECT_EQ(CountOf(u"select id from steps limit 2", 3), 2);
}

TEST_P(MaxRecordsTest, LimitOneRecordsetAlone) {
    EXPECT_EQ(CountOf(u"select id from steps", 3), 3);
    EXPECT_EQ(OpenRows(connection_, u"select id from steps").Get(recordset::kRecordCount).Long(), 9);
    EXPECT_EQ(CountOf(u"select id from steps", 5), 5);
    // What the catalog functions ask is not limited either.
    const Object columns = connection_.Call(connection::kOpenSchema, {Number(20), Omitted(), Omitted()}).Result();
    ASSERT_TRUE(columns);
    EXPECT_GT(List(columns, {u"TABLE_NAME"}).size(), 5u);
}

TEST_P(MaxRecordsTest, LeaveNothingLocked) {
    const Object other = Connect();
    for (const LONG most : {0, 3, 9, 20}) {
        const Object rows = Object::Create(kRecordsetClass);
        rows.Put(recordset::kMaxRecords, Number(most));
        ASSERT_TRUE(rows.Call(recordset::kOpen, {Text(u"select id from steps"), connection_.AsValue()}).Ok());
        Execute(other, Sql(u"insert into steps values (100)"));  // while it is open
        ASSERT_TRUE(rows.Call(recordset::kClose).Ok());
        Execute(other, Sql(u"delete from steps where id = 100"));
    }
}

TEST_P(MaxRecordsTest, LimitNoStatementThatChangesRows) {
    for (const char16_t* text : {u"insert into steps values (101), (102), (103) returning id",
                                 u"update steps set id = id where id < 0", u"update steps set id = id where id < 8"}) {
        const Object rows = Object::Create(kRecordsetClass);
        rows.Put(recordset::kMaxRecords, Number(2));
        const Outcome opened = rows.Call(recordset::kOpen, {Text(text), connection_.AsValue()});
        EXPECT_TRUE(opened.Ok()) << opened << " in " << ToUtf8(text);
    }
    EXPECT_EQ(AskFor(u"select count(*) from steps"), "12");
    Execute(Connect(), Sql(u"delete from steps where id > 100"));
    EXPECT_EQ(AskFor(u"select count(*) from steps"), "9");
}

INSTANTIATE_TEST_SUITE_P(Systems, MaxRecordsTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

class ServerMaxRecordsTest : public MaxRecordsTest {};

TEST_P(ServerMaxRecordsTest, LimitTextsThatTakeNoLimitBehindThem) {
    EXPECT_EQ(CountOf(u"show tables from information_schema", 3), 3);
    EXPECT_EQ(CountOf(u"select id from steps for update", 3), 3);
    EXPECT_EQ(CountOf(u"values (1), (2), (3), (4)", 3), 3);
    Do(u"drop procedure if exists all_steps; create procedure all_steps() begin select id from steps; "
       u"select count(*) from steps; end");
    EXPECT_EQ(CountOf(u"call all_steps()", 3), 3);
    EXPECT_EQ(CountOf(u"{call all_steps()}", 3), 3);
    EXPECT_EQ(AskFor(u"select count(*) from steps"), "9");
}

TEST_P(ServerMaxRecordsTest, SpareTheServerTheOtherRowsOfAPlainSelect) {
    const auto sent = [&] {
        return std::stol(
            AskFor(u"select variable_value from information_schema.session_status where variable_name = 'rows_sent'"));
    };
    const long before = sent();
    EXPECT_EQ(CountOf(u"select a.id from steps a, steps b, steps c", 2), 2);
    EXPECT_LT(sent(), before + 9);
}

TEST_P(ServerMaxRecordsTest, LimitNothingThatAFunctionOrTriggerReads) {
    Do(u"drop function if exists counted; create function counted() returns integer reads sql data begin "
       u"declare n integer default 0; for r in (select id from steps) do set n = n + 1; end for; return n; end");
    Drop(u"copies");
    Do(u"create table copies (id integer)");
    Drop(u"starts");
    Do(u"create table starts (id integer)");
    Do(u"create trigger copy_all after insert on starts for each row begin "
       u"for r in (select id from steps) do insert into copies values (r.id); end for; end");
    const Object rows = Object::Create(kRecordsetClass);
    rows.Put(recordset::kMaxRecords, Number(3));
    ASSERT_TRUE(rows.Call(recordset::kOpen, {Text(u"select counted()"), connection_.AsValue()}).Ok());
    EXPECT_EQ(rows.Get(recordset::kCollect, {Number(0)}).Utf8(), "9");
    ASSERT_TRUE(rows.Call(recordset::kClose).Ok());
    ASSERT_TRUE(rows.Call(recordset::kOpen, {Text(u"insert into starts values (1)"), connection_.AsValue()}).Ok());
    EXPECT_EQ(AskFor(u"select count(*) from copies"), "9");
}

INSTANTIATE_TEST_SUITE_P(Systems, ServerMaxRecordsTest, ::testing::Values(SystemKind::MariaDb), SystemName);

}  // namespace
}  // namespace tk::ado::test
