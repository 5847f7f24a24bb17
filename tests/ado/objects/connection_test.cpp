#include <gtest/gtest.h>

#include <thread>

#include "database_test.h"

namespace tk::ado::test {
namespace {

using ConnectionTest = DatabaseTest;

TEST_F(ConnectionTest, StartsClosedWithTheUsualDefaults) {
    const Object closed = Object::Create(kConnectionClass);
    EXPECT_EQ(closed.Get(connection::kState).Long(), 0);
    EXPECT_EQ(closed.Get(connection::kConnectionString).Utf8(), "");
    EXPECT_EQ(closed.Get(connection::kCommandTimeout).Long(), 30);
    EXPECT_EQ(closed.Get(connection::kConnectionTimeout).Long(), 15);
    EXPECT_EQ(closed.Get(connection::kIsolationLevel).Long(), 0x1000);
    EXPECT_EQ(closed.Get(connection::kAttributes).Long(), 0);
    EXPECT_EQ(closed.Get(connection::kCursorLocation).Long(), 2);
    EXPECT_EQ(closed.Get(connection::kMode).Long(), 0);
    EXPECT_EQ(closed.Get(connection::kProvider).Utf8(), "MSDASQL");
    EXPECT_EQ(closed.Get(connection::kVersion).Utf8(), "2.8");
}

TEST_F(ConnectionTest, RefusesWhatNeedsASessionWhileClosed) {
    const Object closed = Object::Create(kConnectionClass);
    EXPECT_EQ(closed.Call(connection::kClose).Error(), 3704u);
    EXPECT_EQ(closed.Call(connection::kExecute, {Text(u"select 1")}).Error(), 3704u);
    EXPECT_EQ(closed.Call(connection::kBeginTrans).Error(), 3704u);
    EXPECT_EQ(closed.Call(connection::kCommitTrans).Error(), 3704u);
    EXPECT_EQ(closed.Call(connection::kRollbackTrans).Error(), 3704u);
    EXPECT_EQ(closed.Call(connection::kOpenSchema, {Number(20)}).Error(), 3704u);
    EXPECT_EQ(closed.Get(connection::kDefaultDatabase).Error(), 3704u);
    EXPECT_TRUE(closed.Call(connection::kCancel).Ok());
}

TEST_F(ConnectionTest, OpensAndClosesAndOpensAgain) {
    const Object opened = Connect();
    EXPECT_EQ(opened.Get(connection::kState).Long(), 1);
    EXPECT_EQ(opened.Call(connection::kOpen, {Text(ConnectionText())}).Error(), 3705u);
    EXPECT_EQ(opened.Put(connection::kConnectionString, Text(u"x")).Error(), 3705u);
    EXPECT_EQ(opened.Put(connection::kConnectionTimeout, Number(3)).Error(), 3705u);
    EXPECT_EQ(opened.Put(connection::kMode, Number(1)).Error(), 3705u);
    EXPECT_EQ(opened.Put(connection::kProvider, Text(u"x")).Error(), 3705u);
    EXPECT_TRUE(opened.Call(connection::kClose).Ok());
    EXPECT_EQ(opened.Get(connection::kState).Long(), 0);
    EXPECT_EQ(opened.Call(connection::kClose).Error(), 3704u);
    // The text is still there.
    const Outcome again = opened.Call(connection::kOpen);
    EXPECT_TRUE(again.Ok()) << again;
    EXPECT_EQ(opened.Get(connection::kState).Long(), 1);
}

TEST_F(ConnectionTest, TakesNullTextsAndFragmentsInAString) {
    const Object opened = Object::Create(kConnectionClass);
    VARIANT null;
    VariantInit(&null);
    null.vt = VT_BSTR;
    null.bstrVal = nullptr;
    const Outcome outcome = opened.Call(connection::kOpen, {Text(ConnectionText(u";Extended Properties=\"\";J")),
                                                            Value(null), Value(null), Number(-1)});
    EXPECT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(Ask(opened, u"select 40 + 2"), "42");
}

TEST_F(ConnectionTest, SaysWhichProviderIsUnknown) {
    const Object closed = Object::Create(kConnectionClass);
    const Outcome outcome = closed.Call(connection::kOpen, {Text(u"Provider=Nobody.Knows.It;Data Source=x")});
    EXPECT_EQ(outcome.Error(), 3706u);
    EXPECT_EQ(outcome.helpContext, 1240655u);
    EXPECT_EQ(closed.Get(connection::kState).Long(), 0);
}

TEST_F(ConnectionTest, PassesOnWhatTheDriverSays) {
    const Object opened = Connect();
    const Outcome outcome = opened.Call(connection::kExecute, {Text(u"select * from no_such_table")});
    EXPECT_EQ(outcome.Error(), 0x80040E37u) << outcome;
    EXPECT_NE(ToUtf8(outcome.description).find("no such table"), std::string::npos) << outcome;
    EXPECT_EQ(ToUtf8(outcome.source), "Microsoft OLE DB Provider for ODBC Drivers");
    const Object errors = opened.Get(connection::kErrors).Result();
    ASSERT_EQ(errors.Get(collection::kCount).Long(), 1);
    const Object error = errors.Get(collection::kItem, {Number(0)}).Result();
    EXPECT_EQ(static_cast<unsigned>(error.Get(1).Long()), 0x80040E37u);
    EXPECT_EQ(error.Get(5).Utf8().size(), 5u);
    EXPECT_NE(error.Get(0).Utf8().find("no such table"), std::string::npos);
    EXPECT_EQ(errors.Get(collection::kItem, {Number(1)}).Error(), 3265u);
    // Neither success nor an error of the object model touches the list; another failure takes its place.
    EXPECT_EQ(Ask(opened, u"select 1"), "1");
    opened.Call(connection::kOpen, {Text(u"x")});
    EXPECT_EQ(errors.Get(collection::kCount).Long(), 1);
    EXPECT_EQ(opened.Call(connection::kExecute, {Text(u"selec 1")}).Error(), 0x80040E14u);
    EXPECT_EQ(errors.Get(collection::kCount).Long(), 1);
    EXPECT_NE(errors.Get(collection::kItem, {Number(0)}).Result().Get(0).Utf8().find("syntax"), std::string::npos);
    EXPECT_TRUE(errors.Call(0x60030001).Ok());
    EXPECT_EQ(errors.Get(collection::kCount).Long(), 0);
    // The former item is a copy of its own.
    EXPECT_NE(error.Get(0).Utf8().find("no such table"), std::string::npos);
}

TEST_F(ConnectionTest, CountsTheRowsThatAStatementChanged) {
    const Object opened = Connect();
    CreateGoods(opened);
    VARIANT affected;
    VariantInit(&affected);
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_VARIANT | VT_BYREF;
    reference.pvarVal = &affected;
    const Value sql = Text(u"update goods set stock = 1 where id < 3");
    VARIANT arguments[] = {Number(129).Get(), reference, sql.Get()};
    DISPPARAMS parameters{arguments, nullptr, 3, 0};
    VARIANT result;
    ASSERT_EQ(opened.Dispatch()->Invoke(6, IID_NULL, 0, DISPATCH_METHOD, &parameters, &result, nullptr, nullptr), S_OK);
    EXPECT_EQ(affected.vt, VT_I4);
    EXPECT_EQ(affected.lVal, 2);
    EXPECT_EQ(result.vt, VT_DISPATCH);
    EXPECT_EQ(result.pdispVal, nullptr);
    // What the argument held before is let go.
    affected.vt = VT_BSTR;
    affected.bstrVal = SysAllocString(u"old");
    ASSERT_EQ(opened.Dispatch()->Invoke(6, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(affected.vt, VT_I4);
}

TEST_F(ConnectionTest, GivesAClosedRecordsetForAStatementWithoutRows) {
    const Object opened = Connect();
    CreateGoods(opened);
    const Object rows = opened.Call(connection::kExecute, {Text(u"delete from goods where id = 1")}).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows.Get(recordset::kState).Long(), 0);
    EXPECT_EQ(rows.Get(recordset::kEof).Error(), 3704u);
    EXPECT_EQ(rows.Call(recordset::kClose).Error(), 3704u);
}

TEST_F(ConnectionTest, GivesAReadOnlyStaticRecordsetForAQuery) {
    const Object opened = Connect();
    CreateGoods(opened);
    for (const LONG options : {-1, 1, 33}) {
        const Object rows =
            opened.Call(connection::kExecute, {Text(u"select * from goods"), Omitted(), Number(options)}).Result();
        ASSERT_TRUE(rows);
        EXPECT_EQ(rows.Get(recordset::kState).Long() & 1, 1);
        EXPECT_EQ(rows.Get(recordset::kCursorType).Long(), 3);
        EXPECT_EQ(rows.Get(recordset::kLockType).Long(), 1);
        rows.Call(recordset::kMoveLast);
        EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 3);
        EXPECT_EQ(ValueOf(rows, u"NAME"), "NULL");
        EXPECT_EQ(PutValue(rows, u"name", Text(u"x")).Error(), 3251u);
        EXPECT_EQ(rows.Call(recordset::kAddNew).Error(), 3251u);
        EXPECT_EQ(rows.Call(recordset::kDelete).Error(), 3251u);
    }
}

TEST_F(ConnectionTest, TakesATableByName) {
    const Object opened = Connect();
    CreateGoods(opened);
    EXPECT_EQ(OpenRows(opened, u"\"goods\"", 1, 2).Get(recordset::kRecordCount).Long(), 3);
    EXPECT_EQ(OpenRows(opened, u"goods", 1, -1).Get(recordset::kRecordCount).Long(), 3);
    EXPECT_EQ(OpenRows(opened, u"[goods]", 1, 8).Get(recordset::kRecordCount).Long(), 3);
    EXPECT_EQ(OpenRows(opened, u"goods", 1, 512).Get(recordset::kRecordCount).Long(), 3);
    EXPECT_EQ(opened.Call(connection::kExecute, {Text(u"goods"), Omitted(), Number(3)}).Error(), 3001u);
    EXPECT_EQ(opened.Call(connection::kExecute, {Text(u"goods"), Omitted(), Number(0x800000)}).Error(), 3001u);
    EXPECT_EQ(opened.Call(connection::kExecute, {Text(u"goods"), Omitted(), Number(256)}).Error(), 3251u);
}

TEST_F(ConnectionTest, KeepsOneTransaction) {
    const Object opened = Connect();
    CreateGoods(opened);
    EXPECT_EQ(opened.Call(connection::kCommitTrans).Error(), 0x8004D00Eu);
    EXPECT_EQ(opened.Call(connection::kRollbackTrans).Error(), 0x8004D00Eu);
    EXPECT_EQ(opened.Call(connection::kBeginTrans).Long(), 1);
    EXPECT_EQ(opened.Call(connection::kBeginTrans).Error(), 0x8004D013u);
    Execute(opened, u"delete from goods");
    EXPECT_EQ(opened.Call(connection::kClose).Error(), 3246u);
    EXPECT_TRUE(opened.Call(connection::kRollbackTrans).Ok());
    EXPECT_EQ(Ask(opened, u"select count(*) from goods"), "3");
    opened.Call(connection::kBeginTrans);
    Execute(opened, u"delete from goods where id = 1");
    EXPECT_TRUE(opened.Call(connection::kCommitTrans).Ok());
    EXPECT_EQ(Ask(opened, u"select count(*) from goods"), "2");
    // Commit retaining: the next transaction is there at once.
    opened.Put(connection::kAttributes, Number(0x20000));
    EXPECT_EQ(opened.Call(connection::kBeginTrans).Long(), 1);
    EXPECT_TRUE(opened.Call(connection::kCommitTrans).Ok());
    EXPECT_EQ(opened.Call(connection::kBeginTrans).Error(), 0x8004D013u);
    EXPECT_TRUE(opened.Call(connection::kRollbackTrans).Ok());
    EXPECT_EQ(opened.Call(connection::kRollbackTrans).Error(), 0x8004D00Eu);
}

TEST_F(ConnectionTest, RollsBackWhenItIsReleasedInATransaction) {
    {
        const Object opened = Connect();
        CreateGoods(opened);
        opened.Call(connection::kBeginTrans);
        Execute(opened, u"delete from goods");
    }
    EXPECT_EQ(Ask(Connect(), u"select count(*) from goods"), "3");
}

TEST_F(ConnectionTest, ClosesItsRecordsets) {
    const Object opened = Connect();
    CreateGoods(opened);
    const Object rows = OpenRows(opened, u"select * from goods");
    const Object clone = rows.Call(recordset::kClone).Result();
    const Object fields = rows.Get(recordset::kFields).Result();
    const Object name = fields.Get(collection::kItem, {Text(u"name")}).Result();
    EXPECT_TRUE(opened.Call(connection::kClose).Ok());
    EXPECT_EQ(rows.Get(recordset::kState).Long(), 0);
    EXPECT_EQ(clone.Get(recordset::kState).Long(), 0);
    EXPECT_EQ(rows.Call(recordset::kMoveNext).Error(), 3704u);
    EXPECT_EQ(name.Get(field::kValue).Error(), 3704u);
    EXPECT_EQ(fields.Get(collection::kItem, {Text(u"name")}).Error(), 3265u);
}

TEST_F(ConnectionTest, LivesAsLongAsItsRecordsets) {
    Object rows;
    {
        const Object opened = Connect();
        CreateGoods(opened);
        rows = OpenRows(opened, u"select * from goods order by id");
    }
    EXPECT_EQ(ValueOf(rows, u"name"), ToUtf8(u"苹果"));
    const Object still = rows.Get(recordset::kActiveConnection).Result();
    ASSERT_TRUE(still);
    EXPECT_EQ(still.Get(connection::kState).Long(), 1);
}

TEST_F(ConnectionTest, ChecksWhatIsPut) {
    const Object closed = Object::Create(kConnectionClass);
    EXPECT_EQ(closed.Put(connection::kCommandTimeout, Number(-1)).Error(), 3001u);
    EXPECT_EQ(closed.Put(connection::kConnectionTimeout, Number(-1)).Error(), 3001u);
    EXPECT_EQ(closed.Put(connection::kCursorLocation, Number(4)).Error(), 3001u);
    EXPECT_EQ(closed.Put(connection::kIsolationLevel, Number(7)).Error(), 3001u);
    EXPECT_EQ(closed.Put(connection::kAttributes, Number(1)).Error(), 3001u);
    EXPECT_TRUE(closed.Put(connection::kMode, Number(16)).Ok());
    EXPECT_TRUE(closed.Put(connection::kIsolationLevel, Number(0x100000)).Ok());
    EXPECT_EQ(closed.Get(connection::kIsolationLevel).Long(), 0x100000);
}

TEST_F(ConnectionTest, ListsItsPropertiesBeforeAndAfterOpening) {
    const Object connection = Object::Create(kConnectionClass);
    const Object properties = connection.Get(connection::kProperties).Result();
    EXPECT_EQ(properties.Get(collection::kCount).Long(), 13);
    EXPECT_EQ(properties.Get(collection::kItem, {Text(u"DBMS Name")}).Error(), 3265u);
    EXPECT_EQ(properties.Get(collection::kItem, {Number(13)}).Error(), 3265u);
    EXPECT_EQ(properties.Get(collection::kItem, {Number(-1)}).Error(), 3265u);
    ASSERT_TRUE(connection.Call(connection::kOpen, {Text(ConnectionText(u";DBMS Name=ORACLE"))}).Ok());
    const LONG count = properties.Get(collection::kCount).Long();
    EXPECT_GT(count, 80);
    for (LONG i = 0; i < count; ++i) {
        const Object property = properties.Get(collection::kItem, {Number(i)}).Result();
        ASSERT_TRUE(property) << i;
        const std::string name = property.Get(0x60020002).Utf8();
        const Outcome value = property.Get(0);
        EXPECT_TRUE(value.Ok()) << name << ": " << value;
        EXPECT_EQ(value.value.Type(), property.Get(0x60020003).Long()) << name;
    }
    const auto read = [&](const char16_t* name) {
        const Object property = properties.Get(collection::kItem, {Text(name)}).Result();
        return property ? property.Get(0).Utf8() : std::string("no such property");
    };
    EXPECT_EQ(read(u"dbms name"), "ORACLE");
    EXPECT_EQ(read(u"Driver Name"), "sqlite3odbc.so");
    EXPECT_EQ(read(u"Provider Friendly Name"), "Microsoft OLE DB Provider for ODBC Drivers");
    EXPECT_EQ(read(u"User Name"), "");
    EXPECT_EQ(read(u"Connection Status"), "1");
    EXPECT_EQ(read(u"Server Name"), (folder_ / "test.db").string());
    EXPECT_EQ(read(u"Persist Security Info"), "0");
    const Object readOnly = properties.Get(collection::kItem, {Text(u"DBMS Version")}).Result();
    EXPECT_EQ(readOnly.Put(0, Text(u"1")).Error(), 3251u);
}

TEST_F(ConnectionTest, TakesPropertiesIntoTheStringBeforeOpening) {
    const Object connection = Object::Create(kConnectionClass);
    connection.Put(connection::kConnectionString, Text(u"Driver=SQLite3;Database=x"));
    const Object properties = connection.Get(connection::kProperties).Result();
    const Object user = properties.Get(collection::kItem, {Text(u"User ID")}).Result();
    EXPECT_TRUE(user.Put(0, Text(u"some;body")).Ok());
    EXPECT_EQ(user.Get(0).Utf8(), "some;body");
    const Object timeout = properties.Get(collection::kItem, {Text(u"Connect Timeout")}).Result();
    EXPECT_TRUE(timeout.Put(0, Text(u"7")).Ok());
    EXPECT_EQ(timeout.Get(0).Long(), 7);
    EXPECT_EQ(timeout.Put(0, Text(u"soon")).Error(), 3421u);
}

TEST_F(ConnectionTest, OpensAgainByTheStringThatHidesThePassword) {
    const Object first = Object::Create(kConnectionClass);
    ASSERT_TRUE(first.Call(connection::kOpen, {Text(ConnectionText(u";UID=me;PWD=secret"))}).Ok());
    const std::string shown = first.Get(connection::kConnectionString).Utf8();
    EXPECT_EQ(shown.find("secret"), std::string::npos) << shown;
    const Object properties = first.Get(connection::kProperties).Result();
    EXPECT_EQ(properties.Get(collection::kItem, {Text(u"Password")}).Result().Get(0).Utf8(), "");
    const Object rows = Object::Create(kRecordsetClass);
    const Outcome opened = rows.Call(recordset::kOpen, {Text(u"select 1 as one"), Text(ToUtf16(shown))});
    EXPECT_TRUE(opened.Ok()) << opened;
    EXPECT_EQ(ValueOf(rows, u"one"), "1");
}

TEST_F(ConnectionTest, EndsARunningStatementFromAnotherThread) {
    const Object opened = Connect();
    std::thread other([&] {
        for (int i = 0; i < 500 && (opened.Get(connection::kState).Long() & 4) == 0; ++i)
            Sleep(2);
        Sleep(50);
        EXPECT_TRUE(opened.Call(connection::kCancel).Ok());
    });
    const Outcome outcome =
        opened.Call(connection::kExecute,
                    {Text(u"with recursive c(n) as (select 1 union all select n + 1 from c where n < 4000000000) "
                          u"select max(n) from c")});
    other.join();
    EXPECT_EQ(outcome.Error(), 0x80040E4Eu) << outcome;
    EXPECT_EQ(opened.Get(connection::kState).Long(), 1);
    EXPECT_EQ(Ask(opened, u"select 5"), "5");
}

TEST_F(ConnectionTest, StaysClosedWhenItIsClosedDuringAnExecute) {
    const Object opened = Connect();
    std::thread other([&] {
        for (int i = 0; i < 5000 && (opened.Get(connection::kState).Long() & 4) == 0; ++i)
            Sleep(2);
        EXPECT_TRUE(opened.Call(connection::kClose).Ok());
        EXPECT_EQ(opened.Get(connection::kState).Long() & 1, 0);
    });
    // Long enough to be closed in its middle; what it gives does not matter.
    opened.Call(connection::kExecute,
                {Text(u"with recursive c(n) as (select 1 union all select n + 1 from c where n < 3000000) "
                      u"select max(n) from c")});
    other.join();
    EXPECT_EQ(opened.Get(connection::kState).Long(), 0);
    EXPECT_EQ(opened.Call(connection::kExecute, {Text(u"select 1")}).Error(), 3704u);
    const Outcome again = opened.Call(connection::kOpen, {Text(ConnectionText())});
    EXPECT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Ask(opened, u"select 5"), "5");
}

TEST_F(ConnectionTest, WorksForManyThreadsWithOneConnectionEach) {
    CreateGoods(Connect());
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 10; ++n) {
                const Object opened = Connect();
                EXPECT_EQ(Ask(opened, u"select count(*) from goods"), "3");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace tk::ado::test
