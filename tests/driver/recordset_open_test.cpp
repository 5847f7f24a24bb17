#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

constexpr char kOpened[] = "返回编码:[0x00000000]操作完全成功，但没有结果集返回。";
constexpr char kCreated[] = "返回编码:[0x00000000]操作完全成功。";
constexpr char kNotBound[] = "没有数据库连接信息！\r\n系统无法连接未指定或不确定数据库。";
constexpr char kInvalid[] = "非法接口地址,传入地址无法在内存定位!";

class Recordset : public CTRecordset {
public:
    using CTRecordset::CTRecordset;
    using CTRecordset::IsOpen;
    using CTRecordset::OnInitDispatch;
    using CTRecordset::OnInvoke;
    using CTRecordset::SetRecordset;
    int Initialised() const { return initialised_; }
};

class RecordsetOpen : public DriverTest {
protected:
    /// The lines of a successful open of a recordset in state 0.
    static Lines Opening(const std::string& source, const std::string& numbers) {
        return {"records.get 1054", "records.put 1051 (I4 3)",
                "records.call 1022 (BSTR " + source + ", BSTR \"DSN=stock\", " + numbers + ")",
                "records.put 1004 (I4 1000)"};
    }
};

// ---- construction ------------------------------------------------------------------------------------------------

TEST_F(RecordsetOpen, StartsUnboundWithoutObject) {
    Recordset recordset;
    EXPECT_EQ(recordset.GetDispatch(), nullptr);
    EXPECT_STREQ(recordset.GetDBMS(), "");
    EXPECT_EQ(recordset.GetState(), 0);
    EXPECT_EQ(recordset.IsOpen(), 0);
    EXPECT_EQ(ErrorOf(recordset), "");
    EXPECT_EQ(recordsets_->Created(), 0);
}

TEST_F(RecordsetOpen, MadeFromADatabaseTakesItsStringAndTag) {
    CTDatabase database;
    Open(database, {{"DBMS Name", Text("ORACLE")}});
    connection_->On(Get(0)).Returns(Text("DSN=stock"));
    recordsets_->Give(records_.Get());
    Recordset recordset(&database);
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 0", "connection.get 18"));
    EXPECT_STREQ(recordset.GetDBMS(), "ORA");
    EXPECT_EQ(recordset.GetDispatch(), records_.Get());
    EXPECT_EQ(recordset.Initialised(), 1);
    EXPECT_EQ(ErrorOf(recordset), kCreated);
    EXPECT_EQ(recordset.OpenSQL("select 1", 1), 1);
    EXPECT_EQ(journal_.Take(), Opening("\"select 1\"", "I4 0, I4 1, I4 1"));
}

TEST_F(RecordsetOpen, MadeFromADatabaseThatWasNeverOpenedIsUnbound) {
    recordsets_->Give(records_.Get());
    CTDatabase database;
    CTRecordset recordset(&database);
    EXPECT_EQ(recordset.GetDispatch(), records_.Get());
    EXPECT_EQ(recordset.OpenSQL("x", 1), 0);
    EXPECT_EQ(ErrorOf(recordset), kNotBound);
}

TEST_F(RecordsetOpen, MadeFromNoDatabaseIsUnbound) {
    CTRecordset recordset(static_cast<CTDatabase*>(nullptr));
    EXPECT_EQ(ErrorOf(recordset), kNotBound);
    EXPECT_EQ(recordset.OpenDatabase(static_cast<CTDatabase*>(nullptr)), 0);
    EXPECT_EQ(ErrorOf(recordset), kNotBound);
}

TEST_F(RecordsetOpen, MadeFromAnObjectKeepsIt) {
    {
        Recordset recordset(static_cast<IDispatch*>(records_.Share()));
        EXPECT_EQ(recordset.GetDispatch(), records_.Get());
        EXPECT_STREQ(recordset.GetDBMS(), "Mic");
        EXPECT_EQ(recordset.Initialised(), 1);
        EXPECT_EQ(ErrorOf(recordset), kCreated);
    }
    EXPECT_EQ(recordsets_->Created(), 0);
    EXPECT_EQ(records_->References(), 1u);
}

