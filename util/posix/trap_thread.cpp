#include "util/posix/trap_thread.h"

#include <signal.h>

#include "util/exception_state.h"
#include "util/fault_trap.h"
#include "util/posix/signal_stack.h"

namespace tk::util {

namespace {

/// The system ends a process whose thread faults with the signal blocked, which it may have from whoever made it.
void UnblockFaults() noexcept {
    sigset_t faults;
    sigemptyset(&faults);
    sigaddset(&faults, SIGSEGV);
    sigaddset(&faults, SIGBUS);
    sigaddset(&faults, SIGFPE);
    pthread_sigmask(SIG_UNBLOCK, &faults, nullptr);
}

}  // namespace

constinit thread_local TrapThread currentTrapThread{};

void PrepareThread(TrapThread& thread) {
    static const bool handled = (OfferFaultsFirst(), true);
    static_cast<void>(handled);
    EnsureSignalStack();
    UnblockFaults();
    thread.exceptions = GlobalsOfThisThread();
}

}  // namespace tk::util
