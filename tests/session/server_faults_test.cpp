// The server: what a fault in any of its members becomes, and what it leaves.
#include <functional>
#include <span>
#include <thread>

#include "session/pool_faults.h"
#include "session/pool_fixture.h"

namespace tk::test {
namespace {

class OpenedServer : public CTDataServer {
public:
    using CTDataServer::ForceDatabase;
    using CTDataServer::ForceRecordset;
    using CTDataServer::RegisterRole;
};

class ServerFaults : public PoolTest {
protected:
    /// How often the automation objects are called from here on, until the next look.
    void CountCalls() {
        callCount_ = 0;
        connection_->BeforeEachCall([this] { ++callCount_; });
        records_->BeforeEachCall([this] { ++callCount_; });
    }
    int TakeCount() {
        connection_->BeforeEachCall({});
        records_->BeforeEachCall({});
        return callCount_;
    }

    int callCount_ = 0;
};

/// Another thread gets into the server within a time.
bool LetsAnotherThreadIn(CTDataServer& server) {
    std::atomic<bool> isIn = false;
    std::thread other([&] {
        Configuration(server);
        isIn = true;
    });
    constexpr ULONGLONG kLimitMs = 10'000;
    const ULONGLONG end = GetTickCount64() + kLimitMs;
    while (!isIn && GetTickCount64() < end)
        std::this_thread::yield();
    const bool wasIn = isIn;
    if (wasIn) {
        other.join();
    } else {
        other.detach();
    }
    return wasIn;
}

TEST_F(ServerFaults, OfTheClockKeepTheSession) {
    for (const auto& fault : kFaults) {
        SCOPED_TRACE(fault.label);
        OpenedServer server;
        Open(server, 4);
        const auto breakClock = [&] { clockFault_ = fault.happen; };
        breakClock();
        EXPECT_EQ(server.RegisterRole(nullptr, nullptr, 1), 0);
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("RegisterRole"))));
        CTDatabase* const next = server.GetDatabase();
        breakClock();
        EXPECT_EQ(server.InvokeDatabase(nullptr), nullptr);
        EXPECT_EQ(server.GetLastErrorString(), CString(ServerFault("RegisterRole").c_str()));
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("RegisterRole"))));
        EXPECT_EQ(Configuration(server), "4 4 4");
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(server.InvokeDatabase(nullptr), next + i) << "in the same order";
        breakClock();
        EXPECT_EQ(server.ForceDatabase(nullptr), nullptr);
        breakClock();
        EXPECT_EQ(server.ForceRecordset(nullptr), nullptr);
        EXPECT_THAT(TakeLog(),
                    ElementsAre(ErrorRecord(ServerFault("ForceDatabase")), ErrorRecord(ServerFault("ForceRecordset"))));
        breakClock();
        EXPECT_EQ(server.InvokeDatabase(nullptr), nullptr);
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("ForceDatabase")),
                                           WarningRecord("打开数据库会话失败", kOccupiedText)));
        EXPECT_EQ(Configuration(server), "4 0 4");
    }
}

TEST_F(ServerFaults, OfTheLogAreTheLendersOwn) {
    for (const auto& fault : kFaults) {
        SCOPED_TRACE(fault.label);
        OpenedServer server;
        Open(server, 4);
        for (int i = 0; i < 4; ++i) {
            server.InvokeDatabase(nullptr);
            server.InvokeRecordset(nullptr);
        }
        bool broken = false;
        calls_.onStep = [&](const std::string& step) {
            if (step != "open" || std::exchange(broken, true)) return;
            std::atomic_signal_fence(std::memory_order_seq_cst);
            fault.happen();
        };
        EXPECT_EQ(server.InvokeDatabase(nullptr), nullptr);
        broken = false;
        EXPECT_EQ(server.InvokeRecordset(nullptr), nullptr);
        calls_.onStep = {};
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("InvokeDatabase")),
                                           ErrorRecord(ServerFault("InvokeRecordset"))));
        EXPECT_EQ(server.GetLastErrorString(), CString(ServerFault("InvokeRecordset").c_str()));
        EXPECT_EQ(tk::session::ReadStatistics(server).faults, 2u);
    }
}

