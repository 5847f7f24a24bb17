// Changing rows through a recordset, the same on every database system, with another writer on the other side.
#include <gtest/gtest.h>

#include <unistd.h>

#include <thread>

#include "database_systems.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class WritingTest : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        Drop(u"货物 Goods");
        Do(u"create table \"货物 Goods\" (\"Id\" " + std::u16string(Words().number) +
           u", \"名称\" varchar(40) default 'nameless', \"Unit Price\" decimal(12,2), stock integer, "
           u"made timestamp null, note text, picture " +
           Words().blob + u")");
        for (int i = 1; i <= 5; ++i) {
            Do(u"insert into \"货物 Goods\" (\"名称\", \"Unit Price\", stock, made, note) values ('货" + NumberText(i) +
               u"', " + NumberText(i) + u".50, " + NumberText(i * 10) + u", '2003-07-04 13:05:09', 'long')");
        }
    }

    Object Goods(LONG lock) const {
        return OpenRows(connection_, Sql(u"select * from \"货物 Goods\" order by \"Id\""), lock);
    }
    std::string Stored(std::u16string_view column, int id) const {
        return AskFor(u"select \"" + std::u16string(column) + u"\" from \"货物 Goods\" where \"Id\" = " +
                      NumberText(id));
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

TEST_P(WritingTest, ChangesAddsAndDeletesRowsUnderNamesOfAnyKind) {
    const Object rows = Goods(3);
    PutValue(rows, u"名称", Text(u"苹果's; --"));
    PutValue(rows, u"Unit Price", Text(u"12.25"));
    PutValue(rows, u"made", Text(u"2010-01-02 03:04:05"));
    const Outcome changed = rows.Call(kUpdate);
    ASSERT_TRUE(changed.Ok()) << changed;
    EXPECT_EQ(Stored(u"名称", 1), ToUtf8(u"苹果's; --"));
    EXPECT_EQ(Stored(u"Unit Price", 1), "12.25");
    ASSERT_TRUE(rows.Call(kAddNew).Ok());
    PutValue(rows, u"stock", Number(60));
    const Outcome added = rows.Call(kUpdate);
    ASSERT_TRUE(added.Ok()) << added;
    EXPECT_EQ(ValueOf(rows, u"Id"), "6");
    EXPECT_EQ(rows.Get(kStatus).Long(), 0);
    EXPECT_EQ(Stored(u"名称", 6), "nameless");
    // By the number just read the new row can be changed and deleted.
    PutValue(rows, u"stock", Number(61));
    const Outcome again = rows.Call(kUpdate);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Stored(u"stock", 6), "61");
    const Outcome deleted = rows.Call(kDelete);
    ASSERT_TRUE(deleted.Ok()) << deleted;
    EXPECT_EQ(AskFor(u"select count(*) from \"货物 Goods\""), "5");
}

TEST_P(WritingTest, AddsARowOfDefaultsAlone) {
    const Object rows = Goods(3);
    rows.Call(kAddNew);
    const Outcome added = rows.Call(kUpdate);
    ASSERT_TRUE(added.Ok()) << added;
    EXPECT_EQ(ValueOf(rows, u"Id"), "6");
    EXPECT_EQ(Stored(u"名称", 6), "nameless");
}

TEST_P(WritingTest, ReadsWrittenRowsAgainWhenAsked) {
    const Object rows = Goods(3);
    rows.Call(kAddNew);
    PutValue(rows, u"stock", Number(1));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    // The default is the table's; without being asked for it is not known.
    EXPECT_EQ(ValueOf(rows, u"名称"), "NULL");
    SetProperty(rows, u"Update Resync", Number(1 + 4 + 8));
    rows.Call(kAddNew);
    PutValue(rows, u"stock", Number(2));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(ValueOf(rows, u"名称"), "nameless");
    EXPECT_EQ(rows.Get(kStatus).Long(), 0);
    GoTo(rows, 1);
    Theirs(u"update \"货物 Goods\" set \"名称\" = 'theirs' where \"Id\" = 1");
    PutValue(rows, u"stock", Number(11));
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(ValueOf(rows, u"名称"), "theirs");
    SetProperty(rows, u"Update Resync", Number(2));
    Theirs(u"update \"货物 Goods\" set stock = 99 where \"Id\" = 1");
    PutValue(rows, u"stock", Number(12));
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80040E38u);
    const Object stock = rows.Get(kFields, {Text(u"stock")}).Result();
    EXPECT_EQ(stock.Get(field::kUnderlyingValue).Utf8(), "99");
    EXPECT_EQ(stock.Get(field::kOriginalValue).Utf8(), "11");
    EXPECT_EQ(stock.Get(field::kValue).Utf8(), "12");
}

