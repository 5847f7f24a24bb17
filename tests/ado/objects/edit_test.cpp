// Changing rows: one at a time, in batches, against another writer.
#include <gtest/gtest.h>

#include "database_test.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class EditTest : public DatabaseTest {
protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        connection_ = Connect();
        CreateGoods(connection_);
    }
    Object Goods(LONG lock = 3) const { return OpenRows(connection_, u"select * from goods order by id", lock); }
    std::string Stored(std::u16string_view column, int id) const {
        return Ask(connection_, u"select " + std::u16string(column) + u" from goods where id = " + NumberText(id));
    }

    Object connection_;
};

TEST_F(EditTest, WritesAChangedRow) {
    const Object rows = Goods();
    EXPECT_EQ(rows.Get(kEditMode).Long(), 0);
    EXPECT_EQ(rows.Get(kStatus).Long(), 8);
    EXPECT_TRUE(PutValue(rows, u"name", Text(u"梨")).Ok());
    EXPECT_EQ(rows.Get(kEditMode).Long(), 1);
    EXPECT_EQ(ValueOf(rows, u"name"), ToUtf8(u"梨"));
    const Object name = rows.Get(kFields, {Text(u"name")}).Result();
    EXPECT_EQ(name.Get(field::kOriginalValue).Utf8(), ToUtf8(u"苹果"));
    EXPECT_EQ(name.Get(field::kUnderlyingValue).Utf8(), ToUtf8(u"苹果"));
    EXPECT_EQ(Stored(u"name", 1), ToUtf8(u"苹果"));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(rows.Get(kEditMode).Long(), 0);
    EXPECT_EQ(rows.Get(kStatus).Long(), 0);
    EXPECT_EQ(Stored(u"name", 1), ToUtf8(u"梨"));
    EXPECT_EQ(name.Get(field::kOriginalValue).Utf8(), ToUtf8(u"梨"));
    EXPECT_TRUE(rows.Call(kUpdate).Ok());
}

TEST_F(EditTest, WritesNothingWhereTwoTablesHaveTheName) {
    // The driver tells the name of a table and not its schema: the row of the other one must not be changed.
    Execute(connection_, u"create temporary table goods as select * from main.goods");
    const Object rows = OpenRows(connection_, u"select * from main.goods order by id", 3);
    EXPECT_TRUE(PutValue(rows, u"stock", Number(77)).Ok());
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80004005u);
    rows.Call(kCancelUpdate);
    EXPECT_EQ(Ask(connection_, u"select count(*) from main.goods where stock = 77"), "0");
    EXPECT_EQ(Ask(connection_, u"select count(*) from temp.goods where stock = 77"), "0");
}

TEST_F(EditTest, SendsTheOriginalValueAgainOnceTheConflictHasBeenSeen) {
    const Object rows = Goods(4);
    EXPECT_TRUE(PutValue(rows, u"stock", Number(11)).Ok());
    Execute(connection_, u"update goods set stock = 99 where id = 1");
    EXPECT_FALSE(rows.Call(kUpdateBatch).Ok());
    EXPECT_TRUE(rows.Call(kResync, {Number(1), Number(1)}).Ok());
    EXPECT_TRUE(PutValue(rows, u"stock", Number(10)).Ok());  // as it was before all this
    const Outcome outcome = rows.Call(kUpdateBatch);
    EXPECT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(Stored(u"stock", 1), "10");
}

TEST_F(EditTest, WritesNullAndChangesFromNull) {
    const Object rows = Goods();
    EXPECT_TRUE(PutValue(rows, u"name", Value::Null()).Ok());
    EXPECT_TRUE(PutValue(rows, u"stock", Value()).Ok());
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(Stored(u"name", 1), "NULL");
    EXPECT_EQ(Stored(u"stock", 1), "NULL");
    EXPECT_TRUE(PutValue(rows, u"name", Text(u"again")).Ok());
    const Outcome outcome = rows.Call(kUpdate);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(Stored(u"name", 1), "again");
}

