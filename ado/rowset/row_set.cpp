#include "ado/rowset/row_set.h"

#include <malloc.h>
#include <tkwin32/text.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "ado/odbc/physical_connection.h"
#include "ado/odbc/result_sizes.h"
#include "ado/rowset/chunk.h"
#include "ado/rowset/date_value.h"
#include "ado/rowset/fetch_pool.h"
#include "ado/rowset/fetcher.h"
#include "ado/rowset/origins.h"
#include "ado/rowset/type_map.h"
#include "ado/rowset/value.h"

namespace tk::ado {
namespace {

// Rows that the opening thread fetches itself: handing over to a worker costs more than they do.
constexpr std::size_t kInlineRows = 256;

// Rows of one chunk of a set that is built here.
constexpr std::size_t kBuiltRows = 256;

constexpr std::size_t kLargeBytes = std::size_t{16} * 1024 * 1024;

constexpr auto kCancelPatience = std::chrono::milliseconds(50);
constexpr auto kJoinPatience = std::chrono::seconds(2);

Cell MomentCell(int year, int month, int day, int hour, int minute, int second, unsigned fraction) noexcept {
    const CalendarTime time = {year, month, day, hour, minute, second, static_cast<int>(fraction)};
    // A date outside the automation range has no value that a reader could hold.
    const auto date = ToAutomationDate(time);
    return date ? Cell{Cell::Form::Date, time.nanosecond, *date, {}} : Cell{};
}

Cell FixedCell(const RowLayout& layout, const Chunk& chunk, CellKind kind, std::size_t row, std::size_t slot) noexcept {
    const auto integer = [](long long value) { return Cell{Cell::Form::Integer, value, 0, {}}; };
    const auto real = [](double value) { return Cell{Cell::Form::Real, 0, value, {}}; };
    switch (kind) {
        case CellKind::Integer16:
            return integer(chunk.Fixed<short>(layout, row, slot));
        case CellKind::Integer32:
            return integer(chunk.Fixed<std::int32_t>(layout, row, slot));
        case CellKind::Integer64:
            return integer(chunk.Fixed<std::int64_t>(layout, row, slot));
        case CellKind::Real32:
            return real(static_cast<double>(chunk.Fixed<float>(layout, row, slot)));
        case CellKind::Real64:
            return real(chunk.Fixed<double>(layout, row, slot));
        case CellKind::Boolean:
            return {Cell::Form::Boolean, chunk.Fixed<unsigned char>(layout, row, slot) != 0 ? 1 : 0, 0, {}};
        case CellKind::Date: {
            const auto date = chunk.Fixed<SQL_DATE_STRUCT>(layout, row, slot);
            return MomentCell(date.year, date.month, date.day, 0, 0, 0, 0);
        }
        case CellKind::Timestamp: {
            const auto stamp = chunk.Fixed<SQL_TIMESTAMP_STRUCT>(layout, row, slot);
            return MomentCell(stamp.year, stamp.month, stamp.day, stamp.hour, stamp.minute, stamp.second,
                              stamp.fraction);
        }
        default:
            return {};
    }
}

}  // namespace

struct RowSet::Impl final : FetchJob, std::enable_shared_from_this<RowSet::Impl> {
    explicit Impl(std::vector<Column> described, bool allVariable)
        : columns(std::move(described)), layout(columns, allVariable) {}

    std::vector<Column> columns;
    RowLayout layout;
    bool areOriginsKnown = false;

    // The reader's place; readers take the lock only to change chunks while the fetch runs.
    mutable const Chunk* current = nullptr;
    mutable std::size_t currentIndex = 0;

    mutable std::mutex mutex;
    std::condition_variable changed;
    mutable std::vector<std::unique_ptr<Chunk>> chunks;  // grows only, and not after isComplete
    std::atomic<std::size_t> arrived = 0;
    std::atomic<bool> isComplete = false;
    std::atomic<bool> isCancelled = false;
    std::exception_ptr error;
    bool isRunning = false;                   // a thread is inside Run
    StatementHandle* cancelTarget = nullptr;  // until the statement is let go

