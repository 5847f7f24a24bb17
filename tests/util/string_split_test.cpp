#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tkkernel/util.h"
#include "util/lists.h"
#include "util/slow_reference.h"

namespace {

using namespace tk::test;
using testing::ElementsAre;

TEST(StringToArray, DropsEmptyPiecesButKeepsTheLast) {
    const struct {
        const char* label;
        const char* text;
        const char* separator;
        Texts pieces;
    } kRows[] = {
        {"one piece", "a", ";", {"a"}},
        {"two", "a;b", ";", {"a", "b"}},
        {"an empty piece is dropped", "a;;b", ";", {"a", "b"}},
        {"the empty remainder stays", "a;b;", ";", {"a", "b", ""}},
        {"an empty piece and the remainder", "a;;b;", ";", {"a", "b", ""}},
        {"leading separator", ";a", ";", {"a"}},
        {"separator alone", ";", ";", {""}},
        {"separators alone", ";;;", ";", {""}},
        {"separator of two characters", "a::b:c", "::", {"a", "b:c"}},
        {"overlapping separators", "a:::b", "::", {"a", ":b"}},
        {"separator longer than the text", "ab", "abc", {"ab"}},
        {"text equals separator", "abc", "abc", {""}},
        {"blanks are kept", " a ; b ", ";", {" a ", " b "}},
        {"empty separator", "a;b", "", {"a;b"}},
        {"null separator", "a;b", nullptr, {"a;b"}},
        {"empty text", "", ";", {}},
        {"null text", nullptr, ";", {}},
        {"nothing at all", nullptr, nullptr, {}},
        {"Chinese separator", "库，存，量", "，", {"库", "存", "量"}},
        {"a second byte counts as a separator", "a\x81|b", "|", {"a\x81", "b"}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CStringArray array;
        array.Add("old");
        StringToArray(array, row.text, row.separator);
        EXPECT_EQ(ToTexts(array), row.pieces);
    }
}

TEST(StringToArray, SplitsATextThatLiesInTheArrayItself) {
    CStringArray array;
    Assign(array, {"first element, long enough to be kept outside of its object", "a;b;c", ";"});
    StringToArray(array, array[0], ",");
    EXPECT_THAT(ToTexts(array), ElementsAre("first element", " long enough to be kept outside of its object"));
    Assign(array, {";", "a;b"});
    StringToArray(array, array[1], array[0]);
    EXPECT_THAT(ToTexts(array), ElementsAre("a", "b"));
    Assign(array, {"ab"});
    StringToArray(array, array[0], 3);  // with its terminator
    EXPECT_THAT(ToTexts(array), ElementsAre("ab"));
}

TEST(StringToArray, ReadsPackedTexts) {
    const struct {
        const char* label;
        std::string buffer;
        Texts texts;
    } kRows[] = {
        {"two", std::string("a\0bc\0", 5), {"a", "bc"}},
        {"an empty one", std::string("a\0\0b\0", 5), {"a", "", "b"}},
        {"only empty ones", std::string("\0\0", 2), {"", ""}},
        {"without the last terminator", std::string("a\0bc", 4), {"a", "bc"}},
        {"cut in the middle", std::string("a\0b", 3), {"a", "b"}},
        {"nothing", std::string(), {}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CStringArray array;
        array.Add("old");
        StringToArray(array, row.buffer.data(), static_cast<int>(row.buffer.size()));
        EXPECT_EQ(ToTexts(array), row.texts);
    }
}

TEST(StringToArray, ReadsNothingFromANullBufferOrANegativeLength) {
    CStringArray array;
    array.Add("old");
    StringToArray(array, static_cast<const char*>(nullptr), 5);
    EXPECT_EQ(array.GetSize(), 0);
    array.Add("old");
    StringToArray(array, "abc", -1);
    EXPECT_EQ(array.GetSize(), 0);
}

TEST(StringToArray, NeverReadsPastTheLength) {
    const std::string exact = {'a', '\0', 'b'};  // no terminator behind it that counts
    CStringArray array;
    StringToArray(array, exact.data(), 1);
    EXPECT_THAT(ToTexts(array), ElementsAre("a"));
    StringToArray(array, exact.data(), 2);
    EXPECT_THAT(ToTexts(array), ElementsAre("a"));
}

TEST(ArrayToString, JoinsWithTheSeparatorBetween) {
    const struct {
        const char* label;
        Texts texts;
        const char* separator;
        const char* result;
    } kRows[] = {
        {"none", {}, ",", ""},
        {"one", {"a"}, ",", "a"},
        {"three", {"a", "b", "c"}, ",", "a,b,c"},
        {"empty elements", {"", "", ""}, ",", ",,"},
        {"one empty element", {""}, ",", ""},
        {"long separator", {"a", "b"}, " and ", "a and b"},
        {"empty separator", {"a", "b"}, "", "ab"},
        {"null separator", {"a", "b"}, nullptr, "ab"},
        {"Chinese", {"库", "存"}, "，", "库，存"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CStringArray array;
        Assign(array, row.texts);
        EXPECT_STREQ(ArrayToString(array, row.separator), row.result);
    }
}

TEST(StringToArray, AgreesWithTheRuleOnAnyTextAndSeparator) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 20000; ++i) {
        const std::string text = random.TextOf("ab;;,", 40);
        const std::string separator = random.TextOf(";,a", 2);
        CStringArray array;
        StringToArray(array, text.c_str(), separator.c_str());
        ASSERT_EQ(ToTexts(array), Split(text, separator)) << text << " by " << separator;
        ASSERT_EQ(Std(ArrayToString(array, separator.c_str())), Join(Split(text, separator), separator));
    }
}

TEST(StringToArray, SplitsListsOfAnyLength) {
    for (const int count : {1, 2, 63, 64, 65, 128, 129, 1000}) {
        SCOPED_TRACE(count);
        Texts texts;
        for (int i = 0; i < count; ++i)
            texts.push_back("field " + std::to_string(i));
        CStringArray array;
        StringToArray(array, Join(texts, "||").c_str(), "||");
        EXPECT_EQ(ToTexts(array), texts);
        StringToArray(array, Join(texts, ",").c_str(), ",");
        EXPECT_EQ(ToTexts(array), texts);
    }
}

TEST(DivideString, TakesTokensUntilTheLast) {
    CString text("a,bc,,d");
    EXPECT_STREQ(DivideString(text, ','), "a");
    EXPECT_STREQ(text, "bc,,d");
    EXPECT_STREQ(DivideString(text, ','), "bc");
    EXPECT_STREQ(DivideString(text, ','), "");
    EXPECT_STREQ(text, "d");
    EXPECT_STREQ(DivideString(text, ','), "") << "the last token stays in the text";
    EXPECT_STREQ(text, "d");
}

TEST(DivideString, HandlesTheEdges) {
    CString text;
    EXPECT_STREQ(DivideString(text, ','), "");
    text = ",";
    EXPECT_STREQ(DivideString(text, ','), "");
    EXPECT_STREQ(text, "");
    text = "a,";
    EXPECT_STREQ(DivideString(text, ','), "a");
    EXPECT_STREQ(text, "");
    text = "abc";
    EXPECT_STREQ(DivideString(text, '\0'), "") << "the terminator is no character of the text";
    EXPECT_STREQ(text, "abc");
    text = "\x81|a";
    EXPECT_STREQ(DivideString(text, '|'), "\x81") << "searched by bytes";
    EXPECT_STREQ(text, "a");
}

TEST(CountSubString, CountsFieldsNotSeparators) {
    const struct {
        const char* text;
        char ch;
        int count;
    } kRows[] = {
        {"a,b,c", ',', 3}, {"abc", ',', 0}, {"", ',', 0},     {",", ',', 2},
        {",,", ',', 3},    {"a,", ',', 2},  {"abc", '\0', 0}, {"\x81|", '|', 2},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(CountSubString(row.text, row.ch), row.count);
    }
    EXPECT_EQ(CountSubString(nullptr, ','), 0);
}

}  // namespace
