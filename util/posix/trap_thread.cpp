#include "util/posix/trap_thread.h"

#include "util/exception_state.h"
#include "util/fault_trap.h"
#include "util/posix/signal_stack.h"

namespace tk::util {

constinit thread_local TrapThread currentTrapThread{};

void PrepareThread(TrapThread& thread) {
    static const bool handled = (OfferFaultsFirst(), true);
    static_cast<void>(handled);
    thread.exceptions = GlobalsOfThisThread();
    EnsureSignalStack();
    thread.prepared = true;
}

}  // namespace tk::util
