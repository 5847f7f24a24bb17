#include <gtest/gtest.h>

#include <string>

#include "windows.h"

static_assert(sizeof("库") == 3);

TEST(Lstrlen, CountsUnitsAndTakesNull) {
    EXPECT_EQ(lstrlenA("a库"), 3);
    EXPECT_EQ(lstrlenW(u"a库"), 2);
    EXPECT_EQ(lstrlenA(""), 0);
    EXPECT_EQ(lstrlenA(nullptr), 0);
    EXPECT_EQ(lstrlenW(nullptr), 0);
}

TEST(Lstrcpy, CopiesTheTextAndItsTerminator) {
    char text[8] = "xxxxxxx";
    EXPECT_EQ(lstrcpyA(text, "a库"), text);
    EXPECT_STREQ(text, "a库");
    EXPECT_EQ(text[4], 'x');
    WCHAR wide[8] = u"xxxxxxx";
    EXPECT_EQ(lstrcpyW(wide, u"a库"), wide);
    EXPECT_EQ(std::u16string(wide), u"a库");
}

TEST(Lstrcpy, DoesNothingWithNull) {
    char text[4] = "abc";
    EXPECT_EQ(lstrcpyA(text, nullptr), nullptr);
    EXPECT_EQ(lstrcpyA(nullptr, "a"), nullptr);
    EXPECT_EQ(lstrcatA(text, nullptr), nullptr);
    EXPECT_EQ(lstrcpynA(text, nullptr, 4), nullptr);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(lstrcpyW(nullptr, u"a"), nullptr);
    EXPECT_EQ(lstrcatW(nullptr, u"a"), nullptr);
    EXPECT_EQ(lstrcpynW(nullptr, u"a", 1), nullptr);
}

TEST(Lstrcat, Appends) {
    char text[8] = "a";
    EXPECT_EQ(lstrcatA(text, "库"), text);
    EXPECT_STREQ(lstrcatA(text, ""), "a库");
    WCHAR wide[8] = u"a";
    lstrcatW(wide, u"库");
    EXPECT_EQ(std::u16string(wide), u"a库");
}

TEST(Lstrcpyn, CutsBetweenCharacters) {
    static const struct {
        const char* label;
        int size;
        const char* text;
    } kRows[] = {
        {"all of it", 8, "a库存"},       {"exactly", 6, "a库存"},  {"in a character", 5, "a库"},
        {"after a character", 4, "a库"}, {"in the first", 3, "a"}, {"one byte", 2, "a"},
        {"the terminator alone", 1, ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        char text[8] = "xxxxxxx";
        EXPECT_EQ(lstrcpynA(text, "a库存", row.size), text);
        EXPECT_STREQ(text, row.text);
    }
    char text[4] = "xyz";
    EXPECT_EQ(lstrcpynA(text, "a", 0), text);
    EXPECT_EQ(lstrcpynA(text, "a", -1), text);
    EXPECT_STREQ(text, "xyz");
    WCHAR wide[8];
    lstrcpynW(wide, u"a库存", 3);
    EXPECT_EQ(std::u16string(wide), u"a库");
}
