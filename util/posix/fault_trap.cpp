#include "util/fault_trap.h"

#include "util/exception_state.h"
#include "util/posix/fault_handlers.h"
#include "util/posix/trap_thread.h"

// The compiler's own jump keeps three words and leaves the registers to the function that set the trap: half the cost
// of the library's, which only the thread sanitizer needs, to see it.
#ifdef __SANITIZE_THREAD__
#include <setjmp.h>
#define TK_SET_JUMP(place) _setjmp(place)
#define TK_JUMP(place) longjmp(place, 1)
using JumpPlace = jmp_buf;
#else
#define TK_SET_JUMP(place) __builtin_setjmp(place)
#define TK_JUMP(place) __builtin_longjmp(place, 1)
using JumpPlace = void* [5];
#endif

namespace tk::util {

/// One trap, in the frame of the function that set it.
struct Trap {
    explicit Trap(const TrapThread& thread) noexcept : outer(thread.innermost), exceptions(thread.exceptions) {}
    Trap(const Trap&) = delete;
    Trap& operator=(const Trap&) = delete;
    ~Trap() { TrapThread::Current().innermost = outer; }

    Trap* outer;
    ExceptionState exceptions;
    void* deepest = nullptr;  // the stack below this belongs to the work alone
    JumpPlace back;
};

namespace {

/// The end of the calling function's frame: everything on the stack below it belongs to the functions it calls.
[[gnu::always_inline]] inline void* EndOfFrame() noexcept {
    void* end = nullptr;
#if defined(__x86_64__)
    asm volatile("movq %%rsp, %0" : "=r"(end));
#elif defined(__aarch64__)
    asm volatile("mov %0, sp" : "=r"(end));
#else
#error "say where this processor keeps its stack pointer"
#endif
    return end;
}

/// Goes back to what the exceptions were. Ending one runs its destructor, which may fault as well.
void GoBack(ExceptionState& exceptions) {
    if (!exceptions.HasChanged()) return;
    if (!RunTrapped([](void* state) { static_cast<ExceptionState*>(state)->GoBack(); }, &exceptions)) {
        exceptions.Forget();
    }
}

/// Where a fault of a guarded thread goes on, as if the faulting place had called it.
[[noreturn]] void Resume(Trap* trap) {
    TK_JUMP(trap->back);
}

}  // namespace

// Never inside another function, whose frame the jump would take for its own.
[[gnu::noinline]] bool RunTrapped(void (*work)(void*), void* argument) {
    if (TrapThread::Current().exceptions == nullptr) [[unlikely]]
        PrepareThread(TrapThread::Current());
    Trap trap(TrapThread::Current());
    if (TK_SET_JUMP(trap.back) != 0) {
        TrapThread::Current().innermost = trap.outer;
        GoBack(trap.exceptions);
        return false;
    }
    trap.deepest = EndOfFrame();
    TrapThread::Current().innermost = &trap;
    work(argument);
    return true;
}

Landing InnermostLanding() noexcept {
    Trap* const trap = TrapThread::Current().innermost;
    if (trap == nullptr) return {};
    return {reinterpret_cast<void*>(&Resume), trap, trap->deepest};
}

}  // namespace tk::util
