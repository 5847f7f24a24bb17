// The other family of systems, whose version and memory this program answers for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <afxwin.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "support/noted_calls.h"
#include "tkkernel/platform.h"

namespace {

using testing::ElementsAre;

struct Family : tk::test::NotedCalls {
    DWORD version = 10;
    bool hasMemory = true;
    BOOL initialised = TRUE;
    BOOL listed = TRUE;
};
Family* family = nullptr;

}  // namespace

DWORD GetVersion() {
    return family->version;
}
HLOCAL LocalAlloc(UINT flags, SIZE_T size) {
    family->Note("allocate %X %d", flags, size >= sizeof(SECURITY_DESCRIPTOR));
    return family->hasMemory ? std::calloc(1, size) : nullptr;
}
HLOCAL LocalFree(HLOCAL memory) {
    family->Note("free %d", memory != nullptr);
    std::free(memory);
    return nullptr;
}
BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR, DWORD revision) {
    family->Note("initialise %u", revision);
    return family->initialised;
}
BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR, BOOL present, PACL list, BOOL byDefault) {
    family->Note("list %d %d %d", present, list != nullptr, byDefault);
    return family->listed;
}

namespace {

class FamilyCalls : public testing::Test {
protected:
    FamilyCalls() { family = &family_; }
    ~FamilyCalls() override { family = nullptr; }

    std::vector<std::string> Asked() { return family_.Take(); }

    Family family_;
};

TEST_F(FamilyCalls, TheTopBitOfTheVersionTellsThemApart) {
    for (const DWORD version : {0u, 0x0A280105u, 0x7FFFFFFFu}) {
        family_.version = version;
        EXPECT_EQ(IsNT(), 1) << version;
    }
    for (const DWORD version : {0x80000000u, 0xC0000A04u, 0xFFFFFFFFu}) {
        family_.version = version;
        EXPECT_EQ(IsNT(), 0) << version;
    }
}

TEST_F(FamilyCalls, CoordinatesStayAsTheyAreOnTheOtherOne) {
    CDC context;
    ASSERT_TRUE(context.CreateCompatibleDC(nullptr));
    context.SetMapMode(MM_LOMETRIC);
    POINT onDevice = {3284, 1952};
    ASSERT_TRUE(::LPtoDP(context.GetSafeHdc(), &onDevice, 1));
    POINT onPage = {640, 512};
    ASSERT_TRUE(::DPtoLP(context.GetSafeHdc(), &onPage, 1));

    family_.version = 0xC0000A04;
    RECT rect = {3284, 1952, 1000, -1000};
    NTtoWin98(&rect, MM_LOMETRIC);
    Win98toNT(&rect, MM_TWIPS);
    EXPECT_EQ(rect.left, 3284);
    EXPECT_EQ(rect.top, 1952);
    EXPECT_EQ(rect.right, 1000);
    EXPECT_EQ(rect.bottom, -1000);
    SIZE size = {3284, 1952};
    NTtoWin98(&size, MM_TWIPS);
    Win98toNT(&size, MM_LOMETRIC);
    EXPECT_EQ(size.cx, 3284);
    EXPECT_EQ(size.cy, 1952);
    POINT point = {3284, 1952};
    LPtoDP(&context, &point);
    EXPECT_EQ(point.x, onDevice.x);
    EXPECT_EQ(point.y, onDevice.y);
    point = {640, 512};
    DPtoLP(&context, &point);
    EXPECT_EQ(point.x, onPage.x);
    EXPECT_EQ(point.y, onPage.y);
}

TEST_F(FamilyCalls, AnOpenDoorIsMadeStepByStep) {
    SECURITY_ATTRIBUTES attributes = {};
    ASSERT_EQ(SetSecurity(&attributes), 1);
    EXPECT_THAT(Asked(), ElementsAre("allocate 40 1", "initialise 1", "list 1 0 0"));
    EXPECT_EQ(attributes.nLength, sizeof(SECURITY_ATTRIBUTES));
    EXPECT_EQ(attributes.bInheritHandle, TRUE);
    std::free(attributes.lpSecurityDescriptor);
}

TEST_F(FamilyCalls, AStepThatFailsLeavesAnEmptyRecordAndNoMemory) {
    const auto refused = [&] {
        SECURITY_ATTRIBUTES attributes;
        std::memset(&attributes, 0xCC, sizeof(attributes));
        EXPECT_EQ(SetSecurity(&attributes), 0);
        EXPECT_EQ(attributes.nLength, 0u);
        EXPECT_EQ(attributes.lpSecurityDescriptor, nullptr);
        EXPECT_EQ(attributes.bInheritHandle, FALSE);
        return Asked();
    };
    family_.listed = FALSE;
    EXPECT_THAT(refused(), ElementsAre("allocate 40 1", "initialise 1", "list 1 0 0", "free 1"));
    family_.initialised = FALSE;
    EXPECT_THAT(refused(), ElementsAre("allocate 40 1", "initialise 1", "free 1"));
    family_.hasMemory = false;
    EXPECT_THAT(refused(), ElementsAre("allocate 40 1"));
}

}  // namespace
