// Every type into every type, value by value.
#include <limits>
#include <sstream>
#include <vector>

#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

struct Target {
    const char* name;
    VARTYPE type;
};
constexpr Target kTargets[] = {
    {"I1", VT_I1},   {"UI1", VT_UI1},   {"I2", VT_I2},     {"UI2", VT_UI2},     {"I4", VT_I4},     {"UI4", VT_UI4},
    {"INT", VT_INT}, {"UINT", VT_UINT}, {"I8", VT_I8},     {"UI8", VT_UI8},     {"BOOL", VT_BOOL}, {"R4", VT_R4},
    {"R8", VT_R8},   {"CY", VT_CY},     {"DATE", VT_DATE}, {"DEC", VT_DECIMAL}, {"BSTR", VT_BSTR},
};

// One word per target, in their order; o is DISP_E_OVERFLOW, x is DISP_E_TYPEMISMATCH, _ an empty text. CY in its
// units.
struct Row {
    const char* label;
    Value source;
    const char* expected;
};

std::string Expected(const Target& target, const std::string& word) {
    if (word == "o") return "8002000A";
    if (word == "x") return "80020005";
    return std::string(target.name) + " " + (word == "_" ? "" : word);
}

void Check(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        std::istringstream words(row.expected);
        for (const Target& target : kTargets) {
            std::string word;
            ASSERT_TRUE(words >> word) << row.label << " lacks a word for " << target.name;
            // A text may hold a blank.
            if (target.type == VT_BSTR) {
                std::string rest;
                std::getline(words, rest);
                word += rest;
            }
            EXPECT_EQ(Change(row.source, target.type), Expected(target, word)) << row.label << " to " << target.name;
        }
    }
}

//                                                I1   UI1 I2 UI2 I4 UI4 INT UINT I8 UI8 BOOL R4 R8 CY DATE DEC BSTR
TEST(VariantChangeTypeMatrix, Nothing) {
    Check({
        {"empty", Empty(), "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 _"},
        {"null", Null(), "x x x x x x x x x x x x x x x x x"},
        {"error", Error(DISP_E_PARAMNOTFOUND), "x x x x x x x x x x x x x x x x x"},
    });
}

TEST(VariantChangeTypeMatrix, SmallIntegers) {
    Check({
        {"I1 -128", I1(-128), "-128 o -128 o -128 o -128 o -128 o -1 -128 -128 -1280000 -128 -128 -128"},
        {"I1 127", I1(127), "127 127 127 127 127 127 127 127 127 127 -1 127 127 1270000 127 127 127"},
        {"UI1 0", UI1(0), "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0"},
        {"UI1 128", UI1(128), "o 128 128 128 128 128 128 128 128 128 -1 128 128 1280000 128 128 128"},
        {"UI1 255", UI1(255), "o 255 255 255 255 255 255 255 255 255 -1 255 255 2550000 255 255 255"},
        {"I2 -32768", I2(-32768),
         "o o -32768 o -32768 o -32768 o -32768 o -1 -32768 -32768 -327680000 -32768 -32768 -32768"},
        {"I2 -1", I2(-1), "-1 o -1 o -1 o -1 o -1 o -1 -1 -1 -10000 -1 -1 -1"},
        {"I2 32767", I2(32767),
         "o o 32767 32767 32767 32767 32767 32767 32767 32767 -1 32767 32767 327670000 32767 32767 32767"},
        {"UI2 65535", UI2(65535),
         "o o o 65535 65535 65535 65535 65535 65535 65535 -1 65535 65535 655350000 65535 65535 65535"},
    });
}