TEST_F(RecordsetOpen, MadeFromNoObjectCreatesOne) {
    recordsets_->Give(records_.Get());
    Recordset recordset(static_cast<IDispatch*>(nullptr));
    EXPECT_EQ(recordset.GetDispatch(), records_.Get());
    EXPECT_STREQ(recordset.GetDBMS(), "Mic");
}

TEST_F(RecordsetOpen, ACopySharesTheObjectAndIsNotBound) {
    Recordset recordset;
    Bind(recordset);
    {
        Recordset copy(recordset);
        EXPECT_EQ(copy.GetDispatch(), records_.Get());
        EXPECT_STREQ(copy.GetDBMS(), "Mic");
        EXPECT_EQ(copy.Initialised(), 1);
        EXPECT_EQ(records_->References(), 3u);
        EXPECT_EQ(copy.OpenSQL("x", 1), 0);
        EXPECT_EQ(ErrorOf(copy), kNotBound);
    }
    EXPECT_EQ(records_->References(), 2u);
    EXPECT_EQ(recordsets_->Created(), 1);
}

TEST_F(RecordsetOpen, DestroyingACopyClosesWhatBothUse) {
    Recordset recordset;
    Bind(recordset);
    records_->On(Get(1054)).Returns(Long(1)).Then().Returns(Long(0));
    { Recordset copy(recordset); }
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1054", "records.call 1014"));
    EXPECT_EQ(records_->References(), 2u);
}

TEST_F(RecordsetOpen, ACopyOfAnEmptyOneCreatesItsOwn) {
    Recordset recordset;
    recordsets_->Give(records_.Get());
    Recordset copy(recordset);
    EXPECT_EQ(recordset.GetDispatch(), nullptr);
    EXPECT_EQ(copy.GetDispatch(), records_.Get());
}

TEST_F(RecordsetOpen, ReportsAnObjectThatCannotBeCreated) {
    recordsets_->Refuse(E_ACCESSDENIED);
    Recordset recordset;
    EXPECT_EQ(recordset.OpenDatabase("DSN=stock", "ORA"), 0);
    EXPECT_THAT(ErrorOf(recordset), ::testing::StartsWith("错误[0x80070005]:"));
    recordsets_->Refuse(E_ACCESSDENIED);
    EXPECT_EQ(recordset.OpenSQL("x", 1), 0);
    EXPECT_THAT(ErrorOf(recordset), ::testing::StartsWith("错误[0x80070005]:"));
    recordsets_->Refuse(E_ACCESSDENIED);
    EXPECT_EQ(recordset.OpenField(records_.Get()), 0);
    EXPECT_THAT(ErrorOf(recordset), ::testing::StartsWith("错误[0x80070005]:"));
    recordsets_->Give(records_.Get());
    EXPECT_EQ(recordset.OnInitDispatch(), 1);
    EXPECT_EQ(recordset.OnInitDispatch(), 1);
}

TEST_F(RecordsetOpen, TheDestructorClosesWhatIsOpen) {
    {
        Recordset recordset;
        Bind(recordset);
        records_->On(Get(1054)).Returns(Long(1));
    }
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1054", "records.call 1014"));
    EXPECT_EQ(records_->References(), 1u);
}

TEST_F(RecordsetOpen, TheDestructorBearsFailures) {
    for (const bool state : {true, false}) {
        SCOPED_TRACE(state ? "the state" : "closing");
        auto object = Make("o");
        if (state) {
            object->On(Get(1054)).FailsWith(E_FAIL);
        } else {
            object->On(Get(1054)).Returns(Long(1));
            object->On(Call(1014)).Fails("不能关闭");
        }
        { Recordset recordset(static_cast<IDispatch*>(object.Share())); }
        EXPECT_EQ(object->References(), 1u);
    }
}

// ---- binding -----------------------------------------------------------------------------------------------------

