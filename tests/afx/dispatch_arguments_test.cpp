#include <afxdisp.h>
#include <gtest/gtest.h>

#include "afx/raises.h"
#include "afx/recording_dispatch.h"

namespace {

class InvokeArguments : public ::testing::Test {
protected:
    RecordingDispatch object;
    COleDispatchDriver driver{&object, FALSE};

    const SeenArgument& Argument(std::size_t index) { return object.calls.back().arguments.at(index); }
};

TEST_F(InvokeArguments, ArriveInOrderWithTheirTypes) {
    static const BYTE parms[] = VTS_BSTR VTS_PVARIANT VTS_I4;
    VARIANT affected;
    VariantInit(&affected);
    driver.InvokeHelper(6, DISPATCH_METHOD, VT_EMPTY, NULL, parms, "select 1", &affected, -1L);
    ASSERT_EQ(object.calls.size(), 1u);
    const SeenCall& call = object.calls[0];
    EXPECT_EQ(call.id, 6);
    EXPECT_EQ(call.kind, DISPATCH_METHOD);
    EXPECT_EQ(call.lcid, 0u);
    EXPECT_TRUE(call.nullInterface);
    EXPECT_FALSE(call.wantsResult);
    EXPECT_TRUE(call.named.empty());
    ASSERT_EQ(call.arguments.size(), 3u);
    EXPECT_EQ(Argument(0).vt, VT_BSTR);
    EXPECT_EQ(Argument(0).text, OLESTR("select 1"));
    EXPECT_EQ(Argument(1).vt, VT_VARIANT | VT_BYREF);
    EXPECT_EQ(Argument(1).value.pvarVal, &affected);
    EXPECT_EQ(Argument(2).vt, VT_I4);
    EXPECT_EQ(Argument(2).value.lVal, -1);
}

TEST_F(InvokeArguments, CoverEveryCode) {
    static const BYTE parms[] = VTS_I2 VTS_I4 VTS_R4 VTS_R8 VTS_CY VTS_DATE VTS_WBSTR VTS_DISPATCH VTS_SCODE VTS_BOOL
        VTS_VARIANT VTS_UNKNOWN VTS_BSTR VTS_I1 VTS_UI1 VTS_UI2 VTS_UI4 VTS_I8 VTS_UI8;
    CY amount;
    amount.int64 = 127500;
    VARIANT value;
    value.vt = VT_I2;
    value.iVal = 9;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, -2, -3L, 1.5, 2.5, &amount, 37806.5, OLESTR("wide"),
                        static_cast<IDispatch*>(&object), DISP_E_PARAMNOTFOUND, 5, &value,
                        static_cast<IUnknown*>(&object), "narrow", -1, 200, 60000, 4000000000UL, -5000000000LL,
                        18000000000000000000ULL);
    ASSERT_EQ(object.calls.back().arguments.size(), 19u);
    const VARTYPE kTypes[] = {VT_I2,       VT_I4,    VT_R4,   VT_R8, VT_CY,      VT_DATE, VT_BSTR,
                              VT_DISPATCH, VT_ERROR, VT_BOOL, VT_I2, VT_UNKNOWN, VT_BSTR, VT_I1,
                              VT_UI1,      VT_UI2,   VT_UI4,  VT_I8, VT_UI8};
    for (std::size_t i = 0; i < std::size(kTypes); ++i)
        EXPECT_EQ(Argument(i).vt, kTypes[i]) << i;
    EXPECT_EQ(Argument(0).value.iVal, -2);
    EXPECT_EQ(Argument(1).value.lVal, -3);
    EXPECT_EQ(Argument(2).value.fltVal, 1.5f);
    EXPECT_EQ(Argument(3).value.dblVal, 2.5);
    EXPECT_EQ(Argument(4).value.cyVal.int64, 127500);
    EXPECT_EQ(Argument(5).value.date, 37806.5);
    EXPECT_EQ(Argument(6).text, OLESTR("wide"));
    EXPECT_EQ(Argument(7).value.pdispVal, &object);
    EXPECT_EQ(Argument(8).value.scode, DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(Argument(9).value.boolVal, VARIANT_TRUE);
    EXPECT_EQ(Argument(10).value.iVal, 9);
    EXPECT_EQ(Argument(11).value.punkVal, &object);
    EXPECT_EQ(Argument(12).text, OLESTR("narrow"));
    EXPECT_EQ(Argument(13).value.cVal, -1);
    EXPECT_EQ(Argument(14).value.bVal, 200);
    EXPECT_EQ(Argument(15).value.uiVal, 60000);
    EXPECT_EQ(Argument(16).value.ulVal, 4000000000u);
    EXPECT_EQ(Argument(17).value.llVal, -5000000000LL);
    EXPECT_EQ(Argument(18).value.ullVal, 18000000000000000000ULL);
    EXPECT_EQ(object.references, 1) << "objects are borrowed";
}

TEST_F(InvokeArguments, CoverEveryReference) {
    static const BYTE parms[] = VTS_PI2 VTS_PR4 VTS_PR8 VTS_PCY VTS_PDATE VTS_PBSTR VTS_PDISPATCH VTS_PSCODE VTS_PBOOL
        VTS_PVARIANT VTS_PUNKNOWN VTS_PUI1;
    short i2 = 0;
    float r4 = 0;
    double r8 = 0;
    CY cy = {};
    DATE date = 0;
    BSTR text = nullptr;
    IDispatch* dispatch = nullptr;
    SCODE scode = 0;
    VARIANT_BOOL flag = 0;
    VARIANT variant = {};
    IUnknown* unknown = nullptr;
    BYTE byte = 0;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, &i2, &r4, &r8, &cy, &date, &text, &dispatch, &scode,
                        &flag, &variant, &unknown, &byte);
    const struct {
        VARTYPE vt;
        void* at;
    } kExpected[] = {{VT_I2, &i2},
                     {VT_R4, &r4},
                     {VT_R8, &r8},
                     {VT_CY, &cy},
                     {VT_DATE, &date},
                     {VT_BSTR, &text},
                     {VT_DISPATCH, &dispatch},
                     {VT_ERROR, &scode},
                     {VT_BOOL, &flag},
                     {VT_VARIANT, &variant},
                     {VT_UNKNOWN, &unknown},
                     {VT_UI1, &byte}};
    ASSERT_EQ(object.calls.back().arguments.size(), std::size(kExpected));
    for (std::size_t i = 0; i < std::size(kExpected); ++i) {
        EXPECT_EQ(Argument(i).vt, kExpected[i].vt | VT_BYREF) << i;
        EXPECT_EQ(Argument(i).value.byref, kExpected[i].at) << i;
    }
}

