// Numbers read from text and written as text.
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <random>

#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

TEST(VarR8FromStr, ReadsWhatPeopleWrite) {
    static constexpr struct {
        const char16_t* text;
        double value;
    } kRows[] = {
        {u"0", 0},
        {u"12", 12},
        {u"  12  ", 12},
        {u"\t12\r\n", 12},
        {u"+12", 12},
        {u"-12", -12},
        {u"- 12", -12},
        {u"12-", -12},
        {u"12 -", -12},
        {u"12+", 12},
        {u"(12)", -12},
        {u"( 12 )", -12},
        {u"1.5", 1.5},
        {u".5", 0.5},
        {u"5.", 5},
        {u"-.5", -0.5},
        {u"1,234,567.25", 1234567.25},
        {u"1,2,3", 123},
        {u"12,", 12},
        {u"1e3", 1000},
        {u"1E3", 1000},
        {u"1E+3", 1000},
        {u"1E-3", 0.001},
        {u"1.5e2", 150},
        {u"-1.5E2", -150},
        {u"\u00A512.5", 12.5},
        {u"\uFFE512.5", 12.5},
        {u"-\u00A512.5", -12.5},
        {u"\u00A5-12.5", -12.5},
        {u"(\u00A512.5)", -12.5},
        {u"12.5\u00A5", 12.5},
        {u"\uFF11\uFF12\uFF0E\uFF15", 12.5},
        {u"&HFF", 255},
        {u"&hff", 255},
        {u"&O17", 15},
        {u" &HFFFFFFFFFFFFFFFF ", 18446744073709551615.0},
        {u"0000000000000000000000000000000000000000000001", 1},
        {u"0.0000000000000000000000000000000000000000000001", 1e-46},
        {u"1E308", 1e308},
        {u"1E-400", 0},
        {u"0E999999999999999999999", 0},
        {u"9007199254740993", 9007199254740992.0},
        {u"9007199254740993.0000000000000000000000000000001", 9007199254740994.0},
        {u"1.7976931348623157E308", 1.7976931348623157e308},
        {u"4.9E-324", 4.9e-324},
    };
    for (const auto& row : kRows) {
        double value = -77;
        EXPECT_EQ(Code(VarR8FromStr(row.text, 0x0804, 0, &value)), "00000000") << Show(row.text);
        EXPECT_EQ(value, row.value) << Show(row.text);
    }
}

TEST(VarR8FromStr, RefusesWhatIsNoNumber) {
    static constexpr const char16_t* kTexts[] = {
        u"",         u" ",     u"-",    u"+",      u".",       u"abc",  u"1a",   u"a1",    u"--1", u"-1-",
        u"+-1",      u"(1",    u"1)",   u"((1))",  u"(-1)",    u"-(1)", u"1 2",  u"1.2.3", u",1",  u"1e",
        u"1e+",      u"1e1.5", u"e1",   u"&H",     u"&HG",     u"&O8",  u"&1",   u"-&H1",  u"$1",  u"\u00A5\u00A51",
        u"1\u00A52", u"True",  u"1,5e", u"\u5143", u"1\u5143", u"0x10", u"1 e3", u"inf",   u"nan", u"1.,5",
    };
    for (const char16_t* text : kTexts) {
        double value = -77;
        EXPECT_EQ(Code(VarR8FromStr(text, 0x0804, 0, &value)), "80020005") << Show(text);
        EXPECT_EQ(value, -77) << Show(text);
    }
    double value = 0;
    EXPECT_EQ(VarR8FromStr(nullptr, 0x0804, 0, &value), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VarR8FromStr(u"1", 0x0804, 0, nullptr), E_INVALIDARG);
}

TEST(VarR8FromStr, OverflowsBeyondTheRange) {
    static constexpr const char16_t* kTexts[] = {u"1E309", u"-1E309", u"1.8E308", u"1E999999999999",
                                                 u"&H10000000000000000"};
    for (const char16_t* text : kTexts) {
        double value = 0;
        EXPECT_EQ(Code(VarR8FromStr(text, 0x0804, 0, &value)), "8002000A") << Show(text);
    }
}

