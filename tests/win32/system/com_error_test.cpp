#include <comdef.h>

#include "tests/win32/system/support.h"

namespace {

class Info : public IErrorInfo {
public:
    virtual ~Info() = default;
    HRESULT QueryInterface(REFIID, void** ppvObject) override {
        *ppvObject = nullptr;
        return E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }
    HRESULT GetGUID(GUID*) override { return E_NOTIMPL; }
    HRESULT GetSource(BSTR* pBstrSource) override { return Give(u"ADODB.Connection", pBstrSource); }
    HRESULT GetDescription(BSTR* pBstrDescription) override { return Give(u"表不存在", pBstrDescription); }
    HRESULT GetHelpFile(BSTR* pBstrHelpFile) override {
        *pBstrHelpFile = nullptr;
        return E_FAIL;
    }
    HRESULT GetHelpContext(DWORD* pdwHelpContext) override {
        *pdwHelpContext = 1240641;
        return S_OK;
    }

    ULONG references = 1;

private:
    static HRESULT Give(const OLECHAR* text, BSTR* target) {
        *target = SysAllocString(text);
        return S_OK;
    }
};

}  // namespace

TEST(ComError, SaysTheSystemsTextOrItsOwn) {
    static const struct {
        unsigned code;
        const char* message;
    } kRows[] = {
        {0x80040154, "没有注册类"},
        {0x80004005, "未指定的错误"},
        {0x80070005, "拒绝访问。"},
        {0x800401F0, "尚未调用 CoInitialize。"},
        {0x80040200, "IDispatch error #0"},
        {0x80040202, "IDispatch error #2"},
        {0x80040E14, "IDispatch error #3092"},
        {0x8004FFFF, "IDispatch error #65023"},
        {0x80050000, "Unknown error 0x80050000"},
        {0x800A0BB9, "Unknown error 0x800A0BB9"},
        {0x00000000, "操作成功完成。"},
        {0x0000270E, "Unknown error 0x270E"},
    };
    for (const auto& row : kRows) {
        const _com_error error(static_cast<HRESULT>(row.code));
        EXPECT_STREQ(error.ErrorMessage(), row.message);
        EXPECT_STREQ(error.ErrorMessage(), row.message) << "asked again";
    }
}

TEST(ComError, TurnsOwnCodesIntoNumbersAndBack) {
    EXPECT_EQ(_com_error(static_cast<HRESULT>(0x80040201)).WCode(), 1);
    EXPECT_EQ(_com_error(static_cast<HRESULT>(0x8004FFFF)).WCode(), 0xFDFF);
    EXPECT_EQ(_com_error(E_FAIL).WCode(), 0);
    EXPECT_EQ(_com_error::WCodeToHRESULT(1), static_cast<HRESULT>(0x80040201));
    EXPECT_EQ(_com_error::WCodeToHRESULT(0xFE00), static_cast<HRESULT>(0x8004FFFF));
}

TEST(ComError, TellsWhatTheComponentSaid) {
    Info info;
    {
        const _com_error error(E_FAIL, &info, true);
        EXPECT_EQ(info.references, 2u);
        EXPECT_STREQ(error.Description(), "表不存在");
        EXPECT_STREQ(error.Source(), "ADODB.Connection");
        EXPECT_TRUE(!error.HelpFile());
        EXPECT_EQ(error.HelpContext(), 1240641u);
        _com_error copy(E_ABORT);
        EXPECT_TRUE(!copy.Description());
        EXPECT_EQ(copy.ErrorInfo(), nullptr);
        copy = error;
        EXPECT_EQ(copy.Error(), E_FAIL);
        EXPECT_EQ(info.references, 3u);
        IErrorInfo* handed = copy.ErrorInfo();
        EXPECT_EQ(handed, &info);
        handed->Release();
    }
    EXPECT_EQ(info.references, 1u);
}

TEST(ComError, IsThrownAndCaughtAcrossLibraries) {
    try {
        _com_util::CheckError(E_ACCESSDENIED);
        FAIL() << "not thrown";
    } catch (const _com_error& error) {
        EXPECT_EQ(error.Error(), E_ACCESSDENIED);
    }
    EXPECT_NO_THROW(_com_util::CheckError(S_FALSE));
    Info info;
    EXPECT_THROW(_com_raise_error(E_FAIL, &info), _com_error);
    EXPECT_EQ(info.references, 0u) << "taken over";
}

TEST(BstrText, OwnsItsTextAndSaysItInGbk) {
    _bstr_t text("订单 2003");
    EXPECT_EQ(std::u16string(text.GetBSTR()), u"订单 2003");
    EXPECT_EQ(text.length(), 7u);
    EXPECT_STREQ(text, "订单 2003");
    const _bstr_t copy = text;
    EXPECT_TRUE(copy == text);
    EXPECT_NE(copy.GetBSTR(), text.GetBSTR());
    const _bstr_t moved = std::move(text);
    EXPECT_TRUE(!text);
    EXPECT_TRUE(moved == copy);
    EXPECT_TRUE(!_bstr_t());
    EXPECT_TRUE(_bstr_t() == _bstr_t(u""));
    BSTR taken = _bstr_t(u"abc").Detach();
    const _bstr_t adopted(taken, false);
    EXPECT_EQ(adopted.GetBSTR(), taken);
    const _bstr_t copied(taken, true);
    EXPECT_NE(copied.GetBSTR(), taken);
    EXPECT_TRUE(copied == adopted);
}
