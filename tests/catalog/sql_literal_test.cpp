#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tkkernel/catalog.h"
#include "util/values.h"

namespace {

using namespace tk::test;

Value Integer(VARTYPE type, long long number) {
    Value value(type);
    value->llVal = number;
    return value;
}

constexpr double kDay = 39354.0;  // 2007-09-29

TEST(ChangeToSqlFormat, WritesEachTypeAsALiteral) {
    const struct {
        const char* label;
        Value value;
        const char* text;
    } kRows[] = {
        {"empty", Value(VT_EMPTY), "null"},
        {"null", Value(VT_NULL), "null"},
        {"I2", Int2(-7), "-7"},
        {"I4", Int4(-2147483647 - 1), "-2147483648"},
        {"R4", Real4(1.5F), "        1.5"},
        {"R8 keeps the leading blanks", Real8(-0.5), "       -0.5"},
        {"R8 zero is nothing", Real8(0.0), ""},
        {"currency", Currency(12500), "        1.25"},
        {"true", Bool(VARIANT_TRUE), "True"},
        {"false", Bool(VARIANT_FALSE), "False"},
        {"decimal", Decimal(12345, 2, true), "-123.45"},
        {"decimal zero", Decimal(0, 2), "0"},
        {"I1", Integer(VT_I1, -128), "-128"},
        {"UI1", Byte(255), "255"},
        {"UI2", Integer(VT_UI2, 65535), "65535"},
        {"UI4", Integer(VT_UI4, 4294967295LL), "4294967295"},
        {"I8", Integer(VT_I8, std::numeric_limits<long long>::min()), "-9223372036854775808"},
        {"UI8", Integer(VT_UI8, -1), "18446744073709551615"},
        {"INT", Integer(VT_INT, -5), "-5"},
        {"UINT", Integer(VT_UINT, 4294967295LL), "4294967295"},
        {"date", Date(kDay), "'2007/09/29'"},
        {"date without its time", Date(kDay + 0.75), "'2007/09/29'"},
        {"first of January", Date(36526.0), "'2000/01/01'"},
        {"text", Text("库存 A"), "'库存 A'"},
        {"empty text", Text(""), "''"},
        {"null text", Value(VT_BSTR), "''"},
        {"a quote is not doubled", Text("O'Neil"), "'O'Neil'"},
        {"percent signs", Text("100%s%n"), "'100%s%n'"},
        {"LPSTR is never followed", Integer(VT_LPSTR, 1), "''"},
        {"LPWSTR is never followed", Integer(VT_LPWSTR, 1), "''"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(ChangeToSqlFormat(row.value, "Mic"), row.text);
        EXPECT_STREQ(ChangeToSqlFormat(row.value, nullptr), row.text);
    }
}

TEST(ChangeToSqlFormat, EndsATextAtItsFirstZeroCharacter) {
    VARIANT text = {};
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocStringLen(OLESTR("ab\0cd"), 5);
    const CString literal = ChangeToSqlFormat(text, "Mic");
    VariantClear(&text);
    EXPECT_EQ(literal.GetLength(), 4);
    EXPECT_STREQ(literal, "'ab'");
}

TEST(ChangeToSqlFormat, HasNothingForObjectsErrorsArraysAndReferences) {
    const unsigned kTypes[] = {9, 10, 12, 13, 15, 24, 25, 26, 27, 28, 29, 32, 36, 64, 72, 131, 4095};
    for (const unsigned vt : kTypes) {
        SCOPED_TRACE(vt);
        VARIANT value = {};
        value.vt = static_cast<VARTYPE>(vt);
        EXPECT_STREQ(ChangeToSqlFormat(value, "ORA"), "");
    }
    EXPECT_STREQ(ChangeToSqlFormat(Bytes("abc"), "ORA"), "");
    LONG number = 5;
    VARIANT reference = {};
    reference.vt = VT_BYREF | VT_I4;
    reference.plVal = &number;
    EXPECT_STREQ(ChangeToSqlFormat(reference, "ORA"), "");
}

TEST(MakeEqualString, PairsNamesAndValues) {
    static const struct {
        const char* label;
        const char* names;
        const char* values;
        const char* join;
        const char* text;
    } kRows[] = {
        {"two pairs", "A,B", "1,2", " AND ", "A=1 AND B=2"},
        {"one pair", "A", "1", " AND ", "A=1"},
        {"a set list", "A,B,C", "1,'x',null", ",", "A=1,B='x',C=null"},
        {"Chinese names", "编号,名称", "1,'螺丝'", " and ", "编号=1 and 名称='螺丝'"},
        {"no name", "", "1,2", ",", ""},
        {"only commas", ",,,", "1,2", ",", ""},
        {"empty pieces of the names", ",A,,B,", "1,2", ",", "A=1,B=2"},
        {"empty pieces of the values", "A,B", ",1,,2,", ",", "A=1,B=2"},
        {"a name without a value", "A,B,C", "1", ",", "A=1,B=,C="},
        {"no values at all", "A,B", "", " AND ", "A= AND B="},
        {"a value without a name", "A", "1,2,3", ",", "A=1"},
        {"blanks stay", " A , B ", " 1 , 2 ", ",", " A = 1 , B = 2 "},
        {"percent signs", "A%s,B", "%n,2", "%d", "A%s=%n%dB=2"},
        {"an equals sign in a name", "A=B", "1", ",", "A=B=1"},
        {"an empty join", "A,B", "1,2", "", "A=1B=2"},
        {"null names", nullptr, "1", ",", ""},
        {"null values", "A", nullptr, ",", "A="},
        {"a null join", "A,B", "1,2", nullptr, "A=1B=2"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(MakeEqualString(row.names, row.values, row.join), row.text);
    }
}

TEST(MakeEqualString, TakesLongLists) {
    CString names;
    CString values;
    CString expected;
    for (int i = 0; i < 2000; ++i) {
        CString piece;
        piece.Format("N%d,", i);
        names += piece;
        piece.Format("%d,", i);
        values += piece;
        piece.Format(i == 0 ? "N%d=%d" : ";N%d=%d", i, i);
        expected += piece;
    }
    EXPECT_STREQ(MakeEqualString(names, values, ";"), expected);
}

}  // namespace
