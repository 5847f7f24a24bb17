// util/fault_trap.h - the system's part of fault_guard.h: leaves work whose memory accesses or arithmetic fault.
#pragma once

namespace tk::util {

/// Runs work(argument). A fault of this thread in it (an access violation, a bus error, an arithmetic fault, the stack
/// used up) ends it there and then: the frames in between run no destructors, and what they hold stays held.
/// C++ exceptions pass through. Traps nest; a fault goes to the innermost one.
/// @return true when the work came to its end, false when a fault ended it
/// @note Faults of other threads, faults in signal handlers that interrupt the work on the signal stack, and signals
///       that another process sent go where they went before. A handler on the thread's own stack counts as the work,
///       and a fault signal that a thread of this process sends to this one (pthread_kill) as a fault of its own.
bool RunTrapped(void (*work)(void*), void* argument);

/// Makes sure that faults are offered to traps first. The first trap of a process does so as well; who starts something
/// that lives long calls it once more, since a handler installed in between (a crash reporter's) would come before.
/// Such a handler still gets every fault that no trap takes.
void OfferFaultsFirst();

}  // namespace tk::util
