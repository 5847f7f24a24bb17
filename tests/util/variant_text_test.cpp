#include <gtest/gtest.h>

#include <afxdisp.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "tkkernel/util.h"
#include "util/slow_reference.h"
#include "util/values.h"

namespace {

using namespace tk::test;

struct Row {
    const char* label;
    Value value;
    const char* text;
};

// 1999-07-04 13:05:09
constexpr double kSummerDay = 36345.0 + (13 * 3600 + 5 * 60 + 9) / 86400.0;

TEST(VariantToString, PrintsEachTypeInItsForm) {
    const Row kRows[] = {
        {"empty", Value(VT_EMPTY), ""},
        {"null", Value(VT_NULL), ""},
        {"smallest I2", Int2(-32768), "-32768"},
        {"largest I2", Int2(32767), "32767"},
        {"I2 zero", Int2(0), "0"},
        {"smallest I4", Int4(-2147483647 - 1), "-2147483648"},
        {"largest I4", Int4(2147483647), "2147483647"},
        {"byte", Byte(255), "255"},
        {"byte zero", Byte(0), "0"},
        {"R4", Real4(1.5F), "        1.5"},
        {"R8", Real8(1.5), "        1.5"},
        {"currency", Currency(15000), "        1.5"},
        {"date and time", Date(kSummerDay), "1999-07-04 13:05:09"},
        {"date alone has midnight", Date(36345.0), "1999-07-04 00:00:00"},
        {"day zero", Date(0.0), "1899-12-30 00:00:00"},
        {"before day zero the fraction still counts forward", Date(-1.25), "1899-12-29 06:00:00"},
        {"last second of the calendar", Date(2958465.0 + 86399.0 / 86400.0), "9999-12-31 23:59:59"},
        {"text", Text("abc"), "abc"},
        {"Chinese text", Text("库存"), "库存"},
        {"empty text", Text(""), ""},
        {"text keeps its blanks", Text("  a  "), "  a  "},
        {"true", Bool(VARIANT_TRUE), "True"},
        {"any nonzero is true", Bool(1), "True"},
        {"false", Bool(VARIANT_FALSE), "False"},
        {"decimal", Decimal(1275, 2), "12.75"},
        {"negative decimal", Decimal(1275, 2, true), "-12.75"},
        {"decimal zero", Decimal(0, 0), "0"},
        {"numeric tag of the database layer", Decimal(1275, 2, false, 131), "12.75"},
        {"numeric zero", Decimal(0, 0, false, 131), "0"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(VariantToString(row.value), row.text);
    }
}

TEST(VariantToString, TrimsZerosButKeepsTheLeadingBlanks) {
    const Row kRows[] = {
        {"half", Real8(1.5), "        1.5"},
        {"whole", Real8(2.0), "        2"},
        {"two decimals", Real8(3.25), "        3.25"},
        {"zeros of the whole part stay", Real8(100.0), "      100"},
        {"negative", Real8(-0.5), "       -0.5"},
        {"negative whole", Real8(-7.0), "       -7"},
        {"hundredth", Real8(0.01), "        0.01"},
        {"fills the width", Real8(123456789.25), "123456789.25"},
        {"past the width", Real8(-1234567890.5), "-1234567890.5"},
        {"large", Real8(1e15), "1000000000000000"},
        {"past 2^53", Real8(1e22), "10000000000000000000000"},
        {"R4 shows its own value", Real4(0.1F), "        0.1"},
        {"R4 large", Real4(16777216.0F), " 16777216"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(VariantToString(row.value), row.text);
    }
}

TEST(VariantToString, IsEmptyForWhatPrintsAsZeroOrNoNumber) {
    const struct {
        const char* label;
        double value;
    } kRows[] = {
        {"zero", 0.0},
        {"minus zero", -0.0},
        {"rounds down to zero", 0.004999},
        {"rounds up to zero", -0.004999},
        {"smallest", std::numeric_limits<double>::denorm_min()},
        {"infinity", std::numeric_limits<double>::infinity()},
        {"minus infinity", -std::numeric_limits<double>::infinity()},
        {"not a number", std::numeric_limits<double>::quiet_NaN()},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(VariantToString(Real8(row.value)), "");
    }
}

TEST(VariantToString, RoundsHalvesOfTheBinaryValueToEven) {
    const Row kRows[] = {
        {"0.125 exactly half, even stays", Real8(0.125), "        0.12"},
        {"0.375 exactly half, odd goes up", Real8(0.375), "        0.38"},
        {"0.025 is above the half in binary", Real8(0.025), "        0.03"},
        {"1.005 is below the half in binary", Real8(1.005), "        1"},
        {"1.015 is below the half in binary", Real8(1.015), "        1.01"},
        {"carries into the whole part", Real8(0.995000001), "        1"},
        {"carries into a new digit", Real8(99.999), "      100"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(VariantToString(row.value), row.text);
    }
}

TEST(VariantToString, AgreesWithTheFormatterOnAllKindsOfDoubles) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 200000; ++i) {
        const std::uint64_t bits = random.Engine()();
        double value = 0;
        switch (i % 4) {
            case 0:  // any bit pattern
                value = std::bit_cast<double>(bits);
                if (!std::isfinite(value)) continue;
                break;
            case 1:  // magnitudes that people use
                value = (static_cast<double>(bits % 2000000000000ULL) - 1e12) / 1e5;
                break;
            case 2:  // exact halves of a hundredth
                value = static_cast<double>(static_cast<std::int64_t>(bits % 2000001) - 1000000) / 8.0 +
                        static_cast<double>(bits % 7) / 1024.0;
                break;
            default:  // around the place where fractions end
                value = std::ldexp(static_cast<double>(bits >> 11), static_cast<int>(bits % 12) - 6);
        }
        ASSERT_EQ(Std(VariantToString(Real8(value))), TrimZeros(TwelvePointTwo(value))) << value;
    }
}

TEST(VariantToString, RoundsCurrencyHalfAwayFromZeroBeforePrinting) {
    const Row kRows[] = {
        {"1.005", Currency(10050), "        1.01"},
        {"-1.005", Currency(-10050), "       -1.01"},
        {"1.0049", Currency(10049), "        1"},
        {"carry over the point", Currency(19950), "        2"},
        {"carry off the start", Currency(999950), "      100"},
        {"zero", Currency(0), ""},
        {"rounds to zero", Currency(49), ""},
        {"rounds to minus zero", Currency(-49), ""},
        {"smallest that shows", Currency(50), "        0.01"},
        {"past what a double tells apart", Currency(9223372036854775807LL), "922337203685477.62"},
        {"smallest amount", Currency(-9223372036854775807LL - 1), "-922337203685477.62"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(VariantToString(row.value), row.text);
    }
}

TEST(VariantToString, RoundsCurrencyAsItsDigitsDo) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 100000; ++i) {
        auto units = static_cast<long long>(random.Engine()());
        if (i % 2 == 0) units %= 100000000;
        const double expected = RoundCurrencyText(units);
        const Value amount = Currency(units);
        ASSERT_EQ(VariantToDouble(amount), expected) << units;
        ASSERT_EQ(std::signbit(VariantToDouble(amount)), std::signbit(expected)) << units;
        ASSERT_EQ(Std(VariantToString(amount)), TrimZeros(TwelvePointTwo(expected))) << units;
    }
}

TEST(VariantToString, PrintsDatesAsTheFrameworkDoes) {
    constexpr char kFormat[] = "%Y-%m-%d %H:%M:%S";
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 20000; ++i) {
        const int day = random.Below(3615899) - 657434;  // 0100-01-01 to 9999-12-30
        const double time = random.Below(864000) / 864000.0;
        const double date = day < 0 ? day - time : day + time;
        ASSERT_EQ(Std(VariantToString(Date(date))), Std(COleDateTime(date).Format(kFormat))) << date;
    }
    for (const double date : {1e10, -1e10, 2958466.0, -657435.0, std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(Std(VariantToString(Date(date))), Std(COleDateTime(date).Format(kFormat))) << date;
    }
}

TEST(VariantToString, GivesTheBytesOfAnArrayUpToTheFirstZero) {
    using namespace std::string_view_literals;
    const Row kRows[] = {
        {"all bytes", Bytes("abc"sv), "abc"},
        {"stops at a zero byte", Bytes("ab\0cd"sv), "ab"},
        {"zero byte first", Bytes("\0ab"sv), ""},
        {"no bytes", Bytes(""sv), ""},
        {"lower bound above zero", Bytes("xyz"sv, 5), "xyz"},
        {"negative lower bound", Bytes("xyz"sv, -2), "xyz"},
        {"Chinese bytes", Bytes("库存"sv), "库存"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(VariantToString(row.value), row.text);
    }
}

TEST(VariantToString, TakesNothingForAnArrayThatIsNone) {
    Value noArray(VT_ARRAY | VT_UI1);
    noArray->parray = nullptr;
    EXPECT_STREQ(VariantToString(noArray), "");

    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    Value twoDimensions(VT_ARRAY | VT_UI1);
    twoDimensions->parray = SafeArrayCreate(VT_UI1, 2, bounds);
    EXPECT_STREQ(VariantToString(twoDimensions), "");

    Value longs(VT_ARRAY | VT_I4);
    longs->parray = SafeArrayCreate(VT_I4, 1, bounds);
    EXPECT_STREQ(VariantToString(longs), "");

    const Row kRows[] = {
        {"error", Error(5), ""},
        {"I1", SmallInt1('a'), ""},
        {"UI2", Unsigned2(7), ""},
        {"UI4", Unsigned4(0x41414141), ""},
        {"I8", Int8(0x4141414141414141), ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(VariantToString(row.value), row.text);
    }
}

TEST(VariantToString, HasNoTextForAnyTypeThatIsNotListed) {
    const int kListed[] = {VT_I2, VT_I4, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BSTR, VT_BOOL, VT_DECIMAL, VT_UI1, 131};
    for (int type = 0; type <= 0xFFFF; ++type) {
        if (std::find(std::begin(kListed), std::end(kListed), type) != std::end(kListed)) continue;
        if (type == (VT_ARRAY | VT_UI1)) continue;
        // What the value holds must not be looked at: it is no pointer.
        VARIANT value = {};
        value.vt = static_cast<VARTYPE>(type);
        value.llVal = 0x4141414141414141;
        ASSERT_STREQ(VariantToString(value), "") << type;
        ASSERT_EQ(VariantToLong(value), 2147483647) << type;
        ASSERT_EQ(VariantToDouble(value), 2147483647.0) << type;
        ASSERT_EQ(CompareVariant(value, value), 0) << type;
    }
}

TEST(VariantToString, KeepsTextBehindAZeroCharacter) {
    Value text(VT_BSTR);
    text->bstrVal = SysAllocStringLen(OLESTR("a\0b"), 3);
    EXPECT_EQ(Std(VariantToString(text)), std::string("a\0b", 3));
}

TEST(VariantToString, TakesANullBstrForAnEmptyText) {
    Value text(VT_BSTR);
    text->bstrVal = nullptr;
    EXPECT_STREQ(VariantToString(text), "");
    EXPECT_STREQ(VARIANTToString(text), "''");
}

TEST(VariantToString, ReplacesWhatGbkCannotSay) {
    EXPECT_STREQ(VariantToString(WideText(OLESTR("a\u0E01b"))), "a?b");  // a Thai letter
}

TEST(VariantToString, LeavesTheValueAsItIs) {
    const Value text = Text("O'Brien");
    VariantToString(text);
    VARIANTToString(text);
    VariantToTrimString(text);
    EXPECT_STREQ(VariantToString(text), "O'Brien");
}

TEST(VariantToSqlText, DiffersFromTheDisplayTextInThreeWays) {
    const Row kRows[] = {
        {"empty", Value(VT_EMPTY), ""},
        {"null is no word", Value(VT_NULL), ""},
        {"I2", Int2(-5), "-5"},
        {"I4", Int4(70000), "70000"},
        {"byte", Byte(7), "7"},
        {"R8 keeps its blanks", Real8(1.5), "        1.5"},
        {"R8 zero", Real8(0.0), ""},
        {"currency", Currency(10050), "        1.01"},
        {"true", Bool(VARIANT_TRUE), "True"},
        {"decimal", Decimal(1275, 2), "12.75"},
        {"numeric", Decimal(1275, 2, false, 131), "12.75"},
        {"date in quotes", Date(kSummerDay), "'1999-07-04 13:05:09'"},
        {"text in quotes", Text("abc"), "'abc'"},
        {"empty text", Text(""), "''"},
        {"a quote is doubled", Text("O'Brien"), "'O''Brien'"},
        {"quotes alone", Text("''"), "''''''"},
        {"Chinese text", Text("库'存"), "'库''存'"},
        {"a coerced number", Unsigned2(7), "'7'"},
        {"a coerced I1", SmallInt1(-7), "'-7'"},
        {"a coerced UI4", Unsigned4(4294967295U), "'4294967295'"},
        {"a coerced I8", Int8(-5), "'-5'"},
        {"a coerced UI8", Unsigned8(18446744073709551615ULL), "'18446744073709551615'"},
        {"a coerced INT", Integer(7), "'7'"},
        {"a coerced UINT", UnsignedInteger(7), "'7'"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(VARIANTToString(row.value), row.text);
    }
}

TEST(VariantToSqlText, FollowsAReferenceAndLeavesItsQuotesSingle) {
    BSTR target = SysAllocString(OLESTR("O'Brien"));
    VARIANT reference = {};
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &target;
    EXPECT_STREQ(VARIANTToString(reference), "'O'Brien'");
    SysFreeString(target);
}

TEST(VariantToSqlText, CoercesWhatAReferenceLeadsTo) {
    VARIANT four = Int4(7);  // not owned: it holds no pointer
    VARIANT_BOOL yes = VARIANT_TRUE;
    double zero = 0.0;
    VARIANT toVariant = {};
    toVariant.vt = VT_BYREF | VT_VARIANT;
    toVariant.pvarVal = &four;
    VARIANT toBool = {};
    toBool.vt = VT_BYREF | VT_BOOL;
    toBool.pboolVal = &yes;
    VARIANT toReal = {};
    toReal.vt = VT_BYREF | VT_R8;
    toReal.pdblVal = &zero;
    const struct {
        const char* label;
        VARIANT& value;
        const char* text;
    } kRows[] = {
        {"another value", toVariant, "'7'"},
        {"true is a number here", toBool, "'-1'"},
        {"zero is not empty here", toReal, "'0'"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const VARIANT before = row.value;
        EXPECT_STREQ(VARIANTToString(row.value), row.text);
        EXPECT_EQ(row.value.vt, before.vt);
        EXPECT_EQ(row.value.byref, before.byref);
    }
    EXPECT_EQ(four.vt, VT_I4);
    EXPECT_EQ(four.lVal, 7);
    EXPECT_EQ(yes, VARIANT_TRUE);
    EXPECT_EQ(zero, 0.0);
}

TEST(VariantToSqlText, IsEmptyForArraysAndReferencesToThem) {
    SAFEARRAYBOUND bound = {2, 0};
    Value longs(VT_ARRAY | VT_I4);
    longs->parray = SafeArrayCreate(VT_I4, 1, &bound);
    EXPECT_STREQ(VARIANTToString(longs), "");
    EXPECT_EQ(longs->vt, VT_ARRAY | VT_I4);

    Value bytes = Bytes("abc");
    VARIANT reference = {};
    reference.vt = VT_BYREF | VT_ARRAY | VT_UI1;
    reference.pparray = &bytes->parray;
    EXPECT_STREQ(VARIANTToString(reference), "");
    EXPECT_EQ(reference.pparray, &bytes->parray);
    EXPECT_STREQ(VariantToString(bytes), "abc");
}

TEST(VariantToSqlText, IsEmptyForWhatCannotBeCoerced) {
    EXPECT_STREQ(VARIANTToString(Bytes("abc")), "");
    EXPECT_STREQ(VARIANTToString(Error(5)), "");
    VARIANT nothing = {};
    nothing.vt = VT_UNKNOWN;
    EXPECT_STREQ(VARIANTToString(nothing), "");
    VARIANT unknown = {};
    unknown.vt = 200;
    unknown.llVal = 0x4141414141414141;
    EXPECT_STREQ(VARIANTToString(unknown), "");
}

TEST(VariantToTrimString, RemovesWhiteSpaceAtBothEnds) {
    const Row kRows[] = {
        {"number", Real8(1.5), "1.5"},
        {"negative", Real8(-0.5), "-0.5"},
        {"text", Text(" \t a b \r\n"), "a b"},
        {"only blanks", Text("   "), ""},
        {"nothing", Value(VT_NULL), ""},
        {"zero", Real8(0), ""},
        {"Chinese text", Text(" 库存 "), "库存"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(VariantToTrimString(row.value), row.text);
    }
}

}  // namespace
