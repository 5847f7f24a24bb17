// Stored procedures and functions on the servers that have them: input, output and return values, rows, descriptions.
#include <gtest/gtest.h>

#include "database_systems.h"

namespace tk::ado::test {
namespace {

constexpr LONG kInput = 1;
constexpr LONG kOutput = 2;
constexpr LONG kInputOutput = 3;
constexpr LONG kReturnValue = 4;
constexpr LONG kStoredProcedure = 4;

class ProcedureTest : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        Drop(u"stock");
        Do(u"create table stock (id integer primary key, name varchar(20))");
        Do(u"insert into stock values (1, '苹果')");
        Do(u"insert into stock values (2, 'pear')");
        if (GetParam() == SystemKind::Postgres) {
            Do(u"create or replace function \"All Stock\"() returns setof stock language sql as "
               u"'select * from stock order by id'");
            Do(u"create or replace function one_of(wanted integer) returns setof stock language sql as "
               u"'select * from stock where id = wanted'");
            Do(u"create or replace function plus_one(x integer) returns integer language sql as 'select x + 1'");
            Do(u"create or replace function divide(a integer, inout b integer, out words varchar) language sql as "
               u"'select a / b, ''余'' || (a % b)'");
            Do(u"create or replace procedure \"Add Stock\"(id integer, name varchar, inout total integer) "
               u"language plpgsql as $$ begin insert into stock values (id, name); "
               u"total := total + (select count(*) from stock); end $$");
            Do(u"create or replace function tell(inout same integer, inout gone integer, inout word varchar, "
               u"out missing varchar, out empty varchar) language sql as "
               u"$$ select same, null::integer, word, null::varchar, ''::varchar $$");
            Do(u"create or replace function long_words(out words varchar) language sql as "
               u"$$ select 'x' || repeat('库', 40) $$");
            Do(u"create or replace procedure empty_stock() language sql as 'delete from stock'");
        } else {
            for (const char16_t* name :
                 {u"All Stock", u"one_of", u"divide", u"tell", u"long_words", u"Add Stock", u"empty_stock"})
                Do(u"drop procedure if exists \"" + std::u16string(name) + u"\"");
            Do(u"drop function if exists plus_one");
            Do(u"create procedure \"All Stock\"() select * from stock order by id");
            Do(u"create procedure one_of(wanted integer) select * from stock where id = wanted");
            Do(u"create function plus_one(x integer) returns integer deterministic return x + 1");
            Do(u"create procedure divide(a integer, inout b integer, out words varchar(20)) begin "
               u"set words = concat('余', a % b); set b = a div b; end");
            Do(u"create procedure tell(inout same integer, inout gone integer, inout word varchar(20), "
               u"out missing varchar(20), out empty varchar(20)) begin set gone = null; set empty = ''; end");
            Do(u"create procedure long_words(out words varchar(100)) set words = concat('x', repeat('库', 40))");
            Do(u"create procedure \"Add Stock\"(id integer, name varchar(20), inout total integer) begin "
               u"insert into stock values (id, name); set total = total + (select count(*) from stock); end");
            Do(u"create procedure empty_stock() delete from stock");
        }
        command_ = Object::Create(kCommandClass);
        command_.PutRef(command::kActiveConnection, connection_.AsValue());
        command_.Put(command::kCommandType, Number(kStoredProcedure));
    }
    void SetProcedure(std::u16string_view name) const { command_.Put(command::kCommandText, Text(name)); }
    Object Add(std::u16string_view name, LONG type, LONG direction, LONG size, const Value& value = Omitted()) const {
        const Object declared =
            command_.Call(command::kCreateParameter, {Text(name), Number(type), Number(direction), Number(size), value})
                .Result();
        const Outcome appended =
            command_.Get(command::kParameters).Result().Call(parameter::kAppend, {declared.AsValue()});
        EXPECT_TRUE(appended.Ok()) << appended;
        return declared;
    }
    Outcome Run(LONG options = -1) const {
        return command_.Call(command::kExecute, {Omitted(), Omitted(), Number(options)});
    }

