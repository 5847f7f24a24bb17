// A process that may have no more threads: what others would do is done by the thread that waits for it.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <optional>
#include <thread>

#include "ado/rowset/fetch_pool.h"
#include "database_systems.h"

namespace {

std::atomic<bool> isDenied = false;
std::atomic<int> denials = 0;

}  // namespace

/// In the place of the C library's: fails as that does at the limit.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     const pthread_attr_t* attributes,
                                                                     void* (*start)(void*), void* argument) noexcept {
    using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
    if (!isDenied) return real(thread, attributes, start, argument);
    ++denials;
    return EAGAIN;
}

namespace tk::ado::test {
namespace {

class Denial {
public:
    Denial() {
        denials = 0;
        isDenied = true;
    }
    ~Denial() { isDenied = false; }
    Denial(const Denial&) = delete;
    Denial& operator=(const Denial&) = delete;
};

constexpr LONG kManyRows = 3000;  // more than the opening thread reads

/// The first one of the program: threads that have been made stay.
TEST(DeniedThreads, AreSaidToBeMissingAndLoseNothing) {
    const tk::test::TemporaryFolder folder;
    const std::u16string text = ToUtf16("Driver=SQLite3;Database=" + folder.File("test.db"));
    const auto open = [&] {
        Object opened = Object::Create(kConnectionClass);
        const Outcome outcome = opened.Call(connection::kOpen, {Text(text)});
        EXPECT_TRUE(outcome.Ok()) << outcome;
        return opened;
    };
    const auto make = [](const Object& on) {
        return on.Call(connection::kExecute, {Text(u"create table if not exists steps (id integer)")});
    };
    std::optional<Denial> denial(std::in_place);
    {
        const Object opened = open();
        // Nobody would end it when its time is over.
        const Outcome failed = make(opened);
        EXPECT_GT(denials, 0) << "a thread had been made before";
        EXPECT_EQ(failed.Error(), 3000u) << failed;
        EXPECT_TRUE(failed.description.starts_with(u"驱动程序未能完成操作：")) << failed;
        opened.Put(connection::kCommandTimeout, Number(0));
        const Outcome made = make(opened);
        EXPECT_TRUE(made.Ok()) << made;
    }
    // Nobody would end it when it has lain idle for long.
    EXPECT_EQ(SessionCache::Instance().IdleCount(), 0u);
    denial.reset();
    {
        const Object opened = open();
        const Outcome made = make(opened);
        EXPECT_TRUE(made.Ok()) << made;
    }
    EXPECT_EQ(SessionCache::Instance().IdleCount(), 1u);
    SessionCache::Instance().Clear();
}

TEST(DeniedThreads, KeepNoJobThatNobodyWouldTake) {
    struct Job final : FetchJob {
        void RunJob() noexcept override {}
        void AbortJob() noexcept override {}
        bool WaitsForServer() const noexcept override { return false; }
    };
    const Denial denial;
    auto job = std::make_shared<Job>();
    const std::weak_ptr<Job> seen = job;
    EXPECT_FALSE(FetchPool::Instance().Submit(job));
    EXPECT_TRUE(job->Claim());
    EXPECT_FALSE(job->Claim());
    job.reset();
    EXPECT_TRUE(seen.expired());
}

class DeniedThreadsTest : public SystemTest {
protected:
    void SetUp() override {
        SystemTest::SetUp();
        Drop(u"steps");
        Do(u"create table steps (id integer primary key)");
        std::u16string text = u"insert into steps values (1)";
        for (LONG i = 2; i <= kManyRows; ++i)
            text += u",(" + ToUtf16(std::to_string(i)) + u")";
        Do(text);
        denial_.emplace();
    }

    static Object Many(const Object& on, LONG options = 1) {
        return OpenRows(on, u"select id from steps order by id", 1, options);
    }
    static void ExpectAll(const Object& rows) {
        EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), kManyRows);
        const Outcome last = rows.Call(recordset::kMoveLast);
        EXPECT_TRUE(last.Ok()) << last;
        EXPECT_EQ(ValueOf(rows, u"id"), "3000");
    }