TEST_P(WritingTest, NoticesAnotherWriterAsTheCriteriaSay) {
    const struct {
        const char* label;
        LONG criteria;
        const char16_t* theirs;
        unsigned error;
    } kRows[] = {
        {"key, the same column", 0, u"update \"货物 Goods\" set stock = 50 where \"Id\" = 1", 0},
        {"key, the row is gone", 0, u"delete from \"货物 Goods\" where \"Id\" = 1", 0x80040E38},
        {"all columns, another column", 1, u"update \"货物 Goods\" set \"名称\" = 'x' where \"Id\" = 1", 0x80040E38},
        {"all columns, a long one", 1, u"update \"货物 Goods\" set note = 'x' where \"Id\" = 1", 0},
        {"all columns, nothing changed", 1, u"update \"货物 Goods\" set stock = 20 where \"Id\" = 2", 0},
        {"changed columns, the same", 2, u"update \"货物 Goods\" set stock = 50 where \"Id\" = 1", 0x80040E38},
        {"changed columns, another", 2, u"update \"货物 Goods\" set \"名称\" = 'x' where \"Id\" = 1", 0},
        {"row version, there is none", 3, u"update \"货物 Goods\" set \"名称\" = 'x' where \"Id\" = 1", 0x80040E38},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetUp();
        const Object rows = Goods(3);
        SetProperty(rows, u"Update Criteria", Number(row.criteria));
        PutValue(rows, u"stock", Number(11));
        Theirs(row.theirs);
        const Outcome written = rows.Call(kUpdate);
        EXPECT_EQ(written.Error(), row.error) << written;
        if (row.error == 0) {
            EXPECT_EQ(Stored(u"stock", 1), "11");
            continue;
        }
        // The edit stays open; the status says why until the edit is dropped.
        EXPECT_EQ(rows.Get(kEditMode).Long(), 1);
        EXPECT_EQ(rows.Get(kStatus).Long(), 0x808);
        EXPECT_TRUE(rows.Call(kCancelUpdate).Ok());
        EXPECT_EQ(rows.Get(kStatus).Long(), 8);
    }
}

TEST_P(WritingTest, NoticesAnotherWriterByTheRowVersion) {
    if (GetParam() == SystemKind::Sqlite) GTEST_SKIP() << "SQLite has no row versions";
    std::u16string_view source = u"select xmin, \"Id\", stock, note from \"货物 Goods\" order by \"Id\"";
    if (GetParam() == SystemKind::MariaDb) {
        Do(u"alter table \"货物 Goods\" add changed timestamp(6) default current_timestamp(6) "
           u"on update current_timestamp(6)");
        source = u"select changed, \"Id\", stock, note from \"货物 Goods\" order by \"Id\"";
    }
    const Object rows = OpenRows(connection_, Sql(source));
    SetProperty(rows, u"Update Criteria", Number(3));
    PutValue(rows, u"stock", Number(11));
    const Outcome first = rows.Call(kUpdate);
    ASSERT_TRUE(first.Ok()) << first;
    // The row has another version now, and it is known.
    PutValue(rows, u"stock", Number(12));
    const Outcome second = rows.Call(kUpdate);
    ASSERT_TRUE(second.Ok()) << second;
    // A column that no other criterion looks at.
    Theirs(u"update \"货物 Goods\" set note = 'theirs' where \"Id\" = 1");
    PutValue(rows, u"stock", Number(13));
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80040E38u);
    EXPECT_EQ(Stored(u"stock", 1), "12");
}

