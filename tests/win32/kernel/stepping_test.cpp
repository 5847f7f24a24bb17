// Another process is killed at one instruction after the other of a call; whatever that leaves half done, the objects
// are whole for the others: a signal is given or not, and never twice.
#include <random>

#include "tests/win32/kernel/stepped_call.h"
#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

constexpr int kSamples = 10;  // of each call and run; other ones the next time

class Stepping : public KernelObjects {
protected:
    // Who sleeps looks every second whether somebody died on the way to wake it: the tests do not wait for whole ones.
    void SetUp() override {
        KernelObjects::SetUp();
        Faults::clockBehind = 950'000'000;
    }
    void TearDown() override {
        Faults::clockBehind = 0;
        KernelObjects::TearDown();
    }

    /// Runs `before`, kills a process after a part of its call, runs `after`.
    template <typename Before, typename After>
    void Sample(const char* call, Before before, After after) {
        long whole = 0;
        const int repairs = Faults::repairs.load();
        const unsigned seed = static_cast<unsigned>(GetTickCount());
        std::minstd_rand random(seed);
        SCOPED_TRACE("seed " + std::to_string(seed));
        for (int sample = -1; sample < kSamples; ++sample) {
            auto state = before();
            const long most = sample < 0
                                  ? 5'000'000
                                  : whole * sample / kSamples + static_cast<long>(random()) % (whole / kSamples + 1);
            const Stepped stepped = RunSteps(call, most);
            if (!stepped.allowed) {
                after(*state);
                GTEST_SKIP() << "this process may not trace its children";
            }
            SCOPED_TRACE(std::string(call) + " killed after " + std::to_string(stepped.steps) + " instructions");
            if (sample < 0) {
                ASSERT_TRUE(stepped.finished);
                whole = stepped.steps;
            }
            after(*state);
            if (HasFailure()) return;
        }
        RecordProperty("instructions", static_cast<int>(whole));
        RecordProperty("repairs", Faults::repairs.load() - repairs);
    }
};

struct Objects {
    Handle event = AutoEvent("Step.Event");
    Handle places = CreateSemaphoreA(nullptr, 0, 10, "Step.Places");
    Handle mutex = CreateMutexA(nullptr, FALSE, "Step.Mutex");
    std::unique_ptr<Waiter> waiter;
};

}  // namespace

TEST_F(Stepping, ThroughASignalToSomebodyWhoWaits) {
    Sample(
        "set",
        [] {
            auto objects = std::make_unique<Objects>();
            objects->waiter =
                std::make_unique<Waiter>([&event = objects->event] { return WaitForSingleObject(event, INFINITE); });
            objects->waiter->UntilAsleep();
            return objects;
        },
        [](Objects& objects) {
            ASSERT_TRUE(SetEvent(objects.event)) << "one signal, or with the other process two";
            ASSERT_EQ(objects.waiter->Result(), WAIT_OBJECT_0);
            WaitForSingleObject(objects.event, 0);
            EXPECT_EQ(WaitForSingleObject(objects.event, 0), WAIT_TIMEOUT) << "no third one";
        });
}

TEST_F(Stepping, ThroughAReleaseToSomebodyWhoWaitsForAll) {
    Sample(
        "release",
        [] {
            auto objects = std::make_unique<Objects>();
            SetEvent(objects->event);
            objects->waiter = std::make_unique<Waiter>([&objects = *objects] {
                const HANDLE both[] = {objects.event, objects.places};
                return WaitForMultipleObjects(2, both, TRUE, INFINITE);
            });
            objects->waiter->UntilAsleep();
            return objects;
        },
        [](Objects& objects) {
            // Somebody comes by.
            ASSERT_NE(Handle(AutoEvent("Step.Else")), nullptr);
            LONG before = -1;
            ASSERT_TRUE(ReleaseSemaphore(objects.places, 1, &before));
            EXPECT_EQ(before, 0) << "a place that is there with a signalled event belongs to who waits for both";
            ASSERT_EQ(objects.waiter->Result(), WAIT_OBJECT_0);
            EXPECT_EQ(WaitForSingleObject(objects.event, 0), WAIT_TIMEOUT);
            WaitForSingleObject(objects.places, 0);
            EXPECT_EQ(WaitForSingleObject(objects.places, 0), WAIT_TIMEOUT);
        });
}

TEST_F(Stepping, ThroughAWait) {
    Sample(
        "wait", [] { return std::make_unique<Objects>(); },
        [](Objects& objects) {
            ASSERT_TRUE(SetEvent(objects.event));
            EXPECT_EQ(WaitForSingleObject(objects.event, 0), WAIT_OBJECT_0) << "lost to a wait that is no more";
            EXPECT_EQ(WaitForSingleObject(objects.event, 0), WAIT_TIMEOUT);
        });
}

TEST_F(Stepping, ThroughTheTakingOfAMutex) {
    Sample(
        "lock", [] { return std::make_unique<Objects>(); },
        [](Objects& objects) {
            const DWORD result = WaitForSingleObject(objects.mutex, 60000);
            EXPECT_TRUE(result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) << result;
            EXPECT_TRUE(ReleaseMutex(objects.mutex));
        });
}

TEST_F(Stepping, ThroughTheMakingOfAnObject) {
    Sample(
        "make-and-close", [] { return std::make_unique<Objects>(); },
        [](Objects& objects) {
            EXPECT_EQ(OpenEventA(SYNCHRONIZE, FALSE, "Step.New"), nullptr);
            EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
            const Handle anew = CreateSemaphoreA(nullptr, 0, 1, "Step.New");
            EXPECT_NE(anew, nullptr);
            EXPECT_EQ(GetLastError(), 0u);
            EXPECT_TRUE(SetEvent(objects.event));
        });
}
