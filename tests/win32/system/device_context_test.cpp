// Coordinates of the page and of the device.
#include <gtest/gtest.h>
#include <windows.h>

namespace {

class Contexts : public ::testing::Test {
protected:
    ~Contexts() override { EXPECT_TRUE(DeleteDC(context_)); }

    POINT ToDevice(LONG x, LONG y) {
        POINT point = {x, y};
        EXPECT_TRUE(LPtoDP(context_, &point, 1));
        return point;
    }
    POINT ToPage(LONG x, LONG y) {
        POINT point = {x, y};
        EXPECT_TRUE(DPtoLP(context_, &point, 1));
        return point;
    }

    HDC context_ = CreateCompatibleDC(nullptr);
};

void ExpectPoint(const POINT& point, LONG x, LONG y) {
    EXPECT_EQ(point.x, x);
    EXPECT_EQ(point.y, y);
}

}  // namespace

TEST_F(Contexts, BeginWithPixels) {
    EXPECT_EQ(GetMapMode(context_), MM_TEXT);
    ExpectPoint(ToDevice(10, -20), 10, -20);
    ExpectPoint(ToPage(10, -20), 10, -20);
    EXPECT_EQ(GetDeviceCaps(context_, LOGPIXELSX), 96);
    EXPECT_EQ(GetDeviceCaps(context_, HORZRES), 1280);
    EXPECT_EQ(GetDeviceCaps(context_, 12345), 0);
}

TEST_F(Contexts, HaveModesWithFixedScales) {
    static const struct {
        const char* label;
        int mode;
        LONG perInch;
    } kRows[] = {
        {"tenths of a millimetre", MM_LOMETRIC, 254}, {"hundredths of a millimetre", MM_HIMETRIC, 2540},
        {"hundredths of an inch", MM_LOENGLISH, 100}, {"thousandths of an inch", MM_HIENGLISH, 1000},
        {"twentieths of a point", MM_TWIPS, 1440},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_NE(SetMapMode(context_, row.mode), 0);
        const POINT inch = ToDevice(row.perInch, row.perInch);
        EXPECT_EQ(inch.x, 96);
        EXPECT_EQ(inch.y, -96) << "the page's y goes upwards";
        SIZE before = {};
        EXPECT_TRUE(SetWindowExtEx(context_, 5, 5, &before));
        SIZE after = {};
        EXPECT_TRUE(GetWindowExtEx(context_, &after));
        EXPECT_EQ(after.cx, before.cx) << "its extents are fixed";
    }
    EXPECT_EQ(SetMapMode(context_, 0), 0);
    EXPECT_EQ(SetMapMode(context_, 9), 0);
    EXPECT_EQ(GetMapMode(context_), MM_TWIPS);
}

TEST_F(Contexts, MapBetweenExtentsAndOrigins) {
    SetMapMode(context_, MM_ANISOTROPIC);
    SIZE before = {};
    EXPECT_TRUE(SetWindowExtEx(context_, 200, 100, &before));
    EXPECT_EQ(before.cx, 1);
    EXPECT_TRUE(SetViewportExtEx(context_, 100, -200, nullptr));
    POINT origin = {9, 9};
    EXPECT_TRUE(SetWindowOrgEx(context_, 10, 20, &origin));
    EXPECT_EQ(origin.x, 0);
    EXPECT_TRUE(SetViewportOrgEx(context_, 3, 4, nullptr));
    ExpectPoint(ToDevice(30, 20), 13, 4);
    ExpectPoint(ToDevice(11, 21), 4, 2);  // half a pixel goes up
    ExpectPoint(ToPage(13, 4), 30, 20);
    EXPECT_FALSE(SetWindowExtEx(context_, 0, 1, nullptr));
    EXPECT_FALSE(SetViewportExtEx(context_, 1, 0, nullptr));
    EXPECT_TRUE(GetViewportOrgEx(context_, &origin));
    EXPECT_EQ(origin.y, 4);
}

TEST_F(Contexts, KeepOneScaleOnBothAxes) {
    SetMapMode(context_, MM_ISOTROPIC);
    EXPECT_TRUE(SetWindowExtEx(context_, 100, 100, nullptr));
    EXPECT_TRUE(SetViewportExtEx(context_, 200, -500, nullptr));
    SIZE viewport = {};
    EXPECT_TRUE(GetViewportExtEx(context_, &viewport));
    EXPECT_EQ(viewport.cx, 200);
    EXPECT_EQ(viewport.cy, -200);
}

TEST_F(Contexts, KeepTheFarthestPointsInRange) {
    SetMapMode(context_, MM_ANISOTROPIC);
    SetWindowExtEx(context_, 1, 1, nullptr);
    SetViewportExtEx(context_, 1000, -1000, nullptr);
    ExpectPoint(ToDevice(2147483647, 2147483647), 2147483647, -2147483647 - 1);
}

TEST_F(Contexts, AreNoOthers) {
    const HDC none = nullptr;
    POINT point = {1, 2};
    EXPECT_FALSE(LPtoDP(none, &point, 1));
    EXPECT_FALSE(DPtoLP(none, &point, 1));
    EXPECT_EQ(GetMapMode(none), 0);
    EXPECT_FALSE(DeleteDC(none));
    EXPECT_FALSE(LPtoDP(context_, nullptr, 1));
    EXPECT_TRUE(LPtoDP(context_, nullptr, 0));
    const HDC second = CreateCompatibleDC(context_);
    EXPECT_TRUE(DeleteDC(second));
    EXPECT_FALSE(DeleteDC(second));
    EXPECT_EQ(CreateCompatibleDC(second), nullptr);
}
