#include "ado/odbc/server_cursor.h"

#include "ado/odbc/physical_connection.h"

namespace tk::ado {
namespace {

/// Runs a text whose statements give no rows.
bool Run(StatementHandle& handle, const char* text) noexcept {
    // Drivers take the text as writable; none writes.
    auto* const writable = reinterpret_cast<SQLCHAR*>(const_cast<char*>(text));
    const bool isDone = SQL_SUCCEEDED(Odbc().ExecDirect(handle.Get(), writable, SQL_NTS));
    handle.TakeRest();
    handle.Close();
    return isDone;
}

}  // namespace

std::string ServerCursor::OpenText(std::string_view query) const {
    return std::string(frame_.open).append(query);
}

SQLRETURN ServerCursor::FetchFirst(StatementHandle& handle) noexcept {
    constexpr int kStatements = 2;
    int results = 1;
    while (SQL_SUCCEEDED(Odbc().MoreResults(handle.Get())))
        ++results;
    return results == kStatements ? FetchNext(handle) : SQL_ERROR;
}

SQLRETURN ServerCursor::FetchNext(StatementHandle& handle) noexcept {
    handle.Close();
    auto* const text = reinterpret_cast<SQLCHAR*>(const_cast<char*>(statements_.fetch));
    const SQLRETURN result = Odbc().ExecDirect(handle.Get(), text, SQL_NTS);
    SQLLEN rows = 0;
    hasFailed_ = !SQL_SUCCEEDED(result) || !SQL_SUCCEEDED(Odbc().RowCount(handle.Get(), &rows));
    isAtEnd_ = hasFailed_ || rows < statements_.rows;
    return hasFailed_ ? SQL_ERROR : result;
}

void ServerCursor::Close(StatementHandle& handle, PhysicalConnection& connection) noexcept {
    if (connection.IsBroken()) return;
    if (!hasFailed_ && Run(handle, frame_.close)) return;
    if (!Run(handle, frame_.undo)) connection.MarkBroken();
}

void ServerCursor::Undo(PhysicalConnection& connection) const noexcept {
    if (connection.IsBroken() || connection.RunText(frame_.undo)) return;
    connection.MarkBroken();
}

}  // namespace tk::ado