TEST_F(InvokeArguments, GiveLongsBackSignExtended) {
    static const BYTE parms[] = VTS_PI4 VTS_PI4;
    long first = 7;
    long second = -1;
    object.answer = [](DISPPARAMS* parameters, VARIANT*, EXCEPINFO*) {
        EXPECT_EQ(parameters->rgvarg[1].vt, VT_I4 | VT_BYREF);
        EXPECT_EQ(*parameters->rgvarg[1].plVal, 7);
        EXPECT_EQ(*parameters->rgvarg[0].plVal, -1);
        *parameters->rgvarg[1].plVal = -100;
        *parameters->rgvarg[0].plVal = 0x7FFFFFFF;
        return S_OK;
    };
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, &first, &second);
    EXPECT_EQ(first, -100L);
    EXPECT_EQ(second, 0x7FFFFFFFL);
    object.answer = nullptr;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, static_cast<long*>(nullptr), &second);
    EXPECT_EQ(Argument(0).value.byref, nullptr);
}

TEST_F(InvokeArguments, CarryTheLow32BitsOfALong) {
    static const BYTE parms[] = VTS_I4;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, static_cast<long>(0xFFFFFFFFu));
    EXPECT_EQ(Argument(0).value.lVal, -1);
}

TEST_F(InvokeArguments, TellNullTextsFromEmptyOnes) {
    static const BYTE parms[] = VTS_BSTR VTS_BSTR VTS_WBSTR VTS_WBSTR;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, static_cast<const char*>(nullptr), "",
                        static_cast<LPCOLESTR>(nullptr), OLESTR(""));
    EXPECT_EQ(Argument(0).vt, VT_BSTR);
    EXPECT_TRUE(Argument(0).nullText);
    EXPECT_FALSE(Argument(1).nullText);
    EXPECT_TRUE(Argument(1).text.empty());
    EXPECT_TRUE(Argument(2).nullText);
    EXPECT_FALSE(Argument(3).nullText);
}

TEST_F(InvokeArguments, SpeakCodePage936) {
    static const BYTE parms[] = VTS_BSTR;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, "\xBF\xE2\xD5\x5C");
    EXPECT_EQ(Argument(0).text, OLESTR("\u5E93\u8AA0"));
    const CString longText('s', 4000);
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, static_cast<LPCSTR>(longText));
    EXPECT_EQ(Argument(0).text.size(), 4000u);
}

