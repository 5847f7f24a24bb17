// Texts of several statements, where the system takes them.
#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "database_systems.h"

namespace tk::ado::test {
namespace {

class SeveralStatementsTest : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        Drop(u"steps");
        Do(u"create table steps (id integer primary key)");
    }

    Outcome Run(std::u16string_view text) const { return connection_.Call(connection::kExecute, {Text(text)}); }
    std::string Steps() const { return AskFor(u"select count(*) from steps"); }
};

TEST_P(SeveralStatementsTest, LeaveTheTransactionToBeEnded) {
    static constexpr struct {
        const char* label;
        const char16_t* text;
        const char* rows;
    } kRows[] = {
        {"without rows", u"insert into steps values (1); insert into steps values (2); insert into steps values (3)",
         "3"},
        {"rows last", u"insert into steps values (1); select 1", "1"},
        {"rows first", u"select 1; insert into steps values (1); insert into steps values (2)", "2"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Do(u"delete from steps");
        ASSERT_TRUE(connection_.Call(connection::kBeginTrans).Ok());
        Do(row.text);
        const Outcome committed = connection_.Call(connection::kCommitTrans);
        EXPECT_TRUE(committed.Ok()) << committed;
        EXPECT_EQ(Steps(), row.rows);
    }
}

TEST_P(SeveralStatementsTest, GiveTheirResultsInARow) {
    const Outcome first =
        Run(u"select 1 as a; insert into steps values (1); select 'b;' as b, 2; select id from steps;");
    ASSERT_TRUE(first.Ok()) << first;
    Object rows = first.Result();
    EXPECT_EQ(ValueOf(rows, u"a"), "1");
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows.Get(recordset::kState).Long(), 0);  // the INSERT's
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"b"), "b;");
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"id"), "1");
    EXPECT_FALSE(rows.Call(recordset::kNextRecordset).Result());
}

TEST_P(SeveralStatementsTest, LeaveTheConnectionToOtherThreads) {
    for (const char16_t* text : {
             u"insert into steps values (1); insert into steps values (2)",
             u"select 1; select 2",
             u"insert into steps values (3); select 1",
             u"select 1; insert into steps values (1)",  // once more: fails
             u"insert into steps values (1); select 1",  // the first one fails
             u"select 1; select nothing from nowhere; select 2",
         }) {
        SCOPED_TRACE(ToUtf8(text));
        Run(text);
        std::string seen;
        std::thread([&] { seen = Ask(connection_, u"select 7"); }).join();
        EXPECT_EQ(seen, "7");
    }
}

TEST_P(SeveralStatementsTest, AreAllDoneWhenNobodyAsksForTheirResults) {
    Run(u"insert into steps values (1); insert into steps values (2); insert into steps values (3)");
    EXPECT_EQ(Steps(), "3");
    Run(u"select 1; insert into steps values (4)");
    EXPECT_EQ(Steps(), "4");
}

TEST_P(SeveralStatementsTest, FailAtOnceWithoutRecords) {
    const Outcome failed = connection_.Call(
        connection::kExecute,
        {Text(u"insert into steps values (1); insert into nowhere values (1)"), Omitted(), Number(129)});
    EXPECT_EQ(failed.Error(), 0x80040E37u) << failed;
    EXPECT_EQ(AskFor(u"select 7"), "7");
    // Behind rows as well, which nobody wants.
    for (const char16_t* text : {u"select 1; insert into nowhere values (1)",
                                 u"insert into steps values (7); select 1; insert into nowhere values (1)"}) {
        const Outcome behind = connection_.Call(connection::kExecute, {Text(text), Omitted(), Number(129)});
        EXPECT_EQ(behind.Error(), 0x80040E37u) << ToUtf8(text) << behind;
    }
}

TEST_P(SeveralStatementsTest, FailWithTheFirst) {
    const Outcome failed = Run(u"insert into nowhere values (1); insert into steps values (1)");
    EXPECT_EQ(failed.Error(), 0x80040E37u) << failed;
    EXPECT_EQ(Steps(), "0");
}

