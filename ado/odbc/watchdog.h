// ado/odbc/watchdog.h - ends calls that run over their time, for drivers that have no time limit of their own.
//
//   WatchdogGuard guard(seconds, handle);   // SQLCancel is called on the handle when the time is over
//   result = odbc.ExecDirect(...);
//   guard.Finish();
//
// Entering and leaving cost neither a lock nor a system call: the thread looks at the guards five times a second while
// there are any, so a limit is kept to within a fifth of a second.
#pragma once

#include <windows.h>

#include <memory>

namespace tk::ado {

struct WatchSlot;

/// What a guard can end; under one guard at a time.
class Expiring {
public:
    Expiring() = default;
    Expiring(const Expiring&) = delete;
    Expiring& operator=(const Expiring&) = delete;

    /// Called on the watchdog's thread when the time is over.
    virtual void Expire() noexcept = 0;

protected:
    ~Expiring();

private:
    friend class Watchdog;
    friend class WatchdogGuard;
    WatchSlot* slot_ = nullptr;  // from its first guard on
};

class WatchdogGuard {
public:
    /// @param seconds  0 watches nothing
    /// @param target  outlives the guard
    WatchdogGuard(LONG seconds, Expiring& target);
    ~WatchdogGuard() { Finish(); }
    WatchdogGuard(const WatchdogGuard&) = delete;
    WatchdogGuard& operator=(const WatchdogGuard&) = delete;

    /// Ends the watch; the target is not called after this.
    void Finish() noexcept;

private:
    WatchSlot* slot_ = nullptr;
};

}  // namespace tk::ado
