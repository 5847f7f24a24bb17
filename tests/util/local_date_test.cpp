#include <afxdisp.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tkkernel/util.h"
#include "util/values.h"

namespace {

using namespace tk::test;

struct Bytes4 {
    int year;
    int month;
    int day;
    int hour;
    bool operator==(const Bytes4&) const = default;
};

void PrintTo(const Bytes4& bytes, std::ostream* out) {
    *out << bytes.year << ", " << bytes.month << ", " << bytes.day << ", " << bytes.hour;
}

int Signed(char byte) {
    return static_cast<signed char>(byte);
}

Bytes4 Local(const Bytes4& bytes) {
    char year = static_cast<char>(bytes.year);
    char month = static_cast<char>(bytes.month);
    char day = static_cast<char>(bytes.day);
    char hour = static_cast<char>(bytes.hour);
    GetLocalDate(&year, &month, &day, &hour);
    return {Signed(year), Signed(month), Signed(day), Signed(hour)};
}

TEST(GetLocalDateOfBytes, IsEightHoursAhead) {
    const struct {
        const char* label;
        Bytes4 universal;
        Bytes4 local;
    } kRows[] = {
        {"same day", {7, 1, 15, 10}, {7, 1, 15, 18}},
        {"last hour of the day", {7, 1, 15, 15}, {7, 1, 15, 23}},
        {"next day", {7, 1, 15, 16}, {7, 1, 16, 0}},
        {"first hour is left alone", {7, 1, 15, 0}, {7, 1, 15, 0}},
        {"second hour", {7, 1, 15, 1}, {7, 1, 15, 9}},
        {"the day wraps, the month stays", {7, 1, 31, 20}, {7, 1, 1, 4}},
        {"thirty days", {7, 4, 30, 16}, {7, 4, 1, 0}},
        {"thirty of thirty-one days", {7, 5, 30, 16}, {7, 5, 31, 0}},
        {"February", {7, 2, 28, 20}, {7, 2, 1, 4}},
        {"February of a leap year", {8, 2, 28, 20}, {8, 2, 29, 4}},
        {"29 February", {8, 2, 29, 20}, {8, 2, 1, 4}},
        {"2100 is no leap year", {100, 2, 28, 20}, {100, 2, 1, 4}},
        {"2000 is one", {0, 2, 28, 20}, {0, 2, 29, 4}},
        {"1900 is none", {-100, 2, 28, 20}, {-100, 2, 1, 4}},
        {"December goes on to January", {7, 12, 31, 20}, {8, 1, 1, 4}},
        {"the year wraps around", {127, 12, 31, 20}, {-128, 1, 1, 4}},
        {"before 2000", {-1, 12, 31, 23}, {0, 1, 1, 7}},
        {"no day", {7, 1, 0, 20}, {7, 1, 0, 20}},
        {"no month", {7, 0, 15, 20}, {7, 0, 15, 20}},
        {"month 13 is none", {7, 13, 15, 20}, {7, 0, 15, 20}},
        {"month 14 is the first", {7, 14, 15, 20}, {7, 1, 16, 4}},
        {"day 32 is none", {7, 1, 32, 20}, {7, 1, 0, 20}},
        {"day 33 is the first", {7, 1, 33, 20}, {7, 1, 2, 4}},
        {"hour 24 is none", {7, 1, 15, 24}, {7, 1, 15, 0}},
        {"hour 25 is the first", {7, 1, 15, 25}, {7, 1, 15, 9}},
        {"a day that the month does not have", {7, 2, 30, 1}, {7, 2, 2, 9}},
        {"negative remainders are stored and stay", {7, -14, -33, -25}, {7, -1, -1, -1}},
        {"one negative is enough", {7, 1, 15, -1}, {7, 1, 15, -1}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Local(row.universal), row.local);
    }
}

TEST(GetLocalDateOfBytes, LeavesEverythingWhenAPointerIsNull) {
    char bytes[] = {7, 1, 15, 20};
    GetLocalDate(nullptr, &bytes[1], &bytes[2], &bytes[3]);
    GetLocalDate(&bytes[0], nullptr, &bytes[2], &bytes[3]);
    GetLocalDate(&bytes[0], &bytes[1], nullptr, &bytes[3]);
    GetLocalDate(&bytes[0], &bytes[1], &bytes[2], nullptr);
    EXPECT_EQ(std::string(bytes, 4), std::string("\7\1\17\24", 4));
}

/// The rule as it is worded, on signed bytes.
Bytes4 Shifted(Bytes4 at) {
    int days[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    at.month %= 13;
    at.day %= 32;
    at.hour %= 24;
    if (at.month == 0 || at.day == 0 || at.hour == 0) return at;
    if (at.month < 0 || at.day < 0 || at.hour < 0) return at;
    const int year = 2000 + at.year;
    if ((year % 4 == 0 && year % 100 != 0) || year % 400 == 0) days[2] = 29;
    at.hour += 8;
    if (at.hour >= 24) {
        at.hour %= 24;
        at.day += 1;
    }
    if (at.day > days[at.month]) {
        if (at.month < 12) {
            at.day -= days[at.month];
        } else {
            at.day -= 31;
            at.month = 1;
            at.year = static_cast<signed char>(at.year + 1);
        }
    }
    return at;
}

TEST(GetLocalDateOfBytes, AgreesWithTheRuleOnAllBytes) {
    for (const int year : {-128, -100, -1, 0, 4, 7, 100, 127}) {
        for (int month = -16; month <= 28; ++month) {
            for (int day = -34; day <= 66; ++day) {
                for (int hour = -26; hour <= 50; ++hour) {
                    const Bytes4 bytes = {year, month, day, hour};
                    ASSERT_EQ(Local(bytes), Shifted(bytes));
                }
            }
        }
    }
    for (int byte = -128; byte <= 127; ++byte) {
        for (const Bytes4& bytes :
             {Bytes4{byte, 12, 31, 20}, Bytes4{7, byte, 31, 20}, Bytes4{7, 2, byte, 20}, Bytes4{7, 12, 31, byte}})
            ASSERT_EQ(Local(bytes), Shifted(bytes));
    }
}

CString Text(const COleDateTime& date) {
    return date.Format("%Y-%m-%d %H:%M:%S");
}

TEST(GetLocalDateOfText, IsEightHoursAhead) {
    const struct {
        const char* universal;
        const char* local;
    } kRows[] = {
        {"2007-01-15 10:20:30", "2007-01-15 18:20:30"},
        {"2007-01-15 16:20:30", "2007-01-16 00:20:30"},
        {"2007-01-15 00:20:30", "2007-01-15 00:20:30"},  // the first hour is left alone
        {"2007-01-15", "2007-01-15 00:00:00"},
        {"2007-01-31 20:00:00", "2007-01-01 04:00:00"},  // the month stays
        {"2008-02-28 20:00:00", "2008-02-29 04:00:00"},
        {"2007-12-31 20:00:00", "2008-01-01 04:00:00"},
        {"1999-12-31 23:59:59", "2000-01-01 07:59:59"},
        {"1850-12-31 23:59:59", "1851-01-01 07:59:59"},  // the year is no byte here
        {"2250-12-31 23:59:59", "2251-01-01 07:59:59"},
        {"2200-02-28 20:00:00", "2200-02-01 04:00:00"},  // no leap year
        {"2007/1/15 9:08", "2007-01-15 17:08:00"},
        {"13:05:09", "1899-12-30 21:05:09"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.universal);
        const COleDateTime date = GetLocalDate(row.universal);
        EXPECT_EQ(date.GetStatus(), COleDateTime::valid);
        EXPECT_STREQ(Text(date), row.local);
    }
}

TEST(GetLocalDateOfText, GivesTheZeroDateForATextThatIsNone) {
    for (const char* text : {"", "abc", "2007-13-45", "2007-02-29", "2007-01-32", "25:00", "2007-01-15 24:00", "\xD6",
                             "2007-01-15 10:00 \x81"}) {
        SCOPED_TRACE(text);
        const COleDateTime date = GetLocalDate(text);
        EXPECT_EQ(date.GetStatus(), COleDateTime::valid);
        EXPECT_EQ(date.m_dt, 0.0);
    }
    EXPECT_EQ(GetLocalDate(static_cast<const char*>(nullptr)).m_dt, 0.0);
}

TEST(GetLocalDateOfText, HasNoDateBehindTheLastYear) {
    const COleDateTime date = GetLocalDate("9999-12-31 16:00:00");
    EXPECT_EQ(date.GetStatus(), COleDateTime::invalid);
    EXPECT_EQ(date.m_dt, 0.0);
}

TEST(GetLocalDateOfDate, IsEightHoursAhead) {
    COleDateTime date(2007, 12, 31, 20, 5, 9);
    EXPECT_STREQ(Text(GetLocalDate(&date)), "2008-01-01 04:05:09");
    EXPECT_STREQ(Text(date), "2007-12-31 20:05:09");
    date = COleDateTime(2007, 1, 31, 20, 0, 0);
    EXPECT_STREQ(Text(GetLocalDate(&date)), "2007-01-01 04:00:00");
    date = COleDateTime(2007, 1, 31, 0, 30, 0);
    EXPECT_STREQ(Text(GetLocalDate(&date)), "2007-01-31 00:30:00");
}

TEST(GetLocalDateOfDate, GivesTheZeroDateForNoDate) {
    EXPECT_EQ(GetLocalDate(static_cast<COleDateTime*>(nullptr)).m_dt, 0.0);
    COleDateTime date(2007, 2, 29, 0, 0, 0);
    ASSERT_EQ(date.GetStatus(), COleDateTime::invalid);
    EXPECT_EQ(GetLocalDate(&date).m_dt, 0.0);
    EXPECT_EQ(GetLocalDate(&date).GetStatus(), COleDateTime::valid);
    date = COleDateTime(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(GetLocalDate(&date).m_dt, 0.0);
    date = COleDateTime(2007, 1, 31, 20, 0, 0);
    date.SetStatus(COleDateTime::null);
    EXPECT_EQ(GetLocalDate(&date).m_dt, 0.0);
}

TEST(StringToDate, ReadsADate) {
    const struct {
        const char* text;
        const char* date;
    } kRows[] = {
        {"2007-09-29 08:05:03", "2007-09-29 08:05:03"}, {"2007-9-29", "2007-09-29 00:00:00"},
        {"2007/9/29 8:05", "2007-09-29 08:05:00"},      {"2004-02-29", "2004-02-29 00:00:00"},
        {"1899-12-30", "1899-12-30 00:00:00"},          {"1850-06-01 06:00:00", "1850-06-01 06:00:00"},
        {"9999-12-31 23:59:59", "9999-12-31 23:59:59"}, {"13:05:09", "1899-12-30 13:05:09"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_STREQ(Text(COleDateTime(StringToDate(row.text))), row.date);
    }
    EXPECT_EQ(StringToDate("1899-12-31 12:00:00"), 1.5);
    EXPECT_EQ(StringToDate("1899-12-29 06:00:00"), -1.25);
}

TEST(StringToDate, ReadsAsTheSystemsOwnLocaleDoes) {
    COleDateTime date;
    ASSERT_TRUE(date.ParseDateTime("1/2/03", 0, 0x400));  // 2001-02-03 where the year comes first
    EXPECT_EQ(StringToDate("1/2/03"), date.m_dt);
}

TEST(StringToDate, GivesZeroForATextThatIsNoDate) {
    // Not among them: a month of 13, which some platforms take for the day.
    for (const char* text : {"", " ", "abc", "2007-02-29", "1900-02-29", "2007-01-32", "2007-04-31",
                             "2007-01-15 24:00:00", "2007-01-15 10:60:00", "10000-01-01", "-", "\xD6", "二月"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StringToDate(text), 0.0);
    }
    EXPECT_EQ(StringToDate(nullptr), 0.0);
}

}  // namespace
