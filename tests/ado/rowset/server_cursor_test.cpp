// Large results of PostgreSQL, which come by a cursor of the server, some thousand rows at a time.
#include <unistd.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "ado/odbc/physical_connection.h"
#include "ado/rowset/postgres_test.h"

namespace tk::ado {
namespace {

using test::Do;
using test::Query;
using test::Show;

constexpr int kRows = 20000;
constexpr std::size_t kFirstPart = 256;
constexpr std::size_t kPart = 1024;

class ServerCursor : public test::Postgres {
protected:
    void SetUp() override {
        Postgres::SetUp();
        if (IsSkipped()) return;
        session_ = Open();
        Do(*session_, "drop table if exists big cascade");
        Do(*session_, "create table big as select i, 'n' || i as name from generate_series(1, 20000) i");
    }
    void TearDown() override {
        session_.reset();
        Postgres::TearDown();
    }

    std::string Ask(const std::string& sql) const { return Show(*Query(session_, sql), 0, 0); }

    std::shared_ptr<Session> session_;
};

TEST_F(ServerCursor, ReadsALargeResultAndOnlyThat) {
    const std::string name = "(select name from pg_cursors)";
    for (const bool isInTransaction : {false, true}) {
        SCOPED_TRACE(isInTransaction);
        if (isInTransaction) session_->Begin(0x1000);
        const auto rows = Query(session_, "select i, " + name + " from big order by i");
        ASSERT_EQ(rows->CountRows(), std::size_t{kRows});
        for (std::size_t row = 0; row < kRows; ++row) {
            ASSERT_EQ(rows->At(row, 0).integer, static_cast<std::int64_t>(row) + 1);
            ASSERT_EQ(rows->At(row, 1).text, "tk_rows");
        }
        // It is gone when the rows are there, and small results are read at once.
        EXPECT_EQ(Ask("select count(*) from pg_cursors"), "I4 0");
        EXPECT_EQ(Ask("select " + name + " from big where i = 1"), "NULL");
        if (isInTransaction) session_->Commit();
    }
}

TEST_F(ServerCursor, EndsWhereTheRowsEnd) {
    std::vector<std::size_t> counts = {0, 1};
    for (const std::size_t parts : {0, 1, 2, 3, 6, 7, 14, 15}) {  // they come two, four, eight at a time
        for (const int more : {-1, 0, 1})
            counts.push_back(kFirstPart + parts * kPart + more);
    }
    for (const std::size_t count : counts) {
        SCOPED_TRACE(count);
        const std::string table = "first_" + std::to_string(count);
        Do(*session_, "drop table if exists " + table);
        Do(*session_, "create table " + table + " as select * from big where i <= " + std::to_string(count));
        const auto rows = Query(session_, "select * from " + table);
        EXPECT_EQ(rows->CountRows(), count);
        EXPECT_EQ(rows->Columns().size(), 2u);
        if (count > 0) {
            EXPECT_EQ(Show(*rows, count - 1, 1), "BSTR n" + std::to_string(count));
        }
    }
}

TEST_F(ServerCursor, KeepsToAMostOfRows) {
    ExecuteOptions options;
    options.maxRows = 5000;
    EXPECT_EQ(RowSet::Fetch(session_->Execute("select * from big", options), session_, {})->CountRows(), 5000u);
    EXPECT_EQ(Query(session_, "select * from big")->CountRows(), std::size_t{kRows});
}

TEST_F(ServerCursor, TakesParameters) {
    test::Value least;
    least.vt = VT_BSTR;
    least.bstrVal = SysAllocString(u"9");
    Parameter parameter;
    parameter.value = &least;
    for (int time = 0; time < 2; ++time) {  // the second time the text is known to give many rows
        auto statement =
            session_->Execute("select i, (select name from pg_cursors) from big where name < 'n' || ? order by i",
                              std::span<const Parameter>(&parameter, 1), {});
        const auto rows = RowSet::Fetch(std::move(statement), session_, {});
        EXPECT_EQ(rows->CountRows(), 18889u);
        EXPECT_EQ(Show(*rows, 18888, 1), time == 0 ? "BSTR " : "BSTR tk_rows");
    }
}

TEST_F(ServerCursor, TellsAFailureBehindManyRows) {
    std::u16string ofStatement;
    std::u16string text;
    const auto read = [&] { Query(session_, "select 100 / (i - 9000) from big")->CountRows(); };
    EXPECT_EQ(Failure([&] { Query(session_, "select 100 / (i - 9000) from big where true"); }, &ofStatement),
              0x80004005u);
    EXPECT_EQ(Failure(read, &text), 0x80004005u);
    EXPECT_EQ(text, ofStatement);
    EXPECT_NE(text.find(u"division by zero"), std::u16string::npos);
    EXPECT_EQ(Ask("select count(*) from pg_cursors"), "I4 0");
    session_->Begin(0x1000);
    EXPECT_EQ(Do(*session_, "delete from big where i > 15000"), 5000);
    EXPECT_EQ(Failure(read), 0x80004005u);
    EXPECT_EQ(Do(*session_, "delete from big where i > 14000"), 1000);  // the transaction goes on
    session_->Commit();
    EXPECT_EQ(Ask("select count(*) from big"), "I4 14000");
}

TEST_F(ServerCursor, TellsWhatIsWrongAsTheStatementItselfWould) {
    std::u16string text;
    EXPECT_EQ(Failure([&] { Query(session_, "select * from no_such_table"); }, &text), 0x80040E37u);
    EXPECT_NE(text.find(u"relation \"no_such_table\" does not exist"), std::u16string::npos);
    session_->Begin(0x1000);
    EXPECT_EQ(Do(*session_, "delete from big where i = 1"), 1);
    EXPECT_EQ(Failure([&] { Query(session_, "select * from no_such_table"); }), 0x80040E37u);
    session_->Commit();
    EXPECT_EQ(Ask("select count(*) from big"), "I4 19999");
}

TEST_F(ServerCursor, LeavesATransactionAsItWasWhateverIsWrong) {
    // Not read by a cursor, not to be sent, not a statement.
    const struct {
        const char* sql;
        unsigned failure;
    } kTexts[] = {
        {"explain select * from big", S_OK},
        {"select no_such_column from big", 0x80040E14u},
        {"select i from big group by name", 0x80040E14u},
    };
    for (const auto& text : kTexts) {
        SCOPED_TRACE(text.sql);
        session_->Begin(0x1000);
        EXPECT_EQ(Do(*session_, "delete from big where i = 1"), 1);
        std::u16string said;
        EXPECT_EQ(Failure([&] { Query(session_, text.sql)->CountRows(); }, &said), text.failure);
        if (text.failure != S_OK) {
            EXPECT_TRUE(said.find(u"no_such_column") != std::u16string::npos ||
                        said.find(u"GROUP BY") != std::u16string::npos);
        }
        EXPECT_EQ(Do(*session_, "insert into big values (1, 'n1')"), 1);
        EXPECT_EQ(Query(session_, "select * from big")->CountRows(), std::size_t{kRows});
        session_->Commit();
        EXPECT_EQ(Failure([&] { Query(session_, text.sql)->CountRows(); }), text.failure);
        EXPECT_EQ(Ask("select count(*) from big"), "I4 20000");
        EXPECT_FALSE(session_->Physical().IsBroken());
    }
    test::Value object;
    object.vt = VT_DISPATCH;
    object.pdispVal = nullptr;
    Parameter parameter;
    parameter.value = &object;
    session_->Begin(0x1000);
    EXPECT_EQ(Do(*session_, "delete from big where i = 1"), 1);
    EXPECT_NE(Failure([&] {
                  session_->Execute("select i, cast(? as integer) from big", std::span<const Parameter>(&parameter, 1),
                                    {});
              }),
              S_OK);
    session_->Commit();
    EXPECT_EQ(Ask("select count(*) from big"), "I4 19999");
}

TEST_F(ServerCursor, EndsNoTransactionThatATextHasBegun) {
    Do(*session_, "begin");
    Do(*session_, "delete from big where i <= 100");
    EXPECT_EQ(Query(session_, "select * from big")->CountRows(), std::size_t{kRows - 100});
    Do(*session_, "rollback");
    EXPECT_EQ(Ask("select count(*) from big"), "I4 20000");
}

TEST_F(ServerCursor, LeavesToTheStatementWhatHasSeveralInIt) {
    // The second hides behind a quote that no other system knows.
    const std::string sql = R"(select name, E'\'' from big; delete from big where i > 100 -- ')";
    EXPECT_EQ(Query(session_, sql)->CountRows(), std::size_t{kRows});
    EXPECT_EQ(Ask("select count(*) from big"), "I4 100");
}

TEST_F(ServerCursor, RunsAQueryThatFailsOnce) {
    Do(*session_, "drop sequence if exists taken");
    Do(*session_, "create sequence taken");
    EXPECT_EQ(Failure([&] { Query(session_, "select nextval('taken') / (i - 10) from big")->CountRows(); }),
              0x80004005u);
    EXPECT_EQ(Ask("select last_value from taken where true"), "DECIMAL 10");
}

TEST_F(ServerCursor, ReadsWideRowsInSmallerParts) {
    const auto rows = Query(session_, "select i, repeat('x', 30000) from big");
    EXPECT_EQ(rows->CountRows(), std::size_t{kRows});
    EXPECT_EQ(rows->At(kRows - 1, 1).text.size(), 30000u);
}

/// The rows that each fetch of a text asks for.
std::vector<int> FetchesIn(const std::string& text) {
    const std::string word = "FETCH FORWARD ";
    std::vector<int> rows;
    for (auto at = text.find(word); at != text.npos; at = text.find(word, at + 1))
        rows.push_back(std::stoi(text.substr(at + word.size())));
    return rows;
}

TEST_F(ServerCursor, AsksForMoreRowsAtATimeTheMoreThereAre) {
    const auto rows = Query(session_, "select current_query() from big");
    ASSERT_EQ(rows->CountRows(), std::size_t{kRows});
    std::size_t parts = 1;
    std::size_t mostParts = 0;
    EXPECT_EQ(FetchesIn(Show(*rows, 0, 0)), std::vector<int>{256});
    for (std::size_t row = 256; row < kRows; row += parts * 1024) {
        const std::vector<int> fetches = FetchesIn(Show(*rows, row, 0));
        ASSERT_FALSE(fetches.empty());
        EXPECT_LE(fetches.size(), std::min<std::size_t>(parts * 2, 8));
        EXPECT_EQ(fetches, std::vector<int>(fetches.size(), 1024));
        parts = fetches.size();
        mostParts = std::max(mostParts, parts);
    }
    EXPECT_GT(mostParts, 1u);  // how many they get to be depends on the time that the first ones take
}

TEST_F(ServerCursor, AsksForFewerRowsWhenTheyAreWide) {
    Do(*session_, "drop table if exists wide");
    Do(*session_, "create table wide as select i, repeat('x', 20000) as text from generate_series(1, 1000) i");
    const auto rows = Query(session_, "select i, text, current_query() from wide");
    ASSERT_EQ(rows->CountRows(), 1000u);
    EXPECT_EQ(FetchesIn(Show(*rows, 0, 2)), std::vector<int>{256});
    for (std::size_t row = 256; row < 1000; row += 20) {
        for (const int fetched : FetchesIn(Show(*rows, row, 2)))
            ASSERT_LE(fetched, 512 * 1024 / 20000);
    }
}

TEST_F(ServerCursor, AsksForFewerRowsOnceTheyGetWide) {
    const auto rows = Query(session_,
                            "select case when i between 3000 and 16000 then repeat('x', 2000) end, "
                            "current_query() from big");
    ASSERT_EQ(rows->CountRows(), std::size_t{kRows});
    EXPECT_EQ(FetchesIn(Show(*rows, 2000, 1)).front(), 1024);
    EXPECT_LE(FetchesIn(Show(*rows, 16000, 1)).front(), 512 * 1024 / 2000);
    EXPECT_EQ(rows->At(15999, 0).text.size(), 2000u);
    EXPECT_EQ(rows->At(16000, 0).text.data(), nullptr);
}

TEST_F(ServerCursor, AsksForFewerRowsAtATimeWhenTheyComeSlowly) {
    // One row in the middle takes half a second.
    const auto rows = Query(session_, "select current_query(), pg_sleep(case when i = 10000 then 0.5 end) from big");
    ASSERT_EQ(rows->CountRows(), std::size_t{kRows});
    std::size_t row = 256;
    std::size_t fetches = 0;
    while (row <= 9999) {
        fetches = FetchesIn(Show(*rows, row, 0)).size();
        ASSERT_GT(fetches, 0u);
        row += fetches * 1024;
    }
    EXPECT_GT(fetches, 1u);
    EXPECT_EQ(FetchesIn(Show(*rows, row, 0)).size(), std::max<std::size_t>(fetches / 2, 1));
}

TEST_F(ServerCursor, DoesAllOfTheWorkWhereNobodyWantsTheRows) {
    Do(*session_, "drop sequence if exists taken");
    Do(*session_, "create sequence taken");
    ExecuteOptions options;
    options.wantsRows = false;
    EXPECT_TRUE(session_->Execute("select nextval('taken') from big", options).HasRows());
    EXPECT_EQ(Ask("select last_value from taken where true"), "DECIMAL 20000");
}

TEST_F(ServerCursor, LimitsTheTimeOfEachPart) {
    ExecuteOptions options;
    options.timeoutSeconds = 3;
    const std::string slow = "select case when i % 5000 = 0 then pg_sleep(1.2)::text end from big where i <= ";
    // Three parts of 1.2 seconds each.
    Do(*session_, "create view slow as " + slow + "15000");
    EXPECT_EQ(RowSet::Fetch(session_->Execute("select * from slow", options), session_, {})->CountRows(), 15000u);
    options.timeoutSeconds = 1;
    EXPECT_EQ(
        Failure([&] { RowSet::Fetch(session_->Execute("select * from slow", options), session_, {})->CountRows(); }),
        0x80040E31u);
    EXPECT_EQ(Ask("select count(*) from big"), "I4 20000");
}

TEST_F(ServerCursor, LosesItsConnectionAtAnyMoment) {
    const auto other = Open();
    const auto endOthers = [&] {
        Do(*other,
           "select pg_terminate_backend(pid) from pg_stat_activity where pid <> pg_backend_pid() and backend_type = "
           "'client backend'");
    };
    int lost = 0;
    for (int time = 0; time < 60; ++time) {
        const auto rows = Query(session_, "select i, repeat('x', 50) from generate_series(1, 100000) i", {true, 0});
        usleep(static_cast<useconds_t>(time % 30) * 800);
        endOthers();
        if (Failure([&] { rows->CountRows(); }) != S_OK) ++lost;
        int more = 0;
        while (Failure([&] { Query(session_, "select 1 where true"); }) != S_OK)
            ASSERT_LT(++more, 10);
    }
    EXPECT_GT(lost, 0);
    EXPECT_EQ(Ask("select count(*) from big"), "I4 20000");
}

}  // namespace
}  // namespace tk::ado
