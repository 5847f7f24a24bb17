// Windows, lists and menus without a screen.
#include <gtest/gtest.h>
#include <windows.h>

#include <map>
#include <vector>

#include "tests/win32/system/support.h"

using namespace tk::test;

namespace {

std::vector<UINT> received;
LRESULT onCreate = 0;
LRESULT onBegin = 1;

LRESULT CALLBACK Note(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    received.push_back(message);
    if (message == WM_CREATE) return onCreate;
    const LRESULT usual = DefWindowProcA(window, message, wParam, lParam);
    return message == WM_NCCREATE && onBegin == 0 ? 0 : usual;
}

class Windows : public ::testing::Test {
protected:
    Windows() {
        received.clear();
        onCreate = 0;
        onBegin = 1;
        WNDCLASSA windowClass{};
        windowClass.lpfnWndProc = &Note;
        windowClass.lpszClassName = "TkNote";
        number_ = RegisterClassA(&windowClass);
        EXPECT_NE(number_, 0);
    }
    ~Windows() override { EXPECT_TRUE(UnregisterClassA("tknote", nullptr)) << "a window was left"; }

    static HWND Make(const char* className, HWND parent = nullptr, DWORD style = 0, int number = 0) {
        return CreateWindowExA(0, className, "库存", style, 0, 0, 10, 10, parent,
                               reinterpret_cast<HMENU>(static_cast<LONG_PTR>(number)), nullptr, nullptr);
    }

    ATOM number_ = 0;
};

LRESULT SendText(HWND window, UINT message, int index, const char* text) {
    return SendMessage(window, message, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text));
}

}  // namespace

TEST_F(Windows, LiveFromTheFirstMessageToTheLast) {
    const HWND window = Make("tkNOTE");
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(IsWindow(window));
    EXPECT_EQ(received, (std::vector<UINT>{WM_NCCREATE, WM_CREATE}));
    char text[16] = {};
    EXPECT_EQ(GetClassName(window, text, sizeof text), 6);
    EXPECT_STREQ(text, "TkNote");
    EXPECT_EQ(GetWindowTextLength(window), 4);
    EXPECT_EQ(GetWindowText(window, text, 4), 2) << "cut behind a whole character";
    EXPECT_STREQ(text, "库");
    EXPECT_TRUE(SetWindowText(window, "stock"));
    EXPECT_EQ(GetWindowText(window, text, sizeof text), 5);
    received.clear();
    EXPECT_TRUE(DestroyWindow(window));
    EXPECT_EQ(received, (std::vector<UINT>{WM_DESTROY, WM_NCDESTROY}));
    EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(DestroyWindow(window));
    EXPECT_EQ(GetLastError(), 1400u);
    EXPECT_EQ(SendMessage(window, WM_GETTEXTLENGTH, 0, 0), 0);
}

TEST_F(Windows, TellTheirClassByWholeCharacters) {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = &DefWindowProcA;
    windowClass.lpszClassName = "库存";
    ASSERT_NE(RegisterClassA(&windowClass), 0);
    const HWND window = Make("库存");
    ASSERT_NE(window, nullptr);
    char text[16] = {};
    EXPECT_EQ(GetClassName(window, text, 4), 2);
    EXPECT_STREQ(text, "库");
    EXPECT_EQ(GetClassName(window, text, 5), 4);
    EXPECT_STREQ(text, "库存");
    DestroyWindow(window);
    EXPECT_TRUE(UnregisterClassA("库存", nullptr));
}

TEST_F(Windows, MayRefuseToBe) {
    onBegin = 0;
    EXPECT_EQ(Make("TkNote"), nullptr);
    EXPECT_EQ(received, (std::vector<UINT>{WM_NCCREATE}));
    onBegin = 1;
    onCreate = -1;
    EXPECT_EQ(Make("TkNote"), nullptr);
}

