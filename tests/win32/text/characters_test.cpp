#include <gtest/gtest.h>

#include <string>

#include "tkwin32/text.h"
#include "windows.h"

static_assert(sizeof("库") == 3);

namespace {

std::string Upper(std::string text) {
    return CharUpperA(text.data());
}
std::string Lower(std::string text) {
    return CharLowerA(text.data());
}

// A character in place of a pointer.
LPSTR Single(unsigned value) {
    return reinterpret_cast<LPSTR>(static_cast<UINT_PTR>(value));
}

}  // namespace

TEST(CharUpper, MapsLettersOfEveryScriptOfTheCodePage) {
    static const struct {
        const char* label;
        const char* small;
        const char* capital;
    } kRows[] = {
        {"ASCII", "abcxyz", "ABCXYZ"},
        {"full width", "ａｂｚ", "ＡＢＺ"},
        {"Greek", "αβω", "ΑΒΩ"},
        {"Cyrillic", "абяё", "АБЯЁ"},
        {"Roman numbers", "ⅰⅹ", "ⅠⅩ"},
        {"mixed with ideographs", "库a存ｂ", "库A存Ｂ"},
        {"no letters", "库存1!@[`{", "库存1!@[`{"},
        {"empty", "", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Upper(row.small), row.capital);
        EXPECT_EQ(Lower(row.capital), row.small);
        EXPECT_EQ(Upper(row.capital), row.capital);
        EXPECT_EQ(Lower(row.small), row.small);
    }
}

TEST(CharUpper, LeavesLettersWhoseCapitalIsOutsideTheCodePage) {
    EXPECT_EQ(Upper("ǎ\xA8\xA6"), "ǎ\xA8\xA6");
    EXPECT_EQ(CharUpperW(std::u16string(u"\u00E9").data())[0], u'\u00C9');
}

TEST(CharUpper, NeverChangesATrailByte) {
    for (unsigned trail = 'a'; trail <= 'z'; ++trail) {
        const std::string ideograph{'\x81', static_cast<char>(trail)};
        SCOPED_TRACE(trail);
        EXPECT_EQ(Upper(ideograph), ideograph);
        EXPECT_EQ(Lower(Upper(ideograph)), ideograph);
    }
}

TEST(CharUpper, LeavesHalfCharacters) {
    EXPECT_EQ(Upper("a\x81"), "A\x81");
    char cut[3] = {'\x81', 'a', 'b'};
    EXPECT_EQ(CharUpperBuffA(cut, 3), 3u);
    EXPECT_EQ(std::string(cut, 3),
              "\x81"
              "aB");
    char lead[2] = {'\x81', 'a'};
    CharUpperBuffA(lead, 1);
    EXPECT_EQ(std::string(lead, 2),
              "\x81"
              "a");
}

TEST(CharUpper, TakesASingleCharacterInPlaceOfAPointer) {
    EXPECT_EQ(CharUpperA(Single('a')), Single('A'));
    EXPECT_EQ(CharLowerA(Single('A')), Single('a'));
    EXPECT_EQ(CharUpperA(Single('1')), Single('1'));
    EXPECT_EQ(CharUpperA(Single(0)), Single(0));
    EXPECT_EQ(CharUpperA(Single(0xA3E1)), Single(0xA3C1));  // full width
    EXPECT_EQ(CharUpperW(reinterpret_cast<LPWSTR>(UINT_PTR{0x03B1})), reinterpret_cast<LPWSTR>(UINT_PTR{0x0391}));
}

TEST(CharUpperBuff, StopsAtTheLength) {
    char text[] = "abc";
    EXPECT_EQ(CharUpperBuffA(text, 2), 2u);
    EXPECT_STREQ(text, "ABc");
    EXPECT_EQ(CharLowerBuffA(text, 1), 1u);
    EXPECT_STREQ(text, "aBc");
    WCHAR wide[] = u"aя";
    EXPECT_EQ(CharUpperBuffW(wide, 2), 2u);
    EXPECT_EQ(std::u16string(wide), u"AЯ");
    EXPECT_EQ(CharLowerBuffW(wide, 1), 1u);
    EXPECT_EQ(std::u16string(wide), u"aЯ");
    EXPECT_EQ(CharUpperBuffA(nullptr, 3), 0u);
    EXPECT_EQ(CharLowerBuffW(nullptr, 3), 0u);
}