TEST(VariantChangeTypeMatrix, LargeIntegers) {
    Check({
        {"I4 max", I4(2147483647),
         "o o o o 2147483647 2147483647 2147483647 2147483647 2147483647 2147483647 -1 2.14748365e+09 2147483647 "
         "21474836470000 o 2147483647 2147483647"},
        {"I4 min", I4(-2147483647 - 1),
         "o o o o -2147483648 o -2147483648 o -2147483648 o -1 -2.14748365e+09 -2147483648 -21474836480000 o "
         "-2147483648 -2147483648"},
        {"UI4 max", UI4(4294967295u),
         "o o o o o 4294967295 o 4294967295 4294967295 4294967295 -1 4.2949673e+09 4294967295 42949672950000 o "
         "4294967295 4294967295"},
        {"I8 max", I8(9223372036854775807),
         "o o o o o o o o 9223372036854775807 9223372036854775807 -1 9.22337204e+18 9.2233720368547758e+18 o o "
         "9223372036854775807 9223372036854775807"},
        {"I8 min", I8(-9223372036854775807 - 1),
         "o o o o o o o o -9223372036854775808 o -1 -9.22337204e+18 -9.2233720368547758e+18 o o "
         "-9223372036854775808 -9223372036854775808"},
        {"I8 largest currency", I8(922337203685477),
         "o o o o o o o o 922337203685477 922337203685477 -1 9.2233718e+14 922337203685477 9223372036854770000 o "
         "922337203685477 922337203685477"},
        {"I8 beyond currency", I8(922337203685478),
         "o o o o o o o o 922337203685478 922337203685478 -1 9.2233718e+14 922337203685478 o o 922337203685478 "
         "922337203685478"},
        {"UI8 max", UI8(18446744073709551615u),
         "o o o o o o o o o 18446744073709551615 -1 1.84467441e+19 1.8446744073709552e+19 o o 18446744073709551615 "
         "18446744073709551615"},
        {"INT", Make(VT_INT, -5), "-5 o -5 o -5 o -5 o -5 o -1 -5 -5 -50000 -5 -5 -5"},
        {"UINT", Make(VT_UINT, 5u), "5 5 5 5 5 5 5 5 5 5 -1 5 5 50000 5 5 5"},
    });
}

TEST(VariantChangeTypeMatrix, Booleans) {
    Check({
        {"true is all bits", Bool(true),
         "-1 255 -1 65535 -1 4294967295 -1 4294967295 -1 18446744073709551615 -1 -1 -1 -10000 -1 -1 -1"},
        {"false", Bool(false), "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0"},
    });
}

TEST(VariantChangeTypeMatrix, RealsRoundAHalfToEven) {
    Check({
        {"0.5", R8(0.5), "0 0 0 0 0 0 0 0 0 0 -1 0.5 0.5 5000 0.5 0.5 0.5"},
        {"1.5", R8(1.5), "2 2 2 2 2 2 2 2 2 2 -1 1.5 1.5 15000 1.5 1.5 1.5"},
        {"2.5", R8(2.5), "2 2 2 2 2 2 2 2 2 2 -1 2.5 2.5 25000 2.5 2.5 2.5"},
        {"-0.5", R8(-0.5), "0 0 0 0 0 0 0 0 0 0 -1 -0.5 -0.5 -5000 -0.5 -0.5 -0.5"},
        {"-1.5", R8(-1.5), "-2 o -2 o -2 o -2 o -2 o -1 -1.5 -1.5 -15000 -1.5 -1.5 -1.5"},
        {"-2.5", R8(-2.5), "-2 o -2 o -2 o -2 o -2 o -1 -2.5 -2.5 -25000 -2.5 -2.5 -2.5"},
        {"R4 2.5", R4(2.5f), "2 2 2 2 2 2 2 2 2 2 -1 2.5 2.5 25000 2.5 2.5 2.5"},
        {"R4 0.1", R4(0.1f), "0 0 0 0 0 0 0 0 0 0 -1 0.100000001 0.10000000149011612 1000 0.10000000149011612 0.1 0.1"},
        {"127.5", R8(127.5), "o 128 128 128 128 128 128 128 128 128 -1 127.5 127.5 1275000 127.5 127.5 127.5"},
        {"255.5", R8(255.5), "o o 256 256 256 256 256 256 256 256 -1 255.5 255.5 2555000 255.5 255.5 255.5"},
        {"126.5", R8(126.5), "126 126 126 126 126 126 126 126 126 126 -1 126.5 126.5 1265000 126.5 126.5 126.5"},
    });
}

