#include <pthread.h>
#include <signal.h>

#include <random>

#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

/// Which of the objects of a wait are shared by name: what is decided in one place, in another, or in both.
enum class Mix { kUnnamed, kNamed, kBoth };

class Waits : public KernelObjects, public testing::WithParamInterface<Mix> {
protected:
    /// The name of the n-th object.
    const char* Name(int number) {
        if (GetParam() == Mix::kUnnamed || (GetParam() == Mix::kBoth && number % 2 == 1)) return nullptr;
        names_.push_back(std::make_unique<std::string>("Waits." + std::to_string(number)));
        return names_.back()->c_str();
    }
    Handle Auto(int number) { return AutoEvent(Name(number)); }

private:
    std::vector<std::unique_ptr<std::string>> names_;
};

INSTANTIATE_TEST_SUITE_P(Mixes, Waits, testing::Values(Mix::kUnnamed, Mix::kNamed, Mix::kBoth), [](const auto& row) {
    return std::string(row.param == Mix::kUnnamed ? "Unnamed" : row.param == Mix::kNamed ? "Named" : "Both");
});

}  // namespace

TEST_P(Waits, TakeTheFirstSignalledOne) {
    const Handle a = Auto(0);
    const Handle b = Auto(1);
    const Handle c = Auto(2);
    const HANDLE all[] = {a, b, c};
    EXPECT_EQ(WaitForMultipleObjects(3, all, FALSE, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForMultipleObjects(3, all, FALSE, 10), WAIT_TIMEOUT);
    SetEvent(c);
    SetEvent(b);
    EXPECT_EQ(WaitForMultipleObjects(3, all, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(3, all, FALSE, INFINITE), WAIT_OBJECT_0 + 2) << "the other was left alone";
    EXPECT_EQ(WaitForMultipleObjects(3, all, FALSE, 0), WAIT_TIMEOUT);
}

TEST_P(Waits, EndWithWhicheverComes) {
    const Handle a = Auto(0);
    const Handle b = Auto(1);
    const HANDLE both[] = {a, b};
    for (int i = 0; i < 2; ++i) {
        Waiter waiter([&] { return WaitForMultipleObjects(2, both, FALSE, INFINITE); });
        waiter.UntilAsleep();
        SetEvent(both[i]);
        EXPECT_EQ(waiter.Result(), WAIT_OBJECT_0 + static_cast<DWORD>(i));
    }
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), WAIT_TIMEOUT);
}

TEST_P(Waits, ForAllTakeNothingBeforeAllAreSignalled) {
    const Handle a = Auto(0);
    const Handle b = Auto(1);
    const HANDLE both[] = {a, b};
    SetEvent(a);
    EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, 20), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(a, 0), WAIT_OBJECT_0) << "still there";

    Waiter waiter([&] { return WaitForMultipleObjects(2, both, TRUE, INFINITE); });
    waiter.UntilAsleep();
    SetEvent(a);
    EXPECT_EQ(WaitForSingleObject(a, 0), WAIT_OBJECT_0) << "others may have it meanwhile";
    SetEvent(b);
    EXPECT_FALSE(waiter.IsDone());
    SetEvent(a);
    EXPECT_EQ(waiter.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), WAIT_TIMEOUT) << "both taken";
}

TEST_P(Waits, ForAllReachFromKindToKind) {
    const Handle event = Auto(0);
    const Handle semaphore = CreateSemaphoreA(nullptr, 2, 5, Name(1));
    const Handle mutex = CreateMutexA(nullptr, FALSE, Name(2));
    const Handle timer = CreateWaitableTimerA(nullptr, FALSE, Name(3));
    const Handle manual = CreateEventA(nullptr, TRUE, TRUE, Name(4));
    const HANDLE all[] = {event, semaphore, mutex, timer, manual};
    const LARGE_INTEGER now = {};
    ASSERT_TRUE(SetWaitableTimer(timer, &now, 0, nullptr, nullptr, FALSE));
    EXPECT_EQ(WaitForMultipleObjects(5, all, TRUE, 0), WAIT_TIMEOUT);
    SetEvent(event);
    EXPECT_EQ(WaitForMultipleObjects(5, all, TRUE, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0);
    LONG count = 0;
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, &count));
    EXPECT_EQ(count, 1);
    EXPECT_EQ(OnThread([&] { return WaitForSingleObject(mutex, 0); }), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_FALSE(ReleaseMutex(mutex));
}