TEST_F(ServerFaults, OfTheCallersMemoryLeaveTheLock) {
    static const short kReadOnly = 7;
    OpenedServer server;
    Open(server, 4);
    short sessions = 0;
    EXPECT_EQ(server.GetConfiguration(sessions, const_cast<short&>(kReadOnly), sessions), 0);
    EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("GetConfiguration"))));
    EXPECT_TRUE(LetsAnotherThreadIn(server));
}

TEST_F(ServerFaults, OfASessionWhileOpening) {
    const LosesMemory lost;
    for (const auto& fault : kFaults) {
        SCOPED_TRACE(fault.label);
        OpenedServer server;
        Announce(4);
        {
            const OneFault once(*connection_.Get(), *records_.Get(), fault.happen, 3);
            EXPECT_EQ(server.OpenDatabase("stock", "sa", "", 4), 0);
        }
        EXPECT_EQ(server.GetLastErrorString(), CString(ServerFault("OpenDatabase").c_str()));
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("OpenDatabase"))));
        EXPECT_EQ(server.CloseDatabase(), 1);
        EXPECT_EQ(Configuration(server), "4 0 0") << "as behind an open that failed";
        RegisterAgain();
    }
}

TEST_F(ServerFaults, OfAnyCallWhileOpeningLeaveWhatAFailedOpenLeaves) {
    int calls = 0;
    {
        OpenedServer whole;
        CountCalls();
        Open(whole, 4);
        calls = TakeCount();
    }
    ASSERT_GT(calls, 8);
    for (int call = 1; call <= calls; ++call) {
        SCOPED_TRACE(call);
        RegisterAgain();
        OpenedServer server;
        Announce(4);
        {
            const OneFault once(
                *connection_.Get(), *records_.Get(), [] { throw 7; }, call);
            ASSERT_EQ(server.OpenDatabase("stock", "sa", "", 4), 0);
        }
        TakeLog();
        EXPECT_EQ(Configuration(server), "4 0 0");
        EXPECT_EQ(server.GetDatabase(), nullptr);
        EXPECT_EQ(server.InvokeDatabase(nullptr), nullptr);
        EXPECT_EQ(server.InvokeRecordset(nullptr), nullptr);
        EXPECT_STREQ(server.GetLastErrorString(), kOccupiedText);
        EXPECT_EQ(server.RevokeDatabase(nullptr), 1);
        EXPECT_EQ(Configuration(server), "4 0 0");
        TakeLog();
        Open(server, 5);
        EXPECT_EQ(Configuration(server), "5 5 5") << "and it opens again";
    }
}

TEST_F(ServerFaults, OfASessionWhileClosingLeaveTheOthersToBeClosed) {
    const LosesMemory lost;
    for (const auto& fault : kFaults) {
        SCOPED_TRACE(fault.label);
        OpenedServer server;
        Open(server, 4);
        {
            const OneFault once(*connection_.Get(), *records_.Get(), fault.happen);
            EXPECT_EQ(server.CloseDatabase(), 0);
        }
        EXPECT_EQ(server.GetLastErrorString(), CString(ServerFault("CloseDatabase").c_str()));
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("CloseDatabase"))));
        EXPECT_EQ(Configuration(server), "0 0 0");
        EXPECT_EQ(server.GetDatabase(), nullptr);
        EXPECT_EQ(tk::session::ReadStatistics(server).faults, 1u);
        EXPECT_EQ(server.CloseDatabase(), 1) << "it is closed";
        Open(server, 5);
        EXPECT_EQ(Configuration(server), "5 5 5");
    }
}

TEST_F(ServerFaults, OfAnyCallWhileClosingCostOneSessionAtMost) {
    const LosesMemory lost;
    connection_ = Make("connection");
    records_ = Make("records");
    int calls = 0;
    {
        OpenedServer whole;
        Open(whole, 4);
        CountCalls();
        ASSERT_EQ(whole.CloseDatabase(), 1);
        calls = TakeCount();
    }
    ASSERT_GE(calls, 8) << "each session by the pool, and once more when it ends";
    for (int call = 1; call <= calls; ++call) {
        SCOPED_TRACE(call);
        OpenedServer server;
        Open(server, 4);
        {
            const OneFault once(*connection_.Get(), *records_.Get(), ReadNull, call);
            EXPECT_EQ(server.CloseDatabase(), 0);
            EXPECT_TRUE(once.HasHappened());
        }
        const Lines sent = journal_.Take();
        EXPECT_GE(std::count(sent.begin(), sent.end(), "connection.call 5"), 7);
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("CloseDatabase"))));
        EXPECT_EQ(Configuration(server), "0 0 0");
    }
    aliveBefore_ += 4;  // the connection, its properties and the recordset, kept by the sessions that were lost
}

