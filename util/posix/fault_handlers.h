// util/posix/fault_handlers.h - what the signal handlers behind the traps ask the traps.
#pragma once

namespace tk::util {

/// Where a faulting thread goes on.
struct Landing {
    void* function = nullptr;  // takes the argument; null when there is no trap
    void* argument = nullptr;
    void* stack = nullptr;  // the function's frame goes below
};

/// The innermost trap of the calling thread; safe in a signal handler.
Landing InnermostLanding() noexcept;

}  // namespace tk::util
