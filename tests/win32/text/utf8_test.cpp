#include <gtest/gtest.h>

#include <string>

#include "tkwin32/text.h"
#include "windows.h"

namespace {

using namespace std::string_literals;

const struct {
    const char* label;
    std::string bytes;
    std::u16string units;
    bool wellFormed;
} kRows[] = {
    {"empty", "", u"", true},
    {"a zero", "a\0b"s, u"a\0b"s, true},
    {"last of one byte", "\x7F", u"\x7F", true},
    {"first of two bytes", "\xC2\x80", u"\x80", true},
    {"last of two bytes", "\xDF\xBF", u"\x7FF", true},
    {"first of three bytes", "\xE0\xA0\x80", u"\x800", true},
    {"before the surrogates", "\xED\x9F\xBF", u"\xD7FF", true},
    {"after the surrogates", "\xEE\x80\x80", u"\xE000", true},
    {"last of three bytes", "\xEF\xBF\xBF", u"\xFFFF", true},
    {"the replacement character itself", "\xEF\xBF\xBD", u"\xFFFD", true},
    {"byte order mark",
     "\xEF\xBB\xBF"
     "a",
     u"\xFEFF"
     u"a",
     true},
    {"first of four bytes", "\xF0\x90\x80\x80", u"\xD800\xDC00", true},
    {"ideograph of four bytes", "\xF0\xA0\x80\x80", u"\xD840\xDC00", true},
    {"last of four bytes", "\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF", true},

    {"continuation alone", "\x80", u"\xFFFD", false},
    {"two continuations", "\x80\xBF", u"\xFFFD\xFFFD", false},
    {"C0 is never a lead byte", "\xC0\xAF", u"\xFFFD\xFFFD", false},
    {"C1 is never a lead byte", "\xC1\xBF", u"\xFFFD\xFFFD", false},
    {"F5 is never a lead byte", "\xF5\x80\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD", false},
    {"FE and FF", "\xFE\xFF", u"\xFFFD\xFFFD", false},
    {"three bytes, too long a form of slash", "\xE0\x80\xAF", u"\xFFFD\xFFFD\xFFFD", false},
    {"three bytes, too long a form of a GBK sign", "\xE0\x82\xB7", u"\xFFFD\xFFFD\xFFFD", false},
    {"three bytes, too long by one", "\xE0\x9F\xBF", u"\xFFFD\xFFFD\xFFFD", false},
    {"four bytes, too long a form of slash", "\xF0\x80\x80\xAF", u"\xFFFD\xFFFD\xFFFD\xFFFD", false},
    {"four bytes, too long by one", "\xF0\x8F\xBF\xBF", u"\xFFFD\xFFFD\xFFFD\xFFFD", false},
    {"first surrogate", "\xED\xA0\x80", u"\xFFFD\xFFFD\xFFFD", false},
    {"last surrogate", "\xED\xBF\xBF", u"\xFFFD\xFFFD\xFFFD", false},
    {"a pair of surrogates, three bytes each", "\xED\xA1\x80\xED\xB0\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD",
     false},
    {"above the last character", "\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD", false},
    {"two bytes cut off", "\xC3", u"\xFFFD", false},
    {"three bytes cut off after one", "\xE4", u"\xFFFD", false},
    {"three bytes cut off after two", "\xE4\xB8", u"\xFFFD", false},
    {"four bytes cut off after three", "\xF0\xA0\x80", u"\xFFFD", false},
    {"cut off before ASCII",
     "\xE4\xB8"
     "a",
     u"\xFFFD"
     u"a",
     false},
    {"cut off before a quote", "\xE4'", u"\xFFFD'", false},
    {"cut off before a character", "\xE4\xB8\xE4\xB8\xAD", u"\xFFFD\x4E2D", false},
    {"cut off before a zero", "\xF0\xA0\x80\0"s, u"\xFFFD\0"s, false},
    {"good, bad, good", "\xE4\xB8\xAD\xFF\xE6\x96\x87", u"\x4E2D\xFFFD\x6587", false},
};

}  // namespace

TEST(Utf8ToUtf16, ReplacesEachIllFormedSequenceAndSwallowsNothing) {
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(tk::text::Utf8ToUtf16(row.bytes), row.units);
        EXPECT_EQ(tk::text::Utf8ToUtf16Length(row.bytes), row.units.size());
        char16_t units[16];
        const tk::text::Converted done = tk::text::Utf8ToUtf16(row.bytes, units, 16);
        EXPECT_EQ(done.read, row.bytes.size());
        EXPECT_EQ(done.replaced, !row.wellFormed);
    }
}

TEST(Utf8ToUtf16, DoesSoBehindAndBeforeLongText) {
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        for (std::size_t length = 0; length < 40; ++length) {
            const std::string bytes = std::string(length, 'x') + row.bytes + std::string(length, 'y');
            const std::u16string units = std::u16string(length, u'x') + row.units + std::u16string(length, u'y');
            ASSERT_EQ(tk::text::Utf8ToUtf16(bytes), units) << length;
            ASSERT_EQ(tk::text::Utf8ToGbk(bytes), tk::text::Utf16ToGbk(units)) << length;
        }
    }
}

TEST(Utf16ToUtf8, WritesBackWhatWasWellFormed) {
    for (const auto& row : kRows) {
        if (!row.wellFormed) continue;
        SCOPED_TRACE(row.label);
        EXPECT_EQ(tk::text::Utf16ToUtf8(row.units), row.bytes);
        EXPECT_EQ(tk::text::Utf16ToUtf8Length(row.units), row.bytes.size());
    }
}

TEST(Utf16ToUtf8, ReplacesLoneSurrogates) {
    static const struct {
        const char* label;
        std::u16string units;
        std::string bytes;
    } kLone[] = {
        {"high at the end", u"a\xD840", "a\xEF\xBF\xBD"},
        {"high before a letter",
         u"\xD840"
         u"a",
         "\xEF\xBF\xBD"
         "a"},
        {"low alone",
         u"\xDC00"
         u"a",
         "\xEF\xBF\xBD"
         "a"},
        {"low before high", u"\xDC00\xD840", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"high before a pair", u"\xD840\xD840\xDC00", "\xEF\xBF\xBD\xF0\xA0\x80\x80"},
    };
    for (const auto& row : kLone) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(tk::text::Utf16ToUtf8(row.units), row.bytes);
        char bytes[16];
        EXPECT_TRUE(tk::text::Utf16ToUtf8(row.units, bytes, 16).replaced);
    }
}

TEST(Utf8ToGbk, EqualsTheWayThroughUtf16) {
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(tk::text::Utf8ToGbk(row.bytes), tk::text::Utf16ToGbk(row.units));
    }
}

TEST(MultiByteToWideChar, RefusesIllFormedUtf8OnlyWhenAsked) {
    for (const auto& row : kRows) {
        if (row.bytes.empty()) continue;
        SCOPED_TRACE(row.label);
        WCHAR wide[16];
        const int length = static_cast<int>(row.bytes.size());
        const int units = static_cast<int>(row.units.size());
        EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, row.bytes.data(), length, wide, 16), units);
        SetLastError(0);
        const int strict = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, row.bytes.data(), length, wide, 16);
        EXPECT_EQ(strict, row.wellFormed ? units : 0);
        EXPECT_EQ(GetLastError(), row.wellFormed ? 0 : ERROR_NO_UNICODE_TRANSLATION);
    }
}
