#include <afx.h>
#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

// The library's formats are checked by the compiler; the odd ones here are on purpose.
#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-extra-args"

template <class... Arguments>
CString Formatted(const char* format, Arguments... arguments) {
    CString text("what was there before");
    text.Format(format, arguments...);
    return text;
}

TEST(StringFormat, PrintsTexts) {
    EXPECT_STREQ(Formatted("%s", "stock"), "stock");
    EXPECT_STREQ(Formatted("\"%s\"", "ORDERS"), "\"ORDERS\"");
    EXPECT_STREQ(Formatted("%s\r\n%s", "a", ""), "a\r\n");
    EXPECT_STREQ(Formatted("[%8s]", "ab"), "[      ab]");
    EXPECT_STREQ(Formatted("[%-8s]", "ab"), "[ab      ]");
    EXPECT_STREQ(Formatted("[%.2s]", "abc"), "[ab]");
    EXPECT_STREQ(Formatted("[%*.*s]", 5, 2, "abc"), "[   ab]");
    EXPECT_STREQ(Formatted("[%*s]", -5, "ab"), "[ab   ]");
    EXPECT_STREQ(Formatted("[%.*s]", -1, "abc"), "[abc]");
    EXPECT_STREQ(Formatted("%s", static_cast<const char*>(nullptr)), "(null)");
    EXPECT_STREQ(Formatted("%hs", "narrow"), "narrow");
    EXPECT_STREQ(Formatted("%d%%", 50), "50%");
    EXPECT_STREQ(Formatted("%s", static_cast<LPCSTR>(CString("object"))), "object");
}

TEST(StringFormat, TakesTextsAsTheyAre) {
    EXPECT_STREQ(Formatted("%s", "100%d %s %n"), "100%d %s %n");
    EXPECT_STREQ(Formatted("%s|", "\xC4"), "\xC4|") << "half a character";
    EXPECT_STREQ(Formatted("库%s存", "%"), "库%存");
    EXPECT_STREQ(Formatted("%.3s", "库存"), "\xBF\xE2\xB4") << "a precision counts bytes";
}

TEST(StringFormat, ReadsNoFurtherThanThePrecision) {
    const char unterminated[3] = {'a', 'b', 'c'};
    EXPECT_STREQ(Formatted("%.3s", &unterminated[0]), "abc");
    EXPECT_STREQ(Formatted("%.0s", static_cast<const char*>(unterminated)), "");
}

TEST(StringFormat, PrintsWideTexts) {
    EXPECT_STREQ(Formatted("%S", OLESTR("\u5E93a")),
                 "\xBF\xE2"
                 "a");
    EXPECT_STREQ(Formatted("%ls", OLESTR("wide")), "wide");
    EXPECT_STREQ(Formatted("%ws", OLESTR("wide")), "wide");
    EXPECT_STREQ(Formatted("%hS", "narrow"), "narrow");
    EXPECT_STREQ(Formatted("%.1S", OLESTR("\u5E93a")), "\xBF\xE2");
    EXPECT_STREQ(Formatted("[%4S]", OLESTR("\u5E93")), "[  \xBF\xE2]");
    EXPECT_STREQ(Formatted("%S", static_cast<LPCWSTR>(nullptr)), "(null)");
    EXPECT_STREQ(Formatted("%C%lc", 0x5E93, 'x'), "\xBF\xE2x");
}

TEST(StringFormat, PrintsCharacters) {
    EXPECT_STREQ(Formatted("%c%c", 'a', 'b'), "ab");
    EXPECT_STREQ(Formatted("[%3c][%-3c]", 'a', 'b'), "[  a][b  ]");
    EXPECT_EQ(Formatted("a%cb", 0).GetLength(), 3);
}

TEST(StringFormat, PrintsIntegers) {
    EXPECT_STREQ(Formatted("%d %i %u", -1, INT_MIN, UINT_MAX), "-1 -2147483648 4294967295");
    EXPECT_STREQ(Formatted("[%5d][%-5d][%05d][%+d][% d]", 42, 42, -42, 42, 42), "[   42][42   ][-0042][+42][ 42]");
    EXPECT_STREQ(Formatted("[%.4d][%8.4d][%08.4d][%.0d]", 42, 42, 42, 0), "[0042][    0042][    0042][]");
    EXPECT_STREQ(Formatted("%x %X %#x %#X %o %#o %#x", 255, 255, 255, 255, 8, 8, 0), "ff FF 0xff 0XFF 10 010 0");
    EXPECT_STREQ(Formatted("0x%08X", 0x80004005u), "0x80004005");
    EXPECT_STREQ(Formatted("%#010x", 255), "0x000000ff");
    EXPECT_STREQ(Formatted("%#.4o", 8u), "0010");  // the zeros of the precision are enough
    EXPECT_STREQ(Formatted("%#.2o", 8u), "010");
    EXPECT_STREQ(Formatted("%#.0o", 0u), "0");
    EXPECT_STREQ(Formatted("%#o %#o", 0u, 8u), "0 010");
    EXPECT_STREQ(Formatted("%hd %hhd %hu %hhu", 65535, 255, 65537, 257), "-1 -1 1 1");
    EXPECT_STREQ(Formatted("%ld %lu", LONG_MIN, ULONG_MAX),
                 sizeof(long) == 8 ? "-9223372036854775808 18446744073709551615" : "-2147483648 4294967295");
    EXPECT_STREQ(Formatted("%lld %I64d %I64u %jd", LLONG_MIN, LLONG_MAX, ULLONG_MAX, 7LL),
                 "-9223372036854775808 9223372036854775807 18446744073709551615 7");
    EXPECT_STREQ(Formatted("%I64x %I32d", 0x123456789ABCDEFLL, -5), "123456789abcdef -5");
    EXPECT_STREQ(Formatted("%zu %td %Id", std::size_t{5}, std::ptrdiff_t{-5}, std::ptrdiff_t{-6}), "5 -5 -6");
    EXPECT_STREQ(Formatted("%*d|%-*d|", 4, 1, 4, 1), "   1|1   |");
}