    Object command_;
};

TEST_P(ProcedureTest, GivesItsRowsToARecordsetOpenedByAConnectionText) {
    // As the library opens it: the name in double quotes, the connection as a text, both cursor kinds.
    const std::u16string connection = ToUtf16(ConnectionString(GetParam()));
    for (const LONG lock : {1, 3}) {
        SCOPED_TRACE(lock);
        const Object rows = Object::Create(kRecordsetClass);
        rows.Put(recordset::kCursorLocation, Number(3));
        const Outcome opened =
            rows.Call(recordset::kOpen, {Text(u"\"All Stock\""), Text(connection), Number(lock == 1 ? 0 : 2),
                                         Number(lock), Number(kStoredProcedure)});
        ASSERT_TRUE(opened.Ok()) << opened;
        EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 2);
        EXPECT_EQ(ValueOf(rows, u"name"), ToUtf8(u"苹果"));
        const Outcome again = rows.Call(recordset::kRequery);
        EXPECT_TRUE(again.Ok()) << again;
    }
    const Object rows = Object::Create(kRecordsetClass);
    const Outcome missing = rows.Call(
        recordset::kOpen, {Text(u"\"no such\""), Text(connection), Number(0), Number(1), Number(kStoredProcedure)});
    EXPECT_FALSE(missing.Ok());
    EXPECT_EQ(rows.Get(recordset::kState).Long(), 0);
}

TEST_P(ProcedureTest, TakesArgumentsInItsText) {
    SetProcedure(u"one_of(2)");
    const Outcome outcome = Run();
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(ValueOf(outcome.Result(), u"name"), "pear");
}

TEST_P(ProcedureTest, TakesInputParameters) {
    SetProcedure(u"one_of");
    const Object wanted = Add(u"wanted", 3, kInput, 0, Number(1));
    const Outcome outcome = Run();
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(ValueOf(outcome.Result(), u"name"), ToUtf8(u"苹果"));
    wanted.Put(parameter::kValue, Number(2));
    EXPECT_EQ(ValueOf(Run().Result(), u"name"), "pear");
    wanted.Put(parameter::kValue, Number(3));
    EXPECT_TRUE(Run().Result().Get(recordset::kEof).True());
    // Values of one call.
    const Outcome given = command_.Call(command::kExecute, {Omitted(), Array({Number(1)})});
    EXPECT_EQ(ValueOf(given.Result(), u"name"), ToUtf8(u"苹果"));
}

TEST_P(ProcedureTest, GivesBackOutputValues) {
    SetProcedure(u"divide");
    Add(u"a", 3, kInput, 0, Number(17));
    const Object b = Add(u"b", 3, kInputOutput, 0, Number(5));
    const Object words = Add(u"words", 202, kOutput, 20);
    for (const LONG options : {-1, 128}) {
        SCOPED_TRACE(options);
        b.Put(parameter::kValue, Number(5));
        const Outcome outcome = Run(options);
        ASSERT_TRUE(outcome.Ok()) << outcome;
        EXPECT_EQ(b.Get(parameter::kValue).value.Type(), VT_I4);
        EXPECT_EQ(b.Get(parameter::kValue).Long(), 3);
        EXPECT_EQ(words.Get(parameter::kValue).Utf8(), ToUtf8(u"余2"));
    }
    b.Put(parameter::kValue, Value::Null());
    ASSERT_TRUE(Run().Ok());
    EXPECT_TRUE(b.Get(parameter::kValue).value.IsNull());
    EXPECT_TRUE(words.Get(parameter::kValue).value.IsNull());
}

// However small it is declared, there is room for 63 bytes where the driver fills it, and for all of it elsewhere.
TEST_P(ProcedureTest, CutsOutputValuesBetweenCharacters) {
    SetProcedure(u"long_words");
    const Object words = Add(u"words", 202, kOutput, 1);
    const Outcome outcome = Run(128);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    std::u16string kept = u"x";
    kept.append(GetParam() == SystemKind::Postgres ? 40 : 20, u'库');
    EXPECT_EQ(words.Get(parameter::kValue).Utf8(), ToUtf8(kept));
}

