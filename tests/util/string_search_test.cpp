#include <gtest/gtest.h>

#include "tkkernel/util.h"

namespace {

TEST(FindStringPos, FindsTheFirstOccurrence) {
    const struct {
        const char* label;
        const char* pattern;
        const char* text;
        int position;
    } kRows[] = {
        {"middle", "bc", "abcbc", 1},        {"start", "ab", "abc", 0},       {"whole", "abc", "abc", 0},
        {"absent", "x", "abc", -1},          {"longer", "abcd", "abc", -1},   {"case counts", "B", "abc", -1},
        {"empty text", "a", "", -1},         {"null text", "a", nullptr, -1}, {"empty pattern", "", "abc", 0},
        {"null pattern", nullptr, "abc", 0}, {"both empty", "", "", 0},       {"Chinese", "存", "库存", 2},
        {"by bytes", "|", "\x81|", 1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(FindStringPos(row.pattern, row.text), row.position);
    }
}

TEST(FindStringNoCase, TakesTheTextFirst) {
    const struct {
        const char* label;
        const char* text;
        const char* pattern;
        int position;
    } kRows[] = {
        {"upper in lower", "select * from", "FROM", 9},
        {"lower in upper", "SELECT", "lect", 2},
        {"absent", "abc", "x", -1},
        {"empty pattern", "abc", "", -1},
        {"null pattern", "abc", nullptr, -1},
        {"empty text", "", "a", -1},
        {"null text", nullptr, "a", -1},
        {"both null", nullptr, nullptr, -1},
        {"Chinese around", "库ABC存", "abc存", 2},
        {"a second byte is no letter", "\x81\x41", "\x81\x61", -1},
        {"full-width letters have case", "库ＡＢ", "ａｂ", 2},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(FindStringNoCase(row.text, row.pattern), row.position);
    }
}

TEST(FindString, GivesTheTextBefore) {
    const struct {
        const char* label;
        const char* pattern;
        const char* text;
        const char* before;
    } kRows[] = {
        {"middle", "=", "key=value=x", "key"}, {"start", "k", "key", ""},      {"absent", "x", "key", ""},
        {"empty pattern", "", "key", ""},      {"null", nullptr, nullptr, ""}, {"Chinese", "存", "库存", "库"},
        {"by bytes", "|", "\x81|", "\x81"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(FindString(row.pattern, row.text), row.before);
    }
}

struct UnitRow {
    const char* label;
    const char* head;
    const char* text;
    const char* tail;
    const char* unit;
    int position;
};

constexpr UnitRow kUnits[] = {
    {"between", "<", "a<b>c", ">", "b", 4},
    {"empty between", "<", "a<>c", ">", "", 3},
    {"the first tail after the head", "<", ">a<b>c>", ">", "b", 5},
    {"long marks", "<td>", "x<td>y</td>z", "</td>", "y", 11},
    {"head missing", "<", "a>b", ">", "", -1},
    {"tail missing", "<", "a<b", ">", "", 2},
    {"tail only before the head", "<", "a>b<c", ">", "", 4},
    {"both missing", "<", "abc", ">", "", -1},
    {"empty head starts at the beginning", "", "key=value", "=", "key", 4},
    {"null head starts at the beginning", nullptr, "key=value", "=", "key", 4},
    {"empty head without the tail", "", "abc", "=", "", 0},
    {"empty tail goes to the end", "=", "key=value", "", "value", 9},
    {"null tail goes to the end", "=", "key=value", nullptr, "value", 9},
    {"empty tail without the head", "=", "abc", "", "", -1},
    {"no marks at all", "", "abc", "", "abc", 3},
    {"head equals tail", "'", "a'b'c", "'", "b", 4},
    {"head at the very end", "=", "key=", ";", "", 4},
    {"empty text", "<", "", ">", "", -1},
    {"null text", "<", nullptr, ">", "", -1},
    {"null text, no marks", nullptr, nullptr, nullptr, "", 0},
    {"Chinese", "【", "库【存】量", "】", "存", 8},
    {"by bytes", "|", "\x81|x;", ";", "x", 4},
};

TEST(GetUnit, CutsBetweenHeadAndTail) {
    for (const auto& row : kUnits) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(GetUnit(row.head, row.text, row.tail), row.unit);
    }
}

TEST(GetUnitPos, TellsWhereToGoOn) {
    for (const auto& row : kUnits) {
        SCOPED_TRACE(row.label);
        int position = 12345;
        EXPECT_STREQ(GetUnitPos(row.head, row.text, row.tail, position), row.unit);
        EXPECT_EQ(position, row.position);
    }
}

TEST(GetUnitPos, LetsALoopGoOn) {
    CString text("[a][b][c]");
    CString units;
    int position = 0;
    for (;;) {
        const CString unit = GetUnitPos("[", text, "]", position);
        if (position < 0) break;
        units += unit;
        text = text.Mid(position);
    }
    EXPECT_STREQ(units, "abc");
}

TEST(GetUnitNoCase, IgnoresCaseAndKeepsThatOfTheText) {
    for (const auto& row : kUnits) {
        SCOPED_TRACE(row.label);
        int position = 12345;
        EXPECT_STREQ(GetUnitNoCase(row.head, row.text, row.tail, position), row.unit);
        EXPECT_EQ(position, row.position);
    }
    int position = 0;
    EXPECT_STREQ(GetUnitNoCase("SELECT ", "select Name From Stock", " FROM", position), "Name");
    EXPECT_EQ(position, 16);
    EXPECT_STREQ(GetUnitNoCase("从", "取从Name到", "到", position), "Name");
    EXPECT_STREQ(GetUnitNoCase("Ａ", "xａ1Ｂ", "ｂ", position), "1");
    EXPECT_EQ(position, 6);
    EXPECT_STREQ(GetUnitNoCase("\x81\x61", "x\x81\x41y;", ";", position), "") << "a second byte is no letter";
    EXPECT_EQ(position, -1);
}

TEST(GetSubString, CutsBesideAMark) {
    const struct {
        const char* label;
        const char* mark;
        const char* text;
        int before;
        int count;
        const char* result;
    } kRows[] = {
        {"last two before", "=", "abc=xyz", 1, 2, "bc"},
        {"all before", "=", "abc=xyz", 1, -1, "abc"},
        {"more than there is before", "=", "abc=xyz", 1, 9, "abc"},
        {"none before", "=", "abc=xyz", 1, 0, ""},
        {"nothing before", "=", "=xyz", 1, 2, ""},
        {"any nonzero is before", "=", "abc=xyz", -7, 1, "c"},
        {"first two after", "=", "abc=xyz", 0, 2, "xy"},
        {"all after", "=", "abc=xyz", 0, -1, "xyz"},
        {"more than there is after", "=", "abc=xyz", 0, 9, "xyz"},
        {"none after", "=", "abc=xyz", 0, 0, ""},
        {"nothing after", "=", "abc=", 0, 2, ""},
        {"first mark counts", "=", "a=b=c", 0, -1, "b=c"},
        {"long mark", "::", "a::b", 0, -1, "b"},
        {"absent", "x", "abc", 1, -1, ""},
        {"empty text", "=", "", 0, -1, ""},
        {"null text", "=", nullptr, 0, -1, ""},
        {"empty mark, after", "", "abc", 0, 2, "ab"},
        {"null mark, before", nullptr, "abc", 1, 2, ""},
        {"by bytes", "|", "\x81|x", 0, -1, "x"},
        {"a count is one of bytes, before", "=", "库=存", 1, 1, "\xE2"},
        {"a count is one of bytes, after", "=", "库=存", 0, 1, "\xB4"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(GetSubString(row.mark, row.text, row.before, row.count), row.result);
    }
}

}  // namespace
