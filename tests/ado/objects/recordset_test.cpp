#include <gtest/gtest.h>

#include <thread>

#include <tkkernel/row_access.h>
#include "database_test.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class RecordsetTest : public DatabaseTest {
protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        connection_ = Connect();
        CreateGoods(connection_);
    }
    /// A table of n rows: id from 1, word "w1" and so on.
    void CreateMany(LONG count) const {
        Execute(connection_, u"create table many (id integer primary key, word varchar(20))");
        Execute(connection_,
                u"insert into many with recursive c(n) as (select 1 union all select n + 1 from c where n < " +
                    NumberText(count) + u") select n, 'w' || n from c");
    }

    Object connection_;
};

TEST_F(RecordsetTest, StartsClosedWithTheUsualDefaults) {
    const Object rows = Object::Create(kRecordsetClass);
    const struct {
        const char* label;
        DISPID id;
        LONG value;
    } kRows[] = {
        {"State", kState, 0},        {"CacheSize", kCacheSize, 1},           {"CursorType", kCursorType, 0},
        {"LockType", kLockType, 1},  {"MaxRecords", kMaxRecords, 0},         {"CursorLocation", kCursorLocation, 2},
        {"PageSize", kPageSize, 10}, {"MarshalOptions", kMarshalOptions, 0},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(rows.Get(row.id).Long(), row.value) << row.label;
    EXPECT_TRUE(rows.Get(kStayInSync).True());
    EXPECT_EQ(rows.Get(kDataMember).Utf8(), "");
    EXPECT_EQ(rows.Get(kSort).Utf8(), "");
    EXPECT_EQ(rows.Get(kFilter).Long(), 0);
    EXPECT_FALSE(rows.Get(kActiveCommand).Result());
    EXPECT_EQ(rows.Get(kActiveCommand).value.Type(), VT_DISPATCH);
    EXPECT_EQ(rows.Get(kFields).Result().Get(collection::kCount).Long(), 0);
}

TEST_F(RecordsetTest, RefusesEverythingThatNeedsRowsWhileClosed) {
    const Object rows = Object::Create(kRecordsetClass);
    for (const DISPID id :
         {kBof, kEof, kBookmark, kAbsolutePosition, kRecordCount, kAbsolutePage, kPageCount, kEditMode, kStatus}) {
        EXPECT_EQ(rows.Get(id).Error(), 3704u) << id;
    }
    for (const DISPID id :
         {kMoveNext, kMovePrevious, kMoveFirst, kMoveLast, kClose, kRequery, kClone, kUpdate, kDelete, kAddNew,
          kCancelUpdate, kGetRows, kGetString, kNextRecordset, kUpdateBatch, kCancelBatch, kResync, kSave}) {
        EXPECT_EQ(rows.Call(id).Error(), 3704u) << id;
    }
    EXPECT_EQ(rows.Call(kFind, {Text(u"id = 1")}).Error(), 3704u);
    EXPECT_EQ(rows.Call(kMove, {Number(1)}).Error(), 3704u);
    EXPECT_EQ(rows.Call(kSupports, {Number(0x200)}).Error(), 3704u);
    EXPECT_EQ(rows.Put(kFilter, Text(u"id = 1")).Error(), 3704u);
    EXPECT_TRUE(rows.Put(kSort, Text(u"id")).Ok());
    EXPECT_TRUE(rows.Call(kCancel).Ok());
}

TEST_F(RecordsetTest, OpensWithAConnectionTextOfItsOwn) {
    const Object rows = Object::Create(kRecordsetClass);
    rows.Put(kCursorLocation, Number(3));
    const Outcome outcome =
        rows.Call(kOpen, {Text(u"select * from goods"), Text(ConnectionText()), Number(0), Number(1), Number(1)});
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_TRUE(rows.Put(kCacheSize, Number(1000)).Ok());
    EXPECT_EQ(rows.Get(kState).Long(), 1);
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    const Object own = rows.Get(kActiveConnection).Result();
    ASSERT_TRUE(own);
    EXPECT_NE(own.Dispatch(), connection_.Dispatch());
    EXPECT_EQ(own.Get(connection::kState).Long(), 1);
}

TEST_F(RecordsetTest, RefusesWrongArgumentsOfOpen) {
    const struct {
        const char* label;
        std::vector<Value> arguments;
        unsigned error;
    } kRows[] = {
        {"a number for the connection", {Text(u"select 1"), Number(0), Number(1), Number(1)}, 3001},
        {"no connection", {Text(u"select 1 from nowhere")}, 3709},
        {"a closed connection", {Text(u"select 1"), Object::Create(kConnectionClass).AsValue()}, 3709},
        {"another object as connection", {Text(u"select 1"), Object::Create(kRecordsetClass).AsValue()}, 3001},
        {"no source", {Omitted(), connection_.AsValue()}, 3001},
        {"a number as source", {Number(7), connection_.AsValue()}, 3001},
        {"unknown cursor", {Text(u"select 1"), connection_.AsValue(), Number(4)}, 3001},
        {"unknown lock", {Text(u"select 1"), connection_.AsValue(), Number(3), Number(5)}, 3001},
        {"no lock", {Text(u"select 1"), connection_.AsValue(), Number(3), Number(0)}, 3001},
        {"two kinds of command", {Text(u"select 1"), connection_.AsValue(), Number(3), Number(1), Number(3)}, 3001},
        {"a file and a connection", {Text(u"x.xml"), connection_.AsValue(), Number(3), Number(1), Number(256)}, 3001},
        {"a wrong statement", {Text(u"selec 1"), connection_.AsValue(), Number(3), Number(1), Number(1)}, 0x80040E14},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Object rows = Object::Create(kRecordsetClass);
        EXPECT_EQ(rows.Call(kOpen, row.arguments).Error(), row.error);
        EXPECT_EQ(rows.Get(kState).Long(), 0);
    }
}

TEST_F(RecordsetTest, SettlesItsPropertiesByOpening) {
    const Object rows = OpenRows(connection_, u"select * from goods", 2);
    EXPECT_EQ(rows.Get(kCursorType).Long(), 3);
    EXPECT_EQ(rows.Get(kLockType).Long(), 3);
    for (const DISPID id : {kCursorType, kLockType, kMaxRecords, kCursorLocation}) {
        EXPECT_EQ(rows.Put(id, Number(1)).Error(), 3705u) << id;
    }
    EXPECT_EQ(rows.Put(kSource, Text(u"x")).Error(), 3705u);
    EXPECT_EQ(rows.Call(kOpen, {Text(u"select 1"), connection_.AsValue()}).Error(), 3705u);
    EXPECT_EQ(rows.Put(kCacheSize, Number(0)).Error(), 3001u);
    EXPECT_EQ(rows.Put(kPageSize, Number(0)).Error(), 3001u);
    EXPECT_EQ(rows.Put(kMarshalOptions, Number(2)).Error(), 3001u);
    EXPECT_TRUE(rows.Call(kClose).Ok());
    EXPECT_EQ(rows.Get(kLockType).Long(), 2);
    EXPECT_EQ(rows.Get(kSource).Utf8(), "select * from goods");
    // Source and connection are still known.
    const Outcome again = rows.Call(kOpen);
    EXPECT_TRUE(again.Ok()) << again;
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
}

TEST_F(RecordsetTest, StopsAtMaxRecords) {
    const Object rows = Object::Create(kRecordsetClass);
    rows.Put(kCursorLocation, Number(3));
    rows.Put(kMaxRecords, Number(2));
    ASSERT_TRUE(rows.Call(kOpen, {Text(u"select * from goods"), connection_.AsValue()}).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 2);
}

TEST_F(RecordsetTest, ReadsFieldsByNumberAndName) {
    const Object rows = OpenRows(connection_, u"select id, name, price, stock from goods order by id");
    const Object fields = rows.Get(kFields).Result();
    EXPECT_EQ(fields.Get(collection::kCount).Long(), 4);
    EXPECT_EQ(fields.Get(collection::kItem, {Short(0)}).Result().Get(field::kValue).Utf8(), "1");
    EXPECT_EQ(fields.Get(collection::kItem, {Number(1)}).Result().Get(field::kValue).Utf8(), ToUtf8(u"苹果"));
    EXPECT_EQ(fields.Get(collection::kItem, {Text(u"PRICE")}).Result().Get(field::kValue).Utf8(), "1.5");
    EXPECT_EQ(fields.Get(collection::kItem, {Text(u"nothing")}).Error(), 3265u);
    EXPECT_EQ(fields.Get(collection::kItem, {Number(4)}).Error(), 3265u);
    EXPECT_EQ(fields.Get(collection::kItem, {Number(-1)}).Error(), 3265u);
    // rs("name") by way of the default member.
    EXPECT_EQ(rows.Get(kFields, {Text(u"Name")}).Result().Get(field::kName).Utf8(), "name");
    const Object name = fields.Get(collection::kItem, {Text(u"name")}).Result();
    EXPECT_EQ(name.Get(field::kType).Long(), 200);
    EXPECT_EQ(name.Get(field::kDefinedSize).Long(), 20);
    EXPECT_EQ(name.Get(field::kPrecision).value.Type(), VT_UI1);
    EXPECT_EQ(name.Get(field::kStatus).Long(), 0);
    EXPECT_EQ(name.Get(field::kDataFormat).value.Type(), VT_UNKNOWN);
    EXPECT_EQ(name.Put(field::kType, Number(3)).Error(), 3219u);
    EXPECT_EQ(name.Put(field::kDefinedSize, Number(3)).Error(), 3219u);
    rows.Call(kMoveLast);
    EXPECT_TRUE(name.Get(field::kValue).value.IsNull());
    EXPECT_EQ(name.Get(field::kActualSize).Long(), 0);
    rows.Call(kMoveNext);
    EXPECT_EQ(name.Get(field::kValue).Error(), 3021u);
    EXPECT_EQ(ToUtf8(name.Get(field::kValue).source), "ADODB.Field");
}

TEST_F(RecordsetTest, LetsAFieldOfAnotherOpeningSaySo) {
    const Object rows = OpenRows(connection_, u"select id, name from goods");
    const Object name = rows.Get(kFields, {Text(u"name")}).Result();
    rows.Call(kClose);
    EXPECT_EQ(name.Get(field::kValue).Error(), 3704u);
    EXPECT_EQ(name.Get(field::kName).Error(), 3704u);
    ASSERT_TRUE(rows.Call(kOpen).Ok());
    EXPECT_EQ(name.Get(field::kValue).Error(), 3420u);
    const Object fresh = rows.Get(kFields, {Text(u"name")}).Result();
    ASSERT_TRUE(rows.Call(kRequery).Ok());
    EXPECT_TRUE(fresh.Get(field::kValue).Ok());
}

TEST_F(RecordsetTest, KeepsItsRowsForAFieldThatOutlivesIt) {
    Object name;
    {
        const Object rows = OpenRows(connection_, u"select id, name from goods order by id");
        name = rows.Get(kFields, {Text(u"name")}).Result();
    }
    EXPECT_EQ(name.Get(field::kValue).Utf8(), ToUtf8(u"苹果"));
}

TEST_F(RecordsetTest, GoesToPagesAndPositions) {
    CreateMany(25);
    const Object rows = OpenRows(connection_, u"select * from many order by id");
    EXPECT_EQ(rows.Get(kPageCount).Long(), 3);
    EXPECT_EQ(rows.Get(kAbsolutePage).Long(), 1);
    EXPECT_TRUE(rows.Put(kAbsolutePage, Number(3)).Ok());
    EXPECT_EQ(rows.Get(kAbsolutePosition).Long(), 21);
    // The failure names what was asked for, not what it comes to.
    for (const LONG page : {4, 0, -1, 0x7FFFFFFF}) {
        const Outcome refused = rows.Put(kAbsolutePage, Number(page));
        EXPECT_EQ(refused.Error(), 3001u);
        EXPECT_TRUE(ToUtf8(refused.description).ends_with("\xEF\xBC\x9A" + std::to_string(page))) << refused;
    }
    const Outcome position = rows.Put(kAbsolutePosition, Number(77));
    EXPECT_TRUE(ToUtf8(position.description).ends_with("77")) << position;
    const Outcome bookmark = rows.Put(kBookmark, Text(u"nothing"));
    EXPECT_EQ(bookmark.Error(), 3001u);
    EXPECT_TRUE(ToUtf8(bookmark.description).ends_with("nothing")) << bookmark;
    rows.Put(kPageSize, Number(7));
    EXPECT_EQ(rows.Get(kAbsolutePage).Long(), 3);
    EXPECT_EQ(rows.Get(kPageCount).Long(), 4);
    EXPECT_EQ(rows.Put(kAbsolutePosition, Number(26)).Error(), 3001u);
    EXPECT_TRUE(rows.Put(kAbsolutePosition, Number(25)).Ok());
    rows.Call(kMoveNext);
    EXPECT_EQ(rows.Get(kAbsolutePosition).Long(), -3);
    EXPECT_EQ(rows.Get(kAbsolutePage).Long(), -3);
    EXPECT_TRUE(rows.Put(kFilter, Text(u"id > 20")).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 5);
    EXPECT_EQ(rows.Get(kPageCount).Long(), 1);
    EXPECT_TRUE(rows.Put(kFilter, Text(u"id > 99")).Ok());
    EXPECT_EQ(rows.Get(kPageCount).Long(), 0);
    EXPECT_EQ(rows.Get(kAbsolutePage).Long(), -1);
    EXPECT_TRUE(rows.Get(kBof).True());
    EXPECT_TRUE(rows.Get(kEof).True());
}

TEST_F(RecordsetTest, TakesStartsAsPlacesAndAsBookmarks) {
    CreateMany(10);
    const Object rows = OpenRows(connection_, u"select * from many order by id");
    const auto at = [&] { return rows.Get(kAbsolutePosition).Long(); };
    EXPECT_TRUE(rows.Call(kMove, {Number(3), Short(1)}).Ok());
    EXPECT_EQ(at(), 4);
    const Value bookmark = rows.Get(kBookmark).value;
    EXPECT_EQ(bookmark.Type(), VT_R8);
    EXPECT_TRUE(rows.Call(kMove, {Number(-1), Short(2)}).Ok());
    EXPECT_EQ(at(), 9);
    EXPECT_TRUE(rows.Call(kMove, {Number(1), Short(0)}).Ok());
    EXPECT_EQ(at(), 10);
    EXPECT_TRUE(rows.Call(kMove, {Number(2), bookmark}).Ok());
    EXPECT_EQ(at(), 6);
    EXPECT_TRUE(rows.Call(kMove, {Number(0), Value::Real(2)}).Ok());
    EXPECT_EQ(at(), 2);
    EXPECT_TRUE(rows.Call(kMove, {Number(0), Number(2)}).Ok());
    EXPECT_EQ(at(), 10);
    EXPECT_EQ(rows.Call(kMove, {Number(0), Value::Real(11)}).Error(), 3001u);
    EXPECT_EQ(rows.Call(kMove, {Number(0), Value::Real(1.5)}).Error(), 3001u);
    EXPECT_EQ(rows.Call(kMove, {Number(0), Text(u"x")}).Error(), 3001u);
    EXPECT_TRUE(rows.Put(kBookmark, bookmark).Ok());
    EXPECT_EQ(at(), 4);
    EXPECT_TRUE(rows.Put(kBookmark, Number(7)).Ok());
    EXPECT_EQ(at(), 7);
    EXPECT_EQ(rows.Put(kBookmark, Number(0)).Error(), 3001u);
    rows.Call(kMoveLast);
    rows.Call(kMoveNext);
    EXPECT_EQ(rows.Get(kBookmark).Error(), 3021u);
    EXPECT_TRUE(rows.Call(kMove, {Number(-1), Short(1)}).Ok());
    EXPECT_TRUE(rows.Get(kBof).True());
    // Bookmarks survive sorting and filtering.
    EXPECT_TRUE(rows.Put(kSort, Text(u"id DESC")).Ok());
    EXPECT_EQ(ValueOf(rows, u"id"), "10");
    EXPECT_TRUE(rows.Put(kBookmark, bookmark).Ok());
    EXPECT_EQ(ValueOf(rows, u"id"), "4");
    EXPECT_EQ(at(), 7);
    EXPECT_EQ(rows.Call(kCompareBookmarks, {bookmark, Value::Real(1)}).Long(), 0);
    EXPECT_EQ(rows.Call(kCompareBookmarks, {bookmark, bookmark}).Long(), 1);
    EXPECT_EQ(rows.Call(kCompareBookmarks, {bookmark, Value::Real(9)}).Long(), 2);
    EXPECT_EQ(rows.Call(kCompareBookmarks, {bookmark, Number(1)}).Error(), 3001u);
}

TEST_F(RecordsetTest, FindsWithSkipDirectionAndStart) {
    CreateMany(10);
    const Object rows = OpenRows(connection_, u"select * from many order by id");
    const auto at = [&] { return rows.Get(kAbsolutePosition).Long(); };
    EXPECT_TRUE(rows.Call(kFind, {Text(u"word = 'W3'")}).Ok());
    EXPECT_EQ(at(), 3);
    EXPECT_TRUE(rows.Call(kFind, {Text(u"word LIKE 'w*'"), Number(1), Number(1), Short(0)}).Ok());
    EXPECT_EQ(at(), 4);
    EXPECT_TRUE(rows.Call(kFind, {Text(u"id > 0"), Number(0), Number(1), Short(1)}).Ok());
    EXPECT_EQ(at(), 1);
    EXPECT_TRUE(rows.Call(kFind, {Text(u"id < 5"), Number(0), Number(-1), Short(2)}).Ok());
    EXPECT_EQ(at(), 4);
    EXPECT_TRUE(rows.Call(kFind, {Text(u"id = 99")}).Ok());
    EXPECT_TRUE(rows.Get(kEof).True());
    EXPECT_EQ(rows.Call(kFind, {Text(u"id = 1")}).Error(), 3021u);
    EXPECT_TRUE(rows.Call(kFind, {Text(u"id = 1"), Omitted(), Omitted(), Short(1)}).Ok());
    EXPECT_EQ(at(), 1);
    EXPECT_EQ(rows.Call(kFind, {Text(u"id = 1 AND id = 2")}).Error(), 3001u);
    EXPECT_EQ(rows.Call(kFind, {Text(u"id = 1"), Number(0), Number(2)}).Error(), 3001u);
    EXPECT_EQ(at(), 1);
}

TEST_F(RecordsetTest, FiltersByTextBookmarksAndGroups) {
    CreateMany(10);
    const Object rows = OpenRows(connection_, u"select * from many order by id");
    EXPECT_TRUE(rows.Put(kFilter, Text(u"id > 3 AND id < 6")).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 2);
    EXPECT_EQ(rows.Get(kFilter).Utf8(), "id > 3 AND id < 6");
    EXPECT_EQ(ValueOf(rows, u"id"), "4");
    EXPECT_TRUE(rows.Put(kFilter, Array({Value::Real(9), Value::Real(2)})).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 2);
    EXPECT_EQ(ValueOf(rows, u"id"), "2");
    EXPECT_TRUE(rows.Put(kFilter, Number(1)).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 0);
    EXPECT_TRUE(rows.Put(kFilter, Number(0)).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 10);
    EXPECT_TRUE(rows.Put(kFilter, Text(u"id = 7")).Ok());
    EXPECT_TRUE(rows.Put(kFilter, Text(u"")).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 10);
    EXPECT_EQ(rows.Put(kFilter, Number(9)).Error(), 3001u);
    EXPECT_EQ(rows.Put(kFilter, Text(u"id IN (1)")).Error(), 3001u);
    EXPECT_EQ(rows.Put(kFilter, Array({Value::Real(11)})).Error(), 3001u);
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 10);
}

