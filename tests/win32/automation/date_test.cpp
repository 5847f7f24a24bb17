// DATE values, their parts, and their texts.
#include <cmath>
#include <ctime>
#include <limits>

#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

TEST(VariantTimeToSystemTime, AgreesWithCountingEveryDay) {
    // Day by day from the first to the last, by the rules of the calendar alone.
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int year = 100;
    int month = 1;
    int day = 1;
    int weekday = 5;  // 1 January 100 was a Friday
    int dayOfYear = 1;
    for (int number = VTDATEGRE_MIN; number <= VTDATEGRE_MAX; ++number) {
        UDATE parts{};
        ASSERT_EQ(VarUdateFromDate(number, 0, &parts), S_OK) << number;
        ASSERT_EQ(parts.st.wYear, year) << number;
        ASSERT_EQ(parts.st.wMonth, month) << number;
        ASSERT_EQ(parts.st.wDay, day) << number;
        ASSERT_EQ(parts.st.wDayOfWeek, weekday) << number;
        ASSERT_EQ(parts.wDayOfYear, dayOfYear) << number;
        double back = 0;
        ASSERT_EQ(SystemTimeToVariantTime(&parts.st, &back), 1) << number;
        ASSERT_EQ(back, number);
        const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        weekday = (weekday + 1) % 7;
        ++dayOfYear;
        if (++day > kDays[month - 1] + (month == 2 && leap ? 1 : 0)) {
            day = 1;
            if (++month > 12) {
                month = 1;
                ++year;
                dayOfYear = 1;
            }
        }
    }
    EXPECT_EQ(year, 10000);
}

TEST(VariantTimeToSystemTime, RoundTripsEverySecondOnBothSidesOfZero) {
    static constexpr int kDays[] = {37806, 0, -1, VTDATEGRE_MIN, VTDATEGRE_MAX};
    for (const int day : kDays) {
        for (int second = 0; second < 86400; second += 7) {
            const double time = second / 86400.0;
            const double date = day < 0 ? day - time : day + time;
            SYSTEMTIME parts{};
            ASSERT_EQ(VariantTimeToSystemTime(date, &parts), 1);
            ASSERT_EQ(parts.wHour * 3600 + parts.wMinute * 60 + parts.wSecond, second) << day;
            ASSERT_EQ(parts.wMilliseconds, 0);
            double back = 0;
            ASSERT_EQ(SystemTimeToVariantTime(&parts, &back), 1);
            ASSERT_EQ(back, date) << day << ' ' << second;
        }
    }
}

TEST(VariantTimeToSystemTime, TakesTheFractionWithoutItsSign) {
    SYSTEMTIME parts{};
    ASSERT_EQ(VariantTimeToSystemTime(-1.25, &parts), 1);
    EXPECT_EQ(parts.wYear, 1899);
    EXPECT_EQ(parts.wMonth, 12);
    EXPECT_EQ(parts.wDay, 29);
    EXPECT_EQ(parts.wHour, 6);
    ASSERT_EQ(VariantTimeToSystemTime(-0.5, &parts), 1);
    EXPECT_EQ(parts.wDay, 30);
    EXPECT_EQ(parts.wHour, 12);
}

TEST(VariantTimeToSystemTime, RoundsToTheSecond) {
    static constexpr struct {
        double seconds;
        int rounded;
    } kRows[] = {{0.4, 0}, {0.6, 1}, {59.6, 60}, {3599.7, 3600}, {43200.25, 43200}};
    for (const auto& row : kRows) {
        SYSTEMTIME parts{};
        ASSERT_EQ(VariantTimeToSystemTime(100 + row.seconds / 86400, &parts), 1);
        EXPECT_EQ(parts.wHour * 3600 + parts.wMinute * 60 + parts.wSecond, row.rounded);
    }
    SYSTEMTIME parts{};
    ASSERT_EQ(VariantTimeToSystemTime(37806 + 86399.75 / 86400, &parts), 1);  // into the next day
    EXPECT_EQ(parts.wDay, 5);
    EXPECT_EQ(parts.wHour, 0);
    ASSERT_EQ(VariantTimeToSystemTime(-2 - 86399.75 / 86400, &parts), 1);
    EXPECT_EQ(parts.wDay, 29);
    ASSERT_EQ(VariantTimeToSystemTime(VTDATEGRE_MAX + 86399.75 / 86400, &parts), 1);  // there is no next day
    EXPECT_EQ(parts.wYear, 9999);
    EXPECT_EQ(parts.wSecond, 59);
}

