// Many threads on one pool: lending, returning and taking over at once, no session lost. Run by the thread sanitizer
// too.
//
// TK_POOL_OPERATIONS sets the operations of each thread: 1,000,000 is the long run.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <random>
#include <set>
#include <thread>

#include "session/steady_object.h"
#include "support/registered_class.h"
#include "tkkernel/session.h"
#include "tkkernel/session_statistics.h"
#include "util/platform_calls.h"

namespace tk::test {
namespace {

int Operations() {
    constexpr int kUsual = 4'000;
    const char* const wanted = std::getenv("TK_POOL_OPERATIONS");
    return wanted != nullptr ? std::atoi(wanted) : kUsual;
}

constexpr int kThreads = 16;
constexpr int kSessions = 12;
constexpr int kCheckpoints = 4;

class DerivedServer : public CTDataServer {
public:
    using CTDataServer::ForceDatabase;
    using CTDataServer::RegisterRole;
};

class PoolThreads : public ::testing::Test {
protected:
    PoolThreads() {
        calls_.remembersSteps = false;
        calls_.clock = [this] { return tick_.load(); };
    }

    void SetUp() override {
        for (int i = 0; i < kSessions; ++i) {
            connections_.Give(object_.Get());
            recordsets_.Give(object_.Get());
        }
        ASSERT_EQ(server_.OpenDatabase("stock", "", "", kSessions), 1) << server_.GetLastErrorString();
    }

    /// Runs work(thread) on all threads to its end.
    template <typename Work>
    void OnAllThreads(const Work& work) {
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i)
            threads.emplace_back([&work, i] { work(i); });
        for (auto& thread : threads)
            thread.join();
    }

    void ExpectNothingLost() {
        const auto statistics = tk::session::ReadStatistics(server_);
        for (const auto& kind : {statistics.databases, statistics.recordsets}) {
            EXPECT_EQ(kind.free + kind.leased, kSessions + kind.twice);
            EXPECT_EQ(kind.twice, static_cast<std::int64_t>(kind.doubled) - static_cast<std::int64_t>(kind.shared));
            EXPECT_LE(kind.leased, kSessions);
        }
        EXPECT_EQ(statistics.faults, 0u);
        calls_.TakeRecords();
    }

    /// When everything has come back, each session is free once at least.
    template <typename Object>
    void ExpectAllFree(Object* (CTDataServer::*invoke)(void*)) {
        std::set<Object*> found;
        for (Object* session = (server_.*invoke)(nullptr); session != nullptr; session = (server_.*invoke)(nullptr))
            found.insert(session);
        EXPECT_EQ(found.size(), static_cast<std::size_t>(kSessions));
    }

