#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
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

TEST(DoubleToStringByPattern, FillsDigitPlaces) {
    const Row kRows[] = {
        {0, "0", "0"},
        {0, "#", ""},
        {0, "0.00", "0.00"},
        {0, "#.##", ""},
        {0, ".00", ".00"},
        {0, "0.##", "0"},
        {5, "000", "005"},
        {1234, "00", "1234"},
        {1234.5, "0", "1235"},
        {1234.5, "0.00", "1234.50"},
        {1234.5, "0.0#", "1234.5"},
        {1234.56, "0.0#", "1234.56"},
        {1234, "0.##", "1234"},
        {0.25, "#.00", ".25"},
        {0.25, ".0", ".3"},
        {12, ".0", "12.0"},
        {7, "#0#", "07"},        // the leftmost 0 decides
        {7.5, "0.#0#", "7.50"},  // the rightmost one
        {1, "0.", "1."},
        {1, "0000000000000000000000000000000000000000000000000", "0000000000000000000000000000000000000000000000001"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(DoubleToString(row.value, row.format), row.text);
    }
}

TEST(DoubleToStringByPattern, GroupsByThousandsOrByTenThousands) {
    const Row kRows[] = {
        {0, "#,##0.00", "0.00"},
        {999, "#,##0.00", "999.00"},
        {1000, "#,##0.00", "1,000.00"},
        {1234567.891, "#,##0.00", "1,234,567.89"},
        {999999.999, "#,##0.00", "1,000,000.00"},
        {1234567, "0,0", "1,234,567"},
        {7, "0,0", "07"},
        {1234567, "#,#", "1,234,567"},
        {1234567.5, "#,0.0", "1,234,567.5"},
        {123456789, "#,####", "1,2345,6789"},
        {123456789.5, "#,###0.00", "1,2345,6789.50"},
        {123456789, "#,##,###0", "1,2345,6789"},
        {5, "000,000", "000,005"},
        {1234, "#,##0,元", "1,234,元"},  // a comma without a place behind it stands for itself
        {1234, ",0", ",1234"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(DoubleToString(row.value, row.format), row.text);
    }
}

TEST(DoubleToStringByPattern, CountsShares) {
    const Row kRows[] = {
        {0.1234, "0.00%", "12.34%"},
        {0.1234, "0%", "12%"},
        {0.125, "0%", "13%"},
        {1, "0.0%", "100.0%"},
        {-0.05, "0.0%", "-5.0%"},
        {0.5, "0 %", "50 %"},
        {0.5, "0  %合格", "50  %合格"},
        {0.1234, "0.0‰", "123.4‰"},
        {0.01005, "0.00%", "1.01%"},
        {12.3456, "#,##0%", "1,235%"},
        {0.5, "0\"%\"", "1%"},  // quoted: only a character
        {0.5, "0\\%", "1%"},
        {1e-300, "0.0%", "0.0%"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(DoubleToString(row.value, row.format), row.text);
    }
}

TEST(DoubleToStringByPattern, KeepsTextAroundTheNumber) {
    const Row kRows[] = {
        {12.5, "￥0.00", "￥12.50"},
        {12.5, "0.00元", "12.50元"},
        {12.5, "共0.0件", "共12.5件"},
        {12.5, "[0.0]", "[12.5]"},
        {12.5, "USD 0.00 net", "USD 12.50 net"},
        {12.5, "'No. 007 '0.0", "No. 007 12.5"},
        {12.5, "\"#\"0.0\"#0\"", "#12.5#0"},
        {12.5, "\\#0.0\\0", "#12.50"},
        {12.5, "\"it's \"0.0", "it's 12.5"},
        {12.5, "'\"'0.0'\\'", "\"12.5\\"},
        {12.5, "\"\"0.0", "12.5"},
        {12.5, "0.0\\中", "12.5中"},
        {12.5, "\x81\\0.0\x81\\", "\x81\\12.5\x81\\"},  // second bytes are no characters of the pattern
        {12.5,
         "\x81"
         "0.0\x81",
         "\x81"
         "12.5\x81"},  // half a character takes no place to itself
        {12.5, "\x81'#'0.0", "\x81#12.5"},
        {12.5, "1 0.0", "1 12.5"},
        {-12.5, "￥0.00", "-￥12.50"},
        {12.5, "0.0.", "12.5."},
        {12.5, "0.0, etc.", "12.5, etc."},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(DoubleToString(row.value, row.format), row.text);
    }
}

TEST(DoubleToStringByPattern, HasPatternsForNegativeNumbersAndForZero) {
    const Row kRows[] = {
        {1234.5, "#,##0.00;(#,##0.00);-", "1,234.50"},
        {-1234.5, "#,##0.00;(#,##0.00);-", "(1,234.50)"},
        {0, "#,##0.00;(#,##0.00);-", "-"},
        {-0.0, "#,##0.00;(#,##0.00);-", "-"},
        {0.001, "#,##0.00;(#,##0.00);-", "-"},  // what prints as zero is one
        {-0.001, "#,##0.00;(#,##0.00);-", "-"},
        {-0.001, "0.00;(0.00)", "0.00"},
        {0, "0.00;(0.00)", "0.00"},
        {-3, "0;负0", "负3"},
        {-3, "0;红字", "红字"},
        {-3, "0;;零", "-3"},  // an empty one is the first
        {0, "0;;零", "零"},
        {0, "0.0;;", "0.0"},
        {-3, "0.0;", "-3.0"},
        {0, "0;0;'a;b'", "a;b"},
        {-5, "0;0.0%;0", "500.0%"},
        {3, "盈0;亏0;平", "盈3"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(DoubleToString(row.value, row.format), row.text) << row.value;
    }
}

TEST(DoubleToStringByPattern, TakesHalvesOfTheShortestTextAwayFromZero) {
    const Row kRows[] = {
        {2.345, "0.00", "2.35"},
        {-2.345, "0.00", "-2.35"},
        {1.005, "0.00", "1.01"},
        {0.125, "0.00", "0.13"},
        {0.5, "0", "1"},
        {1.5, "0", "2"},
        {2.5, "0", "3"},
        {-0.5, "0", "-1"},
        {0.49999999999999994, "0", "0"},
        {0.05, "0.0", "0.1"},
        {0.04999, "0.0", "0.0"},
        {9.995, "0.00", "10.00"},
        {999.995, "0.00", "1000.00"},
        {1e15 + 0.5, "0", "1000000000000001"},
        {4503599627370495.5, "0", "4503599627370496"},
        {562949953421311.9, "0", "562949953421312"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(DoubleToString(row.value, row.format), row.text) << row.value;
    }
}

TEST(DoubleToStringByPattern, HoldsTheLargestAndTheSmallestNumbers) {
    EXPECT_EQ(Std(DoubleToString(1e300, "0")), "1" + std::string(300, '0'));
    EXPECT_EQ(Std(DoubleToString(-1e22, "0.0")), "-1" + std::string(22, '0') + ".0");
    EXPECT_EQ(Std(DoubleToString(std::numeric_limits<double>::max(), "0")),
              "17976931348623157" + std::string(292, '0'));
    EXPECT_EQ(Std(DoubleToString(std::numeric_limits<double>::max(), "0%")),
              "17976931348623157" + std::string(294, '0') + "%");
    const std::string places(400, '0');
    EXPECT_EQ(Std(DoubleToString(5e-324, ("0." + places).c_str())),
              "0." + std::string(323, '0') + "5" + std::string(76, '0'));
    EXPECT_EQ(Std(DoubleToString(std::numeric_limits<double>::max(), ("0." + places).c_str())),
              "17976931348623157" + std::string(292, '0') + "." + places);
    EXPECT_EQ(Std(DoubleToString(5e-324, ("0." + std::string(400, '#')).c_str())), "0." + std::string(323, '0') + "5");
    EXPECT_EQ(Std(DoubleToString(5e-324, "#.00")), ".00");
    EXPECT_EQ(Std(DoubleToString(1, std::string(5000, '0').c_str())), std::string(4999, '0') + "1");
}

TEST(DoubleToStringByPattern, IsEmptyForAMalformedPattern) {
    const char* const kFormats[] = {
        "元",       "abc",  " ",     ",",    ".",        ";",      ";0",           "0;0;0;0",        "0 0",
        "0.0.0",    "0,,0", "0x0",   "0-0",  "000-0000", "0.00%%", "0%0%",         "0%'%'%",         "%0",
        "%0.00",    "(0)%", "0a%",   "\"0",  "0.00'",    "0\\",    "\\",           "'0.00'",         "0.00E+00",
        "\"0.00\"", "0;\"", "0;0 0", "0;;%", "\\0\\#",   "\xB0",   "(大写货币三)", "（大写货币一）", "(大写货币一) ",
    };
    for (const char* format : kFormats) {
        for (const double value : {0.0, 1.5, -1.5})
            EXPECT_STREQ(DoubleToString(value, format), "") << format;
    }
}

/// The shortest text that reads back as the number, without an exponent.
std::string ShortestPlain(double magnitude) {
    char text[64];
    for (int precision = 0; precision < 17; ++precision) {
        std::snprintf(text, sizeof(text), "%.*e", precision, magnitude);
        if (std::strtod(text, nullptr) == magnitude) break;
    }
    std::string digits = text;
    const std::size_t letter = digits.find('e');
    int exponent = std::atoi(digits.c_str() + letter + 1);
    digits.resize(letter);
    std::erase(digits, '.');
    while (exponent < 0) {
        digits.insert(0, "0");
        ++exponent;
    }
    while (static_cast<int>(digits.size()) <= exponent)
        digits += '0';
    digits.insert(static_cast<std::size_t>(exponent) + 1, ".");
    return digits;
}

/// Rounds a plain decimal text on its digits.
std::string RoundPlain(std::string text, std::size_t decimals) {
    const std::size_t point = text.find('.');
    text.append(decimals + 1, '0');
    const bool up = text[point + 1 + decimals] >= '5';
    text.resize(point + 1 + decimals);
    for (std::size_t at = text.size(); up;) {
        if (at == 0) {
            text.insert(0, "1");
            break;
        }
        if (text[--at] == '.') continue;
        if (text[at] != '9') {
            ++text[at];
            break;
        }
        text[at] = '0';
    }
    return text;
}

struct Places {
    std::size_t whole;
    std::size_t group;
    std::size_t least;
    std::size_t most;
};

std::string Print(double value, const Places& places) {
    std::string text = RoundPlain(ShortestPlain(std::fabs(value)), places.most);
    const bool zero = text.find_first_of("123456789") == std::string::npos;
    const std::size_t point = text.find('.');
    std::string whole = text.substr(0, point);
    std::string fraction = text.substr(point + 1);
    while (!whole.empty() && whole[0] == '0')
        whole.erase(0, 1);
    while (whole.size() < places.whole)
        whole.insert(0, "0");
    while (fraction.size() > places.least && fraction.back() == '0')
        fraction.pop_back();
    if (places.group != 0) {
        for (std::size_t at = whole.size(); at > places.group;) {
            at -= places.group;
            whole.insert(at, ",");
        }
    }
    return (value < 0 && !zero ? "-" : "") + whole + (fraction.empty() ? "" : "." + fraction);
}

TEST(DoubleToStringByPattern, AgreesWithRoundingTheShortestTextOnItsDigits) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 60000; ++i) {
        const std::uint64_t bits = random.Engine()();
        double value = std::bit_cast<double>(bits);  // any bit pattern
        if (i % 4 == 1) value = static_cast<double>(static_cast<std::int64_t>(bits) % 100000000) / 1000;
        if (i % 4 == 2) value = static_cast<double>(static_cast<std::int64_t>(bits) % 2000000) / 2000;  // many halves
        if (i % 4 == 3) value = std::ldexp(static_cast<double>(bits >> 11), static_cast<int>(bits % 60) - 55);
        if (!std::isfinite(value)) continue;
        Places places = {};
        places.whole = static_cast<std::size_t>(random.Below(6));
        places.least = static_cast<std::size_t>(random.Below(4));
        places.most = places.least + static_cast<std::size_t>(random.Below(4));
        std::string format = std::string(places.whole == 0 ? 1 : 0, '#') + std::string(places.whole, '0');
        if (random.Below(2) == 0) {
            places.group = random.Below(2) == 0 ? 3 : 4;
            places.whole = 1;
            format = places.group == 3 ? "#,##0" : "#,###0";
        }
        if (places.most > 0)
            format += "." + std::string(places.least, '0') + std::string(places.most - places.least, '#');
        ASSERT_EQ(Std(DoubleToString(value, format.c_str())), Print(value, places)) << value << ' ' << format;
    }
}

TEST(DoubleToString, GivesSomeTextForAnyFormat) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 100000; ++i) {
        const std::string format = random.TextOf("00##,,..;%\"'\\ -+dfgxlI6中\x81", 14);
        const double value = std::bit_cast<double>(static_cast<std::uint64_t>(random.Engine()()));
        const CString text = DoubleToString(value, format.c_str());
        ASSERT_LE(static_cast<std::size_t>(text.GetLength()), 2000 + format.size()) << format;
    }
}

}  // namespace
