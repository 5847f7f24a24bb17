// Rows changed through recordsets: keys from the catalog, values as parameters of the types of their columns.
#include "tds_test.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class TdsWritingTest : public TdsTest {
protected:
    void SetUp() override {
        TdsTest::SetUp();
        Do(u"create table goods (id int not null primary key, name nvarchar(20), code varchar(20), price "
           u"decimal(12,2), made datetime, sold bit, note ntext, longer nvarchar(max), data varbinary(max))");
        Do(u"insert into goods values (1, N'苹果', 'a', 1.5, '2003-07-04 13:05:09', 1, N'注', N'长', 0x0102); "
           u"insert into goods (id, name) values (2, N'梨')");
    }
};

TEST_F(TdsWritingTest, ChangesARow) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id");
    ASSERT_TRUE(PutValue(rows, u"name", Text(u"红苹果")).Ok());
    ASSERT_TRUE(PutValue(rows, u"price", Text(u"2.75")).Ok());
    ASSERT_TRUE(PutValue(rows, u"made", Text(u"2010-01-02 03:04:05")).Ok());
    ASSERT_TRUE(PutValue(rows, u"sold", Value::Boolean(false)).Ok());
    ASSERT_TRUE(PutValue(rows, u"note", Text(u"新注")).Ok());
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(AskFor(u"select name || price || made || sold || note from goods where id = 1"),
              ToUtf8(u"红苹果2.752010-01-02 03:04:050新注"));
    ASSERT_TRUE(PutValue(rows, u"price", Value::Null()).Ok());
    const Outcome again = rows.Call(kUpdate);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(AskFor(u"select coalesce(price, 'none') from goods where id = 1"), "none");
}

TEST_F(TdsWritingTest, AddsAndDeletesRows) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id");
    ASSERT_TRUE(rows.Call(kAddNew).Ok());
    PutValue(rows, u"id", Number(3));
    PutValue(rows, u"name", Text(u"香蕉"));
    PutValue(rows, u"code", Text(u"中"));
    const Outcome added = rows.Call(kUpdate);
    ASSERT_TRUE(added.Ok()) << added;
    EXPECT_EQ(AskFor(u"select name || code from goods where id = 3"), ToUtf8(u"香蕉中"));
    rows.Call(kMoveFirst);
    const Outcome deleted = rows.Call(kDelete);
    ASSERT_TRUE(deleted.Ok()) << deleted;
    EXPECT_EQ(AskFor(u"select count(*) from goods"), "2");
    EXPECT_EQ(AskFor(u"select min(id) from goods"), "2");
}

TEST_F(TdsWritingTest, ReadsBackTheNumberThatARowWasGiven) {
    Do(u"create table counted (id integer primary key, name nvarchar(20))");
    Do(u"insert into counted values (41, N'前')");
    const Object rows = OpenRows(connection_, u"select * from counted order by id");
    for (const char16_t* name : {u"甲", u"乙"}) {
        ASSERT_TRUE(rows.Call(kAddNew).Ok());
        PutValue(rows, u"name", Text(name));
        const Outcome added = rows.Call(kUpdate);
        ASSERT_TRUE(added.Ok()) << added;
    }
    EXPECT_EQ(ValueOf(rows, u"id"), "43");
    EXPECT_EQ(AskFor(u"select name from counted where id = 43"), ToUtf8(u"乙"));
    // With the number known, the row can be changed and deleted.
    PutValue(rows, u"name", Text(u"丙"));
    const Outcome changed = rows.Call(kUpdate);
    ASSERT_TRUE(changed.Ok()) << changed;
    EXPECT_EQ(AskFor(u"select name from counted where id = 43"), ToUtf8(u"丙"));
    ASSERT_TRUE(rows.Call(kDelete).Ok());
    EXPECT_EQ(AskFor(u"select count(*) from counted"), "2");
}

TEST_F(TdsWritingTest, NoticesAnotherWriter) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id");
    Execute(Connect(), u"update goods set name = N'他' where id = 1");
    PutValue(rows, u"name", Text(u"我"));
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80040E38u);
    EXPECT_EQ(AskFor(u"select name from goods where id = 1"), ToUtf8(u"他"));
}

TEST_F(TdsWritingTest, TellsAKeyThatIsThereAlready) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id");
    rows.Call(kAddNew);
    PutValue(rows, u"id", Number(2));
    const Outcome refused = rows.Call(kUpdate);
    EXPECT_EQ(refused.Error(), 0x80040E2Fu) << refused;
    rows.Call(kCancelUpdate);
    EXPECT_EQ(AskFor(u"select count(*) from goods"), "2");
}

TEST_F(TdsWritingTest, WritesLongValues) {
    const std::u16string text(100'000, u'长');
    const Object rows = OpenRows(connection_, u"select id, note, longer, data from goods order by id");
    ASSERT_TRUE(PutValue(rows, u"note", Text(text)).Ok());
    ASSERT_TRUE(PutValue(rows, u"longer", Text(text + u"尾")).Ok());
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(AskFor(u"select length(note) || ' ' || length(longer) from goods where id = 1"), "100000 100001");
    const Object again = OpenRows(connection_, u"select longer, note from goods where id = 1");
    EXPECT_EQ(ValueOf(again, u"longer"), ToUtf8(text + u"尾"));
    EXPECT_EQ(ValueOf(again, u"note"), ToUtf8(text));
}

TEST_F(TdsWritingTest, SendsABatchInATransaction) {
    const Object rows = OpenRows(connection_, u"select id, name from goods order by id", 4);
    PutValue(rows, u"name", Text(u"一"));
    rows.Call(kMoveNext);
    PutValue(rows, u"name", Text(u"二"));
    ASSERT_TRUE(connection_.Call(connection::kBeginTrans).Ok());
    const Outcome written = rows.Call(kUpdateBatch);
    ASSERT_TRUE(written.Ok()) << written;
    ASSERT_TRUE(connection_.Call(connection::kRollbackTrans).Ok());
    EXPECT_EQ(AskFor(u"select group_concat(name) from goods"), ToUtf8(u"苹果,梨"));
}

}  // namespace
}  // namespace tk::ado::test
