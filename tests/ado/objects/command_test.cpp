// The Command object and its parameters: what they refuse without a database, and what they send to each.
#include <gtest/gtest.h>

#include "database_systems.h"

namespace tk::ado::test {
namespace {

constexpr LONG kInput = 1;
constexpr LONG kInteger = 3;
constexpr LONG kVarWChar = 202;

Object NewCommand() {
    return Object::Create(kCommandClass);
}

Object Declare(const Object& made, std::u16string_view name, LONG type, LONG direction, LONG size,
               const Value& value = Omitted()) {
    const Outcome outcome =
        made.Call(command::kCreateParameter, {Text(name), Number(type), Number(direction), Number(size), value});
    EXPECT_TRUE(outcome.Ok()) << outcome;
    return outcome.Result();
}

Outcome Append(const Object& made, const Object& declared) {
    return made.Get(command::kParameters).Result().Call(parameter::kAppend, {declared.AsValue()});
}

TEST(Command, IsNewWithTheDefaultsOfTheModel) {
    const Object made = NewCommand();
    ASSERT_TRUE(made);
    EXPECT_EQ(made.Get(command::kCommandText).Utf8(), "");
    EXPECT_EQ(made.Get(command::kCommandType).Long(), 8);
    EXPECT_EQ(made.Get(command::kCommandTimeout).Long(), 30);
    EXPECT_TRUE(made.Get(command::kPrepared).False());
    EXPECT_EQ(made.Get(command::kState).Long(), 0);
    EXPECT_EQ(made.Get(command::kActiveConnection).value.Get().pdispVal, nullptr);
    EXPECT_EQ(made.Get(command::kParameters).Result().Get(collection::kCount).Long(), 0);
    const Object criteria =
        made.Get(command::kProperties).Result().Get(collection::kItem, {Text(u"Update Criteria")}).Result();
    EXPECT_EQ(criteria.Get(0).Long(), 2);
}

TEST(Command, AnswersToTheIdsOfBothGenerations) {
    const Object made = NewCommand();
    EXPECT_TRUE(made.Put(0x60030003, Text(u"select 1")).Ok());
    EXPECT_EQ(made.Get(command::kCommandText).Utf8(), "select 1");
    EXPECT_TRUE(made.Put(command::kCommandTimeout, Number(7)).Ok());
    EXPECT_EQ(made.Get(0x60030005).Long(), 7);
    EXPECT_TRUE(made.Put(0x60030007, Value::Boolean(true)).Ok());
    EXPECT_TRUE(made.Get(command::kPrepared).True());
    EXPECT_TRUE(made.Put(0x6003000C, Number(4)).Ok());
    EXPECT_EQ(made.Get(command::kCommandType).Long(), 4);
    EXPECT_TRUE(made.Put(0x6003000E, Text(u"mine")).Ok());
    EXPECT_EQ(made.Get(command::kName).Utf8(), "mine");
    EXPECT_EQ(made.Get(0x60040000).Long(), 0);
    EXPECT_TRUE(made.Call(0x60040001).Ok());
    const Object declared = made.Call(0x6003000A, {Text(u"p"), Number(kInteger)}).Result();
    ASSERT_TRUE(declared);
    EXPECT_EQ(declared.Get(0x60030000).Utf8(), "p");
    EXPECT_EQ(declared.Get(0x60030004).Long(), kInteger);
    EXPECT_EQ(declared.Get(0x60030006).Long(), kInput);
}

TEST(Command, RefusesWhatIsOutOfRange) {
    const Object made = NewCommand();
    EXPECT_EQ(made.Put(command::kCommandTimeout, Number(-1)).Error(), 3001u);
    EXPECT_EQ(made.Put(command::kCommandType, Number(3)).Error(), 3001u);
    EXPECT_EQ(made.Put(command::kActiveConnection, Number(3)).Error(), 3001u);
    EXPECT_EQ(made.Call(command::kExecute).Error(), 3709u);
    EXPECT_EQ(made.Call(command::kCreateParameter, {Text(u"p"), Number(kInteger), Number(9)}).Error(), 3001u);
    EXPECT_EQ(made.Call(command::kCreateParameter, {Text(u"p"), Number(999)}).Error(), 3708u);
    EXPECT_EQ(made.Call(command::kCreateParameter, {Text(u"p"), Number(kVarWChar), Number(1), Number(-5)}).Error(),
              3001u);
}

TEST(Parameter, IsCreatedByItsClassAndFilledIn) {
    const Object made = Object::Create(kParameterClass);
    ASSERT_TRUE(made);
    EXPECT_EQ(made.Get(parameter::kType).Long(), 0);
    EXPECT_EQ(made.Get(parameter::kDirection).Long(), 1);
    EXPECT_TRUE(made.Get(parameter::kValue).value.IsEmpty());
    EXPECT_TRUE(made.Put(parameter::kName, Text(u"名")).Ok());
    EXPECT_TRUE(made.Put(parameter::kType, Number(131)).Ok());
    EXPECT_TRUE(made.Put(parameter::kPrecision, Number(12)).Ok());
    EXPECT_TRUE(made.Put(parameter::kNumericScale, Number(2)).Ok());
    EXPECT_EQ(made.Get(parameter::kPrecision).value.Type(), VT_UI1);
    EXPECT_EQ(made.Put(parameter::kPrecision, Number(256)).result, DISP_E_OVERFLOW);
    EXPECT_TRUE(made.Put(parameter::kValue, Text(u"12.50")).Ok());
    EXPECT_EQ(made.Get(parameter::kValue).value.Type(), VT_DECIMAL);
    EXPECT_EQ(made.Put(parameter::kDirection, Number(7)).Error(), 3001u);
    EXPECT_EQ(made.Put(parameter::kSize, Number(-1)).Error(), 3001u);
}

TEST(Parameter, TakesOnlyValuesOfItsType) {
    const Object made = NewCommand();
    const Object number = Declare(made, u"n", kInteger, kInput, 0);
    EXPECT_EQ(number.Put(parameter::kValue, Text(u"many")).Error(), 3421u);
    EXPECT_TRUE(number.Put(parameter::kValue, Text(u"12")).Ok());
    EXPECT_EQ(number.Get(parameter::kValue).value.Type(), VT_I4);
    const Object text = Declare(made, u"t", kVarWChar, kInput, 3);
    EXPECT_TRUE(text.Put(parameter::kValue, Text(u"中文字")).Ok());
    EXPECT_EQ(text.Put(parameter::kValue, Text(u"four")).Error(), 3421u);
    EXPECT_EQ(text.Get(parameter::kValue).Utf8(), ToUtf8(u"中文字"));
    EXPECT_EQ(text.Call(parameter::kAppendChunk, {Text(u"x")}).Error(), 3219u);
    EXPECT_EQ(
        made.Call(command::kCreateParameter, {Text(u"n"), Number(kInteger), Number(1), Number(0), Text(u"x")}).Error(),
        3421u);
}

TEST(Parameter, TakesALongValueInPieces) {
    const Object made = NewCommand();
    const Object text = Declare(made, u"t", 203, kInput, 1000);
    EXPECT_TRUE(text.Put(parameter::kAttributes, Number(0x80)).Ok());
    text.Put(parameter::kValue, Text(u"before"));
    EXPECT_TRUE(text.Call(parameter::kAppendChunk, {Text(u"中")}).Ok());
    EXPECT_TRUE(text.Call(parameter::kAppendChunk, {Text(u"文")}).Ok());
    EXPECT_EQ(text.Get(parameter::kValue).Utf8(), ToUtf8(u"中文"));
    EXPECT_TRUE(text.Call(parameter::kAppendChunk, {Value::Null()}).Ok());
    EXPECT_TRUE(text.Call(parameter::kAppendChunk, {Text(u"new")}).Ok());
    EXPECT_EQ(text.Get(parameter::kValue).Utf8(), "new");
}

TEST(Parameters, AreACollectionOfCompleteOnes) {
    const Object made = NewCommand();
    const Object list = made.Get(command::kParameters).Result();
    EXPECT_EQ(Append(made, Declare(made, u"none", 0, kInput, 0)).Error(), 3708u);
    EXPECT_EQ(Append(made, Declare(made, u"no size", kVarWChar, kInput, 0)).Error(), 3708u);
    EXPECT_EQ(list.Call(parameter::kAppend, {made.AsValue()}).Error(), 3001u);
    EXPECT_EQ(list.Call(parameter::kAppend, {Number(1)}).result, DISP_E_TYPEMISMATCH);
    const Object first = Declare(made, u"First", kInteger, kInput, 0, Number(1));
    EXPECT_TRUE(Append(made, first).Ok());
    EXPECT_EQ(Append(made, first).Error(), 3367u);
    EXPECT_EQ(Append(made, Declare(made, u"FIRST", kInteger, kInput, 0)).Error(), 3367u);
    EXPECT_TRUE(Append(made, Declare(made, u"", kInteger, kInput, 0, Number(2))).Ok());
    EXPECT_TRUE(Append(made, Declare(made, u"", kInteger, kInput, 0, Number(3))).Ok());
    EXPECT_EQ(list.Get(collection::kCount).Long(), 3);
    EXPECT_EQ(made.Get(command::kParameters, {Text(u"first")}).Result().Get(parameter::kValue).Long(), 1);
    EXPECT_EQ(list.Get(collection::kItem, {Number(2)}).Result().Get(parameter::kValue).Long(), 3);
    EXPECT_EQ(list.Get(collection::kItem, {Text(u"second")}).Error(), 3265u);
    EXPECT_EQ(list.Get(collection::kItem, {Number(3)}).Error(), 3265u);
    EXPECT_TRUE(list.Call(parameter::kDelete, {Text(u"first")}).Ok());
    EXPECT_EQ(list.Get(collection::kCount).Long(), 2);
    EXPECT_EQ(list.Call(parameter::kDelete, {Number(2)}).Error(), 3265u);
    EXPECT_EQ(list.Call(collection::kRefresh).Error(), 3709u);
}

class CommandTest : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        Drop(u"things");
        Do(u"create table things (id integer primary key, name varchar(30), price decimal(12,2), made timestamp null, "
           u"data " +
           std::u16string(Words().blob) + u")");
        Do(u"insert into things values (1, '苹果', 1.50, '2003-07-04 13:05:09', " + std::u16string(Words().bytes12) +
           u")");
        Do(u"insert into things values (2, 'pear', 2.50, null, null)");
        command_ = NewCommand();
        EXPECT_TRUE(command_.PutRef(command::kActiveConnection, connection_.AsValue()).Ok());
    }
    void SetText(std::u16string_view text) const {
        EXPECT_TRUE(command_.Put(command::kCommandText, Text(text)).Ok());
        EXPECT_TRUE(command_.Put(command::kCommandType, Number(1)).Ok());
    }
    void Add(std::u16string_view name, LONG type, LONG size, const Value& value) const {
        const Outcome appended = Append(command_, Declare(command_, name, type, kInput, size, value));
        EXPECT_TRUE(appended.Ok()) << appended;
    }
    Object Item(LONG index) const { return command_.Get(command::kParameters, {Number(index)}).Result(); }