TEST_P(SeveralStatementsTest, TakeTheirParametersInOrder) {
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, connection_.AsValue());
    made.Put(
        command::kCommandText,
        Text(u"insert into steps values (?); insert into steps values (?); select '?', id from steps where id > ?"));
    constexpr LONG kInteger = 3;
    constexpr LONG kInput = 1;
    for (const LONG number : {11, 12, 11}) {
        const Object declared = made.Call(command::kCreateParameter,
                                          {Text(u""), Number(kInteger), Number(kInput), Number(0), Number(number)})
                                    .Result();
        ASSERT_TRUE(made.Get(command::kParameters).Result().Call(parameter::kAppend, {declared.AsValue()}).Ok());
    }
    const Outcome outcome = made.Call(command::kExecute);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    Object rows = outcome.Result().Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"id"), "12");
}

INSTANTIATE_TEST_SUITE_P(Servers, SeveralStatementsTest, ::testing::Values(SystemKind::Postgres, SystemKind::MariaDb),
                         SystemName);

TEST_P(SeveralStatementsTest, AreManyInOneText) {
    std::u16string text;
    for (int i = 1; i <= 3000; ++i)
        text += u"insert into steps values (" + ToUtf16(std::to_string(i)) + u");";
    Do(u"begin");
    Do(text);
    Do(u"commit");
    EXPECT_EQ(Steps(), "3000");
}

TEST_P(SeveralStatementsTest, DoNotMakeTheirRowsAnotherTables) {
    Do(u"insert into steps values (1)");
    const Object rows = OpenRows(
        connection_, u"select id from steps where id = 1; create temporary table steps (id integer primary key)");
    EXPECT_EQ(ValueOf(rows, u"id"), "1");
    PutValue(rows, u"id", Number(100));
    EXPECT_FALSE(rows.Call(recordset::kUpdate).Ok()) << "nobody knows any more whose rows they are";
    Do(GetParam() == SystemKind::MariaDb ? u"drop temporary table steps" : u"drop table pg_temp.steps");
    EXPECT_EQ(AskFor(u"select id from steps"), "1");
}

/// What MariaDB makes of texts with semicolons inside of statements.
class ProgramTextTest : public SeveralStatementsTest {
protected:
    void SetUp() override {
        SeveralStatementsTest::SetUp();
        other_ = Connect();
    }
    std::string AskElsewhere(std::u16string_view text) const { return Ask(other_, text); }

private:
    Object other_;
};

/// What is ended inside the driver while another thread is in there.
class CancelledTextTest : public ProgramTextTest {
protected:
    void SetUp() override {
#ifdef __SANITIZE_THREAD__
        GTEST_SKIP() << "the driver's SQLCancel races with the call that it ends";
#endif
        ProgramTextTest::SetUp();
    }

    /// A thread that cancels once the server is at sleep(5).
    std::thread CancelAsleep(const Object& object, DISPID cancel) const {
        return std::thread([this, &object, cancel] {
            while (AskElsewhere(u"select count(*) from information_schema.processlist where info like '%sleep(5)%' and "
                                u"id <> connection_id()") != "1")
                std::this_thread::yield();
            usleep(300'000);  // until results are stepped over; it is to be ended anywhere
            object.Call(cancel);
        });
    }

    /// Told as cancelled, before its last statement, and the connection goes on.
    void ExpectEnded(const Outcome& outcome) const {
        EXPECT_EQ(outcome.Error(), 0x80040E4Eu) << outcome;
        EXPECT_EQ(AskFor(u"select 7"), "7");
        EXPECT_EQ(Steps(), "0");
    }
};

TEST_P(ProgramTextTest, TellsTheFailureOfALaterOneInItsPlace) {
    const Outcome first =
        Run(u"insert into steps values (1); insert into nowhere values (1); insert into steps values (2)");
    ASSERT_TRUE(first.Ok()) << first;
    const Outcome second = first.Result().Call(recordset::kNextRecordset);
    EXPECT_EQ(second.Error(), 0x80040E37u) << second;
    EXPECT_EQ(Steps(), "1");  // nothing behind it is done
}

TEST_P(ProgramTextTest, DefinesRoutinesAndTriggers) {
    Do(u"drop procedure if exists two; create procedure two() begin select 1 as a; select 2 as b; end;");
    Do(u"create trigger after_step before insert on steps for each row begin set @one = 1; set @two = 2; end");
    Do(u"insert into steps values (1)");
    EXPECT_EQ(AskFor(u"select @one + @two"), "3");
    Object rows = Run(u"call two()").Result();
    EXPECT_EQ(ValueOf(rows, u"a"), "1");
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"b"), "2");
}

