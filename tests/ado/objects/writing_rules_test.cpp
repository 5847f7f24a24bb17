// How a changed row is found again and what happens when it is not: the same on every database system.
#include <gtest/gtest.h>

#include "database_systems.h"
#include "sent_texts.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class WritingRulesTest : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        Drop(u"items");
        Do(u"create table items (id " + std::u16string(Words().number) + u", name varchar(12), n integer)");
        for (const char16_t* values : {u"('a', 1)", u"('b', 2)", u"(null, 3)", u"('d', null)"})
            Do(u"insert into items (name, n) values " + std::u16string(values));
    }
    Object Items(LONG lock = 3) const { return OpenRows(connection_, u"select * from items order by id", lock); }
    std::string Stored(std::u16string_view column, int id) const {
        return AskFor(u"select " + std::u16string(column) + u" from items where id = " + NumberText(id));
    }
    void Theirs(std::u16string_view text) const { Execute(Connect(), Sql(text)); }
    static void GoTo(const Object& rows, LONG position) {
        EXPECT_TRUE(rows.Put(kAbsolutePosition, Number(position)).Ok());
    }
    static LONG StatusAt(const Object& rows, LONG position) {
        GoTo(rows, position);
        return rows.Get(kStatus).Long();
    }
};

TEST_P(WritingRulesTest, SendsValuesAsParametersOnly) {
    const Object rows = Items();
    rows.Get(kFields, {Text(u"id")}).Result().Get(field::kProperties);
    SentTexts sent;
    PutValue(rows, u"name", Text(u"x'; --"));
    PutValue(rows, u"n", Number(987));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    rows.Call(kAddNew, {Array({Text(u"name"), Text(u"n")}), Array({Text(u"new"), Value::Null()})});
    GoTo(rows, 3);
    PutValue(rows, u"name", Text(u"c"));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    ASSERT_TRUE(rows.Call(kDelete).Ok());
    ASSERT_TRUE(rows.Call(kMoveFirst).Ok());
    ASSERT_TRUE(rows.Call(kResync, {Number(1)}).Ok());
    std::vector<std::string> texts;
    for (const std::string& text : sent.Take()) {
        const std::string word = text.substr(0, text.find(' '));
        const bool isOurs = word == "UPDATE" || word == "INSERT" || word == "DELETE" || word == "SELECT";
        if (isOurs && text.find("items") != std::string::npos) texts.push_back(text);
    }
    std::string table = R"("main"."items")";
    if (GetParam() == SystemKind::Postgres) table = R"("postgres"."public"."items")";
    if (GetParam() == SystemKind::MariaDb) table = R"("test"."items")";
    std::vector<std::string> expected = {
        "UPDATE " + table + R"( SET "name" = ?, "n" = ? WHERE "id" = ? AND "name" = ? AND "n" = ?)",
        "INSERT INTO " + table + R"( ("name", "n") VALUES (?, ?))" +
            (GetParam() == SystemKind::Postgres ? R"( RETURNING "id")" : ""),
        "UPDATE " + table + R"( SET "name" = ? WHERE "id" = ? AND "name" IS NULL)",
        "DELETE FROM " + table + R"( WHERE "id" = ?)",
        R"(SELECT "id", "name", "n" FROM )" + table + R"( WHERE "id" = ?)"};
    if (GetParam() == SystemKind::MariaDb) {
        for (std::string& text : expected)
            std::ranges::replace(text, '"', '`');
    }
    EXPECT_EQ(texts, expected);
    EXPECT_EQ(Stored(u"name", 1), "x'; --");
}