TEST_F(EditTest, SavesAnEditByMoving) {
    const Object rows = Goods();
    PutValue(rows, u"stock", Number(77));
    EXPECT_TRUE(rows.Call(kMoveNext).Ok());
    EXPECT_EQ(Stored(u"stock", 1), "77");
    PutValue(rows, u"stock", Number(78));
    EXPECT_TRUE(rows.Put(kFilter, Text(u"id = 3")).Ok());
    EXPECT_EQ(Stored(u"stock", 2), "78");
}

TEST_F(EditTest, DropsAnEdit) {
    const Object rows = Goods();
    PutValue(rows, u"stock", Number(77));
    EXPECT_TRUE(rows.Call(kCancelUpdate).Ok());
    EXPECT_EQ(ValueOf(rows, u"stock"), "10");
    EXPECT_EQ(rows.Get(kEditMode).Long(), 0);
    EXPECT_TRUE(rows.Call(kCancelUpdate).Ok());
}

TEST_F(EditTest, PutsFieldsInLists) {
    const Object rows = Goods();
    ASSERT_TRUE(rows.Call(kUpdate, {Array({Text(u"name"), Number(3)}), Array({Text(u"kiwi"), Number(4)})}).Ok());
    EXPECT_EQ(Stored(u"name", 1), "kiwi");
    EXPECT_EQ(Stored(u"stock", 1), "4");
    ASSERT_TRUE(rows.Call(kUpdate, {Text(u"name"), Text(u"fig")}).Ok());
    EXPECT_EQ(Stored(u"name", 1), "fig");
    EXPECT_EQ(rows.Call(kUpdate, {Array({Text(u"name"), Text(u"stock")}), Array({Text(u"x")})}).Error(), 3001u);
    EXPECT_EQ(rows.Call(kUpdate, {Text(u"nothing"), Text(u"x")}).Error(), 3265u);
}

TEST_F(EditTest, RefusesValuesThatDoNotFit) {
    const Object rows = Goods();
    EXPECT_EQ(PutValue(rows, u"stock", Text(u"many")).Error(), 3421u);
    EXPECT_EQ(rows.Get(kEditMode).Long(), 0);
    EXPECT_TRUE(PutValue(rows, u"stock", Text(u"12")).Ok());
    EXPECT_EQ(ValueOf(rows, u"stock"), "12");
    rows.Call(kCancelUpdate);
    rows.Call(kMoveLast);
    rows.Call(kMoveNext);
    EXPECT_EQ(PutValue(rows, u"stock", Number(1)).Error(), 3021u);
}

TEST_F(EditTest, AddsARowAndReadsItsNumberBack) {
    const Object rows = Goods();
    rows.Call(kMoveNext);
    ASSERT_TRUE(rows.Call(kAddNew).Ok());
    EXPECT_EQ(rows.Get(kEditMode).Long(), 2);
    EXPECT_EQ(rows.Get(kStatus).Long(), 1);
    EXPECT_EQ(ValueOf(rows, u"name"), "NULL");
    EXPECT_TRUE(rows.Get(kEof).False());
    PutValue(rows, u"name", Text(u"mango"));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(rows.Get(kEditMode).Long(), 0);
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 4);
    EXPECT_EQ(ValueOf(rows, u"id"), "4");
    EXPECT_EQ(rows.Get(kAbsolutePosition).Long(), 4);
    EXPECT_EQ(Stored(u"name", 4), "mango");
    // The row can be changed at once, by the number just read.
    PutValue(rows, u"stock", Number(6));
    const Outcome changed = rows.Call(kUpdate);
    ASSERT_TRUE(changed.Ok()) << changed;
    EXPECT_EQ(Stored(u"stock", 4), "6");
    EXPECT_TRUE(rows.Call(kMoveNext).Ok());
    EXPECT_TRUE(rows.Get(kEof).True());
}

TEST_F(EditTest, GoesBackToTheFormerRowWhenAnAdditionIsDropped) {
    const Object rows = Goods();
    rows.Call(kMoveNext);
    rows.Call(kAddNew);
    PutValue(rows, u"name", Text(u"nobody"));
    ASSERT_TRUE(rows.Call(kCancelUpdate).Ok());
    EXPECT_EQ(ValueOf(rows, u"id"), "2");
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
}

