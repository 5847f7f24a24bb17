#include <afxdisp.h>
#include <gtest/gtest.h>

#include <ctime>

namespace {

TEST(DateTimeFormat, KnowsTheLetters) {
    const COleDateTime date(2003, 7, 4, 13, 5, 9);
    static const struct {
        const char* format;
        const char* text;
    } kRows[] = {
        {"%Y-%m-%d %H:%M:%S", "2003-07-04 13:05:09"},
        {"%y %j %U %W %w", "03 185 26 26 5"},
        {"%I:%M %p", "01:05 PM"},
        {"%a %A %b %B", "Fri Friday Jul July"},
        {"%c|%x|%X", "07/04/03 13:05:09|07/04/03|13:05:09"},
        {"%#d/%#m %#H:%#M:%#S %#j", "4/7 13:5:9 185"},
        {"%#x", "Friday, July 04, 2003"},
        {"%%%Y年%m月%d日", "%2003年07月04日"},
        {"%q %#", "%q %#"},
        {"100%", "100%"},
        {"", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(date.Format(row.format), row.text);
    }
    EXPECT_STREQ(date.Format(static_cast<LPCTSTR>(nullptr)), "");
    EXPECT_STREQ(COleDateTime(2003, 7, 4, 0, 0, 0).Format("%I %p"), "12 AM");
    EXPECT_STREQ(COleDateTime(2003, 7, 4, 12, 0, 0).Format("%I %p"), "12 PM");
    EXPECT_STREQ(COleDateTime(814, 1, 28, 0, 0, 0).Format("%Y"), "0814");
}

TEST(DateTimeFormat, CountsWeeksAsTheCLibraryDoes) {
    for (int year : {1999, 2000, 2001, 2003, 2004}) {
        for (int day = 0; day < 366; ++day) {
            const COleDateTime date = COleDateTime(year, 1, 1, 0, 0, 0) + COleDateTimeSpan(static_cast<double>(day));
            std::tm parts = {};
            parts.tm_year = date.GetYear() - 1900;
            parts.tm_mon = date.GetMonth() - 1;
            parts.tm_mday = date.GetDay();
            parts.tm_wday = date.GetDayOfWeek() - 1;
            parts.tm_yday = date.GetDayOfYear() - 1;
            char expected[32];
            std::strftime(expected, sizeof(expected), "%U %W %w %j", &parts);
            ASSERT_STREQ(date.Format("%U %W %w %j"), expected);
        }
    }
}

TEST(DateTimeFormat, IgnoresTheLocaleAndKeepsChineseText) {
    EXPECT_STREQ(COleDateTime(2003, 7, 4, 0, 0, 0).Format("日期：%Y"), "日期：2003");
}

TEST(DateTimeFormat, HasTheLocalesForm) {
    const COleDateTime date(2003, 7, 4, 13, 5, 9);
    EXPECT_STREQ(date.Format(VAR_DATEVALUEONLY, 0x804), "2003/7/4");
    EXPECT_STREQ(date.Format(VAR_TIMEVALUEONLY, 0x804), "13:05:09");
    EXPECT_STREQ(date.Format(0, 0x409), "7/4/2003 1:05:09 PM");
}

TEST(DateTimeFormat, SaysWhatIsNoDate) {
    COleDateTime date(99, 1, 1, 0, 0, 0);
    EXPECT_STREQ(date.Format("%Y"), "Invalid DateTime");
    EXPECT_STREQ(date.Format(), "Invalid DateTime");
    date.SetStatus(COleDateTime::null);
    EXPECT_STREQ(date.Format("%Y"), "");
    EXPECT_STREQ(date.Format(), "");
}

}  // namespace