TEST_P(ProcedureTest, TellsNullFromAnEmptyTextAndFromTheInput) {
    SetProcedure(u"tell");
    const Object same = Add(u"same", 3, kInputOutput, 0);
    const Object gone = Add(u"gone", 3, kInputOutput, 0);
    const Object word = Add(u"word", 202, kInputOutput, 20);
    const Object missing = Add(u"missing", 202, kOutput, 20, Text(u"before"));
    const Object empty = Add(u"empty", 202, kOutput, 20, Text(u"before"));
    for (const bool prepared : {false, true}) {
        SCOPED_TRACE(prepared);
        command_.Put(command::kPrepared, Value::Boolean(prepared));
        for (int round = 0; round < 2; ++round) {
            same.Put(parameter::kValue, Number(7));
            gone.Put(parameter::kValue, Number(8));
            word.Put(parameter::kValue, Text(u""));
            const Outcome outcome = Run(128);
            ASSERT_TRUE(outcome.Ok()) << outcome;
            EXPECT_EQ(same.Get(parameter::kValue).Utf8(), "7");
            EXPECT_EQ(gone.Get(parameter::kValue).Utf8(), "NULL");
            EXPECT_EQ(word.Get(parameter::kValue).Utf8(), "");
            EXPECT_EQ(missing.Get(parameter::kValue).Utf8(), "NULL");
            EXPECT_EQ(empty.Get(parameter::kValue).Utf8(), "");
        }
        same.Put(parameter::kValue, Value::Null());
        word.Put(parameter::kValue, Value::Null());
        ASSERT_TRUE(Run().Ok());
        EXPECT_EQ(same.Get(parameter::kValue).Utf8(), "NULL");
        EXPECT_EQ(word.Get(parameter::kValue).Utf8(), "NULL");
    }
}

TEST_P(ProcedureTest, GivesBackTheReturnValueOfAFunction) {
    SetProcedure(u"plus_one");
    const Object returned = Add(u"r", 3, kReturnValue, 0);
    Add(u"x", 3, kInput, 0, Number(41));
    const Outcome outcome = Run(128);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(returned.Get(parameter::kValue).Long(), 42);
}

TEST_P(ProcedureTest, ChangesTables) {
    SetProcedure(u"\"Add Stock\"");
    Add(u"id", 3, kInput, 0, Number(7));
    Add(u"name", 202, kInput, 20, Text(u"it's 新"));
    const Object total = Add(u"total", 3, kInputOutput, 0, Number(100));
    const Outcome outcome = Run(128);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(total.Get(parameter::kValue).Long(), 103);
    EXPECT_EQ(AskFor(u"select name from stock where id = 7"), ToUtf8(u"it's 新"));
    const Outcome twice = Run(128);
    EXPECT_EQ(twice.Error(), 0x80040E2Fu) << twice;
    const Outcome emptied =
        connection_.Call(connection::kExecute, {Text(u"empty_stock"), Omitted(), Number(kStoredProcedure)});
    ASSERT_TRUE(emptied.Ok()) << emptied;
    EXPECT_EQ(AskFor(u"select count(*) from stock"), "0");
}

TEST_P(ProcedureTest, IsDescribedByTheDatabase) {
    SetProcedure(u"divide");
    const Object list = command_.Get(command::kParameters).Result();
    // Looked at without having been declared, they are asked for.
    ASSERT_EQ(list.Get(collection::kCount).Long(), 3);
    const auto describe = [&](LONG index) {
        const Object each = list.Get(collection::kItem, {Number(index)}).Result();
        return each.Get(parameter::kName).Utf8() + " " + each.Get(parameter::kDirection).Utf8() + " " +
               (each.Get(parameter::kType).Long() == 3 ? "integer" : "text");
    };
    EXPECT_EQ(describe(0), "a 1 integer");
    EXPECT_EQ(describe(1), "b 3 integer");
    EXPECT_EQ(describe(2), "words 2 text");
    list.Get(collection::kItem, {Text(u"a")}).Result().Put(parameter::kValue, Number(9));
    list.Get(collection::kItem, {Text(u"b")}).Result().Put(parameter::kValue, Number(2));
    const Outcome outcome = Run();
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(list.Get(collection::kItem, {Text(u"words")}).Result().Get(parameter::kValue).Utf8(), ToUtf8(u"余1"));
    // Another text has other parameters.
    SetProcedure(u"plus_one");
    ASSERT_TRUE(list.Call(collection::kRefresh).Ok());
    ASSERT_EQ(list.Get(collection::kCount).Long(), 2);
    EXPECT_EQ(describe(0), "RETURN_VALUE 4 integer");
    EXPECT_EQ(describe(1), "x 1 integer");
}

