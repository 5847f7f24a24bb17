#include "util/posix/fault_handlers.h"

#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <utility>

#include "util/fault_trap.h"

// The address sanitizer keeps marks on the stack that an abandoned frame never takes off; absent otherwise.
extern "C" __attribute__((weak)) void __asan_handle_no_return();

namespace tk::util {
namespace {

/// A handler that a signal went to before us, and when we came before it: the latest is asked first. It is known once,
/// however often it is put in front of ours, and for good, since a thread may be in it.
struct Previous {
    struct sigaction action;
    std::atomic<unsigned> turn;
    Previous* next;
};

constexpr unsigned kNobody = ~0u;  // no handler's turn

struct FaultSignal {
    int number;
    std::atomic<Previous*> known;
    unsigned turns;
};

FaultSignal faultSignals[] = {{SIGSEGV, nullptr, 0}, {SIGBUS, nullptr, 0}, {SIGFPE, nullptr, 0}};

FaultSignal& Find(int number) noexcept {
    return *std::ranges::find(faultSignals, number, &FaultSignal::number);
}

/// The turn of a handler that was called, from where, and for a signal that interrupted what.
struct Asked {
    unsigned turn = kNobody;
    std::uintptr_t frame = 0;
    std::uintptr_t interrupted = 0;  // its stack pointer
};

// The handler that this thread is in right now, for each signal: it may hand the signal back to us, having found us
// there when it was installed, and then those before it are asked.
constinit thread_local Asked asking[3] __attribute__((tls_model("initial-exec")));
static_assert(std::size(asking) == std::size(faultSignals));

std::uintptr_t StackPointer(const ucontext_t& context) noexcept {
#if defined(__x86_64__)
    return static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RSP]);
#elif defined(__aarch64__)
    return context.uc_mcontext.sp;
#else
#error "say where this processor keeps its stack pointer"
#endif
}

/// Makes the interrupted thread call the landing's function instead of going on. The kernel then restores everything
/// else, the signal mask among it.
void GoTo(const Landing& landing, ucontext_t& context) noexcept {
    constexpr std::uintptr_t kAlignment = 16;
    const auto function = reinterpret_cast<std::uintptr_t>(landing.function);
    const auto argument = reinterpret_cast<std::uintptr_t>(landing.argument);
    const std::uintptr_t stack = reinterpret_cast<std::uintptr_t>(landing.stack) & ~(kAlignment - 1);
#if defined(__x86_64__)
    constexpr greg_t kBackwards = 0x400;  // a copy that ran downwards; functions expect the other direction
    auto& registers = context.uc_mcontext.gregs;
    registers[REG_RIP] = static_cast<greg_t>(function);
    registers[REG_RDI] = static_cast<greg_t>(argument);
    registers[REG_RSP] = static_cast<greg_t>(stack - sizeof(void*));  // as behind a call
    registers[REG_EFL] &= ~kBackwards;
    // The numeric unit reports what happened once more at its next instruction.
    if (context.uc_mcontext.fpregs != nullptr) context.uc_mcontext.fpregs->swd = 0;
#elif defined(__aarch64__)
    context.uc_mcontext.pc = function;
    context.uc_mcontext.regs[0] = argument;
    context.uc_mcontext.sp = stack;
#endif
}

/// Raised by the instruction that the thread was at, which raises it again when it is tried again. A warning of broken
/// memory somewhere is not.
bool IsOfTheInstruction(int number, const siginfo_t& info) noexcept {
    return info.si_code > 0 && !(number == SIGBUS && info.si_code == BUS_MCEERR_AO);
}

/// Raised by what the thread did. What another process sent is none of a trap's business.
bool IsOwn(int number, const siginfo_t& info) noexcept {
    return IsOfTheInstruction(number, info) || (info.si_code == SI_TKILL && info.si_pid == getpid());
}

/// Whether a signal handler was what faulted; the work it interrupted is not to blame.
bool InSignalHandler(const ucontext_t& context) noexcept {
    const stack_t& stack = context.uc_stack;
    const auto bottom = reinterpret_cast<std::uintptr_t>(stack.ss_sp);
    return (stack.ss_flags & SS_DISABLE) == 0 && StackPointer(context) - bottom < stack.ss_size;
}