TEST_P(ProgramTextTest, SaysWhatIsWrongWithARoutine) {
    for (int i = 0; i < 2; ++i) {
        const Outcome failed = Run(u"create procedure wrong() begin selec 1; select 2; end");
        EXPECT_EQ(failed.Error(), 0x80040E14u) << failed;
        std::string seen;
        std::thread([&] { seen = Ask(connection_, u"select 7"); }).join();
        EXPECT_EQ(seen, "7");
    }
}

TEST_P(ProgramTextTest, RunsACallAndWhatFollowsAsOneBlock) {
    Do(u"drop procedure if exists two; create procedure two() begin select 1 as a; select 2 as b; end");
    Object rows = Run(u"select 0 as z; call two(); insert into steps values (1); select 3 as c;").Result();
    EXPECT_EQ(ValueOf(rows, u"z"), "0");
    for (const auto& [name, value] : {std::pair(u"a", "1"), std::pair(u"b", "2"), std::pair(u"c", "3")}) {
        rows = rows.Call(recordset::kNextRecordset).Result();
        ASSERT_TRUE(rows);
        EXPECT_EQ(ValueOf(rows, name), value);
    }
    EXPECT_EQ(Steps(), "1");
    rows = Run(u"if 1 = 1 then select 4 as d; end if").Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"d"), "4");
}

TEST_P(ProgramTextTest, RunsACallInBracesAndWhatFollowsAsOneBlock) {
    Do(u"drop procedure if exists two; create procedure two() begin select 1 as a; select 2 as b; end");
    Object rows = Run(u"{call two()}; select 5 as e").Result();
    for (const auto& [name, value] : {std::pair(u"a", "1"), std::pair(u"b", "2"), std::pair(u"e", "5")}) {
        ASSERT_TRUE(rows);
        EXPECT_EQ(ValueOf(rows, name), value);
        rows = rows.Call(recordset::kNextRecordset).Result();
    }
}

TEST_P(ProgramTextTest, SeesTheRowsOfRareStatements) {
    for (const char16_t* text :
         {u"optimize table steps", u"/* all */ repair table steps;", u"check table steps", u"values (1), (2)",
          u"/* all */ show tables", u"set statement max_statement_time=5 for select 1"}) {
        const Outcome run = Run(text);
        ASSERT_TRUE(run.Ok()) << run << " in " << ToUtf8(text);
        EXPECT_EQ(run.Result().Get(recordset::kState).Long(), 1) << ToUtf8(text);
        EXPECT_EQ(AskFor(u"select 7"), "7") << ToUtf8(text);
    }
    for (const char16_t* text : {u"help 'select'", u"xa recover", u"load index into cache steps"}) {
        Run(text);  // some are not allowed in a block: a failure, but the connection goes on
        EXPECT_EQ(AskFor(u"select 7"), "7") << ToUtf8(text);
    }
}

TEST_P(ProgramTextTest, KeepsResultsThatAreUnreadWhenTheConnectionGoesOn) {
    Do(u"drop procedure if exists three; create procedure three() begin select 1 as a; "
       u"select seq as b from seq_1_to_3000; select 3 as c; end");
    Object rows = Run(u"call three()").Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(AskFor(u"select 7"), "7");
    Do(u"insert into steps values (1)");
    EXPECT_EQ(ValueOf(rows, u"a"), "1");
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 3000);
    EXPECT_TRUE(rows.Call(recordset::kMoveLast).Ok());
    EXPECT_EQ(ValueOf(rows, u"b"), "3000");
    EXPECT_EQ(AskFor(u"select 8"), "8");
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"c"), "3");
    rows = rows.Call(recordset::kNextRecordset).Result();  // the CALL itself
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows.Get(recordset::kState).Long(), 0);
    EXPECT_FALSE(rows.Call(recordset::kNextRecordset).Result());
}

