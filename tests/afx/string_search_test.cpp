#include <afx.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "afx/gbk.h"

namespace {

const CString kPath = CString("a") + kEndsInBackslash + "\\b\\" + kEndsInBackslash + "c";  // a ?\ \ b \ ?\ c

TEST(StringFind, StepsOverTrailBytesThatLookLikeTheCharacter) {
    EXPECT_EQ(kPath.Find('\\'), 3);
    EXPECT_EQ(kPath.Find('\\', 4), 5);
    EXPECT_EQ(kPath.Find('\\', 6), -1);
    EXPECT_EQ(kPath.ReverseFind('\\'), 5);
    EXPECT_EQ(CString(kEndsInBar).Find('|'), -1);
    EXPECT_EQ(CString(kEndsInBar).ReverseFind('|'), -1);
    EXPECT_EQ(CString(kEndsInUpperA).Find('A'), -1);
    EXPECT_EQ(CString(kEndsInUpperA).Find("A"), -1);
    EXPECT_EQ((CString(kEndsInUpperA) + "A").Find("A"), 2);
}

TEST(StringFind, FindsTextsAtCharactersOnly) {
    static const struct {
        const char* label;
        const char* text;
        const char* wanted;
        int start;
        int position;
    } kRows[] = {
        {"beginning", "abcabc", "abc", 0, 0},
        {"from a start", "abcabc", "abc", 1, 3},
        {"not there", "abcabc", "abd", 0, -1},
        {"longer than the text", "ab", "abc", 0, -1},
        {"empty is at the start", "abc", "", 2, 2},
        {"empty is at the end too", "abc", "", 3, 3},
        {"start behind the end", "abc", "", 4, -1},
        {"negative start", "abc", "a", -1, -1},
        {"double-byte text", "库存数量", "数", 0, 4},
        {"second byte and next first byte make no character", "\xB0\xA1\xB0\xA1", "\xA1\xB0", 0, -1},
        {"second byte alone is not found", "\xB0\xA1", "\xA1", 0, -1},
        {"after a half character", "\xC4,b", ",b", 0, 1},
        {"half character in the middle", "a\xC4'b", "'", 0, 2},
        {"half character itself", "a\xC4,", "\xC4", 0, 1},
        {"half character is no first half", "\xC4\xE3", "\xC4", 0, -1},
        {"first byte after double-byte ones", "\x81\x41|", "|", 0, 2},
        {"overlapping beginnings", "aaab", "aab", 0, 1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(CString(row.text).Find(row.wanted, row.start), row.position);
    }
    EXPECT_EQ(CString("a").Find(static_cast<const char*>(nullptr)), -1);
    EXPECT_EQ(CString("a").Find('\0'), -1);
    EXPECT_EQ(CString().Find('a'), -1);
    EXPECT_EQ(CString().ReverseFind('a'), -1);
}

/// Looks at one character after the other, and knows no other way.
int FindByStepping(const std::string& text, const std::string& wanted) {
    const auto isLead = [](char ch) { return static_cast<unsigned char>(ch) >= 0x81 && ch != '\xFF'; };
    const auto isTrail = [](char ch) { return static_cast<unsigned char>(ch) >= 0x40 && ch != '\x7F' && ch != '\xFF'; };
    const auto lengthAt = [&](const std::string& in, std::size_t at) {
        return isLead(in[at]) && at + 1 < in.size() && isTrail(in[at + 1]) ? 2U : 1U;
    };
    for (std::size_t at = 0; at + wanted.size() <= text.size(); at += lengthAt(text, at)) {
        if (text.compare(at, wanted.size(), wanted) == 0 && lengthAt(text, at) == lengthAt(wanted, 0)) {
            return static_cast<int>(at);
        }
    }
    return -1;
}

/// Every text of up to that many of these bytes.
std::vector<std::string> TextsOf(const std::string& bytes, std::size_t longest) {
    std::vector<std::string> texts = {""};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (texts[i].size() == longest) break;
        for (const char byte : bytes)
            texts.push_back(texts[i] + byte);
    }
    return texts;
}

TEST(StringFind, FindsWhatSteppingFindsInEveryShortText) {
    const std::string bytes = "A\x81(\x7F\xFF";  // a letter, a lead byte, and what is no second byte
    const auto wantedTexts = TextsOf(bytes, 3);
    for (const auto& text : TextsOf(bytes, 6)) {
        for (const auto& wanted : wantedTexts) {
            if (wanted.empty()) continue;
            ASSERT_EQ(CString(text.c_str()).Find(wanted.c_str()), FindByStepping(text, wanted))
                << testing::PrintToString(text) << " has " << testing::PrintToString(wanted);
        }
    }
}

TEST(StringFind, FindsLongTextsLikeShortOnes) {
    const std::string filling(300, '(');
    const auto heads = TextsOf("A\x81", 5);
    for (const auto& head : heads) {
        for (const std::string& wanted : {"A" + filling,
                                          "A\x81"
                                          "A" +
                                              filling,
                                          filling + "A",
                                          "(" + filling +
                                              "\x81"
                                              "A"}) {
            for (const auto& tail : {std::string("A"), filling, wanted}) {
                const std::string text = head + filling + tail;
                ASSERT_EQ(CString(text.c_str()).Find(wanted.c_str()), FindByStepping(text, wanted))
                    << testing::PrintToString(head) << ", " << testing::PrintToString(wanted);
            }
        }
    }
}

TEST(StringFind, FindsALongTextAmongItsOwnBeginnings) {
    CString beginnings;
    for (int i = 0; i < 100000; ++i)
        beginnings += "A(";
    const CString wanted = beginnings + ")";
    EXPECT_EQ((beginnings + beginnings + wanted).Find(wanted), 400000);
    EXPECT_EQ((beginnings + beginnings + "A(").Find(wanted), -1);
    EXPECT_EQ((beginnings + "\x81" + wanted + wanted).Find(wanted), 400002)
        << "the first one begins inside a character";
}

TEST(StringFind, LooksBehindEmbeddedZeros) {
    const CString text("ab\0cd", 5);
    EXPECT_EQ(text.Find('d'), 4);
    EXPECT_EQ(text.Find("cd"), 3);
    EXPECT_EQ(text.ReverseFind('c'), 3);
}

TEST(StringFindOneOf, TakesSetsOfWholeCharacters) {
    static const struct {
        const char* label;
        const char* text;
        const char* set;
        int position;
    } kRows[] = {
        {"plain", "name=value", "=;", 4},
        {"first of several", "a;b=c", "=;", 1},
        {"none", "abc", "=;", -1},
        {"empty set", "abc", "", -1},
        {"trail byte is no member", "\xD5\x5C\x81\x7C", "\\|", -1},
        {"double-byte member", "库存，数量", "，", 4},
        {"half of a member does not match", "\xB0\xA1\xB0\xA2", "\xA1\xB0", -1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(CString(row.text).FindOneOf(row.set), row.position);
    }
    EXPECT_EQ(CString("abc").FindOneOf(nullptr), -1);
}

TEST(StringSpan, EndsAtTheFirstCharacterOutsideOrInside) {
    EXPECT_STREQ(CString("123abc").SpanIncluding("0123456789"), "123");
    EXPECT_STREQ(CString("abc").SpanIncluding("0123456789"), "");
    EXPECT_STREQ(CString("库存数").SpanIncluding("存库"), "库存");
    EXPECT_STREQ(CString("123").SpanIncluding("321"), "123");
    EXPECT_STREQ(CString("name=value").SpanExcluding("="), "name");
    EXPECT_STREQ(CString("name").SpanExcluding("="), "name");
    EXPECT_STREQ(kPath.SpanExcluding("\\"), CString("a") + kEndsInBackslash);
    EXPECT_STREQ(CString("a").SpanIncluding(nullptr), "");
    EXPECT_STREQ(CString("a").SpanExcluding(nullptr), "a");
}

}  // namespace
