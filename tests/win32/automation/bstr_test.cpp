#include <array>
#include <limits>
#include <thread>
#include <vector>

#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

TEST(SysAllocString, CopiesUpToTheTerminator) {
    BSTR text = SysAllocString(u"中文 abc");
    EXPECT_EQ(SysStringLen(text), 6u);
    EXPECT_EQ(SysStringByteLen(text), 12u);
    EXPECT_EQ(std::u16string_view(text), u"中文 abc");
    SysFreeString(text);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
}

TEST(SysAllocString, MakesAnEmptyTextThatIsNotNull) {
    BSTR text = SysAllocString(u"");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 0u);
    EXPECT_EQ(text[0], 0);
    SysFreeString(text);
}

TEST(SysAllocStringLen, KeepsZerosInsideAndTerminates) {
    BSTR text = SysAllocStringLen(u"a\0b\0", 4);
    EXPECT_EQ(SysStringLen(text), 4u);
    EXPECT_EQ(text[2], u'b');
    EXPECT_EQ(text[4], 0);
    SysFreeString(text);
}

TEST(SysAllocStringLen, LeavesRoomWhenThereIsNoSource) {
    BSTR text = SysAllocStringLen(nullptr, 300);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 300u);
    EXPECT_EQ(text[300], 0);
    SysFreeString(text);
}

TEST(SysAllocStringLen, PutsTheByteLengthBeforeTheCharacters) {
    BSTR text = SysAllocString(u"four");
    std::uint32_t before = 0;
    std::memcpy(&before, reinterpret_cast<char*>(text) - 4, 4);
    EXPECT_EQ(before, 8u);
    SysFreeString(text);
}

TEST(SysAllocStringLen, RefusesLengthsWhoseBytesDoNotFit) {
    static constexpr UINT kLengths[] = {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu};
    for (const UINT length : kLengths) {
        EXPECT_EQ(SysAllocStringLen(nullptr, length), nullptr) << length;
        BSTR kept = SysAllocString(u"kept");
        EXPECT_EQ(SysReAllocStringLen(&kept, nullptr, length), 0) << length;
        EXPECT_EQ(Narrow(kept), "kept");
        SysFreeString(kept);
    }
}

TEST(SysAllocStringByteLen, RefusesLengthsThatDoNotFitWithTheirHeader) {
    EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFFFu), nullptr);
    EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFE0u), nullptr);
}

TEST(SysAllocStringByteLen, KeepsAnOddLength) {
    BSTR text = SysAllocStringByteLen("abc", 3);
    EXPECT_EQ(SysStringByteLen(text), 3u);
    EXPECT_EQ(SysStringLen(text), 1u);
    static constexpr char kExpected[] = {'a', 'b', 'c', 0, 0};
    EXPECT_EQ(std::memcmp(text, kExpected, sizeof(kExpected)), 0);
    SysFreeString(text);
}

TEST(SysReAllocString, TakesAPartOfItself) {
    BSTR text = SysAllocString(u"prefix and rest");
    EXPECT_EQ(SysReAllocString(&text, text + 11), 1);
    EXPECT_EQ(Narrow(text), "rest");
    EXPECT_EQ(SysReAllocString(&text, nullptr), 1);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(SysReAllocString(nullptr, u"x"), 0);
}

TEST(SysReAllocStringLen, GrowsAndShrinksWithTheOldCharacters) {
    BSTR text = SysAllocString(u"abcdef");
    EXPECT_EQ(SysReAllocStringLen(&text, nullptr, 3), 1);
    EXPECT_EQ(Narrow(text), "abc");
    EXPECT_EQ(SysReAllocStringLen(&text, nullptr, 1000), 1);
    EXPECT_EQ(SysStringLen(text), 1000u);
    EXPECT_EQ(std::u16string_view(text, 3), u"abc");
    EXPECT_EQ(SysReAllocStringLen(&text, text + 1, 2), 1);
    EXPECT_EQ(Narrow(text), "bc");
    SysFreeString(text);
}

