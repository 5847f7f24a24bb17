// Random texts through every conversion: what must hold for all of them. A failure prints the seed that repeats it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/win32/text/code_page_936.h"
#include "tkwin32/text.h"

namespace {

using code_page_936::Reference;
using tk::text::Converted;

std::uint_fast32_t Seed() {
    const char* fixed = std::getenv("TK_TEST_SEED");
    return fixed != nullptr ? static_cast<std::uint_fast32_t>(std::strtoul(fixed, nullptr, 10))
                            : std::random_device{}();
}

class RandomText : public testing::Test {
protected:
    RandomText() : seed_(Seed()), random_(seed_), trace_(__FILE__, __LINE__, "TK_TEST_SEED=" + std::to_string(seed_)) {
        RecordProperty("seed", std::to_string(seed_));
        for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
            if (Reference::Get().Code(static_cast<char16_t>(unit)) >= 0)
                sayable_.push_back(static_cast<char16_t>(unit));
        }
    }

    std::size_t Below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_); }

    // Text in runs of ASCII and of characters of the code page, as names and notes are.
    std::u16string Sayable() {
        std::u16string text;
        for (std::size_t runs = Below(6); runs != 0; --runs) {
            const bool ascii = Below(2) == 0;
            for (std::size_t left = Below(40); left != 0; --left) {
                text += ascii ? static_cast<char16_t>(Below(0x80)) : sayable_[Below(sayable_.size())];
            }
        }
        return text;
    }

    std::string Bytes() {
        std::string bytes(Below(120), '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(Below(3) == 0 ? Below(0x80) : 0x80 + Below(0x80));
        return bytes;
    }

    std::u16string Units() {
        std::u16string units(Below(80), u'\0');
        for (char16_t& unit : units) {
            unit = static_cast<char16_t>(Below(4) == 0   ? 0xD800 + Below(0x800)
                                         : Below(3) == 0 ? Below(0x80)
                                                         : Below(0x10000));
        }
        return units;
    }

    // Converting through a small buffer, again and again, gives what one call gives.
    template <class Out, class View, class Convert>
    void ExpectSameInPieces(View source, const std::basic_string<Out>& whole, Convert convert) {
        const std::size_t room = 4 + Below(20);  // any character fits
        std::basic_string<Out> pieces;
        std::vector<Out> buffer(room);
        for (View left = source; !left.empty();) {
            const Converted done = convert(left, buffer.data(), room);
            ASSERT_GT(done.read, 0u);
            ASSERT_LE(done.written, room);
            pieces.append(buffer.data(), done.written);
            left.remove_prefix(done.read);
        }
        ASSERT_EQ(pieces, whole);
    }

    std::uint_fast32_t seed_;
    std::mt19937 random_;
    testing::ScopedTrace trace_;
    std::vector<char16_t> sayable_;
};

constexpr int kRounds = 4000;

}  // namespace

TEST_F(RandomText, OfTheCodePageComesBackUnchangedByEveryWay) {
    for (int round = 0; round < kRounds; ++round) {
        const std::u16string text = Sayable();
        const std::string gbk = tk::text::Utf16ToGbk(text);
        const std::string utf8 = tk::text::Utf16ToUtf8(text);
        ASSERT_EQ(tk::text::GbkToUtf16(gbk), text);
        ASSERT_EQ(tk::text::Utf8ToUtf16(utf8), text);
        ASSERT_EQ(tk::text::GbkToUtf8(gbk), utf8);
        ASSERT_EQ(tk::text::Utf8ToGbk(utf8), gbk);
        ASSERT_EQ(tk::text::GbkToUtf16Length(gbk), text.size());
        ASSERT_EQ(tk::text::Utf16ToGbkLength(text), gbk.size());
        ASSERT_EQ(tk::text::GbkToUtf8Length(gbk), utf8.size());
        ASSERT_EQ(tk::text::Utf8ToGbkLength(utf8), gbk.size());
    }
}

TEST_F(RandomText, OfAnyBytesTakesTheSameWayDirectlyAndThroughUtf16) {
    for (int round = 0; round < kRounds; ++round) {
        const std::string bytes = Bytes();
        ASSERT_EQ(tk::text::Utf8ToGbk(bytes), tk::text::Utf16ToGbk(tk::text::Utf8ToUtf16(bytes)));
        ASSERT_EQ(tk::text::GbkToUtf8(bytes), tk::text::Utf16ToUtf8(tk::text::GbkToUtf16(bytes)));
    }
}