    /// Runs the command; the rows changed, or -99 after a failure.
    LONG Run(const Value& values = Omitted()) const {
        VARIANT affected;
        VariantInit(&affected);
        Value reference;
        VARIANT* const place = reference.Out();
        place->vt = VT_VARIANT | VT_BYREF;
        place->pvarVal = &affected;
        VARIANT arguments[3] = {Number(128).Get(), values.Get(), *place};
        DISPPARAMS parameters{arguments, nullptr, 3, 0};
        VARIANT result;
        VariantInit(&result);
        const HRESULT code = command_.Dispatch()->Invoke(command::kExecute, IID_NULL, 0, DISPATCH_METHOD, &parameters,
                                                         &result, nullptr, nullptr);
        EXPECT_EQ(code, S_OK);
        EXPECT_EQ(result.pdispVal, nullptr);
        return code == S_OK && affected.vt == VT_I4 ? affected.lVal : -99;
    }

    Object command_;
};

TEST_P(CommandTest, SendsValuesOfEveryTypeAsParameters) {
    SetText(u"insert into things (id, name, price, made, data) values (?, ?, ?, ?, ?)");
    Add(u"id", kInteger, 0, Number(3));
    Add(u"name", kVarWChar, 30, Text(u"it's; -- 中"));
    Add(u"price", 131, 0, Text(u"12.25"));
    Item(2).Put(parameter::kPrecision, Number(12));
    Item(2).Put(parameter::kNumericScale, Number(2));
    Add(u"made", 135, 0, Text(u"2010-01-02 03:04:05"));
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 3);
    Value bytes;
    VARIANT* const place = bytes.Out();
    place->vt = VT_ARRAY | VT_UI1;
    place->parray = array;
    Add(u"data", 204, 100, bytes);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(AskFor(u"select name from things where id = 3"), ToUtf8(u"it's; -- 中"));
    EXPECT_EQ(AskFor(u"select price from things where id = 3"), "12.25");
    EXPECT_EQ(AskFor(u"select count(*) from things where made = '2010-01-02 03:04:05'"), "1");
    EXPECT_EQ(AskFor(u"select length(data) from things where id = 3"), "3");
    Item(0).Put(parameter::kValue, Number(4));
    for (LONG i = 1; i < 5; ++i)
        EXPECT_TRUE(Item(i).Put(parameter::kValue, Value::Null()).Ok());
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(AskFor(u"select count(*) from things where id = 4 and name is null and price is null and made is null "
                     u"and data is null"),
              "1");
}

