#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

class Timers : public KernelObjects, public testing::WithParamInterface<const char*> {
protected:
    Handle Make(bool manual) { return CreateWaitableTimerA(nullptr, manual, GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(UnnamedAndNamed, Timers, testing::Values(nullptr, "Stock.Evening"),
                         [](const auto& row) { return std::string(row.param == nullptr ? "Unnamed" : "Named"); });

constexpr LONGLONG kMillisecond = 10'000;
constexpr LONGLONG kHour = 3'600'000 * kMillisecond;
constexpr DWORD kLong = 60'000;

BOOL Set(HANDLE timer, LONGLONG due, LONG period = 0) {
    LARGE_INTEGER value;
    value.QuadPart = due;
    return SetWaitableTimer(timer, &value, period, nullptr, nullptr, FALSE);
}

LONGLONG UtcIn(LONGLONG units) {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return (static_cast<LONGLONG>(now.dwHighDateTime) << 32 | now.dwLowDateTime) + units;
}

}  // namespace

TEST_P(Timers, AreNotSignalledBeforeTheyAreSet) {
    const Handle timer = Make(true);
    EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(timer, 10), WAIT_TIMEOUT);
}

TEST_P(Timers, SignalAfterASpanAndAtAMoment) {
    for (const bool manual : {false, true}) {
        SCOPED_TRACE(manual ? "manual" : "automatic");
        const Handle timer = Make(manual);
        ASSERT_TRUE(Set(timer, -50 * kMillisecond));
        EXPECT_EQ(WaitForSingleObject(timer, kLong), WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(timer, 0), manual ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
        ASSERT_TRUE(Set(timer, UtcIn(50 * kMillisecond)));
        EXPECT_EQ(WaitForSingleObject(timer, INFINITE), WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(timer, 0), manual ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
    }
}

TEST_P(Timers, SignalAtOnceForWhatHasPassed) {
    const Handle timer = Make(true);
    for (const LONGLONG due : {LONGLONG{0}, LONGLONG{1}, UtcIn(-kHour)}) {
        ASSERT_TRUE(Set(timer, -kHour));
        EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_TIMEOUT) << "setting takes the signal back";
        ASSERT_TRUE(Set(timer, due));
        EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_OBJECT_0);
    }
}

TEST_P(Timers, TakeDueTimesOfAnySize) {
    const Handle timer = Make(true);
    for (const LONGLONG due : {INT64_MIN, INT64_MIN + 1, INT64_MAX, INT64_MAX - 1, -INT64_MAX / 2}) {
        SCOPED_TRACE(due);
        ASSERT_TRUE(Set(timer, due, 1));
        EXPECT_EQ(WaitForSingleObject(timer, 1), WAIT_TIMEOUT);
    }
}

TEST_P(Timers, SignalEveryPeriodToWhoTakesTheSignal) {
    const Handle timer = Make(false);
    ASSERT_TRUE(Set(timer, UtcIn(20 * kMillisecond), 10));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(WaitForSingleObject(timer, kLong), WAIT_OBJECT_0);
    Sleep(50);
    EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_OBJECT_0) << "missed periods are one signal";
}

TEST_P(Timers, StaySignalledThroughTheirPeriodsWhenTheyAreManual) {
    const Handle timer = Make(true);
    ASSERT_TRUE(Set(timer, -10 * kMillisecond, 10));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(WaitForSingleObject(timer, kLong), WAIT_OBJECT_0);
}

TEST_P(Timers, StopWithoutASignal) {
    const Handle timer = Make(true);
    ASSERT_TRUE(Set(timer, -kHour, 10));
    EXPECT_TRUE(CancelWaitableTimer(timer));
    EXPECT_EQ(WaitForSingleObject(timer, 20), WAIT_TIMEOUT);
    ASSERT_TRUE(Set(timer, 0));
    EXPECT_TRUE(CancelWaitableTimer(timer));
    EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_OBJECT_0) << "a signal that is there stays";
}

TEST_P(Timers, KeepASignalWhoseMomentCameBeforeTheyWereStopped) {
    const Handle timer = Make(true);
    ASSERT_TRUE(Set(timer, -kMillisecond));
    Sleep(20);
    EXPECT_TRUE(CancelWaitableTimer(timer));
    EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_OBJECT_0);
}