TEST_P(ProcedureTest, HasItsMarksCountedInAStatementOfItsOwn) {
    command_.Put(command::kCommandType, Number(1));
    SetProcedure(u"select * from stock where id = ? and name = ?");
    const Object list = command_.Get(command::kParameters).Result();
    EXPECT_EQ(list.Get(collection::kCount).Long(), 0);
    const Outcome refreshed = list.Call(collection::kRefresh);
    ASSERT_TRUE(refreshed.Ok()) << refreshed;
    EXPECT_EQ(list.Get(collection::kCount).Long(), 2);
}

/// Procedures that give rows and output values: PostgreSQL has none.
class RowsAndOutputsTest : public ProcedureTest {
protected:
    void SetUp() override {
        ProcedureTest::SetUp();
        for (const char16_t* name : {u"列出 Stock", u"stock", u"sizes"})
            Do(u"drop procedure if exists \"" + std::u16string(name) + u"\"");
        Do(u"create procedure \"列出 Stock\"(inout least integer, out words varchar(20)) begin "
           u"select * from stock where id >= least order by id; "
           u"set words = concat('至', least), least = null; end");
        // As the table is called whose rows it gives, and with as many outputs as that has columns.
        Do(u"create procedure stock(inout a integer, inout b integer) begin "
           u"select * from stock order by id; set a = b, b = null; end");
        Do(u"create procedure sizes(out text_size longtext, out bytes longblob, out sum_of decimal(12,2), "
           u"out at datetime) begin set text_size = repeat('长', 3000), bytes = x'00FF00', sum_of = 12345.50, "
           u"at = '2003-07-04 13:05:09'; end");
    }
};

TEST_P(RowsAndOutputsTest, GivesBothAtOnce) {
    SetProcedure(u"\"列出 Stock\"");
    const Object least = Add(u"least", 3, kInputOutput, 0, Number(2));
    const Object words = Add(u"words", 202, kOutput, 20);
    const Outcome outcome = Run();
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(least.Get(parameter::kValue).Utf8(), "NULL");
    EXPECT_EQ(words.Get(parameter::kValue).Utf8(), ToUtf8(u"至2"));
    const Object rows = outcome.Result();
    EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 1);
    EXPECT_EQ(ValueOf(rows, u"name"), "pear");
    // The values are no result; what follows the rows is how the call ended.
    const Object end = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(static_cast<bool>(end));
    EXPECT_EQ(end.Get(recordset::kState).Long(), 0);
    EXPECT_FALSE(static_cast<bool>(end.Call(recordset::kNextRecordset).Result()));
}

TEST_P(RowsAndOutputsTest, GivesOutputsBehindSeveralResults) {
    Do(u"drop procedure if exists twice");
    Do(u"create procedure twice(inout least integer, out words varchar(20)) begin select least as a; select 2 as b; "
       u"set words = concat('at ', least), least = least + 1; end");
    SetProcedure(u"twice");
    const Object least = Add(u"least", 3, kInputOutput, 0, Number(2));
    const Object words = Add(u"words", 202, kOutput, 20);
    const Outcome outcome = Run();
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(least.Get(parameter::kValue).Long(), 3);
    EXPECT_EQ(words.Get(parameter::kValue).Utf8(), "at 2");
    Object rows = outcome.Result();
    EXPECT_EQ(ValueOf(rows, u"a"), "2");
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"b"), "2");
}