TEST_P(ProgramTextTest, LosesNoResultWhenAnUnreadOneIsReleased) {
    Do(u"drop procedure if exists two; create procedure two() begin select 1 as a; select 2 as b; end");
    for (const bool isReadToTheLastRows : {false, true}) {
        SCOPED_TRACE(isReadToTheLastRows);
        Object unread = Run(u"select 0 as z; call two()").Result();
        for (int i = 0; isReadToTheLastRows && i < 3; ++i)
            unread = unread.Call(recordset::kNextRecordset).Result();
        ASSERT_TRUE(unread);
        Object rows = Run(u"call two(); select 5 as c").Result();
        unread = Object();
        for (const auto& [name, value] : {std::pair(u"a", "1"), std::pair(u"b", "2"), std::pair(u"c", "5")}) {
            ASSERT_TRUE(rows);
            EXPECT_EQ(ValueOf(rows, name), value);
            rows = rows.Call(recordset::kNextRecordset).Result();
        }
    }
}

TEST_P(ProgramTextTest, TellsTheFailureBehindAResultAfterTheConnectionWentOn) {
    Do(u"drop procedure if exists failing; create procedure failing() begin select 1 as a; select 2 as b; "
       u"insert into nowhere values (1); end");
    Object rows = Run(u"call failing()").Result();
    EXPECT_EQ(AskFor(u"select 7"), "7");
    ASSERT_TRUE(rows);
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"b"), "2");
    const Outcome failed = rows.Call(recordset::kNextRecordset);
    EXPECT_EQ(failed.Error(), 0x80040E37u) << failed;
    EXPECT_EQ(AskFor(u"select 8"), "8");
}

TEST_P(ProgramTextTest, KeepsOfEachUnreadResultAsManyRowsAsAreWanted) {
    Do(u"drop procedure if exists two; create procedure two() begin select seq as a from seq_1_to_2000; "
       u"select seq as b from seq_1_to_3000; end");
    const Object rows = Object::Create(kRecordsetClass);
    rows.Put(recordset::kMaxRecords, Number(1500));
    const Outcome opened = rows.Call(recordset::kOpen, {Text(u"call two()"), connection_.AsValue()});
    ASSERT_TRUE(opened.Ok()) << opened;
    EXPECT_EQ(AskFor(u"select 7"), "7");
    EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 1500);
    const Object second = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(second);
    EXPECT_EQ(second.Get(recordset::kRecordCount).Long(), 1500);
}

TEST_P(CancelledTextTest, CanBeLeftInTheMidstOfManyResults) {
    Do(u"drop procedure if exists many; create procedure many() begin select seq as a from seq_1_to_20000; "
       u"select seq as b from seq_1_to_500000; select 3 as c; end");
    for (int i = 0; i < 3; ++i) {
        Object rows = Run(u"call many()").Result();
        ASSERT_TRUE(rows);
        rows = Object();
        EXPECT_EQ(AskFor(u"select 7"), "7");
    }
}

TEST_P(ProgramTextTest, GivesTheFirstResultWhileTheNextOneIsWaitedFor) {
    Do(u"drop procedure if exists waiting; create procedure waiting() begin select 1 as a; "
       u"select get_lock('a lock of the test', 20) as b; end");
    const Object other = Connect();
    EXPECT_EQ(Ask(other, u"select get_lock('a lock of the test', 0)"), "1");
    for (const LONG options : {1, 1 | 0x20}) {
        SCOPED_TRACE(options);
        Object rows = OpenRows(connection_, u"call waiting()", 1, options);
        EXPECT_EQ(ValueOf(rows, u"a"), "1");
        EXPECT_TRUE(rows.Call(recordset::kMoveNext).Ok());
        EXPECT_TRUE(rows.Get(recordset::kEof).True());
        EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 1);
        EXPECT_EQ(Ask(other, u"select release_lock('a lock of the test')"), "1");
        rows = rows.Call(recordset::kNextRecordset).Result();
        ASSERT_TRUE(rows);
        EXPECT_EQ(ValueOf(rows, u"b"), "1");
        EXPECT_EQ(AskFor(u"select release_lock('a lock of the test')"), "1");
        EXPECT_EQ(Ask(other, u"select get_lock('a lock of the test', 0)"), "1");
    }
}

