#include <cmath>
#include <limits>

#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

using Binary = HRESULT (*)(LPVARIANT, LPVARIANT, LPVARIANT);

std::string Apply(Binary operation, Value left, Value right) {
    Value result;
    const HRESULT outcome = operation(&left, &right, &result);
    return SUCCEEDED(outcome) ? Describe(result.Get()) : Code(outcome);
}

TEST(VarAdd, TakesTheWiderType) {
    const Value values[] = {UI1(1), I2(1), I4(1), I8(1), R4(1), R8(1), Cy(10000), Date(1), Decimal("1")};
    static constexpr const char* kSums[][9] = {
        //          UI1       I2        I4        I8        R4        R8        CY          DATE      DEC
        /* UI1  */ {"UI1 2", "I2 2", "I4 2", "I8 2", "R4 2", "R8 2", "CY 20000", "DATE 2", "DEC 2"},
        /* I2   */ {"I2 2", "I2 2", "I4 2", "I8 2", "R4 2", "R8 2", "CY 20000", "DATE 2", "DEC 2"},
        /* I4   */ {"I4 2", "I4 2", "I4 2", "I8 2", "R8 2", "R8 2", "CY 20000", "DATE 2", "DEC 2"},
        /* I8   */ {"I8 2", "I8 2", "I8 2", "I8 2", "R8 2", "R8 2", "CY 20000", "DATE 2", "DEC 2"},
        /* R4   */ {"R4 2", "R4 2", "R8 2", "R8 2", "R4 2", "R8 2", "CY 20000", "DATE 2", "DEC 2"},
        /* R8   */ {"R8 2", "R8 2", "R8 2", "R8 2", "R8 2", "R8 2", "CY 20000", "DATE 2", "DEC 2"},
        /* CY   */
        {"CY 20000", "CY 20000", "CY 20000", "CY 20000", "CY 20000", "CY 20000", "CY 20000", "DATE 2", "DEC 2"},
        /* DATE */ {"DATE 2", "DATE 2", "DATE 2", "DATE 2", "DATE 2", "DATE 2", "DATE 2", "DATE 2", "DATE 2"},
        /* DEC  */ {"DEC 2", "DEC 2", "DEC 2", "DEC 2", "DEC 2", "DEC 2", "DEC 2", "DATE 2", "DEC 2"},
    };
    for (std::size_t left = 0; left < std::size(values); ++left) {
        for (std::size_t right = 0; right < std::size(values); ++right) {
            EXPECT_EQ(Apply(VarAdd, values[left], values[right]), kSums[left][right])
                << Describe(values[left].Get()) << " + " << Describe(values[right].Get());
        }
    }
}

TEST(VarMul, MakesRealsOfAmountsTimesReals) {
    EXPECT_EQ(Apply(VarMul, Cy(15000), R8(2)), "R8 3");
    EXPECT_EQ(Apply(VarMul, Cy(15000), R4(2)), "R8 3");
    EXPECT_EQ(Apply(VarMul, Cy(15000), I4(2)), "CY 30000");
    EXPECT_EQ(Apply(VarMul, Date(2), I4(3)), "R8 6");
    EXPECT_EQ(Apply(VarMul, Decimal("1.5"), R8(2)), "DEC 3.0");
    EXPECT_EQ(Apply(VarMul, UI1(20), UI1(20)), "I2 400");
    EXPECT_EQ(Apply(VarMul, I2(1000), I2(1000)), "I4 1000000");
    EXPECT_EQ(Apply(VarMul, I4(100000), I4(100000)), "R8 10000000000");
    EXPECT_EQ(Apply(VarMul, Text(u"1.5"), Text(u"4")), "R8 6");
}

TEST(VarAdd, MovesToTheNextTypeThatFits) {
    EXPECT_EQ(Apply(VarAdd, UI1(255), UI1(1)), "I2 256");
    EXPECT_EQ(Apply(VarSub, UI1(0), UI1(1)), "I2 -1");
    EXPECT_EQ(Apply(VarAdd, I2(32767), I2(1)), "I4 32768");
    EXPECT_EQ(Apply(VarAdd, I4(2147483647), I4(1)), "R8 2147483648");
    EXPECT_EQ(Apply(VarAdd, I8(9223372036854775807), I8(1)), "R8 9.2233720368547758e+18");
    EXPECT_EQ(Apply(VarAdd, R4(3e38f), R4(3e38f)), "R8 6.0000000109955115e+38");
    EXPECT_EQ(Apply(VarAdd, Date(2958465), Date(1)), "R8 2958466");
    EXPECT_EQ(Apply(VarAdd, R8(1.7e308), R8(1.7e308)), "8002000A");
    EXPECT_EQ(Apply(VarAdd, Cy(9223372036854775807), Cy(1)), "8002000A");
    EXPECT_EQ(Apply(VarAdd, Decimal("79228162514264337593543950335"), Decimal("1")), "8002000A");
}

