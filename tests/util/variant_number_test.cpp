#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tkkernel/util.h"
#include "util/values.h"

namespace {

using namespace tk::test;

TEST(VariantToLong, ReadsEachType) {
    const struct {
        const char* label;
        Value value;
        long number;
    } kRows[] = {
        {"empty", Value(VT_EMPTY), 2147483647},
        {"null", Value(VT_NULL), 2147483647},
        {"I2", Int2(-32768), -32768},
        {"true is -1", Bool(VARIANT_TRUE), -1},
        {"false", Bool(VARIANT_FALSE), 0},
        {"I4", Int4(-2147483647 - 1), -2147483647L - 1},
        {"byte", Byte(200), 200},
        {"R4 is cut", Real4(2.9F), 2},
        {"R8 is cut towards zero", Real8(-2.7), -2},
        {"R8 positive", Real8(2.7), 2},
        {"date", Date(36345.75), 36345},
        {"negative date", Date(-1.25), -1},
        {"currency is rounded, then cut", Currency(19950), 2},
        {"currency below", Currency(19949), 1},
        {"negative currency", Currency(-19950), -2},
        {"decimal loses its fraction", Decimal(1275, 2), 12},
        {"negative decimal", Decimal(1299, 2, true), -12},
        {"numeric tag", Decimal(1275, 2, false, 131), 12},
        {"decimal zero", Decimal(0, 0), 0},
        {"decimal below one", Decimal(5, 1), 0},
        {"of a decimal ten characters count", Decimal(123456789012ULL, 0), 1234567890},
        {"the sign is one of the ten", Decimal(123456789012ULL, 0, true), -123456789},
        {"ten digits wrap around", Decimal(9999999999ULL, 0), 1410065407},
        {"the point is one of the ten", Decimal(1234567891ULL, 1), 123456789},
        {"a text is not parsed", Text("42"), 2147483647},
        {"I1 is not listed", SmallInt1(5), 2147483647},
        {"I8 is not listed", Int8(5), 2147483647},
        {"error is not listed", Error(5), 2147483647},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(VariantToLong(row.value), row.number);
    }
}

TEST(VariantToLong, GivesTheSentinelForNumbersOutOfRange) {
    for (const double value : {2147483648.0, -2147483649.0, 1e20, -1e300, std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(VariantToLong(Real8(value)), 2147483647);
    }
    EXPECT_EQ(VariantToLong(Real8(-2147483648.9)), -2147483647L - 1);
    EXPECT_EQ(VariantToLong(Real8(2147483646.9)), 2147483646);
    EXPECT_EQ(VariantToLong(Currency(9223372036854775807LL)), 2147483647);
    EXPECT_EQ(VariantToLong(Real4(3e9F)), 2147483647);
    EXPECT_EQ(VariantToLong(Real4(-3e9F)), 2147483647);
}

TEST(VariantToDouble, ReadsEachType) {
    const struct {
        const char* label;
        Value value;
        double number;
    } kRows[] = {
        {"empty", Value(VT_EMPTY), 2147483647.0},
        {"null", Value(VT_NULL), 2147483647.0},
        {"I2", Int2(-5), -5.0},
        {"true is -1", Bool(VARIANT_TRUE), -1.0},
        {"false", Bool(VARIANT_FALSE), 0.0},
        {"I4", Int4(2147483647), 2147483647.0},
        {"byte", Byte(255), 255.0},
        {"R4", Real4(0.5F), 0.5},
        {"R8", Real8(-2.7), -2.7},
        {"R8 has no range to leave", Real8(1e300), 1e300},
        {"date is its number", Date(36345.75), 36345.75},
        {"negative date", Date(-1.25), -1.25},
        {"currency is rounded", Currency(10050), 1.01},
        {"negative currency", Currency(-10050), -1.01},
        {"decimal loses its fraction", Decimal(1275, 2), 12.0},
        {"numeric loses its fraction", Decimal(1275, 2, true, 131), -12.0},
        {"of a decimal ten characters count", Decimal(123456789012ULL, 0), 1234567890.0},
        {"ten digits wrap around", Decimal(9999999999ULL, 0), 1410065407.0},
        {"a text is not parsed", Text("4.5"), 2147483647.0},
        {"UI4 is not listed", Unsigned4(5), 2147483647.0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(VariantToDouble(row.value), row.number);
    }
}

}  // namespace
