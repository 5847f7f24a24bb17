#include "ado/cursor/batch_writer.h"

#include <algorithm>

#include "ado/cursor/compare.h"
#include "ado/cursor/messages.h"
#include "ado/cursor/row_transaction.h"

namespace tk::ado {
namespace {

// A row whose key is not one is found out by its count, when it is too late: the others are sent once more without it.
constexpr int kMostAttempts = 16;

bool IsSame(const Cell& first, const Cell& second) {
    if (first.form != second.form) return false;
    if (first.form == Cell::Form::Null) return true;
    if (first.form == Cell::Form::Date) return first.real == second.real && first.integer == second.integer;
    if (IsNumber(first.form)) return CompareNumbers(first, second) == 0;
    return first.text == second.text;
}

std::vector<ErrorRecord> RecordsOf(const AdoError& error) {
    if (!error.Records().empty()) return error.Records();
    ErrorRecord record;
    record.number = error.Code();
    record.description = error.Description();
    record.source = kCursorSource;
    return {std::move(record)};
}

}  // namespace

BatchWriter::Scope BatchWriter::ScopeOf(const AdoError& error) const {
    // States after which the server keeps nothing of the transaction.
    static constexpr std::string_view kLostStates[] = {"08", "25", "40", "57P"};
    // Codes of a file database that may have undone the transaction by itself: no memory, no disk, a failed file.
    static constexpr LONG kFileNatives[] = {7, 10, 13};
    const DriverProfile& profile = session_->Profile();
    for (const ErrorRecord& record : error.Records()) {
        const bool isLost = std::ranges::any_of(
            kLostStates, [&](std::string_view state) { return record.sqlState.starts_with(state); });
        const bool isFileFailure =
            profile.isFileDatabase && std::ranges::find(kFileNatives, record.nativeError) != std::end(kFileNatives);
        if (isLost || isFileFailure) return Scope::Transaction;
    }
    if (error.Code() == kOperationCanceled || error.Code() == kAbortLimitReached) {
        // An interrupted change takes the whole transaction with it where the interruption is our own.
        return profile.timeLimit == TimeLimit::Watchdog ? Scope::Transaction : Scope::Rest;
    }
    // Another writer's lock will not go away for the next row either.
    if (error.Code() == kConcurrencyViolation && error.Source() != kCursorSource) return Scope::Rest;
    return session_->IsAborted() || session_->IsDead() ? Scope::Transaction : Scope::Row;
}

void BatchWriter::SendOne(RowWriter& writer, std::size_t row, Outcome& outcome) const {
    outcome.known.clear();
    outcome.isReread = false;
    const LONG status = rows_.Status(row);
    if ((status & kStatusDeleted) != 0) return writer.Delete(row);
    const bool isNew = (status & kStatusNew) != 0;
    RowWriter::Values values(rows_.Columns().size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        // After a conflict that has been looked at, the original value may be the change.
        const bool counts = isNew ? rows_.WasGiven(row, i) : !IsSame(rows_.At(row, i), rows_.UnderlyingAt(row, i));
        if (!counts) continue;
        values[i].emplace();
        rows_.Read(row, i, *values[i]->Out());
    }
    if (isNew) {
        outcome.known = writer.Insert(values);
        outcome.isReread = writer.IsRereadAfterInsert(values);
    } else {
        writer.Update(row, values);
        outcome.isReread = writer.IsRereadAfterUpdate(values);
    }
}

void BatchWriter::Undo() {
    for (Outcome& outcome : outcomes_) {
        if (!std::exchange(outcome.sent, false)) continue;
        outcome.failure = kStatusCanceled;
    }
}

BatchWriter::Attempt BatchWriter::TryAll(std::span<const std::size_t> rows) {
    RowTransaction transaction(*session_, rules_.isolation, rules_.timeoutSeconds);
    RowWriter writer(session_, rows_, rules_, rows.size() > 1);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Outcome& outcome = outcomes_[i];
        if (outcome.failure != 0) continue;  // in an earlier attempt
        try {
            SendOne(writer, rows[i], outcome);
            outcome.sent = true;
            continue;
        } catch (const AdoError& error) {
            outcome.failure = FailureStatus(error);
            outcome.why = RecordsOf(error);
            if (error.Code() == kErrorsOccurred && transaction.IsOwn() && ++attempts_ < kMostAttempts) {
                for (Outcome& each : outcomes_)
                    each.sent = false;
                return Attempt::Again;
            }
            // Changes of too many rows must not be kept.
            const bool isUnsafe = error.Code() == kErrorsOccurred && transaction.IsOwn();
            const Scope scope = isUnsafe ? Scope::Transaction : ScopeOf(error);
            if (scope == Scope::Row) continue;
            if (scope == Scope::Transaction) Undo();
        }
        for (std::size_t rest = i + 1; rest < rows.size(); ++rest)
            outcomes_[rest].failure |= outcomes_[rest].failure == 0 ? static_cast<LONG>(kStatusCanceled) : 0;
        break;
    }
    if (std::ranges::none_of(outcomes_, &Outcome::sent)) return Attempt::Done;
    try {
        transaction.Keep();
    } catch (const AdoError& error) {
        Undo();
        Outcome& first = outcomes_.front();
        const std::vector<ErrorRecord> why = RecordsOf(error);
        first.why.insert(first.why.end(), why.begin(), why.end());
    }
    return Attempt::Done;
}

void BatchWriter::TakeOver(std::span<const std::size_t> rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::size_t row = rows[i];
        const Outcome& outcome = outcomes_[i];
        const LONG status = rows_.Status(row) & ~kStatusFailures;
        if (!outcome.sent) {
            rows_.SetStatus(row, status | outcome.failure);
        } else if ((status & kStatusDeleted) != 0) {
            rows_.SetStatus(row, kStatusDeleted);
        } else {
            if (!outcome.known.empty()) rows_.Change(row, outcome.known, kStatusOk);
            rows_.Accept(row, kStatusOk);
        }
    }
}

void BatchWriter::ReadAgain(std::span<const std::size_t> rows) {
    RowWriter writer(session_, rows_, rules_, rows.size() > 1);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const Outcome& outcome = outcomes_[i];
        if (rows_.IsDeleted(rows[i]) && outcome.sent) continue;
        const bool isWanted =
            outcome.sent ? outcome.isReread : outcome.failure == kStatusConflict && writer.IsRereadAfterConflict();
        if (isWanted) writer.Reread(rows[i], !outcome.sent);
    }
}

std::vector<ErrorRecord> BatchWriter::Send(std::span<const std::size_t> rows) {
    outcomes_.assign(rows.size(), {});
    attempts_ = 0;
    while (TryAll(rows) == Attempt::Again) {}
    TakeOver(rows);
    std::vector<ErrorRecord> failures;
    for (const Outcome& outcome : outcomes_)
        failures.insert(failures.end(), outcome.why.begin(), outcome.why.end());
    try {
        ReadAgain(rows);
    } catch (const AdoError& error) {
        // The rows are written, only not read again.
        const std::vector<ErrorRecord> why = RecordsOf(error);
        failures.insert(failures.end(), why.begin(), why.end());
    }
    return failures;
}

}  // namespace tk::ado
