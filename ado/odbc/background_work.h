// ado/odbc/background_work.h - a fetch that goes on beside its session, and how long others wait for it.
#pragma once

#include <windows.h>

#include <chrono>

#include "ado/odbc/running_call.h"

namespace tk::ado {

/// How long a caller waits for something: until the time is over, or until another thread cancels the wait.
class Patience {
public:
    /// @param seconds  0: until cancelled
    Patience(LONG seconds, RunningCall& call) noexcept
        : call_(call), wait_(call), isLimited_(seconds > 0), end_(Clock::now() + std::chrono::seconds(seconds)) {}

    bool IsCancelled() const noexcept { return call_.IsWaitCancelled(); }
    bool IsOver() const noexcept { return IsCancelled() || (isLimited_ && Clock::now() >= end_); }

private:
    using Clock = std::chrono::steady_clock;
    const RunningCall& call_;
    RunningCall::Wait wait_;
    bool isLimited_;
    Clock::time_point end_;
};

class BackgroundWork {
public:
    virtual ~BackgroundWork() = default;

    virtual bool IsDone() const noexcept = 0;

    /// Waits for the end of the work, does it where nobody else has begun it. False when the patience was over before;
    /// the work goes on then.
    virtual bool FinishWork(const Patience& patience) noexcept = 0;
};

}  // namespace tk::ado
