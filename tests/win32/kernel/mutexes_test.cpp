#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

class Mutexes : public KernelObjects, public testing::WithParamInterface<const char*> {
protected:
    Handle Make(bool owned = false) { return CreateMutexA(nullptr, owned, GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(UnnamedAndNamed, Mutexes, testing::Values(nullptr, "Stock.Lock"),
                         [](const auto& row) { return std::string(row.param == nullptr ? "Unnamed" : "Named"); });

DWORD TryElsewhere(HANDLE mutex) {
    return OnThread([&] {
        const DWORD result = WaitForSingleObject(mutex, 0);
        if (result != WAIT_TIMEOUT) ReleaseMutex(mutex);
        return result;
    });
}

}  // namespace

TEST_P(Mutexes, BelongToOneThreadAsOftenAsItTakesThem) {
    const Handle mutex = Make();
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    EXPECT_EQ(TryElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(TryElsewhere(mutex), WAIT_TIMEOUT) << "released once of twice";
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(TryElsewhere(mutex), WAIT_OBJECT_0);
    EXPECT_FALSE(ReleaseMutex(mutex));
    EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
}

TEST_P(Mutexes, AreReleasedByTheirOwnerAlone) {
    const Handle mutex = Make(true);
    EXPECT_FALSE(OnThread([&] { return ReleaseMutex(mutex); }));
    EXPECT_EQ(OnThread([&] { return ReleaseMutex(mutex) ? 0 : GetLastError(); }), ERROR_NOT_OWNER);
    EXPECT_EQ(TryElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(mutex)) << "owned from the start";
}

TEST_P(Mutexes, GoToTheNextWhenTheyAreReleased) {
    const Handle mutex = Make(true);
    Waiter waiter([&] {
        const DWORD result = WaitForSingleObject(mutex, INFINITE);
        return ReleaseMutex(mutex) ? result : WAIT_FAILED;
    });
    waiter.UntilAsleep();
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0) << "taken once more while somebody waits";
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_FALSE(waiter.IsDone());
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(waiter.Result(), WAIT_OBJECT_0);
}

TEST_P(Mutexes, AreAbandonedByAThreadThatEnds) {
    const Handle mutex = Make();
    OnThread([&] { return WaitForSingleObject(mutex, 0) + WaitForSingleObject(mutex, 0); });
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_ABANDONED) << "and owned now";
    EXPECT_EQ(TryElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0) << "said once";
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(TryElsewhere(mutex), WAIT_OBJECT_0);
}

TEST_P(Mutexes, AreAbandonedToSomebodyWhoWaits) {
    const Handle mutex = Make();
    const Handle owned = ManualEvent();
    const Handle end = ManualEvent();
    std::thread owner([&] {
        WaitForSingleObject(mutex, INFINITE);
        SetEvent(owned);
        WaitForSingleObject(end, INFINITE);
    });
    WaitForSingleObject(owned, INFINITE);
    Waiter waiter([&] {
        const DWORD result = WaitForSingleObject(mutex, INFINITE);
        return ReleaseMutex(mutex) ? result : WAIT_FAILED;
    });
    waiter.UntilAsleep();
    SetEvent(end);
    owner.join();
    EXPECT_EQ(waiter.Result(), WAIT_ABANDONED);
}

TEST_P(Mutexes, ReportAbandonmentWithTheirIndex) {
    const Handle mutex = Make();
    const Handle event = AutoEvent();
    OnThread([&] { return WaitForSingleObject(mutex, 0); });
    const HANDLE both[] = {event, mutex};
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), WAIT_ABANDONED_0 + 1);
    EXPECT_TRUE(ReleaseMutex(mutex));
    OnThread([&] { return WaitForSingleObject(mutex, 0); });
    SetEvent(event);
    EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, 0), WAIT_ABANDONED_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST_P(Mutexes, KeepAnOrdinaryNumberWhole) {
    const Handle mutex = Make();
    int number = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 3000; ++round) {
                WaitForSingleObject(mutex, INFINITE);
                ++number;
                ReleaseMutex(mutex);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(number, 18'000);
}

TEST_P(Mutexes, MayBeClosedWhileTheyAreOwned) {
    { const Handle mutex = Make(true); }
    const Handle again = Make();
    EXPECT_EQ(GetLastError(), 0u) << "a new one";
    EXPECT_EQ(TryElsewhere(again), WAIT_OBJECT_0);
}

TEST_P(Mutexes, MadeAgainAreNotOwned) {
    const bool named = GetParam() != nullptr;
    const Handle mutex = Make();
    const Handle again = Make(true);
    EXPECT_EQ(GetLastError(), named ? ERROR_ALREADY_EXISTS : 0u);
    EXPECT_EQ(TryElsewhere(mutex), WAIT_OBJECT_0) << "the wish to own it counts for a new one alone";
    EXPECT_EQ(ReleaseMutex(again) != FALSE, !named);
}
