#include "ado/odbc/statement_handle.h"

namespace tk::ado {

void StatementHandle::Start() noexcept {
    const std::lock_guard lock(gate_);
    running_ = true;
    cancelled_ = false;
    expired_ = false;
}

void StatementHandle::Finish() noexcept {
    const std::lock_guard lock(gate_);
    running_ = false;
}

void StatementHandle::CancelRunning() noexcept {
    const std::lock_guard lock(gate_);
    if (!running_) return;
    cancelled_ = true;
    Odbc().Cancel(Get());
}

void StatementHandle::Expire() noexcept {
    const std::lock_guard lock(gate_);
    if (!running_) return;
    expired_ = true;
    Odbc().Cancel(Get());
}

bool StatementHandle::WasExpired() const noexcept {
    const std::lock_guard lock(gate_);
    return expired_;
}

bool StatementHandle::WasCancelled() const noexcept {
    const std::lock_guard lock(gate_);
    return cancelled_;
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
    SetNumber(SQL_ATTR_MAX_ROWS, static_cast<SQLULEN>(rows));  // the row set counts too
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

void StatementHandle::Unbind() noexcept {
    if (bound == nullptr) return;
    Odbc().FreeStmt(Get(), SQL_UNBIND);
    bound.reset();
}

void StatementHandle::Close() noexcept {
    Odbc().FreeStmt(Get(), SQL_CLOSE);
}

}  // namespace tk::ado