TEST(CharUpper, GoesBackAndForthForEveryUnit) {
    for (unsigned value = 1; value <= 0xFFFF; ++value) {
        const auto single = reinterpret_cast<LPWSTR>(static_cast<UINT_PTR>(value));
        const LPWSTR capital = CharUpperW(single);
        const LPWSTR small = CharLowerW(single);
        ASSERT_TRUE(capital == single || small == single) << value;
        ASSERT_EQ(CharLowerW(capital), capital == single ? small : single) << value;
        ASSERT_EQ(CharUpperW(small), small == single ? capital : single) << value;
    }
}

TEST(CharUpper, LeavesLettersWithoutAPairOfTheirOwn) {
    for (const WCHAR unit : {u'\u00B5', u'\u00DF', u'\u0131', u'\u017F', u'\u03C2'}) {
        SCOPED_TRACE(static_cast<unsigned>(unit));
        const auto single = reinterpret_cast<LPWSTR>(static_cast<UINT_PTR>(unit));
        EXPECT_EQ(CharUpperW(single), single);
    }
}

TEST(CharNext, StepsByCharacter) {
    const char* text =
        "a库\x81\x5C"
        "b\x81";
    const char* at = text;
    for (const int offset : {1, 3, 5, 6, 7, 7}) {
        at = CharNextA(at);
        EXPECT_EQ(at - text, offset);
    }
    const WCHAR* wide = u"a";
    EXPECT_EQ(CharNextW(wide), wide + 1);
    EXPECT_EQ(CharNextW(wide + 1), wide + 1);
}

TEST(CharPrev, StepsBackByCharacter) {
    const char* text =
        "a库\x81\x5C"
        "b库存";
    const char* at = text + 10;
    for (const int offset : {8, 6, 5, 3, 1, 0, 0}) {
        at = CharPrevA(text, at);
        EXPECT_EQ(at - text, offset);
    }
    const WCHAR* wide = u"a";
    EXPECT_EQ(CharPrevW(wide, wide + 1), wide);
    EXPECT_EQ(CharPrevW(wide, wide), wide);
}

TEST(CharPrev, UndoesCharNextForEveryPairBehindEveryKindOfByte) {
    for (unsigned code = 0x0101; code <= 0xFFFF; ++code) {
        if ((code & 0xFF) == 0) continue;
        for (const char before : {'a', '\x80', '\xFF'}) {
            const char text[] = {before, static_cast<char>(code >> 8), static_cast<char>(code), 0};
            for (const char* at = text; *at != 0;) {
                const char* next = CharNextA(at);
                ASSERT_EQ(CharPrevA(text, next), at) << std::hex << code;
                at = next;
            }
        }
    }
}

TEST(IsChar, KnowsKindsOfCharacters) {
    static const struct {
        WCHAR unit;
        BOOL alpha, digit, upper, lower;
    } kRows[] = {
        {u'a', 1, 0, 0, 1}, {u'Z', 1, 0, 1, 0},  {u'0', 0, 1, 0, 0},  {u'_', 0, 0, 0, 0},
        {u' ', 0, 0, 0, 0}, {u'库', 1, 0, 0, 0}, {u'Ａ', 1, 0, 1, 0}, {u'１', 0, 1, 0, 0},
        {u'я', 1, 0, 0, 1}, {u'Ω', 1, 0, 1, 0},  {u'。', 0, 0, 0, 0}, {0, 0, 0, 0, 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(static_cast<unsigned>(row.unit));
        EXPECT_EQ(IsCharAlphaW(row.unit), row.alpha);
        EXPECT_EQ(IsCharAlphaNumericW(row.unit), row.alpha | row.digit);
        EXPECT_EQ(IsCharUpperW(row.unit), row.upper);
        EXPECT_EQ(IsCharLowerW(row.unit), row.lower);
        if (row.unit < 0x80) {
            const auto byte = static_cast<CHAR>(row.unit);
            EXPECT_EQ(IsCharAlphaA(byte), row.alpha);
            EXPECT_EQ(IsCharAlphaNumericA(byte), row.alpha | row.digit);
            EXPECT_EQ(IsCharUpperA(byte), row.upper);
            EXPECT_EQ(IsCharLowerA(byte), row.lower);
        }
    }
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte)
        EXPECT_FALSE(IsCharAlphaNumericA(static_cast<CHAR>(byte)));
}
