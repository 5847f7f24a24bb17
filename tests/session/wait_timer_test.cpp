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
    static constexpr struct {
        const char* label;
        SYSTEMTIME when;
    } kRows[] = {
        {"month 0", {2003, 0, 0, 1, 0, 0, 0, 0}},
        {"month 13", {2003, 13, 0, 1, 0, 0, 0, 0}},
        {"day 0", {2003, 1, 0, 0, 0, 0, 0, 0}},
        {"February 30", {2004, 2, 0, 30, 0, 0, 0, 0}},
        {"April 31", {2003, 4, 0, 31, 0, 0, 0, 0}},
        {"24 o'clock", {2003, 1, 0, 1, 24, 0, 0, 0}},
        {"minute 60", {2003, 1, 0, 1, 0, 60, 0, 0}},
        {"second 60", {2003, 1, 0, 1, 0, 0, 60, 0}},
        {"millisecond 1000", {2003, 1, 0, 1, 0, 0, 0, 1000}},
        {"before the calendar", {1600, 12, 0, 31, 23, 59, 59, 999}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SYSTEMTIME when = row.when;
        SetLastError(0);
        EXPECT_EQ(SetWaitForTimer(when, 0, 0), nullptr);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    }
}

TEST(WaitTimer, KnowsLeapYears) {
    SYSTEMTIME when = {2004, 2, 0, 29, 0, 0, 0, 0};
    HANDLE timer = SetWaitForTimer(when, 0, 0);
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(WaitForSingleObject(timer, 20000), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(timer));
}

TEST(WaitTimer, IsSetWhetherTheMachineCanBeWokenOrNot) {
    SYSTEMTIME when = LocalTimeIn(kSecond / 20);
    HANDLE timer = SetWaitForTimer(when, 0, 1);
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(WaitForSingleObject(timer, 20000), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(timer));
}
