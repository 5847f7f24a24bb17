// Signals: which of them end in a guard, who gets the others, and what the thread is left with.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <semaphore>
#include <thread>
#include <utility>

#include "util/fault_guard.h"
#include "util/faults.h"

namespace tk::test {
namespace {

using tk::util::OfferFaultsFirst;
using tk::util::RunGuarded;

sigset_t MaskOfThisThread() {
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return mask;
}

bool Holds(const sigset_t& mask, int number) {
    return sigismember(&mask, number) == 1;
}

using Handler = void (*)(int, siginfo_t*, void*);

struct sigaction Install(int number, Handler handler, unsigned flags = 0) {
    struct sigaction action {};
    struct sigaction before {};
    action.sa_sigaction = handler;
    action.sa_flags = static_cast<int>(SA_SIGINFO | SA_ONSTACK | flags);
    sigaction(number, &action, &before);
    return before;
}

/// What a child process ends with.
int EndOf(void (*life)()) {
    const pid_t child = fork();
    if (child == 0) {
        life();
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// ---- what ends in a guard ----------------------------------------------------------------------------------------

TEST(FaultSignals, ABusErrorEndsInTheGuard) {
    char path[] = "/tmp/tk-bus-XXXXXX";
    const int file = mkstemp(path);
    ASSERT_GE(file, 0);
    unlink(path);
    ASSERT_EQ(ftruncate(file, 4096), 0);
    void* const mapped = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file, 0);
    ASSERT_NE(mapped, MAP_FAILED);
    ASSERT_EQ(ftruncate(file, 0), 0);
    EXPECT_FALSE(RunGuarded([&] { sink = *static_cast<volatile char*>(mapped); }));
    munmap(mapped, 4096);
    close(file);
}

TEST(FaultSignals, WhatAThreadRaisesItselfEndsInTheGuard) {
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE})
        EXPECT_FALSE(RunGuarded([&] { raise(number); })) << number;
}

TEST(FaultSignals, LeaveTheSignalMaskAsItWas) {
    sigset_t usr1;
    sigemptyset(&usr1);
    sigaddset(&usr1, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &usr1, nullptr);
    EXPECT_FALSE(RunGuarded([] { ReadNull(); }));
    const sigset_t after = MaskOfThisThread();
    pthread_sigmask(SIG_UNBLOCK, &usr1, nullptr);
    EXPECT_TRUE(Holds(after, SIGUSR1));
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE})
        EXPECT_FALSE(Holds(after, number)) << number;
}

TEST(FaultSignals, AThreadThatBeganWithThemBlockedIsGuardedAllTheSame) {
    sigset_t faults;
    sigset_t before;
    sigemptyset(&faults);
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGUSR1})
        sigaddset(&faults, number);
    pthread_sigmask(SIG_BLOCK, &faults, &before);
    bool ended[2] = {};
    bool stillBlocked = false;
    std::thread([&] {
        ended[0] = !RunGuarded(ReadNull);
        ended[1] = !RunGuarded(DivideByZero);
        stillBlocked = Holds(MaskOfThisThread(), SIGUSR1);
    }).join();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_TRUE(ended[0]);
    EXPECT_TRUE(ended[1]);
    EXPECT_TRUE(stillBlocked) << "others are the thread's own affair";
}

TEST(FaultSignals, AChildProcessIsGuardedAsItsParentWas) {
    RunGuarded([] {});
    const int status = EndOf([] {
        const bool first = RunGuarded([] { ReadNull(); });
        const bool second = RunGuarded([] { DivideByZero(); });
        _exit(first || second ? 1 : 33);
    });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 33);
}

TEST(FaultSignals, AForkInsideAGuardIsGuardedOnBothSides) {
    int status = -1;
    pid_t child = -1;
    EXPECT_FALSE(RunGuarded([&] {
        child = fork();
        ReadNull();
    }));
    if (child == 0) _exit(34);
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 34);
}

