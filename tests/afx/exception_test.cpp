#include <afxole.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "afx/raises.h"

namespace {

// What an exception says into a buffer of a given size, and what it answers.
struct Said {
    std::string text;
    BOOL answered;
};

Said Say(CException& exception, UINT room) {
    std::vector<char> buffer(room + 1, '#');
    const BOOL answered = exception.GetErrorMessage(buffer.data(), room);
    EXPECT_EQ(buffer[room], '#') << "nothing is written behind the buffer";
    return {room == 0 ? "" : buffer.data(), answered};
}

TEST(Exceptions, ThatAreFixedSayTheirText) {
    static const struct {
        void (*raise)();
        const char* name;
        const char* text;
    } kRows[] = {
        {AfxThrowMemoryException, "CMemoryException", "内存不足。"},
        {AfxThrowNotSupportedException, "CNotSupportedException", "试图执行系统不支持的操作。"},
        {AfxThrowInvalidArgException, "CInvalidArgException", "遇到不适当的参数。"},
        {AfxThrowResourceException, "CResourceException", "找不到所需的资源。"},
        {AfxThrowUserException, "CUserException", "操作已取消。"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        try {
            row.raise();
            ADD_FAILURE() << "nothing raised";
        } catch (CSimpleException* e) {
            EXPECT_STREQ(e->GetRuntimeClass()->m_lpszClassName, row.name);
            EXPECT_EQ(Say(*e, 256).text, row.text);
            EXPECT_TRUE(Say(*e, 256).answered);
            UINT help = 7;
            char buffer[8];
            e->GetErrorMessage(buffer, sizeof(buffer), &help);
            EXPECT_EQ(help, 0u);
            e->Delete();
        }
    }
}

TEST(Exceptions, AreCutBetweenCharacters) {
    try {
        AfxThrowMemoryException();
    } catch (CException* e) {
        EXPECT_EQ(Say(*e, 11).text, "内存不足。");
        EXPECT_EQ(Say(*e, 10).text, "内存不足");
        EXPECT_EQ(Say(*e, 6).text, "内存");
        EXPECT_EQ(Say(*e, 5).text, "内存");
        EXPECT_EQ(Say(*e, 4).text, "内");
        EXPECT_EQ(Say(*e, 2).text, "");
        EXPECT_EQ(Say(*e, 1).text, "");
        EXPECT_FALSE(Say(*e, 1).answered);
        EXPECT_FALSE(Say(*e, 0).answered);
        EXPECT_FALSE(e->GetErrorMessage(nullptr, 0));
        EXPECT_FALSE(e->GetErrorMessage(nullptr, 100));
        e->Delete();
    }
}

TEST(Exceptions, MadeByTheProgramAreDeleted) {
    auto* const exception = new CMemoryException;
    EXPECT_EQ(Say(*exception, 100).text, "内存不足。");
    exception->Delete();
}

TEST(OleException, SaysTheSystemsText) {
    COleException exception;
    exception.m_sc = E_OUTOFMEMORY;
    const Said said = Say(exception, 256);
    EXPECT_TRUE(said.answered);
    ASSERT_GT(said.text.size(), 2u);
    EXPECT_EQ(said.text.substr(said.text.size() - 2), "\r\n");
    char buffer[256];
    ASSERT_GT(FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, static_cast<DWORD>(E_OUTOFMEMORY), 0, buffer,
                             sizeof(buffer), nullptr),
              0u);
    EXPECT_EQ(said.text, buffer);
    EXPECT_LT(Say(exception, 4).text.size(), 4u);
}

TEST(OleException, HasNoTextForACodeTheSystemDoesNotKnow) {
    COleException exception;
    exception.m_sc = static_cast<SCODE>(0x8ABC1234u);
    EXPECT_FALSE(Say(exception, 256).answered);
    EXPECT_EQ(Say(exception, 256).text, "");
}

TEST(OleException, IsRaisedWithItsCode) {
    EXPECT_EQ(RaisedCode([] { AfxThrowOleException(DISP_E_BADINDEX); }), DISP_E_BADINDEX);
}

TEST(OleException, StandsForOtherExceptions) {
    COleException ole;
    ole.m_sc = DISP_E_OVERFLOW;
    CMemoryException memory(FALSE);
    CNotSupportedException unsupported(FALSE);
    CInvalidArgException argument(FALSE);
    CUserException user(FALSE);
    EXPECT_EQ(COleException::Process(&ole), DISP_E_OVERFLOW);
    EXPECT_EQ(COleException::Process(&memory), E_OUTOFMEMORY);
    EXPECT_EQ(COleException::Process(&unsupported), E_NOTIMPL);
    EXPECT_EQ(COleException::Process(&argument), E_INVALIDARG);
    EXPECT_EQ(COleException::Process(&user), E_UNEXPECTED);
    EXPECT_EQ(COleException::Process(nullptr), E_UNEXPECTED);
}

TEST(OleDispatchException, SaysItsDescriptionCutBetweenCharacters) {
    COleDispatchException exception("对象关闭时，不允许操作。", 42, 3704);
    EXPECT_EQ(exception.m_wCode, 3704);
    EXPECT_EQ(Say(exception, 256).text, "对象关闭时，不允许操作。");
    EXPECT_EQ(Say(exception, 6).text, "对象");
    EXPECT_EQ(Say(exception, 5).text, "对象");
    UINT help = 0;
    char buffer[100];
    EXPECT_TRUE(exception.GetErrorMessage(buffer, sizeof(buffer), &help));
    EXPECT_EQ(help, 42u);
    COleDispatchException silent;
    EXPECT_FALSE(Say(silent, 256).answered);
    EXPECT_EQ(Say(silent, 256).text, "");
}

TEST(OleDispatchException, IsNoOleException) {
    EXPECT_EQ(Raised([] { AfxThrowOleDispatchException(1, "x"); }), "COleDispatchException");
    EXPECT_EQ(RaisedCode([] { AfxThrowOleDispatchException(1, "x"); }), S_FALSE);
    COleDispatchException exception;
    EXPECT_TRUE(exception.IsKindOf(RUNTIME_CLASS(CException)));
    EXPECT_FALSE(exception.IsKindOf(RUNTIME_CLASS(COleException)));
}

CString Taken(BSTR text) {
    const CString copy(text, static_cast<int>(SysStringLen(text)));
    SysFreeString(text);
    return copy;
}

TEST(OleDispatchException, DescribesExceptionsForACaller) {
    COleDispatchException described("坏了", 5, 9);
    described.m_strSource = "server";
    described.m_strHelpFile = "help.chm";
    EXCEPINFO info;
    COleDispatchException::Process(&info, &described);
    EXPECT_EQ(info.wCode, 9);
    EXPECT_EQ(info.scode, S_OK);
    EXPECT_EQ(info.dwHelpContext, 5u);
    EXPECT_STREQ(Taken(info.bstrDescription), "坏了");
    EXPECT_STREQ(Taken(info.bstrSource), "server");
    EXPECT_STREQ(Taken(info.bstrHelpFile), "help.chm");

    CMemoryException memory(FALSE);
    COleDispatchException::Process(&info, &memory);
    EXPECT_EQ(info.scode, E_OUTOFMEMORY);
    EXPECT_STREQ(Taken(info.bstrDescription), "内存不足。");
    EXPECT_EQ(info.bstrSource, nullptr);
}

/// An exception of an application's with its own idea of the buffer.
class OwnException : public CException {
public:
    explicit OwnException(std::string repeated) : CException(FALSE), repeated_(std::move(repeated)) {}
    ~OwnException() override {}
    BOOL GetErrorMessage(LPTSTR text, UINT size, PUINT) override {
        for (UINT i = 0; i < size && !repeated_.empty(); ++i)
            text[i] = repeated_[i % repeated_.size()];  // to the brim, without a terminator
        return FALSE;
    }

private:
    const std::string repeated_;
};

TEST(OleDispatchException, BoundsWhatAnExceptionWrites) {
    std::string characters;
    for (int i = 0; i < 127; ++i)
        characters += "库";
    const struct {
        const char* label;
        std::string repeated;
        std::string description;
    } kRows[] = {
        {"nothing", "", ""},
        {"letters", "x", std::string(255, 'x')},
        {"characters of two bytes", "库", characters},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        OwnException exception(row.repeated);
        EXCEPINFO info;
        COleDispatchException::Process(&info, &exception);
        EXPECT_STREQ(Taken(info.bstrDescription), row.description.c_str());
    }
}

TEST(Exceptions, WithoutATextAnswerFalse) {
    class Silent : public CException {
    public:
        Silent() : CException(FALSE) {}
        ~Silent() override {}
    } silent;
    EXPECT_FALSE(Say(silent, 10).answered);
    EXPECT_EQ(Say(silent, 10).text, "");
}

}  // namespace
