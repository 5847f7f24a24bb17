#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

/// Unnamed and named objects follow the same rules.
class Events : public KernelObjects, public testing::WithParamInterface<const char*> {
protected:
    Handle Make(bool manual, bool signalled) { return CreateEventA(nullptr, manual, signalled, GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(UnnamedAndNamed, Events, testing::Values(nullptr, "Stock.Ready"),
                         [](const auto& row) { return std::string(row.param == nullptr ? "Unnamed" : "Named"); });

}  // namespace

TEST_P(Events, StartAsTheyAreMade) {
    for (const bool manual : {false, true}) {
        Handle unset = Make(manual, false);
        EXPECT_EQ(GetLastError(), 0u) << "made, not found";
        EXPECT_EQ(WaitForSingleObject(unset, 0), WAIT_TIMEOUT);
        unset = nullptr;
        const Handle set = Make(manual, true);
        EXPECT_EQ(WaitForSingleObject(set, 0), WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(set, 0), manual ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
    }
}

TEST_P(Events, TakeEveryNumberButZeroForTrue) {
    const Handle event = CreateEventA(nullptr, 2, -1, GetParam());
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0) << "manual";
}

TEST_P(Events, LetOneThroughForEachSetWhileSeveralWait) {
    const Handle event = Make(false, false);
    Waiter one([&] { return WaitForSingleObject(event, INFINITE); });
    Waiter two([&] { return WaitForSingleObject(event, 60000); });
    one.UntilAsleep();
    two.UntilAsleep();
    // Each set is handed to one of those who wait, however fast they follow.
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(one.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(two.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
}

TEST_P(Events, HandASignalOverEvenIfTheyAreResetAtOnce) {
    for (const bool manual : {false, true}) {
        SCOPED_TRACE(manual ? "manual" : "automatic");
        const Handle event = Make(manual, false);
        Waiter waiter([&] { return WaitForSingleObject(event, INFINITE); });
        waiter.UntilAsleep();
        EXPECT_TRUE(SetEvent(event));
        EXPECT_TRUE(ResetEvent(event));
        EXPECT_EQ(waiter.Result(), WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    }
}

TEST_P(Events, LetEverybodyThroughWhenTheyAreManual) {
    const Handle event = Make(true, false);
    Waiter one([&] { return WaitForSingleObject(event, INFINITE); });
    Waiter two([&] { return WaitForSingleObject(event, INFINITE); });
    Waiter three([&] { return WaitForSingleObject(event, INFINITE); });
    one.UntilAsleep();
    two.UntilAsleep();
    three.UntilAsleep();
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(one.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(two.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(three.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0) << "and stay signalled";
    EXPECT_TRUE(ResetEvent(event));
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
}

TEST_P(Events, PulseForThoseWhoWaitAlone) {
    for (const bool manual : {false, true}) {
        SCOPED_TRACE(manual ? "manual" : "automatic");
        const Handle event = Make(manual, false);
        EXPECT_TRUE(PulseEvent(event));
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT) << "nobody waited";
        Waiter one([&] { return WaitForSingleObject(event, INFINITE); });
        Waiter two([&] { return WaitForSingleObject(event, INFINITE); });
        one.UntilAsleep();
        two.UntilAsleep();
        EXPECT_TRUE(PulseEvent(event));
        if (!manual) {
            EXPECT_TRUE(PulseEvent(event)) << "one each";
        }
        EXPECT_EQ(one.Result(), WAIT_OBJECT_0);
        EXPECT_EQ(two.Result(), WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    }
}

TEST_P(Events, ServeThoseWhoWaitInTheirOrder) {
    const Handle event = Make(false, false);
    std::vector<std::unique_ptr<Waiter>> waiters;
    for (int i = 0; i < 4; ++i) {
        waiters.push_back(std::make_unique<Waiter>([&] { return WaitForSingleObject(event, INFINITE); }));
        waiters.back()->UntilAsleep();
    }
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(SetEvent(event));
        EXPECT_EQ(waiters[i]->Result(), WAIT_OBJECT_0);
    }
}

TEST_P(Events, EndAWaitThatRunsOut) {
    const Handle event = Make(false, false);
    EXPECT_EQ(WaitForSingleObject(event, 20), WAIT_TIMEOUT);
    EXPECT_TRUE(SetEvent(event)) << "nobody is left in the queue to take it";
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
}

TEST_P(Events, CountEverySignalUnderLoad) {
    const Handle there = Make(false, false);
    const Handle back = AutoEvent();
    constexpr int kRounds = 20'000;
    std::thread other([&] {
        for (int i = 0; i < kRounds; ++i) {
            WaitForSingleObject(there, INFINITE);
            SetEvent(back);
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        SetEvent(there);
        ASSERT_EQ(WaitForSingleObject(back, 60000), WAIT_OBJECT_0) << "a lost signal in round " << i;
    }
    other.join();
}

TEST_P(Events, StayWhatTheyAreWhenMadeAgain) {
    if (GetParam() == nullptr) {
        const Handle one = Make(true, true);
        const Handle two = Make(false, false);
        EXPECT_EQ(WaitForSingleObject(two, 0), WAIT_TIMEOUT) << "another object";
        return;
    }
    const Handle manual = Make(true, true);
    const Handle again = Make(false, false);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(WaitForSingleObject(again, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(again, 0), WAIT_OBJECT_0) << "still manual, still signalled";
}
