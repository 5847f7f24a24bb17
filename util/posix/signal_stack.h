// util/posix/signal_stack.h - a stack for signal handlers: without one a thread that used up its own cannot say so.
#pragma once

#include <signal.h>

namespace tk::util {

/// Gives this thread a signal stack unless it has one already, which stays. It is freed with the thread.
/// Without the memory for one the thread goes on without.
void EnsureSignalStack() noexcept;

}  // namespace tk::util