TEST_F(EditTest, AddsARowAtOnceFromLists) {
    const Object rows = Goods();
    const Outcome added = rows.Call(kAddNew, {Array({Text(u"id"), Text(u"name")}), Array({Number(40), Text(u"lime")})});
    ASSERT_TRUE(added.Ok()) << added;
    EXPECT_EQ(rows.Get(kEditMode).Long(), 0);
    EXPECT_EQ(Stored(u"name", 40), "lime");
    EXPECT_EQ(rows.Call(kAddNew, {Text(u"id")}).Error(), 3001u);
    // The key is there already: nothing is added, the addition stays open until it is dropped.
    const Outcome twice = rows.Call(kAddNew, {Array({Text(u"id")}), Array({Number(40)})});
    EXPECT_EQ(twice.Error(), 0x80040E2Fu) << twice;
    EXPECT_EQ(rows.Get(kEditMode).Long(), 2);
    EXPECT_TRUE(rows.Call(kCancelUpdate).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 4);
}

TEST_F(EditTest, AddsARowOfDefaultsAlone) {
    const Object rows = Goods();
    rows.Call(kAddNew);
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(ValueOf(rows, u"id"), "4");
}

TEST_F(EditTest, DeletesARowAndStaysThere) {
    const Object rows = Goods();
    rows.Call(kMoveNext);
    const Value bookmark = rows.Get(kBookmark).value;
    const Object name = rows.Get(kFields, {Text(u"name")}).Result();
    const Outcome deleted = rows.Call(kDelete);
    ASSERT_TRUE(deleted.Ok()) << deleted;
    EXPECT_EQ(Ask(connection_, u"select count(*) from goods"), "2");
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 2);
    EXPECT_TRUE(rows.Get(kEof).False());
    EXPECT_EQ(name.Get(field::kValue).Error(), 0x80040E23u);
    EXPECT_EQ(name.Get(field::kOriginalValue).Utf8(), "banana");
    EXPECT_EQ(rows.Get(kEditMode).Error(), 3021u);
    EXPECT_EQ(rows.Get(kStatus).Long(), 4);
    EXPECT_EQ(rows.Call(kDelete).Error(), 3021u);
    EXPECT_EQ(rows.Call(kUpdate).Error(), 3021u);
    EXPECT_EQ(PutValue(rows, u"name", Text(u"x")).Error(), 0x80040E23u);
    EXPECT_EQ(rows.Get(kBookmark).value.Get().dblVal, bookmark.Get().dblVal);
    EXPECT_TRUE(rows.Call(kMoveNext).Ok());
    EXPECT_EQ(ValueOf(rows, u"id"), "3");
    EXPECT_EQ(rows.Call(kDelete, {Number(3)}).Error(), 3001u);
    EXPECT_EQ(rows.Call(kDelete, {Number(2)}).Error(), 3001u);
}

TEST_F(EditTest, DeletesWhileWalkingAFilter) {
    const Object rows = Goods();
    rows.Put(kFilter, Text(u"id <> 2"));
    LONG left = rows.Get(kRecordCount).Long();
    for (; left > 0; --left) {
        ASSERT_TRUE(rows.Call(kDelete, {Number(1)}).Ok());
        ASSERT_TRUE(rows.Call(kMoveNext).Ok());
    }
    EXPECT_TRUE(rows.Get(kEof).True());
    EXPECT_EQ(Ask(connection_, u"select group_concat(id) from goods"), "2");
}

TEST_F(EditTest, DeletesTheRowsOfAGroup) {
    const Object rows = Goods();
    rows.Put(kFilter, Array({Value::Real(1), Value::Real(3)}));
    ASSERT_TRUE(rows.Call(kDelete, {Number(2)}).Ok());
    EXPECT_EQ(Ask(connection_, u"select group_concat(id) from goods"), "2");
}

