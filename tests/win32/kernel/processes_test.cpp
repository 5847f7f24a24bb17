// Objects between processes, and what is left of those that are killed.
#include <signal.h>
#include <sys/wait.h>

#include <random>

#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

class Processes : public KernelObjects {
protected:
    /// A child that has reported.
    static std::unique_ptr<ChildProcess> Start(const char* job) {
        auto child = std::make_unique<ChildProcess>(job);
        EXPECT_EQ(child->Hear(), "ready") << job;
        return child;
    }
    static void UntilAsleep(const ChildProcess& child) {
        while (!SleepsInAWait("/proc/" + std::to_string(child.Id())))
            usleep(1000);
    }
};

bool Exists(const char* name) {
    return Handle(OpenEventA(SYNCHRONIZE, FALSE, name)) != nullptr;
}

}  // namespace

TEST_F(Processes, HandSignalsToAndFro) {
    const Handle go = AutoEvent("Go");
    const Handle back = AutoEvent("Back");
    const auto child = Start("answer");
    for (int i = 0; i < 2000; ++i) {
        ASSERT_TRUE(SetEvent(go));
        ASSERT_EQ(WaitForSingleObject(back, 60000), WAIT_OBJECT_0) << "round " << i;
    }
    child->Say("end");
    EXPECT_EQ(child->Wait(), 0);
}

TEST_F(Processes, WaitForOwnAndSharedObjectsTogether) {
    const Handle shared = AutoEvent("Go");
    const Handle own = AutoEvent();
    const HANDLE both[] = {own, shared};
    const auto child = Start("set-when-told");
    Waiter any([&] { return WaitForMultipleObjects(2, both, FALSE, INFINITE); });
    any.UntilAsleep();
    child->Say("set");
    EXPECT_EQ(any.Result(), WAIT_OBJECT_0 + 1);
    Waiter all([&] { return WaitForMultipleObjects(2, both, TRUE, INFINITE); });
    all.UntilAsleep();
    SetEvent(own);
    child->Say("set");
    EXPECT_EQ(all.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), WAIT_TIMEOUT);
    child->Say("end");
    EXPECT_EQ(child->Wait(), 0);
}

TEST_F(Processes, ShareTimers) {
    const Handle timer = CreateWaitableTimerA(nullptr, FALSE, "Evening");
    const auto child = Start("wait-timer");
    LARGE_INTEGER due;
    due.QuadPart = -200'000;
    ASSERT_TRUE(SetWaitableTimer(timer, &due, 0, nullptr, nullptr, FALSE));
    EXPECT_EQ(child->Wait(), 0);
    EXPECT_EQ(WaitForSingleObject(timer, 0), WAIT_TIMEOUT) << "taken there";
}

