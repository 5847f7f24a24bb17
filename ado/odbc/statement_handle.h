// ado/odbc/statement_handle.h - one statement handle of a connection with what is set on it, kept for the next
// statement.
#pragma once

#include <atomic>
#include <memory>

#include "ado/odbc/driver_profile.h"
#include "ado/odbc/odbc_handle.h"
#include "ado/odbc/watchdog.h"

namespace tk::ado {

struct ResultShape;

/// Something that lives with a handle: the buffers that are bound to its columns.
class BoundState {
public:
    virtual ~BoundState() = default;
};

class StatementHandle final : public Expiring {
public:
    StatementHandle(SQLHDBC connection, const DriverProfile& profile)
        : Expiring(MayWait::Yes), handle_(connection), profile_(profile) {}
    ~StatementHandle();

    SQLHSTMT Get() const noexcept { return handle_.Get(); }
    const DriverProfile& Profile() const noexcept { return profile_; }

    /// Between Start and Finish, CancelRunning reaches the driver; at other times it does nothing.
    void Start() noexcept;
    void Finish() noexcept;

    /// Between BeginRows and EndRows drivers must not be cancelled inside a call that is about to return: one of them
    /// frees the row it is filling, another forgets its connection. The loop that fetches asks IsEnded before each call
    /// instead; only a call that lasts is ended by the driver, where the driver's rows come from elsewhere.
    void BeginRows() noexcept;
    void EndRows() noexcept;

    /// Between two calls the driver is not to be cancelled either: the driver manager would drop the diagnostics of the
    /// call before, which may be being read. From HoldCancel to AllowCancel or Start a cancellation only leaves its
    /// mark, which whoever makes the next call looks for.
    void HoldCancel() noexcept;
    void AllowCancel() noexcept;

    /// Around the calls that fetch rows.
    class RowCalls {
    public:
        explicit RowCalls(StatementHandle& handle) noexcept : handle_(handle) { handle_.state_.fetch_or(kInRowCalls); }
        ~RowCalls() { handle_.state_.fetch_and(~static_cast<unsigned>(kInRowCalls)); }
        RowCalls(const RowCalls&) = delete;
        RowCalls& operator=(const RowCalls&) = delete;

    private:
        StatementHandle& handle_;
    };

    /// Around each call that steps to a further result: the server may be at it for long, wherever the rows come from.
    class StepCall {
    public:
        explicit StepCall(StatementHandle& handle) noexcept : handle_(handle) {
            handle_.stepCalls_.fetch_add(1, std::memory_order_relaxed);
            handle_.state_.fetch_or(kInStepCall);
        }
        ~StepCall() { handle_.state_.fetch_and(~static_cast<unsigned>(kInStepCall)); }
        StepCall(const StepCall&) = delete;
        StepCall& operator=(const StepCall&) = delete;

    private:
        StatementHandle& handle_;
    };

    /// From any thread. The call that runs now ends with "cancelled".
    void CancelRunning() noexcept;
    bool WasCancelled() const noexcept;
    bool IsEnded() const noexcept { return (state_.load(std::memory_order_acquire) & (kCancelled | kExpired)) != 0; }

    /// As CancelRunning, because the time is over.
    int Expire() noexcept override;
    bool WasExpired() const noexcept;

    /// The connection that the running call waits for is about to be shut down: from now on until the next Start nobody
    /// cancels it inside the driver, which does not bear both at once. False, and nothing done, while somebody does.
    bool BeginCut() noexcept;
    bool WasCut() const noexcept { return (state_.load(std::memory_order_acquire) & kCut) != 0; }

    /// Attributes are sent only when they change.
    void SetTimeout(LONG seconds);
    void SetMaxRows(LONG rows);
    LONG MaxRows() const noexcept { return maxRows_; }

    /// Rows of one fetch; with more than one, RowsFetched and RowStatus tell about each block.
    void SetRowArraySize(SQLULEN rows);
    SQLULEN RowsFetched() const noexcept { return rowsFetched_; }
    SQLUSMALLINT RowStatus(std::size_t row) const noexcept { return rowStatus_[row]; }

    /// Executions of one call, each with its own parameters. @param states  of each, written by the driver; null: 1 row
    bool SetParameterRows(SQLULEN rows, SQLUSMALLINT* states) noexcept;

    /// Takes the bindings of the columns off.
    void Unbind() noexcept;

    /// Steps over further results, up to one that failed.
    /// @param isGivenUp  nobody wants what they do either: a step that lasts is cancelled
    void TakeRest(bool isGivenUp) noexcept;

    /// Closes the cursor, if there is one; bindings stay.
    void Close() noexcept;

    /// The buffers bound to the columns; set by the row set's fetcher.
    std::unique_ptr<BoundState> bound;

    /// The columns of the last result with rows: often those of the next one as well.
    std::shared_ptr<const ResultShape> lastShape;

    /// It still reads what its statement has not read, and is to be freed instead of used again.
    bool isReading = false;

    /// Throws the handle's diagnostics as a failure of the given result.
    [[noreturn]] void Throw(SQLRETURN result) { ThrowDiagnostics(SQL_HANDLE_STMT, Get(), result); }

private:
    // What has happened to the running call; kReaching while another thread is inside the driver's cancel call.
    enum State : unsigned {
        kRunning = 1,
        kReaching = 2,
        kCancelled = 4,
        kExpired = 8,
        kRows = 16,
        kInRowCalls = 32,
        kCut = 64,
        kHeld = 128,
        kInStepCall = 256
    };
    bool Reach(State reason) noexcept;
    bool RowCallLasts() const noexcept;

    bool SetAttribute(SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER kind) noexcept;
    bool SetNumber(SQLINTEGER attribute, SQLULEN value) noexcept {
        return SetAttribute(attribute, reinterpret_cast<SQLPOINTER>(value), SQL_IS_UINTEGER);
    }

    OdbcStatement handle_;
    const DriverProfile& profile_;
    std::atomic<unsigned> state_ = 0;
    std::atomic<unsigned> stepCalls_ = 0;  // so far
    LONG timeout_ = 0;
    LONG maxRows_ = 0;
    SQLULEN rowArraySize_ = 1;
    SQLULEN rowsFetched_ = 0;
    std::unique_ptr<SQLUSMALLINT[]> rowStatus_;  // the driver writes into it
    SQLULEN rowStatusSize_ = 0;
};

}  // namespace tk::ado
