// What ends in a guard, and that the thread goes on as if nothing had happened.
#include "util/fault_guard.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cstdlib>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "util/faults.h"

namespace tk::test {
namespace {

using tk::util::RunGuarded;

/// An exception of the framework that says when it is gone.
class CountedException : public CException {
public:
    CountedException() { ++alive; }
    ~CountedException() override { --alive; }
    static inline int alive = 0;
};

/// One for all who throw it.
class SharedException : public CException {
public:
    SharedException() : CException(FALSE) {}
};
SharedException sharedException;

struct FaultsWhenDestroyed {
    bool armed = true;
    FaultsWhenDestroyed() = default;
    FaultsWhenDestroyed(FaultsWhenDestroyed&& other) noexcept : armed(std::exchange(other.armed, false)) {}
    ~FaultsWhenDestroyed() {
        if (armed) ReadNull();
    }
};

TEST(FaultGuard, LetsWorkComeToItsEnd) {
    int done = 0;
    EXPECT_TRUE(RunGuarded([&] { done = 7; }));
    EXPECT_EQ(done, 7);
}

struct Ending {
    const char* label;
    std::function<void()> work;
};

const std::vector<Ending>& Endings() {
    static const std::vector<Ending> endings = {
        {"read through null", ReadNull},
        {"write through null", WriteNull},
        {"an address of no possible form", ReadImpossibleAddress},
        {"division by zero", DivideByZero},
        {"inside a function of the system", CopyFromNull},
        {"a call through null",
         [] {
             void (*volatile function)() = nullptr;
             function();
         }},
        {"a C++ exception", [] { throw std::runtime_error("no"); }},
        {"a number", [] { throw 7; }},
        {"an exception of the framework", [] { throw new CountedException; }},
        {"a shared exception of the framework", [] { throw static_cast<CException*>(&sharedException); }},
        {"a null exception of the framework", [] { throw static_cast<CException*>(nullptr); }},
#ifndef __SANITIZE_ADDRESS__  // with it comes a sanitizer that objects to such an object before it faults
        {"an exception of the framework that is none",
         [] {
             alignas(CException) static char none[sizeof(CException)];
             throw reinterpret_cast<CException*>(none);
         }},
#endif
    };
    return endings;
}

TEST(FaultGuard, EndsEveryKindOfFault) {
    for (const auto& ending : Endings()) {
        SCOPED_TRACE(ending.label);
        bool reached = false;
        bool passed = false;
        EXPECT_FALSE(RunGuarded([&] {
            reached = true;
            std::atomic_signal_fence(std::memory_order_seq_cst);
            ending.work();
            passed = true;
        }));
        EXPECT_TRUE(reached);
        EXPECT_FALSE(passed);
        EXPECT_EQ(std::uncaught_exceptions(), 0);
        EXPECT_EQ(std::current_exception(), nullptr);
        EXPECT_TRUE(RunGuarded([] {})) << "the next work is not touched by it";
    }
    EXPECT_EQ(CountedException::alive, 0) << "caught exceptions are deleted";
}

TEST(FaultGuard, TakesTheSameFaultsAgainAndAgain) {
    for (int i = 0; i < 2000; ++i) {
        const auto& ending = Endings()[static_cast<std::size_t>(i) % Endings().size()];
        ASSERT_FALSE(RunGuarded(ending.work)) << ending.label;
    }
}

TEST(FaultGuard, TheInnermostTakesIt) {
    std::string steps;
    const bool outer = RunGuarded([&] {
        const bool inner = RunGuarded([&] {
            steps += "a";
            std::atomic_signal_fence(std::memory_order_seq_cst);
            ReadNull();
            steps += "never";
        });
        steps += inner ? "never" : "b";
        steps += RunGuarded([&] { throw 1; }) ? "never" : "c";
        std::atomic_signal_fence(std::memory_order_seq_cst);
        ReadNull();
        steps += "never";
    });
    EXPECT_FALSE(outer);
    EXPECT_EQ(steps, "abc");
}

TEST(FaultGuard, TakesAFaultBehindAnInnerGuardThatWasLeftByAnException) {
    bool outer = true;
    try {
        outer = tk::util::RunTrapped(
            [](void*) {
                try {
                    tk::util::RunTrapped([](void*) { throw 7; }, nullptr);
                } catch (int) {}
                ReadNull();
            },
            nullptr);
    } catch (...) {
        ADD_FAILURE() << "nothing was left to catch";
    }
    EXPECT_FALSE(outer);
}

TEST(FaultGuard, ATrapLetsExceptionsPass) {
    EXPECT_THROW(tk::util::RunTrapped([](void*) { throw std::runtime_error("passes"); }, nullptr), std::runtime_error);
}

TEST(FaultGuard, KeepsTheExceptionThatItsCallerIsHandling) {
    try {
        throw std::runtime_error("outer");
    } catch (const std::exception&) {
        EXPECT_FALSE(RunGuarded([] {
            try {
                throw std::logic_error("inner");
            } catch (const std::exception&) {
                try {
                    throw 7;
                } catch (int) {
                    ReadNull();
                }
            }
        }));
        try {
            throw;
        } catch (const std::exception& e) {
            EXPECT_STREQ(e.what(), "outer");
        }
    }
    EXPECT_EQ(std::current_exception(), nullptr);
}

TEST(FaultGuard, AFaultDuringUnwindingLeavesNoExceptionInFlight) {
    const LosesMemory lost;
    EXPECT_FALSE(RunGuarded([] {
        const FaultsWhenDestroyed local;
        throw 7;
    }));
    EXPECT_EQ(std::uncaught_exceptions(), 0);
    EXPECT_EQ(std::current_exception(), nullptr);
}

TEST(FaultGuard, AFaultWhileAnExceptionIsDisposedOfEndsTheSameWay) {
    const LosesMemory lost;
    EXPECT_FALSE(RunGuarded([] { throw FaultsWhenDestroyed(); }));
    EXPECT_FALSE(RunGuarded([] {
        try {
            throw FaultsWhenDestroyed();
        } catch (const FaultsWhenDestroyed&) {
            WriteNull();
        }
    }));
    EXPECT_EQ(std::current_exception(), nullptr);
    EXPECT_TRUE(RunGuarded([] {}));
}

TEST(FaultGuard, WorksInsideADestructorThatRunsDuringUnwinding) {
    struct Guarding {
        bool& taken;
        ~Guarding() {
            taken = !RunGuarded([] { ReadNull(); });
        }
    };
    bool taken = false;
    try {
        const Guarding guarding{taken};
        throw 7;
    } catch (int seven) {
        EXPECT_EQ(seven, 7);
    }
    EXPECT_TRUE(taken);
    EXPECT_EQ(std::uncaught_exceptions(), 0);
}

TEST(FaultGuard, TakesAFaultBelowFramesOfTheSystem) {
    int values[] = {3, 1, 2};
    EXPECT_FALSE(RunGuarded([&] {
        std::qsort(values, 3, sizeof(int), [](const void*, const void*) -> int {
            ReadNull();
            return 0;
        });
    }));
}

TEST(FaultGuard, GoesOnWhenTheStackWasUsedUp) {
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(RunGuarded([] { sink = UseUpTheStack(0); })) << "time " << i;
}

TEST(FaultGuard, GoesOnWhenAThreadUsedUpItsStack) {
    bool taken = false;
    std::thread([&] {
        RunGuarded([] { sink = UseUpTheStack(0); });
        taken = !RunGuarded([] { sink = UseUpTheStack(0); });
    }).join();
    EXPECT_TRUE(taken);
}

TEST(FaultGuard, KeepsTheRoundingOfItsThread) {
    std::fesetround(FE_UPWARD);
    RunGuarded([] { ReadNull(); });
    const int rounding = std::fegetround();
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(rounding, FE_UPWARD);
}

TEST(FaultGuard, GuardsManyThreadsAtOnce) {
    constexpr int kThreads = 8;
    constexpr int kFaults = 500;
    int taken[kThreads] = {};
    std::vector<std::thread> threads;
    for (int& mine : taken) {
        threads.emplace_back([&mine] {
            for (int i = 0; i < kFaults; ++i)
                mine += RunGuarded([] { ReadNull(); }) ? 0 : 1;
        });
    }
    for (auto& thread : threads)
        thread.join();
    for (const int mine : taken)
        EXPECT_EQ(mine, kFaults);
}

TEST(FaultGuard, GuardsThreadLocalObjectsOnTheirWayOut) {
    static bool taken;
    struct Late {
        ~Late() {
            taken = !RunGuarded([] { ReadNull(); });
        }
        int touched = 0;
    };
    taken = false;
    std::thread([] {
        thread_local Late late;
        late.touched = 1;
        RunGuarded([] {});
    }).join();
    EXPECT_TRUE(taken);
}

}  // namespace
}  // namespace tk::test