TEST_F(RecordsetTest, ClonesWithAPositionOfItsOwn) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id");
    rows.Put(kFilter, Text(u"id > 1"));
    const Object clone = rows.Call(kClone).Result();
    ASSERT_TRUE(clone);
    EXPECT_EQ(clone.Get(kRecordCount).Long(), 3);
    EXPECT_EQ(ValueOf(clone, u"id"), "1");
    EXPECT_TRUE(clone.Put(kBookmark, rows.Get(kBookmark).value).Ok());
    EXPECT_EQ(ValueOf(clone, u"id"), "2");
    EXPECT_TRUE(PutValue(rows, u"name", Text(u"cherry")).Ok());
    EXPECT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(ValueOf(clone, u"name"), "cherry");
    EXPECT_TRUE(clone.Call(kDelete).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 1);
    const Object readOnly = rows.Call(kClone, {Number(1)}).Result();
    EXPECT_EQ(PutValue(readOnly, u"name", Text(u"x")).Error(), 3251u);
    EXPECT_EQ(rows.Call(kClone, {Number(3)}).Error(), 3001u);
    rows.Call(kClose);
    EXPECT_EQ(clone.Get(kState).Long(), 1);
    EXPECT_EQ(clone.Get(kRecordCount).Long(), 2);
}

