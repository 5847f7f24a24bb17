#include <gtest/gtest.h>
#include <tchar.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "windows.h"

static_assert(sizeof("库") == 3);

namespace {

int Sign(int value) {
    return (value > 0) - (value < 0);
}

}  // namespace

TEST(Stricmp, IgnoresTheCaseOfAsciiLettersOnly) {
    static const struct {
        const char* label;
        const char* first;
        const char* second;
        int sign;
    } kRows[] = {
        {"equal", "abc", "ABC", 0},
        {"shorter", "ab", "ABC", -1},
        {"different", "abd", "ABC", 1},
        {"empty", "", "", 0},
        {"small letters count", "_", "A", -1},
        {"full width stays apart", "ａ", "Ａ", 1},
        {"trail bytes stay apart", "\x81\x61", "\x81\x41", 1},
        {"after a character",
         "\x81\x41"
         "B",
         "\x81\x41"
         "b",
         0},
        {"high bytes are above", "a", "\x81\x40", -1},
        {"a lead byte at the end", "a\x81", "A\x81", 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Sign(_stricmp(row.first, row.second)), row.sign);
        EXPECT_EQ(Sign(_stricmp(row.second, row.first)), -row.sign);
    }
    EXPECT_EQ(_strnicmp("abX", "ABy", 2), 0);
    EXPECT_LT(_strnicmp("abX", "ABy", 3), 0);
    EXPECT_EQ(_strnicmp("a", "b", 0), 0);
    EXPECT_EQ(_strnicmp("\x81\x61", "\x81\x41", 1), 0);
}

TEST(Strupr, LeavesTrailBytes) {
    char text[] = "ab\x81\x61库c\x81";
    EXPECT_EQ(_strupr(text), text);
    EXPECT_STREQ(text, "AB\x81\x61库C\x81");
    EXPECT_STREQ(_strlwr(text), "ab\x81\x61库c\x81");
}

TEST(Strrev, TurnsCharactersAround) {
    char text[] = "a库b";
    EXPECT_STREQ(_strrev(text), "b库a");
    char empty[] = "";
    EXPECT_STREQ(_strrev(empty), "");
}

TEST(Strdup, Copies) {
    char* copy = _strdup("库");
    EXPECT_STREQ(copy, "库");
    std::free(copy);
    EXPECT_EQ(_strdup(nullptr), nullptr);
}

TEST(Itoa, WritesEveryRadix) {
    char buffer[66];
    EXPECT_STREQ(_itoa(0, buffer, 10), "0");
    EXPECT_STREQ(_itoa(-12, buffer, 10), "-12");
    EXPECT_STREQ(_itoa(INT_MIN, buffer, 10), "-2147483648");
    EXPECT_STREQ(_itoa(255, buffer, 16), "ff");
    EXPECT_STREQ(_itoa(-1, buffer, 16), "ffffffff");
    EXPECT_STREQ(_itoa(-1, buffer, 2), "11111111111111111111111111111111");
    EXPECT_STREQ(_itoa(35, buffer, 36), "z");
    EXPECT_STREQ(_ltoa(-5, buffer, 10), "-5");
    EXPECT_STREQ(_ultoa(4294967295u, buffer, 10), "4294967295");
    EXPECT_STREQ(_i64toa(LLONG_MIN, buffer, 10), "-9223372036854775808");
    EXPECT_STREQ(_i64toa(-1, buffer, 2), std::string(64, '1').c_str());
    EXPECT_STREQ(_ui64toa(ULLONG_MAX, buffer, 10), "18446744073709551615");
    errno = 0;
    EXPECT_STREQ(_itoa(1, buffer, 1), "");
    EXPECT_EQ(errno, EINVAL);
    EXPECT_STREQ(_itoa(1, buffer, 37), "");
}

TEST(Atoi64, ReadsTheLeadingInteger) {
    EXPECT_EQ(_atoi64("  -42x"), -42);
    EXPECT_EQ(_atoi64("x"), 0);
    EXPECT_EQ(_atoi64("99999999999999999999"), LLONG_MAX);
}

TEST(GenericText, IsMultibyteText) {
    TCHAR text[16];
    EXPECT_EQ(_tcsclen(_T("a库")), 2u);
    EXPECT_EQ(_tcslen(_T("a库")), 3u);
    EXPECT_STREQ(_tcsncpy(text, "a库b", 16), "a库b");
    EXPECT_STREQ(_tcsupr(text), "A库B");
    EXPECT_EQ(_tcsicmp("ａ", "Ａ"), 0);
    EXPECT_EQ(_tcscmp("\x81\x61", "\x81\x41"), 1);
    EXPECT_EQ(_tcschr("\x81\x5C\\", '\\') - "\x81\x5C\\", 2);
    EXPECT_EQ(_tcsrchr("a\x81\x5C", '\\'), nullptr);
    const char* text2 = "库a";
    EXPECT_EQ(_tcsinc(text2), text2 + 2);
    EXPECT_EQ(_tcsdec(text2, text2 + 2), text2);
    EXPECT_EQ(_tcsnextc(text2), 0xBFE2u);
    EXPECT_EQ(_totupper('a'), 'A');
    char list[] = "a,库";
    EXPECT_STREQ(_tcstok(list, ","), "a");
    EXPECT_STREQ(_tcstok(nullptr, ","), "库");
    EXPECT_EQ(_tcstok(nullptr, ","), nullptr);
}