TEST_F(Processes, LetGoOfNamesWhenTheyAreKilled) {
    const auto child = Start("hold-all");
    EXPECT_TRUE(Exists("Held"));
    child->Kill();
    EXPECT_FALSE(Exists("Held"));
    EXPECT_EQ(OpenMutexA(SYNCHRONIZE, FALSE, "Held.Mutex"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    const Handle other = CreateSemaphoreA(nullptr, 1, 1, "Held");
    EXPECT_EQ(GetLastError(), 0u) << "free for another kind";
}

TEST_F(Processes, CloseWhatTheyHaveWhenTheyEnd) {
    const auto child = Start("hold-all");
    child->Say("end");
    EXPECT_EQ(child->Wait(), 0);
    EXPECT_EQ(EntriesIn(Folder()), 0) << "nobody had to come by";
}

TEST_F(Processes, AbandonMutexesWhenTheyAreKilled) {
    const Handle mutex = CreateMutexA(nullptr, FALSE, "Held.Mutex");
    const auto child = Start("hold-all");
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_TIMEOUT);
    child->Kill();
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST_F(Processes, AbandonMutexesToThoseWhoWait) {
    const Handle mutex = CreateMutexA(nullptr, FALSE, "Held.Mutex");
    const Handle own = AutoEvent();
    const auto child = Start("hold-all");
    Waiter one([&] {
        const DWORD result = WaitForSingleObject(mutex, INFINITE);
        return ReleaseMutex(mutex) ? result : WAIT_FAILED;
    });
    one.UntilAsleep();
    child->Kill();
    EXPECT_EQ(one.Result(), WAIT_ABANDONED);
    const auto second = Start("hold-all");
    Waiter mixed([&] {
        const HANDLE both[] = {own, mutex};
        const DWORD result = WaitForMultipleObjects(2, both, FALSE, INFINITE);
        return ReleaseMutex(mutex) ? result : WAIT_FAILED;
    });
    mixed.UntilAsleep();
    second->Kill();
    EXPECT_EQ(mixed.Result(), WAIT_ABANDONED_0 + 1);
}

TEST_F(Processes, AbandonMutexesWhenTheyEnd) {
    const Handle mutex = CreateMutexA(nullptr, FALSE, "Held.Mutex");
    const auto child = Start("hold-all");
    child->Say("end");
    EXPECT_EQ(child->Wait(), 0);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST_F(Processes, LoseNoSignalsToWaitersThatAreKilled) {
    const Handle go = AutoEvent("Go");
    const Handle places = CreateSemaphoreA(nullptr, 0, 100, "Places");
    for (int round = 0; round < 10; ++round) {
        const auto dead = Start("wait-go");
        usleep(static_cast<useconds_t>(round) * 700);  // before, around and behind the moment it falls asleep
        dead->Kill();
        ASSERT_TRUE(SetEvent(go));
        ASSERT_EQ(WaitForSingleObject(go, 60000), WAIT_OBJECT_0) << round;
        ASSERT_EQ(WaitForSingleObject(go, 0), WAIT_TIMEOUT) << round;
    }
    const auto dead = Start("wait-places");
    const auto alive = Start("wait-places");
    usleep(20'000);
    dead->Kill();
    ASSERT_TRUE(ReleaseSemaphore(places, 1, nullptr));
    EXPECT_EQ(alive->Wait(), 0) << "the place went to who lives";
}

TEST_F(Processes, GiveNoSignalBackThatWasResetMeanwhile) {
    static const struct {
        const char* label;
        BOOL (*signal)(HANDLE event);
        BOOL (*take)(HANDLE event);  // back, as far as it is still there
        DWORD left;
    } kRows[] = {
        {"set", SetEvent, nullptr, WAIT_OBJECT_0},
        {"set and reset", SetEvent, ResetEvent, WAIT_TIMEOUT},
        {"pulsed", PulseEvent, nullptr, WAIT_TIMEOUT},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Handle go = AutoEvent("Go");
        const auto stopped = Start("wait-go");
        UntilAsleep(*stopped);
        stopped->Stop();  // what it is given it does not get to use
        ASSERT_TRUE(row.signal(go));
        ASSERT_EQ(WaitForSingleObject(go, 0), WAIT_TIMEOUT) << "the other one's";
        if (row.take != nullptr) {
            ASSERT_TRUE(row.take(go));
        }
        stopped->Kill();
        const auto newcomer = Start("hold-all");  // who looks after the dead
        EXPECT_EQ(WaitForSingleObject(go, 0), row.left);
    }
}

TEST_F(Processes, LoseNoSignalsToWaitersThatDieWithThem) {
    const Handle places = CreateSemaphoreA(nullptr, 0, 1000, "Places");
    int taken = 0;
    for (int round = 0; round < 15; ++round) {
        const auto child = Start("take-places");
        std::thread killer([&] {
            usleep(static_cast<useconds_t>(300 + round * 50));
            child->Kill();
        });
        ASSERT_TRUE(ReleaseSemaphore(places, 20, nullptr));
        killer.join();
        // What it said it took is gone. One more may be under way: a place it took and did not live to use, or one that
        // was meant for it and comes back with the next process that looks after the dead.
        while (!child->Hear().empty())
            ++taken;
        while (WaitForSingleObject(places, 0) == WAIT_OBJECT_0)
            ++taken;
        EXPECT_LE(taken, 20 * (round + 1));
        EXPECT_GE(taken, 19 * (round + 1));
    }
}

TEST_F(Processes, EndInTheMiddleOfMakingAnObject) {
    const Handle here = AutoEvent("Here");
    const int before = Faults::repairs.load();
    ChildProcess child("die-making");
    EXPECT_EQ(child.Hear(), "");
    EXPECT_EQ(child.Wait(), -1) << "killed by itself, with the lock";
    const Handle more = AutoEvent("More");
    ASSERT_NE(more, nullptr);
    EXPECT_EQ(Faults::repairs.load(), before + 1);
    EXPECT_TRUE(SetEvent(here));
    EXPECT_EQ(WaitForSingleObject(here, 0), WAIT_OBJECT_0);
    EXPECT_FALSE(Exists("Die.0")) << "what it had made before";
}

TEST_F(Processes, EndInTheMiddleOfMakingTheFile) {
    ChildProcess child("die-first");
    EXPECT_EQ(child.Wait(), -1);
    EXPECT_EQ(EntriesIn(Folder()), 1) << "an unfinished file";
    const Handle event = AutoEvent("First");
    EXPECT_NE(event, nullptr);
    EXPECT_TRUE(SetEvent(event));
}

TEST_F(Processes, EndAnywhereAndTheOthersGoOn) {
    // Children that do everything at once are killed at random moments; the bystanders must neither hang nor see one of
    // their objects change.
    const unsigned seed = static_cast<unsigned>(GetTickCount());
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    const Handle mine = CreateSemaphoreA(nullptr, 5, 5, "Mine");
    const Handle shared = CreateMutexA(nullptr, FALSE, "Chaos.Mutex");
    const int repairs = Faults::repairs.load();
    std::unique_ptr<ChildProcess> children[3];
    for (auto& child : children)
        child = Start("chaos");
    for (int round = 0; round < 150; ++round) {
        auto& victim = children[random() % 3];
        usleep(static_cast<useconds_t>(random() % 2500));
        victim->Kill();
        LONG before = -1;
        ASSERT_EQ(WaitForSingleObject(mine, 0), WAIT_OBJECT_0);
        ASSERT_TRUE(ReleaseSemaphore(mine, 1, &before));
        ASSERT_EQ(before, 4);
        const DWORD got = WaitForSingleObject(shared, 60000);
        ASSERT_TRUE(got == WAIT_OBJECT_0 || got == WAIT_ABANDONED) << got;
        ASSERT_TRUE(ReleaseMutex(shared));
        const Handle fresh = AutoEvent(("Fresh." + std::to_string(round)).c_str());
        ASSERT_NE(fresh, nullptr) << GetLastError();
        ASSERT_EQ(GetLastError(), 0u);
        victim = Start("chaos");
    }
    for (auto& child : children)
        child->Kill();
    RecordProperty("repairs", Faults::repairs.load() - repairs);
    // The fixture sees that nothing is left when these two are closed.
}

TEST_F(Processes, GiveTheirHandlesToNoChildOfFork) {
    const Handle named = AutoEvent("Forked");
    const Handle unnamed = AutoEvent();
    const Handle mutex = CreateMutexA(nullptr, TRUE, "Forked.Mutex");
    const pid_t child = fork();
    if (child == 0) {
        int wrong = 0;
        const HANDLE first = CreateEventA(nullptr, FALSE, FALSE, nullptr);
        for (HANDLE handle : {static_cast<HANDLE>(named), static_cast<HANDLE>(unnamed)}) {
            if (SetEvent(handle) || GetLastError() != ERROR_INVALID_HANDLE) wrong |= 1;
            if (CloseHandle(handle)) wrong |= 2;
        }
        if (ReleaseMutex(mutex)) wrong |= 4;
        if (!SetEvent(first)) wrong |= 64;  // its own handles are no numbers of the parent's
        HANDLE own = OpenEventA(EVENT_ALL_ACCESS, FALSE, "Forked");
        if (own == nullptr || !SetEvent(own)) wrong |= 8;
        HANDLE theirs = OpenMutexA(MUTEX_ALL_ACCESS, FALSE, "Forked.Mutex");
        if (theirs == nullptr || WaitForSingleObject(theirs, 0) != WAIT_TIMEOUT) wrong |= 16;
        HANDLE event = CreateEventA(nullptr, FALSE, TRUE, nullptr);
        if (WaitForSingleObject(event, 0) != WAIT_OBJECT_0) wrong |= 32;
        _exit(wrong);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "see the bits above";
    EXPECT_EQ(WaitForSingleObject(named, 0), WAIT_OBJECT_0) << "set by the child, by its name";
    EXPECT_EQ(WaitForSingleObject(unnamed, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(mutex)) << "still ours";
}

// A child of fork must not allocate under the address sanitizer when another thread was doing so: nobody releases the
// locks of its allocator. There the threads make no objects while others fork.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kMayAllocateAndFork = false;
#else
constexpr bool kMayAllocateAndFork = true;
#endif

TEST_F(Processes, ForkWhileOthersAreBusy) {
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&, i] {
            const char* const name = i == 0 ? "Busy" : nullptr;
            Handle event = AutoEvent(name);
            while (!stop.load()) {
                SetEvent(event);
                WaitForSingleObject(event, 0);
                WaitForSingleObject(event, 1);
                if (!kMayAllocateAndFork) continue;
                event = Handle();
                event = AutoEvent(name);
            }
        });
    }
    for (int i = 0; i < 50; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(30);
            const HANDLE named = CreateEventA(nullptr, FALSE, TRUE, "Forked");
            const HANDLE unnamed = CreateEventA(nullptr, FALSE, TRUE, nullptr);
            const HANDLE mutex = CreateMutexA(nullptr, TRUE, nullptr);
            const bool fine = WaitForSingleObject(named, 0) != WAIT_FAILED &&
                              WaitForSingleObject(unnamed, 0) == WAIT_OBJECT_0 &&
                              WaitForSingleObject(unnamed, 1) == WAIT_TIMEOUT && ReleaseMutex(mutex);
            _exit(fine ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
    }
    stop.store(true);
    for (std::thread& thread : threads)
        thread.join();
    // What a child left is swept by the next one who uses a name; the threads may have stopped before the last one
    // ended.
    const Handle last = AutoEvent("Last");
    EXPECT_NE(last, nullptr);
}

TEST_F(Processes, ThatAreStoppedWithTheLockCostAWaitNoMoreThanItsTime) {
    const Handle go = AutoEvent("Go");
    const Handle own = AutoEvent();
    const HANDLE mixed[] = {own, go};
    // Asleep before it happens: they find out when they look again.
    Waiter patient([&] { return WaitForSingleObject(go, INFINITE); });
    Waiter shortly([&] { return WaitForMultipleObjects(2, mixed, FALSE, 200); });
    patient.UntilAsleep();
    shortly.UntilAsleep();
    ChildProcess child("stop-making");
    int status = 0;
    ASSERT_EQ(waitpid(child.Id(), &status, WUNTRACED), child.Id());
    ASSERT_TRUE(WIFSTOPPED(status));

    EXPECT_EQ(shortly.Result(), WAIT_TIMEOUT);
    for (const DWORD milliseconds : {0, 50}) {
        ULONGLONG begin = GetTickCount64();
        EXPECT_EQ(WaitForSingleObject(go, milliseconds), WAIT_TIMEOUT);
        EXPECT_LT(GetTickCount64() - begin, 2500u) << milliseconds;
        begin = GetTickCount64();
        EXPECT_EQ(WaitForMultipleObjects(2, mixed, FALSE, milliseconds), WAIT_TIMEOUT);
        EXPECT_LT(GetTickCount64() - begin, 2500u) << milliseconds;
    }
    // Who waits for both kinds does not hinder those who want the unnamed ones.
    const Handle second = AutoEvent();
    const HANDLE both[] = {second, go};
    Waiter stuck([&] { return WaitForMultipleObjects(2, both, FALSE, INFINITE); });
    usleep(50'000);
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(WaitForSingleObject(own, 1), WAIT_TIMEOUT);
    EXPECT_LT(GetTickCount64() - start, 2500u);
    EXPECT_TRUE(SetEvent(second));
    EXPECT_FALSE(stuck.IsDone());

    Faults::wallClockBehind = 10'000'000'000;  // the five seconds are over at once
    EXPECT_FALSE(SetEvent(go)) << "somebody waits for it";
    EXPECT_EQ(GetLastError(), ERROR_TIMEOUT);
    Waiter late([&] { return WaitForSingleObject(go, INFINITE); });
    usleep(20'000);
    EXPECT_FALSE(late.IsDone());
    child.Kill();
    Faults::wallClockBehind = 0;
    EXPECT_TRUE(SetEvent(go));
    EXPECT_TRUE(SetEvent(own)) << "nobody left its lock behind";
    EXPECT_EQ(patient.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(stuck.Result(), WAIT_OBJECT_0);
    EXPECT_TRUE(SetEvent(go));
    EXPECT_EQ(late.Result(), WAIT_OBJECT_0);
}

TEST_F(Processes, ThatAreStoppedDoNotStopTheOthers) {
    const Handle go = AutoEvent("Go");
    const Handle back = AutoEvent("Back");
    const auto child = Start("answer");
    EXPECT_TRUE(SetEvent(go));
    EXPECT_EQ(WaitForSingleObject(back, 60000), WAIT_OBJECT_0);
    UntilAsleep(*child);  // where it holds no lock
    child->Stop();
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(SetEvent(go));
        EXPECT_NE(Handle(AutoEvent("Else")), nullptr);
    }
    EXPECT_EQ(WaitForSingleObject(back, 10), WAIT_TIMEOUT);
    child->Continue();
    EXPECT_EQ(WaitForSingleObject(back, 60000), WAIT_OBJECT_0) << "what was set meanwhile";
    child->Kill();
}
