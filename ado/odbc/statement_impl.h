// ado/odbc/statement_impl.h - what is behind a Statement; for the session and the row set.
#pragma once

#include <deque>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "ado/odbc/diagnostics.h"
#include "ado/odbc/parameter_binding.h"
#include "ado/odbc/server_cursor.h"
#include "ado/odbc/session_cache.h"
#include "ado/odbc/statement.h"
#include "ado/odbc/statement_handle.h"
#include "ado/rowset/result_shape.h"

namespace tk::ado {

class RowSet;

/// Results behind a statement that are not the driver's to step to: of further statements of its text, which have been
/// executed, or such as a driver would have left on the connection.
struct FollowingResults {
    std::deque<Statement> statements;
    std::exception_ptr failure;  // what the one behind them met

    /// Puts others behind these, unless there is a failure.
    void Append(std::unique_ptr<FollowingResults> others);
};

struct Statement::Impl {
    std::shared_ptr<Lease> lease;
    std::unique_ptr<StatementHandle> handle;  // null: it gave this back, for nothing but its numbers and rows are left
    std::unique_ptr<const ParameterBinding> binding;
    std::shared_ptr<ParameterOutputs> outputs;
    std::unique_ptr<ServerCursor> cursor;  // null: the driver has, or gets, all rows of the result
    std::string preparedText;              // what the handle is prepared for; empty: nothing that is worth keeping
    std::string text;              // to describe its rows or outputs; empty for catalog calls, and without either
    std::uint64_t resultName = 0;  // to remember how many rows it gave; 0: not worth it
    std::uint64_t form = 0;        // of a text with one result, by which that may be recognised; 0: not worth it
    LONG timeoutSeconds = 0;
    LONG maxRows = 0;
    LONG rowsAffected = -1;
    int columnCount = 0;
    bool isFirstResult = true;
    bool mayHaveRows = true;  // nothing to close on the handle otherwise
    bool mayHaveMore = true;  // results behind this one, of which none has failed
    bool isOnSideConnection = false;
    std::shared_ptr<const ResultShape> shape;  // null: not described yet
    std::shared_ptr<RowSet> rows;              // those of a result that was read before anybody asked for it
    std::vector<ErrorRecord> warnings;
    std::unique_ptr<FollowingResults> following;  // null: the driver knows of all results

    ~Impl();

    /// Reads column and row counts after an execution or a step to the next result.
    void ReadResultShape();

    /// The columns of the result, from the driver unless they are known.
    std::shared_ptr<const ResultShape> Describe();

    /// Gets the next part of the rows from a cursor, when the last one has been read; false when there is none.
    bool FetchPart(std::size_t rows);

    /// Steps to the driver's next result; false when there is none.
    bool NextResult();

    /// Steps over the further results of the driver.
    void TakeRest(RunningCall& running);

    /// For a driver that leaves results: the last of several is one with rows, but numbers come last of all. The driver
    /// has taken a failure for a result without rows.
    [[noreturn]] void FailForMissing() const;

    /// The same result without the handle: its numbers, and the shape of its rows.
    std::unique_ptr<Impl> WithoutHandle() const;

    /// Executes the text again, parameters as they were; nothing has been fetched yet. Not for catalog calls.
    void Restart();

    /// Before each call that fetches rows: throws when the fetch was cancelled or its time is over.
    void ExpectNotEnded() const {
        if (!handle->IsEnded()) [[likely]]
            return;
        if (handle->WasCut()) (*lease)->MarkBroken();
        throw handle->WasExpired() ? MakeWaitedError() : MakeCancelledError();
    }

    /// A failure of the handle: diagnostics first, then the question whether the connection still lives.
    [[noreturn]] void Fail(SQLRETURN result);
};

}  // namespace tk::ado