TEST_P(CancelledTextTest, EndsWhenItIsLeftInTheMidst) {
    Do(u"drop procedure if exists slow; create procedure slow() begin select 1 as a; select sleep(20) as b; "
       u"select 3 as c; end");
    for (const bool isClosed : {false, true}) {
        Object rows = Run(u"call slow()").Result();
        ASSERT_TRUE(rows);
        if (isClosed) rows.Call(recordset::kClose);
        rows = Object();
        EXPECT_EQ(AskElsewhere(u"select count(*) from information_schema.processlist where info like '%sleep(20)%' and "
                               u"id <> connection_id()"),
                  "0");
        EXPECT_EQ(AskFor(u"select 7"), "7");
    }
}

TEST_P(CancelledTextTest, TellsACancelledWaitForTheNextResult) {
    Do(u"drop procedure if exists slow; create procedure slow() begin select 1 as a; select sleep(20) as b; "
       u"select 3 as c; end");
    const Object rows = OpenRows(connection_, u"call slow()", 1);
    std::thread canceller([&] {
        while (AskElsewhere(u"select count(*) from information_schema.processlist where info like '%sleep(20)%' and "
                            u"id <> connection_id()") != "1")
            std::this_thread::yield();
        usleep(100'000);  // until the other thread waits; it is told either way
        rows.Call(recordset::kCancel);
    });
    Outcome next = rows.Call(recordset::kNextRecordset);
    canceller.join();
    while (next.Ok() && next.Result() && next.Result().Get(recordset::kState).Long() != 0)
        next = next.Result().Call(recordset::kNextRecordset);
    EXPECT_FALSE(next.Ok());
    EXPECT_EQ(AskFor(u"select 7"), "7");
}

TEST_P(CancelledTextTest, LosesNoResultWithoutAWordWhenAReaderIsCancelled) {
    Do(u"drop procedure if exists many; create procedure many() begin declare i integer default 0; "
       u"select seq from seq_1_to_600; while i < 300 do select i; set i = i + 1; end while; end");
    for (int round = 0; round < 20; ++round) {
        Object rows = OpenRows(connection_, u"call many()", 1);
        std::thread canceller([&] {
            usleep(static_cast<useconds_t>(round) * 400);
            rows.Call(recordset::kCancel);
        });
        bool isWhole = rows.Get(recordset::kRecordCount).Ok();
        Outcome next = rows.Call(recordset::kNextRecordset);
        canceller.join();
        int results = 1;
        for (; isWhole && next.Ok() && next.Result(); next = next.Result().Call(recordset::kNextRecordset)) {
            isWhole =
                next.Result().Get(recordset::kState).Long() == 0 || next.Result().Get(recordset::kRecordCount).Ok();
            ++results;
        }
        if (isWhole && next.Ok()) {
            EXPECT_EQ(results, 302);
        }
        EXPECT_EQ(AskFor(u"select 7"), "7");
    }
}

TEST_P(ProgramTextTest, TellsAFailureAmongTheRowsOfALaterResult) {
    Do(u"drop procedure if exists failing; create procedure failing() begin select 1 as a; "
       u"select case when seq < 2500 then seq else (select 1 union select 2) end from seq_1_to_5000; select 3; end");
    const Object rows = Run(u"call failing()").Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"a"), "1");
    const Outcome failed = rows.Call(recordset::kNextRecordset);
    EXPECT_FALSE(failed.Ok());
    EXPECT_NE(ToUtf8(failed.description).find("more than 1 row"), std::string::npos) << failed;
    EXPECT_FALSE(connection_.Call(connection::kExecute, {Text(u"call failing()"), Omitted(), Number(129)}).Ok());
    EXPECT_EQ(AskFor(u"select 7"), "7");
}

