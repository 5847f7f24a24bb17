#include <gtest/gtest.h>

#include <afxwin.h>
#include <atlbase.h>

#include <string>

#include "tkkernel/platform.h"

namespace {

TEST(GetResString, FindsTheTextsOfTheProgram) {
    EXPECT_STREQ(GetResString(101), "库存管理");
    EXPECT_STREQ(GetResString(102), "two\nlines and a \"mark\"");
    EXPECT_STREQ(GetResString(0x200), "hexadecimal");
}

TEST(LoadString, CutsBetweenCharacters) {
    char text[16] = {};
    EXPECT_EQ(LoadStringA(GetModuleHandleA(nullptr), 101, text, 4), 2);
    EXPECT_STREQ(text, "库");
    EXPECT_EQ(LoadStringA(GetModuleHandleA(nullptr), 101, text, 5), 4);
    EXPECT_STREQ(text, "库存");
}

TEST(GetResString, IsEmptyWhenThereIsNone) {
    EXPECT_STREQ(GetResString(103), "");
    EXPECT_STREQ(GetResString(0), "");
    EXPECT_STREQ(GetResString(0xFFFF), "");
}

std::string Label(HMENU menu, UINT position) {
    char text[64] = {};
    GetMenuStringA(menu, position, text, sizeof(text), MF_BYPOSITION);
    return text;
}

TEST(Menus, ComeFromTheResourcesOfTheProgram) {
    HMENU menu = LoadMenuA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(7));
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(GetMenuItemCount(menu), 2);
    EXPECT_EQ(Label(menu, 0), "&First");
    HMENU first = GetSubMenu(menu, 0);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(GetMenuItemCount(first), 4);
    EXPECT_EQ(Label(first, 0), "&Open\tCtrl+O");
    EXPECT_EQ(GetMenuItemID(first, 0), 40001u);
    EXPECT_EQ(GetMenuItemID(first, 1), 0u);
    EXPECT_NE(GetMenuState(first, 1, MF_BYPOSITION) & MF_SEPARATOR, 0u);
    EXPECT_EQ(Label(first, 2), "库存(&K)");
    EXPECT_NE(GetMenuState(first, 40002, MF_BYCOMMAND) & MF_GRAYED, 0u);
    EXPECT_EQ(GetMenuItemID(first, 3), static_cast<UINT>(-1));
    EXPECT_NE(GetMenuState(first, 40003, MF_BYCOMMAND) & MF_CHECKED, 0u) << "in the menu below";
    EXPECT_TRUE(DestroyMenu(menu));
    EXPECT_FALSE(IsMenu(first)) << "sub-menus go with their menu";
    EXPECT_EQ(LoadMenuA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(8)), nullptr);
}

TEST(OnContextMenu, IsZeroWithoutSuchAMenu) {
    CComModule module;
    ASSERT_EQ(module.Init(nullptr, GetModuleHandleA(nullptr)), S_OK);
    EXPECT_EQ(OnContextMenu(module, nullptr, 8, 0, 0, nullptr), 0);
    module.Term();
    EXPECT_EQ(module.GetResourceInstance(), nullptr);
}

}  // namespace
