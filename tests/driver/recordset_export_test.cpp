// Records as texts: what each member sends to the recordset object, and what it makes of the answers.
#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

constexpr char kColumnFailed[] = "操作 SelectOneColumn 数据库出现异常!";
constexpr char kCurrentFailed[] = " 操作 SelectCurRecordToString 数据库出现异常!";
constexpr char kFirstFailed[] = " 操作 SelectFirstRecordToString 数据库出现异常!";
constexpr char kNextFailed[] = " 操作 SelectNextRecordToString 数据库出现异常!";

using Record = std::vector<std::pair<const char*, COleVariant>>;

Lines TextsOf(const CStringArray& values) {
    Lines texts;
    for (int i = 0; i < values.GetSize(); ++i)
        texts.emplace_back(values.GetAt(i));
    return texts;
}

class RecordsetExport : public DriverTest {
protected:
    void SetUp() override { Bind(recordset_); }
    void TearDown() override {
        recordset_held_.reset();
        rows_.clear();
        DriverTest::TearDown();
    }

    /// The object holds these records and stands on the first one.
    void Show(std::vector<Record> records) {
        rows_.clear();
        at_ = 0;
        for (auto& record : records)
            rows_.push_back(MakeFields(std::move(record)));
        records_->On(Get(0)).Does([this](const Arguments&) { return Object(rows_.at(at_).Get()); });
        records_->On(Get(1006)).Does([this](const Arguments&) { return Flag(at_ >= rows_.size()); });
        records_->On(Call(1018)).Does([this](const Arguments&) { return ++at_, Nothing(); });
        records_->On(Call(1020)).Does([this](const Arguments&) { return at_ = 0, Nothing(); });
    }

    std::vector<Held<ScriptedObject>> rows_;
    std::size_t at_ = 0;
    std::unique_ptr<CTRecordset> recordset_held_ = std::make_unique<CTRecordset>();
    CTRecordset& recordset_ = *recordset_held_;
};

// ---- column definitions ------------------------------------------------------------------------------------------