TEST(SysReAllocStringLen, MakesATextFromNull) {
    BSTR text = nullptr;
    EXPECT_EQ(SysReAllocStringLen(&text, u"xyz", 2), 1);
    EXPECT_EQ(Narrow(text), "xy");
    SysFreeString(text);
}

TEST(SysFreeString, AcceptsNull) {
    SysFreeString(nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(SysStringByteLen(nullptr), 0u);
}

TEST(SysAllocStringLen, GivesNullWhenMemoryIsOut) {
    const std::u16string longText(3000, u'x');  // longer than the texts that are kept for reuse
    BSTR kept = SysAllocString(u"kept");
    {
        const MemoryRunsOut nothingLeft(0);
        EXPECT_EQ(SysAllocString(longText.c_str()), nullptr);
        EXPECT_EQ(SysAllocStringByteLen(nullptr, 5000), nullptr);
        EXPECT_EQ(SysReAllocString(&kept, longText.c_str()), 0);
        EXPECT_EQ(SysReAllocStringLen(&kept, longText.c_str(), 3000), 0);
    }
    EXPECT_EQ(Narrow(kept), "kept");
    SysFreeString(kept);
}

TEST(SysFreeString, MayRunOnAnotherThreadThanTheAllocation) {
    std::vector<BSTR> texts;
    std::thread maker([&texts] {
        for (UINT i = 0; i < 2000; ++i)
            texts.push_back(SysAllocStringLen(u"0123456789", i % 11));
    });
    maker.join();
    std::thread freer([&texts] {
        for (UINT i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(SysStringLen(texts[i]), i % 11);
            SysFreeString(texts[i]);
        }
    });
    freer.join();
}

TEST(SysAllocStringLen, GivesEveryLiveTextItsOwnMemory) {
    // Through every size class and beyond, freed in another order and taken again.
    std::array<BSTR, 400> texts{};
    for (int round = 0; round < 3; ++round) {
        for (UINT i = 0; i < texts.size(); ++i) {
            texts[i] = SysAllocStringLen(nullptr, i);
            std::fill_n(texts[i], i, static_cast<OLECHAR>(i + 1));
        }
        for (UINT i = 0; i < texts.size(); ++i) {
            ASSERT_EQ(SysStringLen(texts[i]), i);
            for (UINT at = 0; at < i; ++at)
                ASSERT_EQ(texts[i][at], i + 1);
            ASSERT_EQ(texts[i][i], 0);
        }
        for (UINT i = 0; i < texts.size(); ++i)
            SysFreeString(texts[(i * 7) % texts.size()]);
    }
}

TEST(VarBstrCat, GivesNoTextWhenMemoryIsOut) {
    BSTR half = SysAllocString(std::u16string(1500, u'x').c_str());
    BSTR joined = nullptr;
    {
        const MemoryRunsOut nothingLeft(0);
        EXPECT_EQ(VarBstrCat(half, half, &joined), E_OUTOFMEMORY);
    }
    EXPECT_EQ(joined, nullptr);
    EXPECT_EQ(VarBstrCat(half, half, nullptr), E_INVALIDARG);
    SysFreeString(half);
}

TEST(VarBstrCat, JoinsBytesAndTakesNullAsEmpty) {
    BSTR left = SysAllocStringLen(u"a\0", 2);
    BSTR right = SysAllocString(u"b");
    BSTR joined = nullptr;
    EXPECT_EQ(VarBstrCat(left, right, &joined), S_OK);
    EXPECT_EQ(SysStringLen(joined), 3u);
    EXPECT_EQ(joined[2], u'b');
    SysFreeString(joined);
    EXPECT_EQ(VarBstrCat(nullptr, nullptr, &joined), S_OK);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(SysStringLen(joined), 0u);
    SysFreeString(joined);
    SysFreeString(left);
    SysFreeString(right);
}

}  // namespace
}  // namespace tk::test