TEST(VariantTimeToSystemTime, RefusesWhatIsOutOfRange) {
    static constexpr double kDates[] = {-657435.0,
                                        2958466.0,
                                        1e300,
                                        -1e300,
                                        std::numeric_limits<double>::infinity(),
                                        std::numeric_limits<double>::quiet_NaN()};
    for (const double date : kDates) {
        SYSTEMTIME parts{};
        UDATE withDay{};
        USHORT dosDate = 0;
        USHORT dosTime = 0;
        BSTR text = nullptr;
        EXPECT_EQ(VariantTimeToSystemTime(date, &parts), 0) << date;
        EXPECT_EQ(VarUdateFromDate(date, 0, &withDay), E_INVALIDARG) << date;
        EXPECT_EQ(VariantTimeToDosDateTime(date, &dosDate, &dosTime), 0) << date;
        EXPECT_EQ(VarBstrFromDate(date, 0x0804, 0, &text), E_INVALIDARG) << date;
    }
    EXPECT_EQ(VariantTimeToSystemTime(0, nullptr), 0);
}

TEST(SystemTimeToVariantTime, MendsDaysButNothingElse) {
    static constexpr struct {
        const char* label;
        SYSTEMTIME time;  // year, month, weekday, day, hour, minute, second, milliseconds
        double date;      // NaN for a refusal
    } kRows[] = {
        {"plain", {2003, 7, 0, 4, 13, 5, 9, 0}, 37806 + (13 * 3600 + 5 * 60 + 9) / 86400.0},
        {"milliseconds go", {2003, 7, 0, 4, 0, 0, 0, 999}, 37806},
        {"29 February of no leap year", {2001, 2, 0, 29, 0, 0, 0, 0}, 36951},
        {"day 0", {2001, 2, 0, 0, 0, 0, 0, 0}, 36922},
        {"31 April", {2003, 4, 0, 31, 0, 0, 0, 0}, 37742},
        {"day 0 of the first month", {100, 1, 0, 0, 0, 0, 0, 0}, NAN},
        {"day 32", {2001, 1, 0, 32, 0, 0, 0, 0}, NAN},
        {"month 0", {2001, 0, 0, 1, 0, 0, 0, 0}, NAN},
        {"month 13", {2001, 13, 0, 1, 0, 0, 0, 0}, NAN},
        {"hour 24", {2001, 1, 0, 1, 24, 0, 0, 0}, NAN},
        {"minute 60", {2001, 1, 0, 1, 0, 60, 0, 0}, NAN},
        {"second 60", {2001, 1, 0, 1, 0, 0, 60, 0}, NAN},
        {"year 10000", {10000, 1, 0, 1, 0, 0, 0, 0}, NAN},
        {"year 29", {29, 1, 0, 1, 0, 0, 0, 0}, 47119},
        {"year 30", {30, 1, 0, 1, 0, 0, 0, 0}, 10959},
        {"year 99", {99, 1, 0, 1, 0, 0, 0, 0}, 36161},
        {"year 100", {100, 1, 0, 1, 0, 0, 0, 0}, -657434},
        {"before the epoch", {1899, 12, 0, 29, 6, 0, 0, 0}, -1.25},
    };
    for (const auto& row : kRows) {
        SYSTEMTIME time = row.time;
        double date = 0;
        const INT result = SystemTimeToVariantTime(&time, &date);
        EXPECT_EQ(result, std::isnan(row.date) ? 0 : 1) << row.label;
        EXPECT_EQ(result != 0 ? date : -1, result != 0 ? row.date : -1) << row.label;
    }
    SYSTEMTIME time{};
    EXPECT_EQ(SystemTimeToVariantTime(&time, nullptr), 0);
    EXPECT_EQ(SystemTimeToVariantTime(nullptr, nullptr), 0);
}