TEST(VarR8FromStr, KnowsTheCurrencySignOfTheLocale) {
    double value = 0;
    EXPECT_EQ(VarR8FromStr(u"$1", 0x0409, 0, &value), S_OK);
    EXPECT_EQ(VarR8FromStr(u"\uFF041", 0x0409, 0, &value), S_OK);
    EXPECT_EQ(VarR8FromStr(u"\u00A51", 0x0409, 0, &value), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VarR8FromStr(u"\u00A41", 0x007F, 0, &value), S_OK);
    static constexpr LCID kChinese[] = {0, 0x0400, 0x0800, 0x0804, 0x20804};
    for (const LCID locale : kChinese)
        EXPECT_EQ(VarR8FromStr(u"\u00A51", locale, 0, &value), S_OK) << locale;
}

TEST(VarR8FromStr, AgreesWithTheStandardLibraryOnRandomTexts) {
    const unsigned seed = std::random_device{}();
    std::mt19937_64 random(seed);
    for (int i = 0; i < 20000; ++i) {
        double expected = 0;
        const std::uint64_t bits = random();
        std::memcpy(&expected, &bits, sizeof(bits));
        if (!std::isfinite(expected)) continue;
        char narrow[64];
        std::snprintf(narrow, sizeof(narrow), "%.*e", static_cast<int>(random() % 25), expected);
        char16_t wide[64] = {};
        for (int at = 0; narrow[at] != 0; ++at)
            wide[at] = static_cast<char16_t>(narrow[at]);
        const double reference = std::strtod(narrow, nullptr);
        double value = 0;
        const HRESULT result = VarR8FromStr(wide, 0x0804, 0, &value);
        if (std::isinf(reference)) {
            ASSERT_EQ(result, DISP_E_OVERFLOW) << narrow << " seed " << seed;
        } else {
            ASSERT_EQ(result, S_OK) << narrow << " seed " << seed;
            // The library underflows to what is too small as well.
            ASSERT_TRUE(value == reference || std::fabs(reference) < 2.3e-308) << narrow << " seed " << seed;
        }
    }
}

TEST(VarI4FromStr, RoundsTheDecimalDigitsToEven) {
    static constexpr struct {
        const char16_t* text;
        LONG value;
    } kRows[] = {
        {u"0.5", 0},
        {u"1.5", 2},
        {u"2.5", 2},
        {u"-0.5", 0},
        {u"-1.5", -2},
        {u"2.50000000000000000000000000001", 3},
        {u"2.4999999999999999999999999", 2},
        {u"1E-9", 0},
        {u"0.05", 0},
        {u"25E-1", 2},
        {u"2147483647.4", 2147483647},
        {u"-2147483648.5", -2147483647 - 1},
        {u"&H7FFFFFFF", 2147483647},
        {u"&HFFFFFFFF", -1},
        {u"&HFFFF", 65535},
        {u"&O37777777777", -1},
    };
    for (const auto& row : kRows) {
        LONG value = -77;
        EXPECT_EQ(Code(VarI4FromStr(row.text, 0x0804, 0, &value)), "00000000") << Show(row.text);
        EXPECT_EQ(value, row.value) << Show(row.text);
    }
    LONG value = 0;
    static constexpr const char16_t* kTooLarge[] = {u"2147483647.5",
                                                    u"2147483648",
                                                    u"-2147483649",
                                                    u"1E10",
                                                    u"1E300",
                                                    u"&H100000000",
                                                    u"99999999999999999999999999999999999999999"};
    for (const char16_t* text : kTooLarge) {
        EXPECT_EQ(Code(VarI4FromStr(text, 0x0804, 0, &value)), "8002000A") << Show(text);
    }
}