TEST(VarAdd, JoinsTextsAndCountsThemBesideNumbers) {
    EXPECT_EQ(Apply(VarAdd, Text(u"1"), Text(u"2")), "BSTR 12");
    EXPECT_EQ(Apply(VarAdd, Text(u"1"), I4(2)), "R8 3");
    EXPECT_EQ(Apply(VarAdd, I4(2), Text(u"1.5")), "R8 3.5");
    EXPECT_EQ(Apply(VarAdd, Text(u"1.5"), Cy(10000)), "CY 25000");
    EXPECT_EQ(Apply(VarAdd, Text(u"abc"), I4(2)), "80020005");
    EXPECT_EQ(Apply(VarAdd, Text(u""), I4(2)), "80020005");
    EXPECT_EQ(Apply(VarSub, Text(u"5"), Text(u"2")), "R8 3");
}

TEST(VarAdd, HasRulesForNothing) {
    EXPECT_EQ(Apply(VarAdd, Null(), I4(1)), "NULL");
    EXPECT_EQ(Apply(VarAdd, Text(u"a"), Null()), "NULL");
    EXPECT_EQ(Apply(VarAdd, Null(), Empty()), "NULL");
    EXPECT_EQ(Apply(VarAdd, Empty(), Empty()), "I2 0");
    EXPECT_EQ(Apply(VarAdd, Empty(), UI1(5)), "UI1 5");
    EXPECT_EQ(Apply(VarAdd, Cy(5), Empty()), "CY 5");
    EXPECT_EQ(Apply(VarAdd, Empty(), Text(u"abc")), "BSTR abc");
    EXPECT_EQ(Apply(VarSub, Empty(), I4(5)), "I4 -5");
    EXPECT_EQ(Apply(VarMul, Empty(), R8(5)), "R8 0");
}

TEST(VarAdd, TurnsTheOtherIntegersIntoThoseItKnows) {
    EXPECT_EQ(Apply(VarAdd, Bool(true), Bool(true)), "I2 -2");
    EXPECT_EQ(Apply(VarAdd, I1(-1), I1(-1)), "I2 -2");
    EXPECT_EQ(Apply(VarAdd, UI2(65535), UI2(1)), "I4 65536");
    EXPECT_EQ(Apply(VarAdd, UI4(4294967295u), UI4(1)), "I8 4294967296");
    EXPECT_EQ(Apply(VarAdd, UI8(18446744073709551615u), UI8(1)), "DEC 18446744073709551616");
    EXPECT_EQ(Apply(VarAdd, Make(VT_INT, 1), Make(VT_UINT, 1u)), "I8 2");
}

TEST(VarAdd, RefusesWhatIsNoValue) {
    CountedObject object;
    EXPECT_EQ(Apply(VarAdd, Error(5), I4(1)), "80020005");
    EXPECT_EQ(Apply(VarAdd, Unknown(object), I4(1)), "80020005");
    Value array;
    array->parray = SafeArrayCreateVector(VT_I4, 0, 1);
    array->vt = VT_ARRAY | VT_I4;
    EXPECT_EQ(Apply(VarAdd, array, I4(1)), "80020005");
    Value one = I4(1);
    Value result;
    EXPECT_EQ(VarAdd(nullptr, &one, &result), E_INVALIDARG);
    EXPECT_EQ(VarAdd(&one, nullptr, &result), E_INVALIDARG);
    EXPECT_EQ(VarAdd(&one, &one, nullptr), E_INVALIDARG);
    VARIANT bad;
    bad.vt = 131;
    EXPECT_EQ(VarAdd(&bad, &one, &result), DISP_E_BADVARTYPE);
}

TEST(VarAdd, AsksObjectsAndFollowsReferences) {
    CountedObject object;
    object.value = I4(40);
    EXPECT_EQ(Apply(VarAdd, Dispatch(object), I4(2)), "I4 42");
    LONG number = 40;
    VARIANT reference;
    reference.vt = VT_I4 | VT_BYREF;
    reference.plVal = &number;
    Value two = I4(2);
    Value result;
    EXPECT_EQ(VarAdd(&reference, &two, &result), S_OK);
    EXPECT_EQ(Describe(result.Get()), "I4 42");
}

TEST(VarAdd, MayStoreIntoAnOperand) {
    Value left = Text(u"a");
    Value right = Text(u"b");
    EXPECT_EQ(VarAdd(&left, &right, &left), S_OK);
    EXPECT_EQ(Describe(left.Get()), "BSTR ab");
}