TEST_F(RecordsetOpen, OpenDatabaseKeepsAGivenTagWhole) {
    recordsets_->Give(records_.Get());
    Recordset recordset;
    EXPECT_EQ(recordset.OpenDatabase("DSN=stock", "ORACLE"), 1);
    EXPECT_STREQ(recordset.GetDBMS(), "ORACLE");
    EXPECT_EQ(connections_->Created(), 0);
    recordset.SetDBMS("ORACLE");
    EXPECT_STREQ(recordset.GetDBMS(), "ORA");
    recordset.SetDBMS("DB");
    EXPECT_STREQ(recordset.GetDBMS(), "DB");
    recordset.SetDBMS(nullptr);
    EXPECT_STREQ(recordset.GetDBMS(), "");
    EXPECT_EQ(recordset.OpenDatabase("DSN=other", "Mic"), 1) << "the object is there already";
    EXPECT_EQ(recordsets_->Created(), 1);
}

TEST_F(RecordsetOpen, OpenDatabaseReplacesTheTagThatAnObjectCameWith) {
    CTDatabase database;
    Open(database, {{"DBMS Name", Text("ORACLE")}});
    CTRecordset recordset(static_cast<IDispatch*>(records_.Share()));
    EXPECT_STREQ(recordset.GetDBMS(), "Mic");
    EXPECT_EQ(recordset.OpenDatabase(&database), 1);
    EXPECT_STREQ(recordset.GetDBMS(), "ORA");
}

TEST_F(RecordsetOpen, OpenDatabaseWithoutATagAsksTheConnection) {
    for (const char* dbms : {static_cast<const char*>(nullptr), ""}) {
        auto connection = Make("connection");
        connection->On(Get(0)).Returns(Text("DSN=stock"));
        connection->On(Get(18)).Returns(Long(1));
        connection->On(Get(500)).Returns(Object(MakeProperties({{"DBMS Name", Text("DB2")}}).Get()));
        connections_->Give(connection.Get());
        recordsets_->Give(records_.Get());
        journal_.Take();
        Recordset recordset;
        EXPECT_EQ(recordset.OpenDatabase("DSN=stock", dbms), 1);
        EXPECT_STREQ(recordset.GetDBMS(), "DB2");
        EXPECT_EQ(ErrorOf(recordset), kCreated);
        const Lines lines = journal_.Take();
        EXPECT_EQ(lines[3], "connection.call 10 (BSTR \"DSN=stock\", BSTR null, BSTR null, I4 -1)");
        // string, tag, then the temporary connection is closed, once more by its destructor
        const Lines tail(lines.end() - 6, lines.end());
        EXPECT_THAT(tail, ElementsAre("connection.get 0", "connection.get 18", "connection.get 18", "connection.call 5",
                                      "connection.get 18", "connection.call 5"));
        EXPECT_EQ(connection->References(), 1u);
        records_->On(Get(1054)).Returns(Long(0));
        EXPECT_EQ(recordset.OpenSQL("x", 0), 1);
        journal_.Take();
    }
}

TEST_F(RecordsetOpen, OpenDatabaseOfADataSourceAsksTheConnection) {
    connection_->On(Get(0)).Returns(Text("DSN=stock;UID=sa"));
    connection_->On(Get(18)).Returns(Long(1));
    connection_->On(Get(500)).Returns(Object(MakeProperties({{"DBMS Name", Text("ADAPTIVE")}}).Get()));
    connections_->Give(connection_.Get());
    recordsets_->Give(records_.Get());
    Recordset recordset;
    EXPECT_EQ(recordset.OpenDatabase("stock", "sa", "pw"), 1);
    EXPECT_STREQ(recordset.GetDBMS(), "ADA");
    EXPECT_THAT(
        journal_.Take(),
        ::testing::Contains("connection.call 10 (BSTR \"DSN=stock;UID=sa;PWD=pw\", BSTR \"sa\", BSTR \"pw\", I4 "
                            "-1)"));
    EXPECT_EQ(connection_->References(), 1u);
}

TEST_F(RecordsetOpen, OpenDatabaseCopiesTheReasonOfTheConnection) {
    connection_->On(Call(10)).Fails("登录 100%s 失败");
    Recordset recordset;
    connections_->Give(connection_.Get());
    EXPECT_EQ(recordset.OpenDatabase("DSN=stock", ""), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("登录 100%s 失败", "打开数据库失败"));
    connections_->Give(connection_.Get());
    EXPECT_EQ(recordset.OpenDatabase("stock", "sa", "pw"), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("登录 100%s 失败", "打开数据库失败"));
    EXPECT_EQ(recordset.OpenSQL("x", 1), 0);
    EXPECT_EQ(ErrorOf(recordset), kNotBound);
}

