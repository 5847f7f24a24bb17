#include "driver/driver_fixture.h"
#include "tkkernel/util.h"

namespace tk::test {
namespace {

constexpr char kNotOpened[] = "数据库没有打开或打开失败,系统没有合法调用Open方法！";

class Database : public CTDatabase {
public:
    using CTDatabase::OnExecute;
};

class DatabaseExecute : public DriverTest {
protected:
    void SetUp() override {
        Open(database_);
        connection_->On(Call(6)).Stores(1, Long(3)).Returns(Object(nullptr));
        SetLastError(0);
    }
    void TearDown() override {
        database_.Close();
        EXPECT_EQ(connection_->References(), 2u);
        database_held_.reset();
        DriverTest::TearDown();
    }

    /// What goes to Connection.Execute.
    static std::string Executed(const std::string& sql, long options = 129) {
        return "connection.call 6 (BSTR " + sql + ", VARIANT& EMPTY, I4 " + std::to_string(options) + ")";
    }

    std::unique_ptr<Database> database_held_ = std::make_unique<Database>();
    Database& database_ = *database_held_;
};

TEST_F(DatabaseExecute, ExecuteSqlAsksForNoRecords) {
    EXPECT_EQ(database_.ExecuteSQL("delete from 库存"), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"delete from 库存\"")));
}

TEST_F(DatabaseExecute, ARecordsetThatComesBackIsClosedAndGivenBack) {
    connection_->On(Call(6)).Returns(Object(records_.Get()));
    records_->On(Get(1054)).Returns(Long(1)).Then().Returns(Long(0));
    EXPECT_EQ(database_.ExecuteSQL("select 1"), 1);
    EXPECT_THAT(journal_.Take(),
                ElementsAre(Executed("\"select 1\""), "records.get 1054", "records.call 1014", "records.get 1054"));
    connection_->On(Call(6)).Returns(Nothing()).Returns(Object(nullptr));
    EXPECT_EQ(records_->References(), 1u);
    EXPECT_EQ(recordsets_->Created(), 0) << "the temporary wrapper keeps what it was given";
}

TEST_F(DatabaseExecute, EveryStatementMemberClosesARecordsetAlsoWhenNothingWasTold) {
    static constexpr long (*kCalls[])(Database&) = {
        [](Database& d) -> long { return d.ExecuteSQL("x"); },
        [](Database& d) -> long { return d.ExecuteEx("x"); },
        [](Database& d) -> long { return d.ExecSQL("x"); },
    };
    connection_->On(Call(19)).Fails("之前");
    for (const bool told : {true, false}) {
        for (const auto& call : kCalls) {
            connection_->On(Call(6)) = Script();
            connection_->On(Call(6)).Returns(Object(records_.Get()));
            if (told) connection_->On(Call(6)).Stores(1, Long(1));
            records_->On(Get(1054)) = Script();
            records_->On(Get(1054)).Returns(Long(1)).Then().Returns(Long(0));
            database_.OpenSchema(20);  // leaves a text
            journal_.Take();
            SetLastError(0);
            EXPECT_EQ(call(database_), told ? 1 : 0);
            EXPECT_THAT(journal_.Take(),
                        ElementsAre(Executed("\"x\""), "records.get 1054", "records.call 1014", "records.get 1054"));
            EXPECT_EQ(records_->References(), 2u);
            EXPECT_EQ(ErrorOf(database_), told ? Failure("之前", "OpenSchema 时出错") : kNotOpened);
        }
    }
}

TEST_F(DatabaseExecute, AFailureWhileClosingThatRecordsetIsNoFailureOfTheStatement) {
    connection_->On(Call(6)).Returns(Object(records_.Get()));
    records_->On(Get(1054)).Returns(Long(1));
    records_->On(Call(1014)).Fails("不能关闭");
    EXPECT_EQ(database_.ExecuteSQL("select 1"), 1);
    connection_->On(Call(6)).Returns(Object(nullptr));
    EXPECT_EQ(records_->References(), 1u);
}