TEST(VarI8FromStr, ReachesBothLimits) {
    LONG64 value = 0;
    EXPECT_EQ(VarI8FromStr(u"9223372036854775807", 0, 0, &value), S_OK);
    EXPECT_EQ(value, 9223372036854775807);
    EXPECT_EQ(VarI8FromStr(u"-9223372036854775808", 0, 0, &value), S_OK);
    EXPECT_EQ(value, -9223372036854775807 - 1);
    EXPECT_EQ(VarI8FromStr(u"9223372036854775808", 0, 0, &value), DISP_E_OVERFLOW);
    ULONG64 unsignedValue = 0;
    EXPECT_EQ(VarUI8FromStr(u"18446744073709551615", 0, 0, &unsignedValue), S_OK);
    EXPECT_EQ(unsignedValue, 18446744073709551615u);
    EXPECT_EQ(VarUI8FromStr(u"18446744073709551615.5", 0, 0, &unsignedValue), DISP_E_OVERFLOW);
    EXPECT_EQ(VarUI8FromStr(u"-0.5", 0, 0, &unsignedValue), S_OK);
    EXPECT_EQ(unsignedValue, 0u);
    EXPECT_EQ(VarUI8FromStr(u"-1", 0, 0, &unsignedValue), DISP_E_OVERFLOW);
}

TEST(VarI2FromStr, TakesFullHexDigitsAsBits) {
    SHORT value = 0;
    EXPECT_EQ(VarI2FromStr(u"&HFFFF", 0, 0, &value), S_OK);
    EXPECT_EQ(value, -1);
    EXPECT_EQ(VarI2FromStr(u"&H7FFF", 0, 0, &value), S_OK);
    EXPECT_EQ(value, 32767);
    EXPECT_EQ(VarI2FromStr(u"&H10000", 0, 0, &value), DISP_E_OVERFLOW);
    BYTE byte = 0;
    EXPECT_EQ(VarUI1FromStr(u"&HFF", 0, 0, &byte), S_OK);
    EXPECT_EQ(byte, 255);
}

TEST(VarBoolFromStr, ReadsWordsAndNumbers) {
    static constexpr struct {
        const char16_t* text;
        const char* outcome;
    } kRows[] = {
        {u"True", "-1"},        {u"true", "-1"},        {u"TRUE", "-1"},      {u"#TRUE#", "-1"},
        {u"False", "0"},        {u"#false#", "0"},      {u"0", "0"},          {u"0.0", "0"},
        {u"-0", "0"},           {u"0.001", "-1"},       {u"&H1", "-1"},       {u"&H0", "0"},
        {u"-5", "-1"},          {u"1E999", "-1"},       {u"yes", "80020005"}, {u"", "80020005"},
        {u"#True", "80020005"}, {u"True ", "80020005"},
    };
    for (const auto& row : kRows) {
        VARIANT_BOOL value = 7;
        const HRESULT result = VarBoolFromStr(row.text, 0x0804, 0, &value);
        EXPECT_EQ(SUCCEEDED(result) ? std::to_string(value) : Code(result), row.outcome) << Show(row.text);
    }
}

TEST(VarCyFromStr, RoundsToFourPlacesToEven) {
    static constexpr struct {
        const char16_t* text;
        LONGLONG units;
    } kRows[] = {
        {u"1.005", 10050},
        {u"-1.005", -10050},
        {u"0.00005", 0},
        {u"0.00015", 2},
        {u"0.000050001", 1},
        {u"\u00A51,234.5", 12345000},
        {u"922337203685477.5807", 9223372036854775807},
        {u"1E-5", 0},
        {u"12", 120000},
        {u"-922337203685477.5808", -9223372036854775807 - 1},
    };
    for (const auto& row : kRows) {
        CY value{};
        EXPECT_EQ(Code(VarCyFromStr(row.text, 0x0804, 0, &value)), "00000000") << Show(row.text);
        EXPECT_EQ(value.int64, row.units) << Show(row.text);
    }
    CY value{};
    EXPECT_EQ(VarCyFromStr(u"922337203685477.58075", 0, 0, &value), DISP_E_OVERFLOW);
    EXPECT_EQ(VarCyFromStr(u"1E30", 0, 0, &value), DISP_E_OVERFLOW);
}