    Apartment apartment_;
    Held<SteadyObject> object_{new SteadyObject};
    RegisteredClass connections_{kConnectionClass};
    RegisteredClass recordsets_{kRecordsetClass};
    std::atomic<DWORD> tick_ = 0xFFFF'0000;  // wraps on the way
    PlatformCalls calls_;
    DerivedServer server_;
};

TEST_F(PoolThreads, LendAndReturnWithoutLoss) {
    for (int checkpoint = 0; checkpoint < kCheckpoints; ++checkpoint) {
        OnAllThreads([&](int) {
            for (int i = 0; i < Operations() / kCheckpoints; ++i) {
                if (CTDatabase* const database = server_.InvokeDatabase(nullptr)) server_.RevokeDatabase(database);
                if (CTRecordset* const recordset = server_.InvokeRecordset(nullptr)) server_.RevokeRecordset(recordset);
            }
        });
        const auto statistics = tk::session::ReadStatistics(server_);
        EXPECT_EQ(statistics.databases.free, kSessions);
        EXPECT_EQ(statistics.recordsets.free, kSessions);
        EXPECT_EQ(statistics.databases.loans, statistics.databases.returns);
        ExpectNothingLost();
    }
}

TEST_F(PoolThreads, TakeOverWithoutLoss) {
    constexpr unsigned kSeed = 7;
    std::vector<std::unique_ptr<CTDataClient>> clients;
    for (int i = 0; i < kThreads; ++i) {
        clients.push_back(std::make_unique<CTDataClient>());
        clients.back()->Invoke(&server_);
    }
    std::vector<std::vector<CTDatabase*>> held(kThreads);
    for (int checkpoint = 0; checkpoint < kCheckpoints; ++checkpoint) {
        OnAllThreads([&](int thread) {
            std::mt19937 random(kSeed + static_cast<unsigned>(checkpoint * kThreads + thread));
            CTDataClient& client = *clients[static_cast<std::size_t>(thread)];
            auto& mine = held[static_cast<std::size_t>(thread)];
            for (int i = 0; i < Operations() / kCheckpoints; ++i) {
                switch (random() % 8) {
                    case 0:
                        client.EndTrans();
                        client.BeginTrans();
                        break;
                    case 1:
                        client.EndTrans();
                        break;
                    case 2:
                    case 3:
                    case 4:
                        if (CTDatabase* const database = server_.InvokeDatabase(nullptr)) mine.push_back(database);
                        break;
                    case 5:
                        if (random() % 32 == 0) tick_ += 180'001;
                        break;
                    default:
                        if (mine.empty()) break;
                        server_.RevokeDatabase(mine.back());
                        mine.pop_back();
                        break;
                }
                if (i % 64 == 0) calls_.TakeRecords();
            }
        });
        ExpectNothingLost();
    }
    EXPECT_GT(tk::session::ReadStatistics(server_).databases.takeovers, 0u);
    for (auto& client : clients)
        client->Revoke();
    for (auto& mine : held) {
        for (CTDatabase* const database : mine)
            server_.RevokeDatabase(database);
    }
    EXPECT_EQ(tk::session::ReadStatistics(server_).databases.leased, 0);
    ExpectNothingLost();
    ExpectAllFree(&CTDataServer::InvokeDatabase);
}

TEST_F(PoolThreads, AskForNumbersAndReasonsMeanwhile) {
    std::atomic<bool> done = false;
    std::thread reader([&] {
        short sessions = 0;
        short databases = 0;
        short recordsets = 0;
        while (!done) {
            server_.GetConfiguration(sessions, databases, recordsets);
            EXPECT_EQ(sessions, kSessions);
            EXPECT_LE(databases, kSessions);
            EXPECT_EQ(server_.GetSectionCount(), kSessions);
            const CString reason = server_.GetLastErrorString();
            EXPECT_TRUE(reason.IsEmpty() || reason.GetLength() > 20);
            server_.GetDatabase();
            tk::session::ReadStatistics(server_);
        }
    });
    OnAllThreads([&](int) {
        std::vector<CTDatabase*> mine;
        for (int i = 0; i < Operations() / 16; ++i) {
            CTDatabase* const database = server_.InvokeDatabase(nullptr);
            if (database != nullptr) mine.push_back(database);
            if (mine.size() < 2) continue;
            for (CTDatabase* const each : mine)
                server_.RevokeDatabase(each);
            mine.clear();
        }
        for (CTDatabase* const each : mine)
            server_.RevokeDatabase(each);
    });
    done = true;
    reader.join();
    ExpectNothingLost();
}

TEST_F(PoolThreads, DerivedServersForceAndRegisterMeanwhile) {
    CTDatabase* const renewed = server_.InvokeDatabase(nullptr);
    OnAllThreads([&](int thread) {
        for (int i = 0; i < Operations() / 8; ++i) {
            if (thread % 4 == 0) {
                server_.RegisterRole(renewed, nullptr, 0);
            } else if (thread % 4 == 1) {
                tick_ += 10'000;
                server_.ForceDatabase(nullptr);
            } else if (CTDatabase* const database = server_.InvokeDatabase(nullptr)) {
                server_.RevokeDatabase(database);
            }
        }
    });
    server_.RegisterRole(renewed, nullptr, 0);
    server_.RevokeDatabase(renewed);
    ExpectNothingLost();
    ExpectAllFree(&CTDataServer::InvokeDatabase);
}

TEST_F(PoolThreads, AFaultOnOneThreadLeavesTheLockToTheOthers) {
    static const short kReadOnly = 7;
    std::atomic<int> faults = 0;
    OnAllThreads([&](int thread) {
        short number = 0;
        for (int i = 0; i < 200; ++i) {
            if (thread % 4 == 0) {
                faults += server_.GetConfiguration(number, number, const_cast<short&>(kReadOnly)) == 0 ? 1 : 0;
            } else if (CTDatabase* const database = server_.InvokeDatabase(nullptr)) {
                server_.RevokeDatabase(database);
            }
        }
    });
    EXPECT_EQ(faults, kThreads / 4 * 200);
    EXPECT_EQ(tk::session::ReadStatistics(server_).databases.free, kSessions);
}

}  // namespace
}  // namespace tk::test
