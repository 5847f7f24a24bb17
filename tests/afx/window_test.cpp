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
