#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "windows.h"

static_assert(sizeof("库") == 3);

namespace {

constexpr UINT kPages[] = {CP_ACP, CP_OEMCP, CP_THREAD_ACP, 936};

// Stands in for what must not have been touched.
constexpr WCHAR kUntouched = 0xEEEE;

}  // namespace

TEST(MultiByteToWideChar, KnowsTheSystemPageUnderAllItsNames) {
    for (const UINT page : kPages) {
        SCOPED_TRACE(page);
        WCHAR wide[8] = {};
        EXPECT_EQ(MultiByteToWideChar(page, 0, "a库存", -1, wide, 8), 4);
        EXPECT_EQ(std::u16string(wide), u"a库存");
    }
}

TEST(MultiByteToWideChar, CountsTheTerminatorOnlyWhenItLooksForIt) {
    WCHAR wide[8];
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "库", -1, wide, 8), 2);
    EXPECT_EQ(wide[1], 0);
    wide[1] = kUntouched;
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "库", 2, wide, 8), 1);
    EXPECT_EQ(wide[1], kUntouched);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "", -1, wide, 8), 1);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "a\0b", 3, wide, 8), 3);
    EXPECT_EQ(std::u16string(wide, 3), std::u16string(u"a\0b", 3));
}

TEST(MultiByteToWideChar, TellsTheSizeWithoutABuffer) {
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "a库存", -1, nullptr, 0), 4);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "a库存", 5, nullptr, 0), 3);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "\xF0\xA0\x80\x80", 4, nullptr, 0), 2);
    const std::string longText(5001, 'x');
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, longText.data(), 5001, nullptr, 0), 5001);
}

TEST(MultiByteToWideChar, StoresWholeCharactersWhenTheBufferIsTooSmall) {
    WCHAR wide[4] = {kUntouched, kUntouched, kUntouched, kUntouched};
    SetLastError(0);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "库存表", -1, wide, 2), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(std::u16string(wide, 2), u"库存");
    EXPECT_EQ(wide[2], kUntouched);

    wide[0] = kUntouched;
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "\xF0\xA0\x80\x80", 4, wide, 1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(wide[0], kUntouched);  // no half of a pair
}