TEST_P(WritingTest, SendsABatchAndGivesEachRowItsStatus) {
    const Object rows = Goods(4);
    PutValue(rows, u"stock", Number(11));
    rows.Call(kMoveNext);
    rows.Call(kDelete);
    ASSERT_TRUE(rows.Call(kAddNew, {Array({Text(u"名称")}), Array({Text(u"新")})}).Ok());
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    ASSERT_TRUE(rows.Call(kAddNew, {Array({Text(u"名称")}), Array({Value::Null()})}).Ok());
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(AskFor(u"select sum(stock) from \"货物 Goods\""), "150");
    const Outcome sent = rows.Call(kUpdateBatch);
    ASSERT_TRUE(sent.Ok()) << sent;
    EXPECT_EQ(AskFor(u"select count(*) from \"货物 Goods\""), "6");
    EXPECT_EQ(Stored(u"stock", 1), "11");
    EXPECT_EQ(Stored(u"名称", 6), ToUtf8(u"新"));
    // What was set to NULL is no default.
    EXPECT_EQ(Stored(u"名称", 7), "NULL");
    EXPECT_EQ(StatusAt(rows, 1), 0);
    EXPECT_EQ(StatusAt(rows, 5), 0);
    EXPECT_EQ(ValueOf(rows, u"Id"), "6");
    EXPECT_EQ(StatusAt(rows, 6), 0);
    EXPECT_EQ(ValueOf(rows, u"Id"), "7");
    rows.Put(kFilter, Number(1));
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 0);
    rows.Put(kFilter, Number(2));
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 4);
}

TEST_P(WritingTest, KeepsConflictsOfABatchPendingUntilTheyAreSettled) {
    const Object rows = Goods(4);
    for (LONG i = 5; i >= 1; --i) {
        GoTo(rows, i);
        if (i == 4) {
            rows.Call(kDelete);
            continue;
        }
        PutValue(rows, u"stock", Number(100 + i));
    }
    Theirs(u"update \"货物 Goods\" set stock = 7 where \"Id\" = 2");
    Theirs(u"delete from \"货物 Goods\" where \"Id\" = 3");
    const Outcome sent = rows.Call(kUpdateBatch);
    EXPECT_EQ(sent.Error(), 0x80040E21u) << sent;
    const Object errors = connection_.Get(connection::kErrors).Result();
    EXPECT_EQ(errors.Get(collection::kCount).Long(), 3);
    EXPECT_EQ(Stored(u"stock", 1), "101");
    EXPECT_EQ(Stored(u"stock", 2), "7");
    EXPECT_EQ(Stored(u"stock", 5), "105");
    EXPECT_EQ(AskFor(u"select count(*) from \"货物 Goods\""), "3");
    rows.Put(kFilter, Number(5));
    ASSERT_EQ(rows.Get(kRecordCount).Long(), 2);
    EXPECT_EQ(StatusAt(rows, 1), 0x882);
    EXPECT_EQ(StatusAt(rows, 2), 0x882);
    // Looked at, then sent once more as it was: our value counts.
    ASSERT_TRUE(rows.Call(kResync, {Number(2), Number(1)}).Ok());
    EXPECT_EQ(StatusAt(rows, 2) & 0x40000, 0x40000);
    GoTo(rows, 1);
    const Object stock = rows.Get(kFields, {Text(u"stock")}).Result();
    EXPECT_EQ(stock.Get(field::kOriginalValue).Utf8(), "20");
    EXPECT_EQ(stock.Get(field::kUnderlyingValue).Utf8(), "7");
    EXPECT_EQ(stock.Get(field::kValue).Utf8(), "102");
    const Outcome again = rows.Call(kUpdateBatch, {Number(1)});
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Stored(u"stock", 2), "102");
    rows.Put(kFilter, Number(1));
    ASSERT_EQ(rows.Get(kRecordCount).Long(), 1);
    ASSERT_TRUE(rows.Call(kCancelBatch, {Number(2)}).Ok());
    rows.Put(kFilter, Number(1));
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 0);
}

