#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tkkernel/util.h"
#include "util/slow_reference.h"

namespace {

using namespace tk::test;

struct Row {
    const char* label;
    const char* text;
    const char* set;
    int removed;
    const char* rest;
};

TEST(TrimLeft, RemovesLeadingCharactersOfTheSet) {
    const Row kRows[] = {
        {"one", " a ", " ", 1, "a "},
        {"several of a set", " \t xa", " \t", 3, "xa"},
        {"everything", "aaa", "a", 3, ""},
        {"nothing there gives -1", "abc", "x", -1, "abc"},
        {"set inside only", "abc", "b", -1, "abc"},
        {"empty buffer", "", "a", -1, ""},
        {"empty set", "abc", "", -1, "abc"},
        {"Chinese characters", "　　库存", "　", 4, "库存"},
        {"Chinese and others", "　 　a", " 　", 5, "a"},
        {"never half a character", "库存", "\xBF", -1, "库存"},  // the first byte of the text
        {"no other character with the same bytes", "\xB0\xA1", "\xA1\xB0", -1, "\xB0\xA1"},
        {"a letter is not taken from a second byte", "\x81\x61", "a", -1, "\x81\x61"},
        {"up to half a character at the end", " \xB0", " ", 1, "\xB0"},
        {"half a character takes no blank to itself", "\xB0 a", "\xB0 ", 2, "a"},
        {"a member behind half a character", " a", "\xB0 ", 1, "a"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        char buffer[64];
        std::strcpy(buffer, row.text);
        EXPECT_EQ(TrimLeft(buffer, row.set), row.removed);
        EXPECT_STREQ(buffer, row.rest);
    }
}

TEST(TrimRight, RemovesTrailingCharactersOfTheSet) {
    const Row kRows[] = {
        {"one", " a ", " ", 1, " a"},
        {"several of a set", "ax \t ", " \t", 3, "ax"},
        {"everything", "aaa", "a", 3, ""},
        {"nothing there gives -1", "abc", "x", -1, "abc"},
        {"set inside only", "abc", "b", -1, "abc"},
        {"empty buffer", "", "a", -1, ""},
        {"empty set", "abc", "", -1, "abc"},
        {"Chinese characters", "库存　　", "　", 4, "库存"},
        {"never half a character", "\x81\x61", "a", -1, "\x81\x61"},  // the letter is a second byte
        {"letters behind a character",
         "\x81\x61"
         "aa",
         "a", 2, "\x81\x61"},
        {"no other character with the same bytes", "\xB0\xA1", "\xA1\xB0", -1, "\xB0\xA1"},
        {"Chinese and others", "a　 　", " 　", 5, "a"},
        {"the second byte of a character", "存", "\xE6", -1, "存"},
        {"a blank behind half a character", "ab\xB0 ", " ", 1, "ab\xB0"},
        {"blanks behind half a character", "ab\xB0  ", " ", 2, "ab\xB0"},
        {"half a character at the end", "ab \xB0", " ", -1, "ab \xB0"},
        {"a member behind half a character", "ab ", "\xB0 ", 1, "ab"},
        {"lowest second byte", "\xB0\x40", "\x40", -1, "\xB0\x40"},
        {"below the second bytes", "\xB0\x3F", "\x3F", 1, "\xB0"},
        {"a gap in the second bytes", "\xB0\x7F", "\x7F", 1, "\xB0"},
        {"highest second byte", "\xB0\xFE", "\xFE", -1, "\xB0\xFE"},
        {"above the second bytes", "\xB0\xFF", "\xFF", 1, "\xB0"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        char buffer[64];
        std::strcpy(buffer, row.text);
        EXPECT_EQ(TrimRight(buffer, row.set), row.removed);
        EXPECT_STREQ(buffer, row.rest);
    }
}

TEST(TrimLeft, AcceptsNulls) {
    char buffer[] = "abc";
    EXPECT_EQ(TrimLeft(nullptr, "a"), -1);
    EXPECT_EQ(TrimLeft(buffer, nullptr), -1);
    EXPECT_EQ(TrimRight(nullptr, "a"), -1);
    EXPECT_EQ(TrimRight(buffer, nullptr), -1);
    EXPECT_STREQ(buffer, "abc");
}

TEST(TrimLeft, TakesTheBufferItselfForTheSet) {
    char buffer[] = "aab";
    EXPECT_EQ(TrimLeft(buffer, buffer), 3);
    EXPECT_STREQ(buffer, "");
    char other[] = "ab";
    EXPECT_EQ(TrimRight(other, other), 2);
    EXPECT_STREQ(other, "");
}

TEST(TrimRight, MirrorsTrimLeft) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 20000; ++i) {
        const std::string text = random.TextOf("ab x", 12);
        const std::string set = random.TextOf("a b", 3);
        std::string left = text;
        std::string right(text.rbegin(), text.rend());
        const int removed = TrimLeft(left.data(), set.c_str());
        ASSERT_EQ(TrimRight(right.data(), set.c_str()), removed);
        left.resize(std::strlen(left.c_str()));
        right.resize(std::strlen(right.c_str()));
        ASSERT_EQ(std::string(right.rbegin(), right.rend()), left);
        const std::size_t kept = text.find_first_not_of(set);
        ASSERT_EQ(left, kept == std::string::npos ? "" : text.substr(kept)) << text << " without " << set;
    }
}

TEST(TrimRight, TellsCharactersApartAsCStringDoes) {
    // Lead and second bytes in any order: whole characters, halves, and what is no part of one.
    constexpr char kBytes[] = "a |\x3F\x40\x7E\x7F\x80\x81\xB0\xFE\xFF";
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 50000; ++i) {
        const std::string text = random.TextOf(kBytes, 8);
        const std::string set = random.TextOf(kBytes, 4);
        CString kept(text.c_str());
        kept.TrimRight(set.c_str());
        std::string right = text;
        TrimRight(right.data(), set.c_str());
        ASSERT_STREQ(right.c_str(), kept) << testing::PrintToString(text) << " without " << testing::PrintToString(set);

        kept = text.c_str();
        kept.TrimLeft(set.c_str());
        std::string left = text;
        TrimLeft(left.data(), set.c_str());
        ASSERT_STREQ(left.c_str(), kept) << testing::PrintToString(text) << " without " << testing::PrintToString(set);
    }
}

