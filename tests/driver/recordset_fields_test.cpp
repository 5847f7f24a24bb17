#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

class RecordsetFields : public DriverTest {
protected:
    void SetUp() override { Bind(recordset_); }
    void TearDown() override {
        recordset_held_.reset();
        DriverTest::TearDown();
    }
    void Show(std::vector<std::pair<const char*, COleVariant>> items) {
        records_->On(Get(0)).Returns(Object(MakeFields(std::move(items)).Get()));
    }

    std::unique_ptr<CTRecordset> recordset_held_ = std::make_unique<CTRecordset>();
    CTRecordset& recordset_ = *recordset_held_;
};

TEST_F(RecordsetFields, GetFieldIndexWalksByShortNumbers) {
    Show({{"ID", Long(1)}, {"Name", Text("x")}});
    EXPECT_EQ(recordset_.GetFieldIndex("name"), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 1", "fields.get 0 (I2 0)", "field.get 1100",
                                             "fields.get 1", "fields.get 0 (I2 1)", "field.get 1100"));
}

TEST_F(RecordsetFields, GetFieldIndexIgnoresCaseAndFindsTheFirst) {
    Show({{"ID", Long(1)}, {"数量ａ", Long(2)}, {"id", Long(3)}, {"", Long(4)}});
    static const struct {
        const char* name;
        int index;
    } kRows[] = {{"id", 0}, {"ID", 0}, {"数量ａ", 1}, {"ID ", -1}, {"nothing", -1}, {"", 3}, {nullptr, 3}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name == nullptr ? "null" : row.name);
        EXPECT_EQ(recordset_.GetFieldIndex(row.name), row.index);
    }
}

TEST_F(RecordsetFields, GetFieldIndexLetsFailuresPass) {
    records_->On(Get(0)).Fails("已关闭");
    try {
        recordset_.GetFieldIndex("ID");
        ADD_FAILURE() << "no exception";
    } catch (COleDispatchException* e) {
        e->Delete();
    }
}

TEST_F(RecordsetFields, FieldMembersGoThroughTheCollection) {
    Show({{"ID", Long(1)}});
    {
        CTField field = recordset_.GetField("ID");
        EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (BSTR \"ID\")"));
        EXPECT_STREQ(field.GetName(), "ID");
        journal_.Take();
    }
    EXPECT_EQ(recordset_.GetFieldCount(), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 1"));
    EXPECT_STREQ(recordset_.GetFieldName(0), "ID");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (I4 0)", "field.get 1100"));
    EXPECT_EQ(recordset_.GetFieldType(Text("ID")), 0);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (BSTR \"ID\")", "field.get 1102"));
}

TEST_F(RecordsetFields, GetFieldTypeTakesANameOrANumber) {
    auto field = Make("field");
    field->On(Get(1102)).Returns(Long(202));
    auto fields = Make("fields");
    fields->On(Get(0)).Returns(Object(field.Get()));
    records_->On(Get(0)).Returns(Object(fields.Get()));
    EXPECT_EQ(recordset_.GetFieldType(Text("ID")), 202);
    EXPECT_EQ(journal_.Take().at(1), "fields.get 0 (BSTR \"ID\")");
    EXPECT_EQ(recordset_.GetFieldType(Long(0)), 202);
    EXPECT_EQ(journal_.Take().at(1), "fields.get 0 (I4 0)");
}

TEST_F(RecordsetFields, GetPropertyHandsOverTheCollection) {
    auto properties = MakeProperties({});
    records_->On(Get(500)).Returns(Object(properties.Get()));
    {
        Held<IDispatch> owned(recordset_.GetProperty());
        EXPECT_EQ(owned.Get(), properties.Get());
        EXPECT_EQ(properties->References(), 3u);
    }
    EXPECT_EQ(properties->References(), 2u);
}

TEST_F(RecordsetFields, GetPropertyValueNeedsAnOpenRecordset) {
    records_->On(Get(500)).Returns(Object(MakeProperties({{"Update Criteria", Long(2)}}).Get()));
    EXPECT_STREQ(recordset_.GetPropertyValue("Update Criteria"), "");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1054"));
    records_->On(Get(1054)).Returns(Long(1));
    EXPECT_STREQ(recordset_.GetPropertyValue("Update Criteria"), "2");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1054", "records.get 500",
                                             "properties.get 0 (BSTR \"Update Criteria\")", "property.get 0"));
    records_->On(Get(500)).Fails("没有属性");
    EXPECT_STREQ(recordset_.GetPropertyValue("X"), "");
    EXPECT_EQ(ErrorOf(recordset_), Failure("没有属性", "操作 GetPropertyValue 出现异常!"));
    EXPECT_STREQ(recordset_.GetPropertyValue(nullptr), "");
    records_->On(Get(1054)) = Script();
}