TEST(MultiByteToWideChar, RefusesBadArguments) {
    WCHAR wide[8];
    static const struct {
        const char* label;
        UINT page;
        DWORD flags;
        const char* text;
        int bytes;
        bool buffer;
        int units;
        DWORD error;
    } kRows[] = {
        {"no text", 936, 0, nullptr, -1, true, 8, ERROR_INVALID_PARAMETER},
        {"no length", 936, 0, "a", 0, true, 8, ERROR_INVALID_PARAMETER},
        {"negative room", 936, 0, "a", 1, true, -1, ERROR_INVALID_PARAMETER},
        {"room without a buffer", 936, 0, "a", 1, false, 8, ERROR_INVALID_PARAMETER},
        {"unknown page", 1252, 0, "a", 1, true, 8, ERROR_INVALID_PARAMETER},
        {"unknown flag", 936, 0x100, "a", 1, true, 8, ERROR_INVALID_FLAGS},
        {"a form that UTF-8 does not have", CP_UTF8, MB_PRECOMPOSED, "a", 1, true, 8, ERROR_INVALID_FLAGS},
        {"the page before the flags", 1252, 0x100, "a", 1, true, 8, ERROR_INVALID_PARAMETER},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetLastError(0);
        EXPECT_EQ(MultiByteToWideChar(row.page, row.flags, row.text, row.bytes, row.buffer ? wide : nullptr, row.units),
                  0);
        EXPECT_EQ(GetLastError(), row.error);
    }
    SetLastError(0);
    const void* same = wide;
    EXPECT_EQ(MultiByteToWideChar(936, 0, static_cast<const char*>(same), 2, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(MultiByteToWideChar, GivesTheDefaultCharacterForHalfCharacters) {
    static const struct {
        const char* label;
        std::string text;
        std::u16string wide;
    } kRows[] = {
        {"lead byte at the end", "a\x81", u"a?"},
        {"lead byte before a zero", std::string("\x81\0b", 3), std::u16string(u"?\0b", 3)},
        {"a quote is not swallowed", "\xD6'", u"?'"},
        {"a digit is no trail byte",
         "\xD6"
         "0",
         u"?0"},
        {"7F is no trail byte", "\x81\x7F", u"?\x7F"},
        {"FF is no trail byte", "\x81\xFF", u"?\xF8F5"},
        {"80 is a trail byte", "\x81\x80", u"亐"},
        {"after a good character", "\xD6\xD0\xD6", u"中?"},
        {"before a good character", "\xFE\xFF\xD6\xD0", u"?\xF8F5中"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        WCHAR wide[8];
        const int length = static_cast<int>(row.text.size());
        const int units = MultiByteToWideChar(936, 0, row.text.data(), length, wide, 8);
        EXPECT_EQ(std::u16string(wide, static_cast<std::size_t>(units)), row.wide);
    }
    SetLastError(0);
    WCHAR wide[8];
    EXPECT_EQ(MultiByteToWideChar(936, MB_ERR_INVALID_CHARS, "a\x81", 2, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
    EXPECT_EQ(MultiByteToWideChar(936, MB_ERR_INVALID_CHARS, "a\x81", 2, nullptr, 0), 0);
    EXPECT_EQ(MultiByteToWideChar(936, MB_ERR_INVALID_CHARS | MB_PRECOMPOSED, "a?", 2, wide, 8), 2);
}

TEST(WideCharToMultiByte, KnowsTheSystemPageUnderAllItsNames) {
    for (const UINT page : kPages) {
        SCOPED_TRACE(page);
        char text[8] = {};
        EXPECT_EQ(WideCharToMultiByte(page, 0, u"a库存", -1, text, 8, nullptr, nullptr), 6);
        EXPECT_STREQ(text, "a库存");
    }
}

TEST(WideCharToMultiByte, TellsTheSizeWithoutABuffer) {
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"a库€", -1, nullptr, 0, nullptr, nullptr), 5);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a库€", -1, nullptr, 0, nullptr, nullptr), 8);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"\U00020000", 2, nullptr, 0, nullptr, nullptr), 4);
    const std::u16string longText(5001, u'库');
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, longText.data(), 5001, nullptr, 0, nullptr, nullptr), 10002);
}

TEST(WideCharToMultiByte, NeverStoresHalfACharacter) {
    char text[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    SetLastError(0);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"库存", 2, text, 3, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(std::string(text, 2), "库");
    EXPECT_EQ(text[2], 3);

    SetLastError(0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a库", 2, text, 3, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(text[0], 'a');
}

TEST(WideCharToMultiByte, TellsWhetherTheDefaultCharacterWasNeeded) {
    static const struct {
        const char* label;
        std::u16string wide;
        const char* instead;
        std::string text;
        BOOL used;
    } kRows[] = {
        {"not needed", u"库a?", nullptr, "库a?", FALSE},
        {"the platform's own", u"a\u3400b", nullptr, "a?b", TRUE},
        {"another one", u"a\u3400b", "*", "a*b", TRUE},
        {"a double-byte one", u"a\u3400b", "□", "a□b", TRUE},
        {"only its first character", u"\u3400", "*+", "*", TRUE},
        {"a lead byte alone", u"\u3400", "\x81", "\x81", TRUE},
        {"an empty one is a zero", u"\u3400", "", std::string(1, '\0'), TRUE},
        {"one for each unit", u"\U00020000", nullptr, "??", TRUE},
        {"no look-alikes", u"\x00E2\x00A9\x2022", nullptr, "???", TRUE},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        char text[16];
        BOOL used = 7;
        const int length = static_cast<int>(row.wide.size());
        int bytes = WideCharToMultiByte(936, 0, row.wide.data(), length, text, 16, row.instead, &used);
        EXPECT_EQ(std::string(text, static_cast<std::size_t>(bytes)), row.text);
        EXPECT_EQ(used, row.used);
        bytes = WideCharToMultiByte(936, WC_NO_BEST_FIT_CHARS, row.wide.data(), length, nullptr, 0, row.instead, &used);
        EXPECT_EQ(bytes, static_cast<int>(row.text.size()));
        EXPECT_EQ(used, row.used);
    }
}

TEST(WideCharToMultiByte, DoesNotStoreHalfADefaultCharacter) {
    char text[4] = {1, 2, 3, 4};
    SetLastError(0);
    EXPECT_EQ(WideCharToMultiByte(936, 0, u"a\u3400", 2, text, 2, "□", nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(text[1], 2);
}

TEST(WideCharToMultiByte, RefusesBadArguments) {
    char text[8];
    BOOL used;
    static const struct {
        const char* label;
        UINT page;
        DWORD flags;
        const WCHAR* wide;
        int units;
        bool buffer;
        int bytes;
        const char* instead;
        bool wantsUsed;
        DWORD error;
    } kRows[] = {
        {"no text", 936, 0, nullptr, -1, true, 8, nullptr, false, ERROR_INVALID_PARAMETER},
        {"no length", 936, 0, u"a", 0, true, 8, nullptr, false, ERROR_INVALID_PARAMETER},
        {"negative room", 936, 0, u"a", 1, true, -8, nullptr, false, ERROR_INVALID_PARAMETER},
        {"room without a buffer", 936, 0, u"a", 1, false, 8, nullptr, false, ERROR_INVALID_PARAMETER},
        {"unknown page", 950, 0, u"a", 1, true, 8, nullptr, false, ERROR_INVALID_PARAMETER},
        {"unknown flag", 936, 0x8000, u"a", 1, true, 8, nullptr, false, ERROR_INVALID_FLAGS},
        {"strictness is for UTF-8", 936, WC_ERR_INVALID_CHARS, u"a", 1, true, 8, nullptr, false, ERROR_INVALID_FLAGS},
        {"look-alikes are not for UTF-8", CP_UTF8, WC_NO_BEST_FIT_CHARS, u"a", 1, true, 8, nullptr, false,
         ERROR_INVALID_FLAGS},
        {"UTF-8 has no default character", CP_UTF8, 0, u"a", 1, true, 8, "?", false, ERROR_INVALID_PARAMETER},
        {"nor a use of it", CP_UTF8, 0, u"a", 1, true, 8, nullptr, true, ERROR_INVALID_PARAMETER},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetLastError(0);
        EXPECT_EQ(WideCharToMultiByte(row.page, row.flags, row.wide, row.units, row.buffer ? text : nullptr, row.bytes,
                                      row.instead, row.wantsUsed ? &used : nullptr),
                  0);
        EXPECT_EQ(GetLastError(), row.error);
    }
}

TEST(WideCharToMultiByte, RefusesLoneSurrogatesOnlyWhenAsked) {
    char text[8];
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"\xD840", 1, text, 8, nullptr, nullptr), 3);
    SetLastError(0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, u"\xD840", 1, text, 8, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, u"\U00020000", 2, text, 8, nullptr, nullptr), 4);
}

TEST(CodePages, TellWhatTheyAre) {
    EXPECT_EQ(GetACP(), 936u);
    EXPECT_EQ(GetOEMCP(), 936u);
    EXPECT_TRUE(IsValidCodePage(936));
    EXPECT_TRUE(IsValidCodePage(65001));
    EXPECT_FALSE(IsValidCodePage(CP_ACP));
    EXPECT_FALSE(IsValidCodePage(1252));

    CPINFO info;
    ASSERT_TRUE(GetCPInfo(CP_ACP, &info));
    EXPECT_EQ(info.MaxCharSize, 2u);
    EXPECT_EQ(info.DefaultChar[0], '?');
    EXPECT_EQ(info.DefaultChar[1], 0);
    EXPECT_EQ(info.LeadByte[0], 0x81);
    EXPECT_EQ(info.LeadByte[1], 0xFE);
    EXPECT_EQ(info.LeadByte[2], 0);
    ASSERT_TRUE(GetCPInfo(CP_UTF8, &info));
    EXPECT_EQ(info.MaxCharSize, 4u);
    EXPECT_EQ(info.LeadByte[0], 0);

    SetLastError(0);
    EXPECT_FALSE(GetCPInfo(1252, &info));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    SetLastError(0);
    EXPECT_FALSE(GetCPInfo(936, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(CodePages, FindTheOneOtherCharacterWhereverItStandsAmongAscii) {
    constexpr std::size_t kLongest = 50;
    constexpr struct {
        UINT page;
        std::string_view other;
    } kRows[] = {{936, "\xBF\xE2"}, {CP_UTF8, "\xE5\xBA\x93"}};
    const std::string letters(kLongest, 'q');
    for (const auto& row : kRows) {
        for (std::size_t length = 1; length <= kLongest; ++length) {
            for (std::size_t place = 0; place <= length; ++place) {
                SCOPED_TRACE(std::to_string(row.page) + ": " + std::to_string(place) + " of " + std::to_string(length));
                std::string narrow = letters.substr(0, length);
                std::u16string wide(length, u'q');
                if (place < length) {  // otherwise there is none
                    narrow.replace(place, 1, row.other);
                    wide[place] = u'库';
                }
                // On the heap and of just the size: the address sanitizer sees what lies behind.
                std::vector<WCHAR> made(wide.size());
                ASSERT_EQ(
                    MultiByteToWideChar(row.page, 0, std::vector<char>(narrow.begin(), narrow.end()).data(),
                                        static_cast<int>(narrow.size()), made.data(), static_cast<int>(made.size())),
                    static_cast<int>(wide.size()));
                ASSERT_EQ(std::u16string(made.begin(), made.end()), wide);
                std::vector<char> back(narrow.size());
                ASSERT_EQ(WideCharToMultiByte(row.page, 0, made.data(), static_cast<int>(made.size()), back.data(),
                                              static_cast<int>(back.size()), nullptr, nullptr),
                          static_cast<int>(narrow.size()));
                ASSERT_EQ(std::string(back.begin(), back.end()), narrow);
            }
        }
    }
}

TEST(IsDBCSLeadByte, IsTrueFrom81ToFE) {
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        SCOPED_TRACE(byte);
        const bool lead = byte >= 0x81 && byte <= 0xFE;
        EXPECT_EQ(IsDBCSLeadByte(static_cast<BYTE>(byte)) != FALSE, lead);
        EXPECT_EQ(IsDBCSLeadByteEx(936, static_cast<BYTE>(byte)) != FALSE, lead);
        EXPECT_FALSE(IsDBCSLeadByteEx(CP_UTF8, static_cast<BYTE>(byte)));
    }
    SetLastError(0);
    EXPECT_FALSE(IsDBCSLeadByteEx(1252, 0x81));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}