TEST(VariantChangeTypeMatrix, RealsAtTheLimits) {
    const double huge = 1e300;
    Check({
        {"2147483647.5", R8(2147483647.5),
         "o o o o o 2147483648 o 2147483648 2147483648 2147483648 -1 2.14748365e+09 2147483647.5 21474836475000 o "
         "2147483647.5 2147483647.5"},
        {"2147483647.4", R8(2147483647.25),
         "o o o o 2147483647 2147483647 2147483647 2147483647 2147483647 2147483647 -1 2.14748365e+09 2147483647.25 "
         "21474836472500 o 2147483647.25 2147483647.25"},
        {"-2147483648.5", R8(-2147483648.5),
         "o o o o -2147483648 o -2147483648 o -2147483648 o -1 -2.14748365e+09 -2147483648.5 -21474836485000 o "
         "-2147483648.5 -2147483648.5"},
        {"2^63", R8(9223372036854775808.0),
         "o o o o o o o o o 9223372036854775808 -1 9.22337204e+18 9.2233720368547758e+18 o o 9223372036854780000 "
         "9.22337203685478E+18"},
        {"2^64", R8(18446744073709551616.0),
         "o o o o o o o o o o -1 1.84467441e+19 1.8446744073709552e+19 o o 18446744073709600000 1.84467440737096E+19"},
        {"1e300", R8(huge), "o o o o o o o o o o -1 o 1.0000000000000001e+300 o o o 1E+300"},
        {"-1e300", R8(-huge), "o o o o o o o o o o -1 o -1.0000000000000001e+300 o o o -1E+300"},
        {"tiny", R8(1e-300), "0 0 0 0 0 0 0 0 0 0 -1 0 1e-300 0 1e-300 0 1E-300"},
        {"infinity", R8(std::numeric_limits<double>::infinity()), "o o o o o o o o o o -1 o inf o o o 1.#INF"},
    });
}

TEST(VariantChangeTypeMatrix, CurrencyAndDecimals) {
    Check({
        {"CY 0.5", Cy(5000), "0 0 0 0 0 0 0 0 0 0 -1 0.5 0.5 5000 0.5 0.5 0.5"},
        {"CY 1.5", Cy(15000), "2 2 2 2 2 2 2 2 2 2 -1 1.5 1.5 15000 1.5 1.5 1.5"},
        {"CY -2.5", Cy(-25000), "-2 o -2 o -2 o -2 o -2 o -1 -2.5 -2.5 -25000 -2.5 -2.5 -2.5"},
        {"CY 0.0001", Cy(1), "0 0 0 0 0 0 0 0 0 0 -1 9.99999975e-05 0.0001 1 0.0001 0.0001 0.0001"},
        {"CY max", Cy(9223372036854775807),
         "o o o o o o o o 922337203685478 922337203685478 -1 9.2233718e+14 922337203685477.62 9223372036854775807 o "
         "922337203685477.5807 922337203685477.5807"},
        {"CY min", Cy(-9223372036854775807 - 1),
         "o o o o o o o o -922337203685478 o -1 -9.2233718e+14 -922337203685477.62 -9223372036854775808 o "
         "-922337203685477.5808 -922337203685477.5808"},
        {"DEC 2.50", Decimal("2.50"), "2 2 2 2 2 2 2 2 2 2 -1 2.5 2.5 25000 2.5 2.50 2.5"},
        {"DEC 0.00005", Decimal("0.00005"),
         "0 0 0 0 0 0 0 0 0 0 -1 4.99999987e-05 5.0000000000000002e-05 0 5.0000000000000002e-05 0.00005 0.00005"},
        {"DEC 0.00015", Decimal("0.00015"),
         "0 0 0 0 0 0 0 0 0 0 -1 0.000150000007 0.00014999999999999999 2 0.00014999999999999999 0.00015 0.00015"},
        {"DEC max", Decimal("79228162514264337593543950335"),
         "o o o o o o o o o o -1 7.92281625e+28 7.9228162514264338e+28 o o 79228162514264337593543950335 "
         "79228162514264337593543950335"},
        {"DEC zero with places", Decimal("0.000"), "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0.000 0"},
    });
}