TEST_P(CommandTest, RunsAgainPreparedWithOtherValues) {
    SetText(u"insert into things (id, name) values (?, ?)");
    command_.Put(command::kPrepared, Value::Boolean(true));
    Add(u"id", kInteger, 0, Number(0));
    Add(u"name", kVarWChar, 30, Value::Null());
    for (LONG i = 10; i < 30; ++i) {
        Item(0).Put(parameter::kValue, Number(i));
        Item(1).Put(parameter::kValue, i % 2 == 0 ? Value::Null() : Text(u"名" + NumberText(i)));
        ASSERT_EQ(Run(), 1);
    }
    EXPECT_EQ(AskFor(u"select count(*) from things where id >= 10"), "20");
    EXPECT_EQ(AskFor(u"select name from things where id = 29"), ToUtf8(u"名29"));
    // A failure leaves the plan behind it usable.
    Item(0).Put(parameter::kValue, Number(1));
    EXPECT_EQ(command_.Call(command::kExecute).Error(), 0x80040E2Fu);
    Item(0).Put(parameter::kValue, Number(40));
    EXPECT_EQ(Run(), 1);
    SetText(u"select name from things where id = ?");
    command_.Get(command::kParameters).Result().Call(parameter::kDelete, {Number(1)});
    for (const LONG id : {1, 2, 1}) {
        Item(0).Put(parameter::kValue, Number(id));
        const Outcome outcome = command_.Call(command::kExecute);
        ASSERT_TRUE(outcome.Ok()) << outcome;
        EXPECT_EQ(ValueOf(outcome.Result(), u"name"), id == 1 ? ToUtf8(u"苹果") : "pear");
    }
}