TEST(VarBstrFromR8, WritesFifteenDigits) {
    static constexpr struct {
        double value;
        const char* text;
    } kRows[] = {
        {0, "0"},
        {-0.0, "0"},
        {1, "1"},
        {-1.5, "-1.5"},
        {100, "100"},
        {0.1, "0.1"},
        {1.0 / 3, "0.333333333333333"},
        {2.0 / 3, "0.666666666666667"},
        {123456789012345.0, "123456789012345"},
        {100000000000000.0, "100000000000000"},
        {999999999999999.0, "999999999999999"},
        {1e15, "1E+15"},
        {999999999999999.9, "1E+15"},
        {123456789012345678.0, "1.23456789012346E+17"},
        {-1.5e100, "-1.5E+100"},
        {1e-5, "0.00001"},
        {1e-15, "0.000000000000001"},
        {1e-16, "1E-16"},
        {1.5e-15, "1.5E-15"},
        {0.0123456789012345, "1.23456789012345E-02"},
        {0.012345678901234, "0.012345678901234"},
        {1.7976931348623157e308, "1.79769313486232E+308"},
        {4.9e-324, "4.94065645841247E-324"},
    };
    for (const auto& row : kRows) {
        BSTR text = nullptr;
        EXPECT_EQ(VarBstrFromR8(row.value, 0x0804, 0, &text), S_OK);
        EXPECT_EQ(Narrow(text), row.text);
        SysFreeString(text);
    }
}

TEST(VarBstrFromR4, WritesSevenDigits) {
    static constexpr struct {
        float value;
        const char* text;
    } kRows[] = {
        {0.1f, "0.1"},    {1.0f / 3, "0.3333333"},       {1234567.0f, "1234567"},
        {1e7f, "1E+07"},  {16777216.0f, "1.677722E+07"}, {1e-7f, "0.0000001"},
        {1e-8f, "1E-08"}, {0.01234568f, "1.234568E-02"}, {-2.5f, "-2.5"},
    };
    for (const auto& row : kRows) {
        BSTR text = nullptr;
        EXPECT_EQ(VarBstrFromR4(row.value, 0x0804, 0, &text), S_OK);
        EXPECT_EQ(Narrow(text), row.text);
        SysFreeString(text);
    }
}

TEST(VarBstrFromDec, WritesPlainDigitsWithoutZerosAtTheEnd) {
    static constexpr struct {
        const char* decimal;
        const char* text;
    } kRows[] = {
        {"0", "0"},
        {"0.00", "0"},
        {"-0.00", "0"},
        {"1.50", "1.5"},
        {"100", "100"},
        {"100.00", "100"},
        {"-12.75", "-12.75"},
        {"0.05", "0.05"},
        {"0.0000000000000000000000000001", "0.0000000000000000000000000001"},
        {"79228162514264337593543950335", "79228162514264337593543950335"},
        {"-7.9228162514264337593543950335", "-7.9228162514264337593543950335"},
        {"18446744073709551616", "18446744073709551616"},
        {"10000000000000000000", "10000000000000000000"},
        {"100000000000000000000.0", "100000000000000000000"},
    };
    for (const auto& row : kRows) {
        const DECIMAL decimal = Dec(row.decimal);
        BSTR text = nullptr;
        EXPECT_EQ(VarBstrFromDec(&decimal, 0x0400, 0x80000000u, &text), S_OK);
        EXPECT_EQ(Narrow(text), row.text);
        SysFreeString(text);
    }
    BSTR text = nullptr;
    EXPECT_EQ(VarBstrFromDec(nullptr, 0x0400, 0, &text), E_INVALIDARG);
}