TEST_F(RecordsetExport, GetNullStringLooksAtOneAttribute) {
    static const struct {
        const char* label;
        long attributes;
        const char* text;
    } kRows[] = {
        {"nothing", 0, " NOT NULL"},
        {"nullable", 0x20, ""},
        {"may be null", 0x40, " NOT NULL"},
        {"nullable among others", 0x7F, ""},
        {"all but nullable", ~0x20L, " NOT NULL"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        auto field = Make("field");
        auto fields = Make("fields");
        field->On(Get(1114)).Returns(Long(row.attributes));
        fields->On(Get(0)).Returns(Object(field.Get()));
        records_->On(Get(0)).Returns(Object(fields.Get()));
        EXPECT_STREQ(recordset_.GetNullString(3), row.text);
        EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (I2 3)", "field.get 1114"));
    }
}

TEST_F(RecordsetExport, GetNullStringLetsTheExceptionPass) {
    records_->On(Get(0)).Fails("没有打开");
    try {
        recordset_.GetNullString(0);
        ADD_FAILURE() << "no exception";
    } catch (COleDispatchException* e) {
        EXPECT_STREQ(e->m_strDescription, "没有打开");
        e->Delete();
    }
}

// ---- one column --------------------------------------------------------------------------------------------------

TEST_F(RecordsetExport, SelectOneColumnWalksFromTheFirstRecordToTheEnd) {
    Show({{{"A", Long(1)}}, {{"A", Real(1.5)}}, {{"A", Null()}}});
    at_ = 1;
    CStringArray values;
    values.Add("before");
    EXPECT_EQ(recordset_.SelectOneColumn(0L, values), 3);
    EXPECT_THAT(TextsOf(values), ElementsAre("before", "1", "        1.5", ""));
    EXPECT_NE(recordset_.GetEof(), 0);
    EXPECT_THAT(
        journal_.Take(),
        ElementsAre("records.get 1006", "records.call 1020",                                                         //
                    "records.get 1006", "records.get 0", "fields.get 0 (I4 0)", "field.get 0", "records.call 1018",  //
                    "records.get 1006", "records.get 0", "fields.get 0 (I4 0)", "field.get 0", "records.call 1018",  //
                    "records.get 1006", "records.get 0", "fields.get 0 (I4 0)", "field.get 0", "records.call 1018",  //
                    "records.get 1006", "records.get 1006"));
}

TEST_F(RecordsetExport, SelectOneColumnTakesANameAsWell) {
    Show({{{"ID", Long(1)}, {"名称", Text("螺丝")}}, {{"ID", Long(2)}, {"名称", Text("")}}});
    CStringArray values;
    EXPECT_EQ(recordset_.SelectOneColumn("名称", values), 2);
    EXPECT_THAT(TextsOf(values), ElementsAre("螺丝", ""));
    EXPECT_EQ(journal_.Take().at(4), "fields.get 0 (BSTR \"名称\")");
}

TEST_F(RecordsetExport, SelectOneColumnAtTheEndDoesNotMove) {
    Show({});
    CStringArray values;
    EXPECT_EQ(recordset_.SelectOneColumn(0L, values), 0);
    EXPECT_EQ(values.GetSize(), 0);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1006", "records.get 1006"));
}

TEST_F(RecordsetExport, AColumnThatDoesNotExistGivesEmptyTexts) {
    Show({{{"A", Long(1)}}, {{"A", Long(2)}}});
    CStringArray values;
    EXPECT_EQ(recordset_.SelectOneColumn("B", values), 2);
    EXPECT_THAT(TextsOf(values), ElementsAre("", ""));
    EXPECT_THAT(ErrorOf(recordset_), ::testing::EndsWith("可能数据源绑定错误!试着用 OpenField()打开数据源"));
}

TEST_F(RecordsetExport, AFailureInTheMiddleOfAColumnGivesZero) {
    for (const bool byName : {false, true}) {
        Show({{{"A", Long(1)}}, {{"A", Long(2)}}});
        records_->On(Call(1018)).Fails("断开");
        CStringArray values;
        EXPECT_EQ(byName ? recordset_.SelectOneColumn("A", values) : recordset_.SelectOneColumn(0L, values), 0);
        EXPECT_THAT(TextsOf(values), ElementsAre("1")) << "what was appended stays";
        EXPECT_EQ(ErrorOf(recordset_), Failure("断开", kColumnFailed));
    }
}

// ---- the current record as one text ------------------------------------------------------------------------------

TEST_F(RecordsetExport, GetCurRecordToStringJoinsLiterals) {
    const struct {
        const char* label;
        Record record;
        const char* separator;
        const char* text;
    } kRows[] = {
        {"texts in quotes", {{"A", Text("a")}, {"B", Text("")}, {"C", Text("c")}}, ",", "'a','','c'"},
        {"numbers with a gap", {{"A", Long(1)}, {"B", Null()}, {"C", Long(3)}}, ",", "1,,3"},
        {"nulls at the end", {{"A", Long(1)}, {"B", Null()}, {"C", Null()}}, ",", "1"},
        {"zero prints as nothing", {{"A", Long(1)}, {"B", Real(0.0)}}, ",", "1"},
        {"a number keeps its blanks", {{"A", Real(1.5)}, {"B", Long(1)}}, ",", "        1.5,1"},
        {"empty texts at the end stay", {{"A", Text("a")}, {"B", Text("")}}, ",", "'a',''"},
        {"nulls alone", {{"A", Null()}, {"B", Null()}}, ",", ""},
        {"quotes are doubled", {{"A", Text("It's")}}, ",", "'It''s'"},
        {"a date", {{"A", Date(39354.5)}}, ",", "'2007-09-29 12:00:00'"},
        {"a long separator", {{"A", Long(1)}, {"B", Long(2)}}, "<>", "1<>2"},
        {"each of its characters is cut", {{"A", Long(1)}, {"B", Text("x")}}, "',x", "1"},
        {"also those of a number", {{"A", Long(7)}, {"B", Long(100)}}, "0", "701"},
        {"no separator", {{"A", Long(1)}, {"B", Long(2)}}, "", "12"},
        {"a null separator", {{"A", Long(1)}, {"B", Long(2)}}, nullptr, "12"},
        {"a Chinese separator", {{"A", Long(1)}, {"B", Null()}}, "、", "1"},
        {"whole characters are cut", {{"A", Text("螺")}}, "'", "'螺"},
        {"no fields", {}, ",", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show({row.record});
        EXPECT_STREQ(recordset_.GetCurRecordToString(row.separator), row.text);
    }
}

TEST_F(RecordsetExport, GetCurRecordToStringReadsFieldByField) {
    Show({{{"A", Long(1)}, {"B", Long(2)}}});
    recordset_.GetCurRecordToString(",");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1006", "records.get 0", "fields.get 1",    //
                                             "records.get 0", "fields.get 0 (I4 0)", "field.get 0",  //
                                             "records.get 0", "fields.get 0 (I4 1)", "field.get 0"));
}

