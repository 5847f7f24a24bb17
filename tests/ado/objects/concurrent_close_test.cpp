// Objects that are closed by two threads, or while another thread still runs something on them.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "database_test.h"

namespace tk::ado::test {
namespace {

using ConcurrentCloseTest = DatabaseTest;

/// Calls a member of an object from two threads at the same moment; the error numbers, the smaller one first.
std::pair<unsigned, unsigned> CallTwice(const Object& object, DISPID member) {
    std::atomic<int> ready{0};
    unsigned errors[2] = {99, 99};
    const auto run = [&](unsigned& error) {
        ready.fetch_add(1);
        while (ready.load() < 2) {}
        error = object.Call(member).Error();
    };
    std::thread other([&] { run(errors[1]); });
    run(errors[0]);
    other.join();
    return std::minmax(errors[0], errors[1]);
}

TEST_F(ConcurrentCloseTest, OfTwoThreadsOneClosesTheRecordset) {
    const Object opened = Connect();
    CreateGoods(opened);
    const Object rows = Object::Create(kRecordsetClass);
    rows.Put(recordset::kCursorLocation, Number(3));
    for (int round = 0; round < 300; ++round) {
        ASSERT_TRUE(rows.Call(recordset::kOpen,
                              {Text(u"select * from goods"), opened.AsValue(), Number(3), Number(1), Number(1)})
                        .Ok());
        const auto [first, second] = CallTwice(rows, recordset::kClose);
        ASSERT_EQ(first, 0u);
        ASSERT_EQ(second, 3704u);
        ASSERT_EQ(rows.Get(recordset::kState).Long(), 0);
    }
}

TEST_F(ConcurrentCloseTest, OfTwoThreadsOneClosesTheConnection) {
    const Object opened = Connect();
    CreateGoods(opened);
    for (int round = 0; round < 100; ++round) {
        const Object rows = OpenRows(opened, u"select * from goods", 1);
        const auto [first, second] = CallTwice(opened, connection::kClose);
        ASSERT_EQ(first, 0u);
        ASSERT_EQ(second, 3704u);
        ASSERT_EQ(opened.Get(connection::kState).Long(), 0);
        ASSERT_EQ(rows.Get(recordset::kState).Long(), 0);
        ASSERT_TRUE(opened.Call(connection::kOpen).Ok());
    }
}

TEST_F(ConcurrentCloseTest, OfTwoThreadsOneOpensTheConnection) {
    const Object closed = Object::Create(kConnectionClass);
    closed.Put(connection::kConnectionString, Text(ConnectionText()));
    for (int round = 0; round < 100; ++round) {
        const auto [first, second] = CallTwice(closed, connection::kOpen);
        ASSERT_EQ(first, 0u);
        ASSERT_EQ(second, 3705u);
        ASSERT_EQ(closed.Get(connection::kState).Long(), 1);
        ASSERT_TRUE(closed.Call(connection::kClose).Ok());
    }
}

TEST_F(ConcurrentCloseTest, AFetchThatIsCancelledAtAnyMomentEndsAsCancelled) {
    const Object opened = Connect();
    Execute(opened, u"create table line (id integer primary key, words text)");
    Execute(opened,
            u"insert into line with recursive r(n) as (select 1 union all select n + 1 from r where n < 400) "
            u"select n, 'words ' || n from r");
    for (int round = 0; round < 80; ++round) {
        SCOPED_TRACE(round);
        const Object rows = Object::Create(kRecordsetClass);
        rows.Put(recordset::kCursorLocation, Number(3));
        std::thread canceller([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(200 + round * 371 % 9000));
            opened.Call(connection::kCancel);
            rows.Call(recordset::kCancel);
        });
        Outcome outcome = rows.Call(recordset::kOpen, {Text(u"select a.words, b.words from line a join line b"),
                                                       opened.AsValue(), Number(3), Number(1), Number(1)});
        if (outcome.Ok()) outcome = rows.Get(recordset::kRecordCount);
        canceller.join();
        if (!outcome.Ok()) {
            EXPECT_EQ(outcome.Error(), 0x80040E4Eu) << outcome;
        }
        rows.Call(recordset::kClose);
    }
    EXPECT_EQ(Ask(opened, u"select count(*) from line"), "400");
}

TEST_F(ConcurrentCloseTest, AStatementThatStillRunsDoesNotOpenTheConnectionAgain) {
    const struct {
        const char* label;
        const char16_t* sql;
        LONG options;
        bool hasRows;
    } kRows[] = {{"insert", u"insert into goods (name) values ('pear')", 129, false},
                 {"select", u"select * from goods", 1, true}};
    const Object holder = Connect();
    CreateGoods(holder);
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        // Nothing can be done to the file until the holder lets go of it.
        Execute(holder, u"begin exclusive");
        const Object opened = Connect(u";Timeout=60000");
        Outcome executed;
        std::thread other([&] {
            executed = opened.Call(connection::kExecute, {Text(row.sql), Omitted(), Number(row.options)});
        });
        const DWORD start = GetTickCount();
        while (opened.Get(connection::kState).Long() != 5 && GetTickCount() - start < 20'000)
            std::this_thread::yield();
        EXPECT_EQ(opened.Get(connection::kState).Long(), 5);
        const Outcome closed = opened.Call(connection::kClose);
        EXPECT_TRUE(closed.Ok()) << closed;
        EXPECT_EQ(opened.Get(connection::kState).Long(), 0);
        Execute(holder, u"commit");
        other.join();
        EXPECT_TRUE(executed.Ok()) << executed;
        EXPECT_EQ(opened.Get(connection::kState).Long(), 0);
        if (row.hasRows) {
            ASSERT_TRUE(executed.Result());
            EXPECT_EQ(executed.Result().Get(recordset::kState).Long(), 0);
        }
        const Outcome again = opened.Call(connection::kOpen);
        EXPECT_TRUE(again.Ok()) << again;
        EXPECT_EQ(Ask(opened, u"select count(*) from goods"), "4");
        EXPECT_EQ(opened.Get(connection::kState).Long(), 1);
    }
}

}  // namespace
}  // namespace tk::ado::test