TEST(DosDateTimeToVariantTime, ReadsItsBits) {
    static constexpr struct {
        const char* label;
        int year, month, day, hour, minute, second;
        bool good;
    } kRows[] = {
        {"first", 1980, 1, 1, 0, 0, 0, true},       {"plain", 2003, 7, 4, 13, 5, 8, true},
        {"last", 2099, 12, 31, 23, 59, 58, true},   {"beyond", 2100, 1, 1, 0, 0, 0, false},
        {"month 13", 2000, 13, 1, 0, 0, 0, false},  {"hour 24", 2000, 1, 1, 24, 0, 0, false},
        {"minute 60", 2000, 1, 1, 0, 60, 0, false}, {"second 60", 2000, 1, 1, 0, 0, 60, false},
    };
    for (const auto& row : kRows) {
        const auto dosDate = static_cast<USHORT>(((row.year - 1980) << 9) | (row.month << 5) | row.day);
        const auto dosTime = static_cast<USHORT>((row.hour << 11) | (row.minute << 5) | (row.second / 2));
        double date = 0;
        ASSERT_EQ(DosDateTimeToVariantTime(dosDate, dosTime, &date), row.good ? 1 : 0) << row.label;
        if (!row.good) continue;
        USHORT dateBack = 0;
        USHORT timeBack = 0;
        EXPECT_EQ(VariantTimeToDosDateTime(date, &dateBack, &timeBack), 1);
        EXPECT_EQ(dateBack, dosDate) << row.label;
        EXPECT_EQ(timeBack, dosTime) << row.label;
    }
    USHORT date = 0;
    USHORT time = 0;
    EXPECT_EQ(VariantTimeToDosDateTime(29220.0, &date, &time), 0);  // 31 December 1979
    EXPECT_EQ(VariantTimeToDosDateTime(73051.0, &date, &time), 0);  // 1 January 2100
}

TEST(VarDateFromUdate, TakesTheDayOfTheYearWhenAsked) {
    UDATE parts{};
    parts.st.wYear = 2004;
    parts.st.wMonth = 7;
    parts.st.wDay = 4;
    parts.st.wHour = 12;
    parts.wDayOfYear = 60;
    DATE date = 0;
    EXPECT_EQ(VarDateFromUdate(&parts, 0, &date), S_OK);
    EXPECT_EQ(date, 38172.5);
    EXPECT_EQ(VarDateFromUdate(&parts, VAR_VALIDDATE, &date), S_OK);
    EXPECT_EQ(date, 38046.5);  // 29 February
    EXPECT_EQ(VarDateFromUdate(&parts, VAR_TIMEVALUEONLY, &date), S_OK);
    EXPECT_EQ(date, 0.5);
    EXPECT_EQ(VarDateFromUdate(&parts, VAR_DATEVALUEONLY, &date), S_OK);
    EXPECT_EQ(date, 38172.0);
    parts.wDayOfYear = 367;
    EXPECT_EQ(VarDateFromUdate(&parts, VAR_VALIDDATE, &date), E_INVALIDARG);
    parts.st.wMonth = 13;
    EXPECT_EQ(VarDateFromUdate(&parts, 0, &date), E_INVALIDARG);
    EXPECT_EQ(VarDateFromUdate(nullptr, 0, &date), E_INVALIDARG);
}

