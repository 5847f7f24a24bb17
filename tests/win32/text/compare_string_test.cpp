#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "tkwin32/text.h"
#include "windows.h"

static_assert(sizeof("库") == 3);

namespace {

constexpr LCID kChinese = 0x0804;
constexpr LCID kEnglish = 0x0409;

void ExpectAscending(const std::vector<const char*>& texts, LCID locale, DWORD flags) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
        for (std::size_t j = 0; j < texts.size(); ++j) {
            const int expected = i < j ? CSTR_LESS_THAN : i > j ? CSTR_GREATER_THAN : CSTR_EQUAL;
            EXPECT_EQ(CompareStringA(locale, flags, texts[i], -1, texts[j], -1), expected) << i << ' ' << j;
        }
    }
}

}  // namespace

TEST(CompareString, PutsSurnamesInPinyinOrder) {
    // bai cai chen deng fan guo huang jiang li lin liu ma qian sun tang wang wu xu yang zhang zhao zheng zhou zhu
    ExpectAscending({"白", "蔡", "陈", "邓", "范", "郭", "黄", "江", "李", "林", "刘", "马",
                     "钱", "孙", "唐", "王", "吴", "徐", "杨", "张", "赵", "郑", "周", "朱"},
                    kChinese, 0);
}

TEST(CompareString, PutsOneCharacterOfEachInitialInPinyinOrder) {
    ExpectAscending({"啊", "芭", "擦", "搭", "蛾", "发", "噶", "哈", "击", "喀", "垃", "妈",
                     "拿", "哦", "啪", "期", "然", "撒", "塌", "挖", "昔", "压", "匝"},
                    kChinese, 0);
}

TEST(CompareString, LooksAtTheSecondCharacterWhenTheFirstIsTheSame) {
    ExpectAscending({"王", "王安", "王安石", "王小明", "王者"}, kChinese, 0);
    ExpectAscending({"北京", "上海", "深圳", "天津"}, kChinese, 0);
}

TEST(CompareString, KnowsNoPinyinOutsideChinese) {
    ExpectAscending({"张", "李", "王", "陈"}, kEnglish, 0);  // by code: 5F20, 674E, 738B, 9648
    ExpectAscending({"张", "李", "王", "陈"}, LOCALE_INVARIANT, 0);
}

TEST(CompareString, PutsSymbolsBeforeDigitsBeforeLettersBeforeIdeographs) {
    ExpectAscending(
        {" ", "!", "\"", "#", "$", "%", "&", "(", ")", "*", ",", ".", "/", ":", ";", "?", "@", "[",  "\\", "]", "^",
         "_", "`", "{",  "|", "}", "~", "+", "<", "=", ">", "0", "9", "a", "B", "z", "Ω", "я", "あ", "一", "座"},
        kChinese, 0);
}

TEST(CompareString, PutsSmallLettersBeforeCapitalsOfOtherwiseEqualTexts) {
    ExpectAscending({"a", "A", "b", "B"}, kChinese, 0);
    ExpectAscending({"abc", "abC", "aBc", "Abc", "ABC", "abd"}, kChinese, 0);
    ExpectAscending({"a库a", "a库A", "a库b"}, kChinese, 0);
    EXPECT_EQ(CompareStringA(kChinese, NORM_IGNORECASE, "a库A", -1, "A库a", -1), CSTR_EQUAL);
}

