// Recordsets of fields that the program defines itself: no database anywhere.
#include <gtest/gtest.h>

#include "database_test.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

Object Defined() {
    const Object rows = Object::Create(kRecordsetClass);
    rows.Put(kCursorLocation, Number(3));
    const Object fields = rows.Get(kFields).Result();
    EXPECT_TRUE(fields.Call(collection::kAppend, {Text(u"id"), Number(3)}).Ok());
    EXPECT_TRUE(fields.Call(0x60040000, {Text(u"name"), Number(202), Number(20), Number(0x60)}).Ok());
    return rows;
}

TEST(FabricatedRecordset, DefinesFieldsWhileClosed) {
    const Object rows = Defined();
    const Object fields = rows.Get(kFields).Result();
    EXPECT_EQ(fields.Get(collection::kCount).Long(), 2);
    EXPECT_EQ(fields.Call(collection::kAppend, {Text(u"NAME"), Number(3)}).Error(), 3367u);
    EXPECT_EQ(fields.Call(collection::kAppend, {Text(u"odd"), Number(999)}).Error(), 3001u);
    EXPECT_EQ(fields.Call(collection::kAppend, {Text(u"five"), Number(3), Number(0), Number(0), Number(1)}).Error(),
              3219u);
    const Object name = fields.Get(collection::kItem, {Text(u"name")}).Result();
    EXPECT_EQ(name.Get(field::kDefinedSize).Long(), 20);
    EXPECT_TRUE(name.Put(field::kDefinedSize, Number(30)).Ok());
    EXPECT_EQ(name.Get(field::kDefinedSize).Long(), 30);
    EXPECT_TRUE(name.Put(field::kPrecision, Number(7)).Ok());
    EXPECT_EQ(name.Put(field::kPrecision, Number(700)).result, DISP_E_OVERFLOW);
    EXPECT_TRUE(name.Put(field::kType, Number(200)).Ok());
    EXPECT_EQ(name.Get(field::kValue).Error(), 3704u);
    EXPECT_TRUE(fields.Call(collection::kDelete, {Text(u"id")}).Ok());
    EXPECT_EQ(fields.Get(collection::kCount).Long(), 1);
    EXPECT_EQ(fields.Call(5).Error(), 3219u);
    EXPECT_EQ(fields.Call(6, {Number(2)}).Error(), 3219u);
    EXPECT_EQ(fields.Call(7).Error(), 3219u);
}

TEST(FabricatedRecordset, TakesRowsWithoutADatabase) {
    const Object rows = Defined();
    const Outcome opened = rows.Call(kOpen);
    ASSERT_TRUE(opened.Ok()) << opened;
    EXPECT_EQ(rows.Get(kState).Long(), 1);
    EXPECT_TRUE(rows.Get(kBof).True());
    EXPECT_TRUE(rows.Get(kEof).True());
    EXPECT_EQ(rows.Get(kFields).Result().Call(collection::kAppend, {Text(u"x"), Number(3)}).Error(), 3705u);
    const std::vector<Value> names = {Text(u"id"), Text(u"name")};
    for (LONG i = 3; i > 0; --i) {
        const std::u16string name = u"name " + NumberText(i);
        ASSERT_TRUE(rows.Call(kAddNew, {Array(names), Array({Number(i), Text(name)})}).Ok());
        ASSERT_TRUE(rows.Call(kUpdate).Ok());
    }
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 3);
    EXPECT_TRUE(rows.Put(kSort, Text(u"id")).Ok());
    EXPECT_EQ(rows.Call(kGetString, {Number(2), Number(-1), Text(u","), Text(u"/")}).Utf8(),
              "1,name 1/2,name 2/3,name 3/");
    rows.Call(kMoveFirst);
    EXPECT_TRUE(rows.Call(kFind, {Text(u"name = 'name 2'")}).Ok());
    EXPECT_TRUE(rows.Call(kDelete).Ok());
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 2);
    EXPECT_EQ(rows.Call(kRequery).Error(), 3219u);
    EXPECT_TRUE(rows.Call(kClose).Ok());
}

TEST(FabricatedRecordset, NeedsFieldsOrAConnection) {
    const Object rows = Object::Create(kRecordsetClass);
    EXPECT_EQ(rows.Call(kOpen).Error(), 3709u);
}

/// Three rows that are settled, under batches.
Object InBatches() {
    const Object rows = Defined();
    EXPECT_TRUE(rows.Call(kOpen, {Omitted(), Omitted(), Number(3), Number(4)}).Ok());
    EXPECT_EQ(rows.Get(kLockType).Long(), 4);
    for (LONG i = 1; i <= 3; ++i) {
        rows.Call(kAddNew, {Array({Text(u"id"), Text(u"name")}), Array({Number(i), Text(u"n" + NumberText(i))})});
        EXPECT_EQ(rows.Get(kEditMode).Long(), 2);
        rows.Call(kUpdate);
        EXPECT_EQ(rows.Get(kStatus).Long(), 0x81);
    }
    EXPECT_TRUE(rows.Call(kUpdateBatch).Ok());
    rows.Put(kFilter, Number(1));
    EXPECT_EQ(rows.Get(kRecordCount).Long(), 0);
    rows.Put(kFilter, Number(0));
    return rows;
}

