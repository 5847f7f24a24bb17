// Arguments by position, and the error a call leaves behind.
#include <thread>

#include "tests/win32/automation/values.h"

namespace tk::test {
namespace {

TEST(DispGetParam, CountsFromTheFirstArgumentOfTheCall) {
    VARIANTARG arguments[3];  // last first
    for (int i = 0; i < 3; ++i) {
        arguments[i].vt = VT_I4;
        arguments[i].lVal = 30 - i * 10;
    }
    DISPPARAMS call{arguments, nullptr, 3, 0};
    Value result;
    UINT bad = 99;
    EXPECT_EQ(DispGetParam(&call, 0, VT_I2, &result, &bad), S_OK);
    EXPECT_EQ(Describe(result.Get()), "I2 10");
    EXPECT_EQ(DispGetParam(&call, 2, VT_BSTR, &result, &bad), S_OK);
    EXPECT_EQ(Describe(result.Get()), "BSTR 30");
    EXPECT_EQ(bad, 99u);
    EXPECT_EQ(DispGetParam(&call, 3, VT_I4, &result, &bad), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(bad, 3u);
}

TEST(DispGetParam, FindsNamedArguments) {
    VARIANTARG arguments[3];
    DISPID names[] = {2, 1};
    for (int i = 0; i < 3; ++i) {
        arguments[i].vt = VT_I4;
        arguments[i].lVal = i;
    }
    DISPPARAMS call{arguments, names, 3, 2};
    Value result;
    EXPECT_EQ(DispGetParam(&call, 0, VT_I4, &result, nullptr), S_OK);
    EXPECT_EQ(Describe(result.Get()), "I4 2");
    EXPECT_EQ(DispGetParam(&call, 1, VT_I4, &result, nullptr), S_OK);
    EXPECT_EQ(Describe(result.Get()), "I4 1");
    EXPECT_EQ(DispGetParam(&call, 2, VT_I4, &result, nullptr), S_OK);
    EXPECT_EQ(Describe(result.Get()), "I4 0");
}

TEST(DispGetParam, NamesTheArgumentThatDoesNotFit) {
    Value text = Text(u"no number");
    VARIANTARG arguments[2];
    arguments[0].vt = VT_I4;
    arguments[0].lVal = 1;
    arguments[1] = text.Get();
    DISPPARAMS call{arguments, nullptr, 2, 0};
    Value result;
    UINT bad = 99;
    EXPECT_EQ(DispGetParam(&call, 0, VT_I4, &result, &bad), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(bad, 1u);
    EXPECT_EQ(result.Type(), VT_EMPTY);
    EXPECT_EQ(DispGetParam(nullptr, 0, VT_I4, &result, &bad), E_INVALIDARG);
    DISPPARAMS broken{nullptr, nullptr, 1, 0};
    EXPECT_EQ(DispGetParam(&broken, 0, VT_I4, &result, &bad), E_INVALIDARG);
}

TEST(SetErrorInfo, IsHandedOutOnceOnItsThread) {
    ICreateErrorInfo* maker = nullptr;
    ASSERT_EQ(CreateErrorInfo(&maker), S_OK);
    OLECHAR description[] = u"出错";
    EXPECT_EQ(maker->SetDescription(description), S_OK);
    EXPECT_EQ(maker->SetHelpContext(7), S_OK);
    EXPECT_EQ(maker->SetGUID(IID_IDispatch), S_OK);
    IErrorInfo* info = nullptr;
    ASSERT_EQ(maker->QueryInterface(IID_IErrorInfo, &info), S_OK);
    EXPECT_EQ(SetErrorInfo(0, info), S_OK);
    info->Release();
    maker->Release();
    std::thread other([] {
        IErrorInfo* none = nullptr;
        EXPECT_EQ(GetErrorInfo(0, &none), S_FALSE);
        EXPECT_EQ(none, nullptr);
    });
    other.join();
    IErrorInfo* taken = nullptr;
    ASSERT_EQ(GetErrorInfo(0, &taken), S_OK);
    BSTR text = nullptr;
    EXPECT_EQ(taken->GetDescription(&text), S_OK);
    EXPECT_EQ(std::u16string_view(text), u"出错");
    SysFreeString(text);
    EXPECT_EQ(taken->GetSource(&text), S_OK);
    EXPECT_EQ(text, nullptr);
    DWORD context = 0;
    EXPECT_EQ(taken->GetHelpContext(&context), S_OK);
    EXPECT_EQ(context, 7u);
    GUID guid{};
    EXPECT_EQ(taken->GetGUID(&guid), S_OK);
    EXPECT_TRUE(guid == IID_IDispatch);
    void* unknown = nullptr;
    EXPECT_EQ(taken->QueryInterface(IID_IDispatch, &unknown), E_NOINTERFACE);
    taken->Release();
    EXPECT_EQ(GetErrorInfo(0, &taken), S_FALSE);
    EXPECT_EQ(GetErrorInfo(1, &taken), E_INVALIDARG);
    EXPECT_EQ(SetErrorInfo(1, nullptr), E_INVALIDARG);
}

TEST(SetErrorInfo, IsReleasedWithItsThread) {
    // The leak checker has the last word here.
    std::thread thread([] {
        ICreateErrorInfo* maker = nullptr;
        ASSERT_EQ(CreateErrorInfo(&maker), S_OK);
        IErrorInfo* info = nullptr;
        ASSERT_EQ(maker->QueryInterface(IID_IErrorInfo, &info), S_OK);
        EXPECT_EQ(SetErrorInfo(0, info), S_OK);
        info->Release();
        EXPECT_EQ(maker->Release(), 1u);
    });
    thread.join();
}

}  // namespace
}  // namespace tk::test
