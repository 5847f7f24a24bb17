#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

#include "tkkernel/util.h"
#include "util/slow_reference.h"
#include "util/values.h"

namespace {

using namespace tk::test;

struct Row {
    double value;
    const char* format;
    const char* text;
};

TEST(DoubleToStringByPrintf, PrintsReals) {
    EXPECT_STREQ(DoubleToString(800.0, "%4.7G"), " 800");
    const Row kRows[] = {
        {1234.5, "%f", "1234.500000"},
        {1234.5, "%.2f", "1234.50"},
        {1234.5, "%.0f", "1234"},
        {1234.5, "%12.2f", "     1234.50"},
        {1234.5, "%-12.2f|", "1234.50     |"},
        {1234.5, "%012.2f", "000001234.50"},
        {-1234.5, "%012.2f", "-00001234.50"},
        {1234.5, "%+.1f", "+1234.5"},
        {1234.5, "% .1f", " 1234.5"},
        {1234.5, "%#.0f", "1234."},
        {1234.5, "%.10f", "1234.5000000000"},
        {1234.5, "%lf", "1234.500000"},
        {1234.5, "%5.2lf", "1234.50"},
        {1234.5, "%Lf", "1234.500000"},
        {1234.5, "%F", "1234.500000"},
        {1234.5, "%e", "1.234500e+03"},
        {1234.5, "%.2E", "1.23E+03"},
        {1234.5, "%g", "1234.5"},
        {1e10, "%g", "1e+10"},
        {1e10, "%G", "1E+10"},
        {1e22, "%.1f", "10000000000000000000000.0"},
        {0.125, "%.2f", "0.12"},  // printf's rounding: exact halves to the even digit
        {1.005, "%.2f", "1.00"},  // and the exact value decides
        {-0.001, "%.2f", "-0.00"},
        {-0.0, "%.1f", "-0.0"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(DoubleToString(row.value, row.format), row.text);
    }
}

TEST(DoubleToStringByPrintf, PrintsIntegersWithoutTheFraction) {
    const Row kRows[] = {
        {42.9, "%d", "42"},
        {-42.9, "%d", "-42"},
        {0.5, "%i", "0"},
        {-0.5, "%d", "0"},
        {42, "%5d", "   42"},
        {42, "%-5d|", "42   |"},
        {42, "%05d", "00042"},
        {-42, "%05d", "-0042"},
        {42, "%+d", "+42"},
        {42, "%.4d", "0042"},
        {42, "%6.4d", "  0042"},
        {0, "%.0d", ""},
        {42, "%ld", "42"},
        {42, "%lld", "42"},
        {42, "%hd", "42"},
        {42, "%I64d", "42"},
        {42, "%u", "42"},
        {255, "%x", "ff"},
        {255, "%X", "FF"},
        {255, "%#x", "0xff"},
        {255, "0x%08X", "0x000000FF"},
        {8, "%o", "10"},
        {8, "%#o", "010"},
        {-1, "%x", "ffffffff"},
        {-1, "%u", "4294967295"},
        {-1, "%llx", "ffffffffffffffff"},
        {-1, "%I64u", "18446744073709551615"},
        {-2147483648.0, "%X", "80000000"},
        {-2147483649.0, "%X", "FFFFFFFF7FFFFFFF"},  // beyond 32 bits
        {4294967296.0, "%u", "4294967296"},
        {9223372036854774784.0, "%d", "9223372036854774784"},
        {-9223372036854775808.0, "%d", "-9223372036854775808"},
        {18446744073709549568.0, "%u", "18446744073709549568"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(DoubleToString(row.value, row.format), row.text);
    }
}

TEST(DoubleToStringByPrintf, IsEmptyForIntegersBeyondSixtyFourBits) {
    for (const char* format : {"%d", "%i", "%lld", "%5d"}) {
        EXPECT_STREQ(DoubleToString(9223372036854775808.0, format), "") << format;
        EXPECT_STREQ(DoubleToString(-9223372036854777856.0, format), "") << format;
        EXPECT_STREQ(DoubleToString(1e300, format), "") << format;
    }
    for (const char* format : {"%u", "%x", "%o"}) {
        EXPECT_STREQ(DoubleToString(18446744073709551616.0, format), "") << format;
        EXPECT_STREQ(DoubleToString(-1e19, format), "") << format;
    }
}

TEST(DoubleToStringByPrintf, KeepsTextAroundTheNumber) {
    const Row kRows[] = {
        {12.5, "%5.1f%%", " 12.5%"},
        {12.5, "%%%.1f%%%%", "%12.5%%"},
        {12.5, "共%.1f件", "共12.5件"},
        {12.5, "2007: %d", "2007: 12"},
        {12.5, "No.%d", "No.12"},
        {12.5, "<a b=\"%.1f\">;'", "<a b=\"12.5\">;'"},
        {12.5, "C:\\%d", "C:\\12"},
        {12.5, "\x81\x40%.1f\x81",
         "\x81\x40"
         "12.5\x81"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(DoubleToString(row.value, row.format), row.text);
    }
}

TEST(DoubleToStringByPrintf, IsEmptyForFormatsThatTakeSomethingElse) {
    const char* const kFormats[] = {
        "%",
        "%%",
        "%s",
        "%c",
        "%n",
        "%p",
        "%S",
        "%a",
        "%A",
        "%*d",
        "%.*f",
        "%1$d",
        "%'d",
        "%d%d",
        "%d%s",
        "%d%n",
        "%s%d",
        "%q",
        "%5",
        "%.",
        "%5.2",
        "%l",
        "%ll",
        "%lls",
        "%d %",
        "%\xB0\xA1",
        "%\x81",
        "%513d",
        "%.513f",
        "%99999999999d",
        "%.99999999999f",
        "%d%",
        "%-+ #0",
        "%I64",
        "%hhs",
        "%ws",
        "%s%s%s%s%s%s%s%s",
        "%08s",
        "0x%08s",
        "%5.2q",
    };
    for (const char* format : kFormats) {
        for (const double value : {0.0, 1.5, -1e300})
            EXPECT_STREQ(DoubleToString(value, format), "") << format;
    }
}

TEST(DoubleToStringByPrintf, HoldsItsWidestFormats) {
    EXPECT_EQ(Std(DoubleToString(7, "%512d")), std::string(511, ' ') + "7");
    EXPECT_EQ(Std(DoubleToString(7, "%-512d|")), "7" + std::string(511, ' ') + "|");
    EXPECT_EQ(Std(DoubleToString(7, "%.512d")), std::string(511, '0') + "7");
    EXPECT_EQ(Std(DoubleToString(0.5, "%.512f")), "0.5" + std::string(511, '0'));
    EXPECT_EQ(DoubleToString(-std::numeric_limits<double>::max(), "%.512f").GetLength(), 1 + 309 + 1 + 512);
    const std::string text(3000, 'x');
    EXPECT_EQ(Std(DoubleToString(7, (text + "%d" + text).c_str())), text + "7" + text);
}

TEST(DoubleToStringByPrintf, AgreesWithTheCLibraryOnReals) {
    int tooShort = 0;
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 60000; ++i) {
        const std::uint64_t bits = random.Engine()();
        double value = std::bit_cast<double>(bits);  // any bit pattern
        if (i % 3 == 1) value = static_cast<double>(static_cast<std::int64_t>(bits) % 10000000) / 1000;
        if (i % 3 == 2) value = static_cast<double>(static_cast<std::int64_t>(bits) % 20000) / 16;  // many halves
        if (!std::isfinite(value)) continue;
        std::string format = "%" + random.TextOf("-+ #0", 3);
        const bool plain = random.Below(2) == 0;
        const std::size_t width = random.Below(2) == 0 ? 1 + random.Below(30) : 0;
        if (width != 0) format += std::to_string(width);
        if (random.Below(4) != 0) format += "." + std::to_string(random.Below(plain ? 5 : 25));
        format += plain ? 'f' : "feEgG"[random.Below(5)];
        char text[1000];
        std::snprintf(text, sizeof(text), format.c_str(), value);
        // One C library prints 800 by "%4.7G" without the blank.
        if (std::strlen(text) < width && ++tooShort < 100) continue;
        ASSERT_EQ(Std(DoubleToString(value, format.c_str())), text) << value << ' ' << format;
    }
}

TEST(DoubleToStringByPrintf, AgreesWithTheCLibraryOnIntegers) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 40000; ++i) {
        const int number = static_cast<int>(random.Engine()()) >> random.Below(31);
        const char letter = "diuoxX"[random.Below(6)];
        std::string format = "%";
        // Signs and blanks mean nothing to unsigned letters, the other form nothing to decimal ones.
        format += random.TextOf(letter == 'd' || letter == 'i' ? "-+ 0" : letter == 'u' ? "-0" : "-#0", 3);
        if (random.Below(2) == 0) format += std::to_string(1 + random.Below(20));
        if (random.Below(3) == 0) format += "." + std::to_string(random.Below(16));
        format += letter;
        // One library leaves this one empty, against the standard.
        const bool isOctalZero = number == 0 && letter == 'o' && format.find('#') != std::string::npos;
        if (isOctalZero && format.find(".0o") != std::string::npos) continue;
        char text[100];
        std::snprintf(text, sizeof(text), format.c_str(), number);
        ASSERT_EQ(Std(DoubleToString(number, format.c_str())), text) << number << ' ' << format;
        ASSERT_EQ(Std(IntToString(number, format.c_str())), text) << number << ' ' << format;
    }
    EXPECT_STREQ(DoubleToString(0, "%#.0o"), "0");
    EXPECT_STREQ(IntToString(0, "%#3.0o"), "  0");
}

}  // namespace
