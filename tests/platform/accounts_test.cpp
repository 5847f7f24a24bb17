#include <gtest/gtest.h>

#include <windows.h>

#include <lm.h>

#include <string>

#include "tkkernel/platform.h"

namespace {

TEST(GetCurrentUser, IsTheNameThePlatformGives) {
    char name[256] = {};
    DWORD size = sizeof(name);
    ASSERT_TRUE(::GetUserNameA(name, &size));
    EXPECT_STREQ(GetCurrentUser(), name);
    EXPECT_NE(name[0], '\0');
}

TEST(GetAllAccounts, ReplacesWhatTheListHeld) {
    CStringArray names;
    names.Add("left over");
    EXPECT_EQ(GetAllAccounts(names), 1);
    for (int i = 0; i < names.GetSize(); ++i) {
        EXPECT_STRNE(names[i], "left over");
        EXPECT_STRNE(names[i], "");
    }
}

}  // namespace
