#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

class RecordsetNavigation : public DriverTest {
protected:
    void SetUp() override { Bind(recordset_); }
    void TearDown() override {
        recordset_held_.reset();
        DriverTest::TearDown();
    }
    void At(bool bof, bool eof) {
        records_->On(Get(1002)).Returns(Flag(bof));
        records_->On(Get(1006)).Returns(Flag(eof));
    }

    std::unique_ptr<CTRecordset> recordset_held_ = std::make_unique<CTRecordset>();
    CTRecordset& recordset_ = *recordset_held_;
};

TEST_F(RecordsetNavigation, MoveSendsTheStartAsAShort) {
    EXPECT_EQ(recordset_.Move(-5L, short{2}), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1017 (I4 -5, I2 2)"));
    EXPECT_EQ(recordset_.Move(0L, short{0}), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1017 (I4 0, I2 0)"));
}

TEST_F(RecordsetNavigation, FindSendsTheCriteriaAlone) {
    EXPECT_EQ(recordset_.Find("名称 = '库存'"), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1058 (BSTR \"名称 = '库存'\")"));
    EXPECT_EQ(recordset_.Find(nullptr), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1058 (BSTR null)"));
    EXPECT_EQ(recordset_.Find(""), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1058 (BSTR \"\")"));
}

TEST_F(RecordsetNavigation, FindFirstStartsAtTheFirstRecord) {
    At(false, false);
    EXPECT_EQ(recordset_.FindFirst("A > 1"), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1006", "records.get 1002",
                                             "records.call 1058 (BSTR \"A > 1\", I4 0, I4 1, I2 1)"));
}

TEST_F(RecordsetNavigation, FindNextSkipsTheCurrentRecord) {
    At(false, false);
    EXPECT_EQ(recordset_.FindNext("A > 1"), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1006", "records.get 1002",
                                             "records.call 1058 (BSTR \"A > 1\", I4 1, I4 1, I2 0)"));
}

TEST_F(RecordsetNavigation, AtEitherEndNothingIsSearched) {
    static const struct {
        const char* label;
        bool bof;
        bool eof;
    } kRows[] = {{"before the first", true, false}, {"after the last", false, true}, {"empty", true, true}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        At(row.bof, row.eof);
        EXPECT_EQ(recordset_.FindFirst("A = 1"), 0);
        EXPECT_EQ(recordset_.FindNext("A = 1"), 0);
        EXPECT_THAT(journal_.Take(), ::testing::Each(::testing::StartsWith("records.get")));
    }
}

TEST_F(RecordsetNavigation, FilterIsAText) {
    EXPECT_EQ(recordset_.SetFilter("数量 > 3"), 1);
    EXPECT_EQ(recordset_.SetFilter(""), 1);
    EXPECT_EQ(recordset_.SetFilter(nullptr), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.put 1030 (BSTR \"数量 > 3\")", "records.put 1030 (BSTR \"\")",
                                             "records.put 1030 (BSTR null)"));
}

TEST_F(RecordsetNavigation, GetFilterConvertsWhatIsThere) {
    records_->On(Get(1030)).Returns(Text("数量 > 3")).Then().Returns(Long(0)).Then().Returns(Nothing());
    EXPECT_STREQ(recordset_.GetFilter(), "数量 > 3");
    EXPECT_STREQ(recordset_.GetFilter(), "0");
    EXPECT_STREQ(recordset_.GetFilter(), "");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1030", "records.get 1030", "records.get 1030"));
}

TEST_F(RecordsetNavigation, FailuresLeaveTheirContext) {
    static const struct {
        const char* label;
        Member member;
        int (*call)(CTRecordset&);
        const char* context;
    } kRows[] = {
        {"Move", Call(1017), [](CTRecordset& r) { return r.Move(1L, short{0}); }, "Can not Move!"},
        {"Find", Call(1058), [](CTRecordset& r) { return r.Find("x"); }, "Find Error!"},
        {"FindFirst", Call(1058), [](CTRecordset& r) { return r.FindFirst("x"); }, "Find Error!"},
        {"FindNext", Call(1058), [](CTRecordset& r) { return r.FindNext("x"); }, "Find Error!"},
        {"FindFirst, EOF", Get(1006), [](CTRecordset& r) { return r.FindFirst("x"); }, "Find Error!"},
        {"FindNext, BOF", Get(1002), [](CTRecordset& r) { return r.FindNext("x"); }, "Find Error!"},
        {"SetFilter", Put(1030), [](CTRecordset& r) { return r.SetFilter("A like '%s'"); }, "A like '%s'"},
        {"SetFilter of null", Put(1030), [](CTRecordset& r) { return r.SetFilter(nullptr); }, ""},
        {"GetFilter", Get(1030), [](CTRecordset& r) { return r.GetFilter().GetLength(); }, "GetFilter!"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        At(false, false);
        records_->On(row.member).Fails("参数错误");
        EXPECT_EQ(row.call(recordset_), 0);
        EXPECT_EQ(ErrorOf(recordset_), Failure("参数错误", row.context));
        records_->On(row.member) = Script();
    }
}

TEST_F(RecordsetNavigation, WithoutAnObjectEveryMemberReports) {
    CTRecordset empty;
    EXPECT_EQ(empty.Move(1L, short{0}), 0);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith("\r\nCan not Move!"));
    EXPECT_EQ(empty.Find("x"), 0);
    EXPECT_EQ(empty.FindFirst("x"), 0);
    EXPECT_EQ(empty.FindNext("x"), 0);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith("\r\nFind Error!"));
    EXPECT_EQ(empty.SetFilter("f"), 0);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith("\r\nf"));
    EXPECT_STREQ(empty.GetFilter(), "");
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith("\r\nGetFilter!"));
}

}  // namespace
}  // namespace tk::test
