#include <gtest/gtest.h>
#include <mbstring.h>

#include <cstdlib>
#include <cstring>
#include <string>

static_assert(sizeof("库") == 3);

namespace {

const unsigned char* B(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}
unsigned char* B(char* text) {
    return reinterpret_cast<unsigned char*>(text);
}
const char* T(const unsigned char* text) {
    return reinterpret_cast<const char*>(text);
}

// 乗 is 81 5C: its second byte is a backslash. 亅 is 81 7C: a vertical bar.
constexpr char kBackslashTrail[] = "\x81\x5C";

// Where a search ended; -1 for null.
long Offset(const char* text, const unsigned char* found) {
    return found == nullptr ? -1 : found - B(text);
}

}  // namespace

TEST(Mbs, KnowsLeadAndTrailBytes) {
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        SCOPED_TRACE(byte);
        EXPECT_EQ(_ismbblead(byte) != 0, byte >= 0x81 && byte <= 0xFE);
        EXPECT_EQ(_ismbbtrail(byte) != 0, byte >= 0x40 && byte <= 0xFE && byte != 0x7F);
    }
    EXPECT_FALSE(_ismbblead(0x181));
    EXPECT_FALSE(_ismbbtrail(0x141));
}

TEST(Mbs, TellsWhatAByteIsByItsPlace) {
    const char* text =
        "a\x81\x81"
        "b\x81";
    const int leads[] = {0, -1, 0, 0, -1};
    const int trails[] = {0, 0, -1, 0, 0};
    const int types[] = {_MBC_SINGLE, _MBC_LEAD, _MBC_TRAIL, _MBC_SINGLE, _MBC_LEAD, _MBC_ILLEGAL, _MBC_ILLEGAL};
    for (std::size_t i = 0; i < 5; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(_ismbslead(B(text), B(text) + i), leads[i]);
        EXPECT_EQ(_ismbstrail(B(text), B(text) + i), trails[i]);
    }
    for (std::size_t i = 0; i < 7; ++i)
        EXPECT_EQ(_mbsbtype(B(text), i), types[i]) << i;
    EXPECT_EQ(_mbsbtype(B("\x81 "), 1), _MBC_ILLEGAL);
    EXPECT_EQ(_ismbslead(nullptr, nullptr), 0);
    EXPECT_EQ(_mbsbtype(nullptr, 0), _MBC_ILLEGAL);
}

TEST(Mbs, MapsAndClassifiesCharacters) {
    EXPECT_EQ(_mbctoupper('a'), 'A');
    EXPECT_EQ(_mbctoupper(0xA3E1), 0xA3C1u);
    EXPECT_EQ(_mbctolower(0xA3C1), 0xA3E1u);
    EXPECT_EQ(_mbctoupper(0xBFE2), 0xBFE2u);
    EXPECT_EQ(_mbctoupper(0x80), 0x80u);
    EXPECT_EQ(_mbctoupper(0x12345678), 0x12345678u);
    EXPECT_TRUE(_ismbcupper('A'));
    EXPECT_TRUE(_ismbcupper(0xA3C1));
    EXPECT_FALSE(_ismbcupper('a'));
    EXPECT_TRUE(_ismbclower(0xA6C1));
    EXPECT_TRUE(_ismbcalpha(0xBFE2));
    EXPECT_FALSE(_ismbcalpha('1'));
    EXPECT_TRUE(_ismbcalnum('1'));
    EXPECT_TRUE(_ismbcdigit('9'));
    EXPECT_FALSE(_ismbcdigit(0xA3B1));
    EXPECT_TRUE(_ismbcspace(' '));
    EXPECT_FALSE(_ismbcspace(0xA1A1));
}