TEST(VarBstrFromDate, WritesAsTheLocaleDoes) {
    constexpr double kAfternoon = 37806 + (13 * 3600 + 5 * 60 + 9) / 86400.0;
    static constexpr struct {
        const char* label;
        double date;
        LCID locale;
        ULONG flags;
        const char* text;
    } kRows[] = {
        {"Chinese", kAfternoon, 0x0804, 0, "2003/7/4 13:05:09"},
        {"default is Chinese", kAfternoon, 0, 0, "2003/7/4 13:05:09"},
        {"user's default", kAfternoon, 0x0400, 0x80000000u, "2003/7/4 13:05:09"},
        {"English", kAfternoon, 0x0409, 0, "7/4/2003 1:05:09 PM"},
        {"invariant", kAfternoon, 0x007F, 0, "07/04/2003 13:05:09"},
        {"day only", 37806, 0x0804, 0, "2003/7/4"},
        {"time only", 0.25, 0x0804, 0, "6:00:00"},
        {"time only, English", 0.25, 0x0409, 0, "6:00:00 AM"},
        {"midnight, English", 0, 0x0409, 0, "12:00:00 AM"},
        {"midnight, invariant", 0, 0x007F, 0, "00:00:00"},
        {"noon, English", 0.5, 0x0409, 0, "12:00:00 PM"},
        {"early year", -657434, 0x0804, 0, "0100/1/1"},
        {"negative with a time", -1.25, 0x0804, 0, "1899/12/29 6:00:00"},
        {"only the time", kAfternoon, 0x0804, VAR_TIMEVALUEONLY, "13:05:09"},
        {"only the day", kAfternoon, 0x0804, VAR_DATEVALUEONLY, "2003/7/4"},
        {"only the time of none", 37806, 0x0804, VAR_TIMEVALUEONLY, "0:00:00"},
        {"only the day of none", 0.5, 0x0804, VAR_DATEVALUEONLY, "1899/12/30"},
        {"two digits", 37940, 0x0804, 0, "2003/11/15"},
    };
    for (const auto& row : kRows) {
        BSTR text = nullptr;
        EXPECT_EQ(VarBstrFromDate(row.date, row.locale, row.flags, &text), S_OK) << row.label;
        EXPECT_EQ(Narrow(text), row.text) << row.label;
        SysFreeString(text);
    }
}

// ---- Reading

struct ReadRow {
    const char16_t* text;
    const char* date;  // as the Chinese locale writes it, or a code
};

std::string Read(const char16_t* text, LCID locale, ULONG flags = 0) {
    DATE date = -77;
    const HRESULT result = VarDateFromStr(text, locale, flags, &date);
    if (FAILED(result)) {
        EXPECT_EQ(date, -77);
        return Code(result);
    }
    BSTR written = nullptr;
    EXPECT_EQ(VarBstrFromDate(date, 0x0804, 0, &written), S_OK);
    std::string shown = Narrow(written);
    SysFreeString(written);
    return shown;
}

