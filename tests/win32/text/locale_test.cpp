#include <gtest/gtest.h>

#include <thread>

#include "windows.h"

TEST(Locale, IsChinese) {
    EXPECT_EQ(GetSystemDefaultLCID(), 0x0804u);
    EXPECT_EQ(GetUserDefaultLCID(), 0x0804u);
    EXPECT_EQ(GetSystemDefaultLangID(), 0x0804u);
    EXPECT_EQ(GetUserDefaultLangID(), 0x0804u);
    EXPECT_EQ(MAKELCID(MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_SIMPLIFIED), SORT_DEFAULT), 0x0804u);
}

TEST(Locale, OfAThreadIsItsOwn) {
    EXPECT_EQ(GetThreadLocale(), 0x0804u);
    std::thread([] {
        EXPECT_TRUE(SetThreadLocale(0x0409));
        EXPECT_EQ(GetThreadLocale(), 0x0409u);
    }).join();
    EXPECT_EQ(GetThreadLocale(), 0x0804u);
}

TEST(Locale, ThatIsNotKnownIsRefused) {
    SetLastError(0);
    EXPECT_FALSE(SetThreadLocale(0x0411));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(GetThreadLocale(), 0x0804u);
}

TEST(Locale, DefaultsStandForChinese) {
    for (const LCID locale : {LOCALE_NEUTRAL, LOCALE_USER_DEFAULT, LOCALE_SYSTEM_DEFAULT}) {
        SCOPED_TRACE(locale);
        ASSERT_TRUE(SetThreadLocale(LOCALE_INVARIANT));
        EXPECT_EQ(GetThreadLocale(), 0x7Fu);
        ASSERT_TRUE(SetThreadLocale(locale));
        EXPECT_EQ(GetThreadLocale(), 0x0804u);
    }
}
