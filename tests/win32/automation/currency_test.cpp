#include <cmath>
#include <limits>
#include <random>

#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

constexpr LONGLONG kMost = std::numeric_limits<LONGLONG>::max();
constexpr LONGLONG kLeast = std::numeric_limits<LONGLONG>::min();

CY Units(LONGLONG units) {
    return CY{.int64 = units};
}

std::string Outcome(HRESULT result, const CY& value) {
    return SUCCEEDED(result) ? std::to_string(value.int64) : Code(result);
}

TEST(VarCyAdd, OverflowsAtTheEndsOfTheRange) {
    CY result{};
    EXPECT_EQ(Outcome(VarCyAdd(Units(15000), Units(-5000), &result), result), "10000");
    EXPECT_EQ(Outcome(VarCyAdd(Units(kMost), Units(1), &result), result), "8002000A");
    EXPECT_EQ(Outcome(VarCyAdd(Units(kLeast), Units(-1), &result), result), "8002000A");
    EXPECT_EQ(Outcome(VarCySub(Units(kLeast), Units(1), &result), result), "8002000A");
    EXPECT_EQ(Outcome(VarCySub(Units(0), Units(kLeast), &result), result), "8002000A");
    EXPECT_EQ(Outcome(VarCyNeg(Units(kLeast), &result), result), "8002000A");
    EXPECT_EQ(Outcome(VarCyAbs(Units(kLeast), &result), result), "8002000A");
    EXPECT_EQ(Outcome(VarCyAbs(Units(-7), &result), result), "7");
    EXPECT_EQ(VarCyAdd(Units(1), Units(1), nullptr), E_INVALIDARG);
}

TEST(VarCyMul, RoundsToEven) {
    CY result{};
    EXPECT_EQ(Outcome(VarCyMul(Units(15000), Units(-15000), &result), result), "-22500");
    EXPECT_EQ(Outcome(VarCyMul(Units(1), Units(5000), &result), result), "0");
    EXPECT_EQ(Outcome(VarCyMul(Units(3), Units(5000), &result), result), "2");
    EXPECT_EQ(Outcome(VarCyMul(Units(-3), Units(5000), &result), result), "-2");
    EXPECT_EQ(Outcome(VarCyMul(Units(kMost), Units(10000), &result), result), "9223372036854775807");
    EXPECT_EQ(Outcome(VarCyMul(Units(kMost), Units(10001), &result), result), "8002000A");
    EXPECT_EQ(Outcome(VarCyMulI4(Units(12345), -3, &result), result), "-37035");
    EXPECT_EQ(Outcome(VarCyMulI8(Units(kMost), 2, &result), result), "8002000A");
}

TEST(VarCyRound, RoundsAHalfToEven) {
    static constexpr struct {
        LONGLONG units;
        int places;
        LONGLONG rounded;
    } kRows[] = {
        {10050, 2, 10000}, {10150, 2, 10200}, {-10150, 2, -10200}, {5000, 0, 0},      {15000, 0, 20000},
        {25000, 0, 20000}, {12345, 4, 12345}, {12345, 9, 12345},   {12345, 3, 12340},
    };
    for (const auto& row : kRows) {
        CY result{};
        EXPECT_EQ(VarCyRound(Units(row.units), row.places, &result), S_OK);
        EXPECT_EQ(result.int64, row.rounded) << row.units << " to " << row.places;
    }
    CY result{};
    EXPECT_EQ(VarCyRound(Units(1), -1, &result), E_INVALIDARG);
    EXPECT_EQ(VarCyRound(Units(kMost), 0, &result), DISP_E_OVERFLOW);
}

TEST(VarCyFix, CutsWhereVarCyIntGoesDown) {
    CY result{};
    EXPECT_EQ(Outcome(VarCyFix(Units(-25000), &result), result), "-20000");
    EXPECT_EQ(Outcome(VarCyInt(Units(-25000), &result), result), "-30000");
    EXPECT_EQ(Outcome(VarCyInt(Units(25000), &result), result), "20000");
    EXPECT_EQ(Outcome(VarCyInt(Units(-20000), &result), result), "-20000");
    EXPECT_EQ(Outcome(VarCyInt(Units(kLeast), &result), result), "8002000A");
}

TEST(VarCyCmp, Orders) {
    EXPECT_EQ(VarCyCmp(Units(1), Units(2)), VARCMP_LT);
    EXPECT_EQ(VarCyCmp(Units(2), Units(2)), VARCMP_EQ);
    EXPECT_EQ(VarCyCmp(Units(kMost), Units(kLeast)), VARCMP_GT);
    EXPECT_EQ(VarCyCmpR8(Units(15000), 1.5), VARCMP_EQ);
    EXPECT_EQ(VarCyCmpR8(Units(15000), 1e300), VARCMP_LT);
    EXPECT_EQ(VarCyCmpR8(Units(15000), std::nan("")), VARCMP_NULL);
}

TEST(VarCyFromR8, RoundsToFourPlacesToEven) {
    static constexpr struct {
        double value;
        const char* units;
    } kRows[] = {
        {1.5, "15000"},
        {-1.5, "-15000"},
        {0.00005, "0"},
        {0.00015, "1"},
        {0.00025, "2"},
        {1.005, "10050"},

        {1.00015, "10002"},
        {123456789012.34375, "1234567890123438"},
        {-922337203685477.5, "-9223372036854775000"},
        {0.03125, "312"},
        {0.09375, "938"},
        {922337203685477.0, "9223372036854770000"},
        {922337203685478.0, "8002000A"},
        {1e300, "8002000A"},
        {std::numeric_limits<double>::quiet_NaN(), "8002000A"},
    };
    for (const auto& row : kRows) {
        CY value{};
        const HRESULT result = VarCyFromR8(row.value, &value);
        EXPECT_EQ(Outcome(result, value), row.units) << row.value;
    }
}

TEST(VarCyFromDec, AgreesWithIntegerArithmetic) {
    const unsigned seed = std::random_device{}();
    std::mt19937_64 random(seed);
    for (int i = 0; i < 20000; ++i) {
        // Seven places to four: the last three decide.
        const auto value = static_cast<std::int64_t>(random()) >> (random() % 40);
        DECIMAL decimal{};
        decimal.Lo64 =
            static_cast<ULONGLONG>(value < 0 ? -static_cast<ULONGLONG>(value) : static_cast<ULONGLONG>(value));
        decimal.scale = 7;
        decimal.sign = value < 0 ? DECIMAL_NEG : BYTE{0};
        LONGLONG expected = value / 1000;
        const LONGLONG rest = std::abs(value % 1000);
        if (rest > 500 || (rest == 500 && expected % 2 != 0)) expected += value < 0 ? -1 : 1;
        CY result{};
        ASSERT_EQ(VarCyFromDec(&decimal, &result), S_OK);
        ASSERT_EQ(result.int64, expected) << value << " seed " << seed;
    }
}

TEST(VarDecFromCy, DropsZerosAtTheEnd) {
    DECIMAL value{};
    EXPECT_EQ(VarDecFromCy(Units(12500), &value), S_OK);
    EXPECT_EQ(Spell(value), "1.25");
    EXPECT_EQ(VarDecFromCy(Units(kLeast), &value), S_OK);
    EXPECT_EQ(Spell(value), "-922337203685477.5808");
    EXPECT_EQ(VarDecFromCy(Units(0), &value), S_OK);
    EXPECT_EQ(Spell(value), "0");
}

}  // namespace
}  // namespace tk::test