TEST_P(WritingRulesTest, FindsValuesOfEveryTypeAsTheyWereRead) {
    Drop(u"kinds");
    const char16_t* const moment = GetParam() == SystemKind::MariaDb ? u"datetime(6)" : u"timestamp";
    Do(u"create table kinds (id integer primary key, small smallint, big bigint, flag boolean, code char(5), "
       u"word varchar(20), amount numeric(20,6), day date, hour time, moment " +
       std::u16string(moment) + u", none varchar(5))");
    Do(u"insert into kinds values (1, 32767, 9007199254740993, true, 'ab', '', 12345678901234.123456, '2003-07-04', "
       u"'13:05:09', '2003-07-04 13:05:09.123456', null)");
    Do(u"insert into kinds values (2, -1, -9007199254740993, false, '中 文', '𠀀 ', -0.000001, '1899-12-29', "
       u"'00:00:00', '1899-12-29 06:00:00', '')");
    for (const LONG lock : {3, 4}) {
        SCOPED_TRACE(lock);
        const Object rows = OpenRows(connection_, u"select * from kinds order by id", lock);
        SetProperty(rows, u"Update Criteria", Number(1));
        for (LONG position : {1, 2}) {
            SCOPED_TRACE(position);
            GoTo(rows, position);
            // Each column once, with the others as they were read, and then as they were written.
            for (const char16_t* column :
                 {u"small", u"big", u"flag", u"code", u"word", u"amount", u"day", u"hour", u"moment", u"none"}) {
                SCOPED_TRACE(ToUtf8(column));
                const Value same = rows.Get(kCollect, {Text(column)}).value;
                PutValue(rows, column, Value::Null());
                const Outcome cleared = rows.Call(lock == 3 ? kUpdate : kUpdateBatch);
                ASSERT_TRUE(cleared.Ok()) << cleared;
                ASSERT_TRUE(PutValue(rows, column, same).Ok());
                const Outcome again = rows.Call(lock == 3 ? kUpdate : kUpdateBatch);
                ASSERT_TRUE(again.Ok()) << again;
            }
        }
    }
    EXPECT_EQ(AskFor(u"select big from kinds where id = 1"), "9007199254740993");
    const Object rows = OpenRows(connection_, u"select * from kinds order by id");
    SetProperty(rows, u"Update Criteria", Number(1));
    for (int i = 0; i < 2; ++i) {
        const Outcome deleted = rows.Call(kDelete);
        ASSERT_TRUE(deleted.Ok()) << deleted;
        rows.Call(kMoveNext);
    }
    EXPECT_EQ(AskFor(u"select count(*) from kinds"), "0");
}

TEST_P(WritingRulesTest, KeepsToTheWholeKeyAlsoWhenItChanges) {
    Drop(u"pairs");
    Do(u"create table pairs (a integer, b varchar(10), n integer, primary key (a, b))");
    for (const char16_t* values : {u"(1, 'x', 1)", u"(1, 'y', 2)", u"(2, 'x', 3)"})
        Do(u"insert into pairs values " + std::u16string(values));
    for (const LONG lock : {3, 4}) {
        SCOPED_TRACE(lock);
        const Object rows = OpenRows(connection_, u"select * from pairs order by n", lock);
        const DISPID write = lock == 3 ? kUpdate : kUpdateBatch;
        GoTo(rows, 2);
        PutValue(rows, u"b", Text(lock == 3 ? u"z" : u"y"));
        const Outcome moved = rows.Call(write);
        ASSERT_TRUE(moved.Ok()) << moved;
        // By its new key.
        PutValue(rows, u"n", Number(20 + lock));
        const Outcome again = rows.Call(write);
        ASSERT_TRUE(again.Ok()) << again;
        EXPECT_EQ(AskFor(u"select count(*) from pairs where n in (1, 3)"), "2");
        Do(u"update pairs set n = 2 where n > 3");
    }
    const Object part = OpenRows(connection_, u"select a, n from pairs");
    PutValue(part, u"n", Number(9));
    EXPECT_EQ(part.Call(kUpdate).Error(), 0x80004005u);
    const Object rows = OpenRows(connection_, u"select * from pairs order by n");
    Theirs(u"update pairs set b = 'theirs' where n = 1");
    PutValue(rows, u"n", Number(9));
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80040E38u);
}

TEST_P(WritingRulesTest, TakesAUniqueIndexForAKeyUnlessItMayBeNull) {
    Drop(u"coded");
    Do(u"create table coded (code varchar(10) not null, other varchar(10), n integer)");
    Do(u"create unique index coded_other on coded (other)");
    Do(u"insert into coded values ('a', 'b', 1)");
    {
        const Object rows = OpenRows(connection_, u"select * from coded");
        PutValue(rows, u"n", Number(2));
        EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80004005u);
    }
    Do(u"create unique index coded_code on coded (code)");
    const Object rows = OpenRows(connection_, u"select * from coded");
    PutValue(rows, u"n", Number(2));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(AskFor(u"select n from coded"), "2");
}