TEST_F(RecordsetTest, BecomesAViewOnTheRowsOfAnother) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id", 1);
    rows.Call(kMoveLast);
    const Object view = Object::Create(kRecordsetClass);
    EXPECT_TRUE(view.PutRef(kDataSource, rows.AsValue(VT_UNKNOWN)).Ok());
    EXPECT_EQ(view.Get(kState).Long(), 1);
    EXPECT_EQ(view.Get(kLockType).Long(), 1);
    EXPECT_EQ(ValueOf(view, u"id"), "1");
    EXPECT_EQ(ValueOf(rows, u"id"), "3");
    EXPECT_EQ(view.Get(kDataSource).value.Type(), VT_UNKNOWN);
    EXPECT_EQ(view.PutRef(kDataSource, connection_.AsValue(VT_UNKNOWN)).Error(), 3001u);
    EXPECT_EQ(view.PutRef(kDataSource, view.AsValue(VT_UNKNOWN)).Error(), 3001u);
    rows.Call(kClose);
    EXPECT_EQ(view.Get(kRecordCount).Long(), 3);
    EXPECT_EQ(view.PutRef(kDataSource, rows.AsValue(VT_UNKNOWN)).Error(), 3704u);
    EXPECT_TRUE(view.PutRef(kDataSource, Object().AsValue(VT_UNKNOWN)).Ok());
    EXPECT_EQ(view.Get(kState).Long(), 0);
}

