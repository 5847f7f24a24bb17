#include <gtest/gtest.h>

#include "tests/session/sync_names.h"
#include "tests/support/child_process.h"
#include "tkkernel/sync.h"

using namespace tk::test;

namespace {

bool Begins(const CString& text, const char* with) {
    return std::string(text).starts_with(with);
}

}  // namespace

TEST(NamedSemaphore, IsAGateThatStaysOpen) {
    const std::string name = OwnName("gate");
    CTSemaphore one;
    CTSemaphore two;
    ASSERT_TRUE(one.OpenSemaphoreA(name.c_str()));
    ASSERT_TRUE(two.OpenSemaphoreA(name.c_str()));
    EXPECT_STREQ(two.GetEventName(), name.c_str());
    EXPECT_FALSE(one.WaitSemaphore(0)) << "made with count 0";
    EXPECT_FALSE(two.WaitSemaphore(10));
    EXPECT_TRUE(one.SetSemaphore());
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(one.WaitSemaphore(0));
        EXPECT_TRUE(two.WaitSemaphore(1000));
    }
    EXPECT_TRUE(one.CloseSemaphore());
    EXPECT_FALSE(one.CloseSemaphore()) << "the handle keeps its value and names nothing any more";
    EXPECT_TRUE(two.CloseSemaphore());
}

TEST(NamedSemaphore, CountsAsFarAsAPositiveNumberOf32Bits) {
    const std::string name = OwnName("most");
    CTSemaphore gate;
    ASSERT_TRUE(gate.OpenSemaphoreA(name.c_str()));
    HANDLE same = OpenSemaphoreA(SEMAPHORE_ALL_ACCESS, FALSE, name.c_str());
    ASSERT_NE(same, nullptr);
    LONG before = -1;
    EXPECT_TRUE(ReleaseSemaphore(same, 0x7FFFFFFF, &before));
    EXPECT_EQ(before, 0);
    EXPECT_FALSE(gate.SetSemaphore());
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_TOO_MANY_POSTS));
    EXPECT_TRUE(gate.WaitSemaphore(0)) << "takes one and puts it back";
    EXPECT_TRUE(CloseHandle(same));
    EXPECT_TRUE(gate.CloseSemaphore());
}

TEST(NamedSemaphore, FailsWithoutAHandleAndKeepsSilent) {
    CTSemaphore semaphore;
    EXPECT_FALSE(semaphore.SetSemaphore());
    EXPECT_FALSE(semaphore.WaitSemaphore(0)) << "what a failed wait puts back cannot be put back";
    EXPECT_FALSE(semaphore.CloseSemaphore());
    EXPECT_STREQ(semaphore.GetLastErrorString(), "");
    EXPECT_STREQ(semaphore.GetEventName(), "");
}

TEST(NamedSemaphore, WithoutANameIsItsOwn) {
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        SCOPED_TRACE(name == nullptr ? "null" : "empty");
        CTSemaphore one;
        CTSemaphore two;
        ASSERT_TRUE(one.OpenSemaphoreA(name));
        ASSERT_TRUE(two.OpenSemaphoreA(name));
        EXPECT_TRUE(one.SetSemaphore());
        EXPECT_FALSE(two.WaitSemaphore(0));
        EXPECT_TRUE(one.CloseSemaphore() && two.CloseSemaphore());
    }
}

TEST(NamedSemaphore, LeavesItsHandleOpenWhenItIsDestroyed) {
    const std::string name = OwnName("left");
    {
        CTSemaphore semaphore;
        ASSERT_TRUE(semaphore.OpenSemaphoreA(name.c_str()));
        ASSERT_TRUE(semaphore.SetSemaphore());
    }
    CTSemaphore later;
    ASSERT_TRUE(later.OpenSemaphoreA(name.c_str()));
    EXPECT_TRUE(later.WaitSemaphore(0)) << "the same gate, open as before";
}