TEST_F(RecordsetExport, GetCurRecordToStringAtTheEndIsEmpty) {
    Show({{{"A", Long(1)}}});
    EXPECT_STREQ(recordset_.GetCurRecordToString(","), "1");
    recordset_.MoveNext();
    journal_.Take();
    EXPECT_STREQ(recordset_.GetCurRecordToString(","), "");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1006"));
}

TEST_F(RecordsetExport, AFailureOfTheCurrentRecordHasOneContext) {
    Show({{{"A", Long(1)}}});
    records_->On(Get(1006)).Fails("没有打开");
    CStringArray values;
    EXPECT_STREQ(recordset_.GetCurRecordToString(","), "");
    EXPECT_EQ(ErrorOf(recordset_), Failure("没有打开", kCurrentFailed));
    recordset_.Close();
    EXPECT_EQ(recordset_.SelectCurRecordToString(values, 1), 0);
    EXPECT_EQ(ErrorOf(recordset_), Failure("没有打开", kCurrentFailed));
    recordset_.Close();
    EXPECT_EQ(recordset_.SelectCurRecordToTrimString(values), 0);
    EXPECT_EQ(ErrorOf(recordset_), Failure("没有打开", kCurrentFailed));
}

// ---- the current record as a list --------------------------------------------------------------------------------

TEST_F(RecordsetExport, SelectCurRecordGivesEachFormOfTheValues) {
    Show({{{"A", Text(" It's ")}, {"B", Real(2.5)}, {"C", Null()}, {"D", Date(39354.0)}, {"E", Flag(true)}}});
    CStringArray values;
    values.Add("before");
    EXPECT_EQ(recordset_.SelectCurRecordToString(values, 1), 1);
    EXPECT_THAT(TextsOf(values), ElementsAre("' It''s '", "        2.5", "", "'2007-09-29 00:00:00'", "True"));
    EXPECT_EQ(recordset_.SelectCurRecordToString(values, 0), 1);
    EXPECT_THAT(TextsOf(values), ElementsAre(" It's ", "        2.5", "", "2007-09-29 00:00:00", "True"));
    EXPECT_EQ(recordset_.SelectCurRecordToTrimString(values), 1);
    EXPECT_THAT(TextsOf(values), ElementsAre("It's", "2.5", "", "2007-09-29 00:00:00", "True"));
}

TEST_F(RecordsetExport, SelectCurRecordAtTheEndLeavesTheArrayAlone) {
    Show({});
    CStringArray values;
    values.Add("before");
    EXPECT_EQ(recordset_.SelectCurRecordToString(values, 0), 0);
    EXPECT_EQ(recordset_.SelectCurRecordToTrimString(values), 0);
    EXPECT_THAT(TextsOf(values), ElementsAre("before"));
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1006", "records.get 1006"));
}

TEST_F(RecordsetExport, SelectCurRecordWithoutFieldsEmptiesTheArray) {
    Show({{}});
    CStringArray values;
    values.Add("before");
    EXPECT_EQ(recordset_.SelectCurRecordToString(values, 0), 0);
    EXPECT_EQ(values.GetSize(), 0);
}

// ---- record after record -----------------------------------------------------------------------------------------

TEST_F(RecordsetExport, FirstAndNextWalkEveryRecord) {
    Show({{{"A", Long(1)}, {"B", Text("x")}}, {{"A", Long(2)}, {"B", Text("y")}}, {{"A", Long(3)}, {"B", Null()}}});
    recordset_.MoveNext();
    CString text("before");
    Lines lines;
    for (int more = recordset_.SelectFirstRecordToString(2, text, "|", 0); more != 0;
         more = recordset_.SelectNextRecordToString(2, text, "|", 0)) {
        lines.emplace_back(text);
    }
    EXPECT_THAT(lines, ElementsAre("1|x", "2|y", "3"));
    EXPECT_STREQ(text, "");
}