TEST(Mbs, StepsByCharacter) {
    const char* text =
        "a库\x81\x5C"
        "b";
    EXPECT_EQ(_mbclen(B(text)), 1u);
    EXPECT_EQ(_mbclen(B(text) + 1), 2u);
    EXPECT_EQ(_mbclen(B("")), 1u);
    EXPECT_EQ(_mbsnextc(B("库")), 0xBFE2u);
    EXPECT_EQ(_mbsnextc(B("a")), 0x61u);
    EXPECT_EQ(_mbsnextc(B("")), 0u);
    EXPECT_EQ(Offset(text, _mbsinc(B(text) + 1)), 3);
    EXPECT_EQ(Offset(text, _mbsdec(B(text), B(text) + 6)), 5);
    EXPECT_EQ(Offset(text, _mbsdec(B(text), B(text) + 5)), 3);
    EXPECT_EQ(Offset(text, _mbsdec(B(text), B(text) + 3)), 1);
    EXPECT_EQ(_mbsdec(B(text), B(text)), nullptr);
    EXPECT_EQ(Offset(text, _mbsninc(B(text), 2)), 3);
    EXPECT_EQ(Offset(text, _mbsninc(B(text), 99)), 6);
    EXPECT_EQ(_mbsinc(nullptr), nullptr);
    EXPECT_EQ(_mbsninc(nullptr, 1), nullptr);
}

TEST(Mbs, CountsCharactersAndBytes) {
    EXPECT_EQ(_mbslen(B("a库\x81\x5C"
                        "b")),
              4u);
    EXPECT_EQ(_mbslen(B("")), 0u);
    EXPECT_EQ(_mbslen(B("a\x81")), 1u);
    EXPECT_EQ(_mbsnccnt(B("a库存"), 4), 2u);
    EXPECT_EQ(_mbsnccnt(B("a库存"), 5), 3u);
    EXPECT_EQ(_mbsnccnt(B("a"), 9), 1u);
    EXPECT_EQ(_mbsnbcnt(B("a库存"), 2), 3u);
    EXPECT_EQ(_mbsnbcnt(B("a库存"), 9), 5u);
    EXPECT_EQ(_mbslen(nullptr), 0u);
}

