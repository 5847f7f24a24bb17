#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <set>

#include "tkkernel/util.h"

namespace {

TEST(GetRandom, BringsTheRuntimesGeneratorIntoTheRange) {
    std::srand(7);
    int expected[200];
    for (int& number : expected)
        number = std::rand();
    std::srand(7);
    for (const int number : expected)
        ASSERT_EQ(GetRandom(10, 19), number % 10 + 10);
}

TEST(GetRandom, ReachesEveryNumberOfTheRange) {
    std::set<int> seen;
    for (int i = 0; i < 5000; ++i)
        seen.insert(GetRandom(-3, 3));
    EXPECT_EQ(seen, (std::set<int>{-3, -2, -1, 0, 1, 2, 3}));
}

TEST(GetRandom, HoldsAtTheLimits) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    EXPECT_EQ(GetRandom(5, 5), 5);
    EXPECT_EQ(GetRandom(5, 4), 5);
    EXPECT_EQ(GetRandom(5, -100), 5);
    EXPECT_EQ(GetRandom(kHighest, kLowest), kHighest);
    EXPECT_EQ(GetRandom(kHighest, kHighest), kHighest);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_GE(GetRandom(0, kHighest), 0);
        EXPECT_LE(GetRandom(kLowest, 0), 0);
        GetRandom(kLowest, kHighest);
    }
}

TEST(Arsinh, IsItsFormula) {
    EXPECT_EQ(Arsinh(0), 0.0);
    EXPECT_DOUBLE_EQ(Arsinh(1), 0.88137358701954305);
    EXPECT_EQ(Arsinh(2.5), std::log(2.5 + std::sqrt(2.5 * 2.5 + 1)));
    EXPECT_EQ(Arsinh(-1e9), -HUGE_VAL);  // the root takes the one away, where the true value is -21.4
    EXPECT_TRUE(std::isnan(Arsinh(std::numeric_limits<double>::quiet_NaN())));
}

TEST(Arcosh, IsItsFormula) {
    EXPECT_EQ(Arcosh(1), 0.0);
    EXPECT_DOUBLE_EQ(Arcosh(2), 1.3169578969248166);
    EXPECT_EQ(Arcosh(2.5), std::log(2.5 + std::sqrt(2.5 * 2.5 - 1)));
    EXPECT_TRUE(std::isnan(Arcosh(0.5)));
}

TEST(Artanh, IsItsFormula) {
    EXPECT_EQ(Artanh(0), 0.0);
    EXPECT_DOUBLE_EQ(Artanh(0.5), 0.54930614433405489);
    EXPECT_EQ(Artanh(1), HUGE_VAL);
    EXPECT_EQ(Artanh(-1), -HUGE_VAL);
    EXPECT_TRUE(std::isnan(Artanh(2)));
}

TEST(Angles, GoFromRadiansToDegreesAndBack) {
    EXPECT_EQ(DEG(1), 57.29577951308232);
    EXPECT_EQ(RAD(1), 0.017453292519943295);
    EXPECT_EQ(DEG(3.141592653589793), 180.0);
    EXPECT_DOUBLE_EQ(RAD(180), 3.141592653589793);
    EXPECT_EQ(DEG(0), 0.0);
    EXPECT_EQ(RAD(HUGE_VAL), HUGE_VAL);
}

}  // namespace
