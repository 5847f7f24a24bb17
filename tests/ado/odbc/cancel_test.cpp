#include <gtest/gtest.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <utility>

#include "ado/odbc/watchdog.h"
#include "ado/support/sqlite_file.h"

namespace tk::ado {
namespace {

using test::Query;
using test::SqliteFile;

double Seconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

constexpr const char* kEndless = "with recursive s(i) as (select 1 union all select i+1 from s) select count(*) from s";

TEST(SessionCancel, EndsTheStatementOfAnotherThread) {
    const SqliteFile file;
    const auto session = file.Open();
    std::atomic<bool> ended = false;
    std::thread canceller([&] {
        while (!ended) {
            usleep(20'000);
            session->Cancel();
        }
    });
    const double start = Seconds();
    try {
        Query(session, kEndless);
        ADD_FAILURE() << "ended by itself";
    } catch (const AdoError& error) {
        EXPECT_EQ(static_cast<unsigned>(error.Code()), 0x80040E4Eu);
        EXPECT_EQ(error.Description().substr(0, 4), u"已取消：");
    }
    ended = true;
    canceller.join();
    EXPECT_LT(Seconds() - start, 20);
    EXPECT_EQ(Query(session, "select 1")->CountRows(), 1u);
}

TEST(SessionCancel, DoesNothingWhenNothingRuns) {
    const SqliteFile file;
    const auto session = file.Open();
    session->Cancel();
    EXPECT_EQ(Query(session, "select 1")->CountRows(), 1u);
}

TEST(CommandTimeout, EndsAStatementOfADriverWithoutALimitOfItsOwn) {
    const SqliteFile file;
    const auto session = file.Open();
    const double start = Seconds();
    try {
        ExecuteOptions options;
        options.timeoutSeconds = 1;
        session->Execute(kEndless, options);
        ADD_FAILURE() << "ended by itself";
    } catch (const AdoError& error) {
        EXPECT_EQ(static_cast<unsigned>(error.Code()), 0x80040E31u);
        EXPECT_EQ(error.Description().substr(0, 3), u"超时：");
    }
    EXPECT_GE(Seconds() - start, 0.9);
    EXPECT_LT(Seconds() - start, 20);
    EXPECT_EQ(Query(session, "select 1")->CountRows(), 1u);
}

TEST(CommandTimeout, CountsTheFirstRowsOfADriverThatSteps) {
    const SqliteFile file;
    const auto session = file.Open("StepAPI=1");
    ExecuteOptions options;
    options.timeoutSeconds = 1;
    Statement statement = session->Execute(kEndless, options);
    try {
        RowSet::Fetch(std::move(statement), session, {});
        ADD_FAILURE() << "ended by itself";
    } catch (const AdoError& error) {
        EXPECT_EQ(static_cast<unsigned>(error.Code()), 0x80040E31u);
    }
}

/// Cancels a session again and again until told that the call has ended.
class Canceller {
public:
    explicit Canceller(Session& session)
        : thread_([this, &session] {
              while (!ended_) {
                  usleep(20'000);
                  session.Cancel();
              }
          }) {}
    ~Canceller() {
        ended_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

/// The HRESULT and the text of what the call throws.
template <class Call>
std::pair<unsigned, std::u16string> Failure(Call&& call) {
    try {
        call();
        return {0u, u""};
    } catch (const AdoError& error) {
        return {static_cast<unsigned>(error.Code()), error.Description()};
    }
}

/// Two columns of a table with so many rows that a join of it with itself takes minutes and gives no row.
std::string FillForJoin(Session& session) {
    test::Do(session, "create table big (id integer primary key, v integer)");
    test::Do(session,
             "insert into big with recursive s(i) as (select 1 union all select i+1 from s where i<40000) "
             "select i, i from s");
    return "select a.id, b.id from big a join big b on a.v+0 = b.v+1000000";
}

TEST(SessionCancel, ReachesTheFirstRowsOfADriverThatSteps) {
    const SqliteFile file;
    const auto session = file.Open();
    const std::string join = FillForJoin(*session);
    const Canceller canceller(*session);
    const auto [code, text] = Failure([&] { Query(session, join); });
    EXPECT_EQ(code, 0x80040E4Eu);
    EXPECT_EQ(text.substr(0, 4), u"已取消：");
}

TEST(CommandTimeout, CountsTheRowsThatAreFetchedAhead) {
    const SqliteFile file;
    const auto session = file.Open();
    // The first rows come at once, those behind them never.
    const std::string join = FillForJoin(*session) + " or (a.v < 2 and b.v < 400)";
    ExecuteOptions options;
    options.timeoutSeconds = 2;
    const auto rows = RowSet::Fetch(session->Execute(join, options), session, {});
    const auto [code, text] = Failure([&] { rows->CountRows(); });
    EXPECT_EQ(code, 0x80040E31u);
    EXPECT_EQ(text.substr(0, 3), u"超时：");
    EXPECT_GE(rows->ArrivedRows(), 256u);
}

TEST(SessionCancel, EndsAWaitForRowsThatAreFetchedAhead) {
    const SqliteFile file;
    const auto session = file.Open();
    const std::string join = FillForJoin(*session) + " or (a.v < 2 and b.v < 400)";
    const auto rows = RowSet::Fetch(session->Execute(join, {0, 0, false}), session, {});
    rows->Interrupt();  // nobody waits: the fetch goes on
    EXPECT_FALSE(rows->IsComplete());
    std::atomic<bool> ended = false;
    std::thread canceller([&] {
        while (!ended) {
            usleep(20'000);
            rows->Interrupt();
        }
    });
    const auto [code, text] = Failure([&] { rows->CountRows(); });
    ended = true;
    canceller.join();
    EXPECT_EQ(code, 0x80040E4Eu);
    EXPECT_EQ(text.substr(0, 4), u"已取消：");
    EXPECT_TRUE(rows->HasRow(100));
    EXPECT_EQ(Failure([&] { rows->HasRow(5000); }).first, 0x80040E4Eu);  // not a shorter result: a failed one
}

TEST(SessionCancel, EndsAStatementThatWaitsForAFetch) {
    const SqliteFile file;
    const auto session = file.Open();
    const std::string join = FillForJoin(*session) + " or (a.v < 2 and b.v < 400)";
    const auto rows = RowSet::Fetch(session->Execute(join, {0, 0, false}), session, {});
    {
        const Canceller canceller(*session);
        const auto [code, text] = Failure([&] { test::Do(*session, "insert into big values (999999, 1)"); });
        EXPECT_EQ(code, 0x80040E4Eu);
        EXPECT_EQ(text.substr(0, 4), u"已取消：");
    }
    const auto [code, text] = Failure([&] { session->Execute("insert into big values (999999, 1)", {1, 0, false}); });
    EXPECT_EQ(code, 0x80040E31u);
    EXPECT_EQ(text.substr(0, 3), u"超时：");
    EXPECT_EQ(Failure([&] { session->Begin(0x1000, 1); }).first, 0x80040E31u);
    EXPECT_FALSE(session->InTransaction());
    EXPECT_FALSE(rows->IsComplete());  // the fetch was not harmed
    rows->Cancel();
    EXPECT_EQ(test::Do(*session, "insert into big values (999999, 1)"), 1);
}

/// A writer that holds the lock of the file.
class LockedFile : public testing::Test {
protected:
    LockedFile() {
        test::Do(*holder_, "create table item (id integer)");
        holder_->Begin(0x1000);
        test::Do(*holder_, "insert into item values (1)");
    }
    SqliteFile file_;
    std::shared_ptr<Session> holder_ = file_.Open("Application Name=holder");
};

TEST_F(LockedFile, KeepsAStatementWaitingForTheTimeOfTheString) {
    const auto other = file_.Open("Timeout=700");
    const double start = Seconds();
    const auto [code, text] = Failure([&] { test::Do(*other, "insert into item values (2)"); });
    EXPECT_EQ(code, 0x80040E38u);
    EXPECT_EQ(text.substr(0, 5), u"并发冲突：");
    EXPECT_GE(Seconds() - start, 0.6);
    EXPECT_LT(Seconds() - start, 10);
}

TEST_F(LockedFile, KeepsTheTimeLimitOfAStatementThatWaits) {
    const auto other = file_.Open("Timeout=60000");
    const double start = Seconds();
    const auto [code, text] = Failure([&] {
        other->Execute("insert into item values (2)", ExecuteOptions{1, 0, false});
    });
    EXPECT_EQ(code, 0x80040E31u);
    EXPECT_EQ(text.substr(0, 3), u"超时：");
    EXPECT_LT(Seconds() - start, 20);
    holder_->Rollback();
    EXPECT_EQ(test::Do(*other, "insert into item values (2)"), 1);
}

TEST_F(LockedFile, LetsAStatementThatWaitsBeCancelled) {
    const auto other = file_.Open("Timeout=60000");
    const double start = Seconds();
    {
        const Canceller canceller(*other);
        const auto [code, text] = Failure([&] { other->Execute("insert into item values (2)", {0, 0, false}); });
        EXPECT_EQ(code, 0x80040E4Eu);
        EXPECT_EQ(text.substr(0, 4), u"已取消：");
    }
    EXPECT_LT(Seconds() - start, 20);
    holder_->Rollback();
    EXPECT_EQ(test::Do(*other, "insert into item values (2)"), 1);
}

TEST_F(LockedFile, GoesOnAsSoonAsTheLockIsFree) {
    const auto other = file_.Open("Timeout=60000");
    std::thread writer([&] { EXPECT_EQ(test::Do(*other, "insert into item values (2)"), 1); });
    usleep(400'000);
    holder_->Commit();
    writer.join();
    EXPECT_EQ(test::Show(*Query(other, "select count(*) from item"), 0, 0), "I4 2");
}

TEST_F(LockedFile, KeepsReadersWaitingForAWriterThatLetsNobodyRead) {
    holder_->Rollback();
    test::Do(*holder_, "begin exclusive");
    for (const char* sql : {"select * from item", "select * from item where id > 0"}) {
        SCOPED_TRACE(sql);
        const auto other = file_.Open("Timeout=700");
        const double start = Seconds();
        EXPECT_EQ(Failure([&] { Query(other, sql)->CountRows(); }).first, 0x80040E38u);
        EXPECT_GE(Seconds() - start, 0.6);
        const auto patient = file_.Open("Timeout=60000");
        EXPECT_EQ(Failure([&] {
                      RowSet::Fetch(patient->Execute(sql, ExecuteOptions{1, 0, false}), patient, {})->CountRows();
                  }).first,
                  0x80040E31u);
    }
    const auto reader = file_.Open("Timeout=60000;Application Name=reader");
    std::thread reading([&] { EXPECT_EQ(Query(reader, "select * from item")->CountRows(), 0u); });
    usleep(400'000);
    test::Do(*holder_, "rollback");
    reading.join();
}

class Recorder final : public Expiring {
public:
    Recorder() : Expiring(MayWait::No) {}
    int Expire() noexcept override {
        ++expired;
        return again;
    }
    int again = 0;
    std::atomic<int> expired = 0;
};

TEST(WatchdogGuard, FiresOnceAfterItsTime) {
    Recorder recorder;
    WatchdogGuard guard(1, recorder);
    for (int i = 0; i < 300 && recorder.expired == 0; ++i)
        usleep(10'000);
    EXPECT_EQ(recorder.expired, 1);
    usleep(300'000);
    EXPECT_EQ(recorder.expired, 1);
}

TEST(WatchdogGuard, FiresAgainWhenItIsAskedTo) {
    Recorder recorder;
    recorder.again = 20;
    {
        WatchdogGuard guard(1, recorder);
        for (int i = 0; i < 300 && recorder.expired < 3; ++i)
            usleep(10'000);
    }
    const int expired = recorder.expired;
    EXPECT_GE(expired, 3);
    usleep(300'000);
    EXPECT_EQ(recorder.expired, expired);
}

TEST(WatchdogGuard, NeverFiresAfterItsEnd) {
    Recorder recorder;
    for (int i = 0; i < 1000; ++i)
        WatchdogGuard guard(1, recorder);
    {
        WatchdogGuard none(0, recorder);
        WatchdogGuard early(3600, recorder);
        early.Finish();
        early.Finish();
    }
    usleep(1'300'000);
    EXPECT_EQ(recorder.expired, 0);
}

TEST(WatchdogGuard, WatchesManyAtOnce) {
    Recorder recorders[20];
    std::vector<std::thread> threads;
    for (auto& recorder : recorders) {
        threads.emplace_back([&recorder] {
            WatchdogGuard guard(1, recorder);
            usleep(1'600'000);
        });
    }
    for (auto& thread : threads)
        thread.join();
    for (const auto& recorder : recorders)
        EXPECT_EQ(recorder.expired, 1);
}

}  // namespace
}  // namespace tk::ado
