#include "ado/odbc/lock_wait.h"

#include <algorithm>
#include <thread>

namespace tk::ado {
namespace {

// Where the driver gives up at once, because waiting itself would be in the other's way.
constexpr auto kMoment = std::chrono::milliseconds(10);

}  // namespace

bool LockWait::GoesOn(StatementHandle& handle) {
    if (connection_.LockMilliseconds() == 0) return false;
    handle.HoldCancel();
    if (handle.IsEnded()) return false;
    const auto records = ReadDiagnostics(SQL_HANDLE_STMT, handle.Get());
    const int locked = connection_.Profile().lockedNative;
    if (!std::ranges::any_of(records, [&](const auto& each) { return each.native == locked; })) return false;
    if (!GoesOn()) return false;
    handle.AllowCancel();
    return !handle.IsEnded();
}

bool LockWait::IsOfLock(const AdoError& error) const {
    const int locked = connection_.Profile().lockedNative;
    return std::ranges::any_of(error.Records(), [&](const auto& each) { return each.nativeError == locked; });
}

bool LockWait::GoesOn(const AdoError& error) {
    return connection_.LockMilliseconds() != 0 && IsOfLock(error) && GoesOn();
}

bool LockWait::GoesOn() {
    const auto now = Clock::now();
    if (end_ == Clock::time_point()) end_ = now + std::chrono::milliseconds(connection_.LockMilliseconds());
    if (now >= end_) return false;
    std::this_thread::sleep_for(kMoment);
    return true;
}

}  // namespace tk::ado
