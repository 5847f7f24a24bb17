// ado/odbc/lock_wait.h - waits for a lock in another's hands by making the call again, for drivers that would wait for
// it themselves, deaf to cancellation and time limits. The driver is told to wait only a moment (see TakeLockTime).
//
//   for (LockWait wait(connection);;) {
//       result = ...;
//       if (SQL_SUCCEEDED(result) || !wait.GoesOn(handle)) break;
//   }
#pragma once

#include <chrono>

#include "ado/error.h"
#include "ado/odbc/physical_connection.h"

namespace tk::ado {

class LockWait {
public:
    explicit LockWait(const PhysicalConnection& connection) noexcept : connection_(connection) {}

    /// After a failed call, before its diagnostics are replaced: true when it failed for a lock and is to be made
    /// again. Waits a moment then.
    bool GoesOn(StatementHandle& handle);

    /// The same for a failure that has been read already.
    bool GoesOn(const AdoError& error);

    bool IsOfLock(const AdoError& error) const;

private:
    using Clock = std::chrono::steady_clock;
    bool GoesOn();

    const PhysicalConnection& connection_;
    Clock::time_point end_{};  // known from the first failure on
};

}  // namespace tk::ado
