#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <string>

#include "tkkernel/util.h"
#include "util/values.h"

namespace {

using namespace tk::test;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

TEST(DoubleToString, IsEmptyForAnEmptyFormat) {
    EXPECT_STREQ(DoubleToString(1.5, ""), "");
    EXPECT_STREQ(DoubleToString(1.5, nullptr), "");
}

TEST(DoubleToString, WritesAmountsInCapitals) {
    EXPECT_STREQ(DoubleToString(1234.5, "(大写货币一)"), "壹仟贰佰叁拾肆元伍角整");
    EXPECT_STREQ(DoubleToString(1234.5, "(大写货币二)"), "壹仟贰佰叁拾肆元伍角零分");
    EXPECT_STREQ(DoubleToString(0, "(大写货币一)"), "零元零角零分");
    EXPECT_STREQ(DoubleToString(kNoNumber, "(大写货币一)"), "零元零角零分");
    EXPECT_STREQ(DoubleToString(-1, "(大写货币二)"), "负零仟零佰零拾壹元零角零分");
}

TEST(DoubleToString, IsEmptyForWhatIsNotFinite) {
    for (const double value : {kInfinity, -kInfinity, kNoNumber, -kNoNumber}) {
        for (const char* format : {"0.00", "#,##0.00", "0%", "0;(0);-", "%f", "%.2f", "%d", "%x", "%g", "%e", "abc"})
            EXPECT_STREQ(DoubleToString(value, format), "") << format;
    }
}

TEST(DoubleToString, DoesNotMindTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const char* const kLocales[] = {"de_DE.UTF-8", "fr_FR.UTF-8", "German", "zh_CN.GBK"};  // what there is of them
    for (const char* locale : kLocales) {
        std::setlocale(LC_ALL, locale);
        EXPECT_STREQ(DoubleToString(1234.5, "#,##0.00"), "1,234.50") << locale;
        EXPECT_STREQ(DoubleToString(1234.5, "%.2f"), "1234.50") << locale;
        EXPECT_STREQ(DoubleToString(1234.5, "%.5e"), "1.23450e+03") << locale;
        EXPECT_EQ(Round("1234.56", 1), 1234.6) << locale;
        EXPECT_EQ(Round("1234.56", 2), 1234.56) << locale;
        EXPECT_STREQ(UpperCurrency(1.5, 1), "壹元伍角整") << locale;
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(IntToString, PrintsPlainDigitsWithoutAFormat) {
    for (const char* format : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_STREQ(IntToString(0, format), "0");
        EXPECT_STREQ(IntToString(42, format), "42");
        EXPECT_STREQ(IntToString(-42, format), "-42");
        EXPECT_STREQ(IntToString(std::numeric_limits<int>::max(), format), "2147483647");
        EXPECT_STREQ(IntToString(std::numeric_limits<int>::min(), format), "-2147483648");
    }
}

TEST(IntToString, ChoosesBetweenTwoTexts) {
    const struct {
        int value;
        const char* format;
        const char* text;
    } kRows[] = {
        {1, "是/否", "是"},     {0, "是/否", "否"}, {-1, "是/否", "是"},  {100, "是/否", "是"}, {1, "a/b/c", "a"},
        {0, "a/b/c", "b/c"},    {1, "/", ""},       {0, "/", ""},         {1, "/no", ""},       {0, "/no", "no"},
        {1, "yes/", "yes"},     {0, "yes/", ""},    {7, "%d/0.00", "%d"},  // no formats, only texts
        {0, "%d/0.00", "0.00"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(IntToString(row.value, row.format), row.text) << row.value;
    }
}

TEST(IntToString, TakesTheFormatsOfDoubleToString) {
    const struct {
        int value;
        const char* format;
        const char* text;
    } kRows[] = {
        {1234567, "#,##0", "1,234,567"},
        {7, "000", "007"},
        {7, "%05d", "00007"},
        {7, "%.2f", "7.00"},
        {-1, "%X", "FFFFFFFF"},
        {std::numeric_limits<int>::min(), "0", "-2147483648"},
        {1, "0%", "100%"},
        {305, "(大写货币一)", "叁佰零伍元整"},
        {7, "abc", ""},
        {7, "%s", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(IntToString(row.value, row.format), row.text) << row.value;
    }
}

TEST(FormatVariant, FormatsByTheTypeOfTheValue) {
    const struct {
        const char* label;
        Value value;
        const char* format;
        const char* text;
    } kRows[] = {
        {"I2", Int2(-7), "000", "-007"},
        {"I2 without a format", Int2(-32768), "", "-32768"},
        {"I2 two ways", Int2(0), "是/否", "否"},
        {"true", Bool(VARIANT_TRUE), "是/否", "是"},
        {"false", Bool(VARIANT_FALSE), "是/否", "否"},
        {"true is minus one", Bool(VARIANT_TRUE), "", "-1"},
        {"I4", Int4(1234567), "#,##0", "1,234,567"},
        {"I4 without a format", Int4(-2147483647 - 1), nullptr, "-2147483648"},
        {"I4 amount", Int4(10), "(大写货币一)", "壹拾元整"},
        {"byte", Byte(255), "%x", "ff"},
        {"byte without a format", Byte(200), "", "200"},
        {"R4", Real4(1.5F), "0.00", "1.50"},
        {"R4 amount", Real4(1.5F), "(大写货币一)", "壹元伍角整"},
        {"R8", Real8(1234.5), "#,##0.00", "1,234.50"},
        {"R8 by printf", Real8(1234.5), "%8.1f", "  1234.5"},
        {"R8 without a format", Real8(1234.5), "", ""},
        {"R8 with a null format", Real8(1234.5), nullptr, ""},
        {"R8 amount, usual form", Real8(1234.5), "(大写货币一)", "壹仟贰佰叁拾肆元伍角整"},
        {"R8 amount, fixed form", Real8(1234.5), "(大写货币二)", "壹仟贰佰叁拾肆元伍角零分"},
        {"R8 two ways is for integers", Real8(1), "是/否", ""},
        {"decimal", Decimal(123456, 2), "#,##0.0", "1,234.6"},
        {"decimal amount", Decimal(1050, 2), "(大写货币一)", "壹拾元零伍角整"},
        {"decimal amount, fixed form", Decimal(50, 2), "(大写货币二)", "伍角零分"},
        {"negative decimal", Decimal(125, 2, true), "0.00;(0.00)", "(1.25)"},
        {"date", Date(1.5), "YYYY-MM-DD hh:mm", "1899-12-31 12:00"},
        {"date without a format", Date(1.5), "", "1899/12/31 12:00:00"},
        {"date with a null format", Date(1.5), nullptr, "1899/12/31 12:00:00"},
        {"date out of range", Date(1e9), "YYYY", ""},
        {"text", Text("中文 %d"), "0.00", "中文 %d"},
        {"text without a format", Text("abc"), nullptr, "abc"},
        {"null text", Value(VT_BSTR), "0", ""},
        {"empty", Value(VT_EMPTY), "0", ""},
        {"null", Value(VT_NULL), "0", ""},
        {"currency", Currency(10000), "0.00", ""},
        {"currency amount", Currency(10000), "(大写货币一)", ""},
        {"currency without a format", Currency(10000), "", ""},
        {"numeric", Decimal(1, 0, false, 131), "0", ""},
        {"error", Error(5), "0", ""},
        {"signed byte", SmallInt1(5), "0", ""},
        {"unsigned", Unsigned4(5), "0", ""},
        {"I8", Int8(5), "0", ""},
        {"bytes", Bytes("abc"), "0", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const VARIANT& value = row.value;
        EXPECT_STREQ(FormatVariant(value, row.format), row.text);
    }
}

TEST(FormatVariant, ComparesTheNamesOfAmountsExactly) {
    for (const char* format : {"(大写货币一) ", " (大写货币一)", "大写货币一", "(大写货币三)", "(大写货币)"})
        EXPECT_STREQ(FormatVariant(Real8(1.5), format), "") << format;
}

TEST(FormatVariant, LeavesTheValueToTheCaller) {
    const Value text = Text("中文");
    FormatVariant(text, "");
    EXPECT_EQ(text->vt, VT_BSTR);
    EXPECT_STREQ(FormatVariant(text, ""), "中文");
}

TEST(FormatVariant, DoesNotFollowReferences) {
    double number = 1.5;
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BYREF | VT_R8;
    value.pdblVal = &number;
    EXPECT_STREQ(FormatVariant(value, "0.0"), "");
}

}  // namespace
