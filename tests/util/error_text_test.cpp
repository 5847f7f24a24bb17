#include <gtest/gtest.h>

#include <afxdisp.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "tkkernel/util.h"
#include "util/values.h"

namespace {

using namespace tk::test;

/// The platform's text of a code; "" when it has none.
std::string SystemText(DWORD code) {
    char text[2048];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                                        text, sizeof(text), nullptr);
    return {text, length};
}

constexpr DWORD kUnknownCode = 0x2FFFFFFF;

TEST(LookupErrorText, PutsTheCodeBeforeTheSystemsText) {
    const struct {
        DWORD code;
        const char* head;
    } kRows[] = {
        {0, "错误[0x00000000]:"},          {2, "错误[0x00000002]:"},          {5, "错误[0x00000005]:"},
        {183, "错误[0x000000B7]:"},        {0x80004002, "错误[0x80004002]:"}, {0x80040154, "错误[0x80040154]:"},
        {0x800706BA, "错误[0x800706BA]:"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.head);
        const std::string system = SystemText(row.code);
        EXPECT_EQ(Std(LookupErrorText(row.code)), system.empty() ? "" : row.head + system);
    }
}

TEST(LookupErrorText, HasTextsForTheUsualCodes) {
    for (const DWORD code : {2U, 3U, 5U, 6U, 183U}) {
        ASSERT_NE(SystemText(code), "") << code;
        EXPECT_GT(LookupErrorText(code).GetLength(), 17) << code;
    }
}

TEST(LookupErrorText, KeepsTheLineBreakOfTheSystem) {
    const std::string text = Std(LookupErrorText(2));
    EXPECT_TRUE(text.ends_with("\r\n"));
    EXPECT_EQ(text.find("\r\n"), text.size() - 2);
}

TEST(LookupErrorText, IsEmptyForAnUnknownCode) {
    ASSERT_EQ(SystemText(kUnknownCode), "");
    EXPECT_STREQ(LookupErrorText(kUnknownCode), "");
}

TEST(LookupErrorText, KeepsInsertMarksOfTheSystemsText) {
    // "%1 is not a valid application": nothing is inserted, nothing is read from a missing argument.
    EXPECT_EQ(Std(LookupErrorText(193)), SystemText(193).empty() ? "" : "错误[0x000000C1]:" + SystemText(193));
}

TEST(GetLastErrorText, ReadsTheCallingThreadsCode) {
    SetLastError(5);
    EXPECT_EQ(Std(GetLastErrorText()), Std(LookupErrorText(5)));

    DWORD code = 0;
    SetLastError(183);
    EXPECT_EQ(Std(GetLastErrorText(&code)), Std(LookupErrorText(183)));
    EXPECT_EQ(code, 183U);

    SetLastError(kUnknownCode);
    EXPECT_STREQ(GetLastErrorText(&code), "");
    EXPECT_EQ(code, kUnknownCode) << "the code is stored also when it has no text";

    SetLastError(5);
    EXPECT_EQ(Std(GetLastErrorText(nullptr)), Std(LookupErrorText(5)));
}

TEST(GetExceptionError, GivesTheExceptionsOwnMessage) {
    COleDispatchException described("连接失败");
    EXPECT_STREQ(GetExceptionError(&described), "连接失败");

    COleException coded;
    coded.m_sc = E_ACCESSDENIED;
    EXPECT_EQ(Std(GetExceptionError(&coded)), SystemText(static_cast<DWORD>(E_ACCESSDENIED)).substr(0, 255));

    COleDispatchException silent("");
    EXPECT_STREQ(GetExceptionError(&silent), "");
    EXPECT_STREQ(GetExceptionError(static_cast<CException*>(nullptr)), "");
}

TEST(GetExceptionError, CutsALongMessageBehindAWholeCharacter) {
    COleDispatchException letters(std::string(300, 'x').c_str());
    EXPECT_EQ(Std(GetExceptionError(&letters)), std::string(255, 'x'));

    std::string characters;
    for (int i = 0; i < 150; ++i)
        characters += "库";
    COleDispatchException doubleBytes(characters.c_str());
    EXPECT_EQ(Std(GetExceptionError(&doubleBytes)), characters.substr(0, 254));
}

/// An exception of an application that fills the buffer to the brim and forgets the terminator.
class OverfullException : public CException {
public:
    explicit OverfullException(std::string character) : CException(FALSE), character_(std::move(character)) {}
    ~OverfullException() override = default;
    BOOL GetErrorMessage(LPTSTR text, UINT size, PUINT context) override {
        EXPECT_EQ(size, 256U);
        EXPECT_EQ(context, nullptr) << "no help context is asked for";
        for (UINT i = 0; i < size; ++i)
            EXPECT_EQ(text[i], '\0') << "the buffer is zeroed first";
        for (UINT i = 0; i < size; ++i)
            text[i] = character_[i % character_.size()];
        return TRUE;
    }

private:
    const std::string character_;
};

TEST(GetExceptionError, BoundsWhatAnExceptionWrites) {
    OverfullException exception("x");
    EXPECT_EQ(Std(GetExceptionError(&exception)), std::string(255, 'x'));
}

TEST(GetExceptionError, LeavesNoHalfCharacterOfWhatAnExceptionWrites) {
    OverfullException exception("库");
    std::string characters;
    for (int i = 0; i < 127; ++i)
        characters += "库";
    EXPECT_EQ(Std(GetExceptionError(&exception)), characters);
}

/// An exception of an application that fills the buffer, and says that it has no message.
class ModestException : public CException {
public:
    ModestException() : CException(FALSE) {}
    ~ModestException() override = default;
    BOOL GetErrorMessage(LPTSTR text, UINT size, PUINT) override {
        std::snprintf(text, size, "连接失败");
        return FALSE;
    }
};

TEST(GetExceptionError, TakesTheBufferAsAnExceptionLeavesIt) {
    ModestException exception;
    EXPECT_STREQ(GetExceptionError(&exception), "连接失败");
}

TEST(GetExceptionError, NamesTheServiceAndThePlace) {
    EXPECT_STREQ(GetExceptionError("数据库服务器", "OpenDatabase"),
                 "数据库服务器出现异常,面临崩溃危险[异常位置:OpenDatabase]");
    EXPECT_STREQ(GetExceptionError("", ""), "出现异常,面临崩溃危险[异常位置:]");
    EXPECT_STREQ(GetExceptionError(static_cast<const char*>(nullptr), nullptr), "出现异常,面临崩溃危险[异常位置:]");
    EXPECT_STREQ(GetExceptionError("%s%n", "%d"), "%s%n出现异常,面临崩溃危险[异常位置:%d]");
}

TEST(GetExceptionError, CutsLongTextsBehindAWholeCharacter) {
    const std::string where(300, 'w');
    EXPECT_EQ(Std(GetExceptionError(where.c_str(), "x")), where.substr(0, 255));
    // 254 letters leave one byte, half of the next character.
    EXPECT_EQ(Std(GetExceptionError(where.substr(0, 254).c_str(), "x")), where.substr(0, 254));
    EXPECT_EQ(Std(GetExceptionError(where.substr(0, 253).c_str(), "x")), where.substr(0, 253) + "出");
}

TEST(GetExceptionError, KeepsHalfACharacterThatWasOneBefore) {
    const std::string where = std::string(254, 'w') + "\xB0";
    EXPECT_EQ(Std(GetExceptionError((where + " ").c_str(), "x")), where);
    COleDispatchException exception((where + " ").c_str());
    EXPECT_EQ(Std(GetExceptionError(&exception)), where);
}

}  // namespace
