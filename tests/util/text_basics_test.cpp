#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "tkkernel/util.h"

namespace {

TEST(IsExist, FindsACharacter) {
    EXPECT_EQ(IsExist("abc", 'b'), 1);
    EXPECT_EQ(IsExist("abc", 'B'), 0);
    EXPECT_EQ(IsExist("", 'a'), 0);
    EXPECT_EQ(IsExist(nullptr, 'a'), 0);
    EXPECT_EQ(IsExist("abc", '\0'), 0) << "the terminator is no character of the text";
    EXPECT_EQ(IsExist("\x81|", '|'), 1) << "searched by bytes";
}

TEST(CutString, RemovesACharacterAndKeepsDoubleByteOnesWhole) {
    EXPECT_STREQ(CutString("a-b-c", '-'), "abc");
    EXPECT_STREQ(CutString("---", '-'), "");
    EXPECT_STREQ(CutString("abc", '-'), "abc");
    EXPECT_STREQ(CutString("", '-'), "");
    EXPECT_STREQ(CutString(nullptr, '-'), "");
    EXPECT_STREQ(CutString("\x81|a|", '|'), "\x81|a");
    EXPECT_STREQ(CutString("库 存", ' '), "库存");
}

TEST(CutString, TakesNothingForTheSecondHalfThatIsNone) {
    EXPECT_STREQ(CutString("a\xB0 ", ' '), "a\xB0");
    EXPECT_STREQ(CutString("a \xB0", ' '), "a\xB0");
    EXPECT_STREQ(CutString("\xB0-- ", '-'), "\xB0 ");
    EXPECT_STREQ(CutString("\xB0\x7F.", '\x7F'), "\xB0.");
}

TEST(StringLeft, CopiesAtMostWhatThereIs) {
    const struct {
        const char* source;
        int count;
        int copied;
        const char* text;
    } kRows[] = {
        {"abcdef", 3, 3, "abc"}, {"abc", 9, 3, "abc"}, {"abc", 3, 3, "abc"}, {"abc", 0, 0, ""},
        {"abc", -1, 0, ""},      {"", 3, 0, ""},       {nullptr, 3, 0, ""},
    };
    for (const auto& row : kRows) {
        char target[16] = "untouched";
        EXPECT_EQ(StringLeft(row.source, target, row.count), row.copied);
        EXPECT_STREQ(target, row.text);
    }
    EXPECT_EQ(StringLeft("abc", static_cast<char*>(nullptr), 2), 0);
}

TEST(StringRight, CopiesAtMostWhatThereIs) {
    const struct {
        const char* source;
        int count;
        int copied;
        const char* text;
    } kRows[] = {
        {"abcdef", 3, 3, "def"}, {"abc", 9, 3, "abc"}, {"abc", 3, 3, "abc"}, {"abc", 0, 0, ""},
        {"abc", -1, 0, ""},      {"", 3, 0, ""},       {nullptr, 3, 0, ""},
    };
    for (const auto& row : kRows) {
        char target[16] = "untouched";
        EXPECT_EQ(StringRight(row.source, target, row.count), row.copied);
        EXPECT_STREQ(target, row.text);
    }
    EXPECT_EQ(StringRight("abc", static_cast<char*>(nullptr), 2), 0);
}

TEST(StringLeft, WorksInPlace) {
    char buffer[] = "abcdef";
    EXPECT_EQ(StringLeft(buffer, 4), 4);
    EXPECT_STREQ(buffer, "abcd");
    EXPECT_EQ(StringRight(buffer, 2), 2);
    EXPECT_STREQ(buffer, "cd");
    EXPECT_EQ(StringRight(buffer, 9), 2);
    EXPECT_STREQ(buffer, "cd");
    EXPECT_EQ(StringLeft(buffer, 0), 0);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(StringLeft(nullptr, 3), 0);
    EXPECT_EQ(StringRight(nullptr, 3), 0);
}

TEST(StringRight, CopiesIntoAnOverlappingTarget) {
    char buffer[] = "abcdef";
    EXPECT_EQ(StringRight(buffer, buffer + 1, 4), 4);
    EXPECT_STREQ(buffer, "acdef");
}

TEST(IsDigit, WantsDigitsAndNothingElse) {
    const struct {
        const char* text;
        int result;
    } kRows[] = {{"0", 1}, {"0123456789", 1}, {"", 0}, {"-1", 0}, {"1.5", 0}, {"12a", 0}, {" 1", 0}, {"１", 0}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(IsDigit(row.text), row.result);
    }
    EXPECT_EQ(IsDigit(nullptr), 0);
}

TEST(GetMemoryLength, GivesAtLeastWhatWasAskedFor) {
    EXPECT_EQ(GetMemoryLength(nullptr), 0);
    for (const std::size_t size : {1U, 24U, 1000U, 1000000U}) {
        void* block = std::malloc(size);
        ASSERT_NE(block, nullptr);
        const int length = GetMemoryLength(block);
        EXPECT_GE(length, static_cast<int>(size));
        std::memset(block, 1, static_cast<std::size_t>(length));  // all of it is usable
        std::free(block);
    }
}

TEST(StrLen, CountsUpToTheTerminator) {
    EXPECT_EQ(StrLen("abc"), 3);
    EXPECT_EQ(StrLen("库存"), 4) << "bytes";
    EXPECT_EQ(StrLen(""), 0);
    EXPECT_EQ(StrLen(nullptr), 0);
    EXPECT_EQ(WStrLen(OLESTR("abc")), 3);
    EXPECT_EQ(WStrLen(OLESTR("\u5E93\u5B58")), 2) << "units";
    EXPECT_EQ(WStrLen(OLESTR("")), 0);
    EXPECT_EQ(WStrLen(nullptr), 0);
}

}  // namespace
