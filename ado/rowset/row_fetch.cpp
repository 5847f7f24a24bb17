// The fetch behind a row set: the first rows on the opening thread, the rest on a worker.
#include <chrono>
#include <limits>

#include "ado/odbc/lock_wait.h"
#include "ado/odbc/output_row.h"
#include "ado/odbc/result_sizes.h"
#include "ado/odbc/server_call.h"
#include "ado/odbc/watchdog.h"
#include "ado/rowset/row_set_impl.h"

namespace tk::ado {
namespace {

// Rows that the opening thread fetches itself: handing over to a worker costs more than they do.
constexpr std::size_t kInlineRows = 256;

// Of a result that comes in parts: fewer rows are asked for when they are wide. The driver keeps some parts at a time.
constexpr std::size_t kMostBytesOfPart = std::size_t{512} * 1024;

constexpr auto kCancelPatience = std::chrono::milliseconds(50);
constexpr auto kJoinPatience = std::chrono::seconds(2);

/// The exception being handled, as an object of its own.
std::unique_ptr<AdoError> CurrentError() noexcept {
    try {
        throw;
    } catch (const std::exception& cause) {
        return std::make_unique<AdoError>(AdoError::From(cause));
    }
}

}  // namespace

bool RowSet::Impl::Step(std::size_t rows) {
    const std::size_t have = arrived.load(std::memory_order_relaxed);
    const std::size_t wanted = maxRows == 0 ? rows : std::min(rows, maxRows - have);
    if (wanted == 0) return false;
    // A driver that steps through its rows does its work here, not in the execution.
    Statement::Impl& inside = statement->Internals();
    WatchdogGuard guard(stepSeconds, *inside.handle);
    const ServerCall call(inside.handle->Profile(), inside.timeoutSeconds, inside.handle.get());
    auto chunk = fetcher->FetchChunk(have, wanted);
    guard.Finish();
    if (chunk != nullptr) {
        const std::size_t count = chunk->Rows();
        {
            const std::lock_guard lock(mutex);
            chunks.push_back(std::move(chunk));
            arrived.store(have + count, std::memory_order_release);
        }
        changed.notify_all();
        if (!fetcher->AtEnd()) return true;
    }
    if (inside.handle->MaxRows() == 0) inside.handle->isReading = false;
    if (!inside.FetchPart(RowsOfPart())) return false;
    fetcher->GoOn();
    return true;
}

std::size_t RowSet::Impl::RowsOfPart() const noexcept {
    const std::size_t full = fetcher->FullRows();
    if (chunks.empty()) return full;
    const Chunk& last = *chunks.back();
    return std::clamp(kMostBytesOfPart * last.Rows() / last.Bytes(), std::size_t{1}, full);
}

bool RowSet::Impl::FirstStep(std::size_t rows) {
    Statement::Impl& inside = statement->Internals();
    LockWait wait(**inside.lease);
    for (;;) {
        try {
            return Step(rows);
        } catch (const AdoError& error) {
            if (arrived != 0 || inside.text.empty() || inside.handle->WasCancelled() || inside.handle->WasExpired() ||
                !wait.GoesOn(error)) {
                throw;
            }
        }
        WatchdogGuard guard(stepSeconds, *inside.handle);
        inside.handle->EndRows();
        inside.Restart();
        inside.handle->BeginRows();
    }
}

void RowSet::Impl::Finish(std::unique_ptr<AdoError> failure) noexcept {
    const bool isWhole = failure == nullptr && !isCancelled;
    fetcher.reset();
    if (statement != nullptr) {
        StatementHandle& handle = *statement->Internals().handle;
        if (mayBeFollowed && isWhole) ReadFurther();
        // Not left to the closing of the handle, which cannot be cancelled.
        if (mayBeFollowed && !isWhole) handle.TakeRest(isCancelled || handle.IsEnded());
        handle.EndRows();
    }
    if (isWhole && maxRows == 0 && statement != nullptr && statement->Internals().resultName != 0) {
        RememberRows(statement->Internals().resultName, arrived);
    }
    if (isWhole && statement != nullptr && statement->Internals().handle->Profile().hasBatches) {
        if (statement->Internals().following) {
            const std::lock_guard lock(mutex);
            cancelTarget = nullptr;  // the handle goes with the step to the next statement
        }
        if (nextError == nullptr) TakeNext(*statement);
    }
    {
        const std::lock_guard lock(mutex);
        cancelTarget = nullptr;  // further results are cancelled by whoever runs them
    }
    statement.reset();
    // The connection is free again before anybody hears of the end.
    const std::lock_guard lock(mutex);
    if (!isCancelled) error = std::move(failure);
    isRunning = false;
    isComplete.store(true, std::memory_order_release);
    changed.notify_all();
}

void RowSet::Impl::ReadFurther() noexcept {
    Statement::Impl& inside = statement->Internals();
    try {
        auto further = std::make_unique<FollowingResults>();
        try {
            bool isWhole = true;
            do {
                ExpectNotGivenUp();
                if (!inside.NextResult() || !PassOutputRow(inside)) break;
                isWhole = ReadResult(*further);
            } while (isWhole);
            if (isWhole && !further->statements.empty() && further->statements.back().HasRows()) {
                further->statements.pop_back();
                inside.FailForMissing();
            }
        } catch (...) {
            further->failure = std::current_exception();
        }
        if (inside.mayHaveMore) inside.handle->TakeRest(isCancelled || isInterrupted || inside.handle->IsEnded());
        inside.mayHaveMore = false;
        further->Append(std::move(inside.following));
        inside.following = std::move(further);
    } catch (...) {
        nextError = CurrentError();
    }
}

bool RowSet::Impl::ReadResult(FollowingResults& following) {
    Statement::Impl& inside = statement->Internals();
    if (inside.columnCount == 0) {
        following.statements.emplace_back(inside.WithoutHandle());
        return true;
    }
    statement->Columns();
    auto reading = std::make_shared<Impl>(inside.shape);
    reading->maxRows = static_cast<std::size_t>(inside.maxRows);
    reading->stepSeconds = stepSeconds;
    reading->origin = origin;
    reading->fetcher = MakeFetcher(inside, reading->layout);
    auto result = inside.WithoutHandle();
    result->rows = Make(reading);
    reading->statement = std::move(statement);
    try {
        const std::size_t full = reading->fetcher->FullRows();
        do {
            ExpectNotGivenUp();
        } while (reading->Step(full));
    } catch (...) {
        reading->error = CurrentError();
    }
    statement = std::move(reading->statement);
    reading->fetcher.reset();
    reading->isComplete = true;
    const bool isWhole = reading->error == nullptr;
    following.statements.emplace_back(std::move(result));
    return isWhole;
}

void RowSet::Impl::TakeNext(Statement& from) noexcept {
    try {
        if (from.MoreResults()) next = std::make_unique<Statement>(std::move(from));
    } catch (...) {
        nextError = CurrentError();
    }
}

void RowSet::Impl::Run(std::size_t until, const Patience* patience) noexcept {
    {
        const std::lock_guard lock(mutex);
        isRunning = true;
    }
    try {
        const std::size_t full = fetcher->FullRows();
        while (!areRowsThere && !isCancelled.load(std::memory_order_relaxed)) {
            if (isInterrupted.load(std::memory_order_relaxed)) throw MakeCancelledError();
            if (arrived.load(std::memory_order_relaxed) >= until || (patience != nullptr && patience->IsOver())) {
                return PutOff();
            }
            if (Step(full)) continue;
            if (!mayBeFollowed) break;
            TellRowsAreThere();
            if (until != kToTheEnd || patience != nullptr) return PutOff();
        }
        Finish(nullptr);
    } catch (...) {
        Finish(CurrentError());
    }
}

void RowSet::Impl::PutOff() {
    {
        const std::lock_guard lock(mutex);
        isRunning = false;
    }
    FetchPool::Instance().Submit(shared_from_this());
    changed.notify_all();  // a reader that waits may go on with it
}

void RowSet::Impl::TellRowsAreThere() noexcept {
    {
        const std::lock_guard lock(mutex);
        areRowsThere = true;
    }
    changed.notify_all();
}

void RowSet::Impl::AbortJob() noexcept {
    isCancelled = true;
    CancelStatement();
}

void RowSet::Impl::CancelStatement() noexcept {
    const std::lock_guard lock(mutex);
    if (cancelTarget != nullptr) cancelTarget->CancelRunning();
}

bool RowSet::Impl::FinishWork(const Patience& patience) noexcept {
    constexpr auto kMoment = std::chrono::milliseconds(20);  // how soon a cancelled wait is noticed
    // What waits for the server has a thread of its own soon, unless there is none to be had.
    const auto alone = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    for (;;) {
        {
            std::unique_lock lock(mutex);
            if (changed.wait_for(lock, kMoment, [this] { return isComplete.load(); })) return true;
        }
        if (patience.IsOver()) return false;
        const bool isLeftAlone = !WaitsForServer() || std::chrono::steady_clock::now() >= alone;
        if (isLeftAlone && Claim()) Run(kToTheEnd, &patience);  // every thread of the pool is busy with other fetches
    }
}

void RowSet::Impl::Interrupt() noexcept {
    const std::lock_guard lock(mutex);
    if (readers == 0 || isComplete) return;
    isInterrupted = true;
    if (cancelTarget != nullptr) cancelTarget->CancelRunning();
}

/// Tells Interrupt that a reader waits.
class RowSet::Impl::ReaderCount {
public:
    explicit ReaderCount(Impl& impl) : impl_(impl) {
        const std::lock_guard lock(impl_.mutex);
        ++impl_.readers;
    }
    ~ReaderCount() {
        const std::lock_guard lock(impl_.mutex);
        --impl_.readers;
    }
    ReaderCount(const ReaderCount&) = delete;
    ReaderCount& operator=(const ReaderCount&) = delete;

private:
    Impl& impl_;
};

template <class IsOver>
void RowSet::Impl::WaitUntil(std::size_t rows, IsOver isOver) {
    if (isOver()) return;
    const ReaderCount reader(*this);
    if (Claim()) Run(rows);
    std::unique_lock lock(mutex);
    while (!isOver()) {
        changed.wait(lock);
        if (isRunning || isComplete) continue;
        lock.unlock();
        if (Claim()) Run(rows);
        lock.lock();
    }
}

void RowSet::Impl::WaitFor(std::size_t rows) {
    WaitUntil(rows, [this, rows] { return arrived.load(std::memory_order_acquire) >= rows || HasAllRows(); });
}

void RowSet::Impl::WaitForEnd() {
    WaitUntil(kToTheEnd, [this] { return isComplete.load(std::memory_order_acquire); });
}

void RowSet::Impl::Stop() noexcept {
    if (isComplete) return;
    const bool isFirst = !isCancelled.exchange(true);  // otherwise it has been waited for already
    // Letting go of what may be followed waits for the server to end it: for a thread that can be helped by a cancel.
    if (!mayBeFollowed && Claim()) return Finish(nullptr);
    {
        std::unique_lock lock(mutex);
        if (changed.wait_for(lock, kCancelPatience, [this] { return isComplete.load(); })) return;
    }
    CancelStatement();
    if (isFirst) {
        std::unique_lock lock(mutex);
        if (changed.wait_for(lock, kJoinPatience, [this] { return isComplete.load(); })) return;
    }
    if (Claim()) Finish(nullptr);
    // A driver that does not come back keeps what it uses; nobody waits for it.
}

void RowSet::Impl::RunJob() noexcept {
    Run(kToTheEnd);
}

std::shared_ptr<RowSet> RowSet::Fetch(Statement statement, const std::shared_ptr<Session>& session,
                                      const FetchOptions& options) {
    Statement::Impl& inside = statement.Internals();
    if (inside.rows != nullptr) {
        auto read = std::move(inside.rows);
        read->impl_->TakeNext(statement);
        return read;
    }
    statement.Columns();
    const DriverProfile& profile = inside.handle->Profile();
    auto impl = std::make_shared<Impl>(inside.shape);
    impl->text = inside.isFirstResult ? inside.text : std::string();
    impl->maxRows = static_cast<std::size_t>(std::max(options.maxRows, inside.maxRows));
    impl->origin = session;
    impl->statement = std::make_unique<Statement>(std::move(statement));
    impl->cancelTarget = inside.handle.get();
    impl->fetcher = MakeFetcher(inside, impl->layout);
    inside.handle->BeginRows();

    if (profile.timeLimit == TimeLimit::Watchdog) impl->stepSeconds = inside.timeoutSeconds;
    impl->mayBeFollowed = profile.leavesResults && inside.mayHaveMore;
    bool more = true;
    {
        const RunningCall::Scope running(session->Running(), *inside.handle);
        more = impl->FirstStep(impl->fetcher->FirstRows());
        if (more && !options.asynchronous) more = impl->Step(kInlineRows - impl->fetcher->FirstRows());
    }
    auto rows = Make(impl);
    if (!more && !impl->mayBeFollowed) {
        impl->Finish(nullptr);
        return rows;
    }
    impl->areRowsThere = !more;
    session->SetBackgroundWork(std::weak_ptr<BackgroundWork>(impl), inside.isOnSideConnection);
    const bool isTaken = FetchPool::Instance().Submit(impl);
    if (!isTaken && options.asynchronous) {
        // With no thread to read it, who only asks whether it is done would ask for ever.
        const Patience patience(0, session->Running());
        if (!impl->FinishWork(patience)) impl->Stop();
    }
    return rows;
}

}  // namespace tk::ado