TEST_F(RecordsetTest, AsksAgain) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id");
    rows.Put(kSort, Text(u"id DESC"));
    rows.Put(kFilter, Text(u"id <> 2"));
    Execute(connection_, u"insert into goods values (9, 'new', 1, 1)");
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 2);
    const Outcome outcome = rows.Call(kRequery, {Number(1)});
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    EXPECT_EQ(ValueOf(rows, u"id"), "9");
    PutValue(rows, u"name", Text(u"x"));
    EXPECT_EQ(rows.Call(kRequery).Error(), 3219u);
    EXPECT_EQ(rows.Call(kClose).Error(), 3219u);
    EXPECT_TRUE(rows.Call(kCancelUpdate).Ok());
    EXPECT_TRUE(rows.Call(kClose).Ok());
}

TEST_F(RecordsetTest, GivesManyRowsAsAnArray) {
    const Object rows = OpenRows(connection_, u"select id, name, price from goods order by id");
    rows.Call(kMoveNext);
    const Value all = rows.Call(kGetRows).value;
    ASSERT_EQ(all.Type(), VT_ARRAY | VT_VARIANT);
    SAFEARRAY* array = all.Get().parray;
    ASSERT_EQ(SafeArrayGetDim(array), 2u);
    LONG high = 0;
    SafeArrayGetUBound(array, 1, &high);
    EXPECT_EQ(high, 2);
    SafeArrayGetUBound(array, 2, &high);
    EXPECT_EQ(high, 1);
    const auto at = [&](LONG column, LONG row) {
        LONG indexes[] = {column, row};
        Outcome cell;
        SafeArrayGetElement(array, indexes, cell.value.Out());
        return cell.Utf8();
    };
    EXPECT_EQ(at(0, 0), "2");
    EXPECT_EQ(at(1, 0), "banana");
    EXPECT_EQ(at(0, 1), "3");
    EXPECT_EQ(at(1, 1), "NULL");
    EXPECT_TRUE(rows.Get(kEof).True());
    EXPECT_EQ(rows.Call(kGetRows).Error(), 3021u);
    // One row from the first, two fields by name and number.
    const Value some = rows.Call(kGetRows, {Number(1), Short(1), Array({Text(u"price"), Number(0)})}).value;
    array = some.Get().parray;
    EXPECT_EQ(at(0, 0), "1.5");
    EXPECT_EQ(at(1, 0), "1");
    EXPECT_EQ(ValueOf(rows, u"id"), "2");
    EXPECT_EQ(rows.Call(kGetRows, {Number(1), Omitted(), Text(u"nothing")}).Error(), 3265u);
    EXPECT_EQ(rows.Call(kGetRows, {Number(0)}).Error(), 3001u);
}