TEST_P(CommandTest, TakesValuesForOneExecutionFromAnArray) {
    SetText(u"update things set name = ? where id = ?");
    EXPECT_EQ(Run(Array({Text(u"plum"), Number(2)})), 1);
    EXPECT_EQ(AskFor(u"select name from things where id = 2"), "plum");
    EXPECT_EQ(Run(Array({Text(u"plum"), Number(99)})), 0);
    Add(u"name", kVarWChar, 30, Text(u"kept"));
    Add(u"id", kInteger, 0, Number(2));
    EXPECT_EQ(Run(Array({Text(u"fig")})), 1);
    EXPECT_EQ(AskFor(u"select name from things where id = 2"), "fig");
    // They are of this execution only.
    EXPECT_EQ(Item(0).Get(parameter::kValue).Utf8(), "kept");
    EXPECT_EQ(Run(Array({Omitted(), Number(1)})), 1);
    EXPECT_EQ(AskFor(u"select name from things where id = 1"), "kept");
    EXPECT_EQ(command_.Call(command::kExecute, {Omitted(), Array({Number(1), Number(2), Number(3)})}).Error(), 3001u);
    EXPECT_EQ(command_.Call(command::kExecute, {Omitted(), Array({Text(u"x"), Text(u"many")})}).Error(), 3421u);
}