TEST(NamedSemaphore, OpensASecondTimeAfterAStaleCode) {
    const std::string name = OwnName("stale");
    CTSemaphore made;
    ASSERT_TRUE(made.OpenSemaphoreA(name.c_str()));

    CTSemaphore plain;
    SetLastError(0);
    ASSERT_TRUE(plain.OpenSemaphoreA(name.c_str()));
    EXPECT_EQ(GetLastError(), 0u) << "opened, and that was all";

    CTSemaphore twice;
    SetLastError(2);
    ASSERT_TRUE(twice.OpenSemaphoreA(name.c_str()));
    EXPECT_EQ(GetLastError(), 183u) << "opened, and then created where it was already";
    ASSERT_TRUE(twice.SetSemaphore());
    EXPECT_TRUE(made.WaitSemaphore(0)) << "the same object either way";

    EXPECT_TRUE(made.CloseSemaphore() && plain.CloseSemaphore() && twice.CloseSemaphore());
    EXPECT_TRUE(SemaphoreExists(name)) << "the handle of the first step is still open";
}

TEST(NamedSemaphore, SharesItsHandleWithCopies) {
    const std::string name = OwnName("copies");
    CTSemaphore semaphore;
    ASSERT_TRUE(semaphore.OpenSemaphoreA(name.c_str()));
    CTSemaphore copy(semaphore);
    CTSemaphore assigned;
    assigned = semaphore;
    EXPECT_STREQ(copy.GetEventName(), name.c_str());
    EXPECT_TRUE(copy.CloseSemaphore());
    EXPECT_FALSE(semaphore.SetSemaphore());
    EXPECT_FALSE(assigned.CloseSemaphore());
    EXPECT_FALSE(SemaphoreExists(name));
}

TEST(NamedSemaphore, FailsOnTheNameOfAnotherKind) {
    const std::string name = OwnName("kind");
    CTEvent event;
    ASSERT_TRUE(event.OpenEventA(name.c_str()));
    CTSemaphore semaphore;
    EXPECT_FALSE(semaphore.OpenSemaphoreA(name.c_str()));
    EXPECT_TRUE(Begins(semaphore.GetLastErrorString(), "错误[0x00000006]:")) << semaphore.GetLastErrorString();
}

TEST(NamedSemaphore, SaysWhyANameCannotBe) {
    static const struct {
        const char* label;
        std::string name;
        const char* error;
    } kRows[] = {
        {"261 characters", std::string(261, 'n'), "错误[0x000000CE]:"},
        {"thousands of them", std::string(70000, 'n'), "错误[0x000000CE]:"},
        {"a backslash inside", OwnName("a\\b"), "错误[0x00000003]:"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CTSemaphore semaphore;
        EXPECT_FALSE(semaphore.OpenSemaphoreA(row.name.c_str()));
        EXPECT_TRUE(Begins(semaphore.GetLastErrorString(), row.error)) << semaphore.GetLastErrorString();
        EXPECT_STREQ(semaphore.GetEventName(), row.name.c_str());
        EXPECT_FALSE(semaphore.SetSemaphore());
        EXPECT_FALSE(semaphore.CloseSemaphore());
    }
}

TEST(NamedSemaphore, OpensTheGateOfAnotherProcess) {
    const std::string name = OwnName("闸门");
    CTSemaphore gate;
    ASSERT_TRUE(gate.OpenSemaphoreA(name.c_str()));
    ChildProcess first("pass-gate");
    ChildProcess second("pass-gate");
    first.Say(name);
    second.Say(name);
    ASSERT_EQ(first.Hear(), "ready");
    ASSERT_EQ(second.Hear(), "ready");
    ASSERT_TRUE(gate.SetSemaphore());
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_TRUE(gate.WaitSemaphore(0)) << "everybody put back what he took";
    EXPECT_TRUE(gate.CloseSemaphore());
}