/// Another writer has changed the row in between.
class ConflictTest : public EditTest {
protected:
    Object WithCriteria(LONG criteria) const {
        const Object rows = Goods();
        rows.Get(kProperties)
            .Result()
            .Get(collection::kItem, {Text(u"Update Criteria")})
            .Result()
            .Put(0, Number(criteria));
        return rows;
    }
};

TEST_F(ConflictTest, IsNoticedAsTheCriteriaSay) {
    const Object other = Connect();
    const struct {
        const char* label;
        LONG criteria;
        const char16_t* theirs;
        const char16_t* column;
        unsigned error;
    } kRows[] = {
        {"key only, same column", 0, u"update goods set stock = 50 where id = 1", u"stock", 0},
        {"key only, row gone", 0, u"delete from goods where id = 1", u"stock", 0x80040E38},
        {"all columns, another column", 1, u"update goods set name = 'other' where id = 1", u"stock", 0x80040E38},
        {"all columns, inexact ones left out", 1, u"update goods set price = 9.5 where id = 1", u"stock", 0},
        {"updated columns, the same", 2, u"update goods set stock = 50 where id = 1", u"stock", 0x80040E38},
        {"updated columns, another", 2, u"update goods set name = 'other' where id = 1", u"stock", 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Execute(other, u"delete from goods");
        Execute(other, u"insert into goods values (1, 'mine', 1.5, 10)");
        const Object rows = WithCriteria(row.criteria);
        PutValue(rows, row.column, Number(11));
        Execute(other, row.theirs);
        const Outcome written = rows.Call(kUpdate);
        EXPECT_EQ(written.Error(), row.error) << written;
        if (row.error == 0) {
            EXPECT_EQ(Stored(u"stock", 1), "11");
            continue;
        }
        // The edit stays open and can be dropped; the status says why.
        EXPECT_EQ(rows.Get(kEditMode).Long(), 1);
        EXPECT_EQ(rows.Get(kStatus).Long() & 0x800, 0x800);
        EXPECT_EQ(rows.Call(kMoveNext).Error(), row.error);
        EXPECT_EQ(ValueOf(rows, u"stock"), "11");
        EXPECT_TRUE(rows.Call(kCancelUpdate).Ok());
    }
}

TEST_F(ConflictTest, LeavesARowThatSomebodyElseDeletedInPlace) {
    const Object rows = Goods();
    Execute(Connect(), u"delete from goods where id = 1");
    const Outcome deleted = rows.Call(kDelete);
    EXPECT_EQ(deleted.Error(), 0x80040E38u) << deleted;
    EXPECT_FALSE(deleted.description.empty());
    EXPECT_EQ(ToUtf8(deleted.source), "Microsoft Cursor Engine");
    EXPECT_EQ(ValueOf(rows, u"id"), "1");
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
}

TEST_F(ConflictTest, IsSettledByReadingTheRowAgain) {
    const Object rows = Goods();
    Execute(Connect(), u"update goods set stock = 50 where id = 1");
    PutValue(rows, u"stock", Number(11));
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80040E38u);
    ASSERT_TRUE(rows.Call(kResync, {Number(1), Number(1)}).Ok());
    const Object stock = rows.Get(kFields, {Text(u"stock")}).Result();
    EXPECT_EQ(stock.Get(field::kUnderlyingValue).Utf8(), "50");
    EXPECT_EQ(stock.Get(field::kOriginalValue).Utf8(), "10");
    EXPECT_EQ(stock.Get(field::kValue).Utf8(), "11");
    const Outcome again = rows.Call(kResync, {Number(1), Number(2)});
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(stock.Get(field::kValue).Utf8(), "50");
    PutValue(rows, u"stock", Number(12));
    EXPECT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(Stored(u"stock", 1), "12");
    Execute(connection_, u"delete from goods where id = 2");
    ASSERT_TRUE(rows.Call(kResync).Ok());
    rows.Call(kMoveNext);
    EXPECT_EQ(rows.Get(kStatus).Long() & 0x40000, 0x40000);
}

