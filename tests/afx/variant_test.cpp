#include <afxdisp.h>
#include <gtest/gtest.h>

#include <utility>

#include "afx/raises.h"
#include "afx/recording_dispatch.h"

namespace {

std::basic_string<OLECHAR> Text(const VARIANT& value) {
    return {value.bstrVal, SysStringLen(value.bstrVal)};
}

TEST(OleVariant, TakesItsTypeFromItsSource) {
    EXPECT_EQ(COleVariant().vt, VT_EMPTY);
    EXPECT_EQ(COleVariant("text").vt, VT_BSTR);
    EXPECT_EQ(Text(COleVariant("库存")), OLESTR("\u5E93\u5B58"));
    EXPECT_EQ(Text(COleVariant(CString("text"))), OLESTR("text"));
    EXPECT_EQ(Text(COleVariant("text", VT_BSTR)), OLESTR("text"));
    EXPECT_EQ(COleVariant(static_cast<const char*>(nullptr)).bstrVal, nullptr);
    EXPECT_EQ(COleVariant(static_cast<BYTE>(5)).vt, VT_UI1);
    EXPECT_EQ(COleVariant(static_cast<short>(5)).vt, VT_I2);
    EXPECT_EQ(COleVariant(5L).vt, VT_I4);
    EXPECT_EQ(COleVariant(5).vt, VT_I4);
    EXPECT_EQ(COleVariant(5L).lVal, 5);
    EXPECT_EQ(COleVariant(-1L, VT_ERROR).vt, VT_ERROR);
    EXPECT_EQ(COleVariant(static_cast<long>(DISP_E_PARAMNOTFOUND), VT_ERROR).scode, DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(COleVariant(static_cast<short>(7), VT_BOOL).boolVal, VARIANT_TRUE);
    EXPECT_EQ(COleVariant(0L, VT_BOOL).boolVal, VARIANT_FALSE);
    EXPECT_EQ(COleVariant(1.5f).fltVal, 1.5f);
    EXPECT_EQ(COleVariant(1.5).dblVal, 1.5);
    EXPECT_EQ(COleVariant(COleCurrency(1, 5000)).cyVal.int64, 15000);
    EXPECT_EQ(COleVariant(COleDateTime(2.5)).date, 2.5);
}

TEST(OleVariant, RefusesTypesThatDoNotFitTheSource) {
    EXPECT_EQ(Raised([] { COleVariant(static_cast<short>(1), VT_I4); }), "CInvalidArgException");
    EXPECT_EQ(Raised([] { COleVariant(1L, VT_I2); }), "CInvalidArgException");
    EXPECT_EQ(Raised([] { COleVariant("x", VT_I4); }), "CInvalidArgException");
}

TEST(OleVariant, CopiesDeepAndMovesCheap) {
    COleVariant first("text");
    COleVariant second(first);
    EXPECT_NE(first.bstrVal, second.bstrVal);
    EXPECT_TRUE(first == second);
    const BSTR held = first.bstrVal;
    COleVariant third(std::move(first));
    EXPECT_EQ(third.bstrVal, held);
    EXPECT_EQ(first.vt, VT_EMPTY);  // NOLINT(bugprone-use-after-move)
    second = third;
    second = *&second;
    EXPECT_EQ(Text(second), OLESTR("text"));
    second = static_cast<LPCVARIANT>(third);
    EXPECT_EQ(Text(second), OLESTR("text"));
    second = static_cast<LPCVARIANT>(nullptr);
    EXPECT_EQ(second.vt, VT_EMPTY);
    third = COleVariant(5L);
    EXPECT_EQ(third.lVal, 5);
}

TEST(OleVariant, CountsReferencesOfObjects) {
    RecordingDispatch object;
    VARIANT plain;
    plain.vt = VT_DISPATCH;
    plain.pdispVal = &object;
    {
        const COleVariant value(plain);
        EXPECT_EQ(object.references, 2);
    }
    EXPECT_EQ(object.references, 1);
}

TEST(OleVariant, AttachesAndDetaches) {
    VARIANT plain;
    plain.vt = VT_BSTR;
    plain.bstrVal = SysAllocString(OLESTR("mine"));
    COleVariant value("old");
    value.Attach(plain);
    EXPECT_EQ(plain.vt, VT_EMPTY);
    EXPECT_EQ(Text(value), OLESTR("mine"));
    plain = value.Detach();
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(Text(plain), OLESTR("mine"));
    VariantClear(&plain);
    value = "text";
    value.Attach(value);
    EXPECT_EQ(Text(value), OLESTR("text"));
    value.Clear();
    EXPECT_EQ(value.vt, VT_EMPTY);
    value.SetString("set", VT_BSTR);
    EXPECT_EQ(Text(value), OLESTR("set"));
}

TEST(OleVariant, ChangesItsType) {
    COleVariant value("42");
    value.ChangeType(VT_I4);
    EXPECT_EQ(value.vt, VT_I4);
    EXPECT_EQ(value.lVal, 42);
    COleVariant source(2.5);
    value.ChangeType(VT_BSTR, source);
    EXPECT_EQ(Text(value), OLESTR("2.5"));
    EXPECT_EQ(source.vt, VT_R8);
    value = "no number";
    EXPECT_EQ(RaisedCode([&] { value.ChangeType(VT_I4); }), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Text(value), OLESTR("no number")) << "stays after a failure";
}

TEST(OleVariant, KeepsBooleansAndErrorsWhenNumbersAreAssigned) {
    COleVariant flag(1L, VT_BOOL);
    flag = static_cast<short>(0);
    EXPECT_EQ(flag.vt, VT_BOOL);
    EXPECT_EQ(flag.boolVal, VARIANT_FALSE);
    flag = 5L;
    EXPECT_EQ(flag.boolVal, VARIANT_TRUE);
    COleVariant error(1L, VT_ERROR);
    error = 2L;
    EXPECT_EQ(error.vt, VT_ERROR);
    EXPECT_EQ(error.scode, 2);
    error = static_cast<short>(3);
    EXPECT_EQ(error.vt, VT_I2);
    COleVariant text("x");
    text = 4;
    EXPECT_EQ(text.vt, VT_I4);
    text = static_cast<BYTE>(4);
    EXPECT_EQ(text.vt, VT_UI1);
    text = CString("y");
    EXPECT_EQ(text.vt, VT_BSTR);
    text = 1.5f;
    text = 1.5;
    text = COleCurrency(1, 0);
    text = COleDateTime(1.0);
    EXPECT_EQ(text.vt, VT_DATE);
}

TEST(OleVariant, ComparesTypeAndValue) {
    EXPECT_TRUE(COleVariant("a") == COleVariant("a"));
    EXPECT_FALSE(COleVariant("a") == COleVariant("b"));
    EXPECT_FALSE(COleVariant("a") == COleVariant("ab"));
    EXPECT_FALSE(COleVariant(1L) == COleVariant(static_cast<short>(1)));
    EXPECT_TRUE(COleVariant() == COleVariant());
    EXPECT_TRUE(COleVariant(1.5) == static_cast<LPCVARIANT>(COleVariant(1.5)));
    EXPECT_FALSE(COleVariant(1.5) == COleVariant(1.25));
    EXPECT_TRUE(COleVariant("") == COleVariant(static_cast<const char*>(nullptr))) << "null is the empty text";
    static const struct {
        VARTYPE vt;
        long long first, second;
    } kRows[] = {{VT_I2, 1, 2},       {VT_I4, 1, 2},      {VT_CY, 1, 2},  {VT_BOOL, 0, -1}, {VT_ERROR, 1, 2},
                 {VT_DISPATCH, 0, 8}, {VT_UNKNOWN, 0, 8}, {VT_I1, 1, 2},  {VT_UI1, 1, 2},   {VT_UI2, 1, 2},
                 {VT_UI4, 1, 2},      {VT_I8, 1, 2},      {VT_UI8, 1, 2}, {VT_INT, 1, 2},   {VT_UINT, 1, 2}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.vt);
        VARIANT first = {};
        first.vt = row.vt;
        first.llVal = row.first;
        VARIANT second = {};
        second.vt = row.vt;
        second.llVal = row.second;
        COleVariant value;
        static_cast<VARIANT&>(value) = first;
        EXPECT_TRUE(value == first);
        EXPECT_FALSE(value == second);
        value.Detach();
    }
}

TEST(OleVariant, IsMadeOfBytes) {
    CByteArray bytes;
    bytes.Add(1);
    bytes.Add(255);
    const COleVariant value(bytes);
    EXPECT_EQ(value.vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(value.parray->rgsabound[0].cElements, 2u);
    EXPECT_EQ(static_cast<BYTE*>(value.parray->pvData)[1], 255);
    EXPECT_TRUE(value == COleVariant(bytes));
    bytes[1] = 254;
    EXPECT_FALSE(value == COleVariant(bytes));
    bytes.RemoveAll();
    EXPECT_EQ(COleVariant(bytes).parray->rgsabound[0].cElements, 0u);
}

}  // namespace
