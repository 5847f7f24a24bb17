#include <gtest/gtest.h>

#include <afxwin.h>

#include "tkkernel/platform.h"

namespace {

struct Numbers {
    LONG left, top, right, bottom;
};

void ExpectRect(const RECT& rect, const Numbers& numbers) {
    EXPECT_EQ(rect.left, numbers.left);
    EXPECT_EQ(rect.top, numbers.top);
    EXPECT_EQ(rect.right, numbers.right);
    EXPECT_EQ(rect.bottom, numbers.bottom);
}

constexpr struct {
    const char* label;
    int mode;
    Numbers before;
    Numbers toOther;
    Numbers fromOther;
} kRows[] = {
    {"tenths of a millimetre",
     MM_LOMETRIC,
     {3284, 1952, 1000, -1000},
     {2106, 1289, 641, -660},
     {5120, 2956, 1559, -1514}},
    {"twentieths of a point", MM_TWIPS, {18615, 11066, -7, 1}, {11940, 7305, -4, 0}, {29021, 16763, -10, 1}},
    {"pixels", MM_TEXT, {1, 2, 3, -4}, {1, 2, 3, -4}, {1, 2, 3, -4}},
    {"a mode that does not exist", 99, {1, 2, 3, -4}, {1, 2, 3, -4}, {1, 2, 3, -4}},
    // 2000000 * 2106 and * 3284 do not fit into 32 bits.
    {"beyond 32 bits", MM_LOMETRIC, {2000000, 0, 0, 0}, {-25264, 0, 0, 0}, {-960082, 0, 0, 0}},
};

TEST(NTtoWin98, ScalesEachCoordinateAndCuts) {
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        RECT rect = {row.before.left, row.before.top, row.before.right, row.before.bottom};
        NTtoWin98(&rect, row.mode);
        ExpectRect(rect, row.toOther);
        SIZE size = {row.before.left, row.before.top};
        NTtoWin98(&size, row.mode);
        EXPECT_EQ(size.cx, row.toOther.left);
        EXPECT_EQ(size.cy, row.toOther.top);
    }
    NTtoWin98(static_cast<RECT*>(nullptr), MM_TWIPS);
    NTtoWin98(static_cast<SIZE*>(nullptr), MM_TWIPS);
}

TEST(Win98toNT, ScalesByTheInverse) {
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        RECT rect = {row.before.left, row.before.top, row.before.right, row.before.bottom};
        Win98toNT(&rect, row.mode);
        ExpectRect(rect, row.fromOther);
        SIZE size = {row.before.left, row.before.top};
        Win98toNT(&size, row.mode);
        EXPECT_EQ(size.cx, row.fromOther.left);
        EXPECT_EQ(size.cy, row.fromOther.top);
    }
    Win98toNT(static_cast<RECT*>(nullptr), MM_TWIPS);
    Win98toNT(static_cast<SIZE*>(nullptr), MM_TWIPS);
}

class Drawing : public testing::Test {
protected:
    Drawing() { EXPECT_TRUE(context_.CreateCompatibleDC(nullptr)); }

    CDC context_;
};

TEST_F(Drawing, MapsWithoutScalingInOtherModes) {
    EXPECT_EQ(context_.SetMapMode(MM_ANISOTROPIC), MM_TEXT);
    context_.SetWindowExt(100, 100);
    context_.SetViewportExt(200, 300);
    context_.SetViewportOrg(5, 7);
    POINT point = {10, 20};
    LPtoDP(&context_, &point);
    EXPECT_EQ(point.x, 25);
    EXPECT_EQ(point.y, 67);
    DPtoLP(&context_, &point);
    EXPECT_EQ(point.x, 10);
    EXPECT_EQ(point.y, 20);
    RECT rect = {0, 0, 10, 20};
    LPtoDP(&context_, &rect);
    ExpectRect(rect, {5, 7, 25, 67});
    DPtoLP(&context_, &rect);
    ExpectRect(rect, {0, 0, 10, 20});
    SIZE size = {10, 20};
    LPtoDP(&context_, &size);
    EXPECT_EQ(size.cx, 20) << "a size has no origin";
    EXPECT_EQ(size.cy, 60);
    DPtoLP(&context_, &size);
    EXPECT_EQ(size.cx, 10);
    EXPECT_EQ(size.cy, 20);
}