TEST_F(RecordsetOpen, OpenDatabaseReportsAStringThatCannotBeRead) {
    CTDatabase database;
    Open(database);
    connection_->On(Get(0)).Fails("断开");
    Recordset recordset;
    EXPECT_EQ(recordset.OpenDatabase(&database), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("断开", "打开数据库失败"));
}

TEST_F(RecordsetOpen, ANullConnectionIsUnbound) {
    recordsets_->Give(records_.Get());
    Recordset recordset;
    EXPECT_EQ(recordset.OpenDatabase(static_cast<const char*>(nullptr), "ORA"), 1);
    EXPECT_EQ(recordset.OpenSQL("x", 1), 0);
    EXPECT_EQ(ErrorOf(recordset), kNotBound);
}

TEST_F(RecordsetOpen, CloseDatabaseForgetsAndCloses) {
    Recordset recordset;
    Bind(recordset);
    records_->On(Get(1054)).Returns(Long(1)).Then().Returns(Long(0));
    EXPECT_EQ(recordset.CloseDatabase(), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1054", "records.call 1014"));
    EXPECT_STREQ(recordset.GetDBMS(), "");
    EXPECT_EQ(ErrorOf(recordset), "");
    EXPECT_EQ(recordset.OpenSQL("x", 1), 0);
    EXPECT_EQ(ErrorOf(recordset), kNotBound);
    Recordset unbound;
    EXPECT_EQ(unbound.CloseDatabase(), 1);
}

// ---- opening -----------------------------------------------------------------------------------------------------

TEST_F(RecordsetOpen, SendsSourceCursorLockAndOptions) {
    static const struct {
        const char* label;
        int (*open)(CTRecordset&);
        const char* source;
        const char* numbers;
    } kRows[] = {
        {"table, read-only", [](CTRecordset& r) { return r.OpenTable("ORDERS", 1); }, "\"\"ORDERS\"\"",
         "I4 0, I4 1, I4 2"},
        {"table", [](CTRecordset& r) { return r.OpenTable("订单", 0); }, "\"\"订单\"\"", "I4 2, I4 3, I4 2"},
        {"query, read-only", [](CTRecordset& r) { return r.OpenSQL("select '库'", 1); }, "\"select '库'\"",
         "I4 0, I4 1, I4 1"},
        {"query", [](CTRecordset& r) { return r.OpenSQL("select 1", 0); }, "\"select 1\"", "I4 2, I4 3, I4 1"},
        {"any number is read-only", [](CTRecordset& r) { return r.OpenSQL("select 1", -7); }, "\"select 1\"",
         "I4 0, I4 1, I4 1"},
        {"procedure, read-only", [](CTRecordset& r) { return r.OpenProcedure("p", 1); }, "\"\"p\"\"",
         "I4 0, I4 1, I4 4"},
        {"procedure", [](CTRecordset& r) { return r.OpenProcedure("p", 0); }, "\"\"p\"\"", "I4 2, I4 3, I4 4"},
        {"empty table", [](CTRecordset& r) { return r.OpenTable("", 1); }, "\"\"\"\"", "I4 0, I4 1, I4 2"},
        {"null table", [](CTRecordset& r) { return r.OpenTable(nullptr, 1); }, "\"\"\"\"", "I4 0, I4 1, I4 2"},
        {"null procedure", [](CTRecordset& r) { return r.OpenProcedure(nullptr, 1); }, "\"\"\"\"", "I4 0, I4 1, I4 4"},
        {"null query", [](CTRecordset& r) { return r.OpenSQL(nullptr, 1); }, "null", "I4 0, I4 1, I4 1"},
        {"quotes in a name stay", [](CTRecordset& r) { return r.OpenTable("a\"b", 1); }, "\"\"a\"b\"\"",
         "I4 0, I4 1, I4 2"},
    };
    Recordset recordset;
    Bind(recordset);
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(row.open(recordset), 1);
        EXPECT_EQ(journal_.Take(), Opening(row.source, row.numbers));
        EXPECT_EQ(ErrorOf(recordset), kOpened) << "whatever came back";
    }
}