TEST_F(RandomText, OfAnyBytesBecomesWellFormedText) {
    for (int round = 0; round < kRounds; ++round) {
        const std::u16string once = tk::text::Utf8ToUtf16(Bytes());
        ASSERT_EQ(tk::text::Utf8ToUtf16(tk::text::Utf16ToUtf8(once)), once);
        const std::string gbk = tk::text::Utf16ToGbk(Units());
        std::u16string wide(gbk.size(), u'\0');
        ASSERT_FALSE(tk::text::GbkToUtf16(gbk, wide.data(), wide.size()).replaced);
    }
}

TEST_F(RandomText, IsTheSameInPieces) {
    const auto gbkToUtf16 = [](std::string_view s, char16_t* b, std::size_t n) {
        return tk::text::GbkToUtf16(s, b, n);
    };
    const auto utf8ToUtf16 = [](std::string_view s, char16_t* b, std::size_t n) {
        return tk::text::Utf8ToUtf16(s, b, n);
    };
    const auto utf16ToGbk = [](std::u16string_view s, char* b, std::size_t n) { return tk::text::Utf16ToGbk(s, b, n); };
    const auto gbkToUtf8 = [](std::string_view s, char* b, std::size_t n) { return tk::text::GbkToUtf8(s, b, n); };
    const auto utf16ToUtf8 = [](std::u16string_view s, char* b, std::size_t n) {
        return tk::text::Utf16ToUtf8(s, b, n);
    };
    const auto utf8ToGbk = [](std::string_view s, char* b, std::size_t n) { return tk::text::Utf8ToGbk(s, b, n); };
    for (int round = 0; round < kRounds; ++round) {
        const std::string bytes = Bytes();
        const std::u16string units = Units();
        ExpectSameInPieces<char16_t>(std::string_view(bytes), tk::text::GbkToUtf16(bytes), gbkToUtf16);
        ExpectSameInPieces<char16_t>(std::string_view(bytes), tk::text::Utf8ToUtf16(bytes), utf8ToUtf16);
        ExpectSameInPieces<char>(std::string_view(bytes), tk::text::Utf8ToGbk(bytes), utf8ToGbk);
        ExpectSameInPieces<char>(std::u16string_view(units), tk::text::Utf16ToGbk(units), utf16ToGbk);
        ExpectSameInPieces<char>(std::string_view(bytes), tk::text::GbkToUtf8(bytes), gbkToUtf8);
        ExpectSameInPieces<char>(std::u16string_view(units), tk::text::Utf16ToUtf8(units), utf16ToUtf8);
        if (HasFatalFailure()) return;
    }
}

TEST_F(RandomText, NeverTouchesWhatLiesBehindItsBuffer) {
    for (int round = 0; round < kRounds; ++round) {
        const std::string bytes = Bytes();
        const std::u16string units = Units();
        const std::size_t room = Below(40);
        std::vector<char> narrow(room + 1, '\x5A');
        std::vector<char16_t> wide(room + 1, u'\x5A5A');
        tk::text::Utf8ToGbk(bytes, narrow.data(), room);
        tk::text::GbkToUtf8(bytes, narrow.data(), room);
        tk::text::Utf16ToGbk(units, narrow.data(), room);
        tk::text::Utf16ToUtf8(units, narrow.data(), room);
        tk::text::Utf8ToUtf16(bytes, wide.data(), room);
        tk::text::GbkToUtf16(bytes, wide.data(), room);
        ASSERT_EQ(narrow[room], '\x5A');
        ASSERT_EQ(wide[room], u'\x5A5A');
    }
}

TEST_F(RandomText, IsCutBetweenCharacters) {
    for (int round = 0; round < kRounds; ++round) {
        const std::string gbk = tk::text::Utf16ToGbk(Sayable());
        const std::size_t limit = Below(gbk.size() + 3);
        const std::size_t kept = tk::text::WholeGbkPrefix(gbk, limit);
        ASSERT_LE(kept, limit);
        ASSERT_LE(std::min(limit, gbk.size()) - kept, 1u);
        std::u16string wide(kept, u'\0');
        ASSERT_FALSE(tk::text::GbkToUtf16(gbk.substr(0, kept), wide.data(), kept).replaced);
    }
}