TEST_P(WritingTest, SettlesADeletionInConflict) {
    const Object rows = Goods(4);
    SetProperty(rows, u"Update Criteria", Number(1));
    rows.Call(kDelete);
    Theirs(u"update \"货物 Goods\" set stock = 7 where \"Id\" = 1");
    EXPECT_EQ(rows.Call(kUpdateBatch).Error(), 0x80040E21u);
    EXPECT_EQ(rows.Get(kStatus).Long(), 0x884);
    EXPECT_EQ(AskFor(u"select count(*) from \"货物 Goods\""), "5");
    // All values read again: the deletion is given up, the row is there with their value.
    rows.Put(kFilter, Number(5));
    ASSERT_EQ(rows.Get(kRecordCount).Long(), 1);
    ASSERT_TRUE(rows.Call(kResync, {Number(2), Number(2)}).Ok());
    rows.Put(kFilter, Number(0));
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 5);
    EXPECT_EQ(ValueOf(rows, u"stock"), "7");
    EXPECT_EQ(rows.Get(kStatus).Long(), 8);
}

TEST_P(WritingTest, TellsARefusedRowFromAConflict) {
    const Object rows = Goods(4);
    PutValue(rows, u"stock", Number(11));
    ASSERT_TRUE(rows.Call(kAddNew, {Array({Text(u"Id"), Text(u"stock")}), Array({Number(2), Number(0)})}).Ok());
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    ASSERT_TRUE(rows.Call(kAddNew, {Array({Text(u"Id"), Text(u"stock")}), Array({Number(50), Number(0)})}).Ok());
    const Outcome sent = rows.Call(kUpdateBatch);
    EXPECT_EQ(sent.Error(), 0x80040E21u) << sent;
    EXPECT_EQ(Stored(u"stock", 1), "11");
    EXPECT_EQ(Stored(u"stock", 50), "0");
    EXPECT_EQ(StatusAt(rows, 6), 0x1081);
    EXPECT_EQ(StatusAt(rows, 7), 0);
    // Put right, it goes.
    GoTo(rows, 6);
    PutValue(rows, u"Id", Number(51));
    const Outcome again = rows.Call(kUpdateBatch);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Stored(u"stock", 51), "0");
}

TEST_P(WritingTest, SendsTheCurrentRowOrTheVisibleOnes) {
    const Object rows = Goods(4);
    for (LONG i = 1; i <= 4; ++i) {
        GoTo(rows, i);
        PutValue(rows, u"stock", Number(100 + i));
    }
    rows.Call(kUpdate);
    GoTo(rows, 2);
    ASSERT_TRUE(rows.Call(kUpdateBatch, {Number(1)}).Ok());
    EXPECT_EQ(AskFor(u"select sum(stock) from \"货物 Goods\""), "232");
    rows.Put(kFilter, Text(u"stock > 102"));
    ASSERT_TRUE(rows.Call(kUpdateBatch, {Number(2)}).Ok());
    EXPECT_EQ(AskFor(u"select sum(stock) from \"货物 Goods\""), "369");
    rows.Put(kFilter, Text(u"stock > 1000"));
    EXPECT_EQ(rows.Call(kUpdateBatch, {Number(2)}).Error(), 3021u);
    EXPECT_EQ(rows.Call(kUpdateBatch, {Number(7)}).Error(), 3001u);
    // All of them: the filter does not count.
    ASSERT_TRUE(rows.Call(kUpdateBatch, {Number(3)}).Ok());
    EXPECT_EQ(AskFor(u"select sum(stock) from \"货物 Goods\""), "460");
}

TEST_P(WritingTest, LeavesABatchToTheTransactionOfItsConnection) {
    const Object rows = Goods(4);
    PutValue(rows, u"stock", Number(11));
    rows.Call(kMoveNext);
    PutValue(rows, u"stock", Number(22));
    connection_.Call(connection::kBeginTrans);
    ASSERT_TRUE(rows.Call(kUpdateBatch).Ok());
    EXPECT_EQ(AskFor(u"select sum(stock) from \"货物 Goods\""), "153");
    connection_.Call(connection::kRollbackTrans);
    EXPECT_EQ(AskFor(u"select sum(stock) from \"货物 Goods\""), "150");
}

