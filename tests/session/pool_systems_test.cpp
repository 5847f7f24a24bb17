// Pools on real databases, under load: on a file, and on servers that go away and come back.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/mariadb_server.h"
#include "support/postgres_server.h"
#include "support/registered_class.h"
#include "support/server_process.h"
#include "support/temporary_folder.h"
#include "tkkernel/session.h"
#include "tkkernel/session_statistics.h"
#include "util/platform_calls.h"

namespace tk::test {
namespace {

constexpr int kThreads = 6;
constexpr int kSessions = 4;

VARIANT FirstField() {
    VARIANT key;
    VariantInit(&key);
    V_VT(&key) = VT_I4;
    V_I4(&key) = 0;
    return key;
}

/// Threads that borrow, ask, change and return until they are told to stop.
class Load {
public:
    explicit Load(CTDataServer& server) : server_(server), done_(kThreads), failed_(kThreads) {
        for (int i = 0; i < kThreads; ++i)
            threads_.emplace_back([this, i] { Run(static_cast<std::size_t>(i)); });
    }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;
    ~Load() { Stop(); }

    void Stop() {
        stops_ = true;
        for (auto& thread : threads_)
            thread.join();
        threads_.clear();
    }

    /// Waits until so many more requests have succeeded (or failed) on every thread. @return whether they have
    bool WaitForSuccess(int more) { return WaitFor(done_, more); }
    bool WaitForFailure(int more) { return WaitFor(failed_, more); }

    std::atomic<int> wrong = 0;

private:
    using Counters = std::vector<std::atomic<int>>;

    static bool WaitFor(const Counters& counters, int more) {
        std::vector<int> before;
        for (const auto& counter : counters)
            before.push_back(counter);
        constexpr DWORD kLimitMs = 60'000;
        const ULONGLONG end = GetTickCount64() + kLimitMs;
        for (std::size_t i = 0; i < counters.size(); ++i) {
            while (counters[i] < before[i] + more) {
                if (GetTickCount64() > end) return false;
                Pause();
            }
        }
        return true;
    }

    void Run(std::size_t index) {
        const Apartment apartment;
        CTDataClient client;
        client.Invoke(&server_);
        while (!stops_) {
            bool isDone = false;
            if (client.OpenSQL("select 40 + 2", 10, 1)) {
                const CString text = client.GetValueString(FirstField());
                isDone = text == "42";
                if (!isDone && !text.IsEmpty()) ++wrong;
                client.CloseSQL();
            }
            client.BeginTrans();
            isDone = client.ExecuteSQL("update item set n = n + 1 where id = 1") != 0 && isDone;
            client.EndTrans();
            ++(isDone ? done_ : failed_)[index];
        }
    }

    CTDataServer& server_;
    Counters done_;
    Counters failed_;
    std::atomic<bool> stops_ = false;
    std::vector<std::thread> threads_;
};

class PoolSystems : public ::testing::Test {
protected:
    PoolSystems() { calls_.remembersSteps = false; }

    void Open(CTDataServer& server, const std::string& connection, const char* user, const char* password) {
        CTDatabase database;
        ASSERT_EQ(database.Open(connection.c_str()), 1) << database.GetLastErrorString();
        ASSERT_EQ(database.ExecuteSQL("create table item (id integer, n integer)"), 1) << database.GetLastErrorString();
        ASSERT_EQ(database.ExecuteSQL("insert into item values (1, 0)"), 1);
        database.Close();
        ASSERT_LE(connection.size(), 126u);
        ASSERT_EQ(server.OpenDatabase((";" + connection).c_str(), user, password, kSessions), 1)
            << server.GetLastErrorString();
    }

    static void ExpectWhole(CTDataServer& server) {
        const auto statistics = tk::session::ReadStatistics(server);
        EXPECT_EQ(statistics.databases.free, kSessions);
        EXPECT_EQ(statistics.recordsets.free, kSessions);
        EXPECT_EQ(statistics.databases.leased, 0);
        EXPECT_EQ(statistics.faults, 0u);
    }

    /// Under load, whatever the moment: each session is free or lent.
    static void ExpectNoneLost(CTDataServer& server) {
        const auto statistics = tk::session::ReadStatistics(server);
        EXPECT_EQ(statistics.databases.free + statistics.databases.leased, kSessions);
        EXPECT_EQ(statistics.recordsets.free + statistics.recordsets.leased, kSessions);
    }