TEST(FaultSignals, ACancelledThreadEndsThroughTheGuard) {
    pthread_t thread{};
    static std::binary_semaphore inside{0};
    static bool unwound;
    unwound = false;
    ASSERT_EQ(pthread_create(
                  &thread, nullptr,
                  [](void*) -> void* {
                      struct Unwound {
                          ~Unwound() { unwound = true; }
                      } local;
                      RunGuarded([] {
                          inside.release();
                          for (;;)
                              pause();
                      });
                      return nullptr;
                  },
                  nullptr),
              0);
    inside.acquire();
    pthread_cancel(thread);
    void* result = nullptr;
    pthread_join(thread, &result);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_TRUE(unwound);
}

// ---- the signal stack --------------------------------------------------------------------------------------------

long MappedPieces() {
    std::ifstream maps("/proc/self/maps");
    return std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
}

TEST(FaultSignals, AGuardedThreadHasASignalStackThatIsFreedWithIt) {
    constexpr int kThreads = 300;
    const auto run = [] {
        std::thread([] {
            RunGuarded([] {});
            stack_t during{};
            sigaltstack(nullptr, &during);
            EXPECT_EQ(during.ss_flags & SS_DISABLE, 0);
            EXPECT_GE(during.ss_size, static_cast<std::size_t>(MINSIGSTKSZ));
        }).join();
    };
    run();
    const long before = MappedPieces();
    for (int i = 0; i < kThreads; ++i)
        run();
    EXPECT_LT(MappedPieces(), before + kThreads / 2);
}

TEST(FaultSignals, ASignalStackThatIsThereStays) {
    static char own[64 * 1024];
    stack_t during{};
    bool taken = false;
    std::thread([&] {
        stack_t before{};
        const stack_t mine{.ss_sp = own, .ss_flags = 0, .ss_size = sizeof(own)};
        sigaltstack(&mine, &before);
        taken = !RunGuarded([] { sink = UseUpTheStack(0); });
        sigaltstack(&before, &during);
    }).join();
    EXPECT_EQ(during.ss_sp, own);
    EXPECT_TRUE(taken);
}

// ---- what goes on to others --------------------------------------------------------------------------------------

constexpr int kReporterExit = 77;

void Reporter(int, siginfo_t*, void*) {
    _exit(kReporterExit);
}

/// Ended by the reporter; a crash where there is none.
void ExpectReported(void (*life)()) {
    const int status = EndOf(life);
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), kReporterExit);
}

void ExpectKilled(void (*life)(), int number) {
    const int status = EndOf(life);
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), number);
}

/// In a child: nobody has a handler in front of ours, and ours is to hand on to the system.
void ForgetTheSanitizersHandlers() {
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE})
        signal(number, SIG_DFL);
    OfferFaultsFirst();
}

TEST(FaultSignals, AFaultOutsideTheGuardIsACrash) {
    ExpectKilled(
        [] {
            ForgetTheSanitizersHandlers();
            RunGuarded([] { ReadNull(); });
            ReadNull();
        },
        SIGSEGV);
    ExpectKilled(
        [] {
            ForgetTheSanitizersHandlers();
            RunGuarded([] { ReadNull(); });
            DivideByZero();
        },
        SIGFPE);
}

TEST(FaultSignals, AFaultOfAnUnguardedThreadIsACrash) {
    ExpectKilled(
        [] {
            ForgetTheSanitizersHandlers();
            RunGuarded([] { std::thread([] { ReadNull(); }).join(); });
        },
        SIGSEGV);
}

TEST(FaultSignals, WhatAnotherProcessSendsIsNoFault) {
    ExpectKilled(
        [] {
            ForgetTheSanitizersHandlers();
            RunGuarded([] {
                kill(getpid(), SIGSEGV);
                pause();
            });
        },
        SIGSEGV);
}

TEST(FaultSignals, AnEarlierHandlerGetsWhatNoGuardTakes) {
    ExpectReported([] {
        Install(SIGSEGV, Reporter);
        OfferFaultsFirst();
        if (RunGuarded([] { ReadNull(); })) _exit(1);
        ReadNull();
    });
}

