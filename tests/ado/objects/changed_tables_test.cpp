// Tables of a file database that another session, or another program, has changed: seen as they are now.
#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <thread>

#include "ado/odbc/physical_connection.h"
#include "database_test.h"

namespace tk::ado::test {
namespace {

/// Another program's connection: no session of this one hears of what it does.
class Outsider {
public:
    explicit Outsider(const std::u16string& text) : connection_({.odbcString = ToUtf8(text)}) {}

    void Do(const char* sql) {
        EXPECT_TRUE(connection_.RunText(sql)) << sql;
        usleep(20000);  // what happened some milliseconds ago is known to have happened
    }

private:
    PhysicalConnection connection_;
};

class ChangedTablesTest : public DatabaseTest {
protected:
    void SetUp() override {
        DatabaseTest::SetUp();
        connection_ = Connect();
        other_ = Connect();
        Execute(connection_, u"create table goods (id integer, price double)");
        Execute(connection_, u"insert into goods values (1, 2.5)");
    }

    /// Other columns under the same name.
    static void Change(const Object& on) {
        Execute(on, u"drop table goods");
        Execute(on, u"create table goods (code text, name text, price double)");
        Execute(on, u"insert into goods values ('A', 'tea', 9.75)");
    }

    /// The names of the columns, and the first row by these names.
    static std::string Show(const Object& rows) {
        std::string text;
        const Object fields = rows.Get(recordset::kFields).Result();
        const LONG count = fields.Get(collection::kCount).Long();
        for (LONG i = 0; i < count; ++i) {
            const std::string name = fields.Get(collection::kItem, {Number(i)}).Result().Get(field::kName).Utf8();
            text += (i == 0 ? "" : ",") + name + "=" + ValueOf(rows, ToUtf16(name));
        }
        return text;
    }
    /// On the session's own connection, and in the way of results that may be large.
    static std::string Look(const Object& on) {
        const std::string one = Show(OpenRows(on, u"select * from goods where 1 = 1", 1));
        const std::string many = Show(OpenRows(on, u"select * from goods", 1));
        EXPECT_EQ(one, many);
        return one;
    }

    /// A recordset that connects by itself.
    std::string LookByText() const {
        const Object rows = Object::Create(kRecordsetClass);
        const Outcome opened =
            rows.Call(recordset::kOpen, {Text(u"goods"), Text(ConnectionText()), Number(3), Number(3), Number(2)});
        EXPECT_TRUE(opened.Ok()) << opened;
        return Show(rows);
    }

    static constexpr const char* kBefore = "id=1,price=2.5";
    static constexpr const char* kAfter = "code=A,name=tea,price=9.75";
    Object connection_;
    Object other_;
};

TEST_F(ChangedTablesTest, AreSeenByAnotherSession) {
    EXPECT_EQ(Look(other_), kBefore);
    Change(connection_);
    EXPECT_EQ(Look(other_), kAfter);
    EXPECT_EQ(Look(connection_), kAfter);
}

TEST_F(ChangedTablesTest, AreSeenOnAConnectionThatWasKept) {
    EXPECT_EQ(LookByText(), kBefore);
    Change(connection_);
    EXPECT_EQ(LookByText(), kAfter);
}

TEST_F(ChangedTablesTest, AreSeenByARequery) {
    const Object rows = OpenRows(other_, u"select * from goods");
    EXPECT_EQ(Show(rows), kBefore);
    Change(connection_);
    const Outcome again = rows.Call(recordset::kRequery);
    EXPECT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Show(rows), kAfter);
}

TEST_F(ChangedTablesTest, AreSeenAfterTheTransactionThatChangedThem) {
    for (const DISPID end : {connection::kRollbackTrans, connection::kCommitTrans}) {
        SCOPED_TRACE(end);
        EXPECT_EQ(Look(other_), kBefore);
        ASSERT_TRUE(connection_.Call(connection::kBeginTrans).Ok());
        Change(connection_);
        EXPECT_EQ(Look(connection_), kAfter);
        EXPECT_EQ(Look(other_), kBefore);
        const Outcome ended = connection_.Call(end);
        ASSERT_TRUE(ended.Ok()) << ended;
        const char* const now = end == connection::kCommitTrans ? kAfter : kBefore;
        EXPECT_EQ(Look(other_), now);
        EXPECT_EQ(Look(connection_), now);
    }
}

TEST_F(ChangedTablesTest, AreSeenAfterTheTextThatEndsATransaction) {
    EXPECT_EQ(Look(other_), kBefore);
    Execute(connection_, u"begin");
    Change(connection_);
    EXPECT_EQ(Look(other_), kBefore);
    Execute(connection_, u"commit");
    EXPECT_EQ(Look(other_), kAfter);
}

// Looking for changes would take a lock of its own.
TEST_F(ChangedTablesTest, AreNotLookedForInATransaction) {
    usleep(20000);
    ASSERT_TRUE(other_.Call(connection::kBeginTrans).Ok());
    EXPECT_EQ(Ask(other_, u"select 1 as x"), "1");
    Execute(connection_, u"insert into goods values (2, 3.5)");
    const Outcome written = other_.Call(connection::kExecute, {Text(u"insert into goods values (3, 4.5)")});
    EXPECT_TRUE(written.Ok()) << written;
    ASSERT_TRUE(other_.Call(connection::kCommitTrans).Ok());
    EXPECT_EQ(Ask(connection_, u"select count(*) from goods"), "3");
}

TEST_F(ChangedTablesTest, CanBeWaitedForNoLongerThanUntilACancellation) {
    EXPECT_EQ(Look(other_), kBefore);
    Outsider outsider(ConnectionText());
    outsider.Do("begin exclusive");
    other_.Put(connection::kCommandTimeout, Number(10));
    std::atomic<bool> isAsked = false;
    std::thread cancelling([&] {
        while (!isAsked)
            usleep(1000);
        usleep(50000);  // once, while the look waits for the lock
        other_.Call(connection::kCancel);
    });
    isAsked = true;
    const Outcome cancelled = other_.Call(connection::kExecute, {Text(u"select * from goods where 1 = 1")});
    cancelling.join();
    EXPECT_EQ(cancelled.Error(), 0x80040E4Eu) << cancelled;
    outsider.Do("commit");
    EXPECT_EQ(Look(other_), kBefore);
}

TEST_F(ChangedTablesTest, AreSeenByAPreparedCommand) {
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, other_.AsValue());
    made.Put(command::kCommandText, Text(u"select * from goods"));
    made.Put(command::kPrepared, Value::Boolean(true));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(Show(made.Call(command::kExecute).Result()), kBefore);
    Change(connection_);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(Show(made.Call(command::kExecute).Result()), kAfter);
    // By the session itself as well.
    Execute(other_, u"alter table goods add column stock integer default 7");
    EXPECT_EQ(Show(made.Call(command::kExecute).Result()), std::string(kAfter) + ",stock=7");
}

