#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "tkkernel/util.h"
#include "util/chinese_reference.h"
#include "util/slow_reference.h"
#include "util/values.h"

namespace {

using namespace tk::test;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

struct Row {
    double amount;
    const char* text;
};

TEST(UpperCurrency, WritesTheUsualForm) {
    const Row kRows[] = {
        {1, "壹元整"},
        {9, "玖元整"},
        {10, "壹拾元整"},
        {11, "壹拾壹元整"},
        {100, "壹佰元整"},
        {101, "壹佰零壹元整"},
        {110, "壹佰壹拾元整"},
        {1001, "壹仟零壹元整"},
        {1010, "壹仟零壹拾元整"},
        {1100, "壹仟壹佰元整"},
        {10000, "壹万元整"},
        {10001, "壹万零壹元整"},
        {11000, "壹万壹仟元整"},
        {100000, "壹拾万元整"},
        {1000000, "壹佰万元整"},
        {1001000, "壹佰万零壹仟元整"},
        {10000000, "壹仟万元整"},
        {100000000, "壹亿元整"},
        {100000001, "壹亿零壹元整"},
        {100010000, "壹亿零壹万元整"},
        {20003000, "贰仟万零叁仟元整"},
        {1234567890, "壹拾贰亿叁仟肆佰伍拾陆万柒仟捌佰玖拾元整"},
        {987654321098.0, "玖仟捌佰柒拾陆亿伍仟肆佰叁拾贰万壹仟零玖拾捌元整"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.amount);
        EXPECT_STREQ(UpperCurrency(row.amount, 1), row.text);
    }
}

TEST(UpperCurrency, WritesJiaoAndFenAndStillTheEndMark) {
    const Row kRows[] = {
        {1234.56, "壹仟贰佰叁拾肆元伍角陆分整"},
        {1.2, "壹元贰角整"},
        {1.02, "壹元零贰分整"},
        {0.5, "伍角整"},
        {0.05, "零伍分整"},
        {0.55, "伍角伍分整"},
        {10.5, "壹拾元零伍角整"},
        {10.05, "壹拾元零零伍分整"},
        {1000.5, "壹仟元零伍角整"},
        {10000.01, "壹万元零零壹分整"},
        {100.1, "壹佰元零壹角整"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.amount);
        EXPECT_STREQ(UpperCurrency(row.amount, 1), row.text);
    }
}

TEST(UpperCurrency, WritesEveryPlaceInTheFixedForm) {
    const Row kRows[] = {
        {1234.5, "壹仟贰佰叁拾肆元伍角零分"},
        {10000, "零仟零佰零拾壹万零仟零佰零拾零元零角零分"},
        {0.5, "伍角零分"},
        {0.05, "零角伍分"},
        {7, "零仟零佰零拾柒元零角零分"},
        {100000000, "零仟零佰零拾壹亿零仟零佰零拾零万零仟零佰零拾零元零角零分"},
        {987654321098.76, "玖仟捌佰柒拾陆亿伍仟肆佰叁拾贰万壹仟零佰玖拾捌元柒角陆分"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.amount);
        EXPECT_STREQ(UpperCurrency(row.amount, 2), row.text);
    }
}

TEST(UpperCurrency, TakesEveryOtherModeForTheUsualForm) {
    for (const int mode : {1, 0, 3, -2, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_STREQ(UpperCurrency(1234.56, mode), "壹仟贰佰叁拾肆元伍角陆分整") << mode;
}

TEST(UpperCurrency, HasOneTextForNothing) {
    for (const double nothing : {0.0, -0.0, kNoNumber, -kNoNumber, kInfinity, -kInfinity}) {
        for (const int mode : {0, 1, 2, 3})
            EXPECT_STREQ(UpperCurrency(nothing, mode), "零元零角零分") << nothing << ' ' << mode;
    }
}

TEST(UpperCurrency, KeepsOnlyTheFormWhenNothingRemainsOfTheAmount) {
    EXPECT_STREQ(UpperCurrency(0.001, 1), "整");
    EXPECT_STREQ(UpperCurrency(0.001, 2), "零角零分");
    EXPECT_STREQ(UpperCurrency(std::numeric_limits<double>::denorm_min(), 1), "整");
    EXPECT_STREQ(UpperCurrency(1e12, 1), "元整");
    EXPECT_STREQ(UpperCurrency(1e12, 2), "零角零分");
    EXPECT_STREQ(UpperCurrency(1e12 + 0.5, 1), "元零伍角整");
}

TEST(UpperCurrency, WritesTheLastTwelveDigitsOfALongerAmount) {
    EXPECT_STREQ(UpperCurrency(1234567890123.45, 1), "贰仟叁佰肆拾伍亿陆仟柒佰捌拾玖万零壹佰贰拾叁元肆角伍分整");
    EXPECT_STREQ(UpperCurrency(1234567890123.45, 2), "贰仟叁佰肆拾伍亿陆仟柒佰捌拾玖万零仟壹佰贰拾叁元肆角伍分");
    EXPECT_STREQ(UpperCurrency(9007199254740993.0, 1), "壹仟玖佰玖拾贰亿伍仟肆佰柒拾肆万零玖佰玖拾贰元整");  // 2^53
    EXPECT_STREQ(UpperCurrency(1e22, 1), "元整");
    // 1.7976931348623157e308 ends in ...791826204144723168738177180919299881250404026184124858368
    EXPECT_STREQ(UpperCurrency(std::numeric_limits<double>::max(), 1),
                 "壹仟捌佰肆拾壹亿贰仟肆佰捌拾伍万捌仟叁佰陆拾捌元整");
}

TEST(UpperCurrency, PutsTheWordForNegativeInFront) {
    EXPECT_STREQ(UpperCurrency(-1234.56, 1), "负壹仟贰佰叁拾肆元伍角陆分整");
    EXPECT_STREQ(UpperCurrency(-1234.5, 2), "负壹仟贰佰叁拾肆元伍角零分");
    EXPECT_STREQ(UpperCurrency(-0.001, 1), "负整");
    EXPECT_STREQ(UpperCurrency(-0.05, 1), "负零伍分整");
}

TEST(UpperCurrency, RoundsAsPrintfDoes) {
    const Row kRows[] = {
        {0.125, "壹角贰分整"},                                              // exactly half: the even digit stays
        {0.375, "叁角捌分整"},                                              // exactly half: the odd one goes up
        {1.005, "壹元整"},                                                  // below the half in binary
        {0.995000001, "壹元整"},                                            // carries
        {9999.999, "壹万元整"},                                             // carries into the next group
        {99999999.999, "壹亿元整"}, {0.004999, "整"}, {0.005, "零壹分整"},  // above the half in binary
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.amount);
        EXPECT_STREQ(UpperCurrency(row.amount, 1), row.text);
    }
}

TEST(UpperCurrency, AgreesWithTheRulesOnEverySmallAmount) {
    for (int hundredths = 0; hundredths <= 150000; ++hundredths) {
        const double amount = hundredths / 100.0;
        for (const int mode : {1, 2})
            ASSERT_EQ(Std(UpperCurrency(amount, mode)), AmountInCapitals(amount, mode)) << amount << ' ' << mode;
    }
}

TEST(UpperCurrency, AgreesWithTheRulesOnEveryArrangementOfZeros) {
    // Each bit of the pattern is one digit, zero or not; the last two are jiao and fen.
    for (unsigned pattern = 0; pattern < 1U << 14; ++pattern) {
        double amount = 0;
        for (unsigned place = 14; place-- > 0;)
            amount = amount * 10 + ((pattern >> place & 1) != 0 ? 1 + place % 9 : 0);
        amount /= 100;
        for (const int mode : {1, 2})
            ASSERT_EQ(Std(UpperCurrency(amount, mode)), AmountInCapitals(amount, mode)) << amount << ' ' << mode;
    }
}

TEST(UpperCurrency, AgreesWithTheRulesOnAnyDouble) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random.Engine()();
        double amount = std::bit_cast<double>(bits);                                    // any bit pattern
        if (i % 4 == 1) amount = static_cast<double>(bits % 100000000000000ULL) / 100;  // whole fen of twelve digits
        if (i % 4 == 2) amount = static_cast<double>(bits % 10000000000000ULL) / 1e4;   // with more decimals
        if (i % 4 == 3) amount = std::ldexp(static_cast<double>(bits >> 11), static_cast<int>(bits % 40) - 30);
        for (const int mode : {1, 2})
            ASSERT_EQ(Std(UpperCurrency(amount, mode)), AmountInCapitals(amount, mode)) << amount << ' ' << mode;
    }
}

