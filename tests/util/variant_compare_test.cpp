#include <gtest/gtest.h>

#include <limits>

#include "tkkernel/util.h"
#include "util/values.h"

namespace {

using namespace tk::test;

TEST(CompareVariant, ComparesValuesOfOneType) {
    const struct {
        const char* label;
        Value first;
        Value second;
        int result;
    } kRows[] = {
        {"different types, same number", Int4(5), Int2(5), -1},
        {"different types, larger first", Int4(9), Int2(5), -1},
        {"empty and null", Value(VT_EMPTY), Value(VT_NULL), -1},
        {"decimal and numeric", Decimal(5, 0), Decimal(5, 0, false, 131), -1},
        {"I2 difference", Int2(10), Int2(3), 7},
        {"I2 extremes", Int2(-32768), Int2(32767), -65535},
        {"I4 difference", Int4(3), Int4(1000000), -999997},
        {"I4 wraps around", Int4(2147483647), Int4(-1), -2147483647 - 1},
        {"byte difference is signed", Byte(0), Byte(255), -255},
        {"R4 greater", Real4(2.0F), Real4(1.0F), 1},
        {"R4 less", Real4(1.0F), Real4(2.0F), -1},
        {"R4 equal", Real4(1.5F), Real4(1.5F), 0},
        {"R8 less", Real8(1.0), Real8(1.5), -1},
        {"R8 equal", Real8(1.5), Real8(1.5), 0},
        {"R8 far apart is still one", Real8(1e300), Real8(-1e300), 1},
        {"R8 without order", Real8(std::numeric_limits<double>::quiet_NaN()), Real8(1.0), 0},
        {"date", Date(2.0), Date(1.0), 1},
        {"earlier date", Date(1.0), Date(1.5), -1},
        {"same date", Date(-1.25), Date(-1.25), 0},
        {"true before false", Bool(VARIANT_TRUE), Bool(VARIANT_FALSE), -1},
        {"false after true", Bool(VARIANT_FALSE), Bool(VARIANT_TRUE), 1},
        {"both true", Bool(VARIANT_TRUE), Bool(VARIANT_TRUE), 0},
        {"both false", Bool(VARIANT_FALSE), Bool(VARIANT_FALSE), 0},
        {"two ways to be true are not equal", Bool(VARIANT_TRUE), Bool(1), -1},
        {"the greater of two ways to be true", Bool(1), Bool(VARIANT_TRUE), 1},
        {"decimal greater", Decimal(1275, 2), Decimal(127, 1), 1},
        {"decimal equal at another scale", Decimal(1270, 2), Decimal(127, 1), 0},
        {"decimal negative", Decimal(1, 0, true), Decimal(0, 0), -1},
        {"decimals that doubles do not tell apart", Decimal(9007199254740993ULL, 0), Decimal(9007199254740992ULL, 0),
         0},
        {"decimals that doubles just tell apart", Decimal(9007199254740994ULL, 0), Decimal(9007199254740992ULL, 0), 1},
        {"numeric has no order", Decimal(1, 0, false, 131), Decimal(2, 0, false, 131), 0},
        {"currency has no order", Currency(1), Currency(2), 0},
        {"two nulls", Value(VT_NULL), Value(VT_NULL), 0},
        {"two empties", Value(VT_EMPTY), Value(VT_EMPTY), 0},
        {"errors have no order", Error(1), Error(2), 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(CompareVariant(row.first, row.second), row.result);
    }
}

TEST(CompareVariant, OrdersTextsAsTheSystemDoes) {
    const struct {
        const char* label;
        const char* first;
        const char* second;
        int sign;
    } kRows[] = {
        {"equal", "abc", "abc", 0},          {"letters", "abc", "abd", -1},         {"prefix", "ab", "abc", -1},
        {"case decides last", "a", "A", -1}, {"letters before case", "a", "B", -1}, {"empty first", "", "a", -1},
        {"both empty", "", "", 0},           {"pinyin", "北京", "上海", -1},        {"pinyin", "中", "库", 1},
    };
    const auto sign = [](int value) { return value > 0 ? 1 : value < 0 ? -1 : 0; };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SCOPED_TRACE(row.first);
        EXPECT_EQ(sign(CompareVariant(Text(row.first), Text(row.second))), row.sign);
        EXPECT_EQ(sign(CompareVariant(Text(row.second), Text(row.first))), -row.sign);
        EXPECT_EQ(CompareVariant(Text(row.first), Text(row.second)), lstrcmpA(row.first, row.second));
    }
}

TEST(CompareVariant, DoesNotTellTextsApartThatGbkCannot) {
    EXPECT_EQ(CompareVariant(WideText(OLESTR("a\u0E01")), WideText(OLESTR("a\u0E02"))), 0);  // two Thai letters
}

TEST(CompareVariant, TakesANullBstrForAnEmptyText) {
    Value nothing(VT_BSTR);
    nothing->bstrVal = nullptr;
    EXPECT_EQ(CompareVariant(nothing, Text("")), 0);
    EXPECT_LT(CompareVariant(nothing, Text("a")), 0);
}

}  // namespace