TEST(StringFormat, PrintsRealsAsTheStandardSays) {
    EXPECT_STREQ(Formatted("%12.2f", 1.5), "        1.50");
    EXPECT_STREQ(Formatted("%12.2f", -0.005), "       -0.01");
    EXPECT_STREQ(Formatted("%f %.0f %.1f", 3.14159, 2.5, 0.25), "3.141590 2 0.2");
    EXPECT_STREQ(Formatted("%e %E %.0e", 12345.678, 12345.678, 12345.678), "1.234568e+04 1.234568E+04 1e+04");
    EXPECT_STREQ(Formatted("%g %G %g %g %.3g", 100000.0, 1e-10, 1e6, 0.0001, 1234.0),
                 "100000 1E-10 1e+06 0.0001 1.23e+03");
    EXPECT_STREQ(Formatted("[%8.3f][%-8.3f][%08.3f][%+.1f][% .1f]", 1.5, 1.5, -1.5, 1.5, 1.5),
                 "[   1.500][1.500   ][-001.500][+1.5][ 1.5]");
    EXPECT_STREQ(Formatted("%f %F %5.1f %05.1f", INFINITY, INFINITY, -INFINITY, INFINITY), "inf INF  -inf   inf");
    EXPECT_STREQ(Formatted("%.1f %.1f", 0.0, -0.0), "0.0 -0.0");
    EXPECT_STREQ(Formatted("%#.0f %#g %a", 1.0, 1.0, 1.0), "1. 1.00000 0x1p+0");
}

TEST(StringFormat, PrintsEveryRealAsTheCLibraryDoes) {
    const double kValues[] = {0.0,
                              1.0,
                              -1.0,
                              0.1,
                              1.0 / 3,
                              2.5,
                              3.5,
                              0.005,
                              0.015,
                              1e15,
                              123456789.987654321,
                              5e-324,
                              1.7976931348623157e308,
                              -2.2250738585072014e-308,
                              1e21,
                              9.995,
                              99.995,
                              0.5,
                              1.5};
    for (const char* format : {"%f", "%.0f", "%.1f", "%.2f", "%.10f", "%20.4f", "%-20.4f|", "%020.4f", "%+.3f", "%e",
                               "%.0e", "%.12e", "%g", "%.0g", "%.3g", "%.17g", "%G", "%.400f", "%+020.3e"}) {
        for (double value : kValues) {
            char expected[1024];
            std::snprintf(expected, sizeof(expected), format, value);
            EXPECT_STREQ(Formatted(format, value), expected) << format;
        }
    }
}

TEST(StringFormat, IgnoresTheLocaleOfTheProcess) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8");  // a comma as decimal sign, where it is installed
    EXPECT_STREQ(Formatted("%.2f", 1.5), "1.50");
    EXPECT_STREQ(Formatted("%s", "\xBF\xE2"), "\xBF\xE2");
    std::setlocale(LC_ALL, before.c_str());
}

TEST(StringFormat, IsNeverCut) {
    const CString text('x', 100000);
    EXPECT_EQ(Formatted("%s%s", static_cast<LPCSTR>(text), static_cast<LPCSTR>(text)).GetLength(), 200000);
    EXPECT_EQ(Formatted("%100000d", 1).GetLength(), 100000);
    EXPECT_EQ(Formatted("%.5000f", 1.0).GetLength(), 5002);
}

TEST(StringFormat, CopiesWhatIsNoConversion) {
    EXPECT_STREQ(Formatted("100%"), "100%");
    EXPECT_STREQ(Formatted("%y%d", 1), "%y1");
    EXPECT_STREQ(Formatted("%l!"), "%l!");
}

TEST(StringFormat, IgnoresTheCountLetterWithoutWriting) {
    int count = 77;
    EXPECT_STREQ(Formatted("ab%ncd", &count), "abcd");
    EXPECT_EQ(count, 77);
}

TEST(StringFormat, PrintsAddressesInFull) {
    const CString text = Formatted("%p", reinterpret_cast<void*>(0xAB));
    EXPECT_STREQ(text, sizeof(void*) == 8 ? "00000000000000AB" : "000000AB");
}

TEST(StringFormat, MayUseItsOwnTextAsAnArgument) {
    CString text("name");
    text.Format("<%s>", static_cast<LPCSTR>(text));
    EXPECT_STREQ(text, "<name>");
    text.AppendFormat("%s%d", static_cast<LPCSTR>(text), 1);
    EXPECT_STREQ(text, "<name><name>1");
    text.Format(static_cast<const char*>(nullptr));
    EXPECT_STREQ(text, "");
}

}  // namespace
