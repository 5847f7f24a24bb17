#include <gtest/gtest.h>

#include <map>
#include <set>

#include "tkkernel/catalog.h"

namespace {

// Every code that has a variant type, by number on both sides: the numbers are the interface.
const std::map<long, unsigned short> kVariantTypes = {
    {2, 16},   {3, 3},   {4, 4},   {5, 5},   {6, 6},   {7, 7},   {8, 8},   {9, 9},   {10, 10}, {11, 11}, {12, 12},
    {13, 13},  {14, 14}, {16, 2},  {17, 17}, {18, 18}, {19, 19}, {20, 20}, {21, 21}, {129, 8}, {130, 8}, {131, 14},
    {132, 29}, {133, 7}, {134, 7}, {135, 7}, {139, 8}, {200, 8}, {201, 8}, {202, 8}, {203, 8},
};
const std::set<long> kQuotedCodes = {7, 8, 129, 130, 133, 134, 135, 200, 201, 202, 203};
const std::set<unsigned int> kNumbers = {2, 3, 4, 5, 6, 11, 14, 16, 17, 18, 19, 20, 21, 22, 23};
const std::set<unsigned int> kTexts = {8, 30, 31};

TEST(DBTypeToVT, KnowsEveryCodeOfItsTableAndNoOther) {
    for (long code = -300; code <= 70000; ++code) {
        const auto known = kVariantTypes.find(code);
        ASSERT_EQ(DBTypeToVT(code), known == kVariantTypes.end() ? 0 : known->second) << code;
    }
}

TEST(DBTypeToVT, ExchangesSmallAndTinyIntegers) {
    EXPECT_EQ(DBTypeToVT(2), VT_I1);
    EXPECT_EQ(DBTypeToVT(16), VT_I2);
}

TEST(DBTypeToVT, HasNoneForBinaryAndGuidAndTextForVarNumeric) {
    EXPECT_EQ(DBTypeToVT(128), VT_EMPTY);
    EXPECT_EQ(DBTypeToVT(72), VT_EMPTY);
    EXPECT_EQ(DBTypeToVT(139), VT_BSTR);
    EXPECT_EQ(DBTypeToVT(204), VT_EMPTY);
}

TEST(DBTypeToVT, ArraysAndReferencesHaveNone) {
    EXPECT_EQ(DBTypeToVT(0x2000 | 3), 0);
    EXPECT_EQ(DBTypeToVT(0x4000 | 3), 0);
    EXPECT_EQ(DBTypeToVT(2147483647L), 0);
    EXPECT_EQ(DBTypeToVT(-2147483647L - 1), 0);
}

TEST(IsStringType, IsOneForTextsDatesAndTimes) {
    for (long code = -300; code <= 70000; ++code)
        ASSERT_EQ(IsStringType(code), kQuotedCodes.contains(code) ? 1 : 0) << code;
}

TEST(IsTextType, IsOneForDatesAndTexts) {
    for (unsigned int vt = 0; vt <= 0x7FFF; ++vt)
        ASSERT_EQ(IsTextType(vt), vt == 7 || kTexts.contains(vt) ? 1 : 0) << vt;
    EXPECT_EQ(IsTextType(0xFFFFFFFFu), 0);
    EXPECT_EQ(IsTextType(0x10008u), 0);
}

TEST(GetTypeName, NamesNumbersDatesAndTexts) {
    for (unsigned int vt = 0; vt <= 0x7FFF; ++vt) {
        const char* name = kNumbers.contains(vt) ? "数字" : vt == 7 ? "时间" : kTexts.contains(vt) ? "字符串" : "";
        ASSERT_STREQ(GetTypeName(vt), name) << vt;
    }
    EXPECT_STREQ(GetTypeName(0xFFFFFFFFu), "");
}

}  // namespace