TEST_F(KernelObjects, OfWhichOneMayOnlyWaitAreNotSetOrStopped) {
    const Handle timer = CreateWaitableTimerA(nullptr, TRUE, "Stock.Evening");
    const Handle waitsOnly = OpenWaitableTimerA(SYNCHRONIZE, FALSE, "Stock.Evening");
    LARGE_INTEGER due = {};
    EXPECT_FALSE(SetWaitableTimer(waitsOnly, &due, 0, nullptr, nullptr, FALSE));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(CancelWaitableTimer(waitsOnly));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(WaitForSingleObject(waitsOnly, 0), WAIT_TIMEOUT);
}

TEST_P(Timers, WakeWhoWaitsWhenTheyAreSetAnew) {
    const Handle timer = Make(false);
    ASSERT_TRUE(Set(timer, -kHour));
    Waiter waiter([&] { return WaitForSingleObject(timer, INFINITE); });
    waiter.UntilAsleep();
    ASSERT_TRUE(Set(timer, -20 * kMillisecond));
    EXPECT_EQ(waiter.Result(), WAIT_OBJECT_0);
    Waiter second([&] { return WaitForSingleObject(timer, INFINITE); });
    second.UntilAsleep();
    EXPECT_TRUE(CancelWaitableTimer(timer));
    EXPECT_FALSE(second.IsDone());
    ASSERT_TRUE(Set(timer, 0));
    EXPECT_EQ(second.Result(), WAIT_OBJECT_0);
}

TEST_P(Timers, GoToOneOfThoseWhoWaitUnlessTheyAreManual) {
    const Handle timer = Make(false);
    ASSERT_TRUE(Set(timer, -kHour));
    Waiter one([&] { return WaitForSingleObject(timer, INFINITE); });
    one.UntilAsleep();
    Waiter two([&] { return WaitForSingleObject(timer, 300); });
    two.UntilAsleep();
    ASSERT_TRUE(Set(timer, 0));
    EXPECT_EQ(one.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(two.Result(), WAIT_TIMEOUT);
}

TEST_P(Timers, EndWaitsForSeveralObjects) {
    const Handle timer = Make(false);
    const Handle event = AutoEvent();
    const Handle shared = AutoEvent("Stock.Other");
    const HANDLE three[] = {event, timer, shared};
    ASSERT_TRUE(Set(timer, -20 * kMillisecond));
    EXPECT_EQ(WaitForMultipleObjects(3, three, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
    SetEvent(event);
    SetEvent(shared);
    ASSERT_TRUE(Set(timer, UtcIn(20 * kMillisecond)));
    EXPECT_EQ(WaitForMultipleObjects(3, three, TRUE, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForMultipleObjects(3, three, FALSE, 0), WAIT_TIMEOUT);
}

TEST_P(Timers, RefuseWhatTheyCannotDo) {
    const Handle timer = Make(true);
    EXPECT_FALSE(Set(timer, 0, -1));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(SetWaitableTimer(timer, nullptr, 0, nullptr, nullptr, FALSE));
    EXPECT_EQ(GetLastError(), ERROR_NOACCESS);
    LARGE_INTEGER due = {};
    const PTIMERAPCROUTINE routine = [](LPVOID, DWORD, DWORD) {};
    EXPECT_FALSE(SetWaitableTimer(timer, &due, 0, routine, nullptr, FALSE));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_TIMEOUT) << "never set";
}

TEST_P(Timers, AreSetAlsoWhereTheMachineCannotBeWoken) {
    const Handle timer = Make(true);
    LARGE_INTEGER due;
    due.QuadPart = -20 * kMillisecond;
    SetLastError(77);
    EXPECT_TRUE(SetWaitableTimer(timer, &due, 0, nullptr, nullptr, TRUE));
    const DWORD code = GetLastError();
    EXPECT_TRUE(code == 0 || code == ERROR_NOT_SUPPORTED) << code;
    EXPECT_EQ(WaitForSingleObject(timer, kLong), WAIT_OBJECT_0);
    SetLastError(77);
    EXPECT_TRUE(Set(timer, 0));
    EXPECT_EQ(GetLastError(), 0u);
}