TEST(VarBstrFromCy, WritesUpToFourPlaces) {
    static constexpr struct {
        LONGLONG units;
        const char* text;
    } kRows[] = {
        {0, "0"},
        {10050, "1.005"},
        {-10050, "-1.005"},
        {1, "0.0001"},
        {-1, "-0.0001"},
        {120000, "12"},
        {12345678, "1234.5678"},
        {9223372036854775807, "922337203685477.5807"},
        {-9223372036854775807 - 1, "-922337203685477.5808"},
    };
    for (const auto& row : kRows) {
        BSTR text = nullptr;
        EXPECT_EQ(VarBstrFromCy(CY{.int64 = row.units}, 0x0804, 0, &text), S_OK);
        EXPECT_EQ(Narrow(text), row.text);
        SysFreeString(text);
    }
}

TEST(VarBstrFromBool, GivesTheNames) {
    BSTR text = nullptr;
    EXPECT_EQ(VarBstrFromBool(VARIANT_TRUE, 0x0804, 0, &text), S_OK);
    EXPECT_EQ(Narrow(text), "True");
    SysFreeString(text);
    EXPECT_EQ(VarBstrFromBool(VARIANT_FALSE, 0x0804, VAR_LOCALBOOL, &text), S_OK);
    EXPECT_EQ(Narrow(text), "False");
    SysFreeString(text);
}

TEST(VarBstrFrom, WritesIntegers) {
    BSTR text = nullptr;
    EXPECT_EQ(VarBstrFromUI8(18446744073709551615u, 0, 0, &text), S_OK);
    EXPECT_EQ(Narrow(text), "18446744073709551615");
    SysFreeString(text);
    EXPECT_EQ(VarBstrFromI8(-9223372036854775807 - 1, 0, 0, &text), S_OK);
    EXPECT_EQ(Narrow(text), "-9223372036854775808");
    SysFreeString(text);
    EXPECT_EQ(VarBstrFromUI1(255, 0, 0, &text), S_OK);
    EXPECT_EQ(Narrow(text), "255");
    SysFreeString(text);
    EXPECT_EQ(VarBstrFromI4(1, 0, 0, nullptr), E_INVALIDARG);
}

TEST(VarBstrFromR8, ReadsBackTheSameFifteenDigits) {
    const unsigned seed = std::random_device{}();
    std::mt19937_64 random(seed);
    for (int i = 0; i < 20000; ++i) {
        const double value = std::ldexp(static_cast<double>(static_cast<std::int64_t>(random())),
                                        static_cast<int>(random() % 200) - 130);
        BSTR text = nullptr;
        ASSERT_EQ(VarBstrFromR8(value, 0x0804, 0, &text), S_OK);
        double back = 0;
        ASSERT_EQ(VarR8FromStr(text, 0x0804, 0, &back), S_OK);
        char expected[40];
        char actual[40];
        std::snprintf(expected, sizeof(expected), "%.14e", value);
        std::snprintf(actual, sizeof(actual), "%.14e", back);
        ASSERT_STREQ(expected, actual) << Narrow(text) << " seed " << seed;
        SysFreeString(text);
    }
}

