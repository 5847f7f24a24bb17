// ado/rowset/row_set.h - the rows of one result, kept by column; shared by a recordset, its clones and its views.
//
//   auto rows = RowSet::Fetch(std::move(statement), session, options);
//   for (std::size_t row = 0; rows->HasRow(row); ++row) rows->Read(row, 0, value);
//
// Rows arrive in blocks, the first ones on the calling thread, the rest on a worker when there are many. A row that has
// arrived never changes; edits live in the cursor layer.
//
// Threads: one reader at a time beside the worker; Cancel and ArrivedRows from any thread.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "ado/error.h"
#include "ado/odbc/session.h"
#include "ado/odbc/statement.h"
#include "ado/rowset/cell.h"
#include "ado/rowset/column.h"

namespace tk::ado {

class Chunk;
class RowLayout;

struct FetchOptions {
    bool asynchronous = false;  // adAsyncFetch: Fetch returns with the first rows or earlier
    LONG maxRows = 0;
};

class RowSet {
public:
    /// Takes over an executed statement that has a result. Keeps the connection until the last row has arrived.
    static std::shared_ptr<RowSet> Fetch(Statement statement, const std::shared_ptr<Session>& session,
                                         const FetchOptions& options);

    /// A finished set built row by row: schema rowsets and fabricated recordsets. Append takes what Read gives.
    static std::shared_ptr<RowSet> Build(std::vector<Column> columns);
    void Append(std::span<const VARIANT> values);

    /// The same of what Append would make of the values: UTF-8 texts, digits, 1 or 0; NULL where there is none.
    void AppendTexts(std::span<const std::optional<std::string_view>> cells);

    /// A finished set of chunks that follow each other from row 0 on, for rows that come from a file.
    static std::shared_ptr<RowSet> Assemble(std::vector<Column> columns, RowLayout layout,
                                            std::vector<std::unique_ptr<Chunk>> chunks);

    ~RowSet();

    const std::vector<Column>& Columns() const noexcept;
    std::size_t ColumnCount() const noexcept { return columnCount_; }

    /// Fills in what Columns() only knows after asking the database: the base names, isAutoIncrement, isKey, the key
    /// flag of the attributes. To be called before an update and before Field.Properties are read; further calls do
    /// nothing. What the database does not tell stays empty.
    /// @throws AdoError when it was cancelled or the time was over: it can be asked again then
    void DescribeOrigins(LONG timeoutSeconds = kUsualWaitSeconds);

    /// The names of its text mean what they mean now: it describes its origins before the session's settings change.
    void DescribeBeforeSettingsChange();

    /// True when the row exists; waits for it when the fetch still runs. Throws AdoError when the fetch failed before.
    bool HasRow(std::size_t row);

    /// Rows so far, without waiting.
    std::size_t ArrivedRows() const noexcept;

    /// All rows; waits for the end of the fetch.
    std::size_t CountRows();

    bool IsComplete() const noexcept;

    /// Stops the fetch at the server and here; rows that have arrived stay.
    void Cancel();

    /// From any thread: ends the fetch when a reader waits for its rows; the reader gets "cancelled". Else nothing.
    void Interrupt() noexcept;

    /// Reads one cell as the VARIANT that Field.Value gives (types by the tables of the object model).
    /// @param value  uninitialised on entry; the caller's afterwards
    void Read(std::size_t row, std::size_t column, VARIANT& value) const;

    /// The cell in place, for filters, searches, sorting and text output: no allocation.
    Cell At(std::size_t row, std::size_t column) const;

    /// The cell of a text column as UTF-8; data() is null for NULL. Nullopt for other columns, also where they hold a
    /// text.
    std::optional<std::string_view> TextAt(std::size_t row, std::size_t column) const;

    bool IsNull(std::size_t row, std::size_t column) const;

    /// Field.ActualSize: bytes of the stored value, 2 a character for wide texts, 0 for NULL.
    LONG ActualSize(std::size_t row, std::size_t column) const;

    /// How the values are kept, for code that walks over many rows: the chunk of a row that has arrived.
    const RowLayout& Layout() const noexcept;
    const Chunk& ChunkOf(std::size_t row) const;

    /// Bytes held for the rows, for the memory promise of the documentation.
    std::size_t MemoryBytes() const;

    /// Waits until all is there that the driver gives with the rows and behind them.
    void WaitForOutputs();

    /// The statement's next result, or an empty pointer; only when this one is complete.
    std::unique_ptr<Statement> TakeNextResult();

private:
    struct Impl;
    explicit RowSet(std::shared_ptr<Impl> impl);
    static std::shared_ptr<RowSet> Make(std::shared_ptr<Impl> impl);
    std::shared_ptr<Impl> impl_;  // shared with the worker
    const std::size_t columnCount_;
};

}  // namespace tk::ado
