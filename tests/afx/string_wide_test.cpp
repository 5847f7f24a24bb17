#include <afx.h>
#include <gtest/gtest.h>
#include <oleauto.h>

#include <string>

#include "afx/raises.h"

namespace {

using Wide = std::basic_string<OLECHAR>;

Wide Taken(BSTR text) {
    Wide copy(text, SysStringLen(text));
    SysFreeString(text);
    return copy;
}

TEST(StringFromWide, SpeaksCodePage936) {
    EXPECT_STREQ(CString(OLESTR("stock")), "stock");
    EXPECT_STREQ(CString(OLESTR("\u5E93\u5B58")), "\xBF\xE2\xB4\xE6");
    EXPECT_STREQ(CString(OLESTR("a\u5E93")), "a\xBF\xE2");
    EXPECT_STREQ(CString(OLESTR("stock"), 2), "st");
    EXPECT_STREQ(CString(OLESTR("\u0E01")), "?") << "what the code page cannot say";
    CString text("old");
    text = OLESTR("\u5E93");
    EXPECT_STREQ(text, "\xBF\xE2");
    text = static_cast<LPCWSTR>(nullptr);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(CString(OLESTR("a\0b"), 3).GetLength(), 3);
}

TEST(StringFromWide, FindsRoomForEveryLength) {
    for (int length = 0; length <= 200; ++length) {
        SCOPED_TRACE(length);
        const Wide plain(static_cast<std::size_t>(length), OLECHAR('a'));
        const Wide chinese(static_cast<std::size_t>(length), OLECHAR(0x5E93));
        EXPECT_STREQ(CString(plain.c_str()), CString('a', length));
        const CString text(chinese.c_str());
        ASSERT_EQ(text.GetLength(), 2 * length);
        for (int i = 0; i < length; ++i) {
            EXPECT_EQ(text[2 * i], '\xBF');
            EXPECT_EQ(text[2 * i + 1], '\xE2');
        }
    }
}

TEST(StringToBstr, GivesTheCallerATextOfItsOwn) {
    EXPECT_EQ(Taken(CString("a\xBF\xE2").AllocSysString()), Wide(OLESTR("a\u5E93")));
    EXPECT_EQ(Taken(CString("a\0b", 3).AllocSysString()), Wide(OLESTR("a\0b"), 3));
    const BSTR empty = CString().AllocSysString();
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(SysStringLen(empty), 0u);
    SysFreeString(empty);
    for (int length : {511, 512, 513, 5000}) {
        SCOPED_TRACE(length);
        EXPECT_EQ(Taken(CString('z', length).AllocSysString()), Wide(static_cast<std::size_t>(length), OLECHAR('z')));
    }
}

TEST(StringToBstr, ReplacesAnOldText) {
    BSTR text = SysAllocString(OLESTR("old"));
    EXPECT_EQ(CString("new").SetSysString(&text), text);
    EXPECT_EQ(Taken(text), Wide(OLESTR("new")));
    text = nullptr;
    CString("first").SetSysString(&text);
    EXPECT_EQ(Taken(text), Wide(OLESTR("first")));
    EXPECT_EQ(Raised([] { CString("x").SetSysString(nullptr); }), "CInvalidArgException");
}

}  // namespace