TEST_F(RecordsetFields, GetPropertyValueAnswersInNoStateButOpen) {
    records_->On(Get(500)).Returns(Object(MakeProperties({{"A", Long(2)}}).Get()));
    const std::string before = ErrorOf(recordset_);
    for (const long state : {0L, 2L, 4L, 8L, 9L}) {
        records_->On(Get(1054)).Returns(Long(state));
        EXPECT_STREQ(recordset_.GetPropertyValue("A"), "") << state;
        EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1054")) << state;
    }
    EXPECT_EQ(ErrorOf(recordset_), before);
}

TEST_F(RecordsetFields, AFailureAtEveryStepOfAPropertyIsCaught) {
    auto property = Make("property");
    auto properties = Make("properties");
    properties->On(Get(0)).Returns(Object(property.Get()));
    records_->On(Get(500)).Returns(Object(properties.Get()));
    records_->On(Get(1054)).Returns(Long(1));
    const struct {
        const char* label;
        ScriptedObject& object;
        Member member;
    } kRows[] = {
        {"value", *property.Get(), Get(0)},
        {"item", *properties.Get(), Get(0)},
        {"collection", *records_.Get(), Get(500)},
        {"state", *records_.Get(), Get(1054)},
    };
    for (const auto& row : kRows) {  // each before the step that failed last
        SCOPED_TRACE(row.label);
        row.object.On(row.member).Fails(row.label);
        EXPECT_STREQ(recordset_.GetPropertyValue("A"), "");
        EXPECT_EQ(ErrorOf(recordset_), Failure(row.label, "操作 GetPropertyValue 出现异常!"));
    }
}

// ---- lists of names ----------------------------------------------------------------------------------------------

TEST_F(RecordsetFields, GetFieldNamesWalksASchemaRowsetAndAppends) {
    auto fields = MakeFields({{"COLUMN_NAME", Text("编号")}});
    records_->On(Get(0)).Returns(Object(fields.Get()));
    records_->On(Get(1006))
        .Returns(Flag(false))
        .Then()
        .Returns(Flag(false))
        .Then()
        .Returns(Flag(false))
        .Then()
        .Returns(Flag(true));
    CStringArray names;
    names.Add("before");
    EXPECT_EQ(recordset_.GetFieldNames(names), 2);
    ASSERT_EQ(names.GetSize(), 3);
    EXPECT_STREQ(names.GetAt(0), "before");
    EXPECT_STREQ(names.GetAt(1), "编号");
    EXPECT_STREQ(names.GetAt(2), "编号");
    EXPECT_THAT(journal_.Take(),
                ElementsAre("records.get 1006", "records.call 1020", "records.get 1006", "records.get 0",
                            "fields.get 0 (BSTR \"COLUMN_NAME\")", "field.get 0", "records.call 1018",
                            "records.get 1006", "records.get 0", "fields.get 0 (BSTR \"COLUMN_NAME\")", "field.get 0",
                            "records.call 1018", "records.get 1006"));
}

TEST_F(RecordsetFields, GetFieldNamesAtTheEndDoesNotMove) {
    records_->On(Get(1006)).Returns(Flag(true));
    CStringArray names;
    EXPECT_EQ(recordset_.GetFieldNames(names), 0);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1006", "records.get 1006"));
    EXPECT_EQ(names.GetSize(), 0);
}

TEST_F(RecordsetFields, GetFieldNamesCountsRecordsWithoutTheColumn) {
    Show({{"OTHER", Text("x")}});
    records_->On(Get(1006)).Returns(Flag(false)).Then().Returns(Flag(false)).Then().Returns(Flag(true));
    CStringArray names;
    EXPECT_EQ(recordset_.GetFieldNames(names), 1);
    ASSERT_EQ(names.GetSize(), 1);
    EXPECT_STREQ(names.GetAt(0), "");
}

TEST_F(RecordsetFields, AFailureInTheMiddleOfANameListGivesZero) {
    Show({{"COLUMN_NAME", Text("A")}});
    records_->On(Get(1006)).Returns(Flag(false));
    records_->On(Call(1018)).Fails("断开");
    CStringArray names;
    EXPECT_EQ(recordset_.GetFieldNames(names), 0);
    EXPECT_EQ(names.GetSize(), 1) << "what was appended stays";
    EXPECT_EQ(ErrorOf(recordset_), Failure("断开", "操作 GetAllFieldNames 时出现异常!"));
}