TEST_F(EditTest, RefusesToWriteWithoutATableOrAKey) {
    Execute(connection_, u"create table loose (a integer, b integer)");
    Execute(connection_, u"insert into loose values (1, 2)");
    const Object noKey = OpenRows(connection_, u"select * from loose");
    PutValue(noKey, u"b", Number(3));
    EXPECT_EQ(noKey.Call(kUpdate).Error(), 0x80004005u);
    const Object hidden = OpenRows(connection_, u"select name from goods");
    PutValue(hidden, u"name", Text(u"x"));
    EXPECT_EQ(hidden.Call(kUpdate).Error(), 0x80004005u);
    const Object computed = OpenRows(connection_, u"select id, stock + 1 as more from goods");
    PutValue(computed, u"more", Number(3));
    EXPECT_EQ(computed.Call(kUpdate).Error(), 0x80004005u);
    EXPECT_EQ(Ask(connection_, u"select b from loose"), "2");
}

TEST_F(EditTest, WritesThroughAnAliasToTheRightColumn) {
    const Object rows = OpenRows(connection_, u"select id, name as label from goods order by id");
    PutValue(rows, u"label", Text(u"plum"));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Stored(u"name", 1), "plum");
}

TEST_F(EditTest, WritesOneTableOfAJoin) {
    Execute(connection_, u"create table maker (mid integer primary key, maker varchar(20), good integer)");
    Execute(connection_, u"insert into maker values (1, 'Acme', 1)");
    const Object rows =
        OpenRows(connection_, u"select g.id, g.name, m.mid, m.maker from goods g join maker m on m.good = g.id");
    PutValue(rows, u"maker", Text(u"Ajax"));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Ask(connection_, u"select maker from maker"), "Ajax");
    EXPECT_EQ(rows.Call(kDelete).Error(), 0x80004005u);
    rows.Get(kProperties).Result().Get(collection::kItem, {Text(u"Unique Table")}).Result().Put(0, Text(u"maker"));
    const Outcome deleted = rows.Call(kDelete);
    EXPECT_TRUE(deleted.Ok()) << deleted;
    EXPECT_EQ(Ask(connection_, u"select count(*) from maker"), "0");
    EXPECT_EQ(Ask(connection_, u"select count(*) from goods"), "3");
}

TEST_F(EditTest, KeepsNamesWithQuotesAndBlanksApart) {
    Execute(connection_, u"create table \"odd \"\"one\" (\"the key\" integer primary key, \"a value\" varchar(9))");
    Execute(connection_, u"insert into \"odd \"\"one\" values (1, 'x')");
    const Object rows = OpenRows(connection_, u"select * from \"odd \"\"one\"");
    PutValue(rows, u"a value", Text(u"it's; --"));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Ask(connection_, u"select \"a value\" from \"odd \"\"one\""), "it's; --");
}

TEST_F(EditTest, TakesPartInTheTransactionOfItsConnection) {
    const Object rows = Goods();
    connection_.Call(connection::kBeginTrans);
    PutValue(rows, u"stock", Number(99));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(Stored(u"stock", 1), "99");
    connection_.Call(connection::kRollbackTrans);
    EXPECT_EQ(Stored(u"stock", 1), "10");
}

TEST_F(EditTest, WritesLongValuesInPieces) {
    Execute(connection_, u"create table pages (id integer primary key, body text, data blob)");
    Execute(connection_, u"insert into pages values (1, 'old', x'0102')");
    const Object rows = OpenRows(connection_, u"select * from pages");
    const Object body = rows.Get(kFields, {Text(u"body")}).Result();
    EXPECT_EQ(body.Call(field::kGetChunk, {Number(2)}).Utf8(), "ol");
    EXPECT_EQ(body.Call(field::kGetChunk, {Number(2)}).Utf8(), "d");
    EXPECT_TRUE(body.Call(field::kGetChunk, {Number(2)}).value.IsNull());
    EXPECT_EQ(body.Call(field::kGetChunk, {Number(0)}).Error(), 3001u);
    EXPECT_TRUE(body.Call(field::kAppendChunk, {Text(u"中文")}).Ok());
    EXPECT_TRUE(body.Call(field::kAppendChunk, {Text(u" and more")}).Ok());
    EXPECT_EQ(ValueOf(rows, u"body"), ToUtf8(u"中文 and more"));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Ask(connection_, u"select body from pages"), ToUtf8(u"中文 and more"));
    const Object id = rows.Get(kFields, {Text(u"id")}).Result();
    EXPECT_EQ(id.Call(field::kGetChunk, {Number(1)}).Error(), 3219u);
    EXPECT_EQ(id.Call(field::kAppendChunk, {Number(1)}).Error(), 3219u);
}