TEST_F(RecordsetTest, GivesManyRowsAsAText) {
    const Object rows = OpenRows(connection_, u"select id, name, stock from goods order by id");
    EXPECT_EQ(rows.Call(kGetString).Utf8(), ToUtf8(u"1\t苹果\t10\r2\tbanana\t\r3\t\t7\r"));
    EXPECT_TRUE(rows.Get(kEof).True());
    EXPECT_EQ(rows.Call(kGetString).Error(), 3021u);
    rows.Call(kMoveFirst);
    EXPECT_EQ(rows.Call(kGetString, {Number(2), Number(2), Text(u"|"), Text(u";"), Text(u"null")}).Utf8(),
              ToUtf8(u"1|苹果|10;2|banana|null;"));
    EXPECT_EQ(ValueOf(rows, u"id"), "3");
    EXPECT_EQ(rows.Call(kGetString, {Number(1)}).Error(), 3001u);
    // Empty texts are said, null ones are not.
    rows.Call(kMoveFirst);
    EXPECT_EQ(rows.Call(kGetString, {Number(2), Number(1), Text(u""), Text(u""), Text(u"")}).Utf8(),
              ToUtf8(u"1苹果10"));
    const auto nothing = [] {
        VARIANT null = {};
        null.vt = VT_BSTR;
        return Value::Adopt(null);
    };
    EXPECT_EQ(rows.Call(kGetString, {Number(2), Number(1), nothing(), nothing(), nothing()}).Utf8(), "2\tbanana\t\r");
}