TEST_P(CommandTest, IsTheSourceOfARecordset) {
    SetText(u"select * from things where id >= ? order by id");
    Add(u"id", kInteger, 0, Number(2));
    const Object rows = Object::Create(kRecordsetClass);
    rows.Put(recordset::kCursorLocation, Number(3));
    EXPECT_EQ(rows.Call(recordset::kOpen, {command_.AsValue(), connection_.AsValue()}).Error(), 3707u);
    const Outcome opened = rows.Call(recordset::kOpen, {command_.AsValue(), Omitted(), Number(3), Number(3)});
    ASSERT_TRUE(opened.Ok()) << opened;
    EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 1);
    EXPECT_EQ(rows.Get(recordset::kSource).Utf8(), "select * from things where id >= ? order by id");
    EXPECT_EQ(rows.Get(recordset::kActiveCommand).Result().Dispatch(), command_.Dispatch());
    PutValue(rows, u"name", Text(u"fig"));
    const Outcome written = rows.Call(recordset::kUpdate);
    ASSERT_TRUE(written.Ok()) << written;
    EXPECT_EQ(AskFor(u"select name from things where id = 2"), "fig");
    // The same command asked again, with the value that its parameter has by then.
    Item(0).Put(parameter::kValue, Number(1));
    const Outcome again = rows.Call(recordset::kRequery);
    ASSERT_TRUE(again.Ok()) << again;
    EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 2);
    EXPECT_EQ(rows.PutRef(recordset::kActiveConnection, connection_.AsValue()).Error(), 3707u);
    rows.Call(recordset::kClose);
    EXPECT_TRUE(rows.PutRef(recordset::kSource, command_.AsValue()).Ok());
    const Outcome reopened = rows.Call(recordset::kOpen);
    ASSERT_TRUE(reopened.Ok()) << reopened;
    EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 2);
}

TEST_P(CommandTest, OpensATableByItsQuotedName) {
    command_.Put(command::kCommandText, Text(u"\"things\""));
    command_.Put(command::kCommandType, Number(2));
    const Outcome outcome = command_.Call(command::kExecute);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(outcome.Result().Get(recordset::kRecordCount).Long(), 2);
    EXPECT_EQ(outcome.Result().Get(recordset::kActiveCommand).Result().Dispatch(), command_.Dispatch());
}

TEST_P(CommandTest, ReportsAMissingValueAndAWrongStatement) {
    SetText(u"select * from things where id = ?");
    const Outcome missing = command_.Call(command::kExecute);
    EXPECT_FALSE(missing.Ok());
    SetText(u"selec 1");
    EXPECT_EQ(command_.Call(command::kExecute).Error(), 0x80040E14u);
    EXPECT_EQ(connection_.Get(connection::kErrors).Result().Get(collection::kCount).Long(), 1);
    connection_.Call(connection::kClose);
    EXPECT_EQ(command_.Call(command::kExecute).Error(), 3709u);
}

TEST_P(CommandTest, AnEmptyTextDoesNotReachTheDriver) {
    const Outcome text = connection_.Call(connection::kExecute, {Text(u""), Omitted(), Number(1)});
    EXPECT_EQ(text.Error(), 0x80004005u) << text;
    EXPECT_NE(text.description.find(u"Invalid string or buffer length"), std::u16string::npos) << text;
    EXPECT_EQ(AskFor(u"select count(*) from things"), "2");
}

TEST_P(CommandTest, EndsAfterItsOwnTime) {
    const std::u16string_view slow =
        GetParam() == SystemKind::Sqlite
            ? u"with recursive c(x) as (select 1 union all select x + 1 from c) select count(*) from c"
        : GetParam() == SystemKind::Postgres ? u"select pg_sleep(30)"
                                             : u"select sleep(30), count(*) from things";
    SetText(slow);
    command_.Put(command::kCommandTimeout, Number(1));
    const DWORD start = GetTickCount();
    const Outcome outcome = command_.Call(command::kExecute);
    EXPECT_LT(GetTickCount() - start, 10000u);
    if (GetParam() != SystemKind::MariaDb) {
        EXPECT_EQ(outcome.Error(), 0x80040E31u) << outcome;
    }
    EXPECT_EQ(connection_.Get(connection::kCommandTimeout).Long(), 30);
}

INSTANTIATE_TEST_SUITE_P(All, CommandTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

}  // namespace
}  // namespace tk::ado::test