std::string TextOf(const Object& rows) {
    rows.Call(kMoveFirst);
    return rows.Call(kGetString, {Number(2), Number(-1), Text(u","), Text(u"/")}).Utf8();
}

/// A change, a deletion and an addition.
void Change(const Object& rows) {
    rows.Put(kAbsolutePosition, Number(1));
    rows.Invoke(kCollect, DISPATCH_PROPERTYPUT, {Text(u"name"), Text(u"changed")}, true);
    rows.Put(kAbsolutePosition, Number(2));
    EXPECT_EQ(rows.Call(kDelete).Error(), 0u);
    EXPECT_EQ(rows.Get(kStatus).Long(), 0x84);
    rows.Call(kAddNew, {Array({Text(u"id")}), Array({Number(4)})});
    rows.Call(kUpdate);
}

TEST(FabricatedRecordset, MakesABatchFinal) {
    const Object rows = InBatches();
    Change(rows);
    const Outcome sent = rows.Call(kUpdateBatch);
    ASSERT_TRUE(sent.Ok()) << sent;
    EXPECT_EQ(TextOf(rows), "1,changed/3,n3/4,/");
    rows.Put(kAbsolutePosition, Number(1));
    EXPECT_EQ(rows.Get(kStatus).Long(), 0);
    const Object name = rows.Get(kFields, {Text(u"name")}).Result();
    EXPECT_EQ(name.Get(field::kOriginalValue).Utf8(), "changed");
    ASSERT_TRUE(rows.Call(kCancelBatch).Ok());
    EXPECT_EQ(TextOf(rows), "1,changed/3,n3/4,/");
}

TEST(FabricatedRecordset, TakesABatchBack) {
    const Object rows = InBatches();
    Change(rows);
    rows.Put(kAbsolutePosition, Number(1));
    const Object name = rows.Get(kFields, {Text(u"name")}).Result();
    EXPECT_EQ(name.Get(field::kOriginalValue).Utf8(), "n1");
    ASSERT_TRUE(rows.Call(kCancelBatch).Ok());
    EXPECT_EQ(TextOf(rows), "1,n1/2,n2/3,n3/");
    // Reading again is giving up what is pending: there is nothing to read from.
    Change(rows);
    ASSERT_TRUE(rows.Call(kResync).Ok());
    rows.Put(kAbsolutePosition, Number(1));
    EXPECT_EQ(rows.Get(kCollect, {Text(u"name")}).Utf8(), "n1");
}

TEST(FabricatedRecordset, RefusesTextsThatAreTooLong) {
    const Object rows = InBatches();
    rows.Put(kAbsolutePosition, Number(1));
    const std::u16string fits(20, u'字');
    EXPECT_TRUE(rows.Invoke(kCollect, DISPATCH_PROPERTYPUT, {Text(u"name"), Text(fits)}, true).Ok());
    const Outcome outcome = rows.Invoke(kCollect, DISPATCH_PROPERTYPUT, {Text(u"name"), Text(fits + u"字")}, true);
    EXPECT_EQ(outcome.Error(), 0x80040E57u) << outcome;
    EXPECT_EQ(rows.Get(kCollect, {Text(u"name")}).Utf8(), ToUtf8(fits));
}

TEST(FabricatedRecordset, KeepsValuesOfEveryType) {
    const struct {
        const char* label;
        LONG type;
        const char16_t* text;
        VARTYPE value;
    } kRows[] = {
        {"smallint", 2, u"-5", VT_I2},        {"integer", 3, u"70000", VT_I4},
        {"single", 4, u"1.5", VT_R4},         {"double", 5, u"2.25", VT_R8},
        {"boolean", 11, u"-1", VT_BOOL},      {"decimal", 14, u"1.05", VT_DECIMAL},
        {"numeric", 131, u"7.5", VT_DECIMAL}, {"bigint", 20, u"9000000000", VT_DECIMAL},
        {"varchar", 200, u"abc", VT_BSTR},    {"wide", 202, u"中", VT_BSTR},
        {"date", 7, u"2003-07-04", VT_DATE},  {"timestamp", 135, u"2003-07-04 13:05:09", VT_DATE},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Object rows = Object::Create(kRecordsetClass);
        rows.Get(kFields).Result().Call(collection::kAppend, {Text(u"v"), Number(row.type), Number(20), Number(0x60)});
        ASSERT_TRUE(rows.Call(kOpen).Ok());
        ASSERT_TRUE(rows.Call(kAddNew).Ok());
        const Outcome put = rows.Invoke(kCollect, DISPATCH_PROPERTYPUT, {Text(u"v"), Text(row.text)}, true);
        ASSERT_TRUE(put.Ok()) << put;
        ASSERT_TRUE(rows.Call(kUpdate).Ok());
        const Outcome read = rows.Get(kCollect, {Number(0)});
        EXPECT_EQ(read.value.Type(), row.value);
        HRESULT result = S_OK;
        const Value asked = Text(row.text).As(row.value, result);
        Outcome expected;
        expected.value = asked;
        EXPECT_EQ(read.Utf8(), expected.Utf8());
    }
}

}  // namespace
}  // namespace tk::ado::test