    // The fetch; touched by the one thread that has claimed it.
    std::unique_ptr<Statement> statement;
    std::unique_ptr<Fetcher> fetcher;
    std::size_t maxRows = 0;
    std::weak_ptr<Session> origin;
    std::string text;
    std::unique_ptr<Statement> next;
    std::exception_ptr nextError;

    // A set that is built row by row.
    mutable std::unique_ptr<ChunkBuilder> builder;
    mutable std::size_t sealedRows = 0;

    std::size_t Wanted(std::size_t rows) const noexcept {
        return maxRows == 0 ? rows : std::min(rows, maxRows - arrived.load(std::memory_order_relaxed));
    }

    /// Fetches up to `rows` more rows; false after the last one.
    bool Step(std::size_t rows) {
        const std::size_t have = arrived.load(std::memory_order_relaxed);
        const std::size_t wanted = Wanted(rows);
        if (wanted == 0) return false;
        auto chunk = fetcher->FetchChunk(have, wanted);
        if (chunk == nullptr) return false;
        const std::size_t count = chunk->Rows();
        {
            const std::lock_guard lock(mutex);
            chunks.push_back(std::move(chunk));
            arrived.store(have + count, std::memory_order_release);
        }
        changed.notify_all();
        return !fetcher->AtEnd();
    }

    /// The fetch has ended: lets go of the statement, looks for a further result, wakes the readers.
    void Finish(std::exception_ptr failure) noexcept {
        const bool isWhole = failure == nullptr && !isCancelled;
        {
            const std::lock_guard lock(mutex);
            cancelTarget = nullptr;
        }
        fetcher.reset();
        if (isWhole && maxRows == 0 && statement != nullptr && statement->Internals().resultName != 0) {
            RememberRows(statement->Internals().resultName, arrived);
        }
        if (isWhole && statement != nullptr && statement->Internals().handle->Profile().hasBatches) {
            try {
                if (statement->MoreResults()) next = std::move(statement);
            } catch (...) {
                nextError = std::current_exception();
            }
        }
        statement.reset();
        // The connection is free again before anybody hears of the end.
        const std::lock_guard lock(mutex);
        if (!isCancelled) error = failure;
        isRunning = false;
        isComplete.store(true, std::memory_order_release);
        changed.notify_all();
    }

    /// Fetches until `until` rows have arrived, or to the end. The caller has claimed the job.
    void Run(std::size_t until) noexcept {
        {
            const std::lock_guard lock(mutex);
            isRunning = true;
        }
        try {
            const std::size_t full = fetcher->FullRows();
            while (!isCancelled.load(std::memory_order_relaxed)) {
                if (arrived.load(std::memory_order_relaxed) >= until) {
                    {
                        const std::lock_guard lock(mutex);
                        isRunning = false;
                    }
                    FetchPool::Instance().Submit(shared_from_this());
                    return;
                }
                if (!Step(full)) break;
            }
            Finish(nullptr);
        } catch (...) {
            Finish(std::current_exception());
        }
    }

    void RunJob() noexcept override { Run(std::numeric_limits<std::size_t>::max()); }

    void AbortJob() noexcept override {
        isCancelled = true;
        CancelStatement();
    }

    /// The statement lives as long as its thread is inside Run; its handle is ready for this from any thread.
    void CancelStatement() noexcept {
        const std::lock_guard lock(mutex);
        if (cancelTarget != nullptr) cancelTarget->CancelRunning();
    }

    /// Waits until the row is there, or the fetch has ended. Does the work itself when no thread has begun it.
    void WaitFor(std::size_t rows) {
        if (arrived.load(std::memory_order_acquire) >= rows || isComplete.load(std::memory_order_acquire)) return;
        if (Claim()) Run(rows);
        std::unique_lock lock(mutex);
        while (arrived.load(std::memory_order_relaxed) < rows && !isComplete) {
            changed.wait(lock);
            if (isRunning || isComplete) continue;
            lock.unlock();
            if (Claim()) Run(rows);
            lock.lock();
        }
    }

    void WaitForAll() { WaitFor(std::numeric_limits<std::size_t>::max()); }

    void ThrowIfFailed() const {
        std::exception_ptr failure;
        {
            const std::lock_guard lock(mutex);
            failure = error;
        }
        if (failure != nullptr) std::rethrow_exception(failure);
    }