TEST_P(WritingRulesTest, NoticesThatNullBecameAValueOrAValueNull) {
    const struct {
        const char* label;
        LONG position;
        const char16_t* column;
        const char16_t* theirs;
        unsigned error;
    } kRows[] = {
        {"null became a text", 3, u"name", u"update items set name = 'x' where id = 3", 0x80040E38},
        {"null became a number", 4, u"n", u"update items set n = 0 where id = 4", 0x80040E38},
        {"a text became null", 1, u"name", u"update items set name = null where id = 1", 0x80040E38},
        {"null became an empty text", 3, u"name", u"update items set name = '' where id = 3", 0x80040E38},
        {"null stayed null", 3, u"name", u"update items set n = 30 where id = 3", 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetUp();
        const Object rows = Items();
        GoTo(rows, row.position);
        PutValue(rows, row.column, Text(u"7"));
        Theirs(row.theirs);
        const Outcome written = rows.Call(kUpdate);
        EXPECT_EQ(written.Error(), row.error) << written;
    }
}

TEST_P(WritingRulesTest, DeletesByTheKeyOrByAllColumnsAsTheCriteriaSay) {
    const struct {
        LONG criteria;
        unsigned error;
    } kRows[] = {{0, 0}, {1, 0x80040E38}, {2, 0}, {3, 0x80040E38}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.criteria);
        SetUp();
        const Object rows = Items();
        SetProperty(rows, u"Update Criteria", Number(row.criteria));
        Theirs(u"update items set n = 50 where id = 1");
        const Outcome deleted = rows.Call(kDelete);
        EXPECT_EQ(deleted.Error(), row.error) << deleted;
        EXPECT_EQ(AskFor(u"select count(*) from items"), row.error == 0 ? "3" : "4");
        if (row.error == 0) continue;
        EXPECT_EQ(rows.Get(kStatus).Long(), 0x808);
        EXPECT_EQ(ValueOf(rows, u"n"), "1");
        // Read again, it is deleted as it is now.
        ASSERT_TRUE(rows.Call(kResync, {Number(1)}).Ok());
        ASSERT_TRUE(rows.Call(kDelete).Ok());
    }
}

TEST_P(WritingRulesTest, WritesTheValueThatIsThereAlready) {
    for (const LONG lock : {3, 4}) {
        SCOPED_TRACE(lock);
        const Object rows = Items(lock);
        PutValue(rows, u"n", Number(1));
        PutValue(rows, u"name", Text(u"a"));
        const Outcome written = rows.Call(lock == 3 ? kUpdate : kUpdateBatch);
        ASSERT_TRUE(written.Ok()) << written;
        EXPECT_EQ(rows.Get(kStatus).Long(), 0);
    }
}

TEST_P(WritingRulesTest, SendsAChangeAgainOnceTheConflictHasBeenSeen) {
    const Object mine = Items();
    const Object yours = OpenRows(Connect(), u"select * from items order by id");
    PutValue(mine, u"n", Number(10));
    PutValue(yours, u"n", Number(20));
    ASSERT_TRUE(yours.Call(kUpdate).Ok());
    EXPECT_EQ(mine.Call(kUpdate).Error(), 0x80040E38u);
    EXPECT_EQ(mine.Get(kEditMode).Long(), 1);
    ASSERT_TRUE(mine.Call(kResync, {Number(1), Number(1)}).Ok());
    const Object n = mine.Get(kFields, {Text(u"n")}).Result();
    EXPECT_EQ(n.Get(field::kValue).Utf8(), "10");
    EXPECT_EQ(n.Get(field::kOriginalValue).Utf8(), "1");
    EXPECT_EQ(n.Get(field::kUnderlyingValue).Utf8(), "20");
    const Outcome again = mine.Call(kUpdate);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Stored(u"n", 1), "10");
    EXPECT_EQ(mine.Get(kStatus).Long(), 0);
    // The other one does not know yet.
    PutValue(yours, u"n", Number(30));
    EXPECT_EQ(yours.Call(kUpdate).Error(), 0x80040E38u);
    ASSERT_TRUE(yours.Call(kResync, {Number(1), Number(2)}).Ok());
    EXPECT_EQ(yours.Get(kEditMode).Long(), 0);
    EXPECT_EQ(ValueOf(yours, u"n"), "10");
}

TEST_P(WritingRulesTest, EndsAtALockWithinItsTime) {
    const Object rows = Items();
    SetProperty(rows, u"Command Time Out", Number(1));
    const Object other = Connect();
    other.Call(connection::kBeginTrans);
    Execute(other, u"update items set n = 5 where id = 1");
    PutValue(rows, u"n", Number(7));
    const DWORD start = GetTickCount();
    const Outcome written = rows.Call(kUpdate);
    EXPECT_LT(GetTickCount() - start, 8000u);
    EXPECT_FALSE(written.Ok());
    EXPECT_EQ(rows.Get(kEditMode).Long(), 1);
    other.Call(connection::kRollbackTrans);
    const Outcome again = rows.Call(kUpdate);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Stored(u"n", 1), "7");
}

TEST_P(WritingRulesTest, LeavesANumberAloneThatItIsNotToReadBack) {
    const Object rows = Items();
    SetProperty(rows, u"Update Resync", Number(0));
    rows.Call(kAddNew);
    PutValue(rows, u"n", Number(5));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(ValueOf(rows, u"id"), "NULL");
    EXPECT_EQ(Stored(u"n", 5), "5");
}