TEST_P(Waits, CountAMutexOfTheirOwnAsSignalled) {
    const Handle mutex = CreateMutexA(nullptr, TRUE, Name(0));
    const Handle event = Auto(1);
    const HANDLE both[] = {mutex, event};
    Waiter waiter([&] {
        const Handle own = CreateMutexA(nullptr, TRUE, nullptr);
        const HANDLE all[] = {own, event};
        const DWORD result = WaitForMultipleObjects(2, all, TRUE, INFINITE);
        return ReleaseMutex(own) && ReleaseMutex(own) ? result : WAIT_FAILED;
    });
    waiter.UntilAsleep();
    SetEvent(event);
    EXPECT_EQ(waiter.Result(), WAIT_OBJECT_0);
    SetEvent(event);
    EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(mutex)) << "taken twice";
    EXPECT_FALSE(ReleaseMutex(mutex));
}

TEST_P(Waits, MayNameAnObjectTwiceUnlessForAll) {
    const Handle a = Auto(0);
    const Handle b = Auto(1);
    const HANDLE twice[] = {a, b, a};
    EXPECT_EQ(WaitForMultipleObjects(3, twice, TRUE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    HANDLE copy = nullptr;
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), a, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS));
    const HANDLE sameObject[] = {a, copy};
    EXPECT_EQ(WaitForMultipleObjects(2, sameObject, TRUE, 0), WAIT_FAILED);
    EXPECT_TRUE(CloseHandle(copy));

    Waiter waiter([&] { return WaitForMultipleObjects(3, twice, FALSE, INFINITE); });
    waiter.UntilAsleep();
    SetEvent(a);
    EXPECT_EQ(waiter.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(a, 0), WAIT_TIMEOUT) << "taken once and for all";
    Waiter second([&] { return WaitForMultipleObjects(3, twice, FALSE, 50); });
    EXPECT_EQ(second.Result(), WAIT_TIMEOUT);
    SetEvent(a);
    EXPECT_EQ(WaitForSingleObject(a, 0), WAIT_OBJECT_0) << "nobody is left in the queue";
}