TEST(CompareString, PutsAccentsBeforeCase) {
    ExpectAscending({"e", "E", "é", "ez"}, kChinese, 0);
    EXPECT_EQ(CompareStringW(kChinese, 0, u"\u00C9", -1, u"e", -1), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringW(kChinese, NORM_IGNORENONSPACE, u"é", -1, u"e", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringW(kChinese, NORM_IGNORENONSPACE | NORM_IGNORECASE, u"\u00C9", -1, u"e", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringW(kChinese, 0, u"e\u0301", -1, u"\u00E9", -1), CSTR_EQUAL);
}

TEST(CompareString, TellsWidthAndKanaApartLast) {
    ExpectAscending({"a", "ａ", "A", "Ａ", "b"}, kChinese, 0);
    EXPECT_EQ(CompareStringA(kChinese, NORM_IGNOREWIDTH, "Ａ１", -1, "A1", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(kChinese, NORM_IGNOREWIDTH, "Ａ１", -1, "a1", -1), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringA(kChinese, 0, "か", -1, "カ", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(kChinese, NORM_IGNOREKANATYPE, "か", -1, "カ", -1), CSTR_EQUAL);
}

TEST(CompareString, PutsHyphensAndApostrophesAsideInWordSort) {
    ExpectAscending({"coop", "co'op", "co-op", "coops", "co-ops"}, kChinese, 0);
    ExpectAscending({"bill", "bills", "bill's"}, kChinese, 0);
    ExpectAscending({"ab", "-ab", "a-b", "ab-"}, kChinese, 0);
    ExpectAscending({"ab", "a-b", "a-b-", "ab-"}, kChinese, 0);
    const std::string forty(40, '-');
    EXPECT_EQ(CompareStringA(kChinese, 0, forty.c_str(), -1, (forty + "-").c_str(), -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(kChinese, 0, forty.c_str(), -1, forty.c_str(), -1), CSTR_EQUAL);
}

TEST(CompareString, TakesThemForSymbolsInStringSort) {
    ExpectAscending({"bill's", "bills"}, kChinese, SORT_STRINGSORT);
    ExpectAscending({"'", "-", " ", "!", "co-op", "coop"}, kChinese, SORT_STRINGSORT);
}

TEST(CompareString, IgnoresSymbolsWhenAsked) {
    EXPECT_EQ(CompareStringA(kChinese, NORM_IGNORESYMBOLS, "(010) 6-2.5", -1, "01062'5", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(kChinese, NORM_IGNORESYMBOLS, "库，存", -1, "库存", -1), CSTR_EQUAL);
}

TEST(CompareString, DoesNotCountControlCharacters) {
    EXPECT_EQ(CompareStringA(kChinese, 0,
                             "a\x01"
                             "b",
                             -1, "ab", -1),
              CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(kChinese, 0, "a\0b", 3, "ab", 2), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(kChinese, 0, "a\tb", -1, "ab", -1), CSTR_LESS_THAN);
}

TEST(CompareString, TakesLengths) {
    EXPECT_EQ(CompareStringA(kChinese, 0, "abc", 2, "abd", 2), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(kChinese, 0, "abc", 0, "", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(kChinese, 0, "", -1, "a", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringW(kChinese, 0, u"库存", 1, u"库", -1), CSTR_EQUAL);
    const std::string text(1000, 'x');
    EXPECT_EQ(CompareStringA(kChinese, 0, text.c_str(), -1, (text + "y").c_str(), -1), CSTR_LESS_THAN);
}

TEST(CompareString, RefusesBadArguments) {
    SetLastError(0);
    EXPECT_EQ(CompareStringA(kChinese, 0, nullptr, -1, "", -1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    SetLastError(0);
    EXPECT_EQ(CompareStringW(kChinese, 0, u"", -1, nullptr, -1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    SetLastError(0);
    EXPECT_EQ(CompareStringA(0x0411, 0, "a", -1, "b", -1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    SetLastError(0);
    EXPECT_EQ(CompareStringA(kChinese, 0x800000, "a", -1, "b", -1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);
}

TEST(CompareString, TellsAllCharactersOfTheCodePageApartAndPutsThemInOneOrder) {
    // A sort and one pass: neighbours in order both ways round.
    std::vector<std::u16string> characters;
    for (unsigned code = 0x8140; code <= 0xFEFE; ++code) {
        const std::string pair{static_cast<char>(code >> 8), static_cast<char>(code)};
        if (tk::text::IsGbkTrail(pair[1])) characters.push_back(tk::text::GbkToUtf16(pair));
    }
    ASSERT_EQ(characters.size(), 126u * 190u);
    const auto compare = [](const std::u16string& a, const std::u16string& b) {
        return CompareStringW(kChinese, 0, a.c_str(), -1, b.c_str(), -1);
    };
    std::ranges::sort(characters, [&](const auto& a, const auto& b) { return compare(a, b) == CSTR_LESS_THAN; });
    for (std::size_t i = 1; i < characters.size(); ++i) {
        ASSERT_EQ(compare(characters[i - 1], characters[i]), CSTR_LESS_THAN)
            << std::hex << static_cast<unsigned>(characters[i][0]);
        ASSERT_EQ(compare(characters[i], characters[i - 1]), CSTR_GREATER_THAN);
    }
}

TEST(Lstrcmp, AnswersMinusOneZeroOrOne) {
    EXPECT_EQ(lstrcmpA("李", "王"), -1);
    EXPECT_EQ(lstrcmpA("王", "李"), 1);
    EXPECT_EQ(lstrcmpA("王", "王"), 0);
    EXPECT_EQ(lstrcmpW(u"李", u"王"), -1);
    EXPECT_EQ(lstrcmpA("a", "A"), -1);
    EXPECT_EQ(lstrcmpA("A", "b"), -1);
    EXPECT_EQ(lstrcmpiA("a库B", "A库b"), 0);
    EXPECT_EQ(lstrcmpiW(u"Ω", u"ω"), 0);
    EXPECT_EQ(lstrcmpiA("a", "b"), -1);
}

TEST(Lstrcmp, PutsNullBelowEverything) {
    EXPECT_EQ(lstrcmpA(nullptr, nullptr), 0);
    EXPECT_EQ(lstrcmpA(nullptr, ""), -1);
    EXPECT_EQ(lstrcmpA("", nullptr), 1);
    EXPECT_EQ(lstrcmpiW(nullptr, u""), -1);
}

TEST(Lstrcmp, FollowsTheLocaleOfTheThread) {
    ASSERT_TRUE(SetThreadLocale(kEnglish));
    EXPECT_EQ(lstrcmpA("陈", "李"), 1);
    ASSERT_TRUE(SetThreadLocale(LOCALE_SYSTEM_DEFAULT));
    EXPECT_EQ(lstrcmpA("陈", "李"), -1);
}
