// The client: what a fault in any of its members becomes, and what it leaves.
#include <functional>
#include <random>

#include "session/client_fixture.h"
#include "session/client_members.h"
#include "session/pool_faults.h"

namespace tk::test {
namespace {

TEST_F(DataClient, AFaultReturnsTheLoanAndNamesTheMember) {
    const LosesMemory lost;
    for (const auto& member : ClientMembers()) {
        SCOPED_TRACE(member.place);
        for (const auto& fault : kFaults) {
            SCOPED_TRACE(fault.label);
            client_.Revoke();
            client_.Invoke(&server_);
            Borrow();
            {
                const OneFault once(*connection_.Get(), *records_.Get(), fault.happen);
                EXPECT_EQ(member.call(client_), member.refused);
                EXPECT_TRUE(once.HasHappened());
            }
            EXPECT_EQ(Error(), ClientFault(member.place));
            EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault(member.place))));
            EXPECT_EQ(Configuration(server_), member.needs == Needs::Connection ? "4 4 3" : "4 3 4");
        }
    }
}

TEST_F(DataClient, AFailureThatAnAccessorLetsOutIsAFaultToo) {
    for (const auto& member : ClientMembers()) {
        if (!member.letsFailuresOut) continue;
        SCOPED_TRACE(member.place);
        client_.Revoke();
        client_.Invoke(&server_);
        Borrow();
        {
            const OneFault once(*connection_.Get(), *records_.Get(), [] { AfxThrowOleException(E_FAIL); });
            EXPECT_EQ(member.call(client_), member.refused);
        }
        EXPECT_EQ(Error(), ClientFault(member.place));
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault(member.place))));
        EXPECT_EQ(Configuration(server_), "4 3 4");
    }
}

TEST_F(DataClient, AFaultWhileOpeningHoldsNothing) {
    const LosesMemory lost;
    for (const auto& member : OpeningMembers()) {
        SCOPED_TRACE(member.place);
        for (const auto& fault : kFaults) {
            SCOPED_TRACE(fault.label);
            {
                const OneFault once(*connection_.Get(), *records_.Get(), fault.happen);
                EXPECT_EQ(member.call(client_), "0");
            }
            EXPECT_EQ(Error(), ClientFault(member.place));
            EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault(member.place))));
            EXPECT_EQ(client_.GetRecordset(), nullptr);
            EXPECT_EQ(Configuration(server_), "4 4 4");
        }
    }
}

TEST_F(DataClient, AFaultWhileClosingStillReturnsTheRecordset) {
    const LosesMemory lost;
    for (const auto& fault : kFaults) {
        SCOPED_TRACE(fault.label);
        Borrow();
        {
            const OneFault once(*connection_.Get(), *records_.Get(), fault.happen);
            EXPECT_EQ(client_.CloseSQL(), 1);
        }
        EXPECT_EQ(Error(), ClientFault("CloseSQL"));
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault("CloseSQL"))));
        EXPECT_EQ(client_.GetRecordset(), nullptr);
        EXPECT_EQ(Configuration(server_), "4 3 4");
        client_.EndTrans();
    }
}

TEST_F(DataClient, AFaultInAQuestionIsTheServers) {
    const LosesMemory lost;
    for (const auto& fault : kFaults) {
        SCOPED_TRACE(fault.label);
        {
            const OneFault once(*connection_.Get(), *records_.Get(), fault.happen);
            EXPECT_STREQ(client_.GetDbmsName(), "");
        }
        EXPECT_EQ(Error(), ServerFault("GetDbmsName"));
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ServerFault("GetDbmsName"))));
        // The lookups of the connection end their faults themselves, and say so in its own words.
        {
            const OneFault once(*connection_.Get(), *records_.Get(), fault.happen);
            EXPECT_STREQ(client_.GetSpecialValue("q", "A"), ServerFault("GetSpecialValue").c_str());
        }
        {
            const OneFault once(*connection_.Get(), *records_.Get(), fault.happen);
            EXPECT_STREQ(client_.GetRecordValues("q", "|"), ServerFault("GetRecordValues").c_str());
        }
        EXPECT_THAT(TakeLog(), IsEmpty());
    }
}

TEST_F(DataClient, AFaultWhileBorrowingAndReturningGivesNothingBack) {
    Borrow();
    CTRecordset* const held = client_.GetRecordset();
    client_.Invoke(&NowhereServer());
    EXPECT_EQ(client_.EndTrans(), 0);
    EXPECT_EQ(Error(), ClientFault("EndTrans"));
    EXPECT_EQ(client_.Revoke(), 0);
    EXPECT_EQ(Error(), ClientFault("ForceRelease"));
    EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault("EndTrans")), ErrorRecord(ClientFault("ForceRelease"))));
    client_.Invoke(&server_);
    EXPECT_EQ(client_.GetRecordset(), held);
    EXPECT_EQ(Configuration(server_), "4 3 3") << "the loans of the server that is there";
    EXPECT_EQ(client_.EndTrans(), 1);
    CTDataClient fresh;
    fresh.Invoke(&NowhereServer());
    EXPECT_EQ(fresh.BeginTrans(), 0);
    EXPECT_STREQ(fresh.GetLastErrorString(), ClientFault("BeginTrans").c_str());
    // The server's own member may have had its fault before, and given nothing, as it does when it has nothing.
    const Lines log = TakeLog();
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back(), ErrorRecord(ClientFault("BeginTrans")));
    fresh.Invoke(nullptr);
}

