#include "util/fault_trap.h"

#include <setjmp.h>

#include "util/exception_state.h"
#include "util/posix/fault_handlers.h"
#include "util/posix/trap_thread.h"

namespace tk::util {

/// One trap, in the frame of the function that set it.
struct Trap {
    explicit Trap(TrapThread& owner) noexcept : thread(owner), outer(owner.innermost), exceptions(owner.exceptions) {}
    Trap(const Trap&) = delete;
    Trap& operator=(const Trap&) = delete;
    ~Trap() { thread.innermost = outer; }

    TrapThread& thread;
    Trap* outer;
    ExceptionState exceptions;
    void* deepest = nullptr;  // the stack below this belongs to the work alone
    jmp_buf back;
};

namespace {

// A frame of its own: everything on the stack below it may be overwritten once the work has faulted.
[[gnu::noinline]] void Work(Trap& trap, void (*work)(void*), void* argument) {
    trap.deepest = __builtin_frame_address(0);
    trap.thread.innermost = &trap;
    work(argument);
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
    longjmp(trap->back, 1);  // not _longjmp, which the thread sanitizer does not see
}

}  // namespace

bool RunTrapped(void (*work)(void*), void* argument) {
    TrapThread& thread = TrapThread::Current();
    if (!thread.prepared) PrepareThread(thread);
    Trap trap(thread);
    if (_setjmp(trap.back) != 0) {
        trap.thread.innermost = trap.outer;
        GoBack(trap.exceptions);
        return false;
    }
    Work(trap, work, argument);
    return true;
}

Landing InnermostLanding() noexcept {
    Trap* const trap = TrapThread::Current().innermost;
    if (trap == nullptr) return {};
    return {reinterpret_cast<void*>(&Resume), trap, trap->deepest};
}

}  // namespace tk::util