TEST_F(DatabaseExecute, ResultsFollowTheRecordsAffected) {
    static const struct {
        const char* label;
        COleVariant told;
        int executeSql;
        long execSql;
    } kRows[] = {
        {"some", Long(3), 1, 3},          {"none", Long(0), 1, 0},       {"unknown", Long(-1), 1, 0},
        {"sixteen bits", Short(7), 1, 7}, {"not told", Nothing(), 0, 0}, {"null", Null(), 1, 0},
        {"too large", Real(1e12), 1, 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        connection_->On(Call(6)).Then();  // forget what the row before stored
        connection_->On(Call(6)) = Script();
        connection_->On(Call(6)).Stores(1, row.told).Returns(Object(nullptr));
        EXPECT_EQ(database_.ExecuteSQL("x"), row.executeSql);
        EXPECT_EQ(database_.ExecuteEx("x"), row.executeSql);
        EXPECT_EQ(database_.ExecSQL("x"), row.execSql);
    }
}

TEST_F(DatabaseExecute, ASuccessLeavesTheLastErrorText) {
    const std::string before = ErrorOf(database_);
    database_.ExecuteSQL("x");
    EXPECT_EQ(ErrorOf(database_), before);
}

TEST_F(DatabaseExecute, ReportsThatOpenWasNotCalledWhenNothingWasTold) {
    connection_->On(Call(6)) = Script();
    static constexpr void (*kCalls[])(Database&) = {
        [](Database& d) { d.ExecuteSQL("x"); },
        [](Database& d) { d.ExecuteEx("x"); },
        [](Database& d) { d.ExecSQL("x"); },
        [](Database& d) { Held<IDispatch> records(d.GetRecordset("x")); },
        [](Database& d) { Held<IDispatch> records(d.OnExecute("x", nullptr, 1)); },
    };
    connection_->On(Call(6)).Returns(Object(nullptr));
    for (const auto& call : kCalls) {
        Database other;
        SetLastError(0);
        call(other);
        EXPECT_EQ(ErrorOf(other), kNotOpened) << "never opened";
        SetLastError(0);
        call(database_);
        EXPECT_EQ(ErrorOf(database_), kNotOpened) << "opened";
    }
}

TEST_F(DatabaseExecute, ReportsTheSystemsLastErrorWhenNothingWasTold) {
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).Does([](const Arguments&) {
        SetLastError(5);
        return Object(nullptr);
    });
    EXPECT_EQ(database_.ExecuteSQL("x"), 0);
    EXPECT_THAT(ErrorOf(database_), ::testing::StartsWith("错误[0x00000005]:"));
}

TEST_F(DatabaseExecute, ReportsALastErrorThatHasNoTextAsAnEmptyText) {
    constexpr DWORD kUnknownCode = 0x2FFFFFFF;
    ASSERT_STREQ(LookupErrorText(kUnknownCode), "");
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).Does([](const Arguments&) {
        SetLastError(kUnknownCode);
        return Object(nullptr);
    });
    EXPECT_NE(ErrorOf(database_), "");
    EXPECT_EQ(database_.ExecuteSQL("x"), 0);
    EXPECT_EQ(ErrorOf(database_), "");
}

TEST_F(DatabaseExecute, AFailureHasTheStatementAsItsContext) {
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).Fails("表不存在");
    EXPECT_EQ(database_.ExecuteSQL("drop table 表"), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("表不存在", "drop table 表"));
    EXPECT_EQ(database_.ExecuteEx("drop table %s%d", "T", 1), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("表不存在", "drop table T1"));
    EXPECT_EQ(database_.ExecSQL("drop table %s%d", "T", 2), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("表不存在", "drop table T2"));
    EXPECT_EQ(database_.GetRecordset("select * from T3"), nullptr);
    EXPECT_EQ(ErrorOf(database_), Failure("表不存在", "select * from T3"));
    EXPECT_EQ(database_.ExecuteSQL("like '%s%n'"), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("表不存在", "like '%s%n'")) << "a statement is no format";
}

TEST_F(DatabaseExecute, AnUndescribedFailureNamesTheSystemsText) {
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).FailsWith(DISP_E_TYPEMISMATCH);
    EXPECT_EQ(database_.ExecuteSQL("x"), 0);
    EXPECT_THAT(ErrorOf(database_), ::testing::EndsWith("\r\nx"));
}

TEST_F(DatabaseExecute, NullStatementsAreSentAndReportedAsEmpty) {
    EXPECT_EQ(database_.ExecuteSQL(nullptr), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("null")));
    EXPECT_EQ(database_.ExecuteEx(nullptr), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"\"")));
    EXPECT_EQ(database_.ExecSQL(nullptr), 3);
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"\"")));
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).Fails("空语句");
    EXPECT_EQ(database_.ExecuteSQL(nullptr), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("空语句", ""));
}

TEST_F(DatabaseExecute, FormatsAsPrintfDoes) {
    EXPECT_EQ(database_.ExecuteEx("update T set A=%d, B='%s', C=%.2f where D like '100%%'", -5, "库存", 1.5), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"update T set A=-5, B='库存', C=1.50 where D like '100%'\"")));
    EXPECT_EQ(database_.ExecSQL("%s", "%d%n"), 3);
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"%d%n\"")));
}

TEST_F(DatabaseExecute, FormattedStatementsHaveAnyLength) {
    const std::string text(70000, 'v');
    EXPECT_EQ(database_.ExecuteEx("insert '%s'", text.c_str()), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"insert '" + text + "'\"")));
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).Fails("太长");
    EXPECT_EQ(database_.ExecSQL("%s", text.c_str()), 0);
    EXPECT_EQ(ErrorOf(database_), Failure("太长", text.c_str()));
}