TEST_P(ProgramTextTest, GetsANewConnectionForOneThatItsDriverHasLeftOutOfSync) {
    Do(u"drop table if exists parts; create table parts (id integer) partition by hash (id) partitions 2");
    for (const char16_t* text : {u"alter table parts check partition all", u"handler steps read first"}) {
        Do(u"handler steps open");
        Run(text);  // with rows, of which the driver does not know
        EXPECT_FALSE(Run(u"select 7").Ok()) << ToUtf8(text);
        EXPECT_EQ(AskFor(u"select 8"), "8") << ToUtf8(text);
    }
}

TEST_P(ProgramTextTest, ReadsExecutableComments) {
    Do(u"insert into steps values (1); /*M! insert into steps values (2) */; /*!40000 insert into steps values (3) */");
    EXPECT_EQ(Steps(), "3");
    EXPECT_EQ(Ask(connection_, u"select 1"), "1");
    Do(u"/*!40101 SET @a = 5 */; insert into steps values (4)");
    EXPECT_EQ(AskFor(u"select @a"), "5");
}

TEST_P(ProgramTextTest, GoesOnBehindARoutine) {
    Do(u"drop procedure if exists two; create procedure two() begin if (1 > 0) then select 1 as a; end if; end; "
       u"insert into steps values (1)");
    EXPECT_EQ(Steps(), "1");
    Do(u"create trigger g before insert on steps for each row if (new.id < 0) then set new.id = 0; end if");
    Do(u"insert into steps values (-5)");
    EXPECT_EQ(AskFor(u"select min(id) from steps"), "0");
}

TEST_P(ProgramTextTest, TellsTheFailureBehindACallWithoutRecords) {
    Do(u"drop procedure if exists two; create procedure two() begin select 1 as a; select 2 as b; end");
    const Outcome failed = connection_.Call(
        connection::kExecute, {Text(u"call two(); insert into nowhere values (1)"), Omitted(), Number(129)});
    EXPECT_EQ(failed.Error(), 0x80040E37u) << failed;
    EXPECT_EQ(AskFor(u"select 7"), "7");
}

TEST_P(ProgramTextTest, RefusesTooFewParametersBeforeAnythingIsDone) {
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, connection_.AsValue());
    made.Put(command::kCommandText, Text(u"insert into steps values (?); insert into steps values (?)"));
    const Object declared =
        made.Call(command::kCreateParameter, {Text(u""), Number(3), Number(1), Number(0), Number(11)}).Result();
    ASSERT_TRUE(made.Get(command::kParameters).Result().Call(parameter::kAppend, {declared.AsValue()}).Ok());
    EXPECT_EQ(made.Call(command::kExecute).Error(), 0x80040E10u);
    EXPECT_EQ(Steps(), "0");
}

TEST_P(CancelledTextTest, EndsWithTheStatementThatIsCancelled) {
    std::thread canceller([&] {
        while (AskElsewhere(u"select count(*) from information_schema.processlist where info like 'do sleep%'") != "1")
            std::this_thread::yield();
        connection_.Call(connection::kCancel);
    });
    const Outcome cancelled = Run(u"set @q = 1; do sleep(20); insert into steps values (1)");
    canceller.join();
    EXPECT_FALSE(cancelled.Ok());
    EXPECT_EQ(Steps(), "0");
}

TEST_P(CancelledTextTest, EndsWhenItIsLeftWhereOneStepFollowsTheOther) {
    Do(u"drop procedure if exists slow; create procedure slow() begin select 1 as a; select sleep(0.12); "
       u"select sleep(2.1); select sleep(4); insert into steps values (1); end");
    Object rows = Run(u"call slow()").Result();
    ASSERT_TRUE(rows);
    rows = Object();
    connection_.Put(connection::kCommandTimeout, Number(2));
    EXPECT_EQ(AskFor(u"select 7"), "7");
    EXPECT_EQ(Steps(), "0");
}