TEST(VariantChangeTypeMatrix, Dates) {
    Check({
        {"noon", Date(37806.5),
         "o o o 37806 37806 37806 37806 37806 37806 37806 -1 37806.5 37806.5 378065000 37806.5 37806.5 2003/7/4 "
         "12:00:00"},
        {"zero", Date(0), "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0:00:00"},
    });
}

TEST(VariantChangeTypeMatrix, Texts) {
    Check({
        {"12", Text(u"12"), "12 12 12 12 12 12 12 12 12 12 -1 12 12 120000 x 12 12"},
        {"-2.5", Text(u"-2.5"), "-2 o -2 o -2 o -2 o -2 o -1 -2.5 -2.5 -25000 x -2.5 -2.5"},
        {"empty", Text(u""), "x x x x x x x x x x x x x x x x _"},
        {"word", Text(u"abc"), "x x x x x x x x x x x x x x x x abc"},
        {"true", Text(u"TRUE"), "x x x x x x x x x x -1 x x x x x TRUE"},
        {"false", Text(u"#False#"), "x x x x x x x x x x 0 x x x x x #False#"},
        {"zero", Text(u"0"), "0 0 0 0 0 0 0 0 0 0 0 0 0 0 x 0 0"},
        {"date", Text(u"2003-7-4"), "x x x x x x x x x x x x x x 37806 x 2003-7-4"},
        {"huge", Text(u"1E400"), "o o o o o o o o o o -1 o o o x o 1E400"},
    });
}

TEST(VariantChangeType, KeepsObjectsObjects) {
    CountedObject object;
    EXPECT_EQ(Change(Dispatch(object), VT_UNKNOWN), "vt 13");
    EXPECT_EQ(Change(Unknown(object), VT_DISPATCH), "vt 9");
    object.plain = true;
    EXPECT_EQ(Change(Unknown(object), VT_DISPATCH), "80020005");
    for (const Target& target : kTargets)
        EXPECT_EQ(Change(Unknown(object), target.type), "80020005") << target.name;
    EXPECT_EQ(Change(I4(1), VT_DISPATCH), "80020005");
    EXPECT_EQ(Change(Empty(), VT_UNKNOWN), "80020005");
    EXPECT_EQ(object.references, 1);
}

TEST(VariantChangeType, AsksObjectsForTheirValue) {
    CountedObject object;
    object.value = Text(u"12.5");
    EXPECT_EQ(Change(Dispatch(object), VT_R8), "R8 12.5");
    EXPECT_EQ(Change(Dispatch(object), VT_BSTR), "BSTR 12.5");
    EXPECT_EQ(object.asked, 2);
    EXPECT_EQ(Change(Dispatch(object), VT_R8, VARIANT_NOVALUEPROP), "80020005");
    EXPECT_EQ(object.asked, 2);
    object.value = Null();
    EXPECT_EQ(Change(Dispatch(object), VT_R8), "80020005");
    object.failure = DISP_E_MEMBERNOTFOUND;
    EXPECT_EQ(Change(Dispatch(object), VT_R8), "80020005");
    EXPECT_EQ(Change(Make(VT_DISPATCH, static_cast<IDispatch*>(nullptr)), VT_R8), "80020005");
    EXPECT_EQ(object.references, 1);
}

TEST(VariantChangeType, FollowsObjectsThatAreValuesOfObjectsButNotForever) {
    CountedObject inner;
    inner.value = I4(7);
    CountedObject outer;
    outer.value = Dispatch(inner);
    EXPECT_EQ(Change(Dispatch(outer), VT_I2), "I2 7");
    CountedObject itself;
    itself.value = Dispatch(itself);
    EXPECT_EQ(Change(Dispatch(itself), VT_I2), "80020005");
    EXPECT_LT(itself.asked, 100);
    itself.value = Empty();
    EXPECT_EQ(itself.references, 1);
}

TEST(VariantChangeType, NamesBooleansWhenAsked) {
    EXPECT_EQ(Change(Bool(true), VT_BSTR, VARIANT_ALPHABOOL), "BSTR True");
    EXPECT_EQ(Change(Bool(false), VT_BSTR, VARIANT_ALPHABOOL), "BSTR False");
    EXPECT_EQ(Change(Bool(true), VT_BSTR, VARIANT_LOCALBOOL), "BSTR True");
    EXPECT_EQ(Change(Bool(true), VT_BSTR, VARIANT_NOUSEROVERRIDE), "BSTR -1");
    EXPECT_EQ(Change(Make(VT_BOOL, SHORT{5}), VT_I4), "I4 5");  // bits are kept
    EXPECT_EQ(Change(Make(VT_BOOL, SHORT{5}), VT_BSTR, VARIANT_ALPHABOOL), "BSTR True");
}

