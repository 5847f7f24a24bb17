// ado/odbc/watchdog.h - ends calls that run over their time, for drivers that have no time limit of their own.
//
//   WatchdogGuard guard(seconds, handle);   // SQLCancel is called on the handle when the time is over
//   result = odbc.ExecDirect(...);
//   guard.Finish();
//
// Entering and leaving cost neither a lock nor a system call: the threads look at the guards five times a second or
// more while there are any, so a limit is kept to within a fifth of a second.
#pragma once

#include <windows.h>

#include <memory>

namespace tk::ado {

struct WatchSlot;

/// What a guard can end; under one guard at a time.
class Expiring {
public:
    Expiring(const Expiring&) = delete;
    Expiring& operator=(const Expiring&) = delete;

    /// Called on a thread of the watchdog's when the time is over.
    /// @return milliseconds until it is called again, unless the guard has ended; 0: not again
    virtual int Expire() noexcept = 0;

protected:
    /// Whether Expire may have to wait, for a server: such ones have a thread of their own.
    enum class MayWait : unsigned char { No, Yes };

    explicit Expiring(MayWait mayWait) noexcept : mayWait_(mayWait) {}
    ~Expiring();

private:
    friend class Watchdog;
    friend class WatchdogGuard;
    MayWait mayWait_;
    WatchSlot* slot_ = nullptr;  // from its first guard on
};

class WatchdogGuard {
public:
    /// @param seconds  0 watches nothing
    /// @param target  outlives the guard
    /// @param milliseconds  more
    WatchdogGuard(LONG seconds, Expiring& target, int milliseconds = 0) {
        if (seconds > 0) Begin(seconds, target, milliseconds);
    }

    /// A short limit; it is kept as exactly as the others are.
    WatchdogGuard(Expiring& target, int milliseconds) { Begin(0, target, milliseconds); }

    /// Objects that are made after this end before the watchdog does, at the end of the process.
    static void Prepare();

    ~WatchdogGuard() { Finish(); }
    WatchdogGuard(const WatchdogGuard&) = delete;
    WatchdogGuard& operator=(const WatchdogGuard&) = delete;

    /// Ends the watch; the target is not called after this.
    void Finish() noexcept {
        if (slot_ != nullptr) End();
    }

private:
    void Begin(LONG seconds, Expiring& target, int milliseconds);
    void End() noexcept;

    WatchSlot* slot_ = nullptr;
};

}  // namespace tk::ado
