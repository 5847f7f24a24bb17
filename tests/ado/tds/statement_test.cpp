// Statements: parameters, counts, batches, errors, transactions, their ends before the time.
#include <pthread.h>

#include "tds_test.h"

namespace tk::ado::test {
namespace {

constexpr LONG kInput = 1;
constexpr LONG kOutput = 2;
constexpr LONG kReturnValue = 4;
constexpr LONG kText = 1;
constexpr LONG kStoredProcedure = 4;

class TdsStatementTest : public TdsTest {
protected:
    void SetUp() override {
        TdsTest::SetUp();
        Do(u"create table goods (id int not null primary key, name nvarchar(20), price decimal(12,2), made datetime)");
        Do(u"insert into goods values (1, N'苹果', 1.5, '2003-07-04 13:05:09'); "
           u"insert into goods values (2, N'梨', 2.25, NULL); insert into goods values (3, NULL, 10, NULL)");
    }
    Object MakeCommand(std::u16string_view text, LONG type = kText) const {
        const Object command = Object::Create(kCommandClass);
        command.PutRef(command::kActiveConnection, connection_.AsValue());
        command.Put(command::kCommandType, Number(type));
        command.Put(command::kCommandText, Text(text));
        return command;
    }
    static Object Add(const Object& command, std::u16string_view name, LONG type, LONG direction, LONG size,
                      const Value& value = Omitted()) {
        const Object declared =
            command.Call(command::kCreateParameter, {Text(name), Number(type), Number(direction), Number(size), value})
                .Result();
        const Outcome appended =
            command.Get(command::kParameters).Result().Call(parameter::kAppend, {declared.AsValue()});
        EXPECT_TRUE(appended.Ok()) << appended;
        return declared;
    }
    static LONG Affected(const Object& on, std::u16string_view sql) {
        VARIANT count;
        VariantInit(&count);
        VARIANT reference;
        reference.vt = VT_VARIANT | VT_BYREF;
        reference.pvarVal = &count;
        const Value text = Text(sql);
        VARIANT arguments[3] = {Number(129).Get(), reference, text.Get()};
        DISPPARAMS parameters{arguments, nullptr, 3, 0};
        VARIANT result;
        VariantInit(&result);
        const HRESULT code = on.Dispatch()->Invoke(connection::kExecute, IID_NULL, 0, DISPATCH_METHOD, &parameters,
                                                   &result, nullptr, nullptr);
        EXPECT_EQ(code, S_OK);
        return count.vt == VT_I4 ? count.lVal : -99;
    }
};

TEST_F(TdsStatementTest, CountsTheRowsItChanges) {
    EXPECT_EQ(Affected(connection_, u"update goods set price = price + 1"), 3);
    EXPECT_EQ(Affected(connection_, u"update goods set price = 0 where id = 9"), 0);
    EXPECT_EQ(Affected(connection_, u"insert into goods (id) values (4)"), 1);
    EXPECT_EQ(Affected(connection_, u"delete from goods where id > 2"), 2);
}

TEST_F(TdsStatementTest, TakesParametersOfEveryType) {
    const Object command = MakeCommand(u"insert into goods values (?, ?, ?, ?)");
    Add(command, u"id", 3, kInput, 0, Number(7));
    Add(command, u"name", 202, kInput, 20, Text(u"香蕉é€𠀀"));
    const Object price = Add(command, u"price", 131, kInput, 0);
    price.Put(parameter::kPrecision, Number(12));
    price.Put(parameter::kNumericScale, Number(2));
    price.Put(parameter::kValue, Text(u"3.75"));
    const Object made = Add(command, u"made", 135, kInput, 0);
    Value date;
    VARIANT* const moment = date.Out();
    moment->vt = VT_DATE;
    moment->date = 37806.5;
    made.Put(parameter::kValue, date);
    const Outcome outcome = command.Call(command::kExecute);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    const std::string sent = ToUtf8(u"香蕉é€𠀀3.75 2003-07-04 12:00:00");
    EXPECT_EQ(AskFor(u"select name || price || ' ' || made from goods where id = 7"), sent);
}

TEST_F(TdsStatementTest, RunsAPreparedStatementAgain) {
    const Object command = MakeCommand(u"select name from goods where id = ?");
    command.Put(command::kPrepared, Value::Boolean(true));
    const Object id = Add(command, u"id", 3, kInput, 0, Number(1));
    EXPECT_EQ(ValueOf(command.Call(command::kExecute).Result(), u"name"), ToUtf8(u"苹果"));
    id.Put(parameter::kValue, Number(2));
    EXPECT_EQ(ValueOf(command.Call(command::kExecute).Result(), u"name"), ToUtf8(u"梨"));
    id.Put(parameter::kValue, Number(9));
    EXPECT_TRUE(command.Call(command::kExecute).Result().Get(recordset::kEof).True());
}

TEST_F(TdsStatementTest, CallsAProcedure) {
    server_.Define({"p_price",
                    {{"@id", "int"}, {"@price", "decimal(12,2)", true}, {"@words", "nvarchar(20)", true}},
                    "select id, name from goods where id <= @id order by id",
                    "select price as [@price], name as [@words], 7 as [@RETURN_VALUE] from goods where id = @id"});
    const Object command = MakeCommand(u"p_price", kStoredProcedure);
    const Object status = Add(command, u"@RETURN_VALUE", 3, kReturnValue, 0);
    Add(command, u"@id", 3, kInput, 0, Number(2));
    const Object price = Add(command, u"@price", 5, kOutput, 0);
    const Object words = Add(command, u"@words", 202, kOutput, 20);
    const Outcome outcome = command.Call(command::kExecute);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    const Object rows = outcome.Result();
    EXPECT_EQ(List(rows, {u"id", u"name"}), ToUtf8(u"1,苹果;2,梨;"));
    rows.Call(recordset::kClose);
    EXPECT_EQ(status.Get(parameter::kValue).Utf8(), "7");
    EXPECT_EQ(price.Get(parameter::kValue).Utf8(), "2.25");
    EXPECT_EQ(words.Get(parameter::kValue).Utf8(), ToUtf8(u"梨"));
}

TEST_F(TdsStatementTest, GoesThroughTheResultsOfABatch) {
    const Object first =
        connection_.Call(connection::kExecute, {Text(u"select 1 as one; select N'二' as two, id from goods")}).Result();
    ASSERT_TRUE(first);
    EXPECT_EQ(ValueOf(first, u"one"), "1");
    const Object second = first.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(second);
    EXPECT_EQ(List(second, {u"two", u"id"}), ToUtf8(u"二,1;二,2;二,3;"));
    EXPECT_FALSE(second.Call(recordset::kNextRecordset).Result());
}

TEST_F(TdsStatementTest, TellsErrorsInTheWordsAndNumbersOfTheServer) {
    EXPECT_EQ(Fail(u"select * from 没有").Error(), 0x80040E37u);
    EXPECT_EQ(FirstError(), ToUtf8(u"208 42S02 对象不存在：对象名 '没有' 无效。"));
    EXPECT_EQ(Fail(u"selec 1").Error(), 0x80040E14u);
    EXPECT_EQ(FirstError(), ToUtf8(u"102 42000 语法错误：'selec' 附近有语法错误。"));
    EXPECT_EQ(Fail(u"insert into goods (id) values (1)").Error(), 0x80040E2Fu);
    EXPECT_EQ(FirstError().substr(0, 10), "2627 23000");
    Fail(u"insert into goods (id) values (NULL)");
    EXPECT_EQ(FirstError().substr(0, 9), "515 23000");
    Fail(u"raiserror(N'库存不足', 16, 1)");
    EXPECT_EQ(FirstError(), ToUtf8(u"50000 42000 语法错误：库存不足"));
    EXPECT_EQ(AskFor(u"select count(*) from goods"), "3");
}

TEST_F(TdsStatementTest, CommitsAndRollsBack) {
    ASSERT_TRUE(connection_.Call(connection::kBeginTrans).Ok());
    Do(u"delete from goods");
    ASSERT_TRUE(connection_.Call(connection::kRollbackTrans).Ok());
    EXPECT_EQ(AskFor(u"select count(*) from goods"), "3");
    ASSERT_TRUE(connection_.Call(connection::kBeginTrans).Ok());
    Do(u"delete from goods where id = 1");
    EXPECT_EQ(Ask(Connect(), u"select count(*) from goods"), "3");
    ASSERT_TRUE(connection_.Call(connection::kCommitTrans).Ok());
    EXPECT_EQ(Ask(Connect(), u"select count(*) from goods"), "2");
    // Outside of a transaction again.
    Do(u"delete from goods where id = 2");
    EXPECT_EQ(Ask(Connect(), u"select count(*) from goods"), "1");
}

TEST_F(TdsStatementTest, EndsAtItsTimeLimit) {
    connection_.Put(connection::kCommandTimeout, Number(1));
    EXPECT_EQ(Fail(u"waitfor delay '00:00:20'").Error(), 0x80040E31u);
    EXPECT_EQ(Fail(u"with recursive n(x) as (select 1 union all select x + 1 from n) select max(x) from n").Error(),
              0x80040E31u);
    EXPECT_EQ(AskFor(u"select count(*) from goods"), "3");
}

TEST_F(TdsStatementTest, EndsWhenItIsCancelled) {
    pthread_t canceller;
    pthread_create(
        &canceller, nullptr,
        [](void* connection) -> void* {
            const timespec pause = {0, 300'000'000};
            nanosleep(&pause, nullptr);
            static_cast<Object*>(connection)->Call(connection::kCancel);
            return nullptr;
        },
        &connection_);
    EXPECT_EQ(Fail(u"waitfor delay '00:00:20'").Error(), 0x80040E4Eu);
    pthread_join(canceller, nullptr);
    EXPECT_EQ(AskFor(u"select count(*) from goods"), "3");
}

}  // namespace
}  // namespace tk::ado::test