TEST_F(Drawing, ScalesBeforeMappingToTheDevice) {
    context_.SetMapMode(MM_LOMETRIC);
    POINT expected = {5120, 2956};  // Win98toNT of the point
    ASSERT_TRUE(::LPtoDP(context_.GetSafeHdc(), &expected, 1));
    POINT point = {3284, 1952};
    LPtoDP(&context_, &point);
    EXPECT_EQ(point.x, expected.x);
    EXPECT_EQ(point.y, expected.y);
}

TEST_F(Drawing, ScalesAfterMappingToThePage) {
    context_.SetMapMode(MM_TWIPS);
    POINT expected = {640, 512};
    ASSERT_TRUE(::DPtoLP(context_.GetSafeHdc(), &expected, 1));
    SIZE scaled = {expected.x, expected.y};
    NTtoWin98(&scaled, MM_TWIPS);
    POINT point = {640, 512};
    DPtoLP(&context_, &point);
    EXPECT_EQ(point.x, scaled.cx);
    EXPECT_EQ(point.y, scaled.cy);
    EXPECT_LT(point.y, 0) << "the page's y goes upwards";
}

TEST_F(Drawing, ScalesRectanglesAndSizesLikePoints) {
    for (const int mode : {MM_LOMETRIC, MM_TWIPS}) {
        SCOPED_TRACE(mode);
        context_.SetMapMode(mode);
        const RECT page = {100, -200, 1842, 1952};
        const RECT device = {64, 512, 640, 100};
        const HDC bare = context_.GetSafeHdc();

        RECT scaled = page;
        Win98toNT(&scaled, mode);
        POINT corners[] = {{scaled.left, scaled.top}, {scaled.right, scaled.bottom}};
        ASSERT_TRUE(::LPtoDP(bare, corners, 2));
        RECT rect = page;
        LPtoDP(&context_, &rect);
        ExpectRect(rect, {corners[0].x, corners[0].y, corners[1].x, corners[1].y});

        POINT mapped[] = {{device.left, device.top}, {device.right, device.bottom}};
        ASSERT_TRUE(::DPtoLP(bare, mapped, 2));
        RECT expected = {mapped[0].x, mapped[0].y, mapped[1].x, mapped[1].y};
        NTtoWin98(&expected, mode);
        rect = device;
        DPtoLP(&context_, &rect);
        ExpectRect(rect, {expected.left, expected.top, expected.right, expected.bottom});

        SIZE size = {1842, 1952};
        SIZE onDevice = size;
        Win98toNT(&onDevice, mode);
        context_.LPtoDP(&onDevice);
        LPtoDP(&context_, &size);
        EXPECT_EQ(size.cx, onDevice.cx);
        EXPECT_EQ(size.cy, onDevice.cy);
        EXPECT_GT(size.cy, 0) << "a size has no sign";

        SIZE onPage = {640, 512};
        context_.DPtoLP(&onPage);
        NTtoWin98(&onPage, mode);
        size = {640, 512};
        DPtoLP(&context_, &size);
        EXPECT_EQ(size.cx, onPage.cx);
        EXPECT_EQ(size.cy, onPage.cy);
    }
}

TEST_F(Drawing, OfNothingChangesNothing) {
    POINT point = {1, 2};
    LPtoDP(nullptr, &point);
    DPtoLP(nullptr, &point);
    EXPECT_EQ(point.x, 1);
    LPtoDP(&context_, static_cast<POINT*>(nullptr));
    LPtoDP(&context_, static_cast<RECT*>(nullptr));
    LPtoDP(&context_, static_cast<SIZE*>(nullptr));
    DPtoLP(&context_, static_cast<POINT*>(nullptr));
    DPtoLP(&context_, static_cast<RECT*>(nullptr));
    DPtoLP(&context_, static_cast<SIZE*>(nullptr));
}

}  // namespace
