#include <signal.h>

#include <atomic>
#include <ctime>

#include "tests/win32/system/support.h"

using namespace tk::test;

TEST(CriticalSection, LetsItsOwnerInAgainAndOthersOnlyAfterwards) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    const auto tryElsewhere = [&] {
        return OnThread([&] {
            const BOOL entered = TryEnterCriticalSection(&section);
            if (entered) LeaveCriticalSection(&section);
            return entered;
        });
    };
    EnterCriticalSection(&section);
    EXPECT_TRUE(TryEnterCriticalSection(&section));
    EXPECT_FALSE(tryElsewhere());
    LeaveCriticalSection(&section);
    EXPECT_FALSE(tryElsewhere()) << "left once of twice";
    LeaveCriticalSection(&section);
    EXPECT_TRUE(tryElsewhere());
    DeleteCriticalSection(&section);
}

TEST(CriticalSection, KeepsAnOrdinaryNumberWhole) {
    CRITICAL_SECTION section;
    EXPECT_TRUE(InitializeCriticalSectionAndSpinCount(&section, 4000));
    long long sum = 0;
    std::thread threads[4];
    for (auto& thread : threads) {
        thread = std::thread([&] {
            for (int i = 0; i < 20'000; ++i) {
                EnterCriticalSection(&section);
                ++sum;
                LeaveCriticalSection(&section);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(sum, 80'000);
    DeleteCriticalSection(&section);
}

TEST(CriticalSection, LetsInWhoHasWaitedForLong) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    std::atomic<bool> wants = false;
    bool isLeft = false;  // written and read inside
    EnterCriticalSection(&section);
    std::thread waits([&] {
        wants = true;
        EnterCriticalSection(&section);
        EXPECT_TRUE(isLeft);
        LeaveCriticalSection(&section);
    });
    while (!wants)
        Sleep(1);
    Sleep(30);
    isLeft = true;
    LeaveCriticalSection(&section);
    waits.join();
    DeleteCriticalSection(&section);
}

TEST(Interlocked, GivesThePlatformsResults) {
    LONG value = 5;
    EXPECT_EQ(InterlockedIncrement(&value), 6) << "the new value";
    EXPECT_EQ(InterlockedDecrement(&value), 5);
    EXPECT_EQ(InterlockedExchangeAdd(&value, 10), 5) << "the old value";
    EXPECT_EQ(InterlockedExchange(&value, 7), 15);
    EXPECT_EQ(InterlockedCompareExchange(&value, 9, 8), 7) << "no match, nothing stored";
    EXPECT_EQ(value, 7);
    EXPECT_EQ(InterlockedCompareExchange(&value, 9, 7), 7);
    EXPECT_EQ(value, 9);
    EXPECT_EQ(InterlockedAnd(&value, 8), 9);
    EXPECT_EQ(InterlockedOr(&value, 3), 8);
    EXPECT_EQ(value, 11);
    value = 0x7FFFFFFF;
    EXPECT_EQ(InterlockedIncrement(&value), -0x7FFFFFFF - 1) << "wraps";

    LONG64 large = 1LL << 40;
    EXPECT_EQ(InterlockedIncrement64(&large), (1LL << 40) + 1);
    EXPECT_EQ(InterlockedDecrement64(&large), 1LL << 40);
    EXPECT_EQ(InterlockedExchangeAdd64(&large, 2), 1LL << 40);
    EXPECT_EQ(InterlockedExchange64(&large, 3), (1LL << 40) + 2);
    EXPECT_EQ(InterlockedCompareExchange64(&large, 4, 3), 3);
    EXPECT_EQ(large, 4);

    int target = 0;
    PVOID pointer = nullptr;
    EXPECT_EQ(InterlockedExchangePointer(&pointer, &target), nullptr);
    EXPECT_EQ(InterlockedCompareExchangePointer(&pointer, nullptr, &target), &target);
    EXPECT_EQ(pointer, nullptr);
}

TEST(Interlocked, CountsFromManyThreads) {
    LONG value = 0;
    std::thread threads[4];
    for (auto& thread : threads) {
        thread = std::thread([&] {
            for (int i = 0; i < 50'000; ++i)
                InterlockedIncrement(&value);
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(value, 200'000);
}

TEST(Sleep, LastsWhateverSignalsArrive) {
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, &before);
    timer_t timer{};
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGALRM;
    ASSERT_EQ(timer_create(CLOCK_MONOTONIC, &event, &timer), 0);
    const itimerspec every = {{0, 5'000'000}, {0, 5'000'000}};
    timer_settime(timer, 0, &every, nullptr);
    const ULONGLONG started = GetTickCount64();
    Sleep(60);
    const ULONGLONG lasted = GetTickCount64() - started;
    timer_delete(timer);
    sigaction(SIGALRM, &before, nullptr);
    EXPECT_GE(lasted, 59u);
    EXPECT_LT(lasted, 5'000u);
    Sleep(0);
}