TEST(VariantChangeType, RefusesTypesThatDoNotExist) {
    static constexpr VARTYPE kBad[] = {15, VT_VARIANT, VT_VOID, 131, VT_BYREF | VT_I4, VT_VECTOR | VT_I4, 0xFFFF};
    for (const VARTYPE type : kBad)
        EXPECT_EQ(Change(I4(1), type), "80020008") << type;
    VARIANT bad;
    bad.vt = 131;
    Value result;
    EXPECT_EQ(VariantChangeType(&result, &bad, 0, VT_I4), DISP_E_BADVARTYPE);
    EXPECT_EQ(VariantChangeType(nullptr, &result, 0, VT_I4), E_INVALIDARG);
    EXPECT_EQ(VariantChangeType(&result, nullptr, 0, VT_I4), E_INVALIDARG);
}

TEST(VariantChangeType, TakesOnlyTheSameTypeForNothingErrorsAndArrays) {
    EXPECT_EQ(Change(Null(), VT_NULL), "NULL");
    EXPECT_EQ(Change(Empty(), VT_EMPTY), "EMPTY");
    EXPECT_EQ(Change(Empty(), VT_NULL), "80020005");
    EXPECT_EQ(Change(I4(1), VT_EMPTY), "80020005");
    EXPECT_EQ(Change(I4(1), VT_ERROR), "80020005");
    EXPECT_EQ(Change(Error(5), VT_ERROR), "vt 10");
    Value bytes;
    bytes->parray = SafeArrayCreateVector(VT_UI1, 0, 2);
    bytes->vt = VT_ARRAY | VT_UI1;
    EXPECT_EQ(Change(bytes, VT_ARRAY | VT_UI1), "vt 8209");
    EXPECT_EQ(Change(bytes, VT_ARRAY | VT_I4), "80020005");
    EXPECT_EQ(Change(bytes, VT_BSTR), "80020005");
    EXPECT_EQ(Change(I4(1), VT_ARRAY | VT_I4), "80020005");
}

TEST(VariantChangeType, FollowsReferences) {
    double real = 6.5;
    BSTR text = SysAllocString(u"41");
    Value inner = Text(u"17");
    VARIANT source;
    Value result;
    source.vt = VT_R8 | VT_BYREF;
    source.pdblVal = &real;
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_I4), S_OK);
    EXPECT_EQ(Describe(result.Get()), "I4 6");
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_R8), S_OK);  // the same type, without the reference
    EXPECT_EQ(Describe(result.Get()), "R8 6.5");
    source.vt = VT_BSTR | VT_BYREF;
    source.pbstrVal = &text;
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_I4), S_OK);
    EXPECT_EQ(Describe(result.Get()), "I4 41");
    source.vt = VT_VARIANT | VT_BYREF;
    source.pvarVal = &inner;
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_UI1), S_OK);
    EXPECT_EQ(Describe(result.Get()), "UI1 17");
    source.byref = nullptr;
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_UI1), E_INVALIDARG);
    SysFreeString(text);
}

TEST(VariantChangeType, WorksInPlace) {
    Value value = Text(u"12.75");
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_DECIMAL), S_OK);
    EXPECT_EQ(Describe(value.Get()), "DEC 12.75");
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
    EXPECT_EQ(Describe(value.Get()), "BSTR 12.75");
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_DATE), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Describe(value.Get()), "BSTR 12.75");
}

TEST(VariantChangeType, RefusesABrokenDecimal) {
    Value value = Decimal("1");
    value->decVal.scale = 29;
    EXPECT_EQ(Change(value, VT_R8), "80070057");
    EXPECT_EQ(Change(value, VT_BSTR), "80070057");
}

}  // namespace
}  // namespace tk::test
