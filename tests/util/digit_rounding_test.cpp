#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "tkkernel/util.h"
#include "util/slow_reference.h"

namespace {

using namespace tk::test;

TEST(Round, TakesHalvesAwayFromZeroOnTheDigits) {
    const struct {
        const char* text;
        int decimals;
        double result;
    } kRows[] = {
        {"2.345", 2, 2.35},
        {"-2.345", 2, -2.35},
        {"+2.345", 2, 2.35},
        {"2.344999", 2, 2.34},  // the digits behind the first dropped one do not count
        {"9.99", 1, 10.0},
        {"-9.99", 1, -10.0},
        {"99.999", 2, 100.0},
        {"999.5", 0, 1000.0},
        {"1.005", 2, 1.01},  // its double is below the half
        {"0.5", 0, 1.0},
        {"0.49", 0, 0.0},
        {".5", 0, 1.0},
        {"-.5", 0, -1.0},
        {"+.95", 1, 1.0},
        {"2.5", 0, 3.0},
        {"1.25", 1, 1.3},
        {"123456789012345678.5", 0, 123456789012345679.0},
        {"0.00000000000000000005", 19, 1e-19},
        {"1234567890.123456789", 8, 1234567890.12345679},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(Round(row.text, row.decimals), row.result);
    }
}

TEST(Round, ReadsATextWithoutMoreDecimalsAsItIs) {
    const struct {
        const char* text;
        int decimals;
        double result;
    } kRows[] = {
        {"12", 2, 12.0},      {"-12", 0, -12.0},      {"1e3", 1, 1000.0},
        {"2.3", 1, 2.3},      {"2.3", 2, 2.3},        {"2.", 0, 2.0},
        {"2.345", 3, 2.345},  {"2.345", 1000, 2.345}, {"2.345", std::numeric_limits<int>::max(), 2.345},
        {"1.5e3", 3, 1500.0}, {"1.5e3", 1, 1500.0},  // no digit stands behind the decimals that are kept
        {"2.34abc", 2, 2.34}, {"1.5 ", 1, 1.5},       {"+7.25", 2, 7.25},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(Round(row.text, row.decimals), row.result);
    }
}

TEST(Round, IgnoresLeadingBlanks) {
    EXPECT_EQ(Round("  2.345", 2), 2.35);
    EXPECT_EQ(Round("\t\r\n -2.345", 2), -2.35);
    EXPECT_EQ(Round("        9.99", 1), 10.0);
}

TEST(Round, TakesANegativeCountForNone) {
    EXPECT_EQ(Round("2.5", -1), 3.0);
    EXPECT_EQ(Round("149.4", -2), 149.0);
    EXPECT_EQ(Round("2.5", std::numeric_limits<int>::min()), 3.0);
}

TEST(Round, KeepsTheSignOfAnAmountThatRoundsToZero) {
    EXPECT_TRUE(std::signbit(Round("-0.001", 2)));
    EXPECT_EQ(Round("-0.001", 2), 0.0);
    EXPECT_FALSE(std::signbit(Round("0.001", 2)));
}

TEST(Round, GivesZeroForWhatIsNoNumber) {
    for (const char* text : {"", " ", "abc", "-", "+", ".", "-.", "..", "x.99", "\xB0\xA1.99", "中.5", "inf", "nan",
                             "-inf", "infinity.5", "--5", "+-5.55", "- 9.99", "e5"})
        EXPECT_EQ(Round(text, 1), 0.0) << text;
    EXPECT_EQ(Round(nullptr, 2), 0.0);
}

TEST(Round, ReadsTheNumberATextBeginsWith) {
    EXPECT_EQ(Round("12abc", 2), 12.0);
    EXPECT_EQ(Round("12a.99", 1), 12.0);
    EXPECT_EQ(Round("2.345元", 2), 2.35);
    EXPECT_EQ(Round("1.2.35", 1), 1.2);
    EXPECT_EQ(Round("1.9.5", 0), 2.0);
}

TEST(Round, HoldsNumbersOfAnySize) {
    const std::string digits(400, '9');
    EXPECT_EQ(Round(digits.c_str(), 2), HUGE_VAL);
    EXPECT_EQ(Round(("-" + digits).c_str(), 2), -HUGE_VAL);
    EXPECT_EQ(Round((digits + ".99").c_str(), 1), HUGE_VAL);
    EXPECT_EQ(Round("1e999", 2), HUGE_VAL);
    EXPECT_EQ(Round("1e99999999999", 2), HUGE_VAL);
    EXPECT_EQ(Round("1e-999", 2), 0.0);
    EXPECT_EQ(Round("1e-99999999999", 2), 0.0);
    EXPECT_EQ(Round(("0." + std::string(400, '0') + "1").c_str(), 401), 0.0);
    EXPECT_EQ(Round(("0." + std::string(400, '9')).c_str(), 399), 1.0);
    EXPECT_EQ(Round((digits.substr(0, 300) + ".5").c_str(), 0), 1e300);
    // The carry takes the place of a plus sign.
    EXPECT_EQ(Round("+99999999999999999.9", 0), 1e17);
}

TEST(Round, AgreesWithTheRuleOnEveryNumberOfThreeDecimals) {
    for (int thousandths = -12000; thousandths <= 12000; ++thousandths) {
        char text[24];
        std::snprintf(text, sizeof(text), "%.3f", thousandths / 1000.0);
        for (int decimals = 0; decimals <= 3; ++decimals)
            ASSERT_EQ(Round(text, decimals), RoundDigits(text, decimals)) << text << ' ' << decimals;
    }
}

TEST(Round, AgreesWithTheRuleOnTextsOfAllLengths) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    const char* const signs[] = {"", "-", "+", "0", "-0"};
    for (int i = 0; i < 200000; ++i) {
        std::string text = signs[random.Below(5)] + random.TextOf("0123456789999", 1 + i % 25);
        if (random.Below(8) != 0) text += "." + random.TextOf("0123456789945", 1 + i % 22);
        if (random.Below(16) == 0) text += random.TextOf("e5 ", 3);
        const int decimals = random.Below(24);
        const double expected = RoundDigits(text, decimals);
        ASSERT_EQ(Round(text.c_str(), decimals), expected) << text << ' ' << decimals;
        ASSERT_EQ(std::signbit(Round(text.c_str(), decimals)), std::signbit(expected)) << text << ' ' << decimals;
    }
}

}  // namespace
