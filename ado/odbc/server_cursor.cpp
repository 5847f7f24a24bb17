#include "ado/odbc/server_cursor.h"

#include <cstdio>

#include "ado/odbc/physical_connection.h"

namespace tk::ado {
namespace {

/// Runs a text whose statements give no rows.
bool Run(StatementHandle& handle, const char* text) noexcept {
    // Drivers take the text as writable; none writes.
    auto* const writable = reinterpret_cast<SQLCHAR*>(const_cast<char*>(text));
    const bool isDone = SQL_SUCCEEDED(Odbc().ExecDirect(handle.Get(), writable, SQL_NTS));
    if (!isDone) return false;
    handle.TakeRest();
    handle.Close();
    return true;
}

}  // namespace

SQLRETURN ServerCursor::Begin(StatementHandle& handle) noexcept {
    hasBegun_ = isOpen_ = false;  // it may be made again, on another connection
    if (frame_.begin != nullptr && !Run(handle, frame_.begin)) return SQL_ERROR;
    hasBegun_ = true;
    return SQL_SUCCESS;
}

std::string ServerCursor::OpenText(std::string_view query) const {
    return std::string(frame_.open).append(query);
}

SQLRETURN ServerCursor::FetchFirst(StatementHandle& handle) noexcept {
    constexpr std::size_t kRows = 1024;
    int results = 1;
    while (SQL_SUCCEEDED(Odbc().MoreResults(handle.Get())))
        ++results;
    if (results != frame_.statements) return SQL_ERROR;
    isOpen_ = true;
    return FetchNext(handle, kRows);
}

SQLRETURN ServerCursor::FetchNext(StatementHandle& handle, std::size_t rows) noexcept {
    handle.Close();
    char text[64];
    std::snprintf(text, sizeof text, "%s%zu%s", statements_.fetch, rows, statements_.from);
    const SQLRETURN result = Odbc().ExecDirect(handle.Get(), reinterpret_cast<SQLCHAR*>(text), SQL_NTS);
    SQLLEN count = 0;
    hasFailed_ = !SQL_SUCCEEDED(result) || !SQL_SUCCEEDED(Odbc().RowCount(handle.Get(), &count));
    isAtEnd_ = hasFailed_ || static_cast<std::size_t>(count) < rows;
    return hasFailed_ ? SQL_ERROR : result;
}

void ServerCursor::Close(StatementHandle& handle, PhysicalConnection& connection) noexcept {
    if (connection.IsBroken()) return;
    if (!hasFailed_ && Run(handle, frame_.close)) return;
    if (!Run(handle, frame_.undo)) connection.MarkBroken();
}

void ServerCursor::Undo(PhysicalConnection& connection) const noexcept {
    if (!hasBegun_ || connection.IsBroken() || connection.RunText(frame_.undo)) return;
    connection.MarkBroken();
}

}  // namespace tk::ado