TEST_F(RecordsetOpen, AnUnboundOpenCreatesNothing) {
    Recordset recordset;
    EXPECT_EQ(recordset.OpenSQL("select 1", 1), 0);
    EXPECT_EQ(recordset.OpenTable("T", 0), 0);
    EXPECT_EQ(recordset.OpenProcedure("P", 0), 0);
    EXPECT_EQ(ErrorOf(recordset), kNotBound);
    EXPECT_EQ(recordsets_->Created(), 0);
    EXPECT_EQ(connections_->Created(), 0);
}

TEST_F(RecordsetOpen, ClosesAnOpenRecordsetFirstAndOpensAlsoWhenThatFails) {
    for (const bool fails : {false, true}) {
        SCOPED_TRACE(fails);
        Recordset recordset;
        Bind(recordset);
        records_->On(Get(1054)).Returns(Long(1));
        if (fails) records_->On(Call(1014)).Fails("正在编辑");
        EXPECT_EQ(recordset.OpenSQL("select 1", 1), 1);
        EXPECT_THAT(journal_.Take(),
                    ElementsAre("records.get 1054", "records.get 1054", "records.call 1014", "records.put 1051 (I4 3)",
                                "records.call 1022 (BSTR \"select 1\", BSTR \"DSN=stock\", I4 0, I4 1, I4 1)",
                                "records.put 1004 (I4 1000)"));
        EXPECT_EQ(ErrorOf(recordset), kOpened);
        records_->On(Get(1054)).Returns(Long(0));
    }
}

TEST_F(RecordsetOpen, AFailingOpenHasOpenAsItsContext) {
    Recordset recordset;
    Bind(recordset);
    records_->On(Call(1022)).Fails("表 T 不存在");
    EXPECT_EQ(recordset.OpenTable("T", 1), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("表 T 不存在", "Open"));
    records_->On(Call(1022)) = Script();
    records_->On(Put(1004)).Fails("缓存");
    EXPECT_EQ(recordset.OpenTable("T", 1), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("缓存", "Open"));
}

TEST_F(RecordsetOpen, AFailureBeforeTheOpenHasTheSourceAsItsContext) {
    Recordset recordset;
    Bind(recordset);
    records_->On(Put(1051)).Fails("不允许");
    EXPECT_EQ(recordset.OpenTable("T", 1), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("不允许", "\"T\""));
    EXPECT_EQ(recordset.OpenSQL("select %s", 1), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("不允许", "select %s"));
    EXPECT_EQ(recordset.OpenSQL(nullptr, 1), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("不允许", ""));
    records_->On(Get(1054)).Fails("断开");
    EXPECT_EQ(recordset.OpenSQL("select 1", 1), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("断开", "select 1"));
}

TEST_F(RecordsetOpen, TheShortFormsOfOpenSendWhatTheyHave) {
    Recordset recordset;
    Bind(recordset);
    EXPECT_EQ(recordset.SetRecordset(Text("file.xml")), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1022 (BSTR \"file.xml\")", "records.put 1004 (I4 1000)"));
    EXPECT_EQ(recordset.SetRecordset(Text("x"), 3, 1, 256), 1);
    EXPECT_THAT(journal_.Take(),
                ElementsAre("records.call 1022 (BSTR \"x\", I4 3, I4 1, I4 256)", "records.put 1004 (I4 1000)"))
        << "the numbers land one place early";
    records_->On(Call(1022)).Fails("坏文件");
    EXPECT_EQ(recordset.SetRecordset(Text("x")), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("坏文件", "Open"));
    EXPECT_EQ(recordset.SetRecordset(Text("x"), 3, 1, 256), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("坏文件", "Open"));
    Recordset empty;
    EXPECT_EQ(empty.SetRecordset(Text("x")), 0) << "no object";
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith("\r\nOpen"));
}

