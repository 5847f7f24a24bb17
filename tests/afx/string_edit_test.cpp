#include <afx.h>
#include <gtest/gtest.h>

#include "afx/gbk.h"

namespace {

TEST(StringCut, MovesPositionsToTheNearestOneInside) {
    const CString text("0123456789");
    EXPECT_STREQ(text.Mid(3), "3456789");
    EXPECT_STREQ(text.Mid(3, 2), "34");
    EXPECT_STREQ(text.Mid(8, 100), "89");
    EXPECT_STREQ(text.Mid(10), "");
    EXPECT_STREQ(text.Mid(11), "");
    EXPECT_STREQ(text.Mid(-5, 2), "01");
    EXPECT_STREQ(text.Mid(2, -1), "");
    EXPECT_STREQ(text.Mid(2, 0x7FFFFFFF), "23456789");
    EXPECT_STREQ(text.Left(4), "0123");
    EXPECT_STREQ(text.Left(100), "0123456789");
    EXPECT_STREQ(text.Left(-1), "");
    EXPECT_STREQ(text.Right(4), "6789");
    EXPECT_STREQ(text.Right(100), "0123456789");
    EXPECT_STREQ(text.Right(-1), "");
    EXPECT_STREQ(CString("库存").Left(1), "\xBF") << "bytes, not characters";
}

TEST(StringCase, LeavesTrailBytesAlone) {
    CString text = CString("aZ") + kEndsInLowerA + kEndsInUpperA + "库z";
    text.MakeUpper();
    EXPECT_STREQ(text, CString("AZ") + kEndsInLowerA + kEndsInUpperA + "库Z");
    text.MakeLower();
    EXPECT_STREQ(text, CString("az") + kEndsInLowerA + kEndsInUpperA + "库z");
    CString wide("ａＢ");
    wide.MakeUpper();
    EXPECT_STREQ(wide, "ＡＢ");
    wide.MakeLower();
    EXPECT_STREQ(wide, "ａｂ");
    CString letters("αωаяⅰ①");
    letters.MakeUpper();
    EXPECT_STREQ(letters, "ΑΩАЯⅠ①");
    letters.MakeLower();
    EXPECT_STREQ(letters, "αωаяⅰ①");
    CString half("a\xC4");
    half.MakeUpper();
    EXPECT_STREQ(half, "A\xC4");
    CString empty;
    empty.MakeUpper();
    empty.MakeLower();
    EXPECT_STREQ(empty, "");
}

TEST(StringReverse, KeepsDoubleByteCharactersWhole) {
    static const struct {
        const char* text;
        const char* reversed;
    } kRows[] = {{"", ""},
                 {"a", "a"},
                 {"abc", "cba"},
                 {"库存", "存库"},
                 {"a库b", "b库a"},
                 {"ab\xC4",
                  "\xC4"
                  "ba"}};
    for (const auto& row : kRows) {
        CString text(row.text);
        text.MakeReverse();
        EXPECT_STREQ(text, row.reversed);
    }
}

TEST(StringTrim, RemovesBlanksOfEveryKind) {
    CString text(" \t\n\v\f\rab c \t\n\v\f\r");
    text.TrimLeft();
    EXPECT_STREQ(text, "ab c \t\n\v\f\r");
    text.TrimRight();
    EXPECT_STREQ(text, "ab c");
    CString blanks(" \t ");
    blanks.TrimRight();
    EXPECT_STREQ(blanks, "");
    blanks = " \t ";
    blanks.TrimLeft();
    EXPECT_STREQ(blanks, "");
    CString none;
    none.TrimLeft();
    none.TrimRight();
    EXPECT_STREQ(none, "");
    CString wide("　库");
    wide.TrimLeft();
    EXPECT_STREQ(wide, "　库") << "an ideographic space is no blank";
}

TEST(StringTrim, TakesCharactersAndSets) {
    static const struct {
        const char* label;
        const char* text;
        const char* set;
        const char* left;
        const char* right;
    } kRows[] = {
        {"one character", "xxaxx", "x", "axx", "xxa"},
        {"set", "xyaxy", "yx", "axy", "xya"},
        {"nothing to do", "abc", "x", "abc", "abc"},
        {"everything", "xxxx", "x", "", ""},
        {"trail byte is no letter", "A\x81\x41", "A", "\x81\x41", "A\x81\x41"},
        {"trail byte is no backslash", "\\\xD5\x5C\\", "\\", "\xD5\x5C\\", "\\\xD5\x5C"},
        {"double-byte member", "库库a库", "库", "a库", "库库a"},
        {"half of a member is none", "\xB0\xA1x\xB0\xA1", "\xA1", "\xB0\xA1x\xB0\xA1", "\xB0\xA1x\xB0\xA1"},
        {"member behind a half character", "a\xC4'", "'", "a\xC4'", "a\xC4"},
        {"empty set", " a ", "", " a ", " a "},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CString left(row.text);
        left.TrimLeft(row.set);
        EXPECT_STREQ(left, row.left);
        CString right(row.text);
        right.TrimRight(row.set);
        EXPECT_STREQ(right, row.right);
    }
    CString text("zzazz");
    text.TrimLeft('z');
    text.TrimRight('z');
    EXPECT_STREQ(text, "a");
    text.TrimLeft(static_cast<const char*>(nullptr));
    text.TrimRight(static_cast<const char*>(nullptr));
    EXPECT_STREQ(text, "a");
}

TEST(StringReplace, CountsThePlacesAndStepsByCharacter) {
    static const struct {
        const char* label;
        const char* text;
        const char* from;
        const char* to;
        int count;
        const char* result;
    } kRows[] = {
        {"same length", "a.b.c", ".", ",", 2, "a,b,c"},
        {"longer", "a.b", ".", "---", 1, "a---b"},
        {"shorter", "a---b", "---", "", 1, "ab"},
        {"not there", "abc", "x", "y", 0, "abc"},
        {"empty old text", "abc", "", "y", 0, "abc"},
        {"result is not looked at again", "aaa", "a", "aa", 3, "aaaaaa"},
        {"trail byte stays", "\xD5\x5C\\", "\\", "/", 1, "\xD5\x5C/"},
        {"double-byte", "库存库", "库", "仓", 2, "仓存仓"},
        {"across characters is no match", "\xB0\xA1\xB0\xA1", "\xA1\xB0", "x", 0, "\xB0\xA1\xB0\xA1"},
        {"whole text", "abc", "abc", "", 1, ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CString text(row.text);
        EXPECT_EQ(text.Replace(row.from, row.to), row.count);
        EXPECT_STREQ(text, row.result);
    }
    CString text("abc");
    EXPECT_EQ(text.Replace(nullptr, "x"), 0);
    EXPECT_EQ(text.Replace("b", nullptr), 1);
    EXPECT_STREQ(text, "ac");
}

TEST(StringReplace, ReplacesSingleBytes) {
    CString text = CString("A") + kEndsInUpperA + "A";
    EXPECT_EQ(text.Replace('A', 'B'), 2);
    EXPECT_STREQ(text, CString("B") + kEndsInUpperA + "B");
    EXPECT_EQ(text.Replace('B', 'B'), 0);
    EXPECT_EQ(text.Replace('z', 'y'), 0);
}

TEST(StringRemove, TakesOutSingleBytes) {
    CString text = CString("|a|") + kEndsInBar + "|";
    EXPECT_EQ(text.Remove('|'), 3);
    EXPECT_STREQ(text, CString("a") + kEndsInBar);
    EXPECT_EQ(text.Remove('|'), 0);
    EXPECT_EQ(text.Remove('\0'), 0);
}

TEST(StringInsert, AnswersWithTheNewLength) {
    CString text("bd");
    EXPECT_EQ(text.Insert(1, 'c'), 3);
    EXPECT_EQ(text.Insert(0, "a"), 4);
    EXPECT_EQ(text.Insert(100, "e"), 5);
    EXPECT_EQ(text.Insert(-1, "_"), 6);
    EXPECT_STREQ(text, "_abcde");
    EXPECT_EQ(text.Insert(0, static_cast<const char*>(nullptr)), 6);
    EXPECT_EQ(text.Insert(3, CString('x', 50)), 56);
    EXPECT_STREQ(text, "_ab" + CString('x', 50) + "cde");
}

TEST(StringDelete, AnswersWithTheNewLength) {
    CString text("0123456789");
    EXPECT_EQ(text.Delete(0), 9);
    EXPECT_EQ(text.Delete(3, 2), 7);
    EXPECT_STREQ(text, "1236789");
    EXPECT_EQ(text.Delete(5, 100), 5);
    EXPECT_EQ(text.Delete(5, 1), 5);
    EXPECT_EQ(text.Delete(100, 1), 5);
    EXPECT_EQ(text.Delete(0, 0), 5);
    EXPECT_EQ(text.Delete(0, -1), 5);
    EXPECT_STREQ(text, "12367");
}

}  // namespace