TEST_F(Windows, TakeTheirChildrenAlong) {
    const HWND owner = Make("TkNote");
    const HWND list = Make("LISTBOX", owner, WS_CHILD, 101);
    const HWND child = Make(MAKEINTRESOURCEA(number_), list, WS_CHILD, 102);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(GetParent(child), list);
    EXPECT_EQ(GetDlgItem(owner, 101), list);
    EXPECT_EQ(GetDlgItem(owner, 102), nullptr);
    EXPECT_EQ(GetDlgCtrlID(child), 102);
    EXPECT_EQ(SendMessage(owner, WM_CLOSE, 0, 0), 0);
    EXPECT_FALSE(IsWindow(owner));
    EXPECT_FALSE(IsWindow(list));
    EXPECT_FALSE(IsWindow(child));
}

TEST_F(Windows, KeepNumbersOfTheProgram) {
    const HWND window = Make("STATIC", nullptr, WS_BORDER, 7);
    EXPECT_EQ(SetWindowLongPtr(window, GWLP_USERDATA, 12345), 0);
    EXPECT_EQ(GetWindowLongPtr(window, GWLP_USERDATA), 12345);
    EXPECT_EQ(GetWindowLongPtr(window, GWL_STYLE), static_cast<LONG_PTR>(WS_BORDER));
    EXPECT_EQ(GetWindowLongPtr(window, GWLP_ID), 7);
    EXPECT_EQ(GetWindowLongPtr(window, 99), 0);
    EXPECT_EQ(GetLastError(), 1413u);
    SetWindowLongPtr(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Note));
    received.clear();
    DestroyWindow(window);
    EXPECT_EQ(received.size(), 2u) << "the procedure was replaced";
}

