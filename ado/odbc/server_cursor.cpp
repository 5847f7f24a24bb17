#include "ado/odbc/server_cursor.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "ado/odbc/physical_connection.h"

namespace tk::ado {
namespace {

// With parts of 1024 rows little is left of the server's time for the first of them, which nothing hides. The driver
// holds them all at a time, and gives none when one fails.
constexpr int kMostPartsAtOnce = 8;

// Rows that come slowly are wanted before many of them are there.
constexpr auto kShortTime = std::chrono::milliseconds(100);
constexpr auto kLongTime = std::chrono::milliseconds(400);

/// Runs a text whose statements give no rows.
bool Run(StatementHandle& handle, const char* text) noexcept {
    // Drivers take the text as writable; none writes.
    auto* const writable = reinterpret_cast<SQLCHAR*>(const_cast<char*>(text));
    const bool isDone = SQL_SUCCEEDED(Odbc().ExecDirect(handle.Get(), writable, SQL_NTS));
    if (!isDone) return false;
    handle.TakeRest(false);
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
    constexpr std::size_t kRows = 256;  // of which nobody knows how wide they are
    int results = 1;
    while (SQL_SUCCEEDED(Odbc().MoreResults(handle.Get())))
        ++results;
    if (results != frame_.statements) return SQL_ERROR;
    isOpen_ = true;
    return Enter(handle, Ask(handle, kRows));
}

SQLRETURN ServerCursor::FetchNext(StatementHandle& handle, std::size_t rows) noexcept {
    if (partsAtDriver_ == 0) return Enter(handle, Ask(handle, rows));
    --partsAtDriver_;
    return Enter(handle, Odbc().MoreResults(handle.Get()));
}

SQLRETURN ServerCursor::Ask(StatementHandle& handle, std::size_t rows) noexcept {
    handle.Close();
    char text[64 * kMostPartsAtOnce];
    std::size_t size = 0;
    for (int i = 0; i < partsAtOnce_; ++i) {
        const char* const separator = i == 0 ? "" : ";";
        size += static_cast<std::size_t>(std::snprintf(text + size, sizeof text - size, "%s%s%zu%s", separator,
                                                       statements_.fetch, rows, statements_.from));
    }
    rowsOfPart_ = rows;
    partsAtDriver_ = partsAtOnce_ - 1;
    const auto begun = std::chrono::steady_clock::now();
    const SQLRETURN result =
        Odbc().ExecDirect(handle.Get(), reinterpret_cast<SQLCHAR*>(text), static_cast<SQLINTEGER>(size));
    const auto lasted = std::chrono::steady_clock::now() - begun;
    if (lasted < kShortTime) partsAtOnce_ = std::min(partsAtOnce_ * 2, kMostPartsAtOnce);
    if (lasted > kLongTime) partsAtOnce_ = std::max(partsAtOnce_ / 2, 1);
    return result;
}

SQLRETURN ServerCursor::Enter(StatementHandle& handle, SQLRETURN result) noexcept {
    SQLLEN count = 0;
    hasFailed_ = !SQL_SUCCEEDED(result) || !SQL_SUCCEEDED(Odbc().RowCount(handle.Get(), &count));
    isAtEnd_ = hasFailed_ || static_cast<std::size_t>(count) < rowsOfPart_;
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