    /// Load on a pool whose server ends and starts again, twice. The pool itself is not touched.
    template <typename System>
    void OutliveItsEnd(System& system, const std::function<void()>& end) {
        CTDataServer server;
        Open(server, system.ConnectionString(), "tester", "pw");
        const CString name = server.GetDbmsName();
        Load load(server);
        EXPECT_TRUE(load.WaitForSuccess(10));
        for (int time = 0; time < 2; ++time) {
            SCOPED_TRACE(time);
            end();
            EXPECT_TRUE(load.WaitForFailure(3));
            ExpectNoneLost(server);
            system.Start();
            EXPECT_TRUE(load.WaitForSuccess(20));
            ExpectNoneLost(server);
        }
        load.Stop();
        EXPECT_EQ(load.wrong, 0);
        ExpectWhole(server);
        CTDataClient client;
        client.Invoke(&server);
        EXPECT_STREQ(client.GetDbmsName(), name);
        client.Revoke();
        EXPECT_EQ(server.CloseDatabase(), 1);
    }

    /// Load on a pool whose server hangs for a while.
    template <typename System>
    void OutliveItsHanging(System& system) {
        CTDataServer server;
        Open(server, system.ConnectionString(), "tester", "pw");
        Load load(server);
        EXPECT_TRUE(load.WaitForSuccess(10));
        system.Hold(true);
        for (int i = 0; i < 50; ++i) {
            Pause();
            ExpectNoneLost(server);
        }
        system.Hold(false);
        EXPECT_TRUE(load.WaitForSuccess(20));
        load.Stop();
        EXPECT_EQ(load.wrong, 0);
        ExpectWhole(server);
        EXPECT_EQ(server.CloseDatabase(), 1);
    }

    Apartment apartment_;
    PlatformCalls calls_;
};

TEST_F(PoolSystems, ServeMoreThreadsThanSessionsOnAFile) {
    const TemporaryFolder folder;
    CTDataServer server;
    Open(server, "Driver=SQLite3;Database=" + folder.Path() + "/p.db" + ";Timeout=20000", "", "");
    Load load(server);
    EXPECT_TRUE(load.WaitForSuccess(10));
    load.Stop();
    EXPECT_EQ(load.wrong, 0);
    ExpectWhole(server);
    EXPECT_EQ(server.CloseDatabase(), 1);
}

TEST_F(PoolSystems, AnswerWhatTheirClientsAsk) {
    const TemporaryFolder folder;
    CTDataServer server;
    Open(server, "Driver=SQLite3;Database=" + folder.Path() + "/p.db;DBMS Name=Oracle", "", "");
    CTDataClient client;
    client.Invoke(&server);
    EXPECT_STREQ(client.GetDbmsName(), "Oracle");
    EXPECT_STREQ(client.GetSpecialValue("select id, n from item", "id|n"), "1|0");
    EXPECT_STREQ(client.GetRecordValues("select id, n from item", "|"), "1|0\r\n");
    ASSERT_EQ(client.BeginTrans(), 1);
    EXPECT_STREQ(CString(client.GetTableScript("item").Left(12)), "CREATE TABLE");
    ASSERT_EQ(client.OpenTable("item", 10, 1), 1) << client.GetLastErrorString();
    EXPECT_STREQ(client.GetAllFieldNames("+"), "id+n");
    CTRecordset columns(server.GetDatabase()->GetFieldSet("item", nullptr));
    ASSERT_EQ(client.GetRecordset()->OpenField(columns.GetDispatch()), 1)
        << client.GetRecordset()->GetLastErrorString();
    _tagFIELDINFO info{};
    EXPECT_EQ(client.GetFieldInfor("n", &info), 1) << client.GetLastErrorString();
    EXPECT_EQ(client.GetFieldInfor("m", &info), 0);
    EXPECT_EQ(client.Revoke(), 1);
    ExpectWhole(server);
}

TEST_F(PoolSystems, RecoverWhenPostgresStoppedAndStartedAgain) {
    PostgresServer postgres;
    OutliveItsEnd(postgres, [&] { postgres.Stop(); });
}

TEST_F(PoolSystems, RecoverWhenPostgresWasCutOffAndStartedAgain) {
    PostgresServer postgres;
    OutliveItsEnd(postgres, [&] { postgres.Cut(); });
}

TEST_F(PoolSystems, GoOnWhenPostgresHasHung) {
    PostgresServer postgres;
    OutliveItsHanging(postgres);
}

TEST_F(PoolSystems, GoOnWhenMariaDbHasHung) {
    MariaDbServer mariadb;
    OutliveItsHanging(mariadb);
}

TEST_F(PoolSystems, RecoverWhenMariaDbStoppedAndStartedAgain) {
    MariaDbServer mariadb;
    OutliveItsEnd(mariadb, [&] { mariadb.Stop(); });
}

TEST_F(PoolSystems, RecoverWhenMariaDbWasCutOffAndStartedAgain) {
    MariaDbServer mariadb;
    OutliveItsEnd(mariadb, [&] { mariadb.Cut(); });
}

}  // namespace
}  // namespace tk::test