    /// Ends the fetch from outside, within a bounded time.
    void Stop() noexcept {
        if (isComplete) return;
        isCancelled = true;
        if (Claim()) return Finish(nullptr);
        {
            std::unique_lock lock(mutex);
            if (changed.wait_for(lock, kCancelPatience, [this] { return isComplete.load(); })) return;
        }
        CancelStatement();
        std::unique_lock lock(mutex);
        changed.wait_for(lock, kJoinPatience, [this] { return isComplete.load(); });
        // A driver that does not come back keeps what it uses; nobody waits for it.
    }

    /// The chunk of a row that has arrived.
    const Chunk& Locate(std::size_t row) const {
        if (current != nullptr && current->Covers(row)) [[likely]]
            return *current;
        if (builder != nullptr && row >= sealedRows) SealBuilt();
        std::unique_lock lock(mutex, std::defer_lock);
        if (!isComplete.load(std::memory_order_acquire)) lock.lock();
        for (const std::size_t index : {currentIndex + 1, currentIndex - 1}) {
            if (current != nullptr && index < chunks.size() && chunks[index]->Covers(row)) return Go(index);
        }
        const auto after = std::ranges::upper_bound(chunks, row, {}, [](const auto& each) { return each->FirstRow(); });
        return Go(static_cast<std::size_t>(after - chunks.begin()) - 1);
    }

    const Chunk& Go(std::size_t index) const noexcept {
        currentIndex = index;
        current = chunks[index].get();
        return *current;
    }

    void SealBuilt() const {
        const std::size_t rows = arrived.load(std::memory_order_relaxed);
        if (rows == sealedRows) return;
        chunks.push_back(builder->Seal(sealedRows, rows - sealedRows, {}));
        sealedRows = rows;
        current = nullptr;
    }

