// Servers that hang without ending: PostgreSQL and MariaDB, all of whose processes are held where they are.
#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>

#include <functional>
#include <optional>
#include <thread>

#include "ado/odbc/physical_connection.h"
#include "ado/odbc/prepared_text.h"
#include "ado/odbc/server_call.h"
#include "ado/odbc/session.h"
#include "ado/odbc/session_cache.h"
#include "ado/rowset/row_set.h"
#include "support/mariadb_server.h"
#include "support/postgres_server.h"

namespace tk::ado {
namespace {

constexpr unsigned kTimeout = 0x80040E31;
constexpr unsigned kFailed = 0x80004005;

struct System {
    const char* name;
    std::string (*connection)();
    void (*hold)(bool isHeld);
    const char* slow;  // a statement of four seconds
};

test::PostgresServer& Postgres() {
    static test::PostgresServer server;
    return server;
}

test::MariaDbServer& MariaDb() {
    static test::MariaDbServer server;
    return server;
}

const System kSystems[] = {
    {"PostgreSQL", [] { return Postgres().ConnectionString(); }, [](bool isHeld) { Postgres().Hold(isHeld); },
     "select pg_sleep(4)"},
    {"MariaDB", [] { return MariaDb().ConnectionString(); }, [](bool isHeld) { MariaDb().Hold(isHeld); },
     "select sleep(4)"},
};

LONG Do(Session& session, const std::string& sql) {
    return session.Execute(sql, {}).RowsAffected();
}

double Seconds() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

template <class Call>
unsigned Failure(Call&& call) {
    try {
        call();
        return S_OK;
    } catch (const AdoError& error) {
        return static_cast<unsigned>(error.Code());
    }
}

class HungServer : public testing::TestWithParam<System> {
protected:
    void SetUp() override {
        SessionCache::Instance().Clear();
        settings_.connection = ConnectionString::Parse(GetParam().connection());
        settings_.loginTimeoutSeconds = 1;
        session_ = Session::Open(settings_);
        Do(*session_, "drop table if exists kept");
        Do(*session_, "create table kept (id integer primary key)");
        ServerCall::SetPatience(200, 1);
    }
    void TearDown() override {
        Hold(false);
        session_.reset();
        SessionCache::Instance().Clear();
        ServerCall::SetPatience(5000, 30);
    }

    void Hold(bool isHeld) const { GetParam().hold(isHeld); }

    std::shared_ptr<RowSet> Read(const std::string& sql, LONG seconds = 1) const {
        return RowSet::Fetch(session_->Execute(sql, ExecuteOptions{seconds, 0, false}), session_, {});
    }

    long long Count() const { return Read("select count(*) from kept", 30)->At(0, 0).integer; }

    /// Within a time that is far from the seconds that no statement here takes, however busy the machine is.
    template <class Call>
    static void ExpectToEnd(Call&& call) {
        const double start = Seconds();
        call();
        EXPECT_LT(Seconds() - start, 30);
    }

