#include <gtest/gtest.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <thread>

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

class Recorder final : public Expiring {
public:
    void Expire() noexcept override { ++expired; }
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
