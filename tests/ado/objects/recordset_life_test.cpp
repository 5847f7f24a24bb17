// What a recordset keeps, and what it forgets, when it is moved, asked again, closed, or made a view of another.
#include <gtest/gtest.h>

#include <tkkernel/row_access.h>

#include "database_test.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class RecordsetLifeTest : public DatabaseTest {
protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        connection_ = Connect();
    }
    void CreateNotes() const {
        Execute(connection_, u"create table note (id integer primary key, a text, b text)");
        Execute(connection_, u"insert into note values (1, 'abcdefghij', 'klmnopqrst')");
        Execute(connection_, u"insert into note values (2, 'ABCDEFGHIJ', 'KLMNOPQRST')");
    }
    void CreateNumbers() const {
        Execute(connection_, u"create table number (a integer)");
        for (const char16_t* digit : {u"0", u"1", u"2", u"3", u"4"})
            Execute(connection_, std::u16string(u"insert into number values (") + digit + u")");
    }
    static std::string Chunk(const Object& rows, std::u16string_view field, LONG length = 4) {
        return rows.Get(kFields, {Text(field)}).Result().Call(field::kGetChunk, {Number(length)}).Utf8();
    }

    Object connection_;
};

TEST_F(RecordsetLifeTest, ReadsPiecesAnewAfterAnythingElse) {
    CreateNotes();
    const char16_t* const kSource = u"select * from note order by id";
    const Object rows = OpenRows(connection_, kSource, 4);
    const auto readTwo = [&] {
        EXPECT_EQ(Chunk(rows, u"a"), "abcd");
        EXPECT_EQ(Chunk(rows, u"a"), "efgh");
    };
    readTwo();
    EXPECT_EQ(Chunk(rows, u"a"), "ij");
    EXPECT_EQ(Chunk(rows, u"a"), "NULL");
    rows.Call(kMoveNext);
    rows.Call(kMovePrevious);
    readTwo();
    rows.Call(kMoveFirst);
    readTwo();
    rows.Put(kBookmark, rows.Get(kBookmark).value);
    readTwo();
    // Its own size and value leave the place; another field's do not.
    EXPECT_EQ(rows.Get(kFields, {Text(u"a")}).Result().Get(field::kActualSize).Long(), 10);
    EXPECT_EQ(ValueOf(rows, u"a"), "abcdefghij");
    EXPECT_EQ(Chunk(rows, u"a"), "ij");
    rows.Call(kMoveFirst);
    readTwo();
    EXPECT_EQ(ValueOf(rows, u"id"), "1");
    readTwo();
    EXPECT_EQ(Chunk(rows, u"b"), "klmn");
    readTwo();
    PutValue(rows, u"b", Text(u"x"));
    readTwo();
    PutValue(rows, u"a", Text(u"abcdefgh"));
    readTwo();
    EXPECT_EQ(Chunk(rows, u"a"), "NULL");
    rows.Call(kCancelUpdate);
    rows.Call(kRequery);
    readTwo();
    EXPECT_TRUE(rows.Call(kClose).Ok());
    rows.Call(kOpen, {Text(kSource), connection_.AsValue(), Number(3), Number(1), Number(1)});
    readTwo();
}

TEST_F(RecordsetLifeTest, ReadsPiecesAnewAfterTheShortCutReadAnotherField) {
    CreateNotes();
    const Object rows = OpenRows(connection_, u"select * from note order by id", 1);
    void* found = nullptr;
    ASSERT_EQ(rows.Dispatch()->QueryInterface(IID_IRowAccess, &found), S_OK);
    auto* const access = static_cast<IRowAccess*>(found);
    Value value;
    EXPECT_EQ(Chunk(rows, u"a"), "abcd");
    VARIANT_BOOL eof = VARIANT_TRUE;
    EXPECT_EQ(access->GetEof(&eof), S_OK);
    EXPECT_EQ(access->GetValue(1, value.Out()), S_OK);
    EXPECT_EQ(Chunk(rows, u"a"), "efgh");
    EXPECT_EQ(access->GetValue(2, value.Out()), S_OK);
    EXPECT_EQ(Chunk(rows, u"a"), "abcd");
    EXPECT_EQ(access->MoveNext(), S_OK);
    EXPECT_EQ(Chunk(rows, u"a"), "ABCD");
    access->Release();
}

TEST_F(RecordsetLifeTest, AFilterOfBookmarksEndsWithTheRowsItNames) {
    CreateNumbers();
    const Object rows = OpenRows(connection_, u"select a from number order by a");
    rows.Call(kMoveLast);
    EXPECT_TRUE(rows.Put(kFilter, Array({rows.Get(kBookmark).value})).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 1);
    Execute(connection_, u"delete from number where a in (0, 4)");
    const Outcome asked = rows.Call(kRequery);
    EXPECT_TRUE(asked.Ok()) << asked;
    EXPECT_EQ(rows.Get(kState).Long(), 1);
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    EXPECT_EQ(ValueOf(rows, u"a"), "1");
    EXPECT_EQ(rows.Get(kFilter).Long(), 0);
}

TEST_F(RecordsetLifeTest, AFilterOfChangesEndsWithTheChanges) {
    CreateNumbers();
    Execute(connection_, u"create table keyed as select * from number");
    const Object rows = OpenRows(connection_, u"select a from number order by a", 4);
    PutValue(rows, u"a", Number(7));
    rows.Call(kUpdate);
    EXPECT_TRUE(rows.Put(kFilter, Number(1)).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 1);
    EXPECT_TRUE(rows.Call(kRequery).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 5);
    EXPECT_EQ(rows.Get(kFilter).Long(), 0);
}