TEST_F(ChangedTablesTest, AreSeenByAPreparedCommandOfWhatWasUndone) {
    const Object made = Object::Create(kCommandClass);
    made.PutRef(command::kActiveConnection, other_.AsValue());
    made.Put(command::kCommandText, Text(u"select * from goods"));
    made.Put(command::kPrepared, Value::Boolean(true));
    for (const bool isText : {false, true}) {
        SCOPED_TRACE(isText);
        isText ? Execute(other_, u"begin") : static_cast<void>(other_.Call(connection::kBeginTrans));
        Execute(other_, u"alter table goods add column undone integer default 7");
        EXPECT_TRUE(Show(made.Call(command::kExecute).Result()).ends_with(",undone=7"));
        isText ? Execute(other_, u"rollback") : static_cast<void>(other_.Call(connection::kRollbackTrans));
        // Counted as the change that was undone.
        Execute(connection_, isText ? u"alter table goods add column n integer default 8"
                                    : u"alter table goods add column m integer default 8");
        const std::string now = Show(made.Call(command::kExecute).Result());
        EXPECT_TRUE(now.ends_with(isText ? ",m=8,n=8" : ",m=8")) << now;
    }
}

TEST_F(ChangedTablesTest, AreSeenInLargeResults) {
    const auto fill = [&](const char16_t* row) {
        std::u16string text = u"insert into goods select ";
        text += row;
        text +=
            u" from (with recursive up(n) as (select 1 union all select n + 1 from up where n < 20000) select n "
            u"from up)";
        Execute(connection_, text);
    };
    fill(u"1, 2.5");
    for (int i = 0; i < 2; ++i) {
        const Object rows = OpenRows(other_, u"select * from goods", 1);
        EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 20001);
        EXPECT_EQ(Show(rows), kBefore);
    }
    Change(connection_);
    fill(u"'A', 'tea', 9.75");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(Look(other_), kAfter);
}

TEST_F(ChangedTablesTest, OfAnotherProgramAreSeenSomeMillisecondsLater) {
    EXPECT_EQ(Look(other_), kBefore);
    Outsider outsider(ConnectionText());
    outsider.Do("alter table goods add column stock integer default 7");
    EXPECT_EQ(Look(other_), std::string(kBefore) + ",stock=7");
    const Object rows = OpenRows(connection_, u"select * from goods");
    outsider.Do("alter table goods rename column stock to held");
    const Outcome again = rows.Call(recordset::kRequery);
    EXPECT_TRUE(again.Ok()) << again;
    EXPECT_EQ(Show(rows), std::string(kBefore) + ",held=7");
    EXPECT_EQ(LookByText(), std::string(kBefore) + ",held=7");
}

TEST_F(ChangedTablesTest, AreUpdatedByTheirNewColumns) {
    EXPECT_EQ(Look(other_), kBefore);
    Execute(connection_, u"drop table goods");
    Execute(connection_, u"create table goods (price double, id integer primary key)");
    Execute(connection_, u"insert into goods values (3, 8)");
    const Object rows = OpenRows(other_, u"select * from goods");
    EXPECT_EQ(Show(rows), "price=3,id=8");
    PutValue(rows, u"price", Number(4));
    const Outcome updated = rows.Call(recordset::kUpdate);
    EXPECT_TRUE(updated.Ok()) << updated;
    EXPECT_EQ(Look(connection_), "price=4,id=8");
}

}  // namespace
}  // namespace tk::ado::test