TEST_F(RecordsetTest, FetchesBesideItsCaller) {
    CreateMany(60000);
    const Object rows =
        connection_.Call(connection::kExecute, {Text(u"select * from many order by id"), Omitted(), Number(33)})
            .Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows.Get(kState).Long() & 1, 1);
    EXPECT_EQ(ValueOf(rows, u"id"), "1");
    EXPECT_TRUE(rows.Call(kMoveLast).Ok());
    EXPECT_EQ(ValueOf(rows, u"word"), "w60000");
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 60000);
    EXPECT_EQ(rows.Get(kState).Long(), 1);
}

TEST_F(RecordsetTest, CountsALargeResultThatWasOpenedPlainly) {
    CreateMany(60000);
    const Object rows = OpenRows(connection_, u"select * from many order by id", 1);
    EXPECT_EQ(rows.Get(kState).Long(), 1);
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 60000);
    EXPECT_TRUE(rows.Put(kAbsolutePosition, Number(59999)).Ok());
    EXPECT_EQ(ValueOf(rows, u"word"), "w59999");
    EXPECT_TRUE(rows.Put(kFilter, Text(u"word LIKE '*9999*'")).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 6);
    EXPECT_TRUE(rows.Put(kFilter, Number(0)).Ok());
    EXPECT_TRUE(rows.Put(kSort, Text(u"word DESC")).Ok());
    EXPECT_EQ(ValueOf(rows, u"word"), "w9999");
}

TEST_F(RecordsetTest, StopsAFetchThatIsCancelled) {
    CreateMany(100000);
    const Object rows =
        connection_
            .Call(connection::kExecute, {Text(u"select a.id, b.word from many a, many b"), Omitted(), Number(33)})
            .Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows.Get(kState).Long(), 9);
    std::thread other([&] { EXPECT_TRUE(rows.Call(kCancel).Ok()); });
    other.join();
    for (int i = 0; i < 2000 && rows.Get(kState).Long() != 1; ++i)
        Sleep(5);
    EXPECT_EQ(rows.Get(kState).Long(), 1);
    EXPECT_TRUE(rows.Call(kClose).Ok());
    EXPECT_EQ(Ask(connection_, u"select 3"), "3");
}

TEST_F(RecordsetTest, RunsAnotherStatementWhileAFetchGoesOn) {
    CreateMany(60000);
    const Object rows =
        connection_.Call(connection::kExecute, {Text(u"select * from many order by id"), Omitted(), Number(33)})
            .Result();
    EXPECT_EQ(Ask(connection_, u"select count(*) from goods"), "3");
    EXPECT_TRUE(rows.Call(kMoveLast).Ok());
    EXPECT_EQ(ValueOf(rows, u"id"), "60000");
}

TEST_F(RecordsetTest, ReleasesAFetchThatNobodyWaitsFor) {
    CreateMany(60000);
    for (int i = 0; i < 5; ++i) {
        const Object rows =
            connection_.Call(connection::kExecute, {Text(u"select * from many a, goods b"), Omitted(), Number(33)})
                .Result();
        ASSERT_TRUE(rows);
    }
    EXPECT_EQ(Ask(connection_, u"select count(*) from goods"), "3");
}