TEST_P(Waits, TakeSixtyFourAndNoMore) {
    std::vector<Handle> handles;
    std::vector<HANDLE> raw;
    for (int i = 0; i < 65; ++i) {
        handles.push_back(Auto(i));
        raw.push_back(handles.back());
    }
    EXPECT_EQ(WaitForMultipleObjects(65, raw.data(), FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(WaitForMultipleObjects(0, raw.data(), FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(WaitForMultipleObjects(2, nullptr, FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_NOACCESS);
    Waiter last([&] { return WaitForMultipleObjects(64, raw.data(), FALSE, INFINITE); });
    last.UntilAsleep();
    SetEvent(raw[63]);
    EXPECT_EQ(last.Result(), WAIT_OBJECT_0 + 63);
    Waiter all([&] { return WaitForMultipleObjects(64, raw.data(), TRUE, INFINITE); });
    all.UntilAsleep();
    for (int i = 0; i < 64; ++i)
        SetEvent(raw[i]);
    EXPECT_EQ(all.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForMultipleObjects(64, raw.data(), FALSE, 0), WAIT_TIMEOUT);
}

TEST_P(Waits, PassASignalOnThatTheyDoNotNeed) {
    // One thread waits for either, another for the second alone: whatever is signalled, nothing gets stuck between
    // them.
    const Handle a = Auto(0);
    const Handle b = Auto(1);
    const HANDLE both[] = {a, b};
    for (int round = 0; round < 200; ++round) {
        Waiter either([&] { return WaitForMultipleObjects(2, both, FALSE, INFINITE); });
        Waiter one([&] { return WaitForSingleObject(b, INFINITE); });
        if (round % 4 == 0) {
            either.UntilAsleep();
            one.UntilAsleep();
        }
        SetEvent(b);
        SetEvent(a);
        if (!either.IsDone()) usleep(10);
        // When `either` took b's signal, a's is left and `one` still waits.
        const DWORD first = either.Result();
        if (first == WAIT_OBJECT_0 + 1) {
            SetEvent(b);
        }
        EXPECT_EQ(one.Result(), WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(a, 0), first == WAIT_OBJECT_0 ? WAIT_TIMEOUT : WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(b, 0), WAIT_TIMEOUT);
    }
}

TEST_P(Waits, ForAllAreWholeUnderLoad) {
    // Tokens on three places; each taker takes two at once and puts them back. A taker that got one of two, or a token
    // that two got, shows in the books; a lost wake-up shows as a wait that runs out.
    constexpr int kPlaces = 3;
    std::vector<Handle> places;
    for (int i = 0; i < kPlaces; ++i)
        places.push_back(CreateSemaphoreA(nullptr, 1, 1, Name(i)));
    std::atomic<int> users[kPlaces] = {};
    std::atomic<bool> broken{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < kPlaces; ++i) {
        threads.emplace_back([&, i] {
            const int mine[] = {i, (i + 1) % kPlaces};
            const HANDLE pair[] = {places[mine[0]], places[mine[1]]};
            for (int round = 0; round < 3000 && !broken.load(); ++round) {
                if (WaitForMultipleObjects(2, pair, TRUE, 60000) != WAIT_OBJECT_0) broken.store(true);
                for (int place : mine) {
                    if (++users[place] != 1) broken.store(true);
                }
                for (int place : mine)
                    --users[place];
                for (HANDLE handle : pair) {
                    if (!ReleaseSemaphore(handle, 1, nullptr)) broken.store(true);
                }
            }
        });
    }
    threads.emplace_back([&] {
        // A bystander who takes one at a time.
        for (int round = 0; round < 3000; ++round) {
            const int place = round % kPlaces;
            if (WaitForSingleObject(places[place], 0) != WAIT_OBJECT_0) continue;
            if (++users[place] != 1) broken.store(true);
            --users[place];
            if (!ReleaseSemaphore(places[place], 1, nullptr)) broken.store(true);
        }
    });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_FALSE(broken.load());
    for (const Handle& place : places)
        EXPECT_EQ(WaitForSingleObject(place, 0), WAIT_OBJECT_0) << "every token is back";
}

TEST_P(Waits, ForAnyLoseAndInventNothingUnderLoad) {
    std::vector<Handle> handles;
    std::vector<HANDLE> raw;
    for (int i = 0; i < 4; ++i) {
        handles.push_back(CreateSemaphoreA(nullptr, 0, 1'000'000, Name(i)));
        raw.push_back(handles.back());
    }
    constexpr int kEach = 4000;
    std::atomic<int> taken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (WaitForMultipleObjects(4, raw.data(), FALSE, 60000) < 4) {
                if (++taken >= 2 * kEach) break;
            }
            ReleaseSemaphore(raw[0], 1, nullptr);  // for the next one to end
        });
    }
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&, i] {
            std::minstd_rand random(static_cast<unsigned>(i) + 1);
            for (int round = 0; round < kEach; ++round)
                ReleaseSemaphore(raw[random() % 4], 1, nullptr);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(taken.load(), 2 * kEach + 2) << "two more told the others to end";
    EXPECT_EQ(WaitForMultipleObjects(4, raw.data(), FALSE, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForMultipleObjects(4, raw.data(), FALSE, 0), WAIT_TIMEOUT);
}

TEST_P(Waits, NeedTheRightToWait) {
    const Handle event = AutoEvent("Waits.Right");
    const Handle setter = OpenEventA(EVENT_MODIFY_STATE, FALSE, "Waits.Right");
    ASSERT_NE(setter, nullptr);
    EXPECT_TRUE(SetEvent(setter));
    EXPECT_EQ(WaitForSingleObject(setter, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(WaitForSingleObjectEx(event, 0, TRUE), WAIT_OBJECT_0);
    const HANDLE one[] = {event};
    EXPECT_EQ(WaitForMultipleObjectsEx(1, one, TRUE, 0, TRUE), WAIT_TIMEOUT);
}

TEST_P(Waits, AreNotEndedBySignalsOfTheSystem) {
    const Handle event = Auto(0);
    signal(SIGUSR2, [](int) {});
    std::atomic<pthread_t> thread{};
    std::atomic<bool> started{false};
    Waiter waiter([&] {
        thread.store(pthread_self());
        started.store(true);
        return WaitForSingleObject(event, INFINITE);
    });
    waiter.UntilAsleep();
    for (int i = 0; i < 5; ++i) {
        pthread_kill(thread.load(), SIGUSR2);
        usleep(2000);
    }
    EXPECT_FALSE(waiter.IsDone());
    SetEvent(event);
    EXPECT_EQ(waiter.Result(), WAIT_OBJECT_0);
}
