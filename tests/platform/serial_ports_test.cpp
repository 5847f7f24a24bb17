// The list of ports in controls, on both systems.
#include <gtest/gtest.h>

#include <afxwin.h>

#include <string>
#include <vector>

#include "tkkernel/platform.h"

namespace {

/// What a control is asked, by class.
std::vector<UINT> asked;
WNDPROC before = nullptr;

LRESULT CALLBACK Note(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const bool list =
        (message >= CB_ADDSTRING && message <= CB_SETCURSEL) || (message >= LB_ADDSTRING && message <= LB_SETCURSEL);
    if (list) asked.push_back(message);
    return CallWindowProcA(before, window, message, wParam, lParam);
}

LRESULT CALLBACK AlwaysZero(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == LB_DELETESTRING) return 0;
    return CallWindowProcA(before, window, message, wParam, lParam);
}

void PutInFront(CWnd& control, WNDPROC procedure) {
    asked.clear();
    before = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(control.GetSafeHwnd(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

class PortList : public testing::Test {
protected:
    PortList() {
        EXPECT_TRUE(owner_.CreateEx(0, "STATIC", "", 0, 0, 0, 10, 10, HWND_MESSAGE, nullptr));
        EXPECT_TRUE(list_.Create(WS_CHILD, CRect(0, 0, 10, 10), &owner_, 1));
        EXPECT_TRUE(combo_.Create(WS_CHILD | CBS_DROPDOWNLIST, CRect(0, 0, 10, 10), &owner_, 2));
    }

    CWnd owner_;
    CListBox list_;
    CComboBox combo_;
};

TEST_F(PortList, IsTheSameInTheArrayAndInTheControls) {
    CStringArray names;
    names.Add("left over");
    list_.AddString("left over");
    list_.AddString("and more");
    const int count = GetCommCount(&names, &list_);
    EXPECT_EQ(names.GetSize(), count);
    ASSERT_EQ(list_.GetCount(), count);
    for (int i = 0; i < count; ++i) {
        CString text;
        list_.GetText(i, text);
        EXPECT_STREQ(text, names[i]);
        EXPECT_EQ(names[i].Left(3), "COM");
        EXPECT_LE(std::stoi(std::string(names[i].Mid(3))), 25);
    }
    EXPECT_EQ(list_.GetCurSel(), count != 0 ? 0 : LB_ERR);

    combo_.AddString("left over");
    EXPECT_EQ(GetCommCount(&names, &combo_), count);
    EXPECT_EQ(combo_.GetCount(), count);
    EXPECT_EQ(combo_.GetCurSel(), count != 0 ? 0 : CB_ERR);
}

TEST_F(PortList, IsEmptiedByDeletingTheFirstItemUntilThatFails) {
    for (int i = 0; i < 3; ++i) {
        list_.AddString("left over");
        combo_.AddString("left over");
    }
    PutInFront(list_, &Note);
    const unsigned count = GetCommCount(nullptr, &list_);
    std::vector<UINT> expected(4, 0x182u);
    expected.insert(expected.end(), count, 0x180u);
    expected.push_back(0x186u);
    EXPECT_EQ(asked, expected);
    PutInFront(combo_, &Note);
    GetCommCount(nullptr, &combo_);
    EXPECT_EQ(std::vector<UINT>(asked.begin(), asked.begin() + 4), std::vector<UINT>(4, 0x144u));
    EXPECT_EQ(asked.back(), 0x14Eu);
}

TEST_F(PortList, EndsWithAControlThatDeletesNothing) {
    list_.AddString("stays");
    PutInFront(list_, &AlwaysZero);
    GetCommCount(nullptr, &list_);
    EXPECT_GE(list_.GetCount(), 1);
}

TEST_F(PortList, LeavesOtherControlsAlone) {
    CStringArray names;
    const int count = GetCommCount(&names);
    EXPECT_EQ(GetCommCount(&names, &owner_), count);
    CListBox without;
    EXPECT_EQ(GetCommCount(&names, &without), count) << "a control without a window";
    EXPECT_EQ(GetCommCount(nullptr, nullptr), count);
    PutInFront(owner_, &Note);
    GetCommCount(&names, &owner_);
    EXPECT_TRUE(asked.empty());
}

}  // namespace
