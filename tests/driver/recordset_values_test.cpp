#include <clocale>
#include <cmath>
#include <limits>

#include "driver/driver_fixture.h"
#include "tkkernel/util.h"

namespace tk::test {
namespace {

constexpr char kReadFailed[] = "可能数据源绑定错误!试着用 OpenField()打开数据源";

class RecordsetValues : public DriverTest {
protected:
    void SetUp() override { Bind(recordset_); }
    void TearDown() override {
        recordset_held_.reset();
        DriverTest::TearDown();
    }

    /// The current record has one field "A" of this value.
    void Show(COleVariant value) { records_->On(Get(0)).Returns(Object(MakeFields({{"A", std::move(value)}}).Get())); }

    static COleVariant Owned(VARIANT value) {
        COleVariant owner;
        owner.Attach(value);
        return owner;
    }

    std::unique_ptr<CTRecordset> recordset_held_ = std::make_unique<CTRecordset>();
    CTRecordset& recordset_ = *recordset_held_;
};

TEST_F(RecordsetValues, AReadIsThreeCalls) {
    Show(Text("值"));
    EXPECT_EQ(Describe(Owned(recordset_.GetValue("A"))), "BSTR \"值\"");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (BSTR \"A\")", "field.get 0"));
    EXPECT_EQ(Describe(Owned(recordset_.GetValue(0L))), "BSTR \"值\"");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (I4 0)", "field.get 0"));
    EXPECT_EQ(Describe(Owned(recordset_.GetValue(Short(0)))), "BSTR \"值\"");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (I2 0)", "field.get 0"));
}

TEST_F(RecordsetValues, AWriteIsThreeCalls) {
    Show(Nothing());
    recordset_.SetValue("A", Text("值"));
    EXPECT_THAT(journal_.Take(),
                ElementsAre("records.get 0", "fields.get 0 (BSTR \"A\")", "field.put 0 (BSTR \"值\")"));
    recordset_.SetValue(0L, Short(5));
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (I4 0)", "field.put 0 (I2 5)"));
    recordset_.SetValue(static_cast<const VARIANT&>(Short(0)), Null());
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (I2 0)", "field.put 0 (NULL)"));
}

TEST_F(RecordsetValues, AFailingReadGivesAnEmptyValueAndEveryDefault) {
    records_->On(Get(0)).Fails("没有当前记录");
    EXPECT_EQ(Describe(recordset_.GetValue("A")), "EMPTY");
    EXPECT_EQ(ErrorOf(recordset_), Failure("没有当前记录", kReadFailed));
    EXPECT_EQ(Describe(recordset_.GetValue(7L)), "EMPTY");
    EXPECT_EQ(Describe(recordset_.GetValue(Nothing())), "EMPTY");
    EXPECT_STREQ(recordset_.GetStringValue("A"), "");
    EXPECT_EQ(recordset_.GetDoubleValue("A"), 0.0);
    EXPECT_EQ(recordset_.GetIntValue("A"), 0);
    EXPECT_EQ(recordset_.GetCharValue("A"), '\0');
    EXPECT_EQ(recordset_.GetDateValue("A"), 0.0);
    EXPECT_STREQ(recordset_.GetStringValueStr("A"), "");
    EXPECT_STREQ(recordset_.GetStringValue(0L), "");
    EXPECT_EQ(recordset_.GetDoubleValue(0L), 0.0);
    EXPECT_EQ(recordset_.GetIntValue(0L), 0);
    EXPECT_EQ(recordset_.GetCharValue(0L), '\0');
    EXPECT_EQ(recordset_.GetDateValue(0L), 0.0);
    EXPECT_STREQ(recordset_.GetStringValueStr(0L), "");
}

TEST_F(RecordsetValues, AFailureAtEveryStepOfAReadIsCaught) {
    Show(Nothing());
    auto fields = MakeFields({{"A", Nothing()}});
    fields->On(Get(0)).Does(nullptr).Fails("没有此字段");
    records_->On(Get(0)).Returns(Object(fields.Get()));
    EXPECT_EQ(Describe(recordset_.GetValue("B")), "EMPTY");
    EXPECT_EQ(ErrorOf(recordset_), Failure("没有此字段", kReadFailed));
    auto field = Make("field");
    field->On(Get(0)).Fails("记录已删除");
    auto other = Make("fields");
    other->On(Get(0)).Returns(Object(field.Get()));
    records_->On(Get(0)).Returns(Object(other.Get()));
    EXPECT_EQ(Describe(recordset_.GetValue("A")), "EMPTY");
    EXPECT_EQ(ErrorOf(recordset_), Failure("记录已删除", kReadFailed));
}

TEST_F(RecordsetValues, AFailingWriteLeavesItsContext) {
    records_->On(Get(0)).Fails("只读");
    recordset_.SetValue("A", Long(1));
    EXPECT_EQ(ErrorOf(recordset_), Failure("只读", "SetValue!"));
    recordset_.Close();
    recordset_.SetValue(3L, Long(1));
    EXPECT_EQ(ErrorOf(recordset_), Failure("只读", "SetValue!"));
    recordset_.Close();
    recordset_.SetValue(static_cast<const VARIANT&>(Text("A")), Long(1));
    EXPECT_EQ(ErrorOf(recordset_), Failure("只读", "SetValue!"));
}

TEST_F(RecordsetValues, AFailureAtEveryStepOfAWriteIsCaught) {
    auto field = Make("field");
    field->On(Put(0)).Fails("只读");
    auto fields = Make("fields");
    fields->On(Get(0)).Returns(Object(field.Get())).Then().Fails("没有此字段");
    records_->On(Get(0)).Returns(Object(fields.Get()));
    recordset_.SetValue("A", Long(1));
    EXPECT_EQ(ErrorOf(recordset_), Failure("只读", "SetValue!"));
    recordset_.SetValue("B", Long(1));
    EXPECT_EQ(ErrorOf(recordset_), Failure("没有此字段", "SetValue!"));
}

TEST_F(RecordsetValues, NullAndEmptyNamesAreSentAsTheyAre) {
    auto fields = Make("fields");
    fields->On(Get(0)).Fails("没有此字段");
    records_->On(Get(0)).Returns(Object(fields.Get()));
    recordset_.GetValue(static_cast<const char*>(nullptr));
    EXPECT_EQ(journal_.Take().at(1), "fields.get 0 (BSTR null)");
    recordset_.GetValue("");
    EXPECT_EQ(journal_.Take().at(1), "fields.get 0 (BSTR \"\")");
    EXPECT_STREQ(recordset_.GetStringValue(static_cast<const char*>(nullptr)), "");
    EXPECT_EQ(recordset_.GetIntValue(-1L), 0);
}

TEST_F(RecordsetValues, WithoutAnObjectEveryReadGivesItsDefault) {
    CTRecordset empty;
    EXPECT_EQ(Describe(empty.GetValue("A")), "EMPTY");
    EXPECT_EQ(Describe(empty.GetValue(0L)), "EMPTY");
    EXPECT_STREQ(empty.GetStringValue(0L), "");
    EXPECT_STREQ(empty.GetStringValue("A"), "");
    EXPECT_EQ(empty.GetIntValue(0L), 0);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith(std::string("\r\n") + kReadFailed));
    empty.SetValue(0L, Long(1));
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith("\r\nSetValue!"));
}

