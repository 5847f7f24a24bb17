#include <afxole.h>
#include <afxsock.h>
#include <afxwin.h>
#include <gtest/gtest.h>

namespace {

TEST(Point, IsAPlatformPoint) {
    CPoint point(3, 4);
    POINT* const plain = &point;
    EXPECT_EQ(plain->x, 3);
    EXPECT_EQ(plain->y, 4);
    point.Offset(1, -1);
    EXPECT_TRUE(point == CPoint(4, 3));
    EXPECT_TRUE(CPoint() != point);
}

TEST(Window, ClassesAreToldApart) {
    CWnd window;
    CComboBox combo;
    CListBox list;
    CDC context;
    EXPECT_EQ(window.GetSafeHwnd(), nullptr);
    EXPECT_EQ(context.GetSafeHdc(), nullptr);
    EXPECT_TRUE(combo.IsKindOf(RUNTIME_CLASS(CWnd)));
    EXPECT_TRUE(list.IsKindOf(RUNTIME_CLASS(CListBox)));
    EXPECT_FALSE(list.IsKindOf(RUNTIME_CLASS(CComboBox)));
    EXPECT_FALSE(window.IsKindOf(RUNTIME_CLASS(CListBox)));
}

TEST(Window, IsDestroyedByTheObjectThatMadeIt) {
    HWND handle = nullptr;
    {
        CWnd window;
        ASSERT_TRUE(window.CreateEx(0, "STATIC", "库存", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr));
        handle = window.GetSafeHwnd();
        EXPECT_FALSE(window.CreateEx(0, "STATIC", "", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr)) << "it has one";
        CString text;
        window.GetWindowText(text);
        EXPECT_STREQ(text, "库存");
        window.SetWindowText("");
        window.GetWindowText(text);
        EXPECT_STREQ(text, "");
        CWnd borrower;
        EXPECT_TRUE(borrower.Attach(handle));
        EXPECT_FALSE(borrower.Attach(handle));
    }
    EXPECT_FALSE(IsWindow(handle));
    CWnd none;
    EXPECT_FALSE(none.CreateEx(0, "NoSuchClass", "", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr));
    EXPECT_FALSE(none.DestroyWindow());
    EXPECT_EQ(none.Detach(), nullptr);
}

TEST(Window, OutlivesTheObjectThatLetItGo) {
    HWND handle = nullptr;
    {
        CWnd window;
        ASSERT_TRUE(window.CreateEx(0, "STATIC", "", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr));
        handle = window.Detach();
    }
    EXPECT_TRUE(IsWindow(handle));
    EXPECT_TRUE(DestroyWindow(handle));
}

TEST(ListBox, KeepsItems) {
    CListBox list;
    ASSERT_TRUE(list.CreateEx(0, "LISTBOX", "", 0, 0, 0, 10, 10, HWND_MESSAGE, nullptr));
    EXPECT_EQ(list.AddString("COM2"), 0);
    EXPECT_EQ(list.AddString("库存"), 1);
    EXPECT_EQ(list.InsertString(0, "COM1"), 0);
    EXPECT_EQ(list.GetCount(), 3);
    CString text;
    list.GetText(2, text);
    EXPECT_STREQ(text, "库存");
    list.GetText(3, text);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(list.GetCurSel(), LB_ERR);
    EXPECT_EQ(list.SetCurSel(1), 1);
    EXPECT_EQ(list.GetCurSel(), 1);
    EXPECT_EQ(list.DeleteString(0), 2);
    EXPECT_EQ(list.DeleteString(9), LB_ERR);
    list.ResetContent();
    EXPECT_EQ(list.GetCount(), 0);
}

TEST(DeviceContext, IsDeletedByTheObjectThatMadeIt) {
    HDC handle = nullptr;
    {
        CDC context;
        ASSERT_TRUE(context.CreateCompatibleDC(nullptr));
        EXPECT_FALSE(context.CreateCompatibleDC(nullptr));
        handle = context.GetSafeHdc();
        CDC borrower;
        EXPECT_TRUE(borrower.Attach(handle));
        EXPECT_EQ(borrower.GetMapMode(), MM_TEXT);
        EXPECT_EQ(borrower.Detach(), handle);
    }
    EXPECT_FALSE(DeleteDC(handle));
}

TEST(DeviceContext, MapsPointsRectanglesAndSizes) {
    CDC context;
    ASSERT_TRUE(context.CreateCompatibleDC(nullptr));
    EXPECT_EQ(context.SetMapMode(MM_ANISOTROPIC), MM_TEXT);
    context.SetWindowExt(1, 1);
    EXPECT_TRUE(context.SetViewportExt(2, -3) != CSize(2, -3));
    EXPECT_TRUE(context.SetViewportExt(2, -3) == CSize(2, -3));
    EXPECT_TRUE(context.SetViewportOrg(10, 20) == CPoint(0, 0));
    POINT points[] = {{1, 1}, {5, 5}};
    context.LPtoDP(points, 2);
    EXPECT_TRUE(CPoint(points[0]) == CPoint(12, 17));
    EXPECT_TRUE(CPoint(points[1]) == CPoint(20, 5));
    CRect rect(0, 0, 5, 5);
    context.LPtoDP(&rect);
    EXPECT_EQ(rect.right, 20);
    EXPECT_EQ(rect.Height(), -15);
    context.DPtoLP(&rect);
    EXPECT_EQ(rect.Width(), 5);
    CSize size(5, 5);
    context.LPtoDP(&size);
    EXPECT_TRUE(size == CSize(10, 15)) << "without signs and origins";
    context.DPtoLP(&size);
    EXPECT_TRUE(size == CSize(5, 5));
}

TEST(StartUp, MayBeAskedForAgain) {
    EXPECT_TRUE(AfxSocketInit());
    EXPECT_TRUE(AfxSocketInit(nullptr));
    EXPECT_TRUE(AfxOleInit());
    EXPECT_TRUE(AfxOleInit());
    AfxOleTerm();
    AfxOleTerm(TRUE);
    AfxOleTerm();
    AfxOleTerm();
}

}  // namespace
