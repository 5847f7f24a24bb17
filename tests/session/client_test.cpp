// The client: what it borrows and returns, and what each member forwards.
#include "session/client_fixture.h"
#include "session/client_members.h"

namespace tk::test {
namespace {

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

/// What an application's own recordset class may do with the object that it holds.
struct OwnRecordset : CTRecordset {
    static void LetGo(CTRecordset& recordset) { (recordset.*&OwnRecordset::dispatch_).ReleaseDispatch(); }
};

TEST_F(DataClient, TellsWhyTheRecordsetHasNoObject) {
    Borrow();
    records_->On(Call(1057)).Fails("磁盘满");
    client_.GetRecordset()->SaveAsFile("/nowhere/at/all", 0);
    const CString reason = client_.GetRecordset()->GetLastErrorString();
    ASSERT_NE(reason.Find("磁盘满"), -1) << static_cast<const char*>(reason);
    OwnRecordset::LetGo(*client_.GetRecordset());
    client_.SetLastErrorString("x");
    EXPECT_EQ(client_.GetDispatch(), nullptr);
    EXPECT_EQ(Error(), std::string(reason));
    EXPECT_NE(client_.GetRecordset(), nullptr) << "still lent";
    EXPECT_THAT(TakeLog(), IsEmpty());
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
    CTDatabase* const lent = server_.GetDatabase() - 1;  // the one before the next
    connection_->On(Get(18)) = Script();
    EXPECT_STREQ(client_.GetTableScript("T"), "");
    EXPECT_EQ(Error(), ErrorOf(*lent));
    EXPECT_NE(Error(), "");
    client_.SetLastErrorString("x");
    EXPECT_STREQ(client_.GetViewScript("V"), "");
    EXPECT_EQ(Error(), ErrorOf(*lent));
    EXPECT_EQ(Configuration(server_), "4 3 3");
}

TEST_F(DataClient, GivesTheReasonOfTheRecordsetThatKnowsNoSuchField) {
    Borrow();
    records_->On(Get(0)).Returns(Object(MakeFields({{"A", Text("x")}}).Get()));
    _tagFIELDINFO info;
    EXPECT_EQ(client_.GetFieldInfor("B", &info), 0);
    EXPECT_EQ(Error(), ErrorOf(*client_.GetRecordset()));
    EXPECT_NE(Error(), "");
    EXPECT_EQ(Configuration(server_), "4 3 3");
}

TEST_F(DataClient, ARecordThatCannotBeReadIsAnEmptyText) {
    Borrow();
    records_->On(Get(1006)).Returns(Flag(true));
    EXPECT_STREQ(client_.GetRecordString("|"), "") << "behind the last record";
    EXPECT_EQ(Configuration(server_), "4 3 3");
}

TEST_F(DataClient, OpeningATableOrAProcedureThatIsNotThereHoldsNothing) {
    records_->On(Call(1022)).Fails("没有这个对象");
    for (const auto& member : OpeningMembers()) {
        SCOPED_TRACE(member.place);
        client_.SetLastErrorString("");
        EXPECT_EQ(member.call(client_), "0");
        EXPECT_TRUE(Error().starts_with("没有这个对象\r\n")) << Error();
        EXPECT_EQ(client_.GetRecordset(), nullptr);
        EXPECT_EQ(Configuration(server_), "4 4 4");
    }
    records_->On(Call(1022)) = Script();
    EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(DataClient, AsksTheServerWithoutALoan) {
    EXPECT_STREQ(client_.GetDbmsName(), "Oracle");
    EXPECT_EQ(Error(), "");
    connection_->On(Get(18)) = Script();
    client_.SetLastErrorString("x");
    // The server's answer is its connection's reason then; its own text is empty, and so nothing is set.
    EXPECT_EQ(std::string(client_.GetSpecialValue("q", "A")), ErrorOf(*server_.GetDatabase()));
    EXPECT_EQ(Error(), "x");
    server_.CloseDatabase();
    EXPECT_EQ(server_.InvokeDatabase(nullptr), nullptr);
    EXPECT_STREQ(client_.GetRecordValues("q", "|"), "");
    EXPECT_EQ(Error(), kNotOpenText) << "the server's text";
}

TEST_F(DataClient, ShowsItsBanner) {
    const std::string banner(client_.About());
    const std::string frame = "//=============================================================\r\n";
    EXPECT_TRUE(banner.starts_with(frame + "// 数据库代理组件(Release 3.0 版本)\r\n")) << banner;
    EXPECT_TRUE(banner.ends_with(frame));
    for (std::size_t line = 0; line < banner.size(); line = banner.find('\n', line) + 1)
        EXPECT_EQ(banner.substr(line, 2), "//");
}

}  // namespace
}  // namespace tk::test