TEST(VarSub, CountsTheDaysBetweenDates) {
    EXPECT_EQ(Apply(VarSub, Date(37806.5), Date(37800)), "R8 6.5");
    EXPECT_EQ(Apply(VarSub, Date(37806.5), I4(6)), "DATE 37800.5");
    EXPECT_EQ(Apply(VarSub, Decimal("1.50"), Decimal("0.25")), "DEC 1.25");
    EXPECT_EQ(Apply(VarSub, Cy(10000), Cy(25000)), "CY -15000");
}

TEST(VarNeg, TurnsTheSign) {
    struct Row {
        Value value;
        const char* negated;
    };
    const Row rows[] = {
        {I2(5), "I2 -5"},
        {I2(-32768), "I4 32768"},
        {UI1(5), "I2 -5"},
        {UI1(0), "I2 0"},
        {I4(-2147483647 - 1), "R8 2147483648"},
        {Cy(5), "CY -5"},
        {Decimal("1.50"), "DEC -1.50"},
        {R8(0), "R8 0"},
        {Text(u"2"), "R8 -2"},
        {Date(2), "DATE -2"},
        {Bool(true), "I2 1"},
        {Empty(), "I2 0"},
        {Null(), "NULL"},
        {R4(1.5f), "R4 -1.5"},
    };
    for (Row row : rows) {
        Value result;
        EXPECT_EQ(VarNeg(&row.value, &result), S_OK);
        EXPECT_EQ(Describe(result.Get()), row.negated);
    }
}

TEST(VarCmp, OrdersNumbersExactly) {
    struct Row {
        const char* label;
        Value left;
        Value right;
        HRESULT order;
    };
    const Row rows[] = {
        {"integers", I4(1), I2(2), VARCMP_LT},
        {"same value, other type", I4(2), R8(2), VARCMP_EQ},
        {"large integers", I8(9007199254740993), I8(9007199254740992), VARCMP_GT},
        {"unsigned", UI8(18446744073709551615u), I8(-1), VARCMP_GT},
        {"decimal and integer", Decimal("9007199254740993"), I8(9007199254740992), VARCMP_GT},
        {"currency and decimal", Cy(12500), Decimal("1.25"), VARCMP_EQ},
        {"currency and real", Cy(12500), R8(1.5), VARCMP_LT},
        {"real and currency", R8(1.5), Cy(12500), VARCMP_GT},
        {"real and huge", Decimal("1"), R8(1e300), VARCMP_LT},
        {"booleans", Bool(true), Bool(false), VARCMP_LT},
        {"empty is zero", Empty(), I4(0), VARCMP_EQ},
        {"null", Null(), I4(0), VARCMP_NULL},
        {"nulls", Null(), Null(), VARCMP_NULL},
        {"number before text", I4(9), Text(u"1"), VARCMP_LT},
        {"text after number", Text(u"1"), I4(9), VARCMP_GT},
        {"empty is an empty text", Empty(), Text(u""), VARCMP_EQ},
        {"empty before text", Empty(), Text(u"a"), VARCMP_LT},
        {"dates", Date(2), Date(1), VARCMP_GT},
        {"texts", Text(u"abc"), Text(u"abd"), VARCMP_LT},
        {"equal texts", Text(u"abc"), Text(u"abc"), VARCMP_EQ},
        {"errors", Error(1), Error(1), DISP_E_TYPEMISMATCH},
    };
    for (Row row : rows) {
        EXPECT_EQ(Code(VarCmp(&row.left, &row.right, 0x0804, 0)), Code(row.order)) << row.label;
    }
    Value one = I4(1);
    EXPECT_EQ(VarCmp(&one, nullptr, 0, 0), E_INVALIDARG);
    Value none = R8(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(VarCmp(&one, &none, 0, 0), VARCMP_NULL);
}

TEST(VarBstrCmp, FollowsTheLocale) {
    Value upper = Text(u"ABC");
    Value lower = Text(u"abc");
    EXPECT_EQ(VarBstrCmp(lower->bstrVal, upper->bstrVal, 0x0804, 0), VARCMP_LT);
    EXPECT_EQ(VarBstrCmp(lower->bstrVal, upper->bstrVal, 0x0804, 1), VARCMP_EQ);
    EXPECT_EQ(VarBstrCmp(nullptr, nullptr, 0x0804, 0), VARCMP_EQ);
    EXPECT_EQ(VarBstrCmp(nullptr, upper->bstrVal, 0x0C0A, 0), VARCMP_LT);
    Value ba = Text(u"八");
    Value yi = Text(u"一");  // by pinyin after ba, by code point before
    EXPECT_EQ(VarBstrCmp(ba->bstrVal, yi->bstrVal, 0, 0), VARCMP_LT);
}

}  // namespace
}  // namespace tk::test
