// ado/rowset/row_set_impl.h - what is behind a RowSet: the chunks, and the fetch that still adds to them.
//
// The fetch belongs to whoever has claimed the job: the thread that opens, a thread of the pool, or a reader that waits
// for a row nobody fetches yet. Chunks are added under the lock; a reader takes it only to change chunks.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ado/odbc/background_work.h"
#include "ado/odbc/settings_watcher.h"
#include "ado/odbc/statement_impl.h"
#include "ado/rowset/chunk.h"
#include "ado/rowset/fetch_pool.h"
#include "ado/rowset/fetcher.h"
#include "ado/rowset/row_set.h"

namespace tk::ado {

// What a fetch goes on until: all rows, or the end of what the statement gives.
inline constexpr std::size_t kToTheEnd = std::numeric_limits<std::size_t>::max();
inline constexpr std::size_t kAllRows = kToTheEnd - 1;

struct RowSet::Impl final : FetchJob, BackgroundWork, SettingsWatcher, std::enable_shared_from_this<RowSet::Impl> {
    explicit Impl(std::shared_ptr<const ResultShape> of) : shape(std::move(of)) {}

    class ReaderCount;

    // --- reading ---

    const std::shared_ptr<const ResultShape> shape;
    const RowLayout& layout = shape->layout;
    const Column* columns = shape->columns.data();  // with their origins, once these are known
    std::vector<Column> withOrigins;                // empty until then

    const std::vector<Column>& Columns() const noexcept { return withOrigins.empty() ? shape->columns : withOrigins; }
    void TakeOrigins(std::vector<Column> described) noexcept {
        withOrigins = std::move(described);
        columns = Columns().data();
    }
    std::atomic<bool> areOriginsKnown = false;
    std::weak_ptr<Session> origin;
    std::string text;

    void DescribeOrigins(LONG timeoutSeconds);

    /// What was found out before the settings changed; under the lock: the change may be another thread's.
    std::unique_ptr<std::vector<Column>> describedEarly;
    void BeforeSettingsChange() noexcept override;

    /// The chunk of a row that has arrived.
    const Chunk& Locate(std::size_t row) const {
        if (current != nullptr && current->Covers(row)) [[likely]]
            return *current;
        return LocateElsewhere(row);
    }
    const Chunk& LocateElsewhere(std::size_t row) const;
    const Chunk& Go(std::size_t index) const noexcept;
    Cell At(std::size_t row, std::size_t column) const;

    /// The commonest cells, which need no reading. False, and nothing done, for the others.
    bool ReadPlain(std::size_t row, std::size_t column, VARIANT& value) const;

    /// Apart from the above: what it needs on the stack would be paid for by them.
    [[gnu::noinline]] void ReadOther(std::size_t row, std::size_t column, VARIANT& value) const;

    /// A date that no automation date can say, as text.
    std::string MomentText(std::size_t row, std::size_t column) const;

    void ThrowIfFailed() const;

    mutable const Chunk* current = nullptr;  // the reader's place
    mutable std::size_t currentIndex = 0;

    // --- fetching ---

    /// Fetches up to `rows` more rows, within the statement's time limit; false after the last one. The caller has
    /// claimed the job.
    bool Step(std::size_t rows);

    /// The same for the first rows, which may have to wait for a lock.
    bool FirstStep(std::size_t rows);

    /// How many rows the next part of a cursor's result is to have: fewer when those of the last chunk are wide.
    std::size_t RowsOfPart() const noexcept;

    /// Fetches until `until` rows have arrived or the patience is over. The caller has claimed the job.
    void Run(std::size_t until, const Patience* patience = nullptr) noexcept;

    /// Hands the job, which the caller has claimed, in again.
    void PutOff();

    void TellRowsAreThere() noexcept;

    /// The fetch has ended: lets go of the statement, looks for a further result, wakes the readers.
    void Finish(std::unique_ptr<AdoError> failure) noexcept;

    /// All rows are there, the statement goes on: reads what follows, each result with its rows. Cancelled as the rows.
    void ReadFurther() noexcept;

    /// Adds the statement's present result to those that follow; false when it could not be read whole.
    bool ReadResult(FollowingResults& following);

    /// Looks for a further result.
    void TakeNext(Statement& from) noexcept;

    void ExpectNotGivenUp() const {
        if (isCancelled || isInterrupted) throw MakeCancelledError();
    }

    void RunJob() noexcept override;
    bool WaitsForServer() const noexcept override { return areRowsThere && mayBeFollowed; }
    void AbortJob() noexcept override;

    /// Waits until so many rows are there, or no more will be. Does the work itself when nobody else has begun it.
    void WaitFor(std::size_t rows);

    /// ... until nothing of the statement is left on the connection.
    void WaitForEnd();

    template <class IsOver>
    void WaitUntil(std::size_t rows, IsOver isOver);

    bool HasAllRows() const noexcept { return areRowsThere || isComplete; }

    bool IsDone() const noexcept override { return isComplete; }
    bool FinishWork(const Patience& patience) noexcept override;

    /// Ends a fetch that a reader waits for; the reader, and every one after it, gets "cancelled".
    void Interrupt() noexcept;

    /// Ends the fetch from outside, within a bounded time.
    void Stop() noexcept;
    void CancelStatement() noexcept;

    mutable std::mutex mutex;
    std::condition_variable changed;
    mutable std::vector<std::unique_ptr<Chunk>> chunks;  // grows only, and not after isComplete
    std::atomic<std::size_t> arrived = 0;
    std::atomic<bool> areRowsThere = false;  // all of them; what follows may still be read
    std::atomic<bool> isComplete = false;    // the statement has let go of the connection
    std::atomic<bool> isCancelled = false;
    std::atomic<bool> isInterrupted = false;
    std::unique_ptr<AdoError> error;          // thrown to readers as copies: it crosses threads
    bool isRunning = false;                   // a thread is inside Run
    int readers = 0;                          // that wait for rows
    StatementHandle* cancelTarget = nullptr;  // until the statement is let go

    // Touched by the one thread that has claimed the job.
    std::unique_ptr<Statement> statement;
    std::unique_ptr<Fetcher> fetcher;
    std::size_t maxRows = 0;
    LONG stepSeconds = 0;        // the time limit of a step; 0: the driver keeps it itself, or there is none
    bool mayBeFollowed = false;  // by results that the driver would leave on the connection
    std::unique_ptr<Statement> next;
    std::unique_ptr<AdoError> nextError;

    // --- a set that is built row by row ---

    void SealBuilt() const;

    mutable std::unique_ptr<ChunkBuilder> builder;
    mutable std::size_t sealedRows = 0;
};

}  // namespace tk::ado
