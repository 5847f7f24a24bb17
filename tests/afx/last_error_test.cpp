// The framework classes convert and describe without leaving a code in the thread's last error.
#include <afxdisp.h>
#include <gtest/gtest.h>

#include <string>

#include "afx/raises.h"
#include "afx/recording_dispatch.h"

namespace {

constexpr DWORD kBefore = 0x2ABCDEF0;  // no function of the platform sets it
constexpr SCODE kUnknownCode = 0x2FFFFFFF;

using Wide = std::basic_string<OLECHAR>;

Wide Chinese(std::size_t length) {
    return Wide(length, OLECHAR(0x5E93));
}

CString NarrowChinese(int length) {
    CString text;
    for (int i = 0; i < length; ++i)
        text += "\xBF\xE2";
    return text;
}

template <class... Arguments>
CString Formatted(const char* format, Arguments... arguments) {
    CString text;
    text.Format(format, arguments...);
    return text;
}

Wide Taken(BSTR text) {
    Wide copy(text, SysStringLen(text));
    SysFreeString(text);
    return copy;
}

class LastError : public ::testing::Test {
protected:
    void SetUp() override { SetLastError(kBefore); }
};

TEST_F(LastError, OfTheThreadIsKeptByTextsOfEveryLengthMadeFromWideOnes) {
    struct Mixture {
        const char* label;
        Wide unit;
        std::string bytes;
    };
    const Mixture kMixtures[] = {
        {"plain", OLESTR("a"), "a"},
        {"Chinese", OLESTR("\u5E93"), "\xBF\xE2"},
        {"both, by turns", OLESTR("a\u5E93"), "a\xBF\xE2"},
        {"what the code page cannot say", OLESTR("\u0E01"), "?"},
        {"two units for one character", OLESTR("\xD83D\xDE00"), "??"},
        {"half a character", OLESTR("\xD83D"), "?"},
    };
    for (const Mixture& mixture : kMixtures) {
        SCOPED_TRACE(mixture.label);
        Wide wide;
        std::string bytes;
        for (int length = 0; length < 1100; ++length) {
            const CString text(wide.c_str());
            ASSERT_EQ(GetLastError(), kBefore) << length;
            ASSERT_EQ(std::string(text), bytes) << length;
            wide += mixture.unit;
            bytes += mixture.bytes;
        }
    }
}

TEST_F(LastError, OfTheThreadIsKeptByATextThatTurnsWideNearItsEnd) {
    for (const std::size_t plain : {9, 10, 18, 19, 20, 511, 512, 513, 1023, 1024, 1025, 5000, 70000}) {
        SCOPED_TRACE(plain);
        const Wide wide = Wide(plain, OLECHAR('a')) + Chinese(3);
        const CString text(wide.c_str(), static_cast<int>(wide.size()));
        EXPECT_EQ(GetLastError(), kBefore);
        EXPECT_EQ(std::string(text), std::string(plain, 'a') + "\xBF\xE2\xBF\xE2\xBF\xE2");
    }
}

TEST_F(LastError, OfTheThreadIsKeptByLongTextsOfCharactersOfTwoUnits) {
    for (std::size_t plain = 0; plain < 4; ++plain) {
        SCOPED_TRACE(plain);
        Wide wide(plain, OLECHAR('a'));
        for (int i = 0; i < 5000; ++i)
            wide += OLESTR("\xD83D\xDE00");
        EXPECT_EQ(std::string(CString(wide.c_str())), std::string(plain, 'a') + std::string(10000, '?'));
        EXPECT_EQ(GetLastError(), kBefore);
    }
}

TEST_F(LastError, OfTheThreadIsKeptByConversions) {
    static const struct {
        const char* label;
        void (*convert)();
    } kRows[] = {
        {"a wide text over a short one",
         [] {
             CString text("old");
             text = Chinese(20).c_str();
             EXPECT_EQ(text, NarrowChinese(20));
         }},
        {"a wide text over one that has room",
         [] {
             CString text('x', 4000);
             text = Chinese(1000).c_str();
             EXPECT_EQ(text, NarrowChinese(1000));
         }},
        {"wide text in a format",
         [] {
             EXPECT_EQ(Formatted("%S", Chinese(20).c_str()), NarrowChinese(20));
             EXPECT_EQ(Formatted("%ls", Chinese(600).c_str()), NarrowChinese(600));
         }},
        {"a BSTR of a text",
         [] {
             for (const int length : {0, 1, 20, 255, 256, 257, 10000}) {
                 EXPECT_EQ(Taken(NarrowChinese(length).AllocSysString()), Chinese(static_cast<std::size_t>(length)));
             }
         }},
        {"a BSTR of bytes that are no text",
         [] {
             EXPECT_EQ(Taken(CString("a\xBF").AllocSysString()), OLESTR("a?"));
             EXPECT_EQ(Taken((CString('x', 600) + "\xBF").AllocSysString()).size(), 601u);
         }},
        {"a BSTR replaced",
         [] {
             BSTR text = SysAllocString(OLESTR("old"));
             NarrowChinese(400).SetSysString(&text);
             EXPECT_EQ(Taken(text), Chinese(400));
         }},
        {"an automation value of a text",
         [] {
             const COleVariant value(NarrowChinese(300), VT_BSTR);
             EXPECT_EQ(CString(V_BSTR(&value)), NarrowChinese(300));
         }},
        {"an automation value of another type",
         [] {
             COleVariant value(12.5);
             value.ChangeType(VT_BSTR);
             EXPECT_STREQ(CString(V_BSTR(&value)), "12.5");
         }},
        {"an automation value that does not change its type",
         [] {
             COleVariant value(NarrowChinese(30), VT_BSTR);
             EXPECT_EQ(RaisedCode([&] { value.ChangeType(VT_I4); }), DISP_E_TYPEMISMATCH);
         }},
        {"a date",
         [] {
             COleDateTime date;
             EXPECT_TRUE(date.ParseDateTime("2020-02-29 13:45:06"));
             EXPECT_STREQ(date.Format("%Y"), "2020");
             EXPECT_FALSE(date.ParseDateTime(NarrowChinese(30)));
         }},
        {"an amount",
         [] {
             COleCurrency amount;
             EXPECT_TRUE(amount.ParseCurrency("12.5"));
             EXPECT_STREQ(amount.Format(), "12.5");
             EXPECT_FALSE(amount.ParseCurrency(NarrowChinese(30)));
         }},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetLastError(kBefore);
        row.convert();
        EXPECT_EQ(GetLastError(), kBefore);
    }
}

TEST_F(LastError, OfTheThreadIsKeptByLetterCase) {
    // Every two bytes that may be a character, those that the code page has left open among them.
    for (int lead = 0x81; lead <= 0xFF; ++lead) {
        CString row;
        for (int trail = 0x40; trail <= 0xFF; ++trail) {
            const char pair[] = {static_cast<char>(lead), static_cast<char>(trail), '\0'};
            row += pair;
        }
        CString capitals(row);
        capitals.MakeUpper();
        CString small(row);
        small.MakeLower();
        EXPECT_EQ(capitals.GetLength(), row.GetLength());
        EXPECT_EQ(small.CompareNoCase(capitals), 0);
        EXPECT_NE(small.Collate(""), 0);
        ASSERT_EQ(GetLastError(), kBefore) << "lead byte " << lead;
    }
}

TEST_F(LastError, OfTheThreadIsKeptByTheTextsOfExceptions) {
    const SCODE kCodes[] = {S_OK,        E_FAIL, E_OUTOFMEMORY, DISP_E_TYPEMISMATCH, static_cast<SCODE>(0x80040E14),
                            kUnknownCode};
    for (const SCODE code : kCodes) {
        SCOPED_TRACE(code);
        COleException exception;
        exception.m_sc = code;
        char text[256];
        exception.GetErrorMessage(text, sizeof(text));
        EXPECT_EQ(GetLastError(), kBefore);
        EXCEPINFO info;
        COleDispatchException::Process(&info, &exception);
        EXPECT_EQ(info.scode, code);
        SysFreeString(info.bstrDescription);
        EXPECT_EQ(GetLastError(), kBefore);
    }
}

TEST_F(LastError, OfTheThreadIsKeptByAutomationCalls) {
    RecordingDispatch object;
    COleDispatchDriver driver(&object, FALSE);
    static constexpr BYTE parms[] = VTS_BSTR;

    object.answer = [](DISPPARAMS*, VARIANT* result, EXCEPINFO*) {
        result->vt = VT_BSTR;
        result->bstrVal = SysAllocString(Chinese(200).c_str());
        return S_OK;
    };
    CString text;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_BSTR, &text, parms, static_cast<LPCSTR>(NarrowChinese(600)));
    EXPECT_EQ(text, NarrowChinese(200));
    EXPECT_EQ(GetLastError(), kBefore);

    object.answer = [](DISPPARAMS*, VARIANT*, EXCEPINFO* info) {
        info->bstrDescription = SysAllocString(Chinese(100).c_str());
        return DISP_E_EXCEPTION;
    };
    EXPECT_EQ(Raised([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); }),
              "COleDispatchException");
    EXPECT_EQ(GetLastError(), kBefore);
}

}  // namespace
