// The list of ports in controls, on both systems. A screen is needed by neither: the windows only take messages, and
// where it matters what they are asked, the list behind them is the test's.
#include <gtest/gtest.h>

#include <afxwin.h>

#include <string>
#include <vector>

#include "tkkernel/platform.h"

namespace {

/// The list of one control, and what it was asked.
struct List {
    std::vector<std::string> items;
    LRESULT selected = -1;
    bool deletesNothing = false;
    std::vector<UINT> asked;
};
List list;

LRESULT CALLBACK Answer(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case CB_ADDSTRING:
        case LB_ADDSTRING:
            list.asked.push_back(message);
            list.items.emplace_back(reinterpret_cast<const char*>(lParam));
            return static_cast<LRESULT>(list.items.size()) - 1;
        case CB_DELETESTRING:
        case LB_DELETESTRING:
            list.asked.push_back(message);
            EXPECT_EQ(wParam, 0u) << "always the first";
            if (list.deletesNothing) return 0;
            if (list.items.empty()) return -1;
            list.items.erase(list.items.begin());
            return static_cast<LRESULT>(list.items.size());
        case CB_SETCURSEL:
        case LB_SETCURSEL:
            list.asked.push_back(message);
            list.selected = static_cast<LRESULT>(wParam);
            return list.selected;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

std::vector<std::string> Copied(const CStringArray& names) {
    std::vector<std::string> copy;
    for (int i = 0; i < names.GetSize(); ++i)
        copy.emplace_back(names[i]);
    return copy;
}

template <typename Control>
class PortList : public testing::Test {
protected:
    PortList() {
        list = {};
        EXPECT_TRUE(control_.CreateEx(0, "STATIC", "", 0, 0, 0, 10, 10, HWND_MESSAGE, nullptr));
        SetWindowLongPtrA(control_.GetSafeHwnd(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Answer));
    }

    Control control_;
};

constexpr struct { UINT add, remove, select; } kComboBox = {0x143, 0x144, 0x14E}, kListBox = {0x180, 0x182, 0x186};

using PortsInAComboBox = PortList<CComboBox>;
using PortsInAListBox = PortList<CListBox>;
using PortsInAnotherWindow = PortList<CWnd>;

/// What a list with some items in it is asked for, and what it holds then.
template <typename Messages>
void ExpectFilled(CWnd& control, const Messages& messages) {
    list.items = {"left over", "and more", "and more"};
    CStringArray names;
    names.Add("left over");
    const unsigned count = GetCommCount(&names, &control);
    std::vector<UINT> expected(4, messages.remove);  // the fourth is the error that ends it
    expected.insert(expected.end(), count, messages.add);
    expected.push_back(messages.select);
    EXPECT_EQ(list.asked, expected);
    EXPECT_EQ(list.selected, 0);
    EXPECT_EQ(names.GetSize(), static_cast<int>(count));
    EXPECT_EQ(Copied(names), list.items);
    for (const std::string& name : list.items) {
        EXPECT_EQ(name.substr(0, 3), "COM");
        EXPECT_LE(std::stoi(name.substr(3)), 25);
    }
}

TEST_F(PortsInAComboBox, TakeThePlaceOfWhatItHeld) {
    ExpectFilled(control_, kComboBox);
}

TEST_F(PortsInAListBox, TakeThePlaceOfWhatItHeld) {
    ExpectFilled(control_, kListBox);
}

TEST_F(PortsInAListBox, AreAddedToOneThatDeletesNothing) {
    list.items = {"stays"};
    list.deletesNothing = true;
    GetCommCount(nullptr, &control_);
    EXPECT_EQ(list.items.front(), "stays");
    EXPECT_EQ(list.asked.back(), 0x186u);
}

TEST_F(PortsInAnotherWindow, AreNotShown) {
    CStringArray names;
    const int count = GetCommCount(&names, &control_);
    EXPECT_TRUE(list.asked.empty());
    EXPECT_EQ(GetCommCount(&names), count);
    EXPECT_EQ(GetCommCount(nullptr, nullptr), count);
    CListBox without;
    EXPECT_EQ(GetCommCount(&names, &without), count) << "a control without a window";
    EXPECT_EQ(names.GetSize(), count);
}

TEST(PortsInThePlatformsListBox, AreAllThere) {
    CListBox box;
    ASSERT_TRUE(box.CreateEx(0, "LISTBOX", "", 0, 0, 0, 10, 10, HWND_MESSAGE, nullptr));
    EXPECT_EQ(box.AddString("left over"), 0);
    CStringArray names;
    const int count = GetCommCount(&names, &box);
    ASSERT_EQ(box.GetCount(), count);
    for (int i = 0; i < count; ++i) {
        CString text;
        box.GetText(i, text);
        EXPECT_STREQ(text, names[i]);
    }
    EXPECT_EQ(box.GetCurSel(), count != 0 ? 0 : LB_ERR);
}

}  // namespace
