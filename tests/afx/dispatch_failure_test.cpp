#include <afxdisp.h>
#include <gtest/gtest.h>

#include "afx/raises.h"
#include "afx/recording_dispatch.h"

namespace {

class InvokeFailure : public ::testing::Test {
protected:
    RecordingDispatch object;
    COleDispatchDriver driver{&object, FALSE};

    void Call() {
        static const BYTE parms[] = VTS_BSTR VTS_WBSTR VTS_I4;
        CString result;
        driver.InvokeHelper(1, DISPATCH_METHOD, VT_BSTR, &result, parms, "a text to be freed", OLESTR("another"), 1L);
    }
};

TEST_F(InvokeFailure, CarriesTheCode) {
    for (SCODE code : {DISP_E_MEMBERNOTFOUND, DISP_E_TYPEMISMATCH, E_FAIL, E_OUTOFMEMORY, E_NOTIMPL}) {
        object.answer = [code](DISPPARAMS*, VARIANT*, EXCEPINFO*) { return code; };
        EXPECT_EQ(RaisedCode([&] { Call(); }), code);
    }
}

TEST_F(InvokeFailure, CarriesWhatTheServerTells) {
    object.answer = [](DISPPARAMS*, VARIANT*, EXCEPINFO* info) {
        info->wCode = 0;
        info->scode = static_cast<SCODE>(0x800A0E78u);
        info->bstrSource = SysAllocString(OLESTR("ADODB.Recordset"));
        info->bstrDescription = SysAllocString(OLESTR("\u5BF9\u8C61\u5173\u95ED"));
        info->bstrHelpFile = SysAllocString(OLESTR("ADO.CHM"));
        info->dwHelpContext = 1240653;
        return DISP_E_EXCEPTION;
    };
    try {
        Call();
        FAIL() << "nothing raised";
    } catch (COleDispatchException* e) {
        EXPECT_EQ(e->m_wCode, 0);
        EXPECT_EQ(e->m_scError, static_cast<SCODE>(0x800A0E78u));
        EXPECT_STREQ(e->m_strSource, "ADODB.Recordset");
        EXPECT_STREQ(e->m_strDescription, "对象关闭");
        EXPECT_STREQ(e->m_strHelpFile, "ADO.CHM");
        EXPECT_EQ(e->m_dwHelpContext, 1240653u);
        char text[256];
        UINT help = 0;
        EXPECT_TRUE(e->GetErrorMessage(text, sizeof(text), &help));
        EXPECT_STREQ(text, "对象关闭");
        EXPECT_EQ(help, 1240653u);
        e->Delete();
    }
}

TEST_F(InvokeFailure, MayTellNothing) {
    object.answer = [](DISPPARAMS*, VARIANT*, EXCEPINFO* info) {
        info->wCode = 1004;
        return DISP_E_EXCEPTION;
    };
    try {
        Call();
        FAIL() << "nothing raised";
    } catch (COleDispatchException* e) {
        EXPECT_EQ(e->m_wCode, 1004);
        EXPECT_STREQ(e->m_strDescription, "");
        EXPECT_STREQ(e->m_strSource, "");
        e->Delete();
    }
}

HRESULT STDAPICALLTYPE FillInLate(EXCEPINFO* info) {
    info->bstrDescription = SysAllocString(OLESTR("late"));
    info->scode = E_ABORT;
    return S_OK;
}

TEST_F(InvokeFailure, AsksForTextsThatWereDeferred) {
    object.answer = [](DISPPARAMS*, VARIANT*, EXCEPINFO* info) {
        info->pfnDeferredFillIn = FillInLate;
        return DISP_E_EXCEPTION;
    };
    try {
        Call();
        FAIL() << "nothing raised";
    } catch (COleDispatchException* e) {
        EXPECT_STREQ(e->m_strDescription, "late");
        EXPECT_EQ(e->m_scError, E_ABORT);
        e->Delete();
    }
}

TEST_F(InvokeFailure, LeavesTheTargetAndFreesWhatTheServerLeft) {
    RecordingDispatch other;
    object.answer = [&other](DISPPARAMS*, VARIANT* result, EXCEPINFO* info) {
        // A careless server: a result and a text beside a failure.
        other.AddRef();
        result->vt = VT_DISPATCH;
        result->pdispVal = &other;
        info->bstrDescription = SysAllocString(OLESTR("nobody reads this"));
        return E_FAIL;
    };
    IDispatch* target = reinterpret_cast<IDispatch*>(0x55);
    EXPECT_EQ(RaisedCode([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_DISPATCH, &target, NULL); }), E_FAIL);
    EXPECT_EQ(target, reinterpret_cast<IDispatch*>(0x55));
    EXPECT_EQ(other.references, 1);
}

TEST_F(InvokeFailure, LeavesReferencedLongsAlone) {
    static const BYTE parms[] = VTS_PI4;
    object.answer = [](DISPPARAMS* parameters, VARIANT*, EXCEPINFO*) {
        *parameters->rgvarg[0].plVal = 99;
        return E_FAIL;
    };
    long value = 5;
    EXPECT_EQ(RaisedCode([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, &value); }), E_FAIL);
    EXPECT_EQ(value, 5);
}

TEST_F(InvokeFailure, FreesTheArgumentsWhenTheServerThrows) {
    object.answer = [](DISPPARAMS*, VARIANT*, EXCEPINFO*) -> HRESULT { throw 5; };
    EXPECT_THROW(Call(), int);
}

TEST_F(InvokeFailure, WithoutAnObjectIsAPointerError) {
    COleDispatchDriver none;
    long value = 0;
    static const BYTE parms[] = VTS_BSTR;
    EXPECT_EQ(RaisedCode([&] { none.InvokeHelper(1, DISPATCH_PROPERTYGET, VT_I4, &value, NULL); }), E_POINTER);
    EXPECT_EQ(RaisedCode([&] { none.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, NULL, parms, "x"); }), E_POINTER);
    EXPECT_EQ(RaisedCode([&] { none.GetProperty(1, VT_I4, &value); }), E_POINTER);
    EXPECT_EQ(RaisedCode([&] { none.SetProperty(1, VT_I4, 1L); }), E_POINTER);
}

}  // namespace
