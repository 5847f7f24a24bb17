#include <gtest/gtest.h>

#include <afxwin.h>

#include <cstring>

#include "tkkernel/platform.h"

namespace {

class Ledger : public CObject {
    DECLARE_DYNAMIC(Ledger)
};
IMPLEMENT_DYNAMIC(Ledger, CObject)

class CashLedger : public Ledger {
    DECLARE_DYNAMIC(CashLedger)
};
IMPLEMENT_DYNAMIC(CashLedger, Ledger)

TEST(IsValidClass, KnowsTheClassAndItsAncestors) {
    CashLedger cash;
    Ledger plain;
    EXPECT_EQ(IsValidClass(&cash, RUNTIME_CLASS(CashLedger)), 1);
    EXPECT_EQ(IsValidClass(&cash, RUNTIME_CLASS(Ledger)), 1);
    EXPECT_EQ(IsValidClass(&cash, RUNTIME_CLASS(CObject)), 1);
    EXPECT_EQ(IsValidClass(&plain, RUNTIME_CLASS(CashLedger)), 0);
    EXPECT_EQ(IsValidClass(&plain, RUNTIME_CLASS(CWnd)), 0);
    EXPECT_EQ(IsValidClass(&plain, nullptr), 0);
}

TEST(IsValidClass, IsZeroForMemoryThatCannotBeRead) {
    EXPECT_EQ(IsValidClass(nullptr, RUNTIME_CLASS(CObject)), 0);
    EXPECT_EQ(IsValidClass(reinterpret_cast<CObject*>(16), RUNTIME_CLASS(CObject)), 0);
}

TEST(IsValidWindow, IsOneWhileTheWindowLives) {
    CWnd window;
    EXPECT_EQ(IsValidWindow(&window), 0) << "it has none yet";
    ASSERT_TRUE(window.CreateEx(0, "STATIC", "stock", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr));
    EXPECT_EQ(IsValidWindow(&window), 1);
    CWnd other;
    other.m_hWnd = window.GetSafeHwnd();
    EXPECT_TRUE(window.DestroyWindow());
    EXPECT_EQ(IsValidWindow(&window), 0);
    EXPECT_EQ(IsValidWindow(&other), 0) << "the handle is stale";
    other.Detach();
    EXPECT_EQ(IsValidWindow(nullptr), 0);
}

TEST(IsNT, IsOneOnTheFamilyOfToday) {
    EXPECT_EQ(IsNT(), 1);
}

TEST(SetSecurity, LetsEverybodyIn) {
    SECURITY_ATTRIBUTES attributes;
    std::memset(&attributes, 0xCC, sizeof(attributes));
    ASSERT_EQ(SetSecurity(&attributes), 1);
    EXPECT_EQ(attributes.nLength, sizeof(SECURITY_ATTRIBUTES));
    EXPECT_TRUE(attributes.bInheritHandle);
    const auto* descriptor = static_cast<const SECURITY_DESCRIPTOR*>(attributes.lpSecurityDescriptor);
    ASSERT_NE(descriptor, nullptr);
    EXPECT_EQ(descriptor->Revision, SECURITY_DESCRIPTOR_REVISION);
    EXPECT_EQ(descriptor->Control & SE_DACL_PRESENT, SE_DACL_PRESENT);
    EXPECT_EQ(descriptor->Dacl, nullptr);
    EXPECT_EQ(descriptor->Owner, nullptr);
    LocalFree(attributes.lpSecurityDescriptor);
    EXPECT_EQ(SetSecurity(nullptr), 0);
}

}  // namespace
