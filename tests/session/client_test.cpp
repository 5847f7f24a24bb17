// The client: what it borrows and returns, what each member forwards, and what a fault in any of them becomes.
#include <random>
#include <stdexcept>
#include <thread>

#include "session/client_members.h"
#include "session/pool_fixture.h"
#include "util/faults.h"

namespace tk::test {
namespace {

class DataClient : public PoolTest {
protected:
    void SetUp() override {
        Open(server_, 4);
        client_.Invoke(&server_);
    }
    void TearDown() override {
        client_.Revoke();
        server_.CloseDatabase();
        PoolTest::TearDown();
    }

    void Borrow() {
        ASSERT_EQ(client_.BeginTrans(), 1);
        ASSERT_EQ(client_.OpenSQL("select 1", 10, 1), 1) << client_.GetLastErrorString();
        client_.SetLastErrorString("");
        ASSERT_EQ(Configuration(server_), "4 3 3");
        journal_.Take();
    }

    std::string Error() { return std::string(client_.GetLastErrorString()); }

    CTDataServer server_;
    CTDataClient client_;
};

struct Fault {
    const char* label;
    void (*happen)();
};
constexpr Fault kFaults[] = {
    {"read through null", ReadNull},    {"write through null", WriteNull},
    {"division by zero", DivideByZero}, {"a C++ exception", [] { throw std::runtime_error("no"); }},
    {"a number", [] { throw 7; }},
};

/// A fault of the automation object at its next call, and at no later one.
class OneFault {
public:
    OneFault(ScriptedObject& connection, ScriptedObject& records, void (*happen)(), int calls = 1)
        : objects_{&connection, &records}, left_(calls) {
        for (ScriptedObject* const object : objects_) {
            object->BeforeEachCall([this, happen] {
                if (--left_ != 0) return;
                std::atomic_signal_fence(std::memory_order_seq_cst);
                happen();
            });
        }
    }
    OneFault(const OneFault&) = delete;
    OneFault& operator=(const OneFault&) = delete;
    ~OneFault() {
        for (ScriptedObject* const object : objects_)
            object->BeforeEachCall({});
    }
    bool HasHappened() const { return left_ <= 0; }

private:
    ScriptedObject* objects_[2];
    int left_;
};

// ---- loans -------------------------------------------------------------------------------------------------------

TEST_F(DataClient, NeedsAServerToBeginAndToEnd) {
    CTDataClient fresh;
    EXPECT_STREQ(fresh.GetLastErrorString(), "");
    EXPECT_EQ(fresh.BeginTrans(), 0);
    EXPECT_STREQ(fresh.GetLastErrorString(), kNoConnectionText);
    fresh.SetLastErrorString("x");
    EXPECT_EQ(fresh.EndTrans(), 0);
    EXPECT_STREQ(fresh.GetLastErrorString(), kNoConnectionText);
    EXPECT_EQ(fresh.Revoke(), 1);
    EXPECT_STREQ(fresh.GetLastErrorString(), kNotOpenText) << "the recordset's guard comes last";
    EXPECT_EQ(fresh.CloseSQL(), 1);
    EXPECT_EQ(fresh.GetRecordset(), nullptr);
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(DataClient, BorrowsAndReturns) {
    Borrow();
    EXPECT_NE(client_.GetRecordset(), nullptr);
    EXPECT_EQ(client_.EndTrans(), 1);
    EXPECT_EQ(Configuration(server_), "4 4 3");
    EXPECT_EQ(client_.CloseSQL(), 1);
    EXPECT_EQ(Configuration(server_), "4 4 4");
    EXPECT_EQ(Error(), "");
    EXPECT_EQ(client_.CloseSQL(), 1) << "nothing held";
    EXPECT_EQ(Error(), kNotOpenText);
    Borrow();
    EXPECT_EQ(client_.Revoke(), 1);
    EXPECT_EQ(Configuration(server_), "4 4 4");
    EXPECT_EQ(client_.BeginTrans(), 0) << "the server is forgotten";
}

TEST_F(DataClient, BeginsWithoutAConnectionWhenThereIsNone) {
    for (int i = 0; i < 4; ++i)
        server_.InvokeDatabase(nullptr);
    EXPECT_EQ(client_.BeginTrans(), 1);
    EXPECT_EQ(client_.ExecuteSQL("x"), 0);
    EXPECT_EQ(Error(), kNoConnectionText);
    EXPECT_STREQ(server_.GetLastErrorString(), kOccupiedText);
}

TEST_F(DataClient, OpeningReturnsTheRecordsetThatIsHeld) {
    Borrow();
    CTRecordset* const first = client_.GetRecordset();
    EXPECT_EQ(client_.OpenTable("T", 10, 1), 1);
    EXPECT_NE(client_.GetRecordset(), first) << "the one that was free longest";
    EXPECT_EQ(Configuration(server_), "4 3 3");
}

TEST_F(DataClient, OpensAndSetsThePageSize) {
    EXPECT_EQ(client_.OpenSQL("select 1", 25, 0), 1);
    EXPECT_THAT(journal_.Take(),
                ElementsAre("records.get 1054", "records.put 1051 (I4 3)",
                            "records.call 1022 (BSTR \"select 1\", BSTR \"DSN=stock\", I4 2, I4 3, I4 1)",
                            "records.put 1004 (I4 1000)", "records.put 1048 (I4 25)"));
    EXPECT_EQ(client_.OpenTable("订单", 1, 1), 1);
    EXPECT_EQ(std::count(journal_.Lines().begin(), journal_.Lines().end(),
                         "records.call 1022 (BSTR \"\"订单\"\", BSTR \"DSN=stock\", I4 0, I4 1, I4 2)"),
              1);
    EXPECT_EQ(client_.OpenProc("P", 1, 1), 1);
    EXPECT_EQ(std::count(journal_.Lines().begin(), journal_.Lines().end(),
                         "records.call 1022 (BSTR \"\"P\"\", BSTR \"DSN=stock\", I4 0, I4 1, I4 4)"),
              1);
}

TEST_F(DataClient, AnOpenThatFailsHoldsNothing) {
    records_->On(Call(1022)).Fails("语法错误");
    EXPECT_EQ(client_.OpenSQL("select", 10, 1), 0);
    EXPECT_EQ(Error(), "语法错误\r\nOpen");
    EXPECT_EQ(client_.GetRecordset(), nullptr);
    EXPECT_EQ(Configuration(server_), "4 4 4");
    records_->On(Call(1022)) = Script();
}

TEST_F(DataClient, AnOpenWithNothingToBorrowSaysThatNothingIsOpen) {
    for (int i = 0; i < 4; ++i)
        server_.InvokeRecordset(nullptr);
    EXPECT_EQ(client_.OpenSQL("select 1", 10, 1), 0);
    EXPECT_EQ(Error(), kNotOpenText);
    EXPECT_STREQ(server_.GetLastErrorString(), kOccupiedText);
}

TEST_F(DataClient, AnOpenWithoutAServerIsAFault) {
    for (const auto& member : OpeningMembers()) {
        SCOPED_TRACE(member.place);
        CTDataClient fresh;
        EXPECT_EQ(member.call(fresh), "0");
        EXPECT_STREQ(fresh.GetLastErrorString(), kNotOpenText) << "by the closing that follows";
        EXPECT_THAT(TakeLog(), ElementsAre(ErrorRecord(ClientFault(member.place))));
    }
}

// ---- refusals ----------------------------------------------------------------------------------------------------

TEST_F(DataClient, EveryMemberSaysWhichLoanIsMissing) {
    CTDataClient fresh;
    CTDataServer closed;
    CTDataClient ofClosed;
    ofClosed.Invoke(&closed);
    for (const auto& member : ClientMembers()) {
        SCOPED_TRACE(member.place);
        for (CTDataClient* const client : {&client_, &fresh, &ofClosed}) {
            client->SetLastErrorString("x");
            EXPECT_EQ(member.call(*client), member.refused);
            EXPECT_STREQ(client->GetLastErrorString(),
                         member.needs == Needs::Connection ? kNoConnectionText : kNotOpenText);
        }
    }
    client_.SetLastErrorString("x");
    EXPECT_EQ(client_.GetDispatch(), nullptr);
    EXPECT_EQ(Error(), kNotOpenText);
    EXPECT_THAT(journal_.Take(), IsEmpty());
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(DataClient, QuestionsWithoutAServerAreEmptyAndSilent) {
    CTDataClient fresh;
    CTDataClient lost;
    lost.Invoke(reinterpret_cast<CTDataServer*>(16));
    for (CTDataClient* const client : {&fresh, &lost}) {
        client->SetLastErrorString("x");
        EXPECT_STREQ(client->GetDbmsName(), "");
        EXPECT_STREQ(client->GetSpecialValue("q", "A"), "");
        EXPECT_STREQ(client->GetRecordValues("q", "|"), "");
        EXPECT_STREQ(client->GetLastErrorString(), "x");
    }
    lost.Invoke(nullptr);
}

// ---- forwarding --------------------------------------------------------------------------------------------------

TEST_F(DataClient, ForwardsEachMemberToWhatItHolds) {
    Borrow();
    records_->On(Get(1006)).Returns(Flag(true));
    records_->On(Get(1010)).Returns(Long(25));
    records_->On(Get(1050)).Returns(Long(3));
    records_->On(Get(1048)).Returns(Long(10));
    records_->On(Get(1047)).Returns(Long(2));
    records_->On(Get(0)).Returns(Object(MakeFields({{"A", Text("12.5")}, {"B", Long(7)}, {"C", Real(1.5)}}).Get()));
    const struct {
        const char* label;
        std::string (*call)(CTDataClient&);
        const char* result;
        const char* sent;
    } kRows[] = {
        {"eof", [](CTDataClient& c) { return std::to_string(c.GetRecordEof()); }, "1", "records.get 1006"},
        {"count", [](CTDataClient& c) { return std::to_string(c.GetRecordCount()); }, "25", "records.get 1010"},
        {"pages", [](CTDataClient& c) { return std::to_string(c.GetPageCount()); }, "3", "records.get 1050"},
        {"page size", [](CTDataClient& c) { return std::to_string(c.GetPageSize()); }, "10", "records.get 1048"},
        {"page", [](CTDataClient& c) { return std::to_string(c.GetPageCode()); }, "2", "records.get 1047"},
        {"set page", [](CTDataClient& c) { return std::to_string(c.SetPageCode(3)); }, "1", "records.put 1047 (I4 3)"},
        {"next", [](CTDataClient& c) { return c.MoveNext(), std::string(); }, "", "records.call 1018"},
        {"last", [](CTDataClient& c) { return c.MoveLast(), std::string(); }, "", "records.call 1021"},
        {"first", [](CTDataClient& c) { return c.MoveFirst(), std::string(); }, "", "records.call 1020"},
        {"previous", [](CTDataClient& c) { return c.MovePrev(), std::string(); }, "", "records.call 1019"},
        {"text", [](CTDataClient& c) { return std::string(c.GetValueString(Long(0))); }, "12.5", "field.get 0"},
        {"number", [](CTDataClient& c) { return std::to_string(c.GetValueLong(Long(1))); }, "7", "field.get 0"},
        {"real", [](CTDataClient& c) { return std::to_string(c.GetValueDouble(Long(2))); }, "1.500000", "field.get 0"},
        {"set text", [](CTDataClient& c) { return c.SetValueString(Long(0), "库"), std::string(); }, "",
         "field.put 0 (BSTR \"库\")"},
        {"set number", [](CTDataClient& c) { return c.SetValueLong(Long(0), -7), std::string(); }, "",
         "field.put 0 (I4 -7)"},
        {"set real", [](CTDataClient& c) { return c.SetValueDouble(Long(0), 1.5), std::string(); }, "",
         "field.put 0 (R8 1.5)"},
        {"set value", [](CTDataClient& c) { return c.SetValueVariant(Long(0), Flag(true)), std::string(); }, "",
         "field.put 0 (BOOL true)"},
        {"field name", [](CTDataClient& c) { return std::string(c.GetFieldName(1)); }, "B", "field.get 1100"},
        {"fields", [](CTDataClient& c) { return std::to_string(c.GetFieldCount()); }, "3", "fields.get 1"},
        {"field index", [](CTDataClient& c) { return std::to_string(c.GetFieldIndex("b")); }, "1", "field.get 1100"},
        {"no such field", [](CTDataClient& c) { return std::to_string(c.GetFieldIndex("D")); }, "-1", "fields.get 1"},
        {"field names", [](CTDataClient& c) { return std::string(c.GetAllFieldNames("+")); }, "A+B+C", "fields.get 1"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(row.call(client_), row.result);
        const Lines sent = journal_.Take();
        ASSERT_FALSE(sent.empty());
        EXPECT_EQ(sent.back(), row.sent);
    }
    records_->On(Get(1006)) = Script();
    EXPECT_STREQ(client_.GetRecordString("|"), "12.5|7|        1.5");
    EXPECT_EQ(client_.GetDispatch(), records_.Get());
    EXPECT_EQ(Error(), "");
    VARIANT value = client_.GetValueVariant(Long(1));
    EXPECT_EQ(Describe(value), "I4 7");
}

TEST_F(DataClient, ExecutesAndCountsNothing) {
    Borrow();
    connection_->On(Call(6)).Stores(1, Long(25)).Returns(Object(nullptr));
    EXPECT_EQ(client_.ExecuteSQL("update T"), 1);
    EXPECT_EQ(client_.ExecSQL("update T set A='50%'"), 1) << "whatever the number of rows";
    const Lines sent = journal_.Take();
    EXPECT_NE(sent.back().find("BSTR \"update T set A='50%'\""), std::string::npos) << sent.back();
    client_.ExecSQL("like 'a%%b' %s %");
    EXPECT_NE(journal_.Take().back().find("BSTR \"like 'a%b' %s %\""), std::string::npos)
        << "a format without arguments";
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).Fails("语法错误");
    EXPECT_EQ(client_.ExecuteSQL("update T"), 0);
    EXPECT_EQ(Error(), "语法错误\r\nupdate T");
    EXPECT_EQ(client_.ExecSQL("update T"), 0);
    EXPECT_EQ(Error(), "语法错误\r\nupdate T");
    EXPECT_EQ(Configuration(server_), "4 3 3") << "a failure is no fault";
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(DataClient, AFileThatCannotBeSavedStillCountsAsSaved) {
    Borrow();
    records_->On(Call(1057)).Fails("磁盘满");
    EXPECT_EQ(client_.SaveFile("/nowhere/at/all"), 1);
    EXPECT_NE(Error().find("磁盘满"), std::string::npos) << Error();
}

TEST_F(DataClient, AnEmptyScriptGivesTheReasonOfTheConnection) {
    Borrow();
    connection_->On(Get(18)) = Script();
    EXPECT_STREQ(client_.GetTableScript("T"), "");
    EXPECT_STREQ(client_.GetViewScript("V"), "");
    EXPECT_EQ(Configuration(server_), "4 3 3");
}

TEST_F(DataClient, ShowsItsBanner) {
    const std::string banner(client_.About());
    const std::string frame = "//=============================================================\r\n";
    EXPECT_TRUE(banner.starts_with(frame + "// 数据库代理组件(Release 3.0 版本)\r\n")) << banner;
    EXPECT_TRUE(banner.ends_with(frame));
    for (std::size_t line = 0; line < banner.size(); line = banner.find('\n', line) + 1)
        EXPECT_EQ(banner.substr(line, 2), "//");
}

// ---- faults ------------------------------------------------------------------------------------------------------

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

// ---- the server's own members --------------------------------------------------------------------------------------

class OpenedServer : public CTDataServer {
public:
    using CTDataServer::ForceDatabase;
    using CTDataServer::ForceRecordset;
    using CTDataServer::RegisterRole;
};

class ServerFaults : public PoolTest {
protected:
};

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
    bool lent = false;
    std::thread([&] { lent = server.InvokeDatabase(nullptr) != nullptr; }).join();
    EXPECT_TRUE(lent) << "another thread gets in";
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
        connection_->BeforeEachCall([&] { ++calls; });
        records_->BeforeEachCall([&] { ++calls; });
        Open(whole, 4);
        connection_->BeforeEachCall({});
        records_->BeforeEachCall({});
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

TEST_F(ServerFaults, OfASessionWhileClosingLeaveThePoolOpen) {
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
        EXPECT_EQ(Configuration(server), "4 4 4");
        EXPECT_EQ(server.CloseDatabase(), 1);
        EXPECT_EQ(Configuration(server), "0 0 0");
    }
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