TEST(Mbscmp, ComparesCodes) {
    static const struct {
        const char* label;
        const char* first;
        const char* second;
        int exact;
        int ignoringCase;
    } kRows[] = {
        {"equal", "a库", "a库", 0, 0},
        {"empty", "", "", 0, 0},
        {"shorter", "a", "ab", -1, -1},
        {"by code, not by pinyin", "一", "啊", 1, 1},
        {"capital before small", "A", "a", -1, 0},
        {"full width", "Ａ", "ａ", -1, 0},
        {"Greek", "Ω", "ω", -1, 0},
        {"Cyrillic", "Я", "я", -1, 0},
        {"trail bytes are no letters", "\x81\x41", "\x81\x61", -1, -1},
        {"ASCII is below double bytes", "z", "\x81\x40", -1, -1},
        {"a lead byte alone ends the text", "a\x81", "a", 0, 0},
        {"underscore and letters", "_", "A", 1, -1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(_mbscmp(B(row.first), B(row.second)), row.exact);
        EXPECT_EQ(_mbscmp(B(row.second), B(row.first)), -row.exact);
        EXPECT_EQ(_mbsicmp(B(row.first), B(row.second)), row.ignoringCase);
        EXPECT_EQ(_mbsicmp(B(row.second), B(row.first)), -row.ignoringCase);
    }
}

TEST(Mbscmp, StopsAfterCharactersOrBytes) {
    EXPECT_EQ(_mbsncmp(B("库存a"), B("库存b"), 2), 0);
    EXPECT_EQ(_mbsncmp(B("库存a"), B("库存b"), 3), -1);
    EXPECT_EQ(_mbsnbcmp(B("库存"), B("库房"), 2), 0);
    EXPECT_EQ(_mbsnbcmp(B("库存"), B("库房"), 3), 0);  // half a character does not count
    EXPECT_EQ(_mbsnbcmp(B("库存"), B("库房"), 4), -1);
    EXPECT_EQ(_mbsnicmp(B("库ａb"), B("库Ａc"), 2), 0);
    EXPECT_EQ(_mbsnbicmp(B("DSN=x"), B("dsn"), 3), 0);
    EXPECT_EQ(_mbsnbicmp(B("x"), B("y"), 0), 0);
}

TEST(Mbscmp, SaysSoWhenATextIsMissing) {
    EXPECT_EQ(_mbscmp(nullptr, B("")), _NLSCMPERROR);
    EXPECT_EQ(_mbsicmp(B(""), nullptr), _NLSCMPERROR);
    EXPECT_EQ(_mbsncmp(nullptr, B(""), 1), _NLSCMPERROR);
    EXPECT_EQ(_mbscoll(nullptr, B("")), _NLSCMPERROR);
}

TEST(Mbscoll, FollowsTheOrderOfTheSystem) {
    EXPECT_EQ(_mbscoll(B("啊"), B("一")), -1);
    EXPECT_EQ(_mbscoll(B("a"), B("A")), -1);
    EXPECT_EQ(_mbsicoll(B("a库"), B("A库")), 0);
    EXPECT_EQ(_mbscoll(B("co-op"), B("coop")), -1);
}

TEST(Mbschr, IsNotTakenInByTrailBytes) {
    const std::string text = std::string("C:") + kBackslashTrail + "\\" + kBackslashTrail;
    EXPECT_EQ(Offset(text.c_str(), _mbschr(B(text.c_str()), '\\')), 4);
    EXPECT_EQ(Offset(text.c_str(), _mbsrchr(B(text.c_str()), '\\')), 4);
    EXPECT_EQ(Offset(text.c_str(), _mbschr(B(text.c_str()), 0x815C)), 2);
    EXPECT_EQ(Offset(text.c_str(), _mbsrchr(B(text.c_str()), 0x815C)), 5);
    EXPECT_EQ(Offset(text.c_str(), _mbschr(B(text.c_str()), 0)), 7);
    EXPECT_EQ(Offset(text.c_str(), _mbsrchr(B(text.c_str()), 0)), 7);
    EXPECT_EQ(Offset(text.c_str(), _mbschr(B(text.c_str()), 'x')), -1);
    EXPECT_EQ(_mbschr(nullptr, 'x'), nullptr);
    EXPECT_EQ(_mbsrchr(nullptr, 'x'), nullptr);
}

TEST(Mbsstr, MatchesWholeCharacters) {
    // 库存 is BF E2 B4 E6: the inner bytes make 獯, which is not in the text.
    EXPECT_EQ(Offset("库存", _mbsstr(B("库存"), B("存"))), 2);
    EXPECT_EQ(Offset("库存", _mbsstr(B("库存"), B("\xE2\xB4"))), -1);
    EXPECT_EQ(Offset("\x81\x5C|\\", _mbsstr(B("\x81\x5C|\\"), B("\\"))), 3);
    EXPECT_EQ(Offset("abc", _mbsstr(B("abc"), B(""))), 0);
    EXPECT_EQ(Offset("", _mbsstr(B(""), B(""))), 0);
    EXPECT_EQ(Offset("ab", _mbsstr(B("ab"), B("abc"))), -1);
    EXPECT_EQ(Offset("aab", _mbsstr(B("aab"), B("ab"))), 1);
    EXPECT_EQ(_mbsstr(nullptr, B("a")), nullptr);
}

TEST(Mbsspn, KnowsSetsOfCharacters) {
    EXPECT_EQ(_mbsspn(B("库存a库"), B("存库")), 4u);
    EXPECT_EQ(_mbsspn(B("库"), B("\xE2")), 0u);
    EXPECT_EQ(_mbsspn(B("aaa"), B("a")), 3u);
    EXPECT_EQ(_mbsspn(B("a"), B("")), 0u);
    EXPECT_EQ(_mbscspn(B("\x81\x7C|"), B("|")), 2u);
    EXPECT_EQ(_mbscspn(B("库存"), B("a")), 4u);
    EXPECT_EQ(Offset("\x81\x7C|", _mbspbrk(B("\x81\x7C|"), B("|,"))), 2);
    EXPECT_EQ(_mbspbrk(B("库"), B("\xBF\xE3")), nullptr);
    EXPECT_EQ(Offset("  a", _mbsspnp(B("  a"), B(" "))), 2);
    EXPECT_EQ(_mbsspnp(B("  "), B(" ")), nullptr);
    EXPECT_EQ(_mbsspn(nullptr, B("a")), 0u);
    EXPECT_EQ(_mbspbrk(B("a"), nullptr), nullptr);
}

TEST(Mbstok, TakesWholeSeparators) {
    char text[] = "，库存，\x81\x7C|a，，";
    EXPECT_STREQ(T(_mbstok(B(text), B("，|"))), "库存");
    EXPECT_STREQ(T(_mbstok(nullptr, B("，|"))), "\x81\x7C");
    EXPECT_STREQ(T(_mbstok(nullptr, B("，|"))), "a");
    EXPECT_EQ(_mbstok(nullptr, B("，|")), nullptr);
    EXPECT_EQ(_mbstok(nullptr, B("，|")), nullptr);
}

TEST(Mbsnbcpy, CutsBetweenCharactersAndFillsWithZeros) {
    static const struct {
        const char* label;
        std::size_t bytes;
        std::string buffer;  // of 8, filled with x before
    } kRows[] = {
        {"nothing", 0, "xxxxxxxx"},
        {"one", 1, "axxxxxxx"},
        {"half a character", 2, std::string("a\0xxxxxx", 8)},
        {"a character", 3, "a库xxxxx"},
        {"all, without a terminator", 5, "a库存xxx"},
        {"with it", 7, std::string("a库存\0\0x", 8)},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        char buffer[9] = "xxxxxxxx";
        EXPECT_EQ(_mbsnbcpy(B(buffer), B("a库存"), row.bytes), B(buffer));
        EXPECT_EQ(std::string(buffer, 8), row.buffer);
    }
}

TEST(Mbsncpy, CountsCharacters) {
    char buffer[9] = "xxxxxxxx";
    _mbsncpy(B(buffer), B("a库存"), 2);
    EXPECT_EQ(std::string(buffer, 8), "a库xxxxx");
    _mbsncpy(B(buffer), B("库"), 3);
    EXPECT_EQ(std::string(buffer, 8), std::string("库\0\0xxxx", 8));
}

TEST(Mbscat, AppendsWholeCharacters) {
    char text[16] = "a";
    EXPECT_STREQ(T(_mbscat(B(text), B("库"))), "a库");
    EXPECT_STREQ(T(_mbsnbcat(B(text), B("存b"), 1)), "a库");
    EXPECT_STREQ(T(_mbsnbcat(B(text), B("存b"), 2)), "a库存");
    EXPECT_STREQ(T(_mbsncat(B(text), B("表b"), 1)), "a库存表");
    EXPECT_STREQ(T(_mbsncat(B(text), B("b"), 9)), "a库存表b");
    char cut[8] = "a\x81";
    EXPECT_STREQ(T(_mbscat(B(cut), B("b"))), "ab");
    EXPECT_EQ(_mbscat(nullptr, B("a")), nullptr);
    EXPECT_EQ(_mbsnbcat(B(cut), nullptr, 1), nullptr);
}

TEST(Mbscpy, Copies) {
    char text[8];
    EXPECT_STREQ(T(_mbscpy(B(text), B("库"))), "库");
    EXPECT_EQ(_mbscpy(B(text), nullptr), nullptr);
    EXPECT_EQ(_mbsncpy(nullptr, B("a"), 1), nullptr);
    EXPECT_EQ(_mbsnbcpy(B(text), nullptr, 1), nullptr);
    unsigned char* copy = _mbsdup(B("库"));
    EXPECT_STREQ(T(copy), "库");
    std::free(copy);
    EXPECT_EQ(_mbsdup(nullptr), nullptr);
}

TEST(Mbsupr, MapsInPlace) {
    char text[] = "aｂω\x81\x61库z";
    EXPECT_STREQ(T(_mbsupr(B(text))), "AＢΩ\x81\x61库Z");
    EXPECT_STREQ(T(_mbslwr(B(text))), "aｂω\x81\x61库z");
    EXPECT_EQ(_mbsupr(nullptr), nullptr);
}

TEST(Mbsrev, TurnsCharactersAround) {
    static const struct {
        const char* text;
        const char* reversed;
    } kRows[] = {
        {"", ""}, {"a", "a"}, {"库", "库"}, {"a库存b", "b存库a"}, {"\x81\x5C|", "|\x81\x5C"}, {"a库\x81", "库a\x81"}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        std::string text = row.text;
        EXPECT_STREQ(T(_mbsrev(B(text.data()))), row.reversed);
    }
    EXPECT_EQ(_mbsrev(nullptr), nullptr);
}