// ---- plain types -------------------------------------------------------------------------------------------------

TEST_F(RecordsetValues, DoublesKnowFiveTypes) {
    static const struct {
        const char* label;
        COleVariant value;
        double number;
    } kRows[] = {
        {"I4", Long(-7), -7.0},
        {"R4", Float(1.5F), 1.5},
        {"R8", Real(-2.25), -2.25},
        {"text", Text("12"), 12.0},
        {"text with blanks and rest", Text(" \t-3.5abc"), -3.5},
        {"text with plus and exponent", Text("+1.5e3"), 1500.0},
        {"text that is no number", Text("abc"), 0.0},
        {"text of a point", Text("."), 0.0},
        {"Chinese text", Text("十二"), 0.0},
        {"empty text", Text(""), 0.0},
        {"null text", Text(nullptr), 0.0},
        {"decimal", Decimal(-12345, 2), -123.45},
        {"decimal with eight places", Decimal(123456789, 8), 1.23456789},
        {"large decimal", Decimal(9007199254740993LL), 9007199254740992.0},
        {"I2 is not known", Short(7), 0.0},
        {"boolean is not known", Flag(true), 0.0},
        {"date is not known", Date(100.5), 0.0},
        {"currency is not known", Integer(VT_CY, 15000), 0.0},
        {"UI1 is not known", Integer(VT_UI1, 7), 0.0},
        {"I8 is not known", Integer(VT_I8, 7), 0.0},
        {"null", Null(), 0.0},
        {"empty", Nothing(), 0.0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show(row.value);
        EXPECT_EQ(recordset_.GetDoubleValue("A"), row.number);
        EXPECT_EQ(recordset_.GetDoubleValue(0L), row.number);
    }
}

TEST_F(RecordsetValues, DoublesOfTextsAreThoseOfAtofInEveryLocale) {
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    static const struct {
        const char* text;
        double number;
    } kRows[] = {
        {"0x1A", 26.0},
        {"-0x10", -16.0},
        {" +0X1a.8z", 26.5},
        {"0x1p4", 16.0},
        {"0x1,8", 1.0},
        {"0x", 0.0},
        {"0xg", 0.0},
        {"x1", 0.0},
        {"inf", HUGE_VAL},
        {"-INF", -HUGE_VAL},
        {"Infinity", HUGE_VAL},
        {"infx", HUGE_VAL},
        {"nan", kNoNumber},
        {"NaN(1)", kNoNumber},
        {"1e400", HUGE_VAL},
        {"-1e400", -HUGE_VAL},
        {"1.5e400", HUGE_VAL},
        {"1.5e400,5", HUGE_VAL},
        {"1e-400", 0.0},
        {"-1.5e-400", 0.0},
        {" 12abc", 12.0},
        {"1.5", 1.5},
        {"1,5", 1.0},
        {"+-1", 0.0},
        {"", 0.0},
    };
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"C", "de_DE.UTF-8", "fr_FR.UTF-8", "German"}) {  // what there is of them
        std::setlocale(LC_ALL, locale);
        for (const auto& row : kRows) {
            SCOPED_TRACE(locale + std::string(": ") + row.text);
            Show(Text(row.text));
            const double number = recordset_.GetDoubleValue("A");
            EXPECT_TRUE(std::isnan(row.number) ? std::isnan(number) : number == row.number) << number;
        }
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST_F(RecordsetValues, IntegersKnowSixTypes) {
    static const struct {
        const char* label;
        COleVariant value;
        int number;
    } kRows[] = {
        {"I2", Short(-7), -7},
        {"I4", Long(-70000), -70000},
        {"UI4", Integer(VT_UI4, 4294967295LL), -1},
        {"UI2", Integer(VT_UI2, 65535), 65535},
        {"true", Flag(true), 1},
        {"false", Flag(false), 0},
        {"a boolean of 1", Integer(VT_BOOL, 1), 0},
        {"a boolean of 65534", Integer(VT_BOOL, 65534), 0},
        {"decimal", Decimal(-12399, 2), -123},
        {"decimal zero", Decimal(0), 0},
        {"decimal between minus one and zero", Decimal(-1, 1), 0},
        {"decimal beyond 32 bits", Decimal(4294967301LL), 5},
        {"text is not known", Text("12"), 0},
        {"R8 is not known", Real(12.0), 0},
        {"R4 is not known", Float(12.0F), 0},
        {"UI1 is not known", Integer(VT_UI1, 12), 0},
        {"I1 is not known", Integer(VT_I1, 12), 0},
        {"I8 is not known", Integer(VT_I8, 12), 0},
        {"currency is not known", Integer(VT_CY, 120000), 0},
        {"date is not known", Date(12.0), 0},
        {"null", Null(), 0},
        {"empty", Nothing(), 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show(row.value);
        EXPECT_EQ(recordset_.GetIntValue("A"), row.number);
        EXPECT_EQ(recordset_.GetIntValue(0L), row.number);
    }
}

TEST_F(RecordsetValues, CharactersComeFromTextsOnly) {
    static const struct {
        const char* label;
        COleVariant value;
        char character;
    } kRows[] = {
        {"text", Text("xyz"), 'x'},       {"empty text", Text(""), '\0'}, {"null text", Text(nullptr), '\0'},
        {"Chinese", Text("库"), "库"[0]}, {"number", Long(65), '\0'},     {"null", Null(), '\0'},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show(row.value);
        EXPECT_EQ(recordset_.GetCharValue("A"), row.character);
        EXPECT_EQ(recordset_.GetCharValue(0L), row.character);
    }
}

TEST_F(RecordsetValues, DatesComeFromDatesOnly) {
    static const struct {
        const char* label;
        COleVariant value;
        DATE date;
    } kRows[] = {
        {"date", Date(45000.25), 45000.25},
        {"before 1900", Date(-1.25), -1.25},
        {"R8", Real(45000.0), 0.0},
        {"text", Text("2020-01-01"), 0.0},
        {"null", Null(), 0.0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show(row.value);
        EXPECT_EQ(recordset_.GetDateValue("A"), row.date);
        EXPECT_EQ(recordset_.GetDateValue(0L), row.date);
    }
}

TEST_F(RecordsetValues, TextsAreDisplayTextsOrLiterals) {
    static const struct {
        const char* label;
        COleVariant value;
        const char* display;
        const char* literal;
    } kRows[] = {
        {"text", Text("库'存"), "库'存", "'库''存'"},
        {"integer", Long(5), "5", "5"},
        {"real", Real(1.5), "        1.5", "        1.5"},
        {"true", Flag(true), "True", "True"},
        {"date", Date(2.0), "1900-01-01 00:00:00", "'1900-01-01 00:00:00'"},
        {"null", Null(), "", ""},
        {"decimal", Decimal(0), "0", "0"},
        {"I8", Integer(VT_I8, 7), "", "'7'"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Show(row.value);
        EXPECT_STREQ(recordset_.GetStringValue("A"), row.display);
        EXPECT_STREQ(recordset_.GetStringValue(0L), row.display);
        EXPECT_STREQ(recordset_.GetStringValueStr("A"), row.literal);
        EXPECT_STREQ(recordset_.GetStringValueStr(0L), row.literal);
    }
}

TEST_F(RecordsetValues, LongTextsComeWhole) {
    std::string text;
    for (int i = 0; i < 50000; ++i)
        text += "库";
    Show(Text(text.c_str()));
    EXPECT_EQ(std::string(recordset_.GetStringValue("A")), text);
}

}  // namespace
}  // namespace tk::test