TEST_P(WritingTest, KeepsNoRowOfABatchWhoseLastOneUndoesTheTransaction) {
    if (GetParam() != SystemKind::Sqlite) GTEST_SKIP() << "a clause that only SQLite has";
    Drop(u"undoing");
    Do(u"create table undoing (id integer primary key, code integer unique on conflict rollback)");
    Do(u"insert into undoing values (1, 10), (2, 20), (3, 30)");
    connection_.Call(connection::kBeginTrans);
    const Object rows = OpenRows(connection_, u"select * from undoing order by id", 4);
    PutValue(rows, u"code", Number(11));
    rows.Call(kMoveNext);
    PutValue(rows, u"code", Number(30));
    EXPECT_FALSE(rows.Call(kUpdateBatch).Ok());
    EXPECT_NE(StatusAt(rows, 1) & 2, 0) << "still to be written";
    EXPECT_EQ(connection_.Call(connection::kCommitTrans).Error(), 0x8004D019u);
    EXPECT_EQ(AskFor(u"select sum(code) from undoing"), "60");
}

TEST_P(WritingTest, RunsNothingInATransactionThatADeadlockHasUndone) {
    if (GetParam() != SystemKind::MariaDb) GTEST_SKIP() << "only MariaDB undoes all of the transaction over a deadlock";
    const Object sessions[] = {connection_, Connect()};
    for (int i = 0; i < 2; ++i) {
        sessions[i].Call(connection::kBeginTrans);
        Execute(sessions[i], Sql(i == 0 ? u"update \"货物 Goods\" set stock = stock + 1 where \"Id\" = 1"
                                        : u"update \"货物 Goods\" set stock = stock + 1 where \"Id\" = 2"));
    }
    Outcome outcomes[2];
    std::thread other([&] {
        outcomes[0] = sessions[0].Call(connection::kExecute,
                                       {Text(Sql(u"update \"货物 Goods\" set stock = 0 where \"Id\" = 2"))});
    });
    usleep(200'000);
    outcomes[1] =
        sessions[1].Call(connection::kExecute, {Text(Sql(u"update \"货物 Goods\" set stock = 0 where \"Id\" = 1"))});
    other.join();
    ASSERT_NE(outcomes[0].Ok(), outcomes[1].Ok()) << outcomes[0] << outcomes[1];
    const Object& victim = sessions[outcomes[0].Ok() ? 1 : 0];
    const Object& winner = sessions[outcomes[0].Ok() ? 0 : 1];
    EXPECT_TRUE(winner.Call(connection::kRollbackTrans).Ok());
    const std::u16string change = Sql(u"update \"货物 Goods\" set stock = 0 where \"Id\" = 3");
    EXPECT_EQ(victim.Call(connection::kExecute, {Text(change)}).Error(), 0x8004D019u);
    EXPECT_EQ(victim.Call(connection::kCommitTrans).Error(), 0x8004D019u);
    EXPECT_TRUE(victim.Call(connection::kExecute, {Text(change)}).Ok());
    EXPECT_EQ(AskFor(u"select stock from \"货物 Goods\" where \"Id\" = 3"), "0");
}

TEST_P(WritingTest, UndoesAllOfABatchThatTheEndOfItsTransactionRefuses) {
    if (GetParam() == SystemKind::MariaDb) GTEST_SKIP() << "MariaDB checks nothing at the end of a transaction";
    Drop(u"child");
    Drop(u"parent");
    Do(u"create table parent (id integer primary key)");
    Do(u"create table child (id integer primary key, parent integer references parent (id) "
       u"deferrable initially deferred)");
    Do(u"insert into parent values (1)");
    Do(u"insert into child values (1, 1)");
    Do(u"insert into child values (2, 1)");
    const Object rows = OpenRows(connection_, u"select * from child order by id", 4);
    PutValue(rows, u"parent", Value::Null());
    rows.Call(kMoveNext);
    PutValue(rows, u"parent", Number(77));
    const Outcome sent = rows.Call(kUpdateBatch);
    EXPECT_EQ(sent.Error(), 0x80040E21u) << sent;
    EXPECT_EQ(AskFor(u"select sum(parent) from child"), "2");
    EXPECT_EQ(StatusAt(rows, 1), 0x182);
    EXPECT_EQ(StatusAt(rows, 2), 0x182);
    PutValue(rows, u"parent", Number(1));
    const Outcome again = rows.Call(kUpdateBatch);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(AskFor(u"select count(parent) from child"), "1");
    EXPECT_EQ(StatusAt(rows, 1), 0);
}

TEST_P(WritingTest, StopsABatchAtALockWithinItsTime) {
    const Object rows = Goods(4);
    SetProperty(rows, u"Command Time Out", Number(1));
    for (LONG i = 1; i <= 5; ++i) {
        GoTo(rows, i);
        PutValue(rows, u"stock", Number(100 + i));
    }
    const Object other = Connect();
    other.Call(connection::kBeginTrans);
    Execute(other, Sql(u"update \"货物 Goods\" set \"名称\" = 'locked' where \"Id\" = 2"));
    const DWORD start = GetTickCount();
    const Outcome sent = rows.Call(kUpdateBatch);
    const DWORD took = GetTickCount() - start;
    other.Call(connection::kRollbackTrans);
    EXPECT_EQ(sent.Error(), 0x80040E21u) << sent;
    EXPECT_LT(took, 8000u);
    // What comes behind the lock has not been tried: it is all pending still.
    for (LONG i = 2; i <= 5; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(StatusAt(rows, i) & 0x82, 0x82);
        EXPECT_EQ(Stored(u"stock", i), std::to_string(i * 10));
    }
    const Outcome again = rows.Call(kUpdateBatch);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(AskFor(u"select sum(stock) from \"货物 Goods\""), "515");
}

TEST_P(WritingTest, SendsTheChangesOfADisconnectedSetLater) {
    const Object rows = Goods(4);
    ASSERT_TRUE(rows.PutRef(kActiveConnection, Object().AsValue()).Ok());
    EXPECT_EQ(rows.Get(kActiveConnection).value.Get().pdispVal, nullptr);
    PutValue(rows, u"stock", Number(11));
    rows.Call(kMoveNext);
    rows.Call(kDelete);
    EXPECT_EQ(rows.Call(kUpdateBatch).Error(), 3709u);
    const Object other = Connect();
    ASSERT_TRUE(rows.PutRef(kActiveConnection, other.AsValue()).Ok());
    const Outcome sent = rows.Call(kUpdateBatch);
    ASSERT_TRUE(sent.Ok()) << sent;
    EXPECT_EQ(AskFor(u"select sum(stock) from \"货物 Goods\""), "131");
}

TEST_P(WritingTest, WritesLongValuesInPieces) {
    const Object rows = Goods(3);
    const Object note = rows.Get(kFields, {Text(u"note")}).Result();
    const Object picture = rows.Get(kFields, {Text(u"picture")}).Result();
    const std::u16string piece(3000, u'文');
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 70000);
    Value bytes;
    VARIANT* const place = bytes.Out();
    place->vt = VT_ARRAY | VT_UI1;
    place->parray = array;
    for (LONG i = 0; i < 70000; ++i) {
        BYTE byte = static_cast<BYTE>(i);
        SafeArrayPutElement(array, &i, &byte);
    }
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(note.Call(field::kAppendChunk, {Text(piece)}).Ok());
        ASSERT_TRUE(picture.Call(field::kAppendChunk, {bytes}).Ok());
    }
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    const Object again = Goods(1);
    EXPECT_EQ(ValueOf(again, u"note").size(), 27000u);
    const Object read = again.Get(kFields, {Text(u"picture")}).Result();
    EXPECT_EQ(read.Get(field::kActualSize).Long(), 210000);
    LONG total = 0;
    for (;;) {
        const Outcome chunk = read.Call(field::kGetChunk, {Number(65536)});
        if (chunk.value.IsNull()) break;
        ASSERT_EQ(chunk.value.Type(), VT_ARRAY | VT_UI1);
        total += static_cast<LONG>(chunk.value.Get().parray->rgsabound[0].cElements);
    }
    EXPECT_EQ(total, 210000);
    // The first piece of another edit replaces what was there.
    ASSERT_TRUE(note.Call(field::kAppendChunk, {Text(u"short")}).Ok());
    ASSERT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(Stored(u"note", 1), "short");
}