TEST_F(InvokeArguments, BorrowWhatAVariantOwns) {
    static const BYTE parms[] = VTS_VARIANT VTS_VARIANT;
    COleVariant text("kept");
    COleVariant holder;
    holder.vt = VT_DISPATCH;
    holder.pdispVal = &object;
    object.AddRef();
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, static_cast<LPCVARIANT>(text),
                        static_cast<LPCVARIANT>(holder));
    EXPECT_EQ(Argument(0).value.bstrVal, text.bstrVal) << "no copy";
    EXPECT_EQ(Argument(1).value.pdispVal, &object);
    EXPECT_EQ(object.references, 2);
    EXPECT_EQ(SysStringLen(text.bstrVal), 4u);
}

TEST_F(InvokeArguments, CountANullVariantAsOmitted) {
    static const BYTE parms[] = VTS_VARIANT VTS_CY;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, static_cast<VARIANT*>(nullptr),
                        static_cast<CY*>(nullptr));
    for (std::size_t i : {0u, 1u}) {
        EXPECT_EQ(Argument(i).vt, VT_ERROR);
        EXPECT_EQ(Argument(i).value.scode, DISP_E_PARAMNOTFOUND);
    }
}

TEST_F(InvokeArguments, MayBeNone) {
    driver.InvokeHelper(15, DISPATCH_METHOD, VT_EMPTY, NULL, NULL);
    EXPECT_TRUE(object.calls.back().arguments.empty());
    static const BYTE parms[] = VTS_NONE;
    driver.InvokeHelper(15, DISPATCH_METHOD, VT_EMPTY, NULL, parms);
    EXPECT_TRUE(object.calls.back().arguments.empty());
}

TEST_F(InvokeArguments, MayBeMoreThanEight) {
    static const BYTE parms[] =
        VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_BSTR VTS_PI4 VTS_BOOL;
    long last = 1;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, 0L, 1L, 2L, 3L, 4L, 5L, 6L, 7L, 8L, "ten", &last, 0);
    ASSERT_EQ(object.calls.back().arguments.size(), 12u);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(Argument(static_cast<std::size_t>(i)).value.lVal, i);
    EXPECT_EQ(Argument(9).text, OLESTR("ten"));
    EXPECT_EQ(Argument(10).vt, VT_I4 | VT_BYREF);
    EXPECT_EQ(Argument(11).value.boolVal, VARIANT_FALSE);
}

TEST_F(InvokeArguments, OfPutsNameTheirValue) {
    for (const WORD kind : {WORD{DISPATCH_PROPERTYPUT}, WORD{DISPATCH_PROPERTYPUTREF}}) {
        static const BYTE parms[] = VTS_I4;
        driver.InvokeHelper(2, kind, VT_EMPTY, NULL, parms, 30L);
        EXPECT_EQ(object.calls.back().kind, kind);
        EXPECT_EQ(object.calls.back().named, std::vector<DISPID>{DISPID_PROPERTYPUT});
    }
    driver.InvokeHelper(2, DISPATCH_PROPERTYGET, VT_EMPTY, NULL, NULL);
    EXPECT_TRUE(object.calls.back().named.empty());
}

TEST_F(InvokeArguments, WithUnknownCodesAreRefusedBeforeTheCall) {
    for (const char* codes : {"\x01", "\x0F", "\x16", "\x4E", "\x41", "\xFF", "\x0E\x0F"}) {
        EXPECT_EQ(RaisedCode([&] {
                      driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, reinterpret_cast<const BYTE*>(codes), "x",
                                          "y");
                  }),
                  DISP_E_BADVARTYPE);
    }
    EXPECT_TRUE(object.calls.empty());
}

TEST_F(InvokeArguments, OfSetPropertyTakeNarrowTexts) {
    driver.SetProperty(3, VT_BSTR, "text");
    EXPECT_EQ(Argument(0).text, OLESTR("text"));
    EXPECT_EQ(object.calls.back().kind, DISPATCH_PROPERTYPUT);
    EXPECT_EQ(object.calls.back().named, std::vector<DISPID>{DISPID_PROPERTYPUT});
    driver.SetProperty(3, VT_I4, 5L);
    EXPECT_EQ(Argument(0).value.lVal, 5);
    short number = 0;
    driver.SetProperty(3, VT_I2 | VT_BYREF, &number);
    EXPECT_EQ(Argument(0).vt, VT_I2 | VT_BYREF);
    EXPECT_EQ(Argument(0).value.piVal, &number);
}

}  // namespace
