#include <gtest/gtest.h>

#include "tkkernel/sync.h"

namespace {

constexpr LONGLONG kSecond = 10'000'000;

/// The local time that many 100 ns units from now.
SYSTEMTIME LocalTimeIn(LONGLONG units) {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    LARGE_INTEGER value;
    value.LowPart = now.dwLowDateTime;
    value.HighPart = static_cast<LONG>(now.dwHighDateTime);
    value.QuadPart += units;
    const FILETIME moment = {value.LowPart, static_cast<DWORD>(value.HighPart)};
    FILETIME local;
    SYSTEMTIME parts;
    FileTimeToLocalFileTime(&moment, &local);
    FileTimeToSystemTime(&local, &parts);
    return parts;
}

}  // namespace

TEST(WaitTimer, SignalsWhenItsMomentComes) {
    SYSTEMTIME when = LocalTimeIn(kSecond / 10);
    HANDLE timer = SetWaitForTimer(when, 0, 0);
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(WaitForSingleObject(timer, 20000), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_OBJECT_0) << "a wait does not take the signal";
    EXPECT_TRUE(CloseHandle(timer));
}

TEST(WaitTimer, IsNotSignalledBefore) {
    SYSTEMTIME when = LocalTimeIn(3600 * kSecond);
    HANDLE timer = SetWaitForTimer(when, 0, 0);
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(WaitForSingleObject(timer, 20), WAIT_TIMEOUT);
    EXPECT_TRUE(CloseHandle(timer));
}

TEST(WaitTimer, SignalsAtOnceForAMomentThatHasPassed) {
    SYSTEMTIME when = LocalTimeIn(-3600 * kSecond);
    HANDLE timer = SetWaitForTimer(when, 0, 0);
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(WaitForSingleObject(timer, 20000), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(timer));
}

// East of Greenwich this moment comes before the calendar of universal time begins.
TEST(WaitTimer, SignalsAtOnceForTheFirstMomentOfTheCalendar) {
    SYSTEMTIME when = {1601, 1, 1, 1, 0, 0, 0, 0};
    HANDLE timer = SetWaitForTimer(when, 0, 0);
    if (timer == nullptr) {
        GTEST_SKIP() << "this system has no universal time for it";
    }
    EXPECT_EQ(WaitForSingleObject(timer, 20000), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(timer));
}

TEST(WaitTimer, DoesNotLookAtTheDayOfTheWeek) {
    SYSTEMTIME when = LocalTimeIn(-kSecond);
    when.wDayOfWeek = 77;
    HANDLE timer = SetWaitForTimer(when, 0, 0);
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(WaitForSingleObject(timer, 20000), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(timer));
}

TEST(WaitTimer, StaysSignalledThroughItsPeriods) {
    SYSTEMTIME when = LocalTimeIn(kSecond / 20);
    HANDLE timer = SetWaitForTimer(when, 20, 0);
    ASSERT_NE(timer, nullptr);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(WaitForSingleObject(timer, 20000), WAIT_OBJECT_0);
    EXPECT_TRUE(KillWaitForTimer(timer));
    EXPECT_TRUE(CloseHandle(timer));
}

TEST(WaitTimer, IsStoppedAndKeepsItsHandle) {
    SYSTEMTIME when = LocalTimeIn(3600 * kSecond);
    HANDLE timer = SetWaitForTimer(when, 1000, 0);
    ASSERT_NE(timer, nullptr);
    const HANDLE before = timer;
    EXPECT_TRUE(KillWaitForTimer(timer));
    EXPECT_EQ(timer, before);
    EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(KillWaitForTimer(timer)) << "stopped already";
    EXPECT_TRUE(CloseHandle(timer));
    EXPECT_FALSE(KillWaitForTimer(timer));
    HANDLE none = nullptr;
    EXPECT_FALSE(KillWaitForTimer(none));
}

TEST(WaitTimer, RefusesWhatIsNoDate) {
    static const struct {
        const char* label;
        WORD month;
        WORD day;
        WORD hour;
    } kRows[] = {
        {"month 0", 0, 1, 0},     {"month 13", 13, 1, 0}, {"February 30", 2, 30, 0},
        {"24 o'clock", 1, 1, 24}, {"day 0", 1, 0, 0},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SYSTEMTIME when = LocalTimeIn(0);
        when.wMonth = row.month;
        when.wDay = row.day;
        when.wHour = row.hour;
        EXPECT_EQ(SetWaitForTimer(when, 0, 0), nullptr);
    }
}

TEST(WaitTimer, IsSetWhetherTheMachineCanBeWokenOrNot) {
    SYSTEMTIME when = LocalTimeIn(kSecond / 20);
    HANDLE timer = SetWaitForTimer(when, 0, 1);
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(WaitForSingleObject(timer, 20000), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(timer));
}