TEST(TruncString, CutsTheLastOtherCharacterAsWell) {
    const struct {
        const char* label;
        const char* text;
        char ch;
        const char* result;
    } kRows[] = {
        {"zeros and one more", "ab00", '0', "a"},
        {"nothing to cut but one more", "abc", '0', "ab"},
        {"number", "1.500", '0', "1."},
        {"two digits", "12", '0', "1"},
        {"only that character", "000", '0', ""},
        {"one other character", "a00", '0', ""},
        {"one character", "a", '0', ""},
        {"empty", "", '0', ""},
        {"null", nullptr, '0', ""},
        {"inner ones stay", "a0b0", '0', "a0"},
        {"a Chinese character goes whole", "a库00", '0', "a"},
        {"Chinese last", "库存", '0', "库"},
        {"a second byte is not the character", "ab\x81\x61", 'a', "ab"},
        {"a first byte is not the character", "ab\x81\x61", '\x81', "ab"},
        {"half a character at the end", "ab\xB0", '0', "ab"},
        {"half a character before the zeros",
         "a\xB0"
         "00",
         '0', "a"},
        {"half a character before a blank and another", "ab\xB0 c", 'c', "ab\xB0"},
        {"a gap in the second bytes", "ab\xB0\x7F", '0', "ab\xB0"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(TruncString(row.text, row.ch), row.result);
    }
}

}  // namespace