    Cell At(std::size_t row, std::size_t column) const {
        const Chunk& chunk = Locate(row);
        const RowLayout::Place& place = layout.At(column);
        const std::size_t inside = row - chunk.FirstRow();
        const CellKind kind = columns[column].kind;
        if (place.isVariable) return CellFromText(kind, chunk.Variable(layout, inside, place.slot));
        if (chunk.IsNullFixed(layout, inside, place.slot)) return {};
        return FixedCell(layout, chunk, kind, inside, place.slot);
    }
};

RowSet::RowSet(std::shared_ptr<Impl> impl) : impl_(std::move(impl)) {}

RowSet::~RowSet() {
    impl_->Stop();
    const bool isLarge = impl_->isComplete && MemoryBytes() >= kLargeBytes;
    impl_.reset();
    // The rows were allocated by a worker: the C library would keep them for that thread.
    if (isLarge) malloc_trim(0);
}

std::shared_ptr<RowSet> RowSet::Fetch(Statement statement, std::shared_ptr<Session> session,
                                      const FetchOptions& options) {
    Statement::Impl& inside = statement.Internals();
    statement.Columns();
    const DriverProfile& profile = inside.handle->Profile();
    auto impl = std::make_shared<Impl>(inside.columns, KeepsAllAsText(profile, inside.columns));
    impl->text = inside.isFirstResult ? inside.text : std::string();
    impl->maxRows = static_cast<std::size_t>(std::max(options.maxRows, inside.maxRows));
    impl->origin = session;
    impl->statement = std::make_unique<Statement>(std::move(statement));
    impl->cancelTarget = inside.handle.get();
    impl->fetcher = MakeFetcher(inside, impl->layout);

    const bool isWatched = profile.timeLimit == TimeLimit::Watchdog;
    // A driver that steps through its rows does its work here, not in the execution.
    WatchdogGuard guard(isWatched ? inside.timeoutSeconds : 0, *inside.handle);
    bool more = impl->Step(impl->fetcher->FirstRows());
    if (more && !options.asynchronous) more = impl->Step(kInlineRows - impl->fetcher->FirstRows());
    guard.Finish();
    auto rows = std::shared_ptr<RowSet>(new RowSet(impl));
    if (!more) {
        impl->Finish(nullptr);
        return rows;
    }
    session->SetBackgroundWork(
        [weak = std::weak_ptr(impl)] {
            if (const auto running = weak.lock()) running->WaitForAll();
        },
        inside.isOnSideConnection);
    FetchPool::Instance().Submit(impl);
    return rows;
}

std::shared_ptr<RowSet> RowSet::Build(std::vector<Column> columns) {
    auto impl = std::make_shared<Impl>(std::move(columns), true);
    impl->builder = std::make_unique<ChunkBuilder>(impl->layout);
    impl->isComplete = true;
    impl->areOriginsKnown = true;
    return std::shared_ptr<RowSet>(new RowSet(std::move(impl)));
}

void RowSet::Append(std::span<const VARIANT> values) {
    std::vector<std::pair<bool, std::string>> cells(impl_->columns.size());
    for (std::size_t i = 0; i < cells.size() && i < values.size(); ++i) {
        cells[i].first = TextFromVariant(values[i], cells[i].second);
    }
    for (const auto& [hasValue, text] : cells) {
        if (hasValue) {
            impl_->builder->AddBytes(text.data(), text.size());
        } else {
            impl_->builder->AddNull();
        }
    }
    impl_->arrived.fetch_add(1, std::memory_order_release);
    if (impl_->arrived - impl_->sealedRows >= kBuiltRows) impl_->SealBuilt();
}

const std::vector<Column>& RowSet::Columns() const noexcept {
    return impl_->columns;
}

void RowSet::DescribeOrigins() {
    if (std::exchange(impl_->areOriginsKnown, true)) return;
    const auto session = impl_->origin.lock();
    if (session != nullptr && !impl_->text.empty()) tk::ado::DescribeOrigins(*session, impl_->text, impl_->columns);
}

bool RowSet::HasRow(std::size_t row) {
    if (row < impl_->arrived.load(std::memory_order_acquire)) [[likely]]
        return true;
    impl_->WaitFor(row + 1);
    if (row < impl_->arrived.load(std::memory_order_acquire)) return true;
    impl_->ThrowIfFailed();
    return false;
}

std::size_t RowSet::ArrivedRows() const noexcept {
    return impl_->arrived.load(std::memory_order_acquire);
}

std::size_t RowSet::CountRows() {
    impl_->WaitForAll();
    impl_->ThrowIfFailed();
    return ArrivedRows();
}

bool RowSet::IsComplete() const noexcept {
    return impl_->isComplete.load(std::memory_order_acquire);
}

void RowSet::Cancel() {
    impl_->Stop();
}

void RowSet::Read(std::size_t row, std::size_t column, VARIANT& value) const {
    MakeVariant(impl_->At(row, column), impl_->columns[column], value);
}

Cell RowSet::At(std::size_t row, std::size_t column) const {
    return impl_->At(row, column);
}

std::optional<std::string_view> RowSet::TextAt(std::size_t row, std::size_t column) const {
    const Cell cell = impl_->At(row, column);
    if (cell.form == Cell::Form::Text) return cell.text;
    if (cell.form == Cell::Form::Null) return std::string_view();
    return std::nullopt;
}

bool RowSet::IsNull(std::size_t row, std::size_t column) const {
    return impl_->At(row, column).form == Cell::Form::Null;
}

LONG RowSet::ActualSize(std::size_t row, std::size_t column) const {
    const Cell cell = impl_->At(row, column);
    const Column& described = impl_->columns[column];
    switch (cell.form) {
        case Cell::Form::Null:
            return 0;
        case Cell::Form::Bytes:
            return static_cast<LONG>(cell.text.size());
        case Cell::Form::Text:
            if (described.dbType == kTypeWChar) return static_cast<LONG>(text::Utf8ToUtf16Length(cell.text) * 2);
            return static_cast<LONG>(text::Utf8ToGbkLength(cell.text));
        default:
            return described.definedSize;
    }
}

std::size_t RowSet::MemoryBytes() const {
    const std::lock_guard lock(impl_->mutex);
    std::size_t bytes = impl_->chunks.capacity() * sizeof(impl_->chunks[0]);
    for (const auto& chunk : impl_->chunks)
        bytes += chunk->Bytes();
    return bytes;
}

std::unique_ptr<Statement> RowSet::TakeNextResult() {
    impl_->WaitForAll();
    if (impl_->nextError != nullptr) std::rethrow_exception(std::exchange(impl_->nextError, nullptr));
    return std::move(impl_->next);
}

}  // namespace tk::ado
