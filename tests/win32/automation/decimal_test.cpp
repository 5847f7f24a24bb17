#include <charconv>
#include <cmath>
#include <cstdlib>
#include <random>

#include "tests/win32/automation/decimal_reference.h"
#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

using Binary = HRESULT (*)(LPDECIMAL, LPDECIMAL, LPDECIMAL);

std::string Apply(Binary operation, const char* left, const char* right) {
    DECIMAL first = Dec(left);
    DECIMAL second = Dec(right);
    DECIMAL result{};
    const HRESULT outcome = operation(&first, &second, &result);
    return SUCCEEDED(outcome) ? Spell(result) : Code(outcome);
}

constexpr char kMax[] = "79228162514264337593543950335";

TEST(VarDecAdd, KeepsThePlacesOfTheFinerOperand) {
    static constexpr struct {
        const char* left;
        const char* right;
        const char* sum;
    } kRows[] = {
        {"1", "2", "3"},
        {"1.50", "0.50", "2.00"},
        {"1.5", "0.25", "1.75"},
        {"-1.5", "0.25", "-1.25"},
        {"1.5", "-1.50", "0.00"},
        {"-1", "-2", "-3"},
        {"1", "-3", "-2"},
        {kMax, "0.4", kMax},
        {kMax, "0.5", "8002000A"},  // a half rounds to even, which is too large
        {kMax, "1", "8002000A"},
        {"-79228162514264337593543950335", "-1", "8002000A"},
        {kMax, "-79228162514264337593543950335", "0"},
        {"7.9228162514264337593543950335", "1", "8.922816251426433759354395034"},
        {"7922816251426433759354395033.5", "0.05", "7922816251426433759354395034"},
        {"7922816251426433759354395033.4", "0.05", "7922816251426433759354395033.4"},
        {"0.0000000000000000000000000001", "1", "1.0000000000000000000000000001"},
        {"0.0000000000000000000000000001", "10000000000", "10000000000.000000000000000000"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(Apply(VarDecAdd, row.left, row.right), row.sum) << row.left << " + " << row.right;
        EXPECT_EQ(Apply(VarDecAdd, row.right, row.left), row.sum) << row.right << " + " << row.left;
    }
    EXPECT_EQ(Apply(VarDecSub, "1.5", "0.25"), "1.25");
    EXPECT_EQ(Apply(VarDecSub, "0.25", "1.5"), "-1.25");
    EXPECT_EQ(Apply(VarDecSub, kMax, "-1"), "8002000A");
}

TEST(VarDecMul, RoundsOnceToEven) {
    static constexpr struct {
        const char* left;
        const char* right;
        const char* product;
    } kRows[] = {
        {"2", "3", "6"},
        {"1.5", "-1.5", "-2.25"},
        {"0", "-5", "0"},
        {"0.00000000000001", "0.00000000000001", "0.0000000000000000000000000001"},
        {"0.00000000000001", "0.000000000000005", "0.0000000000000000000000000000"},
        {"0.00000000000003", "0.000000000000005", "0.0000000000000000000000000002"},
        {kMax, "1", kMax},
        {kMax, "0.1", "7922816251426433759354395033.5"},
        {kMax, "1.1", "8002000A"},
        {kMax, "10", "8002000A"},
        {"7922816251426433759354395033.5", "10", "79228162514264337593543950335"},
        {"10000000000000000", "10000000000000", "8002000A"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(Apply(VarDecMul, row.left, row.right), row.product) << row.left << " * " << row.right;
        EXPECT_EQ(Apply(VarDecMul, row.right, row.left), row.product) << row.right << " * " << row.left;
    }
}

TEST(VarDecDiv, GivesAsManyPlacesAsFit) {
    static constexpr struct {
        const char* left;
        const char* right;
        const char* quotient;
    } kRows[] = {
        {"6", "3", "2"},
        {"1", "4", "0.25"},
        {"-1", "8", "-0.125"},
        {"1", "3", "0.3333333333333333333333333333"},
        {"2", "3", "0.6666666666666666666666666667"},
        {"10", "3", "3.3333333333333333333333333333"},
        {"100", "3", "33.333333333333333333333333333"},
        {"1.00", "2", "0.50"},
        {"1", "2.00", "0.5"},
        {"0", "7", "0"},
        {"0.00", "7", "0.00"},
        {kMax, kMax, "1"},
        {kMax, "0.1", "8002000A"},
        {"1", kMax, "0"},
        {"1", "7.9228162514264337593543950335", "0.1262177448353618888658765704"},
        {"7.9228162514264337593543950335", "1", "7.9228162514264337593543950335"},
        {"0.0000000000000000000000000001", "2", "0.0000000000000000000000000000"},
        {"0.0000000000000000000000000003", "2", "0.0000000000000000000000000002"},
        {"1", "0", "80020012"},
        {"0", "0.00", "80020012"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(Apply(VarDecDiv, row.left, row.right), row.quotient) << row.left << " / " << row.right;
    }
}

TEST(VarDecRound, RoundsAHalfToEven) {
    static constexpr struct {
        const char* value;
        int places;
        const char* rounded;
    } kRows[] = {
        {"1.005", 2, "1.00"},
        {"1.015", 2, "1.02"},
        {"-1.005", 2, "-1.00"},
        {"-1.015", 2, "-1.02"},
        {"2.5", 0, "2"},
        {"3.5", 0, "4"},
        {"2.51", 0, "3"},
        {"-0.5", 0, "0"},
        {"1.5", 3, "1.5"},
        {"1.25", 50, "1.25"},
        {"0.0000000000000000000000000005", 27, "0.000000000000000000000000000"},
        {"7.9228162514264337593543950335", 27, "7.922816251426433759354395034"},
    };
    for (const auto& row : kRows) {
        DECIMAL value = Dec(row.value);
        DECIMAL result{};
        EXPECT_EQ(VarDecRound(&value, row.places, &result), S_OK);
        EXPECT_EQ(Spell(result), row.rounded) << row.value;
    }
    DECIMAL value = Dec("1");
    EXPECT_EQ(VarDecRound(&value, -1, &value), E_INVALIDARG);
}

TEST(VarDecFix, CutsWhereVarDecIntGoesDown) {
    static constexpr struct {
        const char* value;
        const char* fixed;
        const char* floor;
    } kRows[] = {
        {"2.9", "2", "2"},
        {"-2.1", "-2", "-3"},
        {"-2.0", "-2", "-2"},
        {"-0.0000000000000000000000000001", "0", "-1"},
        {"0.5", "0", "0"},
        {"7", "7", "7"},
        {"-7", "-7", "-7"},
        {"-7.9228162514264337593543950335", "-7", "-8"},
        {"123456789.00000000000000000001", "123456789", "123456789"},
    };
    for (const auto& row : kRows) {
        DECIMAL value = Dec(row.value);
        DECIMAL result{};
        EXPECT_EQ(VarDecFix(&value, &result), S_OK);
        EXPECT_EQ(Spell(result), row.fixed) << row.value;
        EXPECT_EQ(VarDecInt(&value, &result), S_OK);
        EXPECT_EQ(Spell(result), row.floor) << row.value;
    }
}

TEST(VarDecCmp, ComparesAcrossScales) {
    static constexpr struct {
        const char* left;
        const char* right;
        HRESULT order;
    } kRows[] = {
        {"1.0", "1.000", VARCMP_EQ},
        {"0", "-0.00", VARCMP_EQ},
        {"1", "2", VARCMP_LT},
        {"-1", "-2", VARCMP_GT},
        {"-1", "1", VARCMP_LT},
        {"0", "-1", VARCMP_GT},
        {kMax, "0.0000000000000000000000000001", VARCMP_GT},
        {"1.0000000000000000000000000001", "1", VARCMP_GT},
    };
    for (const auto& row : kRows) {
        DECIMAL left = Dec(row.left);
        DECIMAL right = Dec(row.right);
        EXPECT_EQ(VarDecCmp(&left, &right), row.order) << row.left << " ? " << row.right;
    }
    DECIMAL value = Dec("1.5");
    EXPECT_EQ(VarDecCmpR8(&value, 1.5), VARCMP_EQ);
    EXPECT_EQ(VarDecCmpR8(&value, 1.6), VARCMP_LT);
    EXPECT_EQ(VarDecCmpR8(&value, 1e300), VARCMP_LT);
    EXPECT_EQ(VarDecCmpR8(&value, -1e300), VARCMP_GT);
    EXPECT_EQ(VarDecCmpR8(&value, std::nan("")), VARCMP_NULL);
}

TEST(VarDecNeg, TurnsTheSignButNotOfZero) {
    DECIMAL value = Dec("1.5");
    DECIMAL result{};
    EXPECT_EQ(VarDecNeg(&value, &result), S_OK);
    EXPECT_EQ(Spell(result), "-1.5");
    EXPECT_EQ(VarDecAbs(&result, &result), S_OK);
    EXPECT_EQ(Spell(result), "1.5");
    value = Dec("0.0");
    EXPECT_EQ(VarDecNeg(&value, &result), S_OK);
    EXPECT_EQ(Spell(result), "0.0");
}

TEST(VarDec, RefusesBrokenDecimalsAndNull) {
    DECIMAL good = Dec("1");
    DECIMAL broken = good;
    broken.scale = 29;
    DECIMAL strange = good;
    strange.sign = 1;
    DECIMAL result{};
    static constexpr Binary kOperations[] = {VarDecAdd, VarDecSub, VarDecMul, VarDecDiv};
    for (const Binary operation : kOperations) {
        EXPECT_EQ(operation(&good, &broken, &result), E_INVALIDARG);
        EXPECT_EQ(operation(&strange, &good, &result), E_INVALIDARG);
        EXPECT_EQ(operation(nullptr, &good, &result), E_INVALIDARG);
        EXPECT_EQ(operation(&good, nullptr, &result), E_INVALIDARG);
        EXPECT_EQ(operation(&good, &good, nullptr), E_INVALIDARG);
    }
    EXPECT_EQ(VarDecCmp(&good, &broken), E_INVALIDARG);
    EXPECT_EQ(VarDecRound(&broken, 0, &result), E_INVALIDARG);
    EXPECT_EQ(VarDecNeg(nullptr, &result), E_INVALIDARG);
}

// ---- Against arithmetic on digits

class RandomDecimals {
public:
    explicit RandomDecimals(unsigned seed) : random_(seed) {}
    // Of every length: small numbers meet large ones, and carries run over the words.
    DECIMAL Next() {
        DECIMAL decimal{};
        const int bits = static_cast<int>(random_() % 97);
        __extension__ unsigned __int128 magnitude = random_();
        magnitude = (magnitude << 64) | random_();
        magnitude = bits == 0 ? 0 : magnitude >> (128 - bits);
        if (random_() % 8 == 0 && bits != 0) magnitude = (static_cast<decltype(magnitude)>(1) << (bits - 1)) - 1;
        decimal.Hi32 = static_cast<ULONG>(magnitude >> 64);
        decimal.Lo64 = static_cast<ULONGLONG>(magnitude);
        decimal.scale = static_cast<BYTE>(random_() % 29);
        decimal.sign = random_() % 2 != 0 && magnitude != 0 ? DECIMAL_NEG : BYTE{0};
        return decimal;
    }
    std::mt19937_64& Generator() { return random_; }

private:
    std::mt19937_64 random_;
};

std::string Outcome(HRESULT result, const DECIMAL& value) {
    return result == DISP_E_OVERFLOW ? "overflow" : SUCCEEDED(result) ? Spell(value) : Code(result);
}

TEST(VarDecAdd, AgreesWithArithmeticOnDigits) {
    const unsigned seed = std::random_device{}();
    RandomDecimals decimals(seed);
    for (int i = 0; i < 30000; ++i) {
        DECIMAL left = decimals.Next();
        DECIMAL right = decimals.Next();
        DECIMAL result{};
        const Digits first = Parse(Spell(left));
        Digits second = Parse(Spell(right));
        HRESULT outcome = VarDecAdd(&left, &right, &result);
        ASSERT_EQ(Outcome(outcome, result), FitDecimal(Add(first, second)))
            << Spell(left) << " + " << Spell(right) << " seed " << seed;
        second.negative = !second.negative;
        outcome = VarDecSub(&left, &right, &result);
        ASSERT_EQ(Outcome(outcome, result), FitDecimal(Add(first, second)))
            << Spell(left) << " - " << Spell(right) << " seed " << seed;
    }
}

TEST(VarDecMul, AgreesWithArithmeticOnDigits) {
    const unsigned seed = std::random_device{}();
    RandomDecimals decimals(seed);
    for (int i = 0; i < 30000; ++i) {
        DECIMAL left = decimals.Next();
        DECIMAL right = decimals.Next();
        DECIMAL result{};
        const HRESULT outcome = VarDecMul(&left, &right, &result);
        ASSERT_EQ(Outcome(outcome, result), FitDecimal(Multiply(Parse(Spell(left)), Parse(Spell(right)))))
            << Spell(left) << " * " << Spell(right) << " seed " << seed;
    }
}

TEST(VarDecDiv, IsTheNearestDecimal) {
    // |quotient * divisor - dividend| is at most half a unit of the quotient's last place times the divisor.
    const unsigned seed = std::random_device{}();
    RandomDecimals decimals(seed);
    int divided = 0;
    for (int i = 0; i < 20000; ++i) {
        DECIMAL left = decimals.Next();
        DECIMAL right = decimals.Next();
        DECIMAL result{};
        const HRESULT outcome = VarDecDiv(&left, &right, &result);
        const Digits divisor = Parse(Spell(right));
        if (divisor.digits == "0") {
            ASSERT_EQ(outcome, DISP_E_DIVBYZERO);
            continue;
        }
        if (outcome == DISP_E_OVERFLOW) {
            // The dividend is larger than the largest decimal times the divisor.
            Digits bound = Multiply(Parse(kMax), divisor);
            bound.negative = true;
            Digits dividend = Parse(Spell(left));
            dividend.negative = false;
            ASSERT_FALSE(Add(dividend, bound).negative) << Spell(left) << " / " << Spell(right) << " seed " << seed;
            continue;
        }
        ASSERT_EQ(outcome, S_OK);
        ++divided;
        Digits dividend = Parse(Spell(left));
        dividend.negative = !dividend.negative;
        const Digits error = Add(Multiply(Parse(Spell(result)), divisor), dividend);
        // Zeros at the end were removed; the last place that fits is the one that was rounded.
        Digits unit{"1", result.scale, false};
        std::string places = Parse(Spell(result)).digits + "0";
        for (; unit.scale < 28 && CompareDigits(places, kMax) <= 0; places += "0")
            ++unit.scale;
        Digits twice = Multiply(error, Digits{"2", 0, false});
        Digits limit = Multiply(unit, divisor);
        twice.negative = false;
        limit.negative = true;
        const Digits slack = Add(twice, limit);
        ASSERT_TRUE(slack.negative || slack.digits == "0") << Spell(left) << " / " << Spell(right) << " seed " << seed;
    }
    EXPECT_GT(divided, 5000);
}

TEST(VarDecRound, AgreesWithRoundingOfDigits) {
    const unsigned seed = std::random_device{}();
    RandomDecimals decimals(seed);
    for (int i = 0; i < 20000; ++i) {
        DECIMAL value = decimals.Next();
        const int places = static_cast<int>(decimals.Generator()() % 29);
        DECIMAL result{};
        ASSERT_EQ(VarDecRound(&value, places, &result), S_OK);
        Digits expected = Parse(Spell(value));
        const int cut = std::max(0, expected.scale - places);
        expected.digits = CutDigits(expected.digits, cut);
        expected.scale -= cut;
        ASSERT_EQ(Spell(result), FitDecimal(expected)) << Spell(value) << " to " << places << " seed " << seed;
    }
}

std::u16string Widen(const std::string& text) {
    return {text.begin(), text.end()};
}

TEST(VarDecFromStr, RoundsWhatDoesNotFit) {
    static constexpr struct {
        const char16_t* text;
        const char* decimal;
    } kRows[] = {
        {u"0", "0"},
        {u"-0", "0"},
        {u"12.75", "12.75"},
        {u"12.750", "12.75"},
        {u"1E3", "1000"},
        {u"1E28", "10000000000000000000000000000"},
        {u"1E29", "8002000A"},
        {u"1E-28", "0.0000000000000000000000000001"},
        {u"5E-29", "0.0000000000000000000000000000"},
        {u"5.0000000000000000000000001E-29", "0.0000000000000000000000000001"},
        {u"1E-1000000", "0"},
        {u"79228162514264337593543950335", kMax},
        {u"79228162514264337593543950335.4999", kMax},
        {u"79228162514264337593543950335.5", "8002000A"},
        {u"79228162514264337593543950336", "8002000A"},
        {u"0.12345678901234567890123456785", "0.1234567890123456789012345678"},
        {u"0.12345678901234567890123456775", "0.1234567890123456789012345678"},
        {u"0.123456789012345678901234567750000000000000000000000000000000000000001", "0.1234567890123456789012345678"},
        {u"0.123456789012345678901234567850000000000000000000000000000000000000001", "0.1234567890123456789012345679"},
        {u"9.99999999999999999999999999999", "10.000000000000000000000000000"},
        {u"(1,234.5)", "-1234.5"},
        {u"&HFF", "255"},
        {u"", "80020005"},
        {u"1.2.3", "80020005"},
    };
    for (const auto& row : kRows) {
        DECIMAL value{};
        const HRESULT result = VarDecFromStr(row.text, 0x0400, 0x80000000u, &value);
        EXPECT_EQ(SUCCEEDED(result) ? Spell(value) : Code(result), row.decimal) << Show(row.text);
    }
}

TEST(VarDecFromStr, AgreesWithRoundingOfDigitsOnRandomTexts) {
    const unsigned seed = std::random_device{}();
    std::mt19937_64 random(seed);
    for (int i = 0; i < 20000; ++i) {
        std::string text = random() % 2 != 0 ? "-" : "";
        const int whole = static_cast<int>(random() % 32) + 1;
        const int places = static_cast<int>(random() % 80);
        text += static_cast<char>('1' + random() % 9);
        for (int digit = 1; digit < whole; ++digit)
            text += static_cast<char>('0' + random() % 10);
        text += '.';
        for (int digit = 0; digit < places; ++digit) {
            // Halves are rare by chance; make some.
            text += random() % 4 == 0 ? '5' : random() % 2 != 0 ? '0' : static_cast<char>('0' + random() % 10);
        }
        text += '7';
        DECIMAL value{};
        const HRESULT result = VarDecFromStr(Widen(text).c_str(), 0, 0, &value);
        ASSERT_EQ(Outcome(result, value), FitDecimal(Parse(text))) << text << " seed " << seed;
    }
}

TEST(VarBstrFromDec, ReadsBackAsTheSameValue) {
    const unsigned seed = std::random_device{}();
    RandomDecimals decimals(seed);
    for (int i = 0; i < 20000; ++i) {
        DECIMAL value = decimals.Next();
        BSTR text = nullptr;
        ASSERT_EQ(VarBstrFromDec(&value, 0x0804, 0, &text), S_OK);
        DECIMAL back{};
        ASSERT_EQ(VarDecFromStr(text, 0x0804, 0, &back), S_OK) << Narrow(text);
        ASSERT_EQ(VarDecCmp(&value, &back), VARCMP_EQ) << Narrow(text) << " seed " << seed;
        SysFreeString(text);
    }
}

TEST(VarR8FromDec, GivesTheNearestDouble) {
    const unsigned seed = std::random_device{}();
    RandomDecimals decimals(seed);
    for (int i = 0; i < 30000; ++i) {
        DECIMAL value = decimals.Next();
        double result = 0;
        ASSERT_EQ(VarR8FromDec(&value, &result), S_OK);
        ASSERT_EQ(result, std::strtod(Spell(value).c_str(), nullptr)) << Spell(value) << " seed " << seed;
    }
}

TEST(VarDecFromR8, KeepsFifteenDigits) {
    static constexpr struct {
        double value;
        const char* decimal;
    } kRows[] = {
        {0, "0"},
        {-0.0, "0"},
        {0.1, "0.1"},
        {-1.5, "-1.5"},
        {100, "100"},
        {1e20, "100000000000000000000"},
        {1.0 / 3, "0.333333333333333"},
        {2.0 / 3, "0.666666666666667"},
        {123456789012345678.0, "123456789012346000"},
        {1e28, "10000000000000000000000000000"},
        {7.9e28, "79000000000000000000000000000"},
        {8e28, "8002000A"},
        {1e29, "8002000A"},
        {1e-28, "0.0000000000000000000000000001"},
        {1e-29, "0"},
        {1.23456789012345e-20, "0.0000000000000000000123456789"},
    };
    for (const auto& row : kRows) {
        DECIMAL value{};
        const HRESULT result = VarDecFromR8(row.value, &value);
        EXPECT_EQ(SUCCEEDED(result) ? Spell(value) : Code(result), row.decimal) << row.value;
    }
    DECIMAL value{};
    EXPECT_EQ(VarDecFromR4(1.0f / 3, &value), S_OK);
    EXPECT_EQ(Spell(value), "0.3333333");
    EXPECT_EQ(VarDecFromR8(std::nan(""), &value), DISP_E_OVERFLOW);
}

}  // namespace
}  // namespace tk::test