TEST_F(RecordsetExport, FirstSendsMoveFirstAndReadsTheCountedFields) {
    Show({{{"A", Long(1)}, {"B", Text("x")}}});
    CString text;
    EXPECT_EQ(recordset_.SelectFirstRecordToString(1, text, ",", 1), 1);
    EXPECT_STREQ(text, "1");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1006", "records.call 1020", "records.get 0",
                                             "fields.get 0 (I4 0)", "field.get 0"));
}

TEST_F(RecordsetExport, NextSendsMoveNextBeforeItAsksForTheEnd) {
    Show({{{"A", Long(1)}}, {{"A", Text("x")}}});
    CString text;
    EXPECT_EQ(recordset_.SelectNextRecordToString(1, text, ",", 1), 1);
    EXPECT_STREQ(text, "'x'");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1018", "records.get 1006", "records.get 0",
                                             "fields.get 0 (I4 0)", "field.get 0"));
    EXPECT_EQ(recordset_.SelectNextRecordToString(1, text, ",", 1), 0);
    EXPECT_STREQ(text, "");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1018", "records.get 1006"));
}

TEST_F(RecordsetExport, FirstAtTheEndIsEmptyAndDoesNotMove) {
    Show({});
    CString text("before");
    EXPECT_EQ(recordset_.SelectFirstRecordToString(1, text, ",", 0), 0);
    EXPECT_STREQ(text, "");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1006"));
}

TEST_F(RecordsetExport, TheCountIsTheCallersAlone) {
    Show({{{"A", Long(1)}, {"B", Long(2)}}});
    static const struct {
        const char* label;
        long count;
        const char* text;
    } kRows[] = {{"none", 0, ""}, {"negative", -1, ""}, {"fewer", 1, "1"}, {"all", 2, "1,2"}, {"more", 5, "1,2"}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CString text;
        EXPECT_EQ(recordset_.SelectFirstRecordToString(row.count, text, ",", 0), 1);
        EXPECT_STREQ(text, row.text);
    }
    EXPECT_THAT(ErrorOf(recordset_), ::testing::EndsWith("可能数据源绑定错误!试着用 OpenField()打开数据源"));
}

TEST_F(RecordsetExport, ASeparatorMayLieInTheText) {
    Show({{{"A", Long(1)}, {"B", Long(2)}}});
    CString text("; ");
    EXPECT_EQ(recordset_.SelectFirstRecordToString(2, text, text, 0), 1);
    EXPECT_STREQ(text, "1; 2");
}

TEST_F(RecordsetExport, FailuresOfTheWalkNameTheirMember) {
    Show({{{"A", Long(1)}}});
    records_->On(Call(1020)).Fails("不能移动");
    records_->On(Call(1018)).Fails("已到末尾");
    CString text("before");
    EXPECT_EQ(recordset_.SelectFirstRecordToString(1, text, ",", 0), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(ErrorOf(recordset_), Failure("不能移动", kFirstFailed));
    text = "before";
    EXPECT_EQ(recordset_.SelectNextRecordToString(1, text, ",", 0), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(ErrorOf(recordset_), Failure("已到末尾", kNextFailed));
}

TEST_F(RecordsetExport, WithoutAnObjectEveryMemberFails) {
    CTRecordset empty;
    CStringArray values;
    CString text;
    EXPECT_EQ(empty.SelectOneColumn(0L, values), 0);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith(std::string("\r\n") + kColumnFailed));
    EXPECT_STREQ(empty.GetCurRecordToString(","), "");
    EXPECT_EQ(empty.SelectCurRecordToString(values, 1), 0);
    EXPECT_EQ(empty.SelectCurRecordToTrimString(values), 0);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith(std::string("\r\n") + kCurrentFailed));
    EXPECT_EQ(empty.SelectFirstRecordToString(1, text, ",", 0), 0);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith(std::string("\r\n") + kFirstFailed));
    EXPECT_EQ(empty.SelectNextRecordToString(1, text, ",", 0), 0);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith(std::string("\r\n") + kNextFailed));
}

}  // namespace
}  // namespace tk::test