TEST_F(Windows, OfUnknownClassesAndParentsAreNotMade) {
    EXPECT_EQ(Make("NoSuchClass"), nullptr);
    EXPECT_EQ(GetLastError(), 1407u);
    EXPECT_EQ(CreateWindowExA(0, nullptr, "", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(Make("LISTBOX", reinterpret_cast<HWND>(1)), nullptr);
    EXPECT_EQ(GetLastError(), 1400u);
    WNDCLASSA again{};
    again.lpfnWndProc = &Note;
    again.lpszClassName = "listbox";
    EXPECT_EQ(RegisterClassA(&again), 0);
    EXPECT_EQ(GetLastError(), 1410u);
    again.lpszClassName = "";
    EXPECT_EQ(RegisterClassA(&again), 0);
    EXPECT_EQ(RegisterClassA(nullptr), 0);
    EXPECT_FALSE(UnregisterClassA("LISTBOX", nullptr));
    EXPECT_FALSE(UnregisterClassA("NoSuchClass", nullptr));
    EXPECT_EQ(GetLastError(), 1411u);
    const HWND window = Make("TkNote");
    EXPECT_FALSE(UnregisterClassA("TkNote", nullptr));
    EXPECT_EQ(GetLastError(), 1412u);
    DestroyWindow(window);
}

TEST_F(Windows, OfBothListClassesKeepAList) {
    static const struct {
        const char* name;
        UINT add, insert, remove, reset, count, select, selected, text, length, find, findWhole, data, setData;
    } kRows[] = {
        {"LISTBOX", 0x180, 0x181, 0x182, 0x184, 0x18B, 0x186, 0x188, 0x189, 0x18A, 0x18F, 0x1A2, 0x199, 0x19A},
        {"COMBOBOX", 0x143, 0x14A, 0x144, 0x14B, 0x146, 0x14E, 0x147, 0x148, 0x149, 0x14C, 0x158, 0x150, 0x151},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        const HWND list = Make(row.name);
        EXPECT_EQ(SendText(list, row.add, 0, "COM2"), 0);
        EXPECT_EQ(SendText(list, row.add, 0, "库存"), 1);
        EXPECT_EQ(SendText(list, row.insert, 0, "COM1"), 0);
        EXPECT_EQ(SendText(list, row.insert, -1, "COM10"), 3);
        EXPECT_EQ(SendText(list, row.insert, 9, "beyond"), -1);
        EXPECT_EQ(SendText(list, row.add, 0, nullptr), -1);
        EXPECT_EQ(SendMessage(list, row.count, 0, 0), 4);
        char text[16] = {};
        EXPECT_EQ(SendMessage(list, row.length, 2, 0), 4);
        EXPECT_EQ(SendText(list, row.text, 2, text), 4);
        EXPECT_STREQ(text, "库存");
        EXPECT_EQ(SendText(list, row.text, 4, text), -1);
        EXPECT_EQ(SendMessage(list, row.length, 4, 0), -1);

        EXPECT_EQ(SendMessage(list, row.selected, 0, 0), -1);
        EXPECT_EQ(SendMessage(list, row.select, 1, 0), 1);
        EXPECT_EQ(SendMessage(list, row.remove, 0, 0), 3) << "what is left";
        EXPECT_EQ(SendMessage(list, row.selected, 0, 0), 0) << "the selection moves with its item";
        EXPECT_EQ(SendMessage(list, row.remove, 0, 0), 2);
        EXPECT_EQ(SendMessage(list, row.selected, 0, 0), -1) << "and goes with it";
        EXPECT_EQ(SendMessage(list, row.remove, 2, 0), -1);
        EXPECT_EQ(SendMessage(list, row.select, static_cast<WPARAM>(-1), 0), -1);

        EXPECT_EQ(SendText(list, row.find, -1, "com"), 1);
        EXPECT_EQ(SendText(list, row.find, 1, "com"), 1) << "goes round";
        EXPECT_EQ(SendText(list, row.findWhole, -1, "com"), -1);
        EXPECT_EQ(SendText(list, row.findWhole, -1, "com10"), 1);
        EXPECT_EQ(SendMessage(list, row.setData, 1, 77), 0);
        EXPECT_EQ(SendMessage(list, row.data, 1, 0), 77);
        EXPECT_EQ(SendMessage(list, row.data, 0, 0), 0);
        EXPECT_EQ(SendMessage(list, row.data, 2, 0), -1);
        EXPECT_EQ(SendMessage(list, row.reset, 0, 0), 0);
        EXPECT_EQ(SendMessage(list, row.count, 0, 0), 0);
        EXPECT_EQ(SendMessage(list, row.remove, 0, 0), -1);
        DestroyWindow(list);
    }
}

TEST_F(Windows, SortWhenTheyAreAskedTo) {
    const HWND list = Make("ListBox", nullptr, LBS_SORT);
    for (const char* text : {"pear", "Apple", "banana"})
        SendText(list, LB_ADDSTRING, 0, text);
    EXPECT_EQ(SendText(list, LB_FINDSTRINGEXACT, -1, "Apple"), 0);
    EXPECT_EQ(SendText(list, LB_FINDSTRINGEXACT, -1, "banana"), 1);
    EXPECT_EQ(SendText(list, LB_FINDSTRINGEXACT, -1, "pear"), 2);
    DestroyWindow(list);
}

TEST_F(Windows, FindHowAnItemBeginsByWholeCharacters) {
    const HWND list = Make("ListBox", nullptr, 0);
    for (const char* text : {"a库存", "a?b"})
        SendText(list, LB_ADDSTRING, 0, text);
    EXPECT_EQ(SendText(list, LB_FINDSTRING, -1, "a库"), 0);
    EXPECT_EQ(SendText(list, LB_FINDSTRING, -1, "a?"), 1);
    EXPECT_EQ(SendText(list, LB_FINDSTRING, 0, "a库存"), 0);
    DestroyWindow(list);
}

TEST_F(Windows, OfComboBoxesShowWhatIsSelected) {
    const HWND combo = Make("ComboBox", nullptr, CBS_DROPDOWNLIST);
    SendText(combo, CB_ADDSTRING, 0, "COM1");
    SendMessage(combo, CB_SETCURSEL, 0, 0);
    char text[16] = {};
    EXPECT_EQ(GetWindowText(combo, text, sizeof text), 4);
    EXPECT_STREQ(text, "COM1");
    SendMessage(combo, CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
    EXPECT_EQ(GetWindowTextLength(combo), 0);
    DestroyWindow(combo);
}

TEST(Menus, HoldItemsAndMenus) {
    const HMENU menu = CreateMenu();
    const HMENU sub = CreatePopupMenu();
    EXPECT_TRUE(AppendMenu(sub, MF_STRING, 101, "打开"));
    EXPECT_TRUE(AppendMenu(sub, MF_SEPARATOR, 0, nullptr));
    EXPECT_TRUE(AppendMenu(sub, MF_STRING | MF_GRAYED, 102, "Close"));
    EXPECT_TRUE(AppendMenu(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(sub), "File"));
    EXPECT_FALSE(AppendMenu(menu, MF_POPUP, 1, "no menu"));
    EXPECT_EQ(GetMenuItemCount(menu), 1);
    EXPECT_EQ(GetSubMenu(menu, 0), sub);
    EXPECT_EQ(GetSubMenu(menu, 1), nullptr);
    EXPECT_EQ(GetSubMenu(sub, 0), nullptr);
    EXPECT_EQ(GetMenuItemID(menu, 0), 0xFFFFFFFFu);
    EXPECT_EQ(GetMenuItemID(sub, 1), 0u);
    EXPECT_EQ(GetMenuState(menu, 102, MF_BYCOMMAND), MF_GRAYED);
    EXPECT_EQ(GetMenuState(menu, 0, MF_BYPOSITION), MF_POPUP | 0x300u);
    EXPECT_EQ(GetMenuState(menu, 103, MF_BYCOMMAND), 0xFFFFFFFFu);
    char text[4] = {};
    EXPECT_EQ(GetMenuString(menu, 101, text, sizeof text, MF_BYCOMMAND), 2);
    EXPECT_STREQ(text, "打");
    EXPECT_EQ(GetMenuString(menu, 101, nullptr, 0, MF_BYCOMMAND), 4);

    EXPECT_EQ(GetMenuDefaultItem(sub, TRUE, 0), 0xFFFFFFFFu);
    EXPECT_TRUE(SetMenuDefaultItem(sub, 102, FALSE));
    EXPECT_EQ(GetMenuDefaultItem(sub, TRUE, 0), 2u);
    EXPECT_EQ(GetMenuDefaultItem(sub, FALSE, 0), 102u);
    EXPECT_FALSE(SetMenuDefaultItem(sub, 103, FALSE));
    EXPECT_EQ(GetLastError(), 1456u);
    EXPECT_TRUE(SetMenuDefaultItem(sub, 0xFFFFFFFFu, FALSE));
    EXPECT_TRUE(DestroyMenu(menu));
    EXPECT_FALSE(IsMenu(sub));
    EXPECT_FALSE(DestroyMenu(menu));
    EXPECT_EQ(GetLastError(), 1401u);
    EXPECT_EQ(GetMenuItemCount(menu), -1);
}

TEST(Menus, ThatHoldThemselvesEnd) {
    const HMENU menu = CreatePopupMenu();
    EXPECT_TRUE(AppendMenu(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(menu), "again"));
    EXPECT_EQ(GetMenuState(menu, 5, MF_BYCOMMAND), 0xFFFFFFFFu);
    EXPECT_TRUE(DestroyMenu(menu));
}

TEST(Menus, ChooseNothingWhereNobodyCanBeAsked) {
    const Variable display("DISPLAY", static_cast<const char*>(nullptr));
    const Variable wayland("WAYLAND_DISPLAY", static_cast<const char*>(nullptr));
    const HMENU menu = CreatePopupMenu();
    AppendMenu(menu, MF_STRING, 101, "Open");
    EXPECT_EQ(TrackPopupMenu(menu, TPM_RETURNCMD, 0, 0, 0, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), 1400u);
    const HWND owner = CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(TrackPopupMenu(menu, TPM_RETURNCMD, 0, 0, 0, owner, nullptr), 0);
    EXPECT_EQ(TrackPopupMenu(menu, TPM_RIGHTBUTTON, 0, 0, 0, owner, nullptr), 1);
    DestroyWindow(owner);
    DestroyMenu(menu);
    EXPECT_EQ(TrackPopupMenu(menu, TPM_RIGHTBUTTON, 0, 0, 0, owner, nullptr), 0);
    POINT point = {5, 5};
    EXPECT_TRUE(GetCursorPos(&point));
    EXPECT_EQ(point.x, 0);
}