TEST_P(WritingTest, WritesEachTableOfAJoin) {
    Drop(u"maker");
    Do(u"create table maker (mid integer primary key, \"Maker\" varchar(20), good integer)");
    Do(u"insert into maker values (1, 'Acme', 1)");
    const Object rows = OpenRows(
        connection_, Sql(u"select g.\"Id\", g.stock, m.mid, m.\"Maker\" from \"货物 Goods\" g join maker m on m.good = "
                         u"g.\"Id\""));
    PutValue(rows, u"stock", Number(1));
    PutValue(rows, u"Maker", Text(u"Ajax"));
    const Outcome written = rows.Call(kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(Stored(u"stock", 1), "1");
    EXPECT_EQ(AskFor(u"select \"Maker\" from maker"), "Ajax");
    // One of them in conflict: neither is written.
    Theirs(u"update maker set \"Maker\" = 'theirs'");
    PutValue(rows, u"stock", Number(2));
    PutValue(rows, u"Maker", Text(u"mine"));
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80040E38u);
    EXPECT_EQ(Stored(u"stock", 1), "1");
    rows.Call(kCancelUpdate);
    SetProperty(rows, u"Unique Table", Text(u"maker"));
    PutValue(rows, u"stock", Number(3));
    EXPECT_EQ(rows.Call(kUpdate).Error(), 0x80004005u);
    rows.Call(kCancelUpdate);
    const Outcome deleted = rows.Call(kDelete);
    ASSERT_TRUE(deleted.Ok()) << deleted;
    EXPECT_EQ(AskFor(u"select count(*) from maker"), "0");
}

