// session/held_lock.h - critical sections that are left at the latest with a scope.
#pragma once

#include <afxmt.h>

#include <atomic>

namespace tk::session {

/// A critical section around work that cannot fault.
class Entered {
public:
    explicit Entered(CCriticalSection& section) : section_(section) { section_.Lock(); }
    Entered(const Entered&) = delete;
    Entered& operator=(const Entered&) = delete;
    ~Entered() { section_.Unlock(); }

private:
    CCriticalSection& section_;
};

/// A critical section around work that may fault: stands outside of the guarded work and is entered inside. A fault
/// jumps over the scopes of the work, not over this one.
class HeldLock {
public:
    HeldLock() = default;
    explicit HeldLock(CCriticalSection& section) noexcept : section_(&section) {}
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;
    ~HeldLock() { Leave(); }

    /// For a section that only the work knows.
    void Enter(CCriticalSection& section) {
        section_ = &section;
        Enter();
    }

    void Enter() {
        section_->Lock();
        held_ = true;
        std::atomic_signal_fence(std::memory_order_seq_cst);  // written before anything can fault
    }

    void Leave() {
        if (!held_) return;
        held_ = false;
        std::atomic_signal_fence(std::memory_order_seq_cst);
        section_->Unlock();
    }

private:
    CCriticalSection* section_ = nullptr;
    bool held_ = false;
};

}  // namespace tk::session