    SessionSettings settings_;
    std::shared_ptr<Session> session_;
};

TEST_P(HungServer, EndsTheStatementThatWaitsForItAndIsUsedAgain) {
    Hold(true);
    ExpectToEnd([&] { EXPECT_EQ(Failure([&] { Read("select count(*) from kept"); }), kTimeout); });
    // The next one needs a new connection, which nobody answers.
    ExpectToEnd([&] { EXPECT_EQ(Failure([&] { Read("select count(*) from kept"); }), kFailed); });
    Hold(false);
    EXPECT_EQ(Count(), 0);
}

TEST_P(HungServer, EndsAWriteThatIsNotMadeTwice) {
    Hold(true);
    EXPECT_EQ(Failure([&] {
                  session_->Execute("insert into kept values (1)", ExecuteOptions{1, 0, false});
              }),
              kTimeout);
    Hold(false);
    EXPECT_LE(Count(), 1);  // it may be made yet: nobody knows
}

TEST_P(HungServer, EndsAReadOnAnIdleConnectionOnce) {
    session_.reset();
    session_ = Session::Open(settings_);
    ASSERT_EQ(SessionCache::Instance().IdleCount(), 0u);
    Hold(true);
    const double start = Seconds();
    EXPECT_EQ(Failure([&] { Read("select 1"); }), kTimeout);
    EXPECT_LT(Seconds() - start, 30);
}

TEST_P(HungServer, LosesATransaction) {
    session_->Begin(0x1000);
    Do(*session_, "insert into kept values (1)");
    Hold(true);
    EXPECT_EQ(Failure([&] { Read("select count(*) from kept"); }), kTimeout);
    EXPECT_EQ(Failure([&] { Read("select 1"); }), kFailed);
    EXPECT_EQ(Failure([&] { session_->Commit(); }), kFailed);
    EXPECT_FALSE(session_->InTransaction());
    Hold(false);
    EXPECT_EQ(Count(), 0);
}

TEST_P(HungServer, EndsACommitThatWaitsForIt) {
    session_->Begin(0x1000);
    Do(*session_, "insert into kept values (1)");
    Hold(true);
    ExpectToEnd([&] { EXPECT_EQ(Failure([&] { session_->Commit(); }), kFailed); });
    EXPECT_FALSE(session_->InTransaction());
    Hold(false);
    EXPECT_LE(Count(), 1);
}

TEST_P(HungServer, EndsADescription) {
#ifdef __SANITIZE_THREAD__
    if (session_->Profile().name == std::string_view("mariadb")) {
        GTEST_SKIP() << "the driver's SQLCancel writes its failure where the call that it cancels writes its own";
    }
#endif
    Do(*session_, "insert into kept values (1)");
    {
        PreparedText prepared(*session_, "select id from kept where id = 1", 1);
        Hold(true);
        SQLSMALLINT count = 0;
        ExpectToEnd([&] {
            EXPECT_EQ(
                Failure([&] { prepared.Ask([&](SQLHSTMT handle) { return Odbc().NumResultCols(handle, &count); }); }),
                kTimeout);
        });
    }
    Hold(false);
    EXPECT_EQ(Count(), 1);
}

TEST_P(HungServer, EndsTheQuestionWhereAColumnComesFrom) {
    Do(*session_, "drop table if exists wide");
    Do(*session_, "create table wide (id bigint primary key)");
    Statement statement = session_->Execute("select id from wide where id > 0", ExecuteOptions{1, 0, false});
    Hold(true);
    ExpectToEnd([&] { Failure([&] { RowSet::Fetch(std::move(statement), session_, {})->CountRows(); }); });
    Hold(false);
    EXPECT_EQ(Count(), 0);
}

TEST_P(HungServer, IsAskedForOneOfManyIdleConnections) {
    constexpr int kIdle = 6;
    {
        std::shared_ptr<Session> sessions[kIdle];
        for (auto& session : sessions)
            session = Session::Open(settings_);
    }
    ASSERT_EQ(SessionCache::Instance().IdleCount(), std::size_t{kIdle});
    usleep(1'100'000);  // long enough to be asked before they are used
    Hold(true);
    const double start = Seconds();
    EXPECT_EQ(Failure([&] { Session::Open(settings_); }), kFailed);
    EXPECT_LT(Seconds() - start, 15);
}

TEST_P(HungServer, LetsItsConnectionsBeClosed) {
    ExecuteOptions options;
    options.prepared = true;
    for (const char* sql : {"select 1", "select 2", "select 3", "select 4", "select 5"})
        RowSet::Fetch(session_->Execute(sql, options), session_, {});
    Hold(true);
    ExpectToEnd([&] {
        session_.reset();
        SessionCache::Instance().Clear();
    });
}

TEST_P(HungServer, LetsCancelReturn) {
    Hold(true);
    std::thread other([&] {
        usleep(300'000);
        ExpectToEnd([&] { session_->Cancel(); });
    });
    ExpectToEnd([&] { EXPECT_NE(Failure([&] { Read("select count(*) from kept"); }), S_OK); });
    other.join();
    Hold(false);
    EXPECT_EQ(Count(), 0);
}

TEST_P(HungServer, IsWaitedForWithoutALimit) {
    Hold(true);
    std::thread other([&] {
        usleep(2'500'000);  // the limit and both probes would be over
        Hold(false);
    });
    const double start = Seconds();
    EXPECT_EQ(Failure([&] { Read("select count(*) from kept", 0); }), S_OK);
    EXPECT_GE(Seconds() - start, 2);
    other.join();
}

TEST_P(HungServer, IsNotAServerThatWorks) {
    ServerCall::SetPatience(1000, 1);
    const ServerCall call(session_->Profile(), 1);
    const double start = Seconds();
    EXPECT_EQ(Failure([&] { Read(GetParam().slow, 0); }), S_OK);
    EXPECT_GE(Seconds() - start, 3.5);
    EXPECT_FALSE(call.WasCut());
    EXPECT_FALSE(session_->Physical().IsBroken());
    EXPECT_EQ(Count(), 0);
}

TEST_P(HungServer, IsNotAServerThatGoesOnInTime) {
    for (int time = 0; time < 3; ++time) {
        Hold(true);
        std::thread other([&] {
            usleep(900'000);
            Hold(false);
        });
        EXPECT_EQ(Failure([&] { Read("select count(*) from kept", 3); }), S_OK);
        other.join();
    }
    EXPECT_FALSE(session_->Physical().IsBroken());
}

TEST_P(HungServer, RefusesNewConnections) {
    Hold(true);
    ExpectToEnd([&] {
        EXPECT_EQ(Failure([&] {
                      SessionSettings other = settings_;
                      other.connection.Set("Application Name", "another");
                      Session::Open(other);
                  }),
                  kFailed);
    });
}

INSTANTIATE_TEST_SUITE_P(Systems, HungServer, testing::ValuesIn(kSystems),
                         [](const auto& info) { return std::string(info.param.name); });

class HungPostgres : public HungServer {};

TEST_P(HungPostgres, EndsAResultThatComesInParts) {
    const auto rows = RowSet::Fetch(
        session_->Execute("select i, repeat('x', 100) from generate_series(1, 2000000) i", ExecuteOptions{1, 0, false}),
        session_, {true, 0});
    usleep(100'000);
    Hold(true);
    ExpectToEnd([&] { EXPECT_EQ(Failure([&] { rows->CountRows(); }), kTimeout); });
    Hold(false);
    EXPECT_EQ(Count(), 0);
}

INSTANTIATE_TEST_SUITE_P(Systems, HungPostgres, testing::Values(kSystems[0]),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tk::ado
