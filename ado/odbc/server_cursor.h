// ado/odbc/server_cursor.h - a large result that the server hands out a part at a time, by statements of ours.
//
//   ServerCursor cursor(*profile.cursor, isInTransaction);
//   result = cursor.Begin(handle);
//   if (SQL_SUCCEEDED(result)) result = odbc.ExecDirect(handle, cursor.OpenText(query));
//   if (SQL_SUCCEEDED(result)) result = cursor.FetchFirst(handle);  // a result like the query's own: its first rows
//   while (!cursor.IsAtEnd()) result = cursor.FetchNext(handle, n); // the next n rows; what is bound stays bound
//   cursor.Close(handle, connection);
//
// A server may collect all rows of a fetch before it sends the first one. So several fetches go to it in one text, more
// of them as long as they are quick: it collects the rows of one while the driver still receives those of the one
// before. When one of them fails, the driver gives none of the text's rows.
//
// One driver has a way of its own, which follows a null pointer when the connection is lost between two rows. These are
// executions, and fail like any other.
//
// One at a time on a connection. Outside of a transaction the cursor makes one, from its opening to its closing.
//
// Threads: one at a time.
#pragma once

#include <string>
#include <string_view>

#include "ado/odbc/driver_profile.h"
#include "ado/odbc/statement_handle.h"

namespace tk::ado {

class PhysicalConnection;

class ServerCursor {
public:
    ServerCursor(const CursorStatements& statements, bool isInTransaction) noexcept
        : statements_(statements), frame_(isInTransaction ? statements.inTransaction : statements.alone) {}

    /// Before it is opened.
    SQLRETURN Begin(StatementHandle& handle) noexcept;

    /// What opens it.
    std::string OpenText(std::string_view query) const;

    /// Steps over what opening it answered, and fetches.
    /// @return the driver's result; SQL_ERROR also for a query that was more than one statement
    SQLRETURN FetchFirst(StatementHandle& handle) noexcept;

    /// The part before it has been read.
    /// @param rows  counts when the server is asked: not for every part
    SQLRETURN FetchNext(StatementHandle& handle, std::size_t rows) noexcept;

    /// True when the server has taken the query for one: what fails from then on is the query's own failure.
    bool IsOpen() const noexcept { return isOpen_; }

    /// True when the last part was not a full one.
    bool IsAtEnd() const noexcept { return isAtEnd_; }

    /// Ends the cursor, and the transaction that it made; what it did is undone when a part has failed. The connection
    /// is marked broken when neither can be done.
    void Close(StatementHandle& handle, PhysicalConnection& connection) noexcept;

    /// The same where opening has failed.
    void Undo(PhysicalConnection& connection) const noexcept;

private:
    SQLRETURN Ask(StatementHandle& handle, std::size_t rows) noexcept;
    SQLRETURN Enter(StatementHandle& handle, SQLRETURN result) noexcept;

    const CursorStatements& statements_;
    const CursorFrame& frame_;
    std::size_t rowsOfPart_ = 0;
    int partsAtOnce_ = 1;
    int partsAtDriver_ = 0;  // behind the one that is read
    bool hasBegun_ = false;
    bool isOpen_ = false;
    bool isAtEnd_ = false;
    bool hasFailed_ = false;
};

}  // namespace tk::ado
