#include <afxdisp.h>
#include <gtest/gtest.h>

#include <string>

#include "tkkernel/util.h"
#include "util/values.h"

namespace {

using namespace tk::test;

/// Calls until no second passes between the two answers, so that they are of the same moment.
template <class Ask>
void ExpectNow(const char* format, Ask ask, const std::string& before = "", const std::string& behind = "") {
    for (int attempt = 0; attempt < 10; ++attempt) {
        const COleDateTime first = COleDateTime::GetCurrentTime();
        const std::string text = Std(ask());
        if (COleDateTime::GetCurrentTime() != first) continue;
        EXPECT_EQ(text, before + Std(first.Format(format)) + behind);
        return;
    }
    ADD_FAILURE() << "every second passed in the middle";
}

TEST(GetCurDate, PrintsTheLocalTime) {
    for (const char* format :
         {"%Y-%m-%d %H:%M:%S", "%y%m%d", "%H时%M分", "%A %B %j %U %p %I", "100%%", "%", "%Q", "no code", ""})
        ExpectNow(format, [&] { return GetCurDate(format); });
    EXPECT_STREQ(GetCurDate(nullptr), "");
    EXPECT_STREQ(GetCurDate(""), "");
    EXPECT_STREQ(GetCurDate("今天"), "今天");
    EXPECT_STREQ(GetCurDate("100%%"), "100%");
    EXPECT_STREQ(GetCurDate("%"), "%");
}

TEST(GetDateString, QuotesAText) {
    const struct {
        const char* text;
        int oracle;
        const char* literal;
    } kRows[] = {
        {"2007-01-02 03:04:05", 1, "TO_DATE('2007-01-02 03:04:05','YYYY-MM-DD HH24:MI:SS')"},
        {"2007-01-02 03:04:05", -1, "TO_DATE('2007-01-02 03:04:05','YYYY-MM-DD HH24:MI:SS')"},
        {"2007-01-02", 0, "'2007-01-02'"},
        {"二〇〇七年", 0, "'二〇〇七年'"},
        {"it's", 0, "'it's'"},
        {" ", 0, "' '"},
        {"", 0, ""},
        {"", 1, ""},
        {nullptr, 0, ""},
        {nullptr, 1, ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text == nullptr ? "null" : row.text);
        EXPECT_STREQ(GetDateString(row.text, row.oracle), row.literal);
    }
}

TEST(GetDateString, TakesATextWithAPercentSignForAFormatOfTheCurrentTime) {
    ExpectNow(
        "%Y-%m-%d", [] { return GetDateString("%Y-%m-%d", 0); }, "'", "'");
    ExpectNow(
        "%Y-%m-%d %H:%M:%S", [] { return GetDateString("%Y-%m-%d %H:%M:%S", 1); }, "TO_DATE('",
        "','YYYY-MM-DD HH24:MI:SS')");
    EXPECT_STREQ(GetDateString("5%", 0), "'5%'");
    // Wherever the percent sign stands.
    ExpectNow(
        "at %Y", [] { return GetDateString("at %Y", 0); }, "'", "'");
}

TEST(GetDateString, CutsAtSixtyThreeBytesBehindAWholeCharacter) {
    EXPECT_EQ(Std(GetDateString(std::string(61, 'x').c_str(), 0)), "'" + std::string(61, 'x') + "'");
    EXPECT_EQ(Std(GetDateString(std::string(62, 'x').c_str(), 0)), "'" + std::string(62, 'x'));
    EXPECT_EQ(Std(GetDateString(std::string(5000, 'x').c_str(), 0)), "'" + std::string(62, 'x'));
    EXPECT_EQ(Std(GetDateString((std::string(61, 'x') + "年").c_str(), 0)), "'" + std::string(61, 'x'));
    EXPECT_EQ(Std(GetDateString((std::string(60, 'x') + "年").c_str(), 0)), "'" + std::string(60, 'x') + "年");
    EXPECT_EQ(Std(GetDateString(std::string(28, '1').c_str(), 1)),
              "TO_DATE('" + std::string(28, '1') + "','YYYY-MM-DD HH24:MI:SS')");
    EXPECT_EQ(Std(GetDateString(std::string(29, '1').c_str(), 1)),
              "TO_DATE('" + std::string(29, '1') + "','YYYY-MM-DD HH24:MI:SS'");
}

}  // namespace