TEST_P(WritingRulesTest, ReadsARowAgainByTheProgramsOwnCommand) {
    const Object rows = OpenRows(connection_, u"select id, name, n * 2 as twice from items order by id");
    SetProperty(rows, u"Resync Command", Text(u"select id, name, n * 2 from items where id = ?"));
    Theirs(u"update items set name = 'theirs', n = 21 where id = 1");
    const Outcome read = rows.Call(kResync, {Number(1)});
    ASSERT_TRUE(read.Ok()) << read;
    EXPECT_EQ(ValueOf(rows, u"name"), "theirs");
    EXPECT_EQ(ValueOf(rows, u"twice"), "42");
    SetProperty(rows, u"Resync Command", Text(u"select id from items where id = ?"));
    EXPECT_EQ(rows.Call(kResync, {Number(1)}).Error(), 3001u);
}

TEST_P(WritingRulesTest, KeepsTheTransactionOfItsConnectionWhenARowIsRefused) {
    const Object rows = Items(4);
    connection_.Call(connection::kBeginTrans);
    PutValue(rows, u"n", Number(11));
    GoTo(rows, 2);
    PutValue(rows, u"id", Number(1));
    GoTo(rows, 3);
    PutValue(rows, u"n", Number(33));
    Theirs(u"insert into items (id, name) values (100, 'theirs')");
    EXPECT_EQ(rows.Call(kUpdateBatch).Error(), 0x80040E21u);
    EXPECT_EQ(StatusAt(rows, 1), 0);
    EXPECT_EQ(StatusAt(rows, 2), 0x1082);
    EXPECT_EQ(StatusAt(rows, 3), 0);
    ASSERT_TRUE(connection_.Call(connection::kCommitTrans).Ok());
    const Object again = Connect();
    EXPECT_EQ(Ask(again, u"select n from items where id = 1"), "11");
    EXPECT_EQ(Ask(again, u"select n from items where id = 2"), "2");
    EXPECT_EQ(Ask(again, u"select n from items where id = 3"), "33");
}

TEST_P(WritingRulesTest, SaysWhyARowWasRefused) {
    Drop(u"strict");
    Do(u"create table strict (id integer primary key, n integer not null, m integer check (m < 100))");
    for (const char16_t* values : {u"(1, 1, 1)", u"(2, 2, 2)", u"(3, 3, 3)"})
        Do(u"insert into strict values " + std::u16string(values));
    const Object rows = OpenRows(connection_, u"select * from strict order by id", 4);
    PutValue(rows, u"n", Value::Null());
    GoTo(rows, 2);
    PutValue(rows, u"m", Number(100));
    GoTo(rows, 3);
    PutValue(rows, u"id", Number(1));
    EXPECT_EQ(rows.Call(kUpdateBatch).Error(), 0x80040E21u);
    for (LONG i = 1; i <= 3; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(StatusAt(rows, i), 0x1082);
    }
    EXPECT_EQ(connection_.Get(connection::kErrors).Result().Get(collection::kCount).Long(), 4);
    EXPECT_EQ(AskFor(u"select sum(n + m) from strict"), "12");
}

INSTANTIATE_TEST_SUITE_P(All, WritingRulesTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

/// What a file database does not know: permissions and lengths.
class ServerRulesTest : public WritingRulesTest {};

TEST_P(ServerRulesTest, TellsATooLongTextFromAMissingPermission) {
    Object rows = Items(4);
    PutValue(rows, u"name", Text(u"much too long a text"));
    EXPECT_EQ(rows.Call(kUpdateBatch).Error(), 0x80040E21u);
    EXPECT_EQ(rows.Get(kStatus).Long(), 0x20082);
    Object reader = Connect();
    if (GetParam() == SystemKind::Postgres) {
        Do(u"drop role if exists reader");
        Do(u"create role reader");
        Do(u"grant select on items to reader");
        Execute(reader, u"set role reader");
    } else {
        Do(u"create or replace user reader@localhost identified by 'pw'");
        Do(u"grant select on test.* to reader@localhost");
        std::string text = ConnectionString(GetParam());
        text.replace(text.find("tester"), 6, "reader");
        reader = Object::Create(kConnectionClass);
        ASSERT_TRUE(reader.Call(connection::kOpen, {Text(ToUtf16(text))}).Ok());
    }
    rows = OpenRows(reader, u"select * from items order by id", 4);
    PutValue(rows, u"n", Number(5));
    const Outcome refused = rows.Call(kUpdateBatch);
    EXPECT_EQ(refused.Error(), 0x80040E21u) << refused;
    EXPECT_EQ(rows.Get(kStatus).Long(), 0x10082);
    rows.Call(kClose);
    if (GetParam() == SystemKind::Postgres) {
        Execute(reader, u"reset role");
        Do(u"revoke all on items from reader");
        Do(u"drop role reader");
    }
    EXPECT_EQ(Stored(u"name", 1), "a");
}

INSTANTIATE_TEST_SUITE_P(Servers, ServerRulesTest, ::testing::Values(SystemKind::Postgres, SystemKind::MariaDb),
                         SystemName);

}  // namespace
}  // namespace tk::ado::test
