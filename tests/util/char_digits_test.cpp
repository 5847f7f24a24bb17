#include <gtest/gtest.h>

#include <string>

#include "tkkernel/util.h"
#include "util/slow_reference.h"
#include "util/values.h"

namespace {

using namespace tk::test;

TEST(DecToHex, GivesTheDigit) {
    const std::string kDigits = "0123456789ABCDEF";
    for (int value = 0; value < 16; ++value)
        EXPECT_EQ(DecToHex(value), kDigits[static_cast<std::size_t>(value)]);
    EXPECT_EQ(DecToHex(16), 'G') << "the value plus 55, also past F";
    EXPECT_EQ(DecToHex(35), 'Z');
}

TEST(HexToDec, TurnsEveryCharacterByItsCode) {
    for (int code = -128; code < 128; ++code) {
        EXPECT_EQ(HexToDec(static_cast<char>(code)), code > '9' ? code - 55 : code - 48) << code;
    }
    EXPECT_EQ(HexToDec('A'), 10);
    EXPECT_EQ(HexToDec('F'), 15);
    EXPECT_EQ(HexToDec('a'), 42) << "lower-case letters are not supported";
}

TEST(StringToHexString, WritesTwoDigitsForEachByte) {
    EXPECT_STREQ(StringToHexString("AZ\x01\xFF"), "415A01FF");
    EXPECT_STREQ(StringToHexString("库"), "BFE2");
    EXPECT_STREQ(StringToHexString(""), "");
    EXPECT_STREQ(StringToHexString(nullptr), "");
}

TEST(HexStringToString, ReadsPairsUntilOneIsNone) {
    EXPECT_STREQ(HexStringToString("415A01FF"), "AZ\x01\xFF");
    EXPECT_STREQ(HexStringToString("bfe2"), "库") << "either case";
    EXPECT_STREQ(HexStringToString("41 42"), "A");
    EXPECT_STREQ(HexStringToString("414"), "A");
    EXPECT_STREQ(HexStringToString("4G"), "");
    EXPECT_STREQ(HexStringToString(""), "");
    EXPECT_STREQ(HexStringToString(nullptr), "");
    EXPECT_EQ(Std(HexStringToString("410042")), std::string("A\0B", 3));
}

TEST(HexStringToString, UndoesStringToHexString) {
    std::string all;
    for (int code = 1; code < 256; ++code)
        all += static_cast<char>(code);
    EXPECT_EQ(Std(HexStringToString(StringToHexString(all.c_str()))), all);
}

TEST(StringToWord, ReadsUpToTwoPairs) {
    const struct {
        const char* text;
        unsigned short word;
    } kRows[] = {
        {"1A2B", 0x1A2B}, {"1a2b", 0x1A2B}, {"FFFF", 0xFFFF}, {"1A2B3C", 0x1A2B}, {"1A", 0x1A}, {"1A2", 0x1A02},
        {"x", 0},         {"1Ax", 0x1A},    {"", 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(StringToWord(row.text), row.word);
    }
    EXPECT_EQ(StringToWord(nullptr), 0);
}

TEST(NumberToString, WritesAnyBase) {
    const struct {
        unsigned number;
        int base;
        const char* text;
    } kRows[] = {
        {0, 10, "0"},
        {4294967295U, 10, "4294967295"},
        {5, 2, "101"},
        {4294967295U, 2, "11111111111111111111111111111111"},
        {511, 8, "777"},
        {0, 16, "0x00000000"},
        {26, 16, "0x0000001A"},
        {4294967295U, 16, "0xFFFFFFFF"},
        {35, 36, "Z"},
        {5, 1, ""},
        {5, 0, ""},
        {5, -2, ""},
        {5, 37, ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.number << " in base " << row.base);
        EXPECT_STREQ(NumberToString(row.number, row.base), row.text);
    }
}

TEST(StringToNumber, ReadsAnyBase) {
    const struct {
        const char* text;
        int base;
        unsigned number;
    } kRows[] = {
        {"42", 10, 42},
        {"101", 2, 5},
        {"102", 2, 2},
        {"0x1A", 16, 26},
        {"0X1a", 16, 26},
        {"1A", 16, 26},
        {"0x", 16, 0},
        {"0x1A", 10, 0},
        {"z", 36, 35},
        {"12x", 10, 12},
        {"", 10, 0},
        {"-1", 10, 0},
        {"4294967295", 10, 4294967295U},
        {"4294967296", 10, 4294967295U},
        {"0x1FFFFFFFF", 16, 4294967295U},
        {"5", 1, 0},
        {"5", 37, 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.text << " in base " << row.base);
        EXPECT_EQ(StringToNumber(row.text, row.base), row.number);
    }
    EXPECT_EQ(StringToNumber(nullptr, 10), 0U);
}

TEST(StringToNumber, UndoesNumberToString) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 20000; ++i) {
        const auto number = static_cast<unsigned>(random.Engine()());
        const int base = 2 + random.Below(35);
        ASSERT_EQ(StringToNumber(NumberToString(number, base), base), number) << number << " in base " << base;
    }
}

}  // namespace
