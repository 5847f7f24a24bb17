#include "ado/odbc/session_cache.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "ado/support/odbc_faults.h"
#include "ado/support/own_questions.h"
#include "ado/support/sqlite_file.h"

namespace tk::ado {
namespace {

using test::Do;
using test::Query;
using test::Show;
using test::SqliteFile;

SessionCache& Cache() {
    return SessionCache::Instance();
}

TEST(SessionCache, KeepsAConnectionForTheNextSessionOfTheSameString) {
    const SqliteFile file;
    file.Open().reset();
    EXPECT_EQ(Cache().IdleCount(), 1u);
    test::OdbcFaults calls;
    const auto again = file.Open();
    EXPECT_EQ(Cache().IdleCount(), 0u);
    EXPECT_EQ(calls.Calls(), 0);  // not one call of the driver manager
}

TEST(SessionCache, KeepsStringsUsersAndPasswordsApart) {
    const SqliteFile file;
    SessionSettings settings = test::Settings(file.Connection());
    Session::Open(settings).reset();
    settings.user = "sa";
    const auto other = Session::Open(settings);
    EXPECT_EQ(Cache().IdleCount(), 1u);
    settings.password = "x";
    const auto third = Session::Open(settings);
    EXPECT_EQ(Cache().IdleCount(), 1u);
    settings = test::Settings(file.Connection());
    settings.readOnly = true;
    const auto fourth = Session::Open(settings);
    EXPECT_EQ(Cache().IdleCount(), 1u);
    const auto fifth = file.Open("X=1");
    EXPECT_EQ(Cache().IdleCount(), 1u);
    const auto same = file.Open();
    EXPECT_EQ(Cache().IdleCount(), 0u);
}

TEST(SessionCache, IsSwitchedOffByTheConnectionString) {
    const SqliteFile file;
    file.Open("OLE DB Services=-2").reset();
    EXPECT_EQ(Cache().IdleCount(), 0u);
    file.Open("OLE DB Services=-1").reset();
    EXPECT_EQ(Cache().IdleCount(), 1u);
}

TEST(SessionCache, TakesBackConnectionsThatNothingWasLeftOn) {
    const struct {
        const char* label;
        const char* sql;
        std::size_t kept;
    } rows[] = {
        {"query", "select 1", 1},
        {"table", "create table t1 (id integer)", 1},
        {"temporary table", "create temp table t2 (id integer)", 0},
        {"setting", "pragma foreign_keys = 1", 0},
        {"transaction by text", "begin", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const SqliteFile file;
        const auto session = file.Open();
        session->Execute(row.sql, {});
        const_cast<std::shared_ptr<Session>&>(session).reset();
        EXPECT_EQ(Cache().IdleCount(), row.kept);
    }
}

TEST(SessionCache, RollsBackAndSetsAutoCommitAgain) {
    const SqliteFile file;
    {
        const auto session = file.Open();
        Do(*session, "create table item (id integer)");
        session->Begin(0x1000);
        Do(*session, "insert into item values (1)");
    }
    ASSERT_EQ(Cache().IdleCount(), 1u);
    {
        const auto session = file.Open();
        EXPECT_FALSE(session->InTransaction());
        EXPECT_EQ(Show(*Query(session, "select count(*) from item"), 0, 0), "I4 0");
        Do(*session, "insert into item values (2)");
    }
    EXPECT_EQ(Show(*Query(file.Open("X=1"), "select count(*) from item"), 0, 0), "I4 1");
}

TEST(SessionCache, NeverKeepsADatabaseInMemory) {
    Cache().Clear();
    const auto settings = test::Settings("Driver=SQLite3;Database=:memory:");
    {
        const auto session = Session::Open(settings);
        Do(*session, "create table item (id integer)");
    }
    EXPECT_EQ(Cache().IdleCount(), 0u);
    const auto session = Session::Open(settings);
    EXPECT_EQ(Do(*session, "create table item (id integer)"), 0);
}

TEST(SessionCache, NoticesAFileThatWasReplaced) {
    const SqliteFile file;
    Do(*file.Open(), "create table old (id integer)");
    ASSERT_EQ(Cache().IdleCount(), 1u);
    std::filesystem::rename(file.File(), file.File() + ".old");
    const auto session = file.Open();
    EXPECT_EQ(Query(session, "select * from sqlite_master where name = 'old'")->CountRows(), 0u);
    std::filesystem::remove(file.File());
}

TEST(SessionCache, IsBounded) {
    const SqliteFile file;
    std::vector<std::shared_ptr<Session>> sessions;
    for (int i = 0; i < 40; ++i)
        sessions.push_back(file.Open());
    sessions.clear();
    EXPECT_EQ(Cache().IdleCount(), 16u);
}

TEST(SessionCache, ClosesWhatHasBeenIdleTooLong) {
    const SqliteFile file;
    Cache().SetIdleLimit(50);
    file.Open().reset();
    for (int i = 0; i < 200 && Cache().IdleCount() != 0; ++i)
        usleep(10'000);
    EXPECT_EQ(Cache().IdleCount(), 0u);
    Cache().SetIdleLimit(60'000);
}

TEST(SessionCache, ServesManyThreads) {
    const SqliteFile file;
    Do(*file.Open(), "create table item (id integer)");
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&file] {
            for (int round = 0; round < 50; ++round) {
                const auto session = file.Open();
                EXPECT_EQ(Query(session, "select * from item")->CountRows(), 0u);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_LE(Cache().IdleCount(), 16u);
}

TEST(SessionCache, LeavesTheParentsConnectionsToTheParent) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer allows no threads in a child process";
#endif
    const SqliteFile file;
    Do(*file.Open(), "create table item (id integer)");
    // Another thread of the parent is inside the lock at most of these moments.
    const auto nobodys = std::make_shared<const std::string>("nobody's");
    std::atomic<bool> isOver = false;
    std::atomic<bool> hasBegun = false;
    std::thread busy([&] {
        while (!isOver) {
            Cache().Distrust(nobodys);
            hasBegun = true;
        }
    });
    // A thread that begins allocates; the address sanitizer's allocator stays locked in a child that is made meanwhile.
    while (!hasBegun)
        std::this_thread::yield();
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE(round);
        file.Open().reset();
        ASSERT_EQ(Cache().IdleCount(), 1u);
        const pid_t child = fork();
        if (child == 0) {
            alarm(20);  // a child that waits for one of them ends with a signal
            bool isRight = false;
            try {
                const auto session = file.Open();
                isRight = Cache().IdleCount() == 0 && Query(session, "select * from item")->CountRows() == 0;
            } catch (...) {}
            _exit(isRight ? 0 : 1);
        }
        int status = 1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(Cache().IdleCount(), 1u);
        if (status != 0) break;
    }
    isOver = true;
    busy.join();
    EXPECT_EQ(Query(file.Open(), "select * from item")->CountRows(), 0u);
}

TEST(SessionCache, ReplacesAConnectionThatWasLostWhileIdleWithoutAWord) {
    // The first statement of a session from the cache fails as on a lost connection: it runs on a new one.
    const SqliteFile file;
    Do(*file.Open(), "create table item (id integer)");
    ASSERT_EQ(Cache().IdleCount(), 1u);
    static OdbcApi table;
    table = OdbcApi();
    static int failures;
    failures = 0;
    table.ExecDirect = [](SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) -> SQLRETURN {
        if (!test::IsOwnQuestion(text) && failures++ == 0) return SQL_ERROR;
        return SQLExecDirect(statement, text, length);
    };
    table.GetDiagRec = [](SQLSMALLINT, SQLHANDLE, SQLSMALLINT number, SQLCHAR* state, SQLINTEGER* native, SQLCHAR* text,
                          SQLSMALLINT, SQLSMALLINT* length) -> SQLRETURN {
        if (number > 1) return SQL_NO_DATA;
        std::memcpy(state, "08S01", 6);
        *native = 0;
        std::memcpy(text, "gone", 5);
        *length = 4;
        return SQL_SUCCESS;
    };
    const auto session = file.Open();
    const OdbcApi& former = SetOdbcForTest(table);
    EXPECT_EQ(Query(session, "select * from item where id = 1")->CountRows(), 0u);
    EXPECT_EQ(failures, 2);
    // A statement that changes rows is never run twice.
    failures = 0;
    EXPECT_THROW(Do(*session, "insert into item values (1)"), AdoError);
    EXPECT_EQ(failures, 1);
    SetOdbcForTest(former);
    EXPECT_TRUE(session->IsDead());
}

constexpr LONG kReadCommitted = 4096;

/// Statements on one table of functions, the next of which fail as on a connection that is gone.
class LosingConnections {
public:
    LosingConnections() : former_(SetOdbcForTest(Table())) { lost = 0; }
    LosingConnections(const LosingConnections&) = delete;
    LosingConnections& operator=(const LosingConnections&) = delete;
    ~LosingConnections() { SetOdbcForTest(former_); }

    static inline int lost = 0;

private:
    static const OdbcApi& Table() {
        static OdbcApi table;
        table = OdbcApi();
        table.ExecDirect = [](SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) -> SQLRETURN {
            if (lost > 0 && !test::IsOwnQuestion(text)) return --lost, SQL_ERROR;
            return SQLExecDirect(statement, text, length);
        };
        table.GetDiagRec = [](SQLSMALLINT, SQLHANDLE, SQLSMALLINT number, SQLCHAR* state, SQLINTEGER* native,
                              SQLCHAR* text, SQLSMALLINT, SQLSMALLINT* length) -> SQLRETURN {
            if (number > 1) return SQL_NO_DATA;
            std::memcpy(state, "08S01", 6);
            *native = 0;
            std::memcpy(text, "gone", 5);
            *length = 4;
            return SQL_SUCCESS;
        };
        return table;
    }
    const OdbcApi& former_;
};

TEST(SessionCache, TheStatementBehindALostConnectionRunsOnANewOne) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer)");
    const LosingConnections losing;
    losing.lost = 1;
    EXPECT_THROW(Query(session, "select * from item where id > 0"), AdoError)
        << "the one that meets it fails, reading or not";
    EXPECT_TRUE(session->IsDead());
    EXPECT_EQ(Query(session, "select * from item where id > 0")->CountRows(), 0u);
    EXPECT_FALSE(session->IsDead());
    losing.lost = 1;
    EXPECT_THROW(Do(*session, "insert into item values (1)"), AdoError);
    session->Begin(kReadCommitted);
    Do(*session, "insert into item values (2)");
    session->Commit();
    EXPECT_EQ(Query(session, "select * from item where id > 0")->CountRows(), 1u);
}

TEST(SessionCache, ATransactionOnALostConnectionFailsUntilItIsRolledBack) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer)");
    {
        const LosingConnections losing;
        session->Begin(kReadCommitted);
        Do(*session, "insert into item values (1)");
        losing.lost = 1;
        EXPECT_THROW(Do(*session, "insert into item values (2)"), AdoError);
        EXPECT_THROW(Query(session, "select * from item where id > 0"), AdoError) << "no new connection in the middle";
        EXPECT_THROW(Do(*session, "insert into item values (3)"), AdoError) << "though the driver would run it";
        EXPECT_TRUE(session->InTransaction());
    }
    try {
        session->Rollback();
    } catch (const AdoError&) {}  // a driver may have nothing left to roll back
    EXPECT_EQ(Query(session, "select * from item where id > 0")->CountRows(), 0u);
    EXPECT_FALSE(session->IsDead());
}

TEST(SessionCache, ATransactionOnALostConnectionIsNeverCommitted) {
    const SqliteFile file;
    const auto session = file.Open();
    Do(*session, "create table item (id integer)");
    {
        const LosingConnections losing;
        session->Begin(kReadCommitted);
        Do(*session, "insert into item values (1)");
        losing.lost = 1;
        EXPECT_THROW(Do(*session, "insert into item values (2)"), AdoError);
        EXPECT_THROW(session->Commit(), AdoError) << "though the driver would commit the first one";
        EXPECT_FALSE(session->InTransaction());
    }
    EXPECT_EQ(Query(session, "select * from item where id > 0")->CountRows(), 0u) << "on a new connection";
    EXPECT_FALSE(session->IsDead());
    Do(*session, "insert into item values (3)");
    EXPECT_EQ(Query(session, "select * from item where id > 0")->CountRows(), 1u);
}

}  // namespace
}  // namespace tk::ado