TEST_F(RecordsetLifeTest, AFilterTextAndASortStayOverARequery) {
    CreateNumbers();
    const Object rows = OpenRows(connection_, u"select a from number");
    EXPECT_TRUE(rows.Put(kFilter, Text(u"a > 1")).Ok());
    EXPECT_TRUE(rows.Put(kSort, Text(u"a desc")).Ok());
    Execute(connection_, u"insert into number values (9)");
    EXPECT_TRUE(rows.Call(kRequery).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 4);
    EXPECT_EQ(ValueOf(rows, u"a"), "9");
    EXPECT_EQ(rows.Get(kFilter).Utf8(), "a > 1");
}

TEST_F(RecordsetLifeTest, ASortEndsWithTheRowsWhoseColumnsItNames) {
    CreateNumbers();
    const auto source = [&](const Object& rows, const char16_t* sql) {
        return rows.Call(kOpen, {Text(sql), connection_.AsValue(), Number(3), Number(1), Number(1)});
    };
    const Object rows = OpenRows(connection_, u"select a from number");
    EXPECT_TRUE(rows.Put(kSort, Text(u"a desc")).Ok());
    EXPECT_TRUE(rows.Call(kClose).Ok());
    EXPECT_EQ(rows.Get(kSort).Utf8(), "");
    const Outcome opened = source(rows, u"select a as b from number order by a");
    ASSERT_TRUE(opened.Ok()) << opened;
    EXPECT_EQ(ValueOf(rows, u"b"), "0");
    // With its connection as well.
    EXPECT_TRUE(rows.Put(kSort, Text(u"b desc")).Ok());
    connection_.Call(connection::kClose);
    EXPECT_EQ(rows.Get(kState).Long(), 0);
    EXPECT_EQ(rows.Get(kSort).Utf8(), "");
    connection_ = Connect();
    const Outcome again = source(rows, u"select a from number order by a");
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(ValueOf(rows, u"a"), "0");
    // One that is set in between is for the next rows.
    connection_.Call(connection::kClose);
    EXPECT_TRUE(rows.Put(kSort, Text(u"a desc")).Ok());
    connection_ = Connect();
    const Outcome sorted = source(rows, u"select a from number order by a");
    ASSERT_TRUE(sorted.Ok()) << sorted;
    EXPECT_EQ(ValueOf(rows, u"a"), "4");
}

TEST_F(RecordsetLifeTest, ASortByAnUnknownFieldLeavesTheRecordsetClosed) {
    CreateNumbers();
    const Object rows = Object::Create(kRecordsetClass);
    rows.Put(kCursorLocation, Number(3));
    EXPECT_TRUE(rows.Put(kSort, Text(u"nosuch")).Ok());
    const std::vector<Value> open = {Text(u"select a from number"), connection_.AsValue(), Number(3), Number(1),
                                     Number(1)};
    EXPECT_EQ(rows.Call(kOpen, open).Error(), 3265u);
    EXPECT_EQ(rows.Get(kState).Long(), 0);
    EXPECT_EQ(rows.Call(kOpen, open).Error(), 3265u);
    EXPECT_TRUE(rows.Put(kSort, Text(u"a desc")).Ok());
    const Outcome opened = rows.Call(kOpen, open);
    EXPECT_TRUE(opened.Ok()) << opened;
    EXPECT_EQ(ValueOf(rows, u"a"), "4");
}

TEST_F(RecordsetLifeTest, ARequeryWhoseRowsDoNotFitTheFilterChangesNothing) {
    CreateNumbers();
    Execute(connection_, u"create view shown as select a, a * 2 as b from number");
    const Object rows = OpenRows(connection_, u"select * from shown", 1);
    EXPECT_TRUE(rows.Put(kFilter, Text(u"b > 2")).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    Execute(connection_, u"drop view shown");
    Execute(connection_, u"create view shown as select a from number");
    EXPECT_NE(rows.Call(kRequery).Error(), 0u);
    EXPECT_EQ(rows.Get(kState).Long(), 1);
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    EXPECT_EQ(ValueOf(rows, u"b"), "4");
}

TEST_F(RecordsetLifeTest, RecordsetsThatWereEachOthersSourceEnd) {
    CreateNumbers();
    connection_ = Object();
    ASSERT_EQ(DllCanUnloadNow(), S_OK);
    {
        const Object opened = Connect();
        const Object first = OpenRows(opened, u"select a from number order by a", 1);
        const Object second = Object::Create(kRecordsetClass);
        EXPECT_TRUE(second.PutRef(kDataSource, first.AsValue(VT_UNKNOWN)).Ok());
        EXPECT_TRUE(first.PutRef(kDataSource, second.AsValue(VT_UNKNOWN)).Ok());
        EXPECT_EQ(ValueOf(first, u"a"), "0");
        EXPECT_EQ(second.Get(kDataSource).value.Get().punkVal, static_cast<IUnknown*>(first.Dispatch()));
        EXPECT_EQ(first.Get(kDataSource).value.Get().punkVal, static_cast<IUnknown*>(second.Dispatch()));
    }
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
}

TEST_F(RecordsetLifeTest, AViewOutlivesItsSource) {
    CreateNumbers();
    const Object view = Object::Create(kRecordsetClass);
    {
        const Object source = OpenRows(connection_, u"select a from number order by a", 1);
        EXPECT_TRUE(view.PutRef(kDataSource, source.AsValue(VT_UNKNOWN)).Ok());
        EXPECT_NE(view.Get(kDataSource).value.Get().punkVal, nullptr);
    }
    EXPECT_EQ(view.Get(kDataSource).value.Get().punkVal, nullptr);
    EXPECT_EQ(view.Get(kRecordCount).Long(), 5);
    EXPECT_EQ(ValueOf(view, u"a"), "0");
}

}  // namespace
}  // namespace tk::ado::test