TEST_F(RecordsetTest, LeavesItsConnectionAndComesBack) {
    const Object rows = OpenRows(connection_, u"select * from goods order by id", 4);
    EXPECT_TRUE(rows.PutRef(kActiveConnection, Object().AsValue()).Ok());
    EXPECT_FALSE(rows.Get(kActiveConnection).Result());
    connection_.Call(connection::kClose);
    EXPECT_EQ(ValueOf(rows, u"id"), "1");
    EXPECT_EQ(rows.Call(kRequery).Error(), 3709u);
    PutValue(rows, u"name", Text(u"pear"));
    EXPECT_TRUE(rows.Call(kUpdate).Ok());
    EXPECT_EQ(rows.Call(kUpdateBatch).Error(), 3709u);
    const Object other = Connect();
    EXPECT_TRUE(rows.PutRef(kActiveConnection, other.AsValue()).Ok());
    const Outcome sent = rows.Call(kUpdateBatch);
    EXPECT_TRUE(sent.Ok()) << sent;
    EXPECT_EQ(Ask(other, u"select name from goods where id = 1"), "pear");
}

TEST_F(RecordsetTest, SaysWhatItSupports) {
    const Object readOnly = OpenRows(connection_, u"select * from goods", 1);
    const Object optimistic = OpenRows(connection_, u"select * from goods", 3);
    const Object batch = OpenRows(connection_, u"select * from goods", 4);
    const struct {
        const char* label;
        LONG option;
        bool inReadOnly;
        bool inOptimistic;
        bool inBatch;
    } kRows[] = {
        {"hold records", 0x100, true, true, true},     {"move previous", 0x200, true, true, true},
        {"bookmark", 0x2000, true, true, true},        {"approximate position", 0x4000, true, true, true},
        {"find", 0x80000, true, true, true},           {"notify", 0x40000, true, true, true},
        {"add new", 0x1000400, false, true, true},     {"delete", 0x1000800, false, true, true},
        {"update", 0x1008000, false, true, true},      {"resync", 0x20000, false, true, true},
        {"update batch", 0x10000, false, false, true}, {"seek", 0x400000, false, false, false},
        {"index", 0x800000, false, false, false},      {"bookmark and update", 0x2000 | 0x1008000, false, true, true},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(readOnly.Call(kSupports, {Number(row.option)}).True(), row.inReadOnly);
        EXPECT_EQ(optimistic.Call(kSupports, {Number(row.option)}).True(), row.inOptimistic);
        EXPECT_EQ(batch.Call(kSupports, {Number(row.option)}).True(), row.inBatch);
    }
    EXPECT_EQ(readOnly.Call(kSeek, {Number(1)}).Error(), 3251u);
    EXPECT_EQ(readOnly.Get(kIndex).Error(), 3251u);
    EXPECT_EQ(readOnly.Put(kIndex, Text(u"x")).Error(), 3251u);
}

TEST_F(RecordsetTest, GivesNothingAfterTheOnlyResult) {
    const Object rows = OpenRows(connection_, u"select * from goods");
    const Outcome next = rows.Call(kNextRecordset);
    EXPECT_TRUE(next.Ok()) << next;
    EXPECT_EQ(next.value.Type(), VT_DISPATCH);
    EXPECT_FALSE(next.Result());
}

TEST_F(RecordsetTest, ListsWhereItsColumnsComeFrom) {
    const Object rows = OpenRows(connection_, u"select id, name as label, price * 2 as twice from goods");
    const auto read = [&](const char16_t* column, const char16_t* property) {
        const Object properties = rows.Get(kFields, {Text(column)}).Result().Get(field::kProperties).Result();
        const Object found = properties.Get(collection::kItem, {Text(property)}).Result();
        return found ? found.Get(0).Utf8() : std::string("no such property");
    };
    EXPECT_EQ(read(u"id", u"BASETABLENAME"), "goods");
    EXPECT_EQ(read(u"id", u"BASECOLUMNNAME"), "id");
    EXPECT_EQ(read(u"id", u"KEYCOLUMN"), "-1");
    EXPECT_EQ(read(u"id", u"ISAUTOINCREMENT"), "-1");
    EXPECT_EQ(read(u"label", u"BASECOLUMNNAME"), "name");
    EXPECT_EQ(read(u"label", u"KEYCOLUMN"), "0");
    EXPECT_EQ(read(u"twice", u"BASETABLENAME"), "NULL");
    EXPECT_EQ(read(u"id", u"DEFAULTVALUE"), "NULL");
    EXPECT_EQ(read(u"id", u"nothing"), "no such property");
    const Object optimize = rows.Get(kFields, {Number(0)})
                                .Result()
                                .Get(field::kProperties)
                                .Result()
                                .Get(collection::kItem, {Text(u"OPTIMIZE")})
                                .Result();
    EXPECT_TRUE(optimize.Put(0, Value::Boolean(true)).Ok());
    EXPECT_TRUE(optimize.Get(0).True());
}