/// What the system does when nobody handles the signal.
void Default(int number, const siginfo_t& info) noexcept {
    struct sigaction none {};
    none.sa_handler = SIG_DFL;
    sigaction(number, &none, nullptr);
    // A fault comes again when the handler returns; what was sent has to be sent again.
    if (!IsOfTheInstruction(number, info)) syscall(SYS_tgkill, getpid(), syscall(SYS_gettid), number);
}

void CallPrevious(const struct sigaction& previous, int number, siginfo_t* info, void* context) noexcept {
    if (previous.sa_handler == SIG_IGN && !IsOfTheInstruction(number, *info)) return;
    if (previous.sa_handler == SIG_DFL || previous.sa_handler == SIG_IGN) return Default(number, *info);
    if ((previous.sa_flags & static_cast<int>(SA_RESETHAND)) != 0) {
        struct sigaction none {};
        none.sa_handler = SIG_DFL;
        sigaction(number, &none, nullptr);
    }
    // As the system would have called it; the mask goes back when our handler returns.
    sigset_t blocked = previous.sa_mask;
    if ((previous.sa_flags & SA_NODEFER) == 0) sigaddset(&blocked, number);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    if ((previous.sa_flags & SA_NODEFER) != 0) {
        sigset_t own;
        sigemptyset(&own);
        sigaddset(&own, number);
        pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    }
    if ((previous.sa_flags & SA_SIGINFO) != 0) {
        previous.sa_sigaction(number, info, context);
    } else {
        previous.sa_handler(number);
    }
}

void HandOn(int number, siginfo_t* info, void* context) noexcept {
    FaultSignal& signal = Find(number);
    Asked& asked = asking[&signal - faultSignals];
    const auto frame = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    const std::uintptr_t interrupted = StackPointer(*static_cast<const ucontext_t*>(context));
    // What hands back calls us from further down, for the same interruption. Otherwise the handler was left by a jump.
    if (frame >= asked.frame || interrupted != asked.interrupted) asked = Asked{};
    const Previous* latest = nullptr;
    unsigned latestTurn = 0;
    for (const Previous* each = signal.known.load(std::memory_order_acquire); each != nullptr; each = each->next) {
        const unsigned itsTurn = each->turn.load(std::memory_order_relaxed);
        if (itsTurn >= asked.turn || (latest != nullptr && itsTurn < latestTurn)) continue;
        latest = each;
        latestTurn = itsTurn;
    }
    if (latest == nullptr) return Default(number, *info);
    const Asked before = std::exchange(asked, Asked{latestTurn, frame, interrupted});
    CallPrevious(latest->action, number, info, context);
    asked = before;
}

void OnFault(int number, siginfo_t* info, void* interrupted) {
    const int before = errno;
    auto& context = *static_cast<ucontext_t*>(interrupted);
    const Landing landing = InnermostLanding();
    if (landing.function != nullptr && IsOwn(number, *info) && !InSignalHandler(context)) {
        if (__asan_handle_no_return != nullptr) __asan_handle_no_return();
        GoTo(landing, context);
    } else {
        HandOn(number, info, interrupted);
    }
    errno = before;
}

bool IsSame(const struct sigaction& one, const struct sigaction& other) noexcept {
    constexpr auto kTold = static_cast<unsigned>(SA_SIGINFO | SA_NODEFER) | static_cast<unsigned>(SA_RESETHAND);
    return one.sa_handler == other.sa_handler && ((one.sa_flags ^ other.sa_flags) & kTold) == 0;
}

void PutFirst(FaultSignal& signal) {
    struct sigaction now {};
    if (sigaction(signal.number, nullptr, &now) != 0) return;
    struct sigaction ours {};
    ours.sa_sigaction = &OnFault;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&ours.sa_mask);
    if (IsSame(now, ours)) return;
    Previous* const first = signal.known.load(std::memory_order_relaxed);
    Previous* previous = first;
    while (previous != nullptr && !IsSame(previous->action, now))
        previous = previous->next;
    // Known before ours can be called.
    if (previous != nullptr) {
        previous->turn.store(signal.turns++, std::memory_order_relaxed);
    } else {
        previous = new (std::nothrow) Previous{now, signal.turns++, first};
        if (previous == nullptr) return;
        signal.known.store(previous, std::memory_order_release);
    }
    sigaction(signal.number, &ours, nullptr);
}

}  // namespace

void OfferFaultsFirst() {
    static pthread_mutex_t oneAtATime = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&oneAtATime);
    for (FaultSignal& signal : faultSignals)
        PutFirst(signal);
    pthread_mutex_unlock(&oneAtATime);
}

}  // namespace tk::util