TEST_P(CancelledTextTest, EndsWithAReaderThatIsCancelledWhereOneStepFollowsTheOther) {
    Do(u"drop procedure if exists slow; create procedure slow() begin select 1 as a; select sleep(0.5); "
       u"select sleep(4); insert into steps values (1); end");
    const Object rows = OpenRows(connection_, u"call slow()", 1);
    std::thread canceller([&] {
        usleep(450'000);  // shortly before the step ends; it is to be ended anywhere
        rows.Call(recordset::kCancel);
    });
    const Outcome next = rows.Call(recordset::kNextRecordset);
    canceller.join();
    ExpectEnded(next);
}

TEST_P(CancelledTextTest, EndsWhileResultsThatNobodyWantsAreSteppedOver) {
    constexpr LONG kTextWithoutRecords = 129;
    Do(u"drop procedure if exists slow; create procedure slow() begin select 1 as a; select sleep(5) as b; "
       u"insert into steps values (1); end");
    std::thread canceller = CancelAsleep(connection_, connection::kCancel);
    const Outcome cancelled =
        connection_.Call(connection::kExecute, {Text(u"call slow()"), Omitted(), Number(kTextWithoutRecords)});
    canceller.join();
    ExpectEnded(cancelled);
}

TEST_P(CancelledTextTest, EndsWhileACommandWaitsForItsOutputs) {
    Do(u"drop procedure if exists slowly; create procedure slowly(out x int) begin select 1 as a; "
       u"select sleep(5) as b; insert into steps values (1); set x = 5; end");
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, connection_.AsValue());
    made.Put(command::kCommandText, Text(u"{call slowly(?)}"));
    const Object declared = made.Call(command::kCreateParameter, {Text(u""), Number(3), Number(2), Number(0)}).Result();
    ASSERT_TRUE(made.Get(command::kParameters).Result().Call(parameter::kAppend, {declared.AsValue()}).Ok());
    std::thread canceller = CancelAsleep(made, command::kCancel);
    const Outcome cancelled = made.Call(command::kExecute);
    canceller.join();
    ExpectEnded(cancelled);
}

TEST_P(CancelledTextTest, DoesNotWaitForTheProceduresOfOthers) {
    constexpr int kOthers = 8;  // as many as are read at a time
    Do(u"drop procedure if exists slow; create procedure slow(number int) begin select 1 as a; select sleep(5) as b; "
       u"insert into steps values (number); end");
    std::vector<Object> connections;
    std::vector<Object> recordsets;
    const auto call = [&](int number) {
        connections.push_back(Connect());
        const std::u16string text = u"call slow(" + ToUtf16(std::to_string(number)) + u")";
        recordsets.push_back(connections.back().Call(connection::kExecute, {Text(text)}).Result());
        return bool(recordsets.back());
    };
    for (int i = 0; i < kOthers; ++i)
        ASSERT_TRUE(call(1));
    ASSERT_TRUE(call(2));
    ASSERT_TRUE(call(3));
    recordsets.back() = Object();  // left: ended at the server
    EXPECT_EQ(Ask(connections.back(), u"select 7"), "7");

    // The next statement keeps to its own limit, and can be cancelled.
    const Object& waiting = connections[kOthers];
    std::thread canceller([&] {
        usleep(500'000);
        waiting.Call(connection::kCancel);
    });
    const Outcome cancelled = waiting.Call(connection::kExecute, {Text(u"select 7")});
    canceller.join();
    EXPECT_EQ(cancelled.Error(), 0x80040E4Eu) << cancelled;
    recordsets.clear();
    EXPECT_EQ(Steps(), "0");
}

TEST_P(ProgramTextTest, BearsBeingCancelledWhileItsResultsArrive) {
    for (int round = 0; round < 200; ++round) {
        const Object rows = OpenRows(connection_, u"select seq from seq_1_to_600; select 2", 1);
        std::thread canceller([&] { rows.Call(recordset::kCancel); });
        rows.Call(recordset::kMoveLast);
        canceller.join();
        rows.Call(recordset::kClose);
    }
    EXPECT_EQ(AskFor(u"select 7"), "7");
}

INSTANTIATE_TEST_SUITE_P(Servers, ProgramTextTest, ::testing::Values(SystemKind::MariaDb), SystemName);
INSTANTIATE_TEST_SUITE_P(Servers, CancelledTextTest, ::testing::Values(SystemKind::MariaDb), SystemName);

}  // namespace
}  // namespace tk::ado::test
