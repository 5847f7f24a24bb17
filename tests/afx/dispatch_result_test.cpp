#include <afxdisp.h>
#include <gtest/gtest.h>

#include "afx/dispatch_call.h"
#include "afx/raises.h"
#include "afx/recording_dispatch.h"

namespace {

class InvokeResult : public ::testing::Test {
protected:
    RecordingDispatch object;
    COleDispatchDriver driver{&object, FALSE};

    // Answers every call with a copy of a value.
    void Answer(const COleVariant& value) {
        object.answer = [value = COleVariant(value)](DISPPARAMS*, VARIANT* result, EXCEPINFO*) mutable {
            return result == nullptr ? S_OK : VariantCopy(result, &value);
        };
    }
    template <class Result>
    Result Get(VARTYPE wanted) {
        Result result{};
        driver.InvokeHelper(0, DISPATCH_PROPERTYGET, wanted, &result, NULL);
        return result;
    }
};

COleVariant Typed(VARTYPE vt, long long value) {
    COleVariant variant;
    variant.vt = vt;
    variant.llVal = value;
    return variant;
}

TEST_F(InvokeResult, HasTheWidthOfItsType) {
    Answer(Typed(VT_I2, -2));
    EXPECT_EQ(Get<short>(VT_I2), -2);
    Answer(Typed(VT_I4, static_cast<LONG>(0x80004005u)));
    EXPECT_EQ(Get<long>(VT_I4), static_cast<LONG>(0x80004005u)) << "sign-extended";
    EXPECT_LT(Get<long>(VT_I4), 0);
    Answer(COleVariant(1.5f));
    EXPECT_EQ(Get<float>(VT_R4), 1.5f);
    Answer(COleVariant(2.5));
    EXPECT_EQ(Get<double>(VT_R8), 2.5);
    Answer(COleVariant(COleCurrency(12, 7500)));
    EXPECT_EQ(Get<CY>(VT_CY).int64, 127500);
    Answer(COleVariant(COleDateTime(37806.5)));
    EXPECT_EQ(Get<DATE>(VT_DATE), 37806.5);
    Answer(Typed(VT_ERROR, DISP_E_BADINDEX));
    EXPECT_EQ(Get<SCODE>(VT_ERROR), DISP_E_BADINDEX);
    Answer(Typed(VT_UI1, 200));
    EXPECT_EQ(Get<BYTE>(VT_UI1), 200);
    Answer(Typed(VT_I8, -5000000000LL));
    EXPECT_EQ(Get<long long>(VT_I8), -5000000000LL);
}

TEST_F(InvokeResult, OverwritesTheWholeTarget) {
    Answer(Typed(VT_I4, -1));
    long target = 0x12345678;
    driver.InvokeHelper(0, DISPATCH_PROPERTYGET, VT_I4, &target, NULL);
    EXPECT_EQ(target, -1L);
    Answer(Typed(VT_BOOL, VARIANT_TRUE));
    int flag = 0x12345678;
    driver.InvokeHelper(0, DISPATCH_PROPERTYGET, VT_BOOL, &flag, NULL);
    EXPECT_EQ(flag, 1);
    Answer(Typed(VT_BOOL, VARIANT_FALSE));
    driver.InvokeHelper(0, DISPATCH_PROPERTYGET, VT_BOOL, &flag, NULL);
    EXPECT_EQ(flag, 0);
}

TEST_F(InvokeResult, IsATextInCodePage936) {
    Answer(COleVariant("库存"));
    CString text("old");
    driver.InvokeHelper(0, DISPATCH_PROPERTYGET, VT_BSTR, &text, NULL);
    EXPECT_STREQ(text, "库存");
    VARIANT empty;
    empty.vt = VT_BSTR;
    empty.bstrVal = nullptr;
    Answer(empty);
    driver.InvokeHelper(0, DISPATCH_PROPERTYGET, VT_BSTR, &text, NULL);
    EXPECT_STREQ(text, "");
}

TEST_F(InvokeResult, HandsObjectsToTheCaller) {
    RecordingDispatch other;
    VARTYPE type = VT_DISPATCH;
    object.answer = [&](DISPPARAMS*, VARIANT* result, EXCEPINFO*) {
        other.AddRef();
        result->vt = type;
        result->pdispVal = &other;
        return S_OK;
    };
    EXPECT_EQ(Get<IDispatch*>(VT_DISPATCH), &other);
    EXPECT_EQ(other.references, 2);
    type = VT_UNKNOWN;
    EXPECT_EQ(Get<IUnknown*>(VT_UNKNOWN), &other);
    EXPECT_EQ(other.references, 3);
    Answer(Typed(VT_DISPATCH, 0));
    EXPECT_EQ(Get<IDispatch*>(VT_DISPATCH), nullptr);
}

TEST_F(InvokeResult, MayBeAVariantOfAnyType) {
    Answer(COleVariant("text"));
    VARIANT result;
    result.vt = VT_BSTR;  // what is there is overwritten, not freed
    result.bstrVal = reinterpret_cast<BSTR>(1);
    driver.InvokeHelper(0, DISPATCH_PROPERTYGET, VT_VARIANT, &result, NULL);
    EXPECT_EQ(result.vt, VT_BSTR);
    EXPECT_EQ(SysStringLen(result.bstrVal), 4u);
    VariantClear(&result);
    Answer(Typed(VT_NULL, 0));
    driver.InvokeHelper(0, DISPATCH_PROPERTYGET, VT_VARIANT, &result, NULL);
    EXPECT_EQ(result.vt, VT_NULL);
}

TEST_F(InvokeResult, IsConvertedWhenItsTypeDiffers) {
    Answer(Typed(VT_I2, 7));
    EXPECT_EQ(Get<long>(VT_I4), 7);
    EXPECT_EQ(Get<double>(VT_R8), 7.0);
    EXPECT_EQ(Get<int>(VT_BOOL), 1);
    EXPECT_STREQ(Get<CString>(VT_BSTR), "7");
    Answer(COleVariant("42"));
    EXPECT_EQ(Get<long>(VT_I4), 42);
    Answer(COleVariant());
    EXPECT_EQ(Get<long>(VT_I4), 0);
    EXPECT_STREQ(Get<CString>(VT_BSTR), "");
}

TEST_F(InvokeResult, ThatCannotBeConvertedRaises) {
    Answer(COleVariant("no number"));
    EXPECT_EQ(RaisedCode([&] { Get<long>(VT_I4); }), DISP_E_TYPEMISMATCH);
    Answer(Typed(VT_NULL, 0));
    EXPECT_EQ(RaisedCode([&] { Get<CString>(VT_BSTR); }), DISP_E_TYPEMISMATCH);
    Answer(COleVariant(1e10));
    EXPECT_EQ(RaisedCode([&] { Get<long>(VT_I4); }), DISP_E_OVERFLOW);
    Answer(Typed(VT_UI2, 1));
    EXPECT_EQ(RaisedCode([&] { Get<long>(VT_UI2); }), DISP_E_BADVARTYPE) << "no type a caller can ask for";
}

TEST_F(InvokeResult, ThatNobodyWantsIsFreed) {
    RecordingDispatch other;
    other.answer = [](DISPPARAMS*, VARIANT*, EXCEPINFO*) { return DISP_E_MEMBERNOTFOUND; };
    object.answer = [&other](DISPPARAMS*, VARIANT* result, EXCEPINFO*) {
        other.AddRef();
        result->vt = VT_DISPATCH;
        result->pdispVal = &other;
        return S_OK;
    };
    driver.InvokeHelper(0, DISPATCH_PROPERTYGET, VT_DISPATCH, NULL, NULL);
    EXPECT_EQ(other.references, 1);
    EXPECT_TRUE(FAILED(RaisedCode([&] { Get<long>(VT_I4); }))) << "an object without a value";
    EXPECT_EQ(other.references, 1);
    object.answer = nullptr;
    driver.InvokeHelper(0, DISPATCH_METHOD, VT_EMPTY, NULL, NULL);
    EXPECT_FALSE(object.calls.back().wantsResult);
}

TEST_F(InvokeResult, OfGetPropertyIsTheSame) {
    Answer(Typed(VT_I4, 30));
    long seconds = 0;
    driver.GetProperty(2, VT_I4, &seconds);
    EXPECT_EQ(seconds, 30);
    EXPECT_EQ(object.calls.back().id, 2);
    EXPECT_EQ(object.calls.back().kind, DISPATCH_PROPERTYGET);
}

}  // namespace