TEST_F(ServerFaults, OfNestedMembersAreToldOfWithoutTheLock) {
    OpenedServer server;
    Open(server, 4);
    bool letIn = false;
    calls_.onStep = [&](const std::string& step) {
        if (step == "open") letIn = LetsAnotherThreadIn(server);
    };
    const struct {
        const char* label;
        const char* place;
        std::function<void()> call;
    } kRows[] = {
        {"registering", "RegisterRole", [&] { server.RegisterRole(nullptr, nullptr, 0); }},
        {"forcing a connection", "ForceDatabase", [&] { server.ForceDatabase(nullptr); }},
        {"forcing a recordset", "ForceRecordset", [&] { server.ForceRecordset(nullptr); }},
        {"registering a loan", "RegisterRole", [&] { server.InvokeRecordset(nullptr); }},
        {"forcing for a loan", "ForceDatabase",
         [&] {
             for (int i = 0; i < 5; ++i)
                 server.InvokeDatabase(nullptr);
         }},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        letIn = false;
        // The last one has to find nothing free before the clock is looked at.
        int looks = row.label == std::string("forcing for a loan") ? 5 : 1;
        calls_.clock = [&] {
            if (--looks == 0) ReadNull();
            return tick_;
        };
        row.call();
        EXPECT_TRUE(letIn);
        const Lines log = TakeLog();
        ASSERT_FALSE(log.empty());
        EXPECT_EQ(log[0], ErrorRecord(ServerFault(row.place)));
    }
    calls_.onStep = {};
}

/// Every session is lent, and opened.
void BorrowAll(CTDataServer& server, std::span<CTDataClient> clients) {
    for (CTDataClient& client : clients) {
        client.Invoke(&server);
        ASSERT_EQ(client.OpenSQL("select 1", 10, 1), 1) << client.GetLastErrorString();
    }
}

TEST_F(ServerFaults, OfAClientWhoseLoanIsTakenOverAreToldOfWithoutTheLock) {
    const LosesMemory lost;
    for (const auto& fault : kFaults) {
        for (const bool byForce : {false, true}) {
            SCOPED_TRACE(fault.label + std::string(byForce ? ", by force" : ", for a loan"));
            OpenedServer server;
            Open(server, 4);
            CTDataClient clients[4];
            ASSERT_NO_FATAL_FAILURE(BorrowAll(server, clients));
            tick_ += 180'000;
            bool letIn = false;
            calls_.onStep = [&](const std::string& step) {
                if (step == "open") letIn = LetsAnotherThreadIn(server);
            };
            {
                const OneFault once(*connection_.Get(), *records_.Get(), fault.happen);
                EXPECT_NE(byForce ? server.ForceRecordset(nullptr) : server.InvokeRecordset(nullptr), nullptr);
            }
            calls_.onStep = {};
            EXPECT_TRUE(letIn);
            EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault("CloseSQL"))));
            EXPECT_EQ(Configuration(server), "4 4 1") << "given back all the same, and leased";
            EXPECT_EQ(server.GetLastErrorString(), CString()) << "the client's fault";
            int told = 0;
            for (auto& client : clients)
                told += client.GetLastErrorString() == CString(ClientFault("CloseSQL").c_str()) ? 1 : 0;
            EXPECT_EQ(told, 1);
            const auto statistics = tk::session::ReadStatistics(server);
            EXPECT_EQ(statistics.clientFaults, 1u);
            EXPECT_EQ(statistics.faults, 0u);
            TakeLog();
        }
    }
}

