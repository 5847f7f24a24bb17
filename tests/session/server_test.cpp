// The server: opening, lending and returning, taking over, closing.
#include <set>
#include <thread>

#include "session/pool_fixture.h"
#include "tkkernel/util.h"

namespace tk::test {
namespace {

class Server : public CTDataServer {
public:
    using CTDataServer::ForceDatabase;
    using CTDataServer::ForceRecordset;
    using CTDataServer::IsEnabled;
    using CTDataServer::RegisterRole;
};

class DataServer : public PoolTest {
protected:
    Lines TakeCalls(const std::string& prefix) {
        Lines found;
        for (const auto& line : journal_.Take()) {
            if (line.starts_with(prefix)) found.push_back(line);
        }
        return found;
    }

    /// Borrows everything there is for one owner.
    std::vector<CTDatabase*> BorrowAll(CTDataServer& server, void* owner) {
        std::vector<CTDatabase*> lent;
        short sessions = 0;
        short free = 0;
        short other = 0;
        server.GetConfiguration(sessions, free, other);
        for (; free > 0; --free)
            lent.push_back(server.InvokeDatabase(owner));
        return lent;
    }
};

// ---- opening -----------------------------------------------------------------------------------------------------

TEST_F(DataServer, IsClosedAtFirst) {
    Server server;
    EXPECT_EQ(server.GetSectionCount(), 0);
    EXPECT_EQ(ErrorOf(server), "");
    EXPECT_EQ(server.GetDatabase(), nullptr);
    EXPECT_EQ(Configuration(server), "0 0 0");
    EXPECT_EQ(server.IsEnabled(), 0);
    EXPECT_EQ(ErrorOf(server), kNotOpenText);
}

TEST_F(DataServer, OpensFourSessionsAtLeast) {
    static const struct {
        const char* label;
        short wanted;
        short opened;
    } kRows[] = {
        {"the least number", -32768, 4},
        {"negative", -1, 4},
        {"none", 0, 4},
        {"one", 1, 4},
        {"three", 3, 4},
        {"four", 4, 4},
        {"five", 5, 5},
        {"seventeen", 17, 17},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Server server;
        Announce(row.opened);
        EXPECT_EQ(server.OpenDatabase("stock", "sa", "", row.wanted), 1);
        EXPECT_EQ(server.GetSectionCount(), row.opened);
        EXPECT_EQ(server.IsEnabled(), 1);
        const std::string count = std::to_string(row.opened);
        EXPECT_EQ(Configuration(server), count + " " + count + " " + count);
    }
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(DataServer, OpensAsManyAsANumberCanSay) {
    connection_ = ScriptedObject::Make("connection", nullptr);
    records_ = ScriptedObject::Make("records", nullptr);
    Server server;
    Announce(32767);
    EXPECT_EQ(server.OpenDatabase("stock", "sa", "", 32767), 1);
    EXPECT_EQ(Configuration(server), "32767 32767 32767");
    std::set<CTDatabase*> lent;
    for (int i = 0; i < 32767; ++i)
        lent.insert(server.InvokeDatabase(nullptr));
    EXPECT_EQ(lent.size(), 32767u);
    EXPECT_EQ(Configuration(server), "32767 0 32767");
    for (CTDatabase* database : lent)
        server.RevokeDatabase(database);
    EXPECT_EQ(Configuration(server), "32767 32767 32767");
}

TEST_F(DataServer, OpensEachConnectionAndBindsItsRecordset) {
    Server server;
    Announce(4);
    ASSERT_EQ(server.OpenDatabase("stock", "sa", "secret", 4), 1);
    const Lines calls = journal_.Take();
    const Lines expected = {
        "connection.put 8 (I4 3)",
        "connection.put 2 (I4 1800)",
        "connection.put 3 (I4 20)",
        "connection.call 10 (BSTR \"DSN=stock;UID=sa;PWD=secret\", BSTR \"sa\", BSTR \"secret\", I4 -1)",
        "connection.get 500",
        "properties.get 1",
        "connection.get 0",
        "connection.get 18",
    };
    ASSERT_GE(calls.size(), expected.size());
    for (const auto& line : expected)
        EXPECT_EQ(std::count(calls.begin(), calls.end(), line) % 4, 0) << line;
    EXPECT_EQ(std::count(calls.begin(), calls.end(), expected[3]), 4);
}

TEST_F(DataServer, KeepsOneHundredAndTwentySevenBytesOfEachText) {
    const std::string long_ = std::string(126, 'x');
    const struct {
        const char* label;
        std::string given;
        std::string kept;
    } kRows[] = {
        {"fits", long_ + "y", long_ + "y"},
        {"one too many", long_ + "yz", long_ + "y"},
        {"far too many", std::string(5000, 'x'), std::string(127, 'x')},
        {"a character across the limit", long_ + "库y", long_},
        {"a character up to the limit", long_.substr(1) + "库y", long_.substr(1) + "库"},
        {"empty", "", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Server server;
        Announce(4);
        ASSERT_EQ(server.OpenDatabase(row.given.c_str(), row.given.c_str(), row.given.c_str(), 4), 1);
        const Lines calls = TakeCalls("connection.call 10");
        ASSERT_EQ(calls.size(), 4u);
        EXPECT_EQ(calls[0], "connection.call 10 (BSTR \"DSN=" + row.kept + ";UID=" + row.kept + ";PWD=" + row.kept +
                                "\", BSTR \"" + row.kept + "\", BSTR \"" + row.kept + "\", I4 -1)");
    }
    Server server;
    Announce(4);
    ASSERT_EQ(server.OpenDatabase(nullptr, nullptr, nullptr, 4), 1);
    EXPECT_EQ(TakeCalls("connection.call 10").at(0),
              "connection.call 10 (BSTR \"DSN=;UID=;PWD=\", BSTR \"\", BSTR \"\", I4 -1)");
}

TEST_F(DataServer, AFailedOpenSaysWhatItsSessionSaysAndIsLogged) {
    Server server;
    Announce(3);
    connection_->On(Call(10)).Then().Then().Fails("登录失败");
    EXPECT_EQ(server.OpenDatabase("stock", "sa", "", 6), 0);
    EXPECT_EQ(ErrorOf(server), "登录失败\r\n打开数据库失败");
    EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord("登录失败\r\n打开数据库失败")));
    EXPECT_EQ(server.GetSectionCount(), 6) << "stays what was wanted";
    EXPECT_EQ(Configuration(server), "6 0 0");
    EXPECT_EQ(server.GetDatabase(), nullptr);
    EXPECT_EQ(server.IsEnabled(), 1);
    EXPECT_EQ(server.InvokeDatabase(nullptr), nullptr);
    EXPECT_EQ(ErrorOf(server), kOccupiedText) << "not that it is not open";
    EXPECT_EQ(server.InvokeRecordset(nullptr), nullptr);
    EXPECT_EQ(server.RevokeDatabase(nullptr), 1);
    EXPECT_EQ(server.CloseDatabase(), 1);
    EXPECT_EQ(server.GetSectionCount(), 6) << "closing does nothing";
    connection_->On(Call(10)) = Script();
    Open(server, 5);
    EXPECT_EQ(Configuration(server), "5 5 5");
}

TEST_F(DataServer, AnOpenThatCannotBindItsRecordsetJoinsBothTexts) {
    Server server;
    Announce(1);
    recordsets_.reset();  // Wine refuses a class that is registered already
    recordsets_ = std::make_unique<RegisteredClass>(kRecordsetClass);
    recordsets_->Refuse(E_ACCESSDENIED);
    EXPECT_EQ(server.OpenDatabase("stock", "sa", "", 4), 0);
    // The connection has said that its object was made, without a break before what the recordset says.
    const std::string text = ErrorOf(server);
    const CString denied = LookupErrorText(static_cast<DWORD>(E_ACCESSDENIED));  // in the system's words
    EXPECT_NE(text.find(denied), std::string::npos) << text;
    const Lines log = TakeLog();
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back(), ErrorRecord(text));
    EXPECT_EQ(Configuration(server), "4 0 0");
}

TEST_F(DataServer, AnOpenPoolThatIsOpenedAgainKeepsWhatIsLentUsable) {
    Server server;
    Open(server, 4);
    CTDatabase* const lent = server.InvokeDatabase(nullptr);
    Open(server, 5);
    EXPECT_EQ(Configuration(server), "5 5 5");
    EXPECT_EQ(lent->GetState(), 1);
    EXPECT_EQ(server.RevokeDatabase(lent), 1);
    EXPECT_EQ(Configuration(server), "5 6 5") << "its lease was not forgotten";
    EXPECT_EQ(server.CloseDatabase(), 1);
    EXPECT_EQ(Configuration(server), "0 0 0");
}

// ---- lending and returning ---------------------------------------------------------------------------------------

TEST_F(DataServer, LendsWhatWasReturnedInTheOrderOfTheReturns) {
    Server server;
    Open(server, 4);
    CTDatabase* lent[4];
    for (auto& database : lent)
        database = server.InvokeDatabase(nullptr);
    EXPECT_EQ(std::set<CTDatabase*>(std::begin(lent), std::end(lent)).size(), 4u);
    EXPECT_EQ(lent[1], lent[0] + 1) << "at first in the order of opening";
    for (const int i : {2, 0, 3, 1})
        EXPECT_EQ(server.RevokeDatabase(lent[i]), 1);
    for (const int i : {2, 0, 3, 1})
        EXPECT_EQ(server.InvokeDatabase(nullptr), lent[i]);
    EXPECT_EQ(Configuration(server), "4 0 4");
}

TEST_F(DataServer, LendsConnectionsAndRecordsetsApart) {
    Server server;
    Open(server, 4);
    CTRecordset* const first = server.InvokeRecordset(nullptr);
    CTRecordset* const second = server.InvokeRecordset(nullptr);
    EXPECT_EQ(second, first + 1);
    EXPECT_EQ(Configuration(server), "4 4 2");
    server.InvokeDatabase(nullptr);
    EXPECT_EQ(Configuration(server), "4 3 2");
    server.RevokeRecordset(first);
    EXPECT_EQ(Configuration(server), "4 3 3");
}

TEST_F(DataServer, TakesNothingThatIsNotLent) {
    Server server;
    Open(server, 4);
    CTDatabase* const lent = server.InvokeDatabase(nullptr);
    CTRecordset* const records = server.InvokeRecordset(nullptr);
    CTDatabase other;
    const struct {
        const char* label;
        CTDatabase* database;
    } kRows[] = {
        {"null", nullptr},
        {"unreadable", reinterpret_cast<CTDatabase*>(16)},
        {"somebody's own", &other},
        {"free", lent + 1},
        {"a lent recordset", reinterpret_cast<CTDatabase*>(records)},
        {"inside a lent one", reinterpret_cast<CTDatabase*>(reinterpret_cast<char*>(lent) + 8)},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(server.RevokeDatabase(row.database), 1);
        EXPECT_EQ(Configuration(server), "4 3 3");
    }
    EXPECT_EQ(server.RevokeRecordset(nullptr), 1);
    EXPECT_EQ(server.RevokeDatabase(lent), 1);
    EXPECT_EQ(Configuration(server), "4 4 3");
    EXPECT_EQ(server.RevokeDatabase(lent), 1) << "twice";
    EXPECT_EQ(Configuration(server), "4 4 3");
    EXPECT_EQ(ErrorOf(server), "");
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(DataServer, RefusesEverythingWhileItIsClosed) {
    Server server;
    Server closed;
    Open(closed, 4);
    closed.CloseDatabase();
    journal_.Take();
    const struct {
        const char* label;
        std::function<bool(Server&)> refuses;
    } kRows[] = {
        {"InvokeDatabase", [](Server& s) { return s.InvokeDatabase(nullptr) == nullptr; }},
        {"InvokeRecordset", [](Server& s) { return s.InvokeRecordset(nullptr) == nullptr; }},
        {"RevokeDatabase", [](Server& s) { return s.RevokeDatabase(nullptr) == 0; }},
        {"RevokeRecordset", [](Server& s) { return s.RevokeRecordset(nullptr) == 0; }},
        {"IsEnabled", [](Server& s) { return s.IsEnabled() == 0; }},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        for (Server* const each : {&server, &closed}) {
            EXPECT_TRUE(row.refuses(*each));
            EXPECT_EQ(ErrorOf(*each), kNotOpenText);
        }
    }
    EXPECT_THAT(TakeLog(), IsEmpty());
    EXPECT_EQ(tk::session::ReadStatistics(server).refusedClosed, 2u);
}

TEST_F(DataServer, WarnsWhenEverythingIsLent) {
    Server server;
    Open(server, 4);
    BorrowAll(server, nullptr);
    EXPECT_EQ(server.InvokeDatabase(nullptr), nullptr);
    EXPECT_EQ(ErrorOf(server), kOccupiedText);
    EXPECT_THAT(TakeLog(), ElementsAre(WarningRecord("打开数据库会话失败", kOccupiedText)));
    for (int i = 0; i < 4; ++i)
        server.InvokeRecordset(nullptr);
    EXPECT_EQ(server.InvokeRecordset(nullptr), nullptr);
    EXPECT_THAT(TakeLog(), ElementsAre(WarningRecord("打开数据库会话失败", kOccupiedText)));
    EXPECT_EQ(Configuration(server), "4 0 0");
}

// ---- taking over -------------------------------------------------------------------------------------------------

TEST_F(DataServer, TakesOverALeaseOfThreeMinutes) {
    static const struct {
        const char* label;
        DWORD granted;
        DWORD now;
        bool taken;
    } kRows[] = {
        {"at once", 0, 0, false},
        {"a millisecond less", 0, 179'999, false},
        {"to the millisecond", 0, 180'000, true},
        {"long ago", 5, 4'000'000'000, true},
        {"the counter wrapped", 0xFFFF'FFF0, 179'984, false},
        {"the counter wrapped, a millisecond more", 0xFFFF'FFF0, 179'985, true},
        {"just before the wrap", 0xFFFF'FFFF - 180'000, 0xFFFF'FFFF, true},
        {"granted later than now, by a hair", 1000, 999, true},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Server server;
        Open(server, 4);
        tick_ = row.granted;
        BorrowAll(server, nullptr);
        for (int i = 0; i < 4; ++i)
            server.InvokeRecordset(nullptr);
        tick_ = row.now;
        EXPECT_EQ(server.InvokeDatabase(nullptr) != nullptr, row.taken);
        EXPECT_EQ(server.InvokeRecordset(nullptr) != nullptr, row.taken);
        EXPECT_EQ(TakeLog().size(), row.taken ? 0u : 2u);
        EXPECT_EQ(Configuration(server), "4 0 0") << "owners that are no clients give nothing back";
    }
}

/// The order in which leases are looked at: by bucket, in each the latest first.
std::vector<CTDatabase*> InMapOrder(std::vector<CTDatabase*> lent) {
    std::reverse(lent.begin(), lent.end());
    std::stable_sort(lent.begin(), lent.end(), [](CTDatabase* a, CTDatabase* b) {
        const auto bucket = [](CTDatabase* p) { return (reinterpret_cast<std::uintptr_t>(p) >> 4) % 17; };
        return bucket(a) < bucket(b);
    });
    return lent;
}

TEST_F(DataServer, TakesTheFirstOldLeaseInTheOrderOfTheMap) {
    Server server;
    Open(server, 40);
    const auto order = InMapOrder(BorrowAll(server, nullptr));
    ASSERT_EQ(order.size(), 40u);
    tick_ += 180'000;
    for (CTDatabase* const next : order)
        EXPECT_EQ(server.InvokeDatabase(nullptr), next);
    EXPECT_EQ(server.InvokeDatabase(nullptr), nullptr) << "all of them are renewed";
}

TEST_F(DataServer, PassesOverLeasesThatAreTooYoungHoweverOldTheOthersAre) {
    Server server;
    Open(server, 8);
    const auto order = InMapOrder(BorrowAll(server, nullptr));
    tick_ += 500'000;
    ASSERT_EQ(server.InvokeDatabase(nullptr), order[0]);  // renewed, in its place
    tick_ += 100'000;
    EXPECT_EQ(server.InvokeDatabase(nullptr), order[1]);
    tick_ += 80'000;
    EXPECT_EQ(server.InvokeDatabase(nullptr), order[0]) << "old enough again, and still the first";
}

TEST_F(DataServer, CallsTheClientWhoseConnectionItTakes) {
    Server server;
    Open(server, 4);
    CTDataClient client;
    client.Invoke(&server);
    client.BeginTrans();
    BorrowAll(server, nullptr);
    tick_ += 179'999;
    for (int i = 0; i < 3; ++i)
        server.RegisterRole(nullptr, nullptr, 1);  // other map
    tick_ += 1;
    // The three without a client may come first.
    CTDatabase* taken = nullptr;
    for (int i = 0; i < 4 && Configuration(server) == "4 0 4"; ++i)
        taken = server.InvokeDatabase(&server);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(Configuration(server), "4 1 4") << "given back by EndTrans, and leased again";
    EXPECT_EQ(client.ExecuteSQL("x"), 0);
    EXPECT_STREQ(client.GetLastErrorString(), kNoConnectionText);
    // Lent twice now; the second loan takes the lease along.
    EXPECT_EQ(server.InvokeDatabase(nullptr), taken);
    const auto statistics = tk::session::ReadStatistics(server);
    EXPECT_EQ(statistics.databases.doubled, 1u);
    EXPECT_EQ(statistics.databases.shared, 1u);
    EXPECT_EQ(statistics.databases.twice, 0);
    EXPECT_EQ(statistics.databases.free + statistics.databases.leased, 4);
    EXPECT_EQ(server.RevokeDatabase(taken), 1);
    EXPECT_EQ(Configuration(server), "4 1 4");
    EXPECT_EQ(server.RevokeDatabase(taken), 1) << "the other borrower comes too late";
    EXPECT_EQ(Configuration(server), "4 1 4");
}

TEST_F(DataServer, AReturnDuringATakeoverComesBeforeOrAfterIt) {
    Server server;
    Open(server, 4);
    CTDataClient client;
    client.Invoke(&server);
    client.BeginTrans();
    tick_ += 180'000;
    for (int i = 0; i < 3; ++i)
        ASSERT_NE(server.InvokeDatabase(nullptr), nullptr);
    // The lender looks at the clock with its lock held; the client gives back what is about to be taken.
    std::thread returning;
    bool begun = false;
    calls_.clock = [&] {
        if (!std::exchange(begun, true)) {
            returning = std::thread([&] { client.EndTrans(); });
            constexpr DWORD kUntilItWaits = 50;
            Sleep(kUntilItWaits);
        }
        return tick_;
    };
    CTDatabase* const taken = server.InvokeDatabase(nullptr);
    ASSERT_TRUE(begun);
    returning.join();
    ASSERT_NE(taken, nullptr);
    const auto statistics = tk::session::ReadStatistics(server);
    EXPECT_EQ(statistics.databases.takeovers, 1u);
    EXPECT_EQ(statistics.databases.doubled, 1u);
    EXPECT_EQ(statistics.databases.returns, 1u);
    EXPECT_EQ(statistics.databases.leased, 4) << "the taker's lease is there";
    EXPECT_EQ(statistics.databases.free, 1);
}

TEST_F(DataServer, CallsTheClientWhoseRecordsetItTakes) {
    Server server;
    Open(server, 4);
    CTDataClient clients[4];
    records_->On(Get(1054)).Returns(Long(0)).Then().Returns(Long(1));
    for (auto& client : clients) {
        client.Invoke(&server);
        ASSERT_EQ(client.OpenSQL("select 1", 10, 1), 1) << client.GetLastErrorString();
    }
    tick_ += 180'000;
    journal_.Take();
    CTRecordset* const taken = server.InvokeRecordset(nullptr);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(TakeCalls("records.call 1014").size(), 1u) << "closed for its client";
    int without = 0;
    for (auto& client : clients)
        without += client.GetRecordset() == nullptr ? 1 : 0;
    EXPECT_EQ(without, 1);
    EXPECT_EQ(Configuration(server), "4 4 1");
}

TEST_F(DataServer, NeverTouchesAnOwnerThatIsNoClient) {
    char block[sizeof(CTDataClient) + 64];
    std::fill(std::begin(block), std::end(block), 'x');
    const std::string before(block, sizeof(block));
    const struct {
        const char* label;
        void* owner;
    } kRows[] = {
        {"null", nullptr},
        {"unreadable", reinterpret_cast<void*>(16)},
        {"impossible", reinterpret_cast<void*>(~std::uintptr_t{0} - 64)},
        {"other memory", block},
        {"other memory, at an odd place", block + 1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Server server;
        Open(server, 4);
        BorrowAll(server, row.owner);
        tick_ += 180'000;
        EXPECT_NE(server.InvokeDatabase(nullptr), nullptr);
        EXPECT_EQ(Configuration(server), "4 0 4");
        EXPECT_EQ(std::string(block, sizeof(block)), before);
        EXPECT_THAT(TakeLog(), IsEmpty());
    }
}

TEST_F(DataServer, NullIsNoSessionOfAPoolWithoutSessions) {
    Server server;
    Announce(1);
    connection_->On(Call(10)).Fails("登录失败");
    ASSERT_EQ(server.OpenDatabase("stock", "sa", "", 4), 0);
    EXPECT_EQ(server.RegisterRole(nullptr, nullptr, 0), 1);
    EXPECT_EQ(server.RevokeDatabase(nullptr), 1);
    EXPECT_EQ(Configuration(server), "4 0 0");
    connection_->On(Call(10)) = Script();
    TakeLog();
}

TEST_F(DataServer, AClientHoldsNoRecordsetOfAPoolThatWasClosed) {
    Server server;
    Open(server, 4);
    CTDataClient client;
    client.Invoke(&server);
    ASSERT_EQ(client.OpenSQL("select 1", 10, 1), 1);
    ASSERT_NE(client.GetRecordset(), nullptr);
    EXPECT_EQ(server.CloseDatabase(), 1);
    EXPECT_EQ(client.GetRecordset(), nullptr);
    Open(server, 4);
    EXPECT_EQ(client.GetRecordset(), nullptr) << "a recordset of a former opening";
}

TEST_F(DataServer, AnOwnerThatIsDestroyedHasGivenEverythingBack) {
    Server server;
    Open(server, 4);
    {
        CTDataClient client;
        client.Invoke(&server);
        client.BeginTrans();
        EXPECT_EQ(Configuration(server), "4 3 4");
    }
    EXPECT_EQ(Configuration(server), "4 4 4");
}

TEST_F(DataServer, GivesAClientItsOwnOldLease) {
    Server server;
    Open(server, 4);
    CTDataClient client;
    client.Invoke(&server);
    for (int i = 0; i < 4; ++i)
        client.BeginTrans();  // the former ones are lost to it
    EXPECT_EQ(Configuration(server), "4 0 4");
    tick_ += 180'000;
    EXPECT_EQ(client.BeginTrans(), 1);
    EXPECT_EQ(client.EndTrans(), 1);
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(DataServer, RegistersWhatDerivedServersAskFor) {
    Server server;
    Open(server, 4);
    BorrowAll(server, nullptr);
    EXPECT_EQ(server.RegisterRole(nullptr, nullptr, 0), 1);
    tick_ += 180'000;
    // A lease of no object is in the first bucket, and nobody gets anything for it.
    EXPECT_EQ(server.ForceDatabase(nullptr), nullptr);
    EXPECT_EQ(server.ForceRecordset(nullptr), nullptr);
    CTDatabase own[20];
    for (auto& database : own)
        EXPECT_EQ(server.RegisterRole(&database, nullptr, 0), 1);
    for (auto& database : own)
        EXPECT_EQ(server.RevokeDatabase(&database), 1);
    EXPECT_EQ(Configuration(server), "4 20 4") << "what has a lease comes back";
    EXPECT_EQ(server.CloseDatabase(), 1);
}

// ---- questions ---------------------------------------------------------------------------------------------------

TEST_F(DataServer, AsksTheConnectionThatIsNext) {
    Server server;
    Open(server, 4);
    CTDatabase* const first = server.GetDatabase();
    EXPECT_EQ(server.InvokeDatabase(nullptr), first);
    EXPECT_EQ(server.GetDatabase(), first + 1);
    BorrowAll(server, nullptr);
    EXPECT_EQ(server.GetDatabase(), first) << "all are lent: the first of the array";
    EXPECT_EQ(Configuration(server), "4 0 4");
}

TEST_F(DataServer, AnswersWithTheReasonWhenThereIsNoAnswer) {
    Server server;
    Open(server, 4);
    connection_->On(Get(18)) = Script();
    EXPECT_EQ(std::string(server.GetSpecialValue("q", "A")), ErrorOf(*server.GetDatabase()));
    EXPECT_EQ(std::string(server.GetRecordValues("q", "|")), ErrorOf(*server.GetDatabase()));
    EXPECT_EQ(std::string(server.GetDbmsName()), ErrorOf(*server.GetDatabase()));
    server.CloseDatabase();
    EXPECT_STREQ(server.GetSpecialValue("q", "A"), "");
    EXPECT_STREQ(server.GetRecordValues("q", "|"), "");
    EXPECT_STREQ(server.GetDbmsName(), "");
    EXPECT_EQ(ErrorOf(server), "");
}

// ---- closing -----------------------------------------------------------------------------------------------------

TEST_F(DataServer, ClosesEverySession) {
    Server server;
    EXPECT_EQ(server.CloseDatabase(), 1) << "nothing to close";
    Open(server, 4);
    EXPECT_EQ(server.CloseDatabase(), 1);
    EXPECT_EQ(TakeCalls("connection.call 5").size(), 8u) << "once by the pool, once when it ends: it stays open here";
    EXPECT_EQ(server.GetSectionCount(), 0);
    EXPECT_EQ(Configuration(server), "0 0 0");
    EXPECT_EQ(server.CloseDatabase(), 1);
    EXPECT_THAT(TakeCalls("connection.call 5"), IsEmpty());
    Open(server, 5);
    EXPECT_EQ(Configuration(server), "5 5 5");
}

TEST_F(DataServer, ForgetsItsLeasesWhenItIsClosed) {
    Server server;
    Open(server, 4);
    BorrowAll(server, nullptr);
    server.CloseDatabase();
    Open(server, 4);
    BorrowAll(server, nullptr);
    EXPECT_EQ(tk::session::ReadStatistics(server).databases.leased, 4);
    EXPECT_EQ(tk::session::ReadStatistics(server).databases.shared, 0u);
}

TEST_F(DataServer, ClientsOfAClosedPoolSayThatTheyHoldNothing) {
    Server server;
    Open(server, 4);
    CTDataClient client;
    client.Invoke(&server);
    client.BeginTrans();
    ASSERT_EQ(client.OpenSQL("select 1", 10, 1), 1);
    server.CloseDatabase();
    EXPECT_EQ(client.ExecuteSQL("x"), 0);
    EXPECT_STREQ(client.GetLastErrorString(), kNoConnectionText);
    Open(server, 4);
    // Sessions of the new pool may lie where the old ones lay; what was borrowed then is over all the same.
    EXPECT_EQ(client.ExecuteSQL("x"), 0);
    EXPECT_STREQ(client.GetLastErrorString(), kNoConnectionText);
    EXPECT_EQ(client.GetRecordEof(), 0);
    EXPECT_STREQ(client.GetLastErrorString(), kNotOpenText);
    BorrowAll(server, nullptr);
    EXPECT_EQ(client.EndTrans(), 1);
    EXPECT_EQ(client.Revoke(), 1);
    EXPECT_EQ(Configuration(server), "4 0 4") << "somebody else's lease is left alone";
}

TEST_F(DataServer, ClosingForgetsWhatWasLentTwice) {
    Server server;
    Open(server, 4);
    CTDataClient client;
    client.Invoke(&server);
    client.BeginTrans();
    BorrowAll(server, nullptr);
    tick_ += 180'000;
    // The three without a client may come first.
    for (int i = 0; i < 4 && tk::session::ReadStatistics(server).databases.doubled == 0; ++i)
        server.InvokeDatabase(nullptr);
    auto databases = tk::session::ReadStatistics(server).databases;
    EXPECT_EQ(databases.doubled, 1u);
    EXPECT_EQ(databases.twice, 1);
    EXPECT_EQ(databases.free + databases.leased, 4 + databases.twice);
    client.Revoke();
    server.CloseDatabase();
    databases = tk::session::ReadStatistics(server).databases;
    EXPECT_EQ(databases.doubled, 1u) << "a counter only grows";
    EXPECT_EQ(databases.twice, 0);
    Open(server, 5);
    databases = tk::session::ReadStatistics(server).databases;
    EXPECT_EQ(databases.free + databases.leased, 5 + databases.twice);
    const std::string text(tk::session::ToPrometheusText(tk::session::ReadStatistics(server), "p"));
    EXPECT_NE(text.find("tkkernel_pool_twice{pool=\"p\",kind=\"connection\"} 0\n"), std::string::npos) << text;
    EXPECT_NE(text.find("# TYPE tkkernel_pool_twice gauge\n"), std::string::npos) << text;
}

// ---- statistics --------------------------------------------------------------------------------------------------

TEST_F(DataServer, CountsWhatItDoes) {
    Server server;
    server.InvokeDatabase(nullptr);
    Open(server, 4);
    const auto lent = BorrowAll(server, nullptr);
    server.InvokeDatabase(nullptr);
    tick_ += 180'000;
    CTDatabase* const taken = server.InvokeDatabase(nullptr);
    tick_ += 15;
    server.RevokeDatabase(lent[0] == taken ? lent[1] : lent[0]);
    const auto statistics = tk::session::ReadStatistics(server);
    EXPECT_EQ(statistics.sessions, 4);
    EXPECT_EQ(statistics.refusedClosed, 1u);
    EXPECT_EQ(statistics.faults, 0u);
    const auto& databases = statistics.databases;
    EXPECT_EQ(databases.loans, 4u);
    EXPECT_EQ(databases.refusals, 1u);
    EXPECT_EQ(databases.takeovers, 1u);
    EXPECT_EQ(databases.returns, 1u);
    EXPECT_EQ(databases.free, 1);
    EXPECT_EQ(databases.leased, 3);
    EXPECT_EQ(databases.ages[1], 1u) << "the one taken over 15 ms ago";
    EXPECT_EQ(databases.ages[tk::session::kAgeLimits], 2u);
    EXPECT_EQ(statistics.recordsets.loans, 0u);
    const std::string text(tk::session::ToPrometheusText(statistics, "st\"ock\n"));
    for (const char* const line : {
             "# TYPE tkkernel_pool_loans_total counter\n",
             "tkkernel_pool_sessions{pool=\"st\\\"ock\\n\"} 4\n",
             "tkkernel_pool_loans_total{pool=\"st\\\"ock\\n\",kind=\"connection\"} 4\n",
             "tkkernel_pool_loans_total{pool=\"st\\\"ock\\n\",kind=\"recordset\"} 0\n",
             "tkkernel_pool_leases_by_age{pool=\"st\\\"ock\\n\",kind=\"connection\",le=\"0.01\"} 0\n",
             "tkkernel_pool_leases_by_age{pool=\"st\\\"ock\\n\",kind=\"connection\",le=\"0.1\"} 1\n",
             "tkkernel_pool_leases_by_age{pool=\"st\\\"ock\\n\",kind=\"connection\",le=\"+Inf\"} 3\n",
             "tkkernel_pool_refused_closed_total{pool=\"st\\\"ock\\n\"} 1\n",
         }) {
        EXPECT_NE(text.find(line), std::string::npos) << line << "is not in\n" << text;
    }
}

}  // namespace
}  // namespace tk::test
