#include "ado/odbc/statement_handle.h"

#include <chrono>
#include <optional>
#include <thread>

#include "ado/odbc/moments.h"
#include "ado/odbc/server_call.h"

namespace tk::ado {

StatementHandle::~StatementHandle() {
    const ServerCall call(profile_);
    handle_.Reset();
}

void StatementHandle::Start() noexcept {
    state_.store(kRunning, std::memory_order_release);
}

void StatementHandle::Finish() noexcept {
    // Whoever is inside the driver's cancel call uses the handle: its end is waited for, which is a matter of one call.
    Moments moments;
    unsigned state = state_.load(std::memory_order_acquire);
    while ((state & kReaching) != 0 || !state_.compare_exchange_weak(state, state & ~kRunning)) {
        if ((state & kReaching) == 0) continue;
        moments.Wait();
        state = state_.load(std::memory_order_acquire);
    }
}

void StatementHandle::HoldCancel() noexcept {
    state_.fetch_or(kHeld);
    for (Moments moments; (state_.load(std::memory_order_acquire) & kReaching) != 0;)
        moments.Wait();
}

void StatementHandle::AllowCancel() noexcept {
    state_.fetch_and(~static_cast<unsigned>(kHeld));
}

void StatementHandle::BeginRows() noexcept {
    state_.fetch_or(kRows);
}

void StatementHandle::EndRows() noexcept {
    state_.fetch_and(~static_cast<unsigned>(kRows));
}

bool StatementHandle::RowCallLasts() const noexcept {
    constexpr int kMilliseconds = 100;
    const unsigned kind = profile_.hasLocalRows ? kInStepCall : kInRowCalls | kInStepCall;
    const unsigned stepCalls = stepCalls_.load(std::memory_order_relaxed);
    for (int i = 0; i < kMilliseconds; ++i) {
        const unsigned state = state_.load(std::memory_order_acquire);
        if ((state & kind) == 0 || (state & kHeld) != 0) return false;
        if (stepCalls_.load(std::memory_order_relaxed) != stepCalls) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

bool StatementHandle::Reach(State reason) noexcept {
    unsigned state = state_.load(std::memory_order_acquire);
    do {
        if ((state & kRunning) == 0 || (state & (kReaching | kCut)) != 0) return false;
    } while (!state_.compare_exchange_weak(state, state | kReaching | reason));
    const bool isReached = (state & kHeld) == 0 && ((state & kRows) == 0 || RowCallLasts());
    if (isReached) {
        const ServerCall call(profile_, ServerCall::ShortSeconds());
        Odbc().Cancel(Get());
    }
    state_.fetch_and(~static_cast<unsigned>(kReaching), std::memory_order_release);
    return isReached;
}

void StatementHandle::CancelRunning() noexcept {
    Reach(kCancelled);
}

int StatementHandle::Expire() noexcept {
    constexpr int kAgainMilliseconds = 100;
    return Reach(kExpired) ? 0 : kAgainMilliseconds;
}

bool StatementHandle::BeginCut() noexcept {
    unsigned state = state_.load(std::memory_order_acquire);
    do {
        if ((state & kReaching) != 0) return false;
    } while (!state_.compare_exchange_weak(state, state | kCut | kExpired));
    return true;
}

bool StatementHandle::WasExpired() const noexcept {
    return (state_.load(std::memory_order_acquire) & kExpired) != 0;
}

bool StatementHandle::WasCancelled() const noexcept {
    return (state_.load(std::memory_order_acquire) & kCancelled) != 0;
}

bool StatementHandle::SetAttribute(SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER kind) noexcept {
    return SQL_SUCCEEDED(Odbc().SetStmtAttr(Get(), attribute, value, kind));
}

void StatementHandle::SetTimeout(LONG seconds) {
    if (profile_.timeLimit != TimeLimit::Attribute || seconds == timeout_) return;
    // A driver that refuses leaves the statement without a limit.
    SetNumber(SQL_ATTR_QUERY_TIMEOUT, static_cast<SQLULEN>(seconds));
    timeout_ = seconds;
}

void StatementHandle::SetMaxRows(LONG rows) {
    if (rows == maxRows_) return;
    SetNumber(SQL_ATTR_MAX_ROWS, static_cast<SQLULEN>(rows));
    maxRows_ = rows;
}

void StatementHandle::SetRowArraySize(SQLULEN rows) {
    if (rows == rowArraySize_) return;
    if (rows > rowStatusSize_) {
        auto status = std::make_unique<SQLUSMALLINT[]>(rows);
        if (!SetAttribute(SQL_ATTR_ROW_STATUS_PTR, status.get(), SQL_IS_POINTER)) Throw(SQL_ERROR);
        if (rowStatus_ == nullptr && !SetAttribute(SQL_ATTR_ROWS_FETCHED_PTR, &rowsFetched_, SQL_IS_POINTER)) {
            const auto records = ReadDiagnostics(SQL_HANDLE_STMT, Get());
            SetAttribute(SQL_ATTR_ROW_STATUS_PTR, nullptr, SQL_IS_POINTER);
            throw MakeError(records);
        }
        rowStatus_ = std::move(status);
        rowStatusSize_ = rows;
    }
    if (!SetNumber(SQL_ATTR_ROW_ARRAY_SIZE, rows)) Throw(SQL_ERROR);
    rowArraySize_ = rows;
}

bool StatementHandle::SetParameterRows(SQLULEN rows, SQLUSMALLINT* states) noexcept {
    const bool isSet = SetNumber(SQL_ATTR_PARAMSET_SIZE, rows);
    return SetAttribute(SQL_ATTR_PARAM_STATUS_PTR, states, SQL_IS_POINTER) && isSet;
}

void StatementHandle::Unbind() noexcept {
    if (bound == nullptr) return;
    Odbc().FreeStmt(Get(), SQL_UNBIND);
    bound.reset();
}

void StatementHandle::TakeRest(bool isGivenUp) noexcept {
    // Whoever has cancelled may have looked at a step that was about to end.
    constexpr int kMilliseconds = 100;
    std::optional<WatchdogGuard> guard;
    if (isGivenUp) {
        AllowCancel();
        try {
            guard.emplace(*this, kMilliseconds);
        } catch (...) {
            // No memory or no thread for watching: the steps take as long as they do.
        }
    }
    SQLRETURN result = SQL_SUCCESS;
    while (SQL_SUCCEEDED(result)) {
        const StepCall step(*this);
        result = Odbc().MoreResults(Get());
    }
}

void StatementHandle::Close() noexcept {
    Odbc().FreeStmt(Get(), SQL_CLOSE);
}

}  // namespace tk::ado
