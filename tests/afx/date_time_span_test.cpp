#include <afxdisp.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(DateTimeSpan, HasPartsAndTotals) {
    const COleDateTimeSpan span(3, 4, 5, 6);
    EXPECT_EQ(span.GetDays(), 3);
    EXPECT_EQ(span.GetHours(), 4);
    EXPECT_EQ(span.GetMinutes(), 5);
    EXPECT_EQ(span.GetSeconds(), 6);
    EXPECT_DOUBLE_EQ(span.GetTotalDays(), 3 + 4 / 24.0 + 5 / 1440.0 + 6 / 86400.0);
    EXPECT_DOUBLE_EQ(COleDateTimeSpan(1.5).GetTotalHours(), 36);
    EXPECT_DOUBLE_EQ(COleDateTimeSpan(1.5).GetTotalMinutes(), 2160);
    EXPECT_DOUBLE_EQ(COleDateTimeSpan(1.5).GetTotalSeconds(), 129600);
    EXPECT_EQ(COleDateTimeSpan().GetTotalDays(), 0.0);
}

TEST(DateTimeSpan, RoundsItsPartsToTheSecond) {
    EXPECT_EQ(COleDateTimeSpan(0, 0, 59, 60).GetHours(), 1);
    for (int second = 0; second < 86400; second += 13) {
        const COleDateTimeSpan span(100, 0, 0, second);
        ASSERT_EQ(span.GetHours() * 3600 + span.GetMinutes() * 60 + span.GetSeconds(), second);
        ASSERT_EQ(span.GetDays(), 100);
    }
}

TEST(DateTimeSpan, MayBeNegative) {
    const COleDateTimeSpan span = -COleDateTimeSpan(1, 2, 3, 4);
    EXPECT_EQ(span.GetDays(), -1);
    EXPECT_EQ(span.GetHours(), -2);
    EXPECT_EQ(span.GetMinutes(), -3);
    EXPECT_EQ(span.GetSeconds(), -4);
    EXPECT_TRUE(span < COleDateTimeSpan());
}

TEST(DateTimeSpan, AddsAndCompares) {
    COleDateTimeSpan span(1, 0, 0, 0);
    span += COleDateTimeSpan(0, 12, 0, 0);
    EXPECT_EQ(static_cast<double>(span), 1.5);
    span -= COleDateTimeSpan(1, 0, 0, 0);
    EXPECT_EQ(static_cast<double>(span), 0.5);
    EXPECT_TRUE(span == COleDateTimeSpan(0.5));
    EXPECT_TRUE(span != COleDateTimeSpan(0.25));
    EXPECT_TRUE(span > COleDateTimeSpan(0.25));
    EXPECT_TRUE(span >= COleDateTimeSpan(0.5));
    EXPECT_TRUE(span <= COleDateTimeSpan(0.5));
}

TEST(DateTimeSpan, KnowsWhatIsNoSpan) {
    EXPECT_EQ(COleDateTimeSpan(1e9).GetStatus(), COleDateTimeSpan::invalid);
    EXPECT_EQ(COleDateTimeSpan(-1e9).GetStatus(), COleDateTimeSpan::invalid);
    EXPECT_EQ(COleDateTimeSpan(std::nan("")).GetStatus(), COleDateTimeSpan::invalid);
    EXPECT_EQ(COleDateTimeSpan(1e9).GetTotalDays(), 0.0);
    COleDateTimeSpan null;
    null.SetStatus(COleDateTimeSpan::null);
    EXPECT_EQ((null + COleDateTimeSpan(1.0)).GetStatus(), COleDateTimeSpan::null);
    EXPECT_EQ((COleDateTimeSpan(1e9) - COleDateTimeSpan(1.0)).GetStatus(), COleDateTimeSpan::invalid);
}

TEST(DateTimeSpan, IsFormatted) {
    const COleDateTimeSpan span(12, 3, 4, 5);
    EXPECT_STREQ(span.Format("%D %H:%M:%S"), "12 03:04:05");
    EXPECT_STREQ(span.Format("%D天%%%y"), "12天%%y");
    EXPECT_STREQ(span.Format("%"), "%");
    EXPECT_STREQ(span.Format(nullptr), "");
    EXPECT_STREQ(COleDateTimeSpan(1e9).Format("%D"), "Invalid DateTimeSpan");
    COleDateTimeSpan null;
    null.SetStatus(COleDateTimeSpan::null);
    EXPECT_STREQ(null.Format("%D"), "");
}

}  // namespace