TEST_F(RecordsetOpen, TheLongFormOfOpenSendsFiveArguments) {
    Recordset recordset;
    Bind(recordset);
    EXPECT_EQ(recordset.SetRecordset(Text("T"), Object(nullptr), 3, 4, 512), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1022 (BSTR \"T\", DISPATCH null, I4 3, I4 4, I4 512)",
                                             "records.put 1004 (I4 1000)"));
}

TEST_F(RecordsetOpen, ACacheSizeThatIsRefusedFailsEveryFormOfOpen) {
    static constexpr int (*kCalls[])(Recordset&) = {
        [](Recordset& r) { return r.SetRecordset(Text("x")); },
        [](Recordset& r) { return r.SetRecordset(Text("x"), 3, 1, 256); },
        [](Recordset& r) { return r.SetRecordset(Text("x"), Text("DSN=stock"), 3, 1, 1); },
    };
    Recordset recordset;
    Bind(recordset);
    records_->On(Put(1004)).Fails("缓存");
    for (const auto& call : kCalls) {
        recordset.Close();  // empties the text
        EXPECT_EQ(call(recordset), 0);
        EXPECT_EQ(ErrorOf(recordset), Failure("缓存", "Open"));
    }
}

TEST_F(RecordsetOpen, ARecordsetCanBeOpenedAgainAfterClose) {
    Recordset recordset;
    Bind(recordset);
    EXPECT_EQ(recordset.OpenSQL("a", 1), 1);
    EXPECT_EQ(recordset.Close(), 1);
    EXPECT_EQ(recordset.OpenSQL("b", 1), 1);
    EXPECT_EQ(recordsets_->Created(), 1);
}

// ---- data sources ------------------------------------------------------------------------------------------------

TEST_F(RecordsetOpen, OpenFieldAndOpenDispatchPutTheSourceByReference) {
    auto source = Make("source");
    recordsets_->Give(records_.Get());
    Recordset recordset;
    EXPECT_EQ(recordset.OpenField(source.Get()), 1);
    EXPECT_EQ(recordset.OpenDispatch(source.Get()), 1);
    EXPECT_EQ(recordset.SetRefDataSource(source.Get()), 1);
    EXPECT_EQ(recordset.SetDispatch(source.Get()), 1);
    const std::string line = "records.putref 1056 (UNKNOWN source)";
    EXPECT_THAT(journal_.Take(), ElementsAre(line, line, line, line));
    EXPECT_EQ(source->References(), 1u);
    EXPECT_EQ(ErrorOf(recordset), kCreated);
}

TEST_F(RecordsetOpen, RefusesAddressesThatAreNone) {
    static constexpr int (*kCalls[])(CTRecordset&, IDispatch*) = {
        [](CTRecordset& r, IDispatch* p) { return r.OpenField(p); },
        [](CTRecordset& r, IDispatch* p) { return r.OpenDispatch(p); },
        [](CTRecordset& r, IDispatch* p) { return r.SetRefDataSource(p); },
        [](CTRecordset& r, IDispatch* p) { return r.SetDispatch(p); },
    };
    Recordset recordset;
    Bind(recordset);
    for (const auto& call : kCalls) {
        for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{8}}) {
            EXPECT_EQ(recordset.Close(), 1);
            EXPECT_EQ(call(recordset, reinterpret_cast<IDispatch*>(address)), 0);
            EXPECT_EQ(ErrorOf(recordset), kInvalid);
        }
    }
}

TEST_F(RecordsetOpen, AFailingSourceIsReportedByTheWorkingMembersAndPassedByTheOthers) {
    auto source = Make("source");
    Recordset recordset;
    Bind(recordset);
    records_->On(PutRef(1056)).Fails("不是数据源");
    EXPECT_EQ(recordset.OpenField(source.Get()), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("不是数据源", "操作 OpenField 时出现异常!"));
    recordset.Close();
    EXPECT_EQ(recordset.OpenDispatch(source.Get()), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("不是数据源", "操作 OpenField 时出现异常!"));
    for (const bool isDispatch : {false, true}) {
        try {
            isDispatch ? recordset.SetDispatch(source.Get()) : recordset.SetRefDataSource(source.Get());
            ADD_FAILURE() << "no exception";
        } catch (COleDispatchException* e) {
            EXPECT_STREQ(e->m_strDescription, "不是数据源");
            e->Delete();
        }
    }
}