TEST(FaultSignals, AHandlerInstalledLaterComesSecondAfterTheNextOffer) {
    ExpectReported([] {
        RunGuarded([] {});
        Install(SIGSEGV, Reporter);
        OfferFaultsFirst();
        if (RunGuarded([] { ReadNull(); })) _exit(1);
        ReadNull();
    });
}

struct sigaction before;

TEST(FaultSignals, AHandlerThatHandsBackToUsEndsNowhereTwice) {
    ExpectKilled(
        [] {
            ForgetTheSanitizersHandlers();
            before = Install(SIGSEGV, [](int number, siginfo_t* info, void* context) {
                before.sa_sigaction(number, info, context);
            });
            if (RunGuarded([] { ReadNull(); })) _exit(1);  // through the handler in front of ours
            OfferFaultsFirst();
            if (RunGuarded([] { ReadNull(); })) _exit(2);
            ReadNull();
        },
        SIGSEGV);
}

TEST(FaultSignals, HandlersThatComeInFrontAgainAndAgainAreAskedOnce) {
    ExpectReported([] {
        static bool isOutside;
        static int ones;
        static int others;
        static struct sigaction foundByOne;
        static struct sigaction foundByOther;
        ForgetTheSanitizersHandlers();
        for (int time = 0; time < 1000; ++time) {
            foundByOne = Install(SIGSEGV, [](int number, siginfo_t* info, void* context) {
                if (!isOutside || ++ones > 1) _exit(2);
                foundByOne.sa_sigaction(number, info, context);
            });
            OfferFaultsFirst();
            foundByOther = Install(SIGSEGV, [](int number, siginfo_t* info, void* context) {
                if (!isOutside || ++others > 1) _exit(3);
                foundByOther.sa_sigaction(number, info, context);
                // Everybody had a turn, and the system's is next.
                if (ones != 1) _exit(4);
                signal(SIGSEGV, [](int) { _exit(kReporterExit); });
            });
            OfferFaultsFirst();
            if (RunGuarded([] { ReadNull(); })) _exit(1);
        }
        isOutside = true;
        ReadNull();
    });
}

sigjmp_buf recovery;
volatile int recovered;

/// Reads null deep down in the stack, and comes back by the earlier handler's jump.
template <int Depth>
[[gnu::noinline]] void ReadNullBelow() {
    volatile char room[Depth * 512 + 16];
    room[0] = 0;
    ReadNull();
    sink = room[0];
}

void RecoverEachTime(unsigned flags, bool onSignalStack) {
    Install(
        SIGSEGV,
        [](int, siginfo_t*, void*) {
            recovered = recovered + 1;
            siglongjmp(recovery, 1);
        },
        flags);
    OfferFaultsFirst();
    if (RunGuarded([] { ReadNull(); })) _exit(1);
    if (!onSignalStack) {
        stack_t none{};
        none.ss_flags = SS_DISABLE;
        if (sigaltstack(&none, nullptr) != 0) _exit(4);
    }
    static constexpr void (*kFaults[])() = {ReadNullBelow<1>, ReadNullBelow<1>, ReadNullBelow<4>, ReadNullBelow<2>};
    for (const auto fault : kFaults) {
        if (sigsetjmp(recovery, 1) == 0) {
            fault();
            _exit(2);
        }
    }
    _exit(recovered == 4 ? kReporterExit : 3);
}

TEST(FaultSignals, AnEarlierHandlerThatJumpsOutIsAskedEachTime) {
    ExpectReported([] { RecoverEachTime(0, true); });
    ExpectReported([] { RecoverEachTime(SA_NODEFER, true); });
    ExpectReported([] { RecoverEachTime(0, false); });
}

TEST(FaultSignals, AHandlerThatWasTakenAwayIsNotAsked) {
    ExpectKilled(
        [] {
            ForgetTheSanitizersHandlers();
            Install(SIGSEGV, Reporter);
            OfferFaultsFirst();
            signal(SIGSEGV, SIG_DFL);
            OfferFaultsFirst();
            if (RunGuarded([] { ReadNull(); })) _exit(1);
            ReadNull();
        },
        SIGSEGV);
}