TEST(UpperCurrency, EndsInTheEndMarkOrInAPlaceOfFen) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 2000; ++i) {
        const double amount = random.Below(2000000000) / 100.0 + 0.01;
        EXPECT_TRUE(Std(UpperCurrency(amount, 1)).ends_with("整")) << amount;
        EXPECT_TRUE(Std(UpperCurrency(amount, 2)).ends_with("分")) << amount;
    }
}

TEST(NumberToChinese, GivesOneNumeralAndBeginsAgainAfterTen) {
    const struct {
        short number;
        const char* text;
    } kRows[] = {
        {0, "零"}, {1, "一"}, {2, "二"},  {3, "三"},  {4, "四"},  {5, "五"},  {6, "六"},  {7, "七"},
        {8, "八"}, {9, "九"}, {10, "十"}, {11, "零"}, {12, "一"}, {21, "十"}, {22, "零"}, {32767, "九"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.number);
        EXPECT_STREQ(NumberToChinese(row.number), row.text);
    }
    const std::string numerals = "零一二三四五六七八九十";
    for (int number = 0; number <= 32767; ++number)
        ASSERT_EQ(Std(NumberToChinese(static_cast<short>(number))),
                  numerals.substr(static_cast<std::size_t>(number) % 11 * 2, 2))
            << number;
}

TEST(NumberToChinese, HasNoTextForANegativeNumber) {
    EXPECT_STREQ(NumberToChinese(-1), "");
    EXPECT_STREQ(NumberToChinese(-32768), "");
}

}  // namespace