TEST_F(RecordsetOpen, SettingASourceWithoutAnObjectRaises) {
    auto source = Make("source");
    Recordset recordset;
    for (const bool isDispatch : {false, true}) {
        try {
            isDispatch ? recordset.SetDispatch(source.Get()) : recordset.SetRefDataSource(source.Get());
            ADD_FAILURE() << "no exception";
        } catch (CException* e) {
            e->Delete();
        }
    }
    EXPECT_EQ(recordsets_->Created(), 0) << "only OpenField and OpenDispatch create one";
    EXPECT_EQ(source->References(), 1u);
}

// ---- closing and state -------------------------------------------------------------------------------------------

TEST_F(RecordsetOpen, CloseOfAClosedRecordsetEmptiesTheText) {
    Recordset recordset;
    recordset.OpenSQL("x", 1);
    EXPECT_NE(ErrorOf(recordset), "");
    EXPECT_EQ(recordset.Close(), 1);
    EXPECT_EQ(ErrorOf(recordset), "");
}

TEST_F(RecordsetOpen, AFailingCloseHasAContextThatBeginsWithABlank) {
    Recordset recordset;
    Bind(recordset);
    records_->On(Get(1054)).Returns(Long(1));
    records_->On(Call(1014)).Fails("正在编辑").Then();
    EXPECT_EQ(recordset.Close(), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("正在编辑", " Can not close!"));
    EXPECT_EQ(recordset.Close(), 1);
}

TEST_F(RecordsetOpen, CloseBearsAStateThatCannotBeRead) {
    Recordset recordset;
    Bind(recordset);
    records_->On(Get(1054)).Fails("断开");
    EXPECT_EQ(recordset.Close(), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("断开", " Can not close!"));
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1054"));
}

TEST_F(RecordsetOpen, IsOpenKnowsStateOne) {
    Recordset recordset;
    Bind(recordset);
    for (const long state : {0L, 1L, 2L, 4L, 9L}) {
        records_->On(Get(1054)).Returns(Long(state));
        EXPECT_EQ(recordset.IsOpen(), state == 1 ? 1 : 0) << state;
    }
    records_->On(Get(1054)).Fails("断开");
    EXPECT_EQ(recordset.IsOpen(), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("断开", "IsOpen 出错!"));
    records_->On(Get(1054)) = Script();
}

TEST_F(RecordsetOpen, RequerySendsOne) {
    Recordset recordset;
    Bind(recordset);
    EXPECT_EQ(recordset.Requery(), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1023 (I4 1)"));
}

TEST_F(RecordsetOpen, RequeryCatchesDescribedFailuresOnly) {
    Recordset recordset;
    Bind(recordset);
    records_->On(Call(1023)).Fails("不允许").Then().FailsWith(DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(recordset.Requery(), 0);
    EXPECT_EQ(ErrorOf(recordset), Failure("不允许", "Requery 时出错!"));
    try {
        recordset.Requery();
        ADD_FAILURE() << "no exception";
    } catch (COleException* e) {
        EXPECT_EQ(e->m_sc, DISP_E_MEMBERNOTFOUND);
        e->Delete();
    }
}

TEST_F(RecordsetOpen, ACountThatCannotBeReadIsMinusOne) {
    Recordset recordset;
    Bind(recordset);
    records_->On(Get(1010)).Returns(Long(42)).Then().Returns(Long(-1)).Then().Fails("已关闭");
    EXPECT_EQ(recordset.GetRecordCount(), 42);
    EXPECT_EQ(recordset.GetRecordCount(), -1);
    EXPECT_EQ(recordset.GetRecordCount(), -1);
    EXPECT_EQ(ErrorOf(recordset), Failure("已关闭", "GetRecordCount!"));
    Recordset empty;
    EXPECT_EQ(empty.GetRecordCount(), -1);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith("\r\nGetRecordCount!"));
}

}  // namespace
}  // namespace tk::test
