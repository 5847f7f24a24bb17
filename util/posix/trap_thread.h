// util/posix/trap_thread.h - what the traps of one thread share.
#pragma once

namespace tk::util {

struct Trap;
struct ExceptionGlobals;

struct TrapThread {
    Trap* innermost;               // null outside every trap
    ExceptionGlobals* exceptions;  // null until the thread is prepared

    /// Signal handlers ask as well, hence no lazy initialisation and the thread storage that needs no call.
    static TrapThread& Current() noexcept;
};

// Trivial, so that it outlives the thread's other storage: what is destroyed late may still set a trap.
extern constinit thread_local TrapThread currentTrapThread __attribute__((tls_model("initial-exec")));

inline TrapThread& TrapThread::Current() noexcept {
    return currentTrapThread;
}

/// The first trap of a thread: sees to it that faults arrive, and that one finds a stack when the stack is used up.
void PrepareThread(TrapThread& thread);

}  // namespace tk::util
