// Every byte, every pair of bytes and every character of the basic plane, against code_page_936.h.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/win32/text/code_page_936.h"
#include "tkwin32/text.h"

static_assert(sizeof("库") == 3);

namespace {

using code_page_936::Reference;

std::string Pair(unsigned code) {
    return {static_cast<char>(code >> 8), static_cast<char>(code)};
}

std::string Label(unsigned code) {
    char label[16];
    std::snprintf(label, sizeof label, "%04X", code);
    return label;
}

// UTF-8 written out by the book, for one unit that is no surrogate.
std::string Utf8(char16_t unit) {
    if (unit < 0x80) return {static_cast<char>(unit)};
    if (unit < 0x800) return {static_cast<char>(0xC0 | unit >> 6), static_cast<char>(0x80 | (unit & 0x3F))};
    return {static_cast<char>(0xE0 | unit >> 12), static_cast<char>(0x80 | (unit >> 6 & 0x3F)),
            static_cast<char>(0x80 | (unit & 0x3F))};
}

std::string Utf8(const std::u16string& text) {
    std::string result;
    for (const char16_t unit : text)
        result += Utf8(unit);
    return result;
}

// What one byte means where it is no part of a pair.
char16_t Single(unsigned byte) {
    if (byte < 0x80) return static_cast<char16_t>(byte);
    return byte == 0x80 ? u'\u20AC' : byte == 0xFF ? u'\uF8F5' : u'?';
}

}  // namespace

TEST(CodePage936, HasTheSizesThatTheCodePageHas) {
    std::size_t pairs = 0;
    for (unsigned code = 0; code <= 0xFFFF; ++code)
        pairs += Reference::Get().Unit(code) != 0;
    EXPECT_EQ(pairs, 126u * 190u);
    EXPECT_EQ(Reference::Get().FromConverter(), 21791u);
}

TEST(CodePage936, EverySingleByteHasItsMeaning) {
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        SCOPED_TRACE(Label(byte));
        const std::string text(1, static_cast<char>(byte));
        const std::u16string wide(1, Single(byte));
        EXPECT_EQ(tk::text::GbkToUtf16(text), wide);
        EXPECT_EQ(tk::text::GbkToUtf8(text), Utf8(wide));
        const bool lead = byte >= 0x81 && byte <= 0xFE;
        EXPECT_EQ(tk::text::Utf16ToGbk(wide), lead ? "?" : text);
        char16_t unit;
        EXPECT_EQ(tk::text::GbkToUtf16(text, &unit, 1).replaced, lead);
    }
}

TEST(CodePage936, EveryPairOfBytesHasItsMeaning) {
    for (unsigned code = 0; code <= 0xFFFF; ++code) {
        const unsigned first = code >> 8;
        const char16_t unit = Reference::Get().Unit(code);
        std::u16string wide;
        bool replaced = false;
        if (first >= 0x81 && first <= 0xFE && unit != 0) {
            wide = {unit};
        } else {
            const unsigned second = code & 0xFF;
            const auto isLead = [](unsigned byte) { return byte >= 0x81 && byte <= 0xFE; };
            wide = {Single(first), Single(second)};
            replaced = isLead(first) || isLead(second);
        }
        const std::string text = Pair(code);
        char16_t units[2];
        char bytes[6];
        const auto direct = tk::text::GbkToUtf16(text, units, 2);
        const auto narrow = tk::text::GbkToUtf8(text, bytes, 6);
        ASSERT_EQ(std::u16string(units, direct.written), wide) << Label(code);
        ASSERT_EQ(std::string(bytes, narrow.written), Utf8(wide)) << Label(code);
        ASSERT_EQ(direct.replaced, replaced) << Label(code);
        ASSERT_EQ(narrow.replaced, replaced) << Label(code);
        if (!replaced) {
            ASSERT_EQ(tk::text::Utf16ToGbk(wide), text) << Label(code);
            ASSERT_EQ(tk::text::Utf8ToGbk(Utf8(wide)), text) << Label(code);
        }
    }
}

TEST(CodePage936, EveryCharacterOfTheBasicPlaneGoesToItsCodeOrToTheDefaultCharacter) {
    for (unsigned value = 0; value <= 0xFFFF; ++value) {
        const auto unit = static_cast<char16_t>(value);
        const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
        const int code = Reference::Get().Code(unit);
        const std::string text = code < 0       ? "?"
                                 : code < 0x100 ? std::string(1, static_cast<char>(code))
                                                : Pair(static_cast<unsigned>(code));
        char bytes[3];
        const auto wide = tk::text::Utf16ToGbk({&unit, 1}, bytes, 3);
        ASSERT_EQ(std::string(bytes, wide.written), text) << Label(value);
        ASSERT_EQ(wide.replaced, code < 0) << Label(value);

        if (surrogate) {
            ASSERT_EQ(tk::text::Utf16ToUtf8({&unit, 1}), "\xEF\xBF\xBD") << Label(value);
            continue;
        }
        const auto utf8 = tk::text::Utf8ToGbk(Utf8(unit), bytes, 3);
        ASSERT_EQ(std::string(bytes, utf8.written), text) << Label(value);
        ASSERT_EQ(utf8.replaced, code < 0) << Label(value);
        ASSERT_EQ(tk::text::Utf16ToUtf8({&unit, 1}), Utf8(unit)) << Label(value);
        ASSERT_EQ(tk::text::Utf8ToUtf16(Utf8(unit)), std::u16string(1, unit)) << Label(value);
    }
}

TEST(CodePage936, ReadsAndWritesOrdinaryText) {
    EXPECT_EQ(tk::text::GbkToUtf16("库存123件，￥9.50"), u"库存123件，￥9.50");
    EXPECT_EQ(tk::text::Utf16ToGbk(u"库存123件，￥9.50"), "库存123件，￥9.50");
    EXPECT_EQ(tk::text::GbkToUtf8("\xD6\xD0 a"), "\xE4\xB8\xAD a");
    EXPECT_EQ(tk::text::Utf8ToGbk("\xE4\xB8\xAD a"), "\xD6\xD0 a");
}

TEST(CodePage936, GivesOneDefaultCharacterForEachUnitOutsideTheCodePage) {
    EXPECT_EQ(tk::text::Utf16ToGbk(u"a\u3400\U00020000b"), "a???b");
    EXPECT_EQ(tk::text::Utf8ToGbk("a\xE3\x90\x80\xF0\xA0\x80\x80"
                                  "b"),
              "a???b");
}

TEST(WholeGbkPrefix, CutsBetweenCharacters) {
    static const struct {
        const char* label;
        const char* text;
        std::size_t limit;
        std::size_t bytes;
    } kRows[] = {
        {"nothing", "", 5, 0},
        {"all of it", "a库", 9, 3},
        {"exactly", "a库", 3, 3},
        {"in the character", "a库", 2, 1},
        {"before it", "a库", 1, 1},
        {"no room", "库", 0, 0},
        {"trail bytes like letters", "\x81\x41\x81\x41", 3, 2},
        {"a lead byte alone", "a\x81", 2, 2},
        {"a lead byte before what is no trail byte", "\x81 b", 1, 1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(tk::text::WholeGbkPrefix(row.text, row.limit), row.bytes);
    }
}
