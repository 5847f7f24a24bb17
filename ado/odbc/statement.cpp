#include "ado/odbc/statement.h"

#include "ado/odbc/output_row.h"
#include "ado/odbc/running_call.h"
#include "ado/odbc/server_call.h"
#include "ado/odbc/statement_impl.h"
#include "ado/rowset/describe.h"

namespace tk::ado {
namespace {

/// Steps to further results on the caller's thread, which another thread can cancel.
class Stepping {
public:
    Stepping(RunningCall& running, StatementHandle& handle) noexcept : handle_(handle), scope_(running, handle) {
        handle_.BeginRows();
    }
    ~Stepping() { handle_.EndRows(); }
    Stepping(const Stepping&) = delete;
    Stepping& operator=(const Stepping&) = delete;

private:
    StatementHandle& handle_;
    RunningCall::Scope scope_;
};

}  // namespace

void FollowingResults::Append(std::unique_ptr<FollowingResults> others) {
    if (others == nullptr || failure) return;
    for (Statement& each : others->statements)
        statements.push_back(std::move(each));
    failure = std::move(others->failure);
}

Statement::Impl::~Impl() {
    if (handle == nullptr) return;
    handle->Finish();
    const ServerCall call(handle->Profile());
    if (mayHaveMore && columnCount == 0 && handle->Profile().leavesResults) handle->TakeRest(false);
    if (mayHaveRows) handle->Close();
    if (cursor) cursor->Close(*handle, **lease);
    binding.reset();
    if (preparedText.empty()) {
        (*lease)->ReturnHandle(std::move(handle));
    } else {
        (*lease)->ReturnPrepared(std::move(preparedText), std::move(handle));
    }
}

void Statement::Impl::ReadResultShape() {
    shape.reset();
    SQLSMALLINT count = 0;
    const SQLRETURN result = Odbc().NumResultCols(handle->Get(), &count);
    if (!SQL_SUCCEEDED(result)) Fail(result);
    columnCount = count;
    mayHaveRows = count != 0 || handle->Profile().hasBatches;
    rowsAffected = -1;
    if (count == 0) {
        SQLLEN rows = -1;  // some drivers succeed without writing
        if (SQL_SUCCEEDED(Odbc().RowCount(handle->Get(), &rows)) && rows >= 0) rowsAffected = static_cast<LONG>(rows);
    }
}

bool Statement::Impl::FetchPart(std::size_t rows) {
    if (cursor == nullptr || cursor->IsAtEnd()) return false;
    const StatementHandle::RowCalls calls(*handle);
    ExpectNotEnded();
    const SQLRETURN result = cursor->FetchNext(*handle, rows);
    if (!SQL_SUCCEEDED(result)) Fail(result);
    return true;
}

void Statement::Impl::Restart() {
    handle->AllowCancel();
    ExpectNotEnded();
    handle->Close();
    const SQLRETURN result = preparedText.empty()
                                 ? Odbc().ExecDirect(handle->Get(), reinterpret_cast<SQLCHAR*>(text.data()),
                                                     static_cast<SQLINTEGER>(text.size()))
                                 : Odbc().Execute(handle->Get());
    if (!SQL_SUCCEEDED(result)) Fail(result);
}

void Statement::Impl::Fail(SQLRETURN result) {
    mayHaveMore = false;
    handle->HoldCancel();
    std::vector<DiagnosticRecord> records;
    if (result != SQL_INVALID_HANDLE) records = ReadDiagnostics(SQL_HANDLE_STMT, handle->Get());
    bool isLost = false;
    for (const DiagnosticRecord& record : records)
        isLost = isLost || Classify(record).connectionLost;
    if (isLost || handle->WasCut() || (*lease)->IsDead()) (*lease)->MarkBroken();
    // A server's own time limit reads like a cancellation; nobody has asked for one.
    const bool isExpired = handle->WasExpired();
    // A call that was waiting for a lock when it was ended tells only that; one that had not begun yet, nothing of use.
    if (isExpired && AreOfLock(records)) records.insert(records.begin(), {"HYT00", 0, "Timeout expired"});
    if (handle->WasCancelled() && !IsEnded(MakeError(records))) {
        records.insert(records.begin(), {"HY008", 0, "Operation canceled"});
    }
    if (isExpired || (timeoutSeconds > 0 && !handle->WasCancelled())) throw MakeTimeoutError(records, isExpired);
    throw MakeError(records);
}

Statement::Statement(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Statement::Statement(Statement&&) noexcept = default;
Statement& Statement::operator=(Statement&&) noexcept = default;
Statement::~Statement() = default;

bool Statement::HasRows() const noexcept {
    return impl_->columnCount > 0;
}

LONG Statement::RowsAffected() const noexcept {
    return impl_->rowsAffected;
}

std::vector<ErrorRecord> Statement::TakeWarnings() noexcept {
    return std::exchange(impl_->warnings, {});
}

std::shared_ptr<const ParameterOutputs> Statement::Outputs() const noexcept {
    return impl_->outputs;
}

const std::vector<Column>& Statement::Columns() {
    if (impl_->shape != nullptr) return impl_->shape->columns;
    impl_->shape = impl_->Describe();
    return impl_->shape->columns;
}

std::shared_ptr<const ResultShape> Statement::Impl::Describe() {
    KnownResults& known = (*lease)->Results();
    if (form != 0) {
        if (auto same = known.Recognise(*handle, form, columnCount)) return same;
    }
    // Drivers may ask the server about columns.
    const ServerCall call(handle->Profile(), timeoutSeconds, handle.get());
    auto described = DescribeResult(*handle, columnCount);
    if (form != 0) known.Remember(*handle, form, text, described);
    return described;
}

bool Statement::MoreResults() {
    if (impl_->handle != nullptr && !impl_->handle->Profile().hasBatches) return false;
    return NextResult() && PassOutputRow(*impl_);
}

bool Statement::NextResult() {
    if (impl_->NextResult()) return true;
    std::unique_ptr<FollowingResults> following = std::move(impl_->following);
    if (following == nullptr) return false;
    if (following->statements.empty()) {
        if (following->failure) std::rethrow_exception(following->failure);
        return false;
    }
    impl_ = std::move(following->statements.front().impl_);
    following->statements.pop_front();
    impl_->following = std::move(following);
    return true;
}

bool Statement::Impl::NextResult() {
    if (!mayHaveMore) return false;
    const bool isWatched = handle->Profile().timeLimit == TimeLimit::Watchdog;
    WatchdogGuard guard(isWatched ? timeoutSeconds : 0, *handle);
    const ServerCall call(handle->Profile(), timeoutSeconds, handle.get());
    SQLRETURN result;
    {
        const StatementHandle::StepCall step(*handle);
        result = Odbc().MoreResults(handle->Get());
    }
    guard.Finish();
    if (result == SQL_NO_DATA) return mayHaveMore = false;
    if (!SQL_SUCCEEDED(result)) Fail(result);
    isFirstResult = false;
    ReadResultShape();
    return true;
}

void Statement::Impl::FailForMissing() const {
    throw MakeError({(*lease)->LastFailure()});
}

std::unique_ptr<Statement::Impl> Statement::Impl::WithoutHandle() const {
    auto same = std::make_unique<Impl>();
    same->outputs = outputs;
    same->timeoutSeconds = timeoutSeconds;
    same->rowsAffected = rowsAffected;
    same->columnCount = columnCount;
    same->isFirstResult = isFirstResult;
    same->mayHaveMore = false;
    same->shape = shape;
    same->warnings = warnings;
    return same;
}

void Statement::PassNumbers(RunningCall& running) {
    auto numbers = impl_->WithoutHandle();
    numbers->following = std::make_unique<FollowingResults>();
    try {
        const Stepping stepping(running, *impl_->handle);
        if (MoreResults()) numbers->following->statements.emplace_back(std::move(impl_));
    } catch (const AdoError&) {
        numbers->following->failure = std::current_exception();
    }
    impl_ = std::move(numbers);
}

void Statement::TakeRest(RunningCall& running) {
    if (impl_->handle != nullptr && !impl_->handle->Profile().leavesResults) return;
    do {
        if (impl_->handle != nullptr) impl_->TakeRest(running);
    } while (NextResult());
}

void Statement::Impl::TakeRest(RunningCall& running) {
    const Stepping stepping(running, *handle);
    bool isLastOfRows = false;
    try {
        while (NextResult()) {
            ExpectNotEnded();
            isLastOfRows = columnCount > 0;
        }
    } catch (const AdoError&) {
        if (std::exchange(mayHaveMore, false)) handle->TakeRest(handle->IsEnded());
        throw;
    }
    if (isLastOfRows) FailForMissing();
}

void Statement::Cancel() noexcept {
    if (impl_->handle != nullptr) impl_->handle->CancelRunning();
}

}  // namespace tk::ado