// --- batches ---

TEST_F(EditTest, KeepsChangesOfABatchUntilTheyAreSent) {
    const Object rows = Goods(4);
    PutValue(rows, u"stock", Number(11));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(rows.Get(kStatus).Long(), 0x82);
    EXPECT_EQ(Stored(u"stock", 1), "10");
    rows.Call(kMoveNext);
    ASSERT_TRUE(rows.Call(kDelete).Ok());
    EXPECT_EQ(rows.Get(kStatus).Long(), 0x84);
    EXPECT_EQ(rows.Get(kEditMode).Long(), 4);
    ASSERT_TRUE(rows.Call(kAddNew, {Array({Text(u"name")}), Array({Text(u"lime")})}).Ok());
    EXPECT_EQ(rows.Get(kEditMode).Long(), 2);
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(rows.Get(kStatus).Long(), 0x81);
    rows.Put(kFilter, Number(1));
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    rows.Put(kFilter, Number(0));
    EXPECT_EQ(Ask(connection_, u"select count(*) from goods"), "3");
    const Outcome sent = rows.Call(kUpdateBatch);
    ASSERT_TRUE(sent.Ok()) << sent;
    EXPECT_EQ(
        Ask(connection_, u"select group_concat(id || coalesce(name, '-')) from (select * from goods order by id)"),
        ToUtf8(u"1苹果,3-,4lime"));
    EXPECT_EQ(Stored(u"stock", 1), "11");
    rows.Call(kMoveLast);
    EXPECT_EQ(ValueOf(rows, u"id"), "4");
    EXPECT_EQ(rows.Get(kStatus).Long(), 0);
    rows.Put(kFilter, Number(2));
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
}