TEST_F(DataClient, AFaultOutsideTheSessionNamesTheMemberToo) {
    const auto expect = [&](const char* place, Needs needs, const std::function<void()>& call) {
        SCOPED_TRACE(place);
        client_.Invoke(&server_);
        client_.Revoke();
        client_.Invoke(&server_);
        Borrow();
        TakeLog();
        client_.Invoke(&NowhereServer());
        call();
        // What gives the loan back needs the server as well.
        EXPECT_THAT(TakeLog(),
                    ElementsAre(ErrorRecord(ClientFault(place)),
                                ErrorRecord(ClientFault(needs == Needs::Connection ? "EndTrans" : "CloseSQL"))));
    };
    for (const auto& member : ClientMembers())
        expect(member.place, member.needs, [&] { EXPECT_EQ(member.call(client_), member.refused); });
    expect("GetDispatch", Needs::Recordset, [&] { EXPECT_EQ(client_.GetDispatch(), nullptr); });
    client_.Invoke(&server_);
}

TEST_F(DataClient, FaultsAreCountedWithTheServer) {
    const LosesMemory lost;
    Borrow();
    {
        const OneFault once(*connection_.Get(), *records_.Get(), ReadNull);
        client_.MoveNext();
    }
    {
        const OneFault once(*connection_.Get(), *records_.Get(), WriteNull);
        client_.ExecuteSQL("x");
    }
    {
        const OneFault once(*connection_.Get(), *records_.Get(), ReadNull);
        client_.GetDbmsName();
    }
    TakeLog();
    const auto statistics = tk::session::ReadStatistics(server_);
    EXPECT_EQ(statistics.clientFaults, 2u);
    EXPECT_EQ(statistics.faults, 1u);
    const std::string text(tk::session::ToPrometheusText(statistics, "stock"));
    EXPECT_NE(text.find("tkkernel_pool_client_faults_total{pool=\"stock\"} 2\n"), std::string::npos) << text;
    EXPECT_NE(text.find("tkkernel_pool_faults_total{pool=\"stock\"} 1\n"), std::string::npos) << text;
}

TEST_F(DataClient, FaultsWithoutALivingServerAreNobodys) {
    CTDataClient fresh;
    EXPECT_EQ(fresh.OpenSQL("x", 1, 0), 0);
    // Memory that could be a server, and is none.
    alignas(CTDataServer) static unsigned char memory[sizeof(CTDataServer)];
    const std::string before(reinterpret_cast<char*>(memory), sizeof(memory));
    fresh.Invoke(reinterpret_cast<CTDataServer*>(memory));
    VARIANT key;
    VariantInit(&key);
    fresh.GetValueString(key);
    fresh.Invoke(nullptr);
    TakeLog();
    EXPECT_EQ(tk::session::ReadStatistics(server_).clientFaults, 0u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(memory), sizeof(memory)), before);
}

/// Sanitizers make a fault some twenty times as slow, and find what they look for in fewer.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kRandomFaults = 5'000;
#else
constexpr int kRandomFaults = 100'000;
#endif

TEST_F(DataClient, NoFaultAnywhereLosesASession) {
    const LosesMemory lost;
    constexpr unsigned kSeed = 20031121;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    const auto pick = [&](std::size_t count) { return random() % count; };
    connection_ = ScriptedObject::Make("connection", nullptr);
    records_ = ScriptedObject::Make("records", nullptr);
    client_.Revoke();
    server_.CloseDatabase();
    Open(server_, 4);
    records_->On(Get(0)).Returns(Object(MakeFields({{"A", Text("x")}}).Get()));
    client_.Invoke(&server_);
    calls_.remembersSteps = false;
    int faults = 0;
    while (faults < kRandomFaults) {
        client_.BeginTrans();
        if (client_.GetRecordset() == nullptr) client_.OpenSQL("select 1", 10, 1);
        const auto& members = pick(8) == 0 ? OpeningMembers() : ClientMembers();
        const auto& member = members[pick(members.size())];
        TakeLog();
        bool happened = false;
        std::string result;
        {
            const OneFault once(*connection_.Get(), *records_.Get(), kFaults[pick(std::size(kFaults))].happen,
                                1 + static_cast<int>(pick(4)));
            result = member.call(client_);
            happened = once.HasHappened();
        }
        journal_.Take();
        client_.EndTrans();
        if (happened) {
            ++faults;
            const Lines log = TakeLog();
            ASSERT_EQ(log.size(), 1u) << member.place;
            // An open closes what is held first: a fault there is that member's, and the open goes on.
            if (log[0] != ErrorRecord(ClientFault("CloseSQL"))) {
                ASSERT_EQ(log[0], ErrorRecord(ClientFault(member.place)));
                ASSERT_EQ(result, member.refused) << member.place;
            }
        }
        const auto statistics = tk::session::ReadStatistics(server_);
        for (const auto& kind : {statistics.databases, statistics.recordsets})
            ASSERT_EQ(kind.free + kind.leased, 4) << member.place;
        ASSERT_EQ(statistics.databases.leased, 0);
        ASSERT_EQ(statistics.recordsets.leased, client_.GetRecordset() != nullptr ? 1 : 0);
    }
    client_.CloseSQL();
    EXPECT_EQ(Configuration(server_), "4 4 4");
}

}  // namespace
}  // namespace tk::test