TEST_F(DatabaseExecute, GetRecordsetFetchesAheadAndHandsOver) {
    connection_->On(Call(6)).Returns(Object(records_.Get()));
    {
        Held<IDispatch> result(database_.GetRecordset("select * from T"));
        EXPECT_EQ(result.Get(), records_.Get());
        EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"select * from T\"", 33)));
        EXPECT_EQ(records_->References(), 3u);
    }
    connection_->On(Call(6)).Returns(Object(nullptr));
    EXPECT_EQ(records_->References(), 1u);
}

TEST_F(DatabaseExecute, GetRecordsetHandsOverAlsoWhenNothingWasTold) {
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).Returns(Object(records_.Get()));
    SetLastError(0);
    const Held<IDispatch> result(database_.GetRecordset("x"));
    EXPECT_EQ(result.Get(), records_.Get());
    EXPECT_EQ(records_->References(), 3u);
    EXPECT_EQ(ErrorOf(database_), kNotOpened);
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"x\"", 33))) << "it stays open";
}

TEST_F(DatabaseExecute, OnExecuteHandsTheRecordsetOver) {
    connection_->On(Call(6)).Returns(Object(records_.Get()));
    COleVariant told;
    {
        const Held<IDispatch> result(database_.OnExecute("x", &told, 1));
        EXPECT_EQ(result.Get(), records_.Get());
        EXPECT_EQ(records_->References(), 3u);
    }
    EXPECT_EQ(records_->References(), 2u);
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"x\"", 1)));
}

TEST_F(DatabaseExecute, OnExecuteFillsTheCallersCountAndLetsFailuresPass) {
    COleVariant told = Text("old");
    EXPECT_EQ(database_.OnExecute("x", &told, 1), nullptr);
    EXPECT_EQ(Describe(told), "I4 3");
    EXPECT_THAT(journal_.Take(), ElementsAre(Executed("\"x\"", 1)));
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).Fails("失败");
    try {
        database_.OnExecute("x", &told, 1);
        ADD_FAILURE() << "no exception";
    } catch (COleDispatchException* e) {
        e->Delete();
    }
}

// ---- the members of a Command ------------------------------------------------------------------------------------

TEST_F(DatabaseExecute, ExecuteCommandSendsACommandsMembersToTheConnection) {
    EXPECT_EQ(database_.ExecuteCommand("exec 过程"), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18", "connection.putref 1 (DISPATCH connection)",
                                             "connection.put 2 (BSTR \"exec 过程\")", "connection.put 2 (I4 3600)",
                                             "connection.call 5 (I4 129)"));
}

TEST_F(DatabaseExecute, ExecuteCommandOfAClosedConnectionDoesNothing) {
    connection_->On(Get(18)).Returns(Long(2));
    const std::string before = ErrorOf(database_);
    EXPECT_EQ(database_.ExecuteCommand("x"), 0);
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18"));
    EXPECT_EQ(ErrorOf(database_), before);
    Database unopened;
    EXPECT_EQ(unopened.ExecuteCommand("x"), 0);
    EXPECT_EQ(ErrorOf(unopened), "");
}

TEST_F(DatabaseExecute, ExecuteCommandStopsAtTheFirstFailure) {
    connection_->On(PutRef(1)).FailsWith(DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(database_.ExecuteCommand("exec p"), 0);
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18", "connection.putref 1 (DISPATCH connection)"));
    EXPECT_THAT(ErrorOf(database_), ::testing::EndsWith("\r\nexec p"));
}

TEST_F(DatabaseExecute, ExecuteCommandStopsAtAFailureOfAnyStep) {
    static const struct {
        const char* label;
        Member member;
        std::size_t calls;
    } kRows[] = {{"state", Get(18), 1}, {"text", Put(2), 3}, {"execution", Call(5), 5}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        connection_->On(row.member).Fails("断开");
        EXPECT_EQ(database_.ExecuteCommand(row.label), 0);
        EXPECT_EQ(journal_.Take().size(), row.calls);
        EXPECT_EQ(ErrorOf(database_), Failure("断开", row.label));
        connection_->On(row.member) = Script();
        connection_->On(Get(18)).Returns(Long(1));
    }
}

TEST_F(DatabaseExecute, OnExecuteOfANumberLetsFailuresPass) {
    connection_->On(Call(5)).Fails("不允许");
    const std::string before = ErrorOf(database_);
    try {
        database_.OnExecute(129);
        ADD_FAILURE() << "no exception";
    } catch (COleDispatchException* e) {
        EXPECT_STREQ(e->m_strDescription, "不允许");
        e->Delete();
    }
    EXPECT_EQ(ErrorOf(database_), before);
    connection_->On(Call(5)) = Script();
}

TEST_F(DatabaseExecute, OnExecuteOfANumberCallsMemberFive) {
    connection_->On(Call(5)).Returns(Object(records_.Get()));
    Held<IDispatch> result(database_.OnExecute(129));
    EXPECT_EQ(result.Get(), records_.Get());
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.call 5 (I4 129)"));
    connection_->On(Call(5)).Returns(Nothing()).Returns(COleVariant());
}

}  // namespace
}  // namespace tk::test