TEST_F(EditTest, TakesABatchBack) {
    const Object rows = Goods(4);
    PutValue(rows, u"stock", Number(11));
    rows.Call(kMoveNext);
    rows.Call(kDelete);
    rows.Call(kAddNew);
    PutValue(rows, u"name", Text(u"x"));
    rows.Call(kUpdate);
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    ASSERT_TRUE(rows.Call(kCancelBatch).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    rows.Call(kMoveFirst);
    EXPECT_EQ(ValueOf(rows, u"stock"), "10");
    EXPECT_EQ(rows.Get(kStatus).Long(), 8);
    rows.Call(kMoveNext);
    EXPECT_EQ(ValueOf(rows, u"name"), "banana");
    EXPECT_EQ(Ask(connection_, u"select count(*) from goods"), "3");
    EXPECT_TRUE(rows.Call(kClose).Ok());
}

TEST_F(EditTest, SendsTheOtherRowsOfABatchWhenOneFails) {
    const Object rows = Goods(4);
    for (int i = 0; i < 3; ++i) {
        PutValue(rows, u"stock", Number(100 + i));
        rows.Call(kMoveNext);
    }
    Execute(Connect(), u"update goods set stock = 5 where id = 1");
    const Outcome sent = rows.Call(kUpdateBatch);
    EXPECT_EQ(sent.Error(), 0x80040E21u) << sent;
    EXPECT_EQ(Stored(u"stock", 1), "5");
    EXPECT_EQ(Stored(u"stock", 2), "101");
    EXPECT_EQ(Stored(u"stock", 3), "102");
    rows.Put(kFilter, Number(5));
    ASSERT_EQ(rows.Get(kRecordCount).Long(), 1);
    EXPECT_EQ(rows.Get(kStatus).Long(), 0x882);
    EXPECT_EQ(ValueOf(rows, u"id"), "1");
    ASSERT_TRUE(rows.Call(kResync, {Number(1), Number(2)}).Ok());
    EXPECT_EQ(ValueOf(rows, u"stock"), "5");
}

TEST_F(EditTest, TakesOneRowOfABatchBack) {
    const Object rows = Goods(4);
    PutValue(rows, u"stock", Number(11));
    rows.Call(kUpdate);
    // An edit first, then the change that is pending.
    PutValue(rows, u"stock", Number(12));
    ASSERT_TRUE(rows.Call(kCancelUpdate).Ok());
    EXPECT_EQ(ValueOf(rows, u"stock"), "11");
    EXPECT_EQ(rows.Get(kStatus).Long(), 0x82);
    ASSERT_TRUE(rows.Call(kCancelUpdate).Ok());
    EXPECT_EQ(ValueOf(rows, u"stock"), "10");
    EXPECT_EQ(rows.Get(kStatus).Long(), 8);
    rows.Call(kMoveNext);
    rows.Call(kDelete);
    ASSERT_TRUE(rows.Call(kCancelUpdate).Ok());
    EXPECT_EQ(ValueOf(rows, u"id"), "2");
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    EXPECT_EQ(rows.Get(kStatus).Long(), 8);
    rows.Call(kAddNew, {Array({Text(u"name")}), Array({Text(u"lime")})});
    rows.Call(kUpdate);
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 4);
    ASSERT_TRUE(rows.Call(kCancelUpdate).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    ASSERT_TRUE(rows.Call(kUpdateBatch).Ok());
    EXPECT_EQ(Ask(connection_, u"select count(*) || ' ' || sum(stock) from goods"), "3 17");
}

TEST_F(EditTest, TakesTheCurrentRowOrAGroupOfABatchBack) {
    const Object rows = Goods(4);
    for (LONG i = 1; i <= 3; ++i) {
        rows.Put(kAbsolutePosition, Number(i));
        PutValue(rows, u"stock", Number(100 + i));
    }
    ASSERT_TRUE(rows.Call(kCancelBatch, {Number(1)}).Ok());
    EXPECT_EQ(ValueOf(rows, u"stock"), "7");
    rows.Put(kFilter, Text(u"id = 2"));
    ASSERT_TRUE(rows.Call(kCancelBatch, {Number(2)}).Ok());
    EXPECT_EQ(ValueOf(rows, u"stock"), "NULL");
    rows.Put(kFilter, Number(2));
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 1);
    rows.Put(kFilter, Text(u"id = 9"));
    EXPECT_EQ(rows.Call(kCancelBatch, {Number(2)}).Error(), 3021u);
    EXPECT_EQ(rows.Call(kCancelBatch, {Number(9)}).Error(), 3001u);
    ASSERT_TRUE(rows.Call(kUpdateBatch).Ok());
    EXPECT_EQ(Ask(connection_, u"select group_concat(coalesce(stock, '-')) from (select * from goods order by id)"),
              "101,-,7");
}

TEST_F(EditTest, LosesABatchButNoEditByClosing) {
    const Object single = Goods(3);
    PutValue(single, u"stock", Number(11));
    EXPECT_EQ(single.Call(kClose).Error(), 3219u);
    EXPECT_EQ(single.Call(kRequery).Error(), 3219u);
    EXPECT_EQ(single.Call(kNextRecordset).Error(), 3219u);
    single.Call(kCancelUpdate);
    EXPECT_TRUE(single.Call(kClose).Ok());
    const Object batch = Goods(4);
    PutValue(batch, u"stock", Number(11));
    EXPECT_TRUE(batch.Call(kClose).Ok());
    EXPECT_EQ(Stored(u"stock", 1), "10");
}