TEST_P(RowsAndOutputsTest, TakesNoTableOfTheSameNameForTheOutputs) {
    SetProcedure(u"stock");
    const Object a = Add(u"a", 3, kInputOutput, 0, Number(5));
    const Object b = Add(u"b", 3, kInputOutput, 0, Number(6));
    const Outcome outcome = Run();
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(outcome.Result().Get(recordset::kRecordCount).Long(), 2);
    EXPECT_EQ(a.Get(parameter::kValue).Utf8(), "6");
    EXPECT_EQ(b.Get(parameter::kValue).Utf8(), "NULL");
}

TEST_P(RowsAndOutputsTest, GivesNoRecordsetOfTheOutputsAlone) {
    SetProcedure(u"divide");
    Add(u"a", 3, kInput, 0, Number(17));
    const Object b = Add(u"b", 3, kInputOutput, 0, Number(5));
    Add(u"words", 202, kOutput, 20);
    const Outcome outcome = Run();
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(outcome.Result().Get(recordset::kState).Long(), 0);
    EXPECT_EQ(b.Get(parameter::kValue).Long(), 3);
}

TEST_P(RowsAndOutputsTest, GivesOutputsToACallInItsOwnWords) {
    command_.Put(command::kCommandType, Number(1));
    for (const char16_t* text : {u"{call tell(?, ?, ?, ?, ?)}", u"CALL tell(?, ?, ?, ?, ?)"}) {
        SCOPED_TRACE(ToUtf8(text));
        SetProcedure(text);
        const Object list = command_.Get(command::kParameters).Result();
        while (list.Get(collection::kCount).Long() > 0)
            ASSERT_TRUE(list.Call(parameter::kDelete, {Number(0)}).Ok());
        const Object same = Add(u"", 3, kInputOutput, 0, Number(7));
        const Object gone = Add(u"", 3, kInputOutput, 0, Number(8));
        Add(u"", 202, kInputOutput, 20, Text(u""));
        Add(u"", 202, kOutput, 20);
        const Object empty = Add(u"", 202, kOutput, 20);
        const Outcome outcome = Run(128);
        ASSERT_TRUE(outcome.Ok()) << outcome;
        EXPECT_EQ(same.Get(parameter::kValue).Utf8(), "7");
        EXPECT_EQ(gone.Get(parameter::kValue).Utf8(), "NULL");
        EXPECT_EQ(empty.Get(parameter::kValue).Utf8(), "");
    }
}

TEST_P(RowsAndOutputsTest, GivesLongExactAndBinaryValues) {
    SetProcedure(u"sizes");
    const Object text = Add(u"text_size", 203, kOutput, 4000);
    const Object bytes = Add(u"bytes", 205, kOutput, 100);
    const Object sum = Add(u"sum_of", 131, kOutput, 0);
    sum.Put(parameter::kPrecision, Number(12));
    sum.Put(parameter::kNumericScale, Number(2));
    const Object at = Add(u"at", 135, kOutput, 0);
    const Outcome outcome = Run(128);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(text.Get(parameter::kValue).Utf8().size(), 9000u);
    const Value array = bytes.Get(parameter::kValue).value;
    ASSERT_EQ(array.Type(), VT_ARRAY | VT_UI1);
    EXPECT_EQ(array.Get().parray->rgsabound[0].cElements, 3u);
    EXPECT_EQ(sum.Get(parameter::kValue).Utf8(), "12345.5");
    ASSERT_EQ(at.Get(parameter::kValue).value.Type(), VT_DATE);
    EXPECT_NEAR(at.Get(parameter::kValue).value.Get().date, 37806.545243, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Servers, RowsAndOutputsTest, ::testing::Values(SystemKind::MariaDb), SystemName);

INSTANTIATE_TEST_SUITE_P(Servers, ProcedureTest, ::testing::Values(SystemKind::Postgres, SystemKind::MariaDb),
                         SystemName);

}  // namespace
}  // namespace tk::ado::test