TEST(VarFromStr, AnswersAnyTextWithAValueOrACode) {
    static constexpr char16_t kAlphabet[] =
        u" \t0123456789.,+-()eE&HhOoFf#TrueFals\u00A5\uFFE5$:/-\u5E74\u6708\u65E5\u65F6\u5206\u79D2\u4E0A\u4E0B"
        u"\u5348JulyPM\uFF10\uFF19\xD800\xFFFF";
    constexpr std::size_t kCharacters = std::size(kAlphabet) - 1;
    const unsigned seed = std::random_device{}();
    std::mt19937_64 random(seed);
    int accepted = 0;
    for (int i = 0; i < 200000; ++i) {
        char16_t text[40];
        const std::size_t length = random() % (random() % 16 == 0 ? 40 : 8);
        for (std::size_t at = 0; at < length; ++at)
            text[at] = kAlphabet[random() % kCharacters];
        text[length] = 0;
        double real = 0;
        DATE date = 0;
        LONG64 integer = 0;
        DECIMAL decimal{};
        CY currency{};
        const HRESULT results[] = {VarR8FromStr(text, 0x0804, 0, &real), VarDateFromStr(text, 0x0804, 0, &date),
                                   VarI8FromStr(text, 0x0409, 0, &integer), VarDecFromStr(text, 0x007F, 0, &decimal),
                                   VarCyFromStr(text, 0x0804, 0, &currency)};
        for (const HRESULT result : results) {
            ASSERT_TRUE(result == S_OK || result == DISP_E_TYPEMISMATCH || result == DISP_E_OVERFLOW)
                << Show(text) << " seed " << seed;
            if (result == S_OK) ++accepted;
        }
        ASSERT_TRUE(std::isfinite(real)) << Show(text) << " seed " << seed;
        ASSERT_LE(decimal.scale, 28) << Show(text) << " seed " << seed;
        ASSERT_TRUE(date > -657435.0 && date < 2958466.0) << Show(text) << " seed " << seed;
    }
    EXPECT_GT(accepted, 1000);
}

TEST(VarFamily, StoresOnlyOnSuccessAndRefusesNull) {
    BYTE byte = 9;
    EXPECT_EQ(VarUI1FromI2(-1, &byte), DISP_E_OVERFLOW);
    EXPECT_EQ(VarUI1FromI2(256, &byte), DISP_E_OVERFLOW);
    EXPECT_EQ(byte, 9);
    EXPECT_EQ(VarUI1FromI2(255, &byte), S_OK);
    EXPECT_EQ(byte, 255);
    EXPECT_EQ(VarUI1FromI2(1, nullptr), E_INVALIDARG);
    EXPECT_EQ(VarUI1FromDec(nullptr, &byte), E_INVALIDARG);
    EXPECT_EQ(VarUI1FromDisp(nullptr, 0, &byte), DISP_E_TYPEMISMATCH);
    CountedObject object;
    object.value = R8(7.5);
    EXPECT_EQ(VarUI1FromDisp(&object, 0, &byte), S_OK);
    EXPECT_EQ(byte, 8);
    VARIANT_BOOL truth = 0;
    EXPECT_EQ(VarBoolFromR8(0.25, &truth), S_OK);
    EXPECT_EQ(truth, VARIANT_TRUE);
    FLOAT single = 0;
    EXPECT_EQ(VarR4FromR8(1e39, &single), DISP_E_OVERFLOW);
    CHAR small = 0;
    EXPECT_EQ(VarI1FromUI1(128, &small), DISP_E_OVERFLOW);
    DATE date = 0;
    EXPECT_EQ(VarDateFromI4(2958465, &date), S_OK);
    EXPECT_EQ(VarDateFromI4(2958466, &date), DISP_E_OVERFLOW);
    EXPECT_EQ(VarDateFromR8(-657435.0, &date), DISP_E_OVERFLOW);
    EXPECT_EQ(VarDateFromR8(-657434.75, &date), S_OK);
}

TEST(VarDecFrom, LeavesTheReservedWordAlone) {
    Value value = I4(0);
    value->vt = VT_DECIMAL;
    EXPECT_EQ(VarDecFromI4(-5, &value->decVal), S_OK);
    EXPECT_EQ(Describe(value.Get()), "DEC -5");
    EXPECT_EQ(VarDecFromStr(u"1.25", 0, 0, &value->decVal), S_OK);
    EXPECT_EQ(VarDecAdd(&value->decVal, &value->decVal, &value->decVal), S_OK);
    EXPECT_EQ(Describe(value.Get()), "DEC 2.50");
}

}  // namespace
}  // namespace tk::test
