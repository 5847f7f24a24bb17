#include <afx.h>
#include <gtest/gtest.h>

#include <sstream>
#include <type_traits>
#include <vector>

#include "afx/gbk.h"
#include "afx/raises.h"

namespace {

const CString kLong('x', 100);

static_assert(std::is_nothrow_move_constructible_v<CString> && std::is_nothrow_move_assignable_v<CString>);
static_assert(sizeof(CString) == 32 || sizeof(void*) != 8);

TEST(CString, IsEmptyForEveryNullPointer) {
    EXPECT_STREQ(CString(), "");
    EXPECT_STREQ(CString(nullptr), "");
    EXPECT_STREQ(CString(static_cast<const char*>(nullptr)), "");
    EXPECT_STREQ(CString(static_cast<const unsigned char*>(nullptr)), "");
    EXPECT_STREQ(CString(static_cast<LPCWSTR>(nullptr)), "");
    EXPECT_STREQ(CString(static_cast<const char*>(nullptr), 5), "");
    EXPECT_STREQ(CString(static_cast<LPCWSTR>(nullptr), 5), "");
    CString text("old");
    text = static_cast<const char*>(nullptr);
    EXPECT_TRUE(text.IsEmpty());
    text = "old";
    text = nullptr;
    EXPECT_TRUE(text.IsEmpty());
    text = "old";
    text += static_cast<const char*>(nullptr);
    EXPECT_STREQ(text, "old");
}

TEST(CString, IsMadeOfTextsCharactersAndLengths) {
    EXPECT_STREQ(CString("stock"), "stock");
    EXPECT_STREQ(CString("stock", 3), "sto");
    EXPECT_STREQ(CString("stock", 0), "");
    EXPECT_STREQ(CString("stock", -1), "");
    EXPECT_STREQ(CString('a'), "a");
    EXPECT_STREQ(CString('a', 4), "aaaa");
    EXPECT_STREQ(CString('a', 0), "");
    EXPECT_STREQ(CString('a', -3), "");
    EXPECT_STREQ(CString(reinterpret_cast<const unsigned char*>("bytes")), "bytes");
    EXPECT_EQ(CString('\0', 3).GetLength(), 3);
}

TEST(CString, KeepsTextsAroundTheInlineSizeWhole) {
    for (int length = 0; length <= 64; ++length) {
        SCOPED_TRACE(length);
        const std::string expected(static_cast<std::size_t>(length), 'k');
        const CString text(expected.c_str());
        const CString copy(text);
        CString assigned("something longer than the room inside the object");
        assigned = text;
        EXPECT_EQ(text.GetLength(), length);
        EXPECT_STREQ(text, expected.c_str());
        EXPECT_STREQ(copy, expected.c_str());
        EXPECT_STREQ(assigned, expected.c_str());
        EXPECT_NE(static_cast<LPCSTR>(copy), static_cast<LPCSTR>(text)) << "copies never share";
        CString source(text);
        const CString moved(std::move(source));
        EXPECT_STREQ(moved, expected.c_str());
    }
}

TEST(CString, CopiesAreIndependent) {
    CString first(kLong);
    CString second(first);
    second.SetAt(0, 'y');
    EXPECT_EQ(first.GetAt(0), 'x');
    EXPECT_EQ(second.GetAt(0), 'y');
}

TEST(CString, MovesLeaveTheSourceUsable) {
    CString source(kLong);
    CString target(std::move(source));
    EXPECT_STREQ(target, kLong);
    source = "again";  // NOLINT(bugprone-use-after-move)
    EXPECT_STREQ(source, "again");
    target = std::move(source);
    EXPECT_STREQ(target, "again");
}

TEST(CString, MayBeAssignedAndAppendedPartsOfItself) {
    CString text("0123456789");
    text = static_cast<LPCSTR>(text) + 4;
    EXPECT_STREQ(text, "456789");
    text = *&text;
    EXPECT_STREQ(text, "456789");
    text += text;
    EXPECT_STREQ(text, "456789456789");
    text += static_cast<LPCSTR>(text) + 8;
    EXPECT_STREQ(text, "4567894567896789");
    CString grown(kLong);
    grown += grown;
    EXPECT_EQ(grown.GetLength(), 200);
    grown += static_cast<LPCSTR>(grown) + 1;
    EXPECT_EQ(grown.GetLength(), 399);
    EXPECT_STREQ(grown, CString('x', 399));
    grown.Insert(0, static_cast<LPCSTR>(grown) + 398);
    EXPECT_EQ(grown.GetLength(), 400);
    CString self("aba");
    EXPECT_EQ(self.Replace(self, "c"), 1);
    EXPECT_STREQ(self, "c");
}

TEST(CString, GivesBytesByPositionAndTheTerminatorBehindThem) {
    const CString text("ab");
    EXPECT_EQ(text[0], 'a');
    EXPECT_EQ(text[1L], 'b');
    EXPECT_EQ(text[std::size_t{1}], 'b');
    EXPECT_EQ(text.GetAt(2), '\0');
}

TEST(CString, RaisesForPositionsThatDoNotExist) {
    CString text("ab");
    EXPECT_EQ(Raised([&] { text.GetAt(3); }), "CInvalidArgException");
    EXPECT_EQ(Raised([&] { text.GetAt(-1); }), "CInvalidArgException");
    EXPECT_EQ(Raised([&] { text.SetAt(2, 'x'); }), "CInvalidArgException");
    EXPECT_EQ(Raised([&] { text.SetAt(-1, 'x'); }), "CInvalidArgException");
    EXPECT_STREQ(text, "ab");
}

TEST(CString, RaisesForTextsBeyondWhatALengthCanHold) {
    CString text;
    EXPECT_EQ(Raised([&] { text.GetBuffer(0x7FFFFFFF); }), "CMemoryException");
    EXPECT_EQ(Raised([&] { CString tooLong('x', 0x7FFFFFFF); }), "CMemoryException");
    EXPECT_EQ(Raised([&] { text.GetBufferSetLength(-1); }), "CInvalidArgException");
}

TEST(CString, EmptyGivesTheMemoryBack) {
    CString text(kLong);
    text.Empty();
    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_EQ(text.GetAllocLength(), int{CString::kLocalCapacity});
}

TEST(CString, JoinsTextsAndCharactersOnBothSides) {
    const CString text("mid");
    EXPECT_STREQ(text + CString("+"), "mid+");
    EXPECT_STREQ(text + "right", "midright");
    EXPECT_STREQ("left" + text, "leftmid");
    EXPECT_STREQ(text + 'c', "midc");
    EXPECT_STREQ('c' + text, "cmid");
    EXPECT_STREQ(text + static_cast<const char*>(nullptr), "mid");
    EXPECT_STREQ(CString("a") + "b" + text + 'c', "abmidc");
    EXPECT_STREQ(kLong + kLong, CString('x', 200));
    CString built;
    built += "a";
    built += 'b';
    built += text;
    EXPECT_STREQ(built, "abmid");
}

TEST(CString, KeepsEmbeddedZerosWhenCopiedAndJoined) {
    const CString text("a\0b", 3);
    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_EQ(CString(text).GetLength(), 3);
    EXPECT_EQ((text + text).GetLength(), 6);
    EXPECT_EQ((text + text)[5], 'b');
    EXPECT_EQ(text.Mid(1).GetLength(), 2);
    EXPECT_STREQ(text, "a");
}

TEST(CString, ComparesUnsignedBytesUpToTheFirstZero) {
    static const struct {
        const char* label;
        CString first;
        CString second;
        int sign;
    } kRows[] = {
        {"equal", "abc", "abc", 0},
        {"shorter stands first", "ab", "abc", -1},
        {"capitals stand first", "B", "a", -1},
        {"bytes are unsigned", "\xB0\xA1", "z", 1},
        {"two empty ones", "", "", 0},
        {"what follows a zero does not count", CString("ab\0c", 4), "ab", 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const int result = row.first.Compare(row.second);
        EXPECT_EQ((result > 0) - (result < 0), row.sign);
        EXPECT_EQ(row.first == row.second, row.sign == 0);
        EXPECT_EQ(row.first != row.second, row.sign != 0);
        EXPECT_EQ(row.first < row.second, row.sign < 0);
        EXPECT_EQ(row.first > row.second, row.sign > 0);
        EXPECT_EQ(row.first <= row.second, row.sign <= 0);
        EXPECT_EQ(row.first >= row.second, row.sign >= 0);
        const char* const second = row.second;
        EXPECT_EQ(row.first == second, row.sign == 0);
        EXPECT_EQ(second != row.first, row.sign != 0);
        EXPECT_EQ(row.first < second, row.sign < 0);
        EXPECT_EQ(second<row.first, row.sign> 0);
        EXPECT_EQ(row.first > second, row.sign > 0);
        EXPECT_EQ(second > row.first, row.sign < 0);
        EXPECT_EQ(row.first <= second, row.sign <= 0);
        EXPECT_EQ(second <= row.first, row.sign >= 0);
        EXPECT_EQ(row.first >= second, row.sign >= 0);
        EXPECT_EQ(second >= row.first, row.sign <= 0);
    }
    EXPECT_TRUE(CString() == static_cast<const char*>(nullptr));
}

TEST(CString, ComparesWithoutCaseByCharacter) {
    EXPECT_EQ(CString("Stock").CompareNoCase("sTOCK"), 0);
    EXPECT_NE(CString(kEndsInUpperA).CompareNoCase(kEndsInLowerA), 0) << "trail bytes are no letters";
    EXPECT_LT(CString("a").CompareNoCase("B"), 0);
    EXPECT_EQ(CString("库存A").CompareNoCase("库存a"), 0);
    EXPECT_EQ(CString("ＡΩЯ").CompareNoCase("ａωя"), 0);
    EXPECT_LT(CString("ab").CompareNoCase("ABC"), 0);
    EXPECT_GT(CString("ABC").CompareNoCase("ab"), 0);
    EXPECT_LT(CString("z").CompareNoCase("库"), 0) << "single bytes stand first";
    EXPECT_EQ(CString().CompareNoCase(nullptr), 0);
}

TEST(CString, CollatesInTheOrderOfAChineseSystem) {
    EXPECT_LT(CString("阿").Collate("波"), 0);
    EXPECT_LT(CString("波").Collate("做"), 0);
    EXPECT_EQ(CString("abc").Collate("abc"), 0);
    EXPECT_NE(CString("abc").Collate("ABC"), 0);
    EXPECT_EQ(CString("abc").CollateNoCase("ABC"), 0);
}

TEST(CString, HandsOutItsBuffer) {
    CString text("abc");
    char* const buffer = text.GetBuffer(50);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_GE(text.GetAllocLength(), 50);
    std::strcpy(buffer, "written outside");
    text.ReleaseBuffer();
    EXPECT_EQ(text.GetLength(), 15);
    EXPECT_STREQ(text, "written outside");
    text.GetBuffer(10)[3] = '!';
    text.ReleaseBuffer(4);
    EXPECT_STREQ(text, "wri!");
    EXPECT_EQ(Raised([&] { text.ReleaseBuffer(text.GetAllocLength() + 1); }), "CInvalidArgException");
}

TEST(CString, ReleasesABufferFilledToTheBrim) {
    CString text;
    std::memset(text.GetBuffer(40), 'f', 40);
    const int room = text.GetAllocLength();
    std::memset(text.GetBuffer(0), 'f', static_cast<std::size_t>(room));
    text.ReleaseBuffer();
    EXPECT_EQ(text.GetLength(), room);
}

TEST(CString, SetsTheLengthOfItsBufferAtOnce) {
    CString text("abc");
    char* const buffer = text.GetBufferSetLength(5);
    EXPECT_EQ(text.GetLength(), 5);
    EXPECT_EQ(buffer[3], '\0');
    EXPECT_EQ(buffer[4], '\0');
    EXPECT_EQ(buffer[5], '\0');
    text.GetBufferSetLength(2);
    EXPECT_STREQ(text, "ab");
    EXPECT_EQ(text.LockBuffer(), static_cast<LPCSTR>(text));
    text.UnlockBuffer();
}

TEST(CString, FreesTheRoomItDoesNotNeed) {
    CString text("abc");
    text.GetBuffer(1000);
    text.FreeExtra();
    EXPECT_EQ(text.GetAllocLength(), int{CString::kLocalCapacity});
    EXPECT_STREQ(text, "abc");
    text = kLong;
    text.GetBuffer(1000);
    text.FreeExtra();
    EXPECT_EQ(text.GetAllocLength(), 100);
    EXPECT_STREQ(text, kLong);
    text.FreeExtra();
    EXPECT_STREQ(text, kLong);
}

TEST(CString, GrowsStepByStepWithoutLosingAByte) {
    CString text;
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const char ch = static_cast<char>('a' + i % 26);
        text += ch;
        expected += ch;
    }
    EXPECT_EQ(text.GetLength(), 3000);
    EXPECT_STREQ(text, expected.c_str());
}

TEST(CString, MovesAlongWithAVector) {
    std::vector<CString> texts;
    for (int i = 0; i < 200; ++i)
        texts.push_back(CString('a', i % 40));
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(texts[static_cast<std::size_t>(i)].GetLength(), i % 40);
}

TEST(CString, IsWrittenToAStream) {
    std::ostringstream stream;
    stream << CString("库存") << '|' << CString();
    EXPECT_EQ(stream.str(), "库存|");
}

TEST(CString, FindsNoTextInAProgramWithoutAStringTable) {
    CString text("old");
    EXPECT_FALSE(text.LoadString(1));
    EXPECT_STREQ(text, "");
}

}  // namespace
