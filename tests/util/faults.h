// tests/util/faults.h - faults on demand.
#pragma once

#include <cstring>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace tk::test {

// Volatile, so that the compiler does not see the fault coming and make something else of it.
inline int* volatile nowhere = nullptr;
inline volatile int zero = 0;
inline volatile int sink = 0;

__attribute__((no_sanitize("undefined"))) inline void ReadNull() {
    sink = *nowhere;
}
__attribute__((no_sanitize("undefined"))) inline void WriteNull() {
    *nowhere = 1;
}
/// An address that no system hands out: not even its form is right.
__attribute__((no_sanitize("undefined", "address", "thread"))) inline void ReadImpossibleAddress() {
    int* volatile impossible = reinterpret_cast<int*>(0x7F00'0000'0000'0000);
    sink = *impossible;
}
__attribute__((no_sanitize("undefined"))) inline void DivideByZero() {
    sink = 100 / zero;  // 1 / n needs no division
}
/// The fault happens in a function of the system that knows nothing of exceptions.
inline void CopyFromNull() {
    void* (*volatile copy)(void*, const void*, std::size_t) = std::memcpy;
    char target[64];
    copy(target, const_cast<int*>(nowhere), sizeof(target));
    sink = target[7];
}
__attribute__((noinline, no_sanitize("undefined", "address", "thread"))) inline int UseUpTheStack(int depth) {
    volatile char frame[4096];
    frame[0] = static_cast<char>(depth);
    return (zero == 0 ? UseUpTheStack(depth + 1) : 0) + frame[0];
}

/// What is allocated in this scope may be lost: a fault runs no destructors, and ends no exception in flight.
class LosesMemory {
public:
    LosesMemory() {
#ifdef __SANITIZE_ADDRESS__
        __lsan_disable();
#endif
    }
    LosesMemory(const LosesMemory&) = delete;
    LosesMemory& operator=(const LosesMemory&) = delete;
    ~LosesMemory() {
#ifdef __SANITIZE_ADDRESS__
        __lsan_enable();
#endif
    }
};

}  // namespace tk::test
