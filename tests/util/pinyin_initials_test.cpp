#include <gtest/gtest.h>

#include <string>

#include "tkkernel/util.h"
#include "util/chinese_reference.h"
#include "util/slow_reference.h"
#include "util/values.h"

namespace {

using namespace tk::test;

std::string Head(const std::string& text) {
    return Std(ToPyHead(text.data(), static_cast<int>(text.size())));
}

TEST(ToPyHead, GivesTheInitialsOfNames) {
    const struct {
        const char* text;
        const char* initials;
    } kRows[] = {
        {"中国", "ZG"},      {"李A", "LA"},        {"北京", "BJ"},           {"上海市", "SHS"}, {"王小明", "WXM"},
        {"张三", "ZS"},      {"赵钱孙李", "ZQSL"}, {"周吴郑王", "ZWZW"},     {"数据库", "SJK"}, {"客户编号", "KHBH"},
        {"安徽", "AH"},      {"俄罗斯", "ELS"},    {"日本", "RB"},           {"欧洲", "OZ"},    {"拿破仑", "NPL"},
        {"第1车间", "D1CJ"}, {"a中b国c", "aZbGc"}, {"发票 No.7", "FP No.7"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(Head(row.text), row.initials);
    }
}

TEST(ToPyHead, ChangesTheLetterExactlyAtItsFirstCharacter) {
    const struct {
        const char* first;
        const char* letter;
        const char* before;  // the letter of the code before
    } kRows[] = {
        {"啊", "A", ""},  {"芭", "B", "A"}, {"擦", "C", "B"}, {"搭", "D", "C"}, {"蛾", "E", "D"}, {"发", "F", "E"},
        {"噶", "G", "F"}, {"哈", "H", "G"}, {"击", "J", "H"}, {"喀", "K", "J"}, {"垃", "L", "K"}, {"妈", "M", "L"},
        {"拿", "N", "M"}, {"哦", "O", "N"}, {"啪", "P", "O"}, {"期", "Q", "P"}, {"然", "R", "Q"}, {"撒", "S", "R"},
        {"塌", "T", "S"}, {"挖", "W", "T"}, {"昔", "X", "W"}, {"压", "Y", "X"}, {"匝", "Z", "Y"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.first);
        std::string before = row.first;
        --before.back();
        EXPECT_EQ(Head(row.first), row.letter);
        EXPECT_EQ(Head(before), row.before);
    }
}

TEST(ToPyHead, MarksATextThatComesBackAsItIs) {
    EXPECT_EQ(Head("abc"), "vabc");
    EXPECT_EQ(Head("ABC"), "vABC");
    EXPECT_EQ(Head(""), "v");
    EXPECT_EQ(Head("No. 1\r\n"), "vNo. 1\r\n");
    EXPECT_EQ(Head("v"), "vv");
    EXPECT_EQ(Head(std::string("a\0b", 3)), std::string("va\0b", 4));
}

TEST(ToPyHead, GivesZToTheRarerCharacters) {
    EXPECT_EQ(Head("亍"), "Z");  // the first of the second level
    EXPECT_EQ(Head("亍丌兀"), "ZZZ");
    EXPECT_EQ(Head("\xFE\xFE"), "Z");  // the last code
}

TEST(ToPyHead, LeavesOutWhatStandsBeforeTheFirstCharacter) {
    EXPECT_EQ(Head("，。"), "");      // full-width symbols
    EXPECT_EQ(Head("Ａ１"), "");      // full-width letters and digits
    EXPECT_EQ(Head("\x81\x40"), "");  // extension
    EXPECT_EQ(Head("\xB0\x40"), "");  // extension with the lead byte of the first one
    EXPECT_EQ(Head("\x80\x41"), "");  // no lead byte, but it takes its follower along
    EXPECT_EQ(Head("中，国。"), "ZG");
}

TEST(ToPyHead, LooksAtTheGivenBytesOnly) {
    const std::string text = "中国abc";
    EXPECT_STREQ(ToPyHead(text.c_str(), 4), "ZG");
    EXPECT_STREQ(ToPyHead(text.c_str(), 5), "ZGa");
    EXPECT_STREQ(ToPyHead(text.c_str() + 4, 3), "vabc");
    EXPECT_STREQ(ToPyHead(text.c_str(), 0), "v");
    EXPECT_STREQ(ToPyHead(text.c_str(), -1), "v");
    EXPECT_STREQ(ToPyHead(nullptr, 4), "v");
    EXPECT_STREQ(ToPyHead(nullptr, 0), "v");
}

TEST(ToPyHead, GivesNothingForHalfACharacterAtTheEnd) {
    const std::string text = "中国";
    EXPECT_STREQ(ToPyHead(text.c_str(), 3), "Z");
    EXPECT_STREQ(ToPyHead(text.c_str(), 1), "");
    EXPECT_EQ(Head("a\xD6"), "a");
    EXPECT_EQ(Head("\xFF"), "");
}

TEST(ToPyHead, TakesAWholeText) {
    CString text("中国abc");
    EXPECT_STREQ(ToPyHead(text), "ZGabc");
    EXPECT_STREQ(text, "中国abc");
    CString empty;
    EXPECT_STREQ(ToPyHead(empty), "v");
}

TEST(ToPyHead, AgreesWithTheRuleOnEveryPairOfBytes) {
    for (int lead = 0; lead < 256; ++lead) {
        for (int trail = 0; trail < 256; ++trail) {
            const std::string pair = {static_cast<char>(lead), static_cast<char>(trail)};
            ASSERT_EQ(Head(pair), Initials(pair)) << std::hex << lead << ' ' << trail;
            const std::string inside = "x" + pair + "中";
            ASSERT_EQ(Head(inside), Initials(inside)) << std::hex << lead << ' ' << trail;
        }
    }
}

TEST(ToPyHead, AgreesWithTheRuleOnTextsOfAllLengths) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 1200; ++i) {
        std::string text;
        for (int rest = i; rest > 0; --rest)
            text += static_cast<char>(random.Below(3) == 0 ? random.Below(256) : 0xB0 + random.Below(0x28));
        ASSERT_EQ(Head(text), Initials(text)) << i;
    }
}

}  // namespace
