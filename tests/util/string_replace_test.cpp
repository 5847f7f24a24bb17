#include <gtest/gtest.h>

#include <string>

#include "tkkernel/util.h"
#include "util/slow_reference.h"
#include "util/values.h"

namespace {

using namespace tk::test;

TEST(ReplaceTextA, ReplacesEveryOccurrenceInPlace) {
    const struct {
        const char* label;
        const char* text;
        const char* oldText;
        const char* newText;
        const char* result;
    } kRows[] = {
        {"all of them", "a-b-c", "-", "+", "a+b+c"},
        {"longer", "a-b", "-", "<->", "a<->b"},
        {"shorter", "a--b", "--", "", "ab"},
        {"left to right", "aaa", "aa", "b", "ba"},
        {"the new text is not searched", "ab", "a", "aa", "aab"},
        {"absent", "abc", "x", "y", "abc"},
        {"empty old text", "abc", "", "y", "abc"},
        {"null new text removes", "a-b", "-", nullptr, "ab"},
        {"null old text", "abc", nullptr, "y", "abc"},
        {"Chinese", "库存", "库", "内", "内存"},
        {"by whole characters", "\x81|", "|", "x", "\x81|"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CString text(row.text);
        ReplaceTextA(text, row.oldText, row.newText);
        EXPECT_STREQ(text, row.result);
    }
}

TEST(ReplaceString, EndsWithTheLastReplacement) {
    const struct {
        const char* label;
        const char* text;
        const char* oldText;
        const char* newText;
        const char* result;
    } kRows[] = {
        {"the tail is dropped", "a-b-c", "-", "+", "a+b+"},
        {"an occurrence at the end", "a-b-", "-", "+", "a+b+"},
        {"no occurrence is empty", "abc", "-", "+", ""},
        {"new text longer than all", "ab", "a", "xyz", ""},
        {"new text as long as all", "ab", "a", "xy", "xy"},
        {"longer new text", "a-b-c", "-", "+++", "a+++b+++"},
        {"left to right", "aaa", "aa", "b", "b"},
        {"empty old text", "abc", "", "x", ""},
        {"null old text", "abc", nullptr, "x", ""},
        {"empty new text", "a-b-c", "-", "", "ab"},
        {"null new text", "a-b-c", "-", nullptr, "ab"},
        {"empty text", "", "a", "", ""},
        {"null text", nullptr, "a", "b", ""},
        {"all of it", "aaa", "a", "b", "bbb"},
        {"Chinese", "库-存-量", "-", "＋", "库＋存＋"},
        {"by bytes", "\x81|", "|", "x", "\x81x"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(ReplaceString(row.text, row.oldText, row.newText), row.result);
    }
}

TEST(ReplaceString, AgreesWithTheRuleOnAnyTexts) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 20000; ++i) {
        const std::string text = random.TextOf("aab-", 24);
        const std::string oldText = random.TextOf("ab-", 3);
        const std::string newText = random.TextOf("xa", 8);
        ASSERT_EQ(Std(ReplaceString(text.c_str(), oldText.c_str(), newText.c_str())),
                  ReplaceAndDropTail(text, oldText, newText))
            << text << ": " << oldText << " by " << newText;
    }
}

}  // namespace