constexpr int kManyHandlers = 20;
struct sigaction foundBy[kManyHandlers];
int asked[kManyHandlers];
int askedSoFar;

/// One of many reporters: each notes its turn and hands on to what it found.
template <int Index>
void Chained(int number, siginfo_t* info, void* context) {
    asked[Index] = ++askedSoFar;
    if (Index == 0) {
        // The latest was asked first, and each of them once.
        for (int i = 0; i < kManyHandlers; ++i) {
            if (asked[i] != kManyHandlers - i) _exit(3);
        }
        _exit(kReporterExit);
    }
    foundBy[Index].sa_sigaction(number, info, context);
}

template <int... Index>
void InstallChained(std::integer_sequence<int, Index...>) {
    ((foundBy[Index] = Install(SIGSEGV, Chained<Index>), OfferFaultsFirst()), ...);
}

TEST(FaultSignals, AnyNumberOfHandlersInstalledLaterComesSecond) {
    ExpectReported([] {
        ForgetTheSanitizersHandlers();
        InstallChained(std::make_integer_sequence<int, kManyHandlers>());
        if (RunGuarded([] { ReadNull(); })) _exit(1);
        if (askedSoFar != 0) _exit(2);
        ReadNull();
    });
}

/// The system's early warning that some memory of the process is broken, which the thread may have nothing to do with.
void WarnOfBrokenMemory() {
    siginfo_t info{};
    info.si_signo = SIGBUS;
    info.si_code = BUS_MCEERR_AO;
    if (syscall(SYS_rt_tgsigqueueinfo, getpid(), gettid(), SIGBUS, &info) != 0) _exit(36);
}

TEST(FaultSignals, AWarningOfBrokenMemoryIsNoFaultOfTheWork) {
    ExpectKilled(
        [] {
            ForgetTheSanitizersHandlers();
            RunGuarded(WarnOfBrokenMemory);
        },
        SIGBUS);
    ExpectReported([] {
        Install(SIGBUS, Reporter);
        OfferFaultsFirst();
        RunGuarded(WarnOfBrokenMemory);
    });
    const int status = EndOf([] {
        signal(SIGBUS, SIG_IGN);
        OfferFaultsFirst();
        if (!RunGuarded(WarnOfBrokenMemory)) _exit(1);
        _exit(35);
    });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 35);
}

TEST(FaultSignals, AHandlerForOneTimeIsCalledOnce) {
    ExpectKilled(
        [] {
            static int calls = 0;
            Install(
                SIGSEGV,
                [](int, siginfo_t*, void*) {
                    if (++calls > 1) _exit(1);
                },
                SA_RESETHAND);
            OfferFaultsFirst();
            ReadNull();
        },
        SIGSEGV);
}

TEST(FaultSignals, AnIgnoredSignalStaysIgnoredWhenItIsSent) {
    const int status = EndOf([] {
        signal(SIGSEGV, SIG_IGN);
        OfferFaultsFirst();
        kill(getpid(), SIGSEGV);
        _exit(35);
    });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 35);
}

TEST(FaultSignals, AFaultInASignalHandlerIsNoneOfTheWorkItInterrupts) {
    const int status = EndOf([] {
        Install(SIGSEGV, Reporter);
        OfferFaultsFirst();
        Install(SIGUSR1, [](int, siginfo_t*, void*) { ReadNull(); });
        RunGuarded([] { raise(SIGUSR1); });
        _exit(1);
    });
    // Where the fault finds its signal blocked (the thread sanitizer blocks them all in handlers), nobody is asked.
    const bool reported = WIFEXITED(status) && WEXITSTATUS(status) == kReporterExit;
    const bool crashed = WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
    EXPECT_TRUE(reported || crashed) << status;
}

}  // namespace
}  // namespace tk::test