TEST_F(RecordsetFields, AFailureBeforeTheFirstNameOfARowsetGivesZero) {
    for (const Member member : {Call(1020), Get(1006)}) {
        SCOPED_TRACE(member.id);
        records_->On(member).Fails("断开");
        CStringArray names;
        names.Add("before");
        EXPECT_EQ(recordset_.GetFieldNames(names), 0);
        EXPECT_EQ(names.GetSize(), 1);
        EXPECT_EQ(ErrorOf(recordset_), Failure("断开", "操作 GetAllFieldNames 时出现异常!"));
        recordset_.Close();  // empties the text
    }
}

TEST_F(RecordsetFields, AFailureInTheMiddleOfAllNamesGivesZero) {
    auto first = Make("field");
    first->On(Get(1100)).Returns(Text("ID"));
    auto second = Make("field");
    second->On(Get(1100)).Fails("断开");
    auto fields = Make("fields");
    fields->On(Get(1)).Returns(Long(2));
    fields->On(Get(0)).Does(
        [&](const Arguments& arguments) { return Object(V_I4(arguments.at(0)) == 0 ? first.Get() : second.Get()); });
    records_->On(Get(0)).Returns(Object(fields.Get()));
    CStringArray names;
    EXPECT_EQ(recordset_.GetAllFieldNames(names), 0);
    EXPECT_EQ(ErrorOf(recordset_), Failure("断开", "操作 GetAllFieldNames 时出现异常!"));
    recordset_.Close();  // empties the text
    CString text;
    EXPECT_EQ(recordset_.GetAllFieldNames(text), 0);
    EXPECT_EQ(ErrorOf(recordset_), Failure("断开", "操作 GetAllFieldNames 时出现异常!"));
}

TEST_F(RecordsetFields, GetAllFieldNamesOfNoFieldsEmptiesTheArray) {
    Show({});
    CStringArray names;
    names.Add("before");
    EXPECT_EQ(recordset_.GetAllFieldNames(names), 0);
    EXPECT_EQ(names.GetSize(), 0);
}

TEST_F(RecordsetFields, GetAllFieldNamesReplacesTheArray) {
    Show({{"ID", Long(1)}, {"名称", Text("x")}});
    CStringArray names;
    names.Add("before");
    EXPECT_EQ(recordset_.GetAllFieldNames(names), 2);
    ASSERT_EQ(names.GetSize(), 2);
    EXPECT_STREQ(names.GetAt(0), "ID");
    EXPECT_STREQ(names.GetAt(1), "名称");
}

TEST_F(RecordsetFields, GetAllFieldNamesAsATextSeparatesByCommas) {
    static const struct {
        const char* label;
        std::vector<std::pair<const char*, COleVariant>> fields;
        int count;
        const char* text;
    } kRows[] = {
        {"two", {{"ID", Long(1)}, {"名称", Text("x")}}, 2, "ID,名称"},
        {"one", {{"ID", Long(1)}}, 1, "ID"},
        {"none", {}, 0, ""},
        {"the last is empty", {{"ID", Long(1)}, {"", Long(1)}}, 2, "ID"},
        {"the first is empty", {{"", Long(1)}, {"ID", Long(1)}}, 2, ",ID"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show(row.fields);
        CString text("before");
        EXPECT_EQ(recordset_.GetAllFieldNames(text), row.count);
        EXPECT_STREQ(text, row.text);
    }
}

TEST_F(RecordsetFields, FailingNameListsLeaveTheirContext) {
    records_->On(Get(0)).Fails("已关闭");
    CStringArray names;
    CString text;
    EXPECT_EQ(recordset_.GetAllFieldNames(names), 0);
    EXPECT_EQ(ErrorOf(recordset_), Failure("已关闭", "操作 GetAllFieldNames 时出现异常!"));
    recordset_.Close();
    EXPECT_EQ(recordset_.GetAllFieldNames(text), 0);
    EXPECT_EQ(ErrorOf(recordset_), Failure("已关闭", "操作 GetAllFieldNames 时出现异常!"));
    CTRecordset empty;
    EXPECT_EQ(empty.GetFieldNames(names), 0);
    EXPECT_EQ(empty.GetAllFieldNames(names), 0);
    EXPECT_EQ(empty.GetAllFieldNames(text), 0);
}

}  // namespace
}  // namespace tk::test
