// util/exception_state.h - the C++ exceptions a thread is dealing with, as they were when a trap was set.
//
// A fault inside a handler or during unwinding leaves exceptions behind that nobody will end: without this a later
// "throw;" or std::uncaught_exceptions() on the thread would speak of them.
#pragma once

#include <cxxabi.h>

namespace tk::util {

/// What stands at the beginning of the runtime's record of one thread (Itanium C++ ABI, 2.2.2).
struct ExceptionGlobals {
    void* caught;  // a chain, the innermost first
    unsigned int uncaught;
};

inline ExceptionGlobals* GlobalsOfThisThread() noexcept {
    return reinterpret_cast<ExceptionGlobals*>(abi::__cxa_get_globals());
}

/// The state at its construction, to go back to.
class ExceptionState {
public:
    explicit ExceptionState(ExceptionGlobals* globals) noexcept
        : globals_(globals), caught_(globals->caught), uncaught_(globals->uncaught) {}

    bool HasChanged() const noexcept { return globals_->caught != caught_ || globals_->uncaught != uncaught_; }

    /// Ends the handlers that were entered since; exceptions still in flight are lost.
    void GoBack() {
        while (globals_->caught != caught_ && globals_->caught != nullptr)
            abi::__cxa_end_catch();
        Forget();
    }

    /// Goes back without ending anything.
    void Forget() noexcept {
        globals_->caught = caught_;
        globals_->uncaught = uncaught_;
    }

private:
    ExceptionGlobals* globals_;
    void* caught_;
    unsigned int uncaught_;
};

}  // namespace tk::util
