#include <afxdisp.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "afx/date_line.h"

namespace {

TEST(DateTime, CountsDaysFromTheEndOf1899) {
    static const struct {
        const char* label;
        int year, month, day, hour, minute, second;
        double date;
    } kRows[] = {
        {"day 0", 1899, 12, 30, 0, 0, 0, 0.0},           {"noon of day 0", 1899, 12, 30, 12, 0, 0, 0.5},
        {"the day before", 1899, 12, 29, 0, 0, 0, -1.0}, {"the morning before", 1899, 12, 29, 6, 0, 0, -1.25},
        {"1 January 1900", 1900, 1, 1, 0, 0, 0, 2.0},    {"28 February 1900", 1900, 2, 28, 0, 0, 0, 60.0},
        {"1 March 1900", 1900, 3, 1, 0, 0, 0, 61.0},     {"leap day", 2000, 2, 29, 0, 0, 0, 36585.0},
        {"a summer day", 2003, 7, 4, 12, 0, 0, 37806.5}, {"first day", 100, 1, 1, 0, 0, 0, -657434.0},
        {"last day", 9999, 12, 31, 0, 0, 0, 2958465.0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const COleDateTime date(row.year, row.month, row.day, row.hour, row.minute, row.second);
        EXPECT_EQ(date.GetStatus(), COleDateTime::valid);
        EXPECT_EQ(static_cast<DATE>(date), row.date);
        EXPECT_EQ(date.GetYear(), row.year);
        EXPECT_EQ(date.GetMonth(), row.month);
        EXPECT_EQ(date.GetDay(), row.day);
        EXPECT_EQ(date.GetHour(), row.hour);
        EXPECT_EQ(date.GetMinute(), row.minute);
        EXPECT_EQ(date.GetSecond(), row.second);
    }
}

TEST(DateTime, GivesEverySecondOfADayBack) {
    for (int day : {-1, 1}) {
        for (int second = 0; second < 86400; second += 7) {
            const COleDateTime date(1899, 12, 30 + day, second / 3600, second / 60 % 60, second % 60);
            ASSERT_EQ(date.GetHour() * 3600 + date.GetMinute() * 60 + date.GetSecond(), second);
        }
    }
}

TEST(DateTime, KnowsTheDayOfTheWeekAndTheYear) {
    EXPECT_EQ(COleDateTime(2003, 7, 4, 0, 0, 0).GetDayOfWeek(), 6) << "a Friday";
    EXPECT_EQ(COleDateTime(1899, 12, 30, 0, 0, 0).GetDayOfWeek(), 7) << "a Saturday";
    EXPECT_EQ(COleDateTime(1899, 12, 29, 23, 0, 0).GetDayOfWeek(), 6);
    EXPECT_EQ(COleDateTime(2003, 1, 1, 0, 0, 0).GetDayOfYear(), 1);
    EXPECT_EQ(COleDateTime(2003, 12, 31, 0, 0, 0).GetDayOfYear(), 365);
    EXPECT_EQ(COleDateTime(2004, 12, 31, 0, 0, 0).GetDayOfYear(), 366);
    EXPECT_EQ(COleDateTime(2004, 3, 1, 0, 0, 0).GetDayOfYear(), 61);
}

TEST(DateTime, RefusesWhatIsNoDate) {
    static const int kRows[][6] = {{99, 1, 1, 0, 0, 0},    {10000, 1, 1, 0, 0, 0}, {2003, 0, 1, 0, 0, 0},
                                   {2003, 13, 1, 0, 0, 0}, {2003, 1, 0, 0, 0, 0},  {2003, 2, 29, 0, 0, 0},
                                   {1900, 2, 29, 0, 0, 0}, {2003, 4, 31, 0, 0, 0}, {2003, 1, 1, 24, 0, 0},
                                   {2003, 1, 1, -1, 0, 0}, {2003, 1, 1, 0, 60, 0}, {2003, 1, 1, 0, 0, 60}};
    for (const auto& row : kRows) {
        COleDateTime date(2003, 7, 4, 0, 0, 0);
        EXPECT_EQ(date.SetDateTime(row[0], row[1], row[2], row[3], row[4], row[5]), 1);
        EXPECT_EQ(date.GetStatus(), COleDateTime::invalid);
        EXPECT_EQ(date.m_dt, 0.0);
        EXPECT_EQ(date.GetYear(), -1);
        EXPECT_EQ(date.GetSecond(), -1);
        EXPECT_EQ(date.GetDayOfWeek(), -1);
        EXPECT_EQ(date.GetDayOfYear(), -1);
        SYSTEMTIME parts;
        EXPECT_FALSE(date.GetAsSystemTime(parts));
    }
    for (double date : {-657435.0, 2958466.0, 1e300, -1e300, std::nan("")}) {
        EXPECT_EQ(COleDateTime(date).GetStatus(), COleDateTime::invalid);
    }
    EXPECT_EQ(COleDateTime(2958465.99).GetStatus(), COleDateTime::valid);
    EXPECT_EQ(COleDateTime(-657434.5).GetStatus(), COleDateTime::valid);
}

TEST(DateTime, SetsDayOrTimeAlone) {
    COleDateTime date(2003, 7, 4, 13, 5, 9);
    EXPECT_EQ(date.SetDate(2004, 2, 29), 0);
    EXPECT_EQ(date.m_dt, 38046.0);
    EXPECT_EQ(date.SetTime(6, 0, 0), 0);
    EXPECT_EQ(date.m_dt, 0.25);
    EXPECT_EQ(date.SetTime(24, 0, 0), 1);
}

TEST(DateTime, ComesFromOtherForms) {
    SYSTEMTIME parts = {};
    parts.wYear = 2003;
    parts.wMonth = 7;
    parts.wDay = 4;
    parts.wHour = 12;
    EXPECT_EQ(COleDateTime(parts).m_dt, 37806.5);
    parts.wMonth = 13;
    EXPECT_EQ(COleDateTime(parts).GetStatus(), COleDateTime::invalid);
    EXPECT_EQ(COleDateTime(static_cast<WORD>((23 << 9) | (7 << 5) | 4), static_cast<WORD>(12 << 11)).m_dt, 37806.5);
    EXPECT_EQ(COleDateTime(COleVariant(37806.5)).m_dt, 37806.5);
    EXPECT_EQ(COleDateTime(COleVariant(COleDateTime(37806.5))).m_dt, 37806.5);
    EXPECT_EQ(COleDateTime(COleVariant("2003-7-4 12:00:00")).m_dt, 37806.5);
    EXPECT_EQ(COleDateTime(COleVariant("no date")).GetStatus(), COleDateTime::invalid);
    EXPECT_EQ(COleDateTime(COleVariant()).GetStatus(), COleDateTime::null);
    VARIANT null;
    null.vt = VT_NULL;
    EXPECT_EQ(COleDateTime(null).GetStatus(), COleDateTime::null);
}

TEST(DateTime, ComesFromSecondsInLocalTime) {
    const std::time_t kMoment = 1057323909;
    std::tm local = *std::localtime(&kMoment);
    const COleDateTime date(kMoment);
    EXPECT_EQ(date.GetYear(), local.tm_year + 1900);
    EXPECT_EQ(date.GetDay(), local.tm_mday);
    EXPECT_EQ(date.GetHour(), local.tm_hour);
    EXPECT_EQ(date.GetMinute(), local.tm_min);
    EXPECT_EQ(date.GetSecond(), local.tm_sec);
    EXPECT_EQ(COleDateTime(static_cast<std::time_t>(-1)).GetStatus(), COleDateTime::invalid);
    const FILETIME tooLate = {0xFFFFFFFFu, 0xFFFFFFFFu};
    EXPECT_EQ(COleDateTime(tooLate).GetStatus(), COleDateTime::invalid);
}

TEST(DateTime, KnowsTheCurrentTime) {
    SYSTEMTIME before;
    GetLocalTime(&before);
    const COleDateTime now = COleDateTime::GetCurrentTime();
    const COleDateTimeSpan passed = now - COleDateTime(before);
    EXPECT_GE(passed.GetTotalSeconds(), -1e-3);
    EXPECT_LT(passed.GetTotalSeconds(), 60);
}

TEST(DateTime, ParsesTextsOfAChineseSystem) {
    COleDateTime date;
    EXPECT_TRUE(date.ParseDateTime("2003-7-4 12:00:00"));
    EXPECT_EQ(date.m_dt, 37806.5);
    EXPECT_TRUE(date.ParseDateTime("2003/7/4", 0, 0x804));
    EXPECT_EQ(date.m_dt, 37806.0);
    EXPECT_FALSE(date.ParseDateTime("no date"));
    EXPECT_EQ(date.GetStatus(), COleDateTime::invalid);
    EXPECT_FALSE(date.ParseDateTime(nullptr));
    EXPECT_FALSE(date.ParseDateTime(""));
}

TEST(DateTime, AddsOnTheLineOfTime) {
    const COleDateTimeSpan quarter(0, 6, 0, 0);
    EXPECT_EQ((COleDateTime(-1.25) + quarter).m_dt, -1.5) << "06:00 becomes 12:00";
    EXPECT_EQ((COleDateTime(-1.75) + quarter).m_dt, 0.0) << "18:00 becomes midnight of the next day";
    EXPECT_EQ((COleDateTime(0.0) - quarter).m_dt, -1.75);
    EXPECT_EQ((COleDateTime(0.5) - COleDateTime(-1.25)).GetTotalDays(), 1.25);
    COleDateTime date(2003, 12, 31, 23, 59, 59);
    date += COleDateTimeSpan(0, 0, 0, 1);
    EXPECT_EQ(date.GetYear(), 2004);
    EXPECT_EQ(date.GetDayOfYear(), 1);
    date -= COleDateTimeSpan(1, 0, 0, 0);
    EXPECT_EQ(date.GetDay(), 31);
    EXPECT_EQ((COleDateTime(9999, 12, 31, 0, 0, 0) + COleDateTimeSpan(1, 0, 0, 0)).GetStatus(), COleDateTime::invalid);
    COleDateTime null;
    null.SetStatus(COleDateTime::null);
    EXPECT_EQ((null + quarter).GetStatus(), COleDateTime::null);
    EXPECT_EQ((date - null).GetStatus(), COleDateTimeSpan::null);
    COleDateTime invalid(99, 1, 1, 0, 0, 0);
    EXPECT_EQ((invalid + quarter).GetStatus(), COleDateTime::invalid);
    EXPECT_EQ((invalid - date).GetStatus(), COleDateTimeSpan::invalid);
}

TEST(DateTime, ComparesOnTheLineOfTime) {
    const COleDateTime morning(-1.25);
    const COleDateTime evening(-1.75);
    EXPECT_TRUE(morning < evening);
    EXPECT_TRUE(evening > morning);
    EXPECT_TRUE(morning <= evening);
    EXPECT_FALSE(morning >= evening);
    EXPECT_TRUE(COleDateTime(-0.5) == COleDateTime(0.5)) << "both are noon of day 0";
    EXPECT_TRUE(morning != evening);
    COleDateTime null(0.0);
    null.SetStatus(COleDateTime::null);
    EXPECT_TRUE(null != COleDateTime(0.0));
}

TEST(DateLine, AndDatesAreInverse) {
    for (double line = -3; line <= 3; line += 0.125) {
        EXPECT_EQ(tk::afx::LineFromDate(tk::afx::DateFromLine(line)), line);
    }
}

}  // namespace
