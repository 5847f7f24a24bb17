// util/fault_guard.h - runs work for a caller that has to go on, whatever happens in it.
//
//   if (RunGuarded([&] { text = Ask(connection); })) return text;
//   Report("the question failed");
//
// Cost: about as much as a mutex that nobody else wants; no system call, but the first time on each thread.
// What the caller left in a register when the work began is of no account; what the work wrote up to the fault stays,
// as far as it was written: state that has to be right after a fault is written before an atomic_signal_fence.
#pragma once

#include <afx.h>
#include <cxxabi.h>

#include <memory>
#include <type_traits>

#include "util/fault_trap.h"

namespace tk::util {

/// Runs work(). Whatever ends it early ends here: a C++ exception; an exception of the framework, which is deleted; a
/// fault (fault_trap.h). Only the forced end of the thread passes.
/// @return whether the work came to its end
template <typename Work>
bool RunGuarded(Work&& work) {
    struct Guarded {
        std::remove_reference_t<Work>& work;
        bool done = false;

        // The exceptions are caught inside the trap: disposing of one may fault as well.
        // The forced end of a thread is caught by a reference to nothing.
        __attribute__((no_sanitize("null"))) static void Run(void* self) {
            auto& guarded = *static_cast<Guarded*>(self);
            try {
                guarded.work();
                guarded.done = true;
            } catch (const abi::__forced_unwind&) {
                throw;
            } catch (CException* e) {
                if (e != nullptr) e->Delete();
            } catch (...) {}  // NOLINT(bugprone-empty-catch): the caller learns of it by the result
        }
    } guarded{work};
    return RunTrapped(&Guarded::Run, std::addressof(guarded)) && guarded.done;
}

}  // namespace tk::util
