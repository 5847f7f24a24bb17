// ado/odbc/running_call.h - what the caller of a session waits for at the moment, for the thread that wants to end it:
// a call of the driver, or a wait of ours.
//
// Neither side takes a lock; the caller's side costs a store at the beginning and an exchange at the end.
//
// Threads: Cancel from any; the rest is the one caller's.
#pragma once

#include <atomic>
#include <cstdint>

#include "ado/odbc/statement_handle.h"

namespace tk::ado {

class RunningCall {
public:
    /// Names the handle from construction to destruction; nobody touches the handle after that.
    class Scope {
    public:
        Scope(RunningCall& call, StatementHandle& handle) noexcept : call_(call) {
            call_.place_.store(reinterpret_cast<std::uintptr_t>(&handle), std::memory_order_release);
        }
        ~Scope() { call_.Clear(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        RunningCall& call_;
    };

    /// A wait without a call: whoever waits asks IsWaitCancelled now and then.
    class Wait {
    public:
        explicit Wait(RunningCall& call) noexcept : call_(call) { call_.wait_.store(WaitState::Waiting); }
        ~Wait() { call_.wait_.store(WaitState::None); }
        Wait(const Wait&) = delete;
        Wait& operator=(const Wait&) = delete;

    private:
        RunningCall& call_;
    };

    bool IsWaitCancelled() const noexcept { return wait_.load() == WaitState::Cancelled; }

    /// Ends the call or the wait, if there is one.
    void Cancel() noexcept;

private:
    enum class WaitState : unsigned char { None, Waiting, Cancelled };
    static constexpr std::uintptr_t kReaching = 1;  // a canceller uses the handle; handles are aligned

    void Clear() noexcept;

    std::atomic<std::uintptr_t> place_ = 0;
    std::atomic<WaitState> wait_ = WaitState::None;
};

}  // namespace tk::ado
