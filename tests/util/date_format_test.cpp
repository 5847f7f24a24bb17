#include <afxdisp.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tkkernel/util.h"
#include "util/slow_reference.h"
#include "util/values.h"

namespace {

using namespace tk::test;

DATE At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    return COleDateTime(year, month, day, hour, minute, second).m_dt;
}

TEST(DateToString, FillsInTheFormat) {
    const DATE date = At(2007, 9, 29, 8, 5, 3);  // a Saturday
    const struct {
        const char* format;
        const char* text;
    } kRows[] = {
        {nullptr, "2007/09/29 08:05:03"},
        {"", "2007/09/29 08:05:03"},
        {"YYYY-MM-DD hh:mm:ss", "2007-09-29 08:05:03"},
        {"YYYYMMDDhhmmss", "20070929080503"},
        {"YY.MM.DD", "07.09.29"},
        {"YYYY年MM月DD日 hh时mm分ss秒", "2007年09月29日 08时05分03秒"},
        {"DD/MM/YYYY, DD", "29/09/2007, 29"},
        {"MM:mm", "09:05"},
        {"date", "date"},
        {"yyyy-mm-dd HH:MM:SS", "yyyy-05-dd HH:09:SS"},  // the case of a letter matters
        {"Y M D h m s", "Y M D h m s"},
        {"YYY", "07Y"},
        {"YYYYY", "2007Y"},
        {"YYYYYY", "200707"},
        {"YYYYYYYYYYY", "2007200707Y"},
        {"MMM", "09M"},
        {"hhh ssss", "08h 0303"},
        {"%Y %d %s %n", "%Y %d %s %n"},
        {" ", " "},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format == nullptr ? "null" : row.format);
        EXPECT_STREQ(DateToString(date, row.format), row.text);
    }
}

TEST(DateToString, NamesTheDayAfterTheDayAfter) {
    const struct {
        int day;  // of September 2007
        const char* name;
    } kRows[] = {
        {23, "二"},                                                              // Sunday
        {24, "三"}, {25, "四"}, {26, "五"}, {27, "六"}, {28, "日"}, {29, "一"},  // Saturday
        {30, "二"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.day);
        EXPECT_STREQ(DateToString(At(2007, 9, row.day), "W"), row.name);
    }
    EXPECT_STREQ(DateToString(At(2007, 9, 23), "星期W (WW)"), "星期二 (二二)");
}

TEST(DateToString, TakesNoByteOfACharacterForALetter) {
    const DATE date = At(2007, 9, 29, 8, 5, 3);
    // The second bytes are letters of the format.
    EXPECT_STREQ(DateToString(date, "\x81W\x81s\x81M"), "\x81W\x81s\x81M");
    EXPECT_STREQ(DateToString(date, "\x81MMM"), "\x81M09");
    EXPECT_STREQ(DateToString(date, "\x81sss"), "\x81s03");
    EXPECT_STREQ(DateToString(date, "Y\x81YYY"), "Y\x81Y07");
    EXPECT_STREQ(DateToString(date, "DD\x81"), "29\x81");  // half a character at the end
    EXPECT_STREQ(DateToString(date, "\x81 DD\x81-MM"), "\x81 29\x81-09");
}

TEST(DateToString, PrintsTheWholeRangeOfDates) {
    EXPECT_STREQ(DateToString(0.0, nullptr), "1899/12/30 00:00:00");
    EXPECT_STREQ(DateToString(-1.25, nullptr), "1899/12/29 06:00:00");
    EXPECT_STREQ(DateToString(At(100, 1, 1), nullptr), "100/01/01 00:00:00");
    EXPECT_STREQ(DateToString(At(905, 1, 1), "YY YYYY"), "05 905");
    EXPECT_STREQ(DateToString(At(9999, 12, 31, 23, 59, 59), nullptr), "9999/12/31 23:59:59");
    EXPECT_STREQ(DateToString(At(2000, 2, 29), "YYYYMMDD"), "20000229");
    EXPECT_STREQ(DateToString(At(2000, 1, 1), "YY"), "00");
}

TEST(DateToString, IsEmptyForADateThatDoesNotExist) {
    for (const double date : {-657435.0, 2958466.0, 1e10, -1e300, std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}) {
        EXPECT_STREQ(DateToString(date, nullptr), "") << date;
        EXPECT_STREQ(DateToString(date, "date"), "") << date;
    }
}

TEST(DateToString, KeepsLongFormatsWhole) {
    std::string format;
    std::string text;
    for (int i = 0; i < 3000; ++i) {
        format += i % 3 == 0 ? "YYYY" : i % 3 == 1 ? "年" : "-";
        text += i % 3 == 0 ? "2007" : i % 3 == 1 ? "年" : "-";
    }
    EXPECT_EQ(Std(DateToString(At(2007, 9, 29), format.c_str())), text);
}

/// The rule as it is worded: one replacement after the other, each on the whole text.
std::string Replaced(DATE date, const std::string& format) {
    const COleDateTime parts(date);
    const auto number = [](const char* form, int value) {
        CString text;
        text.Format(form, value);
        return text;
    };
    const char* const names[] = {"一", "二", "三", "四", "五", "六", "日"};
    CString text(format.c_str());
    text.Replace("YYYY", number("%d", parts.GetYear()));
    text.Replace("YY", number("%02d", parts.GetYear() % 100));
    text.Replace("MM", number("%02d", parts.GetMonth()));
    text.Replace("DD", number("%02d", parts.GetDay()));
    text.Replace("hh", number("%02d", parts.GetHour()));
    text.Replace("mm", number("%02d", parts.GetMinute()));
    text.Replace("ss", number("%02d", parts.GetSecond()));
    text.Replace("W", names[parts.GetDayOfWeek() % 7]);
    return Std(text);
}

TEST(DateToString, AgreesWithReplacingOneTokenAfterTheOther) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 20000; ++i) {
        const int day = random.Below(3615899) - 657434;  // 0100-01-01 to 9999-12-30
        const double time = random.Below(86400) / 86400.0;
        const double date = day < 0 ? day - time : day + time;
        std::string format = random.TextOf("YYYMMDDhmsW-: ", 12) + random.TextOf("\x81YMW", 6) + "Y";
        if (static_cast<unsigned char>(format[format.size() - 2]) == 0x81) format += 'Y';
        ASSERT_EQ(Std(DateToString(date, format.c_str())), Replaced(date, format)) << date << ' ' << format;
    }
}

}  // namespace