TEST_P(WritingTest, SendsManyRowsInOneBatch) {
    const Object rows = Goods(4);
    for (int i = 0; i < 300; ++i) {
        ASSERT_TRUE(rows.Call(kAddNew).Ok());
        PutValue(rows, u"名称", Text(u"批" + NumberText(i)));
        PutValue(rows, u"Unit Price", Text(i % 3 == 0 ? u"1.05" : u"1234567.5"));
        PutValue(rows, u"stock", i % 7 == 0 ? Value::Null() : Number(i));
    }
    const Outcome sent = rows.Call(kUpdateBatch);
    ASSERT_TRUE(sent.Ok()) << sent;
    EXPECT_EQ(AskFor(u"select count(*) from \"货物 Goods\""), "305");
    EXPECT_EQ(AskFor(u"select count(*) from \"货物 Goods\" where stock is null"), "43");
    rows.Call(kMoveLast);
    EXPECT_EQ(ValueOf(rows, u"Id"), "305");
    EXPECT_EQ(Stored(u"名称", 305), ToUtf8(u"批299"));
    EXPECT_EQ(Stored(u"Unit Price", 305), "1234567.5");
}

INSTANTIATE_TEST_SUITE_P(All, WritingTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

/// A key that does not tell one row from another: a table with heirs.
TEST(WritingToPostgres, LeavesOutOfABatchARowWhoseKeyMeansSeveral) {
    struct Helper : SystemTest {
        using SystemTest::Ask;
        using SystemTest::ConnectTo;
        using SystemTest::Execute;
        using SystemTest::OpenRows;
        using SystemTest::PutValue;
        void TestBody() override {}
    };
    const Object connection = Helper::ConnectTo(SystemKind::Postgres);
    Helper::Execute(connection, u"drop table if exists heirs, elders cascade");
    Helper::Execute(connection, u"create table elders (id integer primary key, n integer)");
    Helper::Execute(connection, u"create table heirs () inherits (elders)");
    Helper::Execute(connection, u"insert into elders values (1, 1), (2, 2), (3, 3)");
    Helper::Execute(connection, u"insert into heirs values (2, 2)");
    const Object rows = Helper::OpenRows(connection, u"select * from only elders order by id", 4);
    for (LONG i = 1; i <= 3; ++i) {
        rows.Put(kAbsolutePosition, Number(i));
        Helper::PutValue(rows, u"n", Number(10 * i));
    }
    const Outcome sent = rows.Call(kUpdateBatch);
    EXPECT_EQ(sent.Error(), 0x80040E21u) << sent;
    EXPECT_EQ(Helper::Ask(connection, u"select string_agg(n::text, ',' order by id, n) from elders"), "10,2,2,30");
    rows.Put(kFilter, Number(5));
    ASSERT_EQ(rows.Get(kRecordCount).Long(), 1);
    EXPECT_EQ(rows.Get(kStatus).Long(), 0xC2);
}

}  // namespace
}  // namespace tk::ado::test