TEST_F(EditTest, SavesAnOpenEditBeforeItAddsARow) {
    const Object rows = Goods();
    PutValue(rows, u"stock", Number(11));
    ASSERT_TRUE(rows.Call(kAddNew).Ok());
    EXPECT_EQ(Stored(u"stock", 1), "11");
    PutValue(rows, u"name", Text(u"first"));
    ASSERT_TRUE(rows.Call(kAddNew).Ok());
    EXPECT_EQ(Stored(u"name", 4), "first");
    EXPECT_EQ(rows.Get(kEditMode).Long(), 2);
    EXPECT_EQ(ValueOf(rows, u"name"), "NULL");
    const Object name = rows.Get(kFields, {Text(u"name")}).Result();
    PutValue(rows, u"name", Text(u"second"));
    EXPECT_TRUE(name.Get(field::kOriginalValue).value.IsNull());
    EXPECT_TRUE(name.Get(field::kUnderlyingValue).value.IsNull());
    ASSERT_TRUE(rows.Call(kMoveFirst).Ok());
    EXPECT_EQ(Stored(u"name", 5), "second");
}

TEST_F(EditTest, AppendsPiecesToNewRowsAndForgetsThoseThatAreDropped) {
    Execute(connection_, u"create table pages (id integer primary key, body text, data blob)");
    const Object rows = OpenRows(connection_, u"select * from pages");
    const Object body = rows.Get(kFields, {Text(u"body")}).Result();
    const Object data = rows.Get(kFields, {Text(u"data")}).Result();
    EXPECT_EQ(body.Call(field::kAppendChunk, {Text(u"x")}).Error(), 3021u);
    rows.Call(kAddNew);
    EXPECT_TRUE(body.Call(field::kGetChunk, {Number(2)}).value.IsNull());
    ASSERT_TRUE(body.Call(field::kAppendChunk, {Text(u"one ")}).Ok());
    ASSERT_TRUE(body.Call(field::kAppendChunk, {Text(u"two")}).Ok());
    EXPECT_EQ(body.Get(field::kActualSize).Long() > 0, true);
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Ask(connection_, u"select body from pages"), "one two");
    ASSERT_TRUE(body.Call(field::kAppendChunk, {Text(u"lost")}).Ok());
    EXPECT_EQ(rows.Get(kEditMode).Long(), 1);
    rows.Call(kCancelUpdate);
    ASSERT_TRUE(body.Call(field::kAppendChunk, {Text(u"new")}).Ok());
    EXPECT_EQ(ValueOf(rows, u"body"), "new");
    ASSERT_TRUE(body.Call(field::kAppendChunk, {Value::Null()}).Ok());
    EXPECT_EQ(ValueOf(rows, u"body"), "NULL");
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(Ask(connection_, u"select body from pages"), "NULL");
    EXPECT_TRUE(data.Call(field::kGetChunk, {Number(5)}).value.IsNull());
    const Object readOnly = OpenRows(connection_, u"select * from pages", 1);
    EXPECT_EQ(readOnly.Get(kFields, {Text(u"body")}).Result().Call(field::kAppendChunk, {Text(u"x")}).Error(), 3251u);
}

TEST_F(EditTest, RefusesEveryChangeOfAReadOnlySet) {
    const Object rows = Goods(1);
    EXPECT_EQ(rows.Call(kAddNew).Error(), 3251u);
    EXPECT_EQ(rows.Call(kUpdate).Error(), 3251u);
    EXPECT_EQ(rows.Call(kDelete).Error(), 3251u);
    EXPECT_EQ(rows.Call(kCancelBatch).Error(), 3251u);
    EXPECT_EQ(PutValue(rows, u"stock", Number(1)).Error(), 3251u);
    EXPECT_TRUE(rows.Call(kCancelUpdate).Ok());
    EXPECT_EQ(rows.Get(kEditMode).Long(), 0);
}

TEST_F(EditTest, RefusesBatchesOutsideTheirMode) {
    const Object rows = Goods(3);
    EXPECT_EQ(rows.Call(kUpdateBatch).Error(), 3251u);
    EXPECT_EQ(rows.Call(kCancelBatch).Error(), 3219u);
    EXPECT_TRUE(rows.Call(kCancelBatch, {Number(1)}).Ok());
    const Object readOnly = Goods(1);
    EXPECT_EQ(readOnly.Call(kUpdateBatch).Error(), 3251u);
    EXPECT_EQ(readOnly.Call(kResync).Error(), 3251u);
}

}  // namespace
}  // namespace tk::ado::test
