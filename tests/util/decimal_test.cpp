#include <gtest/gtest.h>

#include "tkkernel/util.h"
#include "util/values.h"

namespace {

using namespace tk::test;

TEST(DecimalToString, PrintsThePlainForm) {
    const struct {
        const char* label;
        DECIMAL value;
        const char* text;
    } kRows[] = {
        {"zero", MakeDecimal(0, 0), "0"},
        {"whole", MakeDecimal(42, 0), "42"},
        {"fraction", MakeDecimal(1275, 2), "12.75"},
        {"negative", MakeDecimal(1275, 2, true), "-12.75"},
        {"below one", MakeDecimal(5, 1), "0.5"},
        {"zeros at the end go", MakeDecimal(1500, 3), "1.5"},
        {"largest", MakeDecimal(0xFFFFFFFFFFFFFFFFULL, 0, false, 0xFFFFFFFFU), "79228162514264337593543950335"},
        {"smallest", MakeDecimal(1, 28), "0.0000000000000000000000000001"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(DecimalToString(row.value), row.text);
    }
}

TEST(DecimalToDouble, GivesTheNumberOrZero) {
    EXPECT_EQ(DecimalToDouble(MakeDecimal(1275, 2)), 12.75);
    EXPECT_EQ(DecimalToDouble(MakeDecimal(1275, 2, true)), -12.75);
    EXPECT_EQ(DecimalToDouble(MakeDecimal(0, 0)), 0.0);
}

TEST(StringToDecimal, ReadsNumbersAndGivesZeroForTheRest) {
    const struct {
        const char* text;
        const char* number;
    } kRows[] = {
        {"12.75", "12.75"}, {"-12.75", "-12.75"}, {" 42 ", "42"},  {"1e3", "1000"},
        {"", "0"},          {"abc", "0"},         {"12.75x", "0"}, {"1e40", "0"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_STREQ(DecimalToString(StringToDecimal(row.text)), row.number);
    }
    EXPECT_STREQ(DecimalToString(StringToDecimal(nullptr)), "0");
}

TEST(StringToDouble, ReadsNumbersAndGivesZeroForTheRest) {
    const struct {
        const char* text;
        double number;
    } kRows[] = {
        {"12.75", 12.75},    {"-0.5", -0.5}, {" 42 ", 42.0}, {"1e3", 1000.0},
        {"1,234.5", 1234.5}, {"", 0.0},      {"abc", 0.0},   {"1.5x", 0.0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(StringToDouble(row.text), row.number);
    }
    EXPECT_EQ(StringToDouble(nullptr), 0.0);
}

}  // namespace