TEST_F(ServerFaults, OfAClientAndOfTheServerInOneTakeoverAreToldOfInTheirOrder) {
    const LosesMemory lost;
    OpenedServer server;
    Open(server, 4);
    CTDataClient clients[4];
    ASSERT_NO_FATAL_FAILURE(BorrowAll(server, clients));
    tick_ += 180'000;
    int looks = 2;  // for the age, and for the new lease
    calls_.clock = [&] {
        if (--looks == 0) ReadNull();
        return tick_;
    };
    {
        const OneFault once(*connection_.Get(), *records_.Get(), WriteNull);
        EXPECT_NE(server.InvokeRecordset(nullptr), nullptr);
    }
    EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault("CloseSQL")), ErrorRecord(ServerFault("RegisterRole"))));
}

TEST_F(ServerFaults, OfRegisteringATakeoverStillHandOutWhatWasTaken) {
    OpenedServer server;
    Open(server, 4);
    for (int i = 0; i < 4; ++i)
        server.InvokeDatabase(nullptr);
    tick_ += 180'000;
    int looks = 2;  // for the age, and for the new lease
    calls_.clock = [&] {
        if (--looks == 0) ReadNull();
        return tick_;
    };
    CTDatabase* const taken = server.InvokeDatabase(nullptr);
    EXPECT_NE(taken, nullptr);
    EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("RegisterRole"))));
    EXPECT_EQ(Configuration(server), "4 0 4");
    server.RevokeDatabase(taken);
    EXPECT_EQ(Configuration(server), "4 1 4") << "by its former lease";
}

TEST_F(ServerFaults, OfAServerThatIsNoneNameTheMember) {
    using S = CTDataServer;
    constexpr void* kNobody = nullptr;
    S& server = NowhereServer();
    short number = 0;
    const auto expectFault = [&](const char* place) {
        SCOPED_TRACE(place);
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault(place))));
    };
    EXPECT_EQ(CallAnyway(server, &S::OpenDatabase, "stock", "", "", short{4}), 0);
    expectFault("OpenDatabase");
    EXPECT_EQ(CallAnyway(server, &S::CloseDatabase), 0);
    expectFault("CloseDatabase");
    EXPECT_EQ(CallAnyway(server, &S::InvokeDatabase, kNobody), nullptr);
    expectFault("InvokeDatabase");
    EXPECT_EQ(CallAnyway(server, &S::InvokeRecordset, kNobody), nullptr);
    expectFault("InvokeRecordset");
    EXPECT_EQ(CallAnyway(server, &S::RevokeDatabase, static_cast<CTDatabase*>(nullptr)), 0);
    expectFault("RevokeDatabase");
    EXPECT_EQ(CallAnyway(server, &S::RevokeRecordset, static_cast<CTRecordset*>(nullptr)), 0);
    expectFault("RevokeRecordset");
    EXPECT_STREQ(CallAnyway(server, &S::GetDbmsName), "");
    expectFault("GetDbmsName");
    EXPECT_STREQ(CallAnyway(server, &S::GetSpecialValue, "q", "A"), "");
    expectFault("GetSpecialValue");
    EXPECT_STREQ(CallAnyway(server, &S::GetRecordValues, "q", "|"), "");
    expectFault("GetRecordValues");
    EXPECT_EQ(CallAnyway(server, &S::GetConfiguration, number, number, number), 0);
    expectFault("GetConfiguration");
    EXPECT_EQ(CallAnyway(server, &OpenedServer::ForceDatabase, kNobody), nullptr);
    expectFault("ForceDatabase");
    EXPECT_EQ(CallAnyway(server, &OpenedServer::ForceRecordset, kNobody), nullptr);
    expectFault("ForceRecordset");
    EXPECT_EQ(CallAnyway(server, &OpenedServer::RegisterRole, nullptr, kNobody, 0ul), 0);
    expectFault("RegisterRole");
}

TEST_F(ServerFaults, OfEveryCallOfASessionEndInItsDestructor) {
    const LosesMemory lost;
    for (const auto& fault : kFaults) {
        SCOPED_TRACE(fault.label);
        auto server = std::make_unique<OpenedServer>();
        Open(*server, 4);
        const auto happen = fault.happen;
        connection_->BeforeEachCall([happen] { happen(); });
        server.reset();
        connection_->BeforeEachCall({});
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("CloseDatabase"))));
    }
    aliveBefore_ += 3;  // sessions whose destruction faulted are lost, and what they refer to with them
}

}  // namespace
}  // namespace tk::test
