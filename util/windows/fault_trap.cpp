// A frame with an exception handler of its own: handlers of frames further in come first, as everywhere on this system,
// and setting the trap costs nothing. The compiler knows no such frames, so this one is written out.
#include "util/fault_trap.h"

#include <windows.h>

#include <malloc.h>

#include "util/exception_state.h"

extern "C" {

/// Calls work(argument). @return 1, or 0 when tkOnFault sent it to tkTrapLanding
int tkCallTrapped(void (*work)(void*), void* argument);
extern const char tkTrapLanding[];

/// Errors end at the trap; what the compiler's own exceptions, debuggers and warnings raise passes.
__attribute__((used)) EXCEPTION_DISPOSITION tkOnFault(EXCEPTION_RECORD* record, void* frame, CONTEXT*,
                                                      DISPATCHER_CONTEXT* dispatcher) {
    constexpr DWORD kUnwinding = 0x2 | 0x4;
    constexpr DWORD kSeverity = 0xC0000000;
    if ((record->ExceptionFlags & kUnwinding) != 0 || (record->ExceptionCode & kSeverity) != kSeverity) {
        return ExceptionContinueSearch;
    }
    RtlUnwindEx(frame, const_cast<char*>(tkTrapLanding), record, nullptr, dispatcher->ContextRecord,
                dispatcher->HistoryTable);
    __builtin_unreachable();
}
}

asm(R"(
    .text
    .globl tkCallTrapped
    .globl tkTrapLanding
    .def tkCallTrapped; .scl 2; .type 32; .endef
    .seh_proc tkCallTrapped
tkCallTrapped:
    subq $40, %rsp
    .seh_stackalloc 40
    .seh_endprologue
    .seh_handler tkOnFault, @except
    movq %rcx, %rax
    movq %rdx, %rcx
    call *%rax
    movl $1, %eax
tkTrapLanding:
    addq $40, %rsp
    ret
    .seh_endproc
)");

namespace tk::util {

namespace {

void GoBack(ExceptionState& exceptions) {
    if (!exceptions.HasChanged()) return;
    if (!RunTrapped([](void* state) { static_cast<ExceptionState*>(state)->GoBack(); }, &exceptions)) {
        exceptions.Forget();
    }
}

}  // namespace

bool RunTrapped(void (*work)(void*), void* argument) {
    ExceptionState exceptions(GlobalsOfThisThread());
    if (tkCallTrapped(work, argument) != 0) return true;
    _resetstkoflw();  // the guard page, when the fault was that it had been reached; nothing otherwise
    GoBack(exceptions);
    return false;
}

void OfferFaultsFirst() {}  // frames are asked in their order, whoever else listens

}  // namespace tk::util