TEST(VarDateFromStr, ReadsChineseDates) {
    static constexpr ReadRow kRows[] = {
        {u"2003-7-4", "2003/7/4"},
        {u"2003-07-04", "2003/7/4"},
        {u"2003/7/4", "2003/7/4"},
        {u"2003.7.4", "2003/7/4"},
        {u"03-7-4", "2003/7/4"},
        {u"29-1-1", "2029/1/1"},
        {u"30-1-1", "1930/1/1"},
        {u"99-12-31", "1999/12/31"},
        {u"2003年7月4日", "2003/7/4"},
        {u"2003年07月04日", "2003/7/4"},
        {u"2003年7月4号", "2003/7/4"},
        {u"03年7月4日", "2003/7/4"},
        {u"2003 年 7 月 4 日", "2003/7/4"},
        {u"2003年7月4", "2003/7/4"},
        {u"2003年7月", "2003/7/1"},
        {u"2003年七月", "2003/7/1"},
        {u"2003年7月4日 星期五", "2003/7/4"},
        {u"星期五 2003-7-4", "2003/7/4"},
        {u"7/4/2003", "2003/7/4"},
        {u"13/5/2003", "2003/5/13"},
        {u"2003-7-4 13:05", "2003/7/4 13:05:00"},
        {u"2003-7-4 13:05:09", "2003/7/4 13:05:09"},
        {u"2003-7-4 13时5分9秒", "2003/7/4 13:05:09"},
        {u"2003年7月4日13时5分9秒", "2003/7/4 13:05:09"},
        {u"2003年7月4日 13时5分", "2003/7/4 13:05:00"},
        {u"2003年7月4日 13时", "2003/7/4 13:00:00"},
        {u"2003年7月4日 13点5分", "2003/7/4 13:05:00"},
        {u"2003-7-4 下午 1:05:09", "2003/7/4 13:05:09"},
        {u"2003-7-4 上午1:05", "2003/7/4 1:05:00"},
        {u"2003-7-4 1:05:09 PM", "2003/7/4 13:05:09"},
        {u"2003-7-4 1:05pm", "2003/7/4 13:05:00"},
        {u"2003-7-4 12:00 AM", "2003/7/4"},
        {u"2003-7-4 12:30 PM", "2003/7/4 12:30:00"},
        {u"13:05:09 2003-7-4", "2003/7/4 13:05:09"},
        {u"下午3时 2003年7月4日", "2003/7/4 15:00:00"},
        {u"13:05", "13:05:00"},
        {u"13:05:09", "13:05:09"},
        {u"1 PM", "13:00:00"},
        {u"下午1:05", "13:05:00"},
        {u"13时5分9秒", "13:05:09"},
        {u"0:00", "0:00:00"},
        {u"  2003-7-4  ", "2003/7/4"},
        {u"２００３－７－４", "2003/7/4"},
        {u"2003－7－4　13：05", "2003/7/4 13:05:00"},
        {u"July 4, 2003", "2003/7/4"},
        {u"4 July 2003", "2003/7/4"},
        {u"2003 July 4", "2003/7/4"},
        {u"4-Jul-2003", "2003/7/4"},
        {u"jul 4 2003", "2003/7/4"},
        {u"03-Jul-4", "2003/7/4"},
        {u"July 2003", "2003/7/1"},
        {u"Friday, July 4, 2003 1:05 PM", "2003/7/4 13:05:00"},
        {u"2004-2-29", "2004/2/29"},
        {u"100-1-1", "0100/1/1"},
        {u"9999-12-31 23:59:59", "9999/12/31 23:59:59"},
        {u"1899-12-29 6:00", "1899/12/29 6:00:00"},
        {u"2003-7", "2003/7/1"},
    };
    for (const ReadRow& row : kRows)
        EXPECT_EQ(Read(row.text, 0x0804), row.date) << Show(row.text);
}

TEST(VarDateFromStr, RefusesWhatIsNoDate) {
    static constexpr const char16_t* kTexts[] = {
        u"",
        u"  ",
        u"abc",
        u"2003",
        u"12.5",
        u"37806",
        u"2003-2-30",
        u"2003-2-29",
        u"2003-13-1",
        u"2003-0-1",
        u"2003-1-0",
        u"2003-4-31",
        u"2/30/2003",
        u"30/2/2003",
        u"2003年2月30日",
        u"2003年13月1日",
        u"2003年",
        u"7月",
        u"99年",
        u"2003-7-4-5",
        u"2003-7-",
        u"-7-4",
        u"2003--7-4",
        u"2003-7/4",
        u"2003 7 4",
        u"13:05:09.5",
        u"2003-7-4 13:05:09.123",
        u"24:00",
        u"13:60",
        u"13:05:60",
        u"13:",
        u":05",
        u"13:05:09:10",
        u"13 AM",
        u"AM",
        u"下午",
        u"2003-7-4 13",
        u"2003-7-4T13:05",
        u"10000-1-1",
        u"99999-1-1",
        u"0099-1-1",
        u"Feb 30",
        u"July",
        u"July July 4",
        u"July 4 2003 5",
        u"Juli 4 2003",
        u"1:05 PM AM",
        u"2003-7 13:05 -4",
        u"2003年7月4日5",
        u"7.4",
        u"2003-7-4 13:05 14:05",
        u"四",
        u"2003-7-4日",
        u"1 2 3 4 5 6 7 8 9 1 2 3 4 5 6 7 8 9 1 2 3 4 5 6 7 8 9",
    };
    for (const char16_t* text : kTexts)
        EXPECT_EQ(Read(text, 0x0804), "80020005") << Show(text);
    DATE date = 0;
    EXPECT_EQ(VarDateFromStr(nullptr, 0x0804, 0, &date), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VarDateFromStr(u"2003-7-4", 0x0804, 0, nullptr), E_INVALIDARG);
}