TEST_F(RecordsetTest, KeepsItsDynamicProperties) {
    const Object rows = OpenRows(connection_, u"select * from goods");
    const Object properties = rows.Get(kProperties).Result();
    const LONG count = properties.Get(collection::kCount).Long();
    EXPECT_EQ(count, 33);
    for (LONG i = 0; i < count; ++i) {
        const Object property = properties.Get(collection::kItem, {Number(i)}).Result();
        EXPECT_EQ(property.Get(0).value.Type(), property.Get(0x60020003).Long()) << property.Get(0x60020002).Utf8();
    }
    const Object criteria = properties.Get(collection::kItem, {Text(u"Update Criteria")}).Result();
    EXPECT_EQ(criteria.Get(0).Long(), 2);
    EXPECT_TRUE(criteria.Put(0, Number(0)).Ok());
    EXPECT_EQ(criteria.Get(0).Long(), 0);
    EXPECT_EQ(criteria.Put(0, Number(9)).Error(), 3001u);
    EXPECT_EQ(properties.Get(collection::kItem, {Text(u"Hidden Columns")}).Result().Put(0, Number(1)).Error(), 3251u);
}

TEST_F(RecordsetTest, OffersTheShortCut) {
    const Object rows = OpenRows(connection_, u"select id, name, price from goods order by id");
    IRowAccess* fast = nullptr;
    ASSERT_EQ(rows.Dispatch()->QueryInterface(IID_IRowAccess, reinterpret_cast<void**>(&fast)), S_OK);
    LONG count = 0;
    EXPECT_EQ(fast->GetFieldCount(&count), S_OK);
    EXPECT_EQ(count, 3);
    LONG index = -1;
    EXPECT_EQ(fast->FindField(u"NAME...", 4, &index), S_OK);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(fast->FindField(u"none", 4, &index), S_FALSE);
    VARIANT value;
    EXPECT_EQ(fast->GetValue(0, &value), S_OK);
    const Value slow = rows.Get(kCollect, {Number(0)}).value;
    EXPECT_EQ(value.vt, slow.Type());
    VariantClear(&value);
    const char* text = nullptr;
    ULONG length = 0;
    EXPECT_EQ(fast->GetText(1, &text, &length), S_OK);
    EXPECT_EQ(std::string(text, length), ToUtf8(u"苹果"));
    EXPECT_EQ(fast->GetText(0, &text, &length), S_FALSE);
    EXPECT_EQ(fast->GetText(3, &text, &length), S_FALSE);
    EXPECT_EQ(fast->GetValue(-1, &value), S_FALSE);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(fast->MoveNext(), S_OK);
    EXPECT_EQ(fast->MoveNext(), S_OK);
    EXPECT_EQ(fast->GetText(1, &text, &length), S_OK);
    EXPECT_EQ(text, nullptr);
    VARIANT_BOOL eof = VARIANT_TRUE;
    EXPECT_EQ(fast->GetEof(&eof), S_OK);
    EXPECT_EQ(eof, VARIANT_FALSE);
    // An open edit is the slow way's business.
    PutValue(rows, u"name", Text(u"x"));
    EXPECT_EQ(fast->GetValue(1, &value), S_FALSE);
    EXPECT_EQ(fast->GetText(1, &text, &length), S_FALSE);
    EXPECT_EQ(fast->MoveNext(), S_FALSE);
    EXPECT_EQ(fast->MovePrevious(), S_FALSE);
    rows.Call(kCancelUpdate);
    EXPECT_EQ(fast->MoveNext(), S_OK);
    EXPECT_EQ(fast->GetEof(&eof), S_OK);
    EXPECT_EQ(eof, VARIANT_TRUE);
    EXPECT_EQ(fast->MoveNext(), S_FALSE);
    EXPECT_EQ(fast->GetValue(0, &value), S_FALSE);
    // And back, from behind the last row to before the first one.
    VARIANT_BOOL bof = VARIANT_TRUE;
    for (int left = 3; left > 0; --left) {
        EXPECT_EQ(fast->MovePrevious(), S_OK);
        EXPECT_EQ(fast->GetBof(&bof), S_OK);
        EXPECT_EQ(bof, VARIANT_FALSE);
        EXPECT_EQ(rows.Get(kAbsolutePosition).Long(), left);
    }
    EXPECT_EQ(fast->MovePrevious(), S_OK);
    EXPECT_EQ(fast->GetBof(&bof), S_OK);
    EXPECT_EQ(bof, VARIANT_TRUE);
    EXPECT_EQ(fast->MovePrevious(), S_FALSE);
    rows.Call(kClose);
    EXPECT_NE(fast->GetEof(&eof), S_OK);
    EXPECT_NE(fast->GetBof(&bof), S_OK);
    EXPECT_NE(fast->GetFieldCount(&count), S_OK);
    IDispatch* back = nullptr;
    EXPECT_EQ(fast->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&back)), S_OK);
    EXPECT_EQ(back, rows.Dispatch());
    back->Release();
    fast->Release();
}

}  // namespace
}  // namespace tk::ado::test