    static constexpr LONG kAsyncFetch = 0x20;
    std::optional<Denial> denial_;
};

TEST_P(DeniedThreadsTest, RowsAreReadByWhoeverWaitsForThem) {
    const Object rows = Many(connection_);
    EXPECT_GT(denials, 0);
    ExpectAll(rows);
    // Of two, neither read, the connection goes on meanwhile.
    const Object first = Many(connection_);
    const Object second = Many(connection_);
    EXPECT_EQ(AskFor(u"select 7"), "7");
    ExpectAll(second);
    ExpectAll(first);
}

TEST_P(DeniedThreadsTest, RowsFetchedAsynchronouslyAreReadBeforeTheRecordsetIsOpen) {
    const Object rows = Many(connection_, 1 | kAsyncFetch);
    EXPECT_GT(denials, 0);
    EXPECT_EQ(rows.Get(recordset::kState).Long(), 1);  // open, and no more to come
    ExpectAll(rows);
}

TEST_P(DeniedThreadsTest, ReadingThemIsEndedByCancel) {
#ifdef __SANITIZE_THREAD__
    if (GetParam() != SystemKind::Sqlite) GTEST_SKIP() << "SQLCancel races with the call inside of these drivers";
#endif
    constexpr LONG kAll = kManyRows * kManyRows;
    const Object rows = Object::Create(kRecordsetClass);
    rows.Put(recordset::kCursorLocation, Number(3));
    std::atomic<bool> isOpen = false;
    denial_.reset();
    std::thread cancelling([&] {
        while (!isOpen) {
            usleep(50000);
            rows.Call(recordset::kCancel);
        }
    });
    denial_.emplace();
    const Outcome opened =
        rows.Call(recordset::kOpen, {Text(u"select a.id from steps a, steps b"), connection_.AsValue(), Number(3),
                                     Number(1), Number(1 | kAsyncFetch)});
    isOpen = true;
    cancelling.join();
    if (opened.Ok()) {
        const Outcome count = rows.Get(recordset::kRecordCount);
        EXPECT_TRUE(!count.Ok() || count.Long() < kAll) << count;
    }
    EXPECT_EQ(AskFor(u"select 7"), "7");
}

TEST_P(DeniedThreadsTest, RowsThatNobodyReadsAreLetGo) {
    Many(connection_);
    const Object closed = Many(connection_);
    const Outcome outcome = closed.Call(recordset::kClose);
    EXPECT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(AskFor(u"select count(*) from steps"), "3000");
}

using DeniedThreadsBehindRowsTest = DeniedThreadsTest;

TEST_P(DeniedThreadsBehindRowsTest, ResultsAreReadByWhoeverGoesOn) {
    Do(u"drop procedure if exists three");
    Do(u"create procedure three() begin select 1 as a; select id from steps order by id; select 3 as c; end");
    const Outcome called = connection_.Call(connection::kExecute, {Text(u"call three()")});
    ASSERT_TRUE(called.Ok()) << called;
    EXPECT_GT(denials, 0);
    EXPECT_EQ(AskFor(u"select 7"), "7");
    Object rows = called.Result();
    EXPECT_EQ(ValueOf(rows, u"a"), "1");
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    ExpectAll(rows);
    EXPECT_EQ(AskFor(u"select 8"), "8");
    rows = rows.Call(recordset::kNextRecordset).Result();
    ASSERT_TRUE(rows);
    EXPECT_EQ(ValueOf(rows, u"c"), "3");
}

// The only system whose results are followed by others.
INSTANTIATE_TEST_SUITE_P(Systems, DeniedThreadsBehindRowsTest, ::testing::Values(SystemKind::MariaDb), SystemName);
INSTANTIATE_TEST_SUITE_P(Systems, DeniedThreadsTest,
                         ::testing::Values(SystemKind::Sqlite, SystemKind::Postgres, SystemKind::MariaDb), SystemName);

}  // namespace
}  // namespace tk::ado::test