TEST(VarDateFromStr, ReadsMonthFirstElsewhere) {
    static constexpr ReadRow kRows[] = {
        {u"7/4/2003", "2003/7/4"},  {u"7-4-03", "2003/7/4"},
        {u"1/2/03", "2003/1/2"},    {u"13/5/2003", "2003/5/13"},
        {u"2003-7-4", "2003/7/4"},  {u"7/4/2003 1:05:09 PM", "2003/7/4 13:05:09"},
        {u"July 4 03", "2003/7/4"}, {u"4 July 03", "2003/7/4"},
        {u"12:00 AM", "0:00:00"},   {u"07/04/2003 13:05:09", "2003/7/4 13:05:09"},
        {u"2/30/03", "80020005"},
    };
    for (const ReadRow& row : kRows) {
        EXPECT_EQ(Read(row.text, 0x0409), row.date) << Show(row.text);
        EXPECT_EQ(Read(row.text, 0x007F), row.date) << Show(row.text);
    }
}

TEST(VarDateFromStr, TakesTheCurrentYearWhenNoneIsGiven) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const std::string year = std::to_string(local.tm_year + 1900);
    EXPECT_EQ(Read(u"7-4", 0x0804), year + "/7/4");
    EXPECT_EQ(Read(u"7月4日", 0x0804), year + "/7/4");
    EXPECT_EQ(Read(u"13/5", 0x0804), year + "/5/13");
    EXPECT_EQ(Read(u"July 4", 0x0409), year + "/7/4");
    EXPECT_EQ(Read(u"4 July 13:05", 0x0409), year + "/7/4 13:05:00");
}

TEST(VarDateFromStr, LeavesOutThePartsNotWanted) {
    EXPECT_EQ(Read(u"2003-7-4 13:05", 0x0804, VAR_TIMEVALUEONLY), "13:05:00");
    EXPECT_EQ(Read(u"2003-7-4 13:05", 0x0804, VAR_DATEVALUEONLY), "2003/7/4");
    EXPECT_EQ(Read(u"13:05", 0x0804, VAR_DATEVALUEONLY), "0:00:00");
}

TEST(VarDateFromStr, ReadsBackWhatWasWritten) {
    static constexpr LCID kLocales[] = {0x0804, 0x0409, 0x007F};
    for (const LCID locale : kLocales) {
        for (int day = VTDATEGRE_MIN; day <= VTDATEGRE_MAX; day += 997) {
            const int second = ((day % 86400) + 86400) % 86400;
            const double time = second / 86400.0;
            const double date = day < 0 ? day - time : day + time;
            BSTR text = nullptr;
            ASSERT_EQ(VarBstrFromDate(date, locale, 0, &text), S_OK);
            DATE back = 0;
            ASSERT_EQ(VarDateFromStr(text, locale, 0, &back), S_OK) << Narrow(text);
            ASSERT_EQ(back, date) << Narrow(text);
            SysFreeString(text);
        }
    }
}

}  // namespace
}  // namespace tk::test
