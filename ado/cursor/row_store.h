// ado/cursor/row_store.h - the fetched rows together with what has been changed, added and deleted since.
//
//   auto store = std::make_shared<RowStore>(rows);
//   if (store->HasRow(0)) store->Read(0, 2, value);
//
// A row keeps its number (its bookmark less one) for life, deleted or not; new rows get the next numbers. Fetched cells
// are never touched: a changed row is kept a second time, as a row of a set of the same columns, so every reader of
// cells works on both.
//
// Pending changes are the rows of PendingRows(), each with kStatusPending and one more bit in its Status:
//   kStatusNew       added by Add; its values are the current ones, and only those that WasGiven go into an INSERT
//   kStatusModified  changed by Change; the current values beside the original ones
//   kStatusDeleted   deleted by Delete; still readable by ReadOriginal
// The same three members make a pending change again, for rows that come from a file.
//
// Threads: one caller at a time, the clones and views that share the store included.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "ado/cursor/value.h"
#include "ado/rowset/row_set.h"

namespace tk::ado {

/// RecordStatus bits.
enum RecordStatus : LONG {
    kStatusOk = 0,
    kStatusNew = 1,
    kStatusModified = 2,
    kStatusDeleted = 4,
    kStatusUnmodified = 8,
    kStatusMultipleChanges = 0x40,
    kStatusPending = 0x80,
    kStatusCanceled = 0x100,
    kStatusConflict = 0x800,
    kStatusIntegrity = 0x1000,
    kStatusPermission = 0x10000,
    kStatusSchema = 0x20000,
    kStatusGone = 0x40000,
};

/// The bits that say why a change was refused; kStatusCanceled where no other bit fits, or because of another row.
inline constexpr LONG kStatusFailures = kStatusMultipleChanges | kStatusCanceled | kStatusConflict | kStatusIntegrity |
                                        kStatusPermission | kStatusSchema | kStatusGone;

class RowStore {
public:
    explicit RowStore(std::shared_ptr<RowSet> fetched) : fetched_(std::move(fetched)) {}

    RowSet& Fetched() noexcept { return *fetched_; }
    const std::vector<Column>& Columns() const noexcept { return fetched_->Columns(); }
    std::size_t ColumnCount() const noexcept { return fetched_->ColumnCount(); }

    /// True when the row exists, deleted or not; waits for it while the fetch runs.
    bool HasRow(std::size_t row) { return added_ == 0 ? fetched_->HasRow(row) : row < fetchedRows_ + added_; }

    /// Rows ever, deleted ones included; waits for the end of the fetch.
    std::size_t CountRows() { return fetched_->CountRows() + added_; }

    /// Rows so far, without waiting.
    std::size_t ArrivedRows() const noexcept { return fetched_->ArrivedRows() + added_; }
    bool IsComplete() const noexcept { return fetched_->IsComplete(); }

    /// Changes with every row added or deleted; views compare it.
    std::uint64_t Version() const noexcept { return version_; }
    bool HasDeletedRows() const noexcept { return deleted_ != 0; }

    /// Changes when a deleted row comes back.
    std::uint64_t Restorations() const noexcept { return restorations_; }

    /// True while the row is simply as it was fetched.
    bool IsAsFetched(std::size_t row) const { return Find(row) == nullptr; }

    bool IsDeleted(std::size_t row) const {
        const State* state = Find(row);
        return state != nullptr && state->deleted;
    }
    LONG Status(std::size_t row) const {
        const State* state = Find(row);
        return state == nullptr ? static_cast<LONG>(kStatusUnmodified) : state->status;
    }
    void SetStatus(std::size_t row, LONG status);

    void Read(std::size_t row, std::size_t column, VARIANT& value) const {
        const Place place = Current(row, column);
        place.set->Read(place.row, place.column, value);
    }
    Cell At(std::size_t row, std::size_t column) const {
        const Place place = Current(row, column);
        return place.set->At(place.row, place.column);
    }
    std::optional<std::string_view> TextAt(std::size_t row, std::size_t column) const {
        const Place place = Current(row, column);
        return place.set->TextAt(place.row, place.column);
    }
    LONG ActualSize(std::size_t row, std::size_t column) const {
        const Place place = Current(row, column);
        return place.set->ActualSize(place.row, place.column);
    }

    /// The value the database is known to hold: as fetched, or as last written.
    void ReadOriginal(std::size_t row, std::size_t column, VARIANT& value) const;
    Cell OriginalAt(std::size_t row, std::size_t column) const;

    /// What the last Resync of underlying values found; the original value before the first one. A change that is sent
    /// is checked against it: who has looked at the conflict may send the change again.
    void ReadUnderlying(std::size_t row, std::size_t column, VARIANT& value) const;
    Cell UnderlyingAt(std::size_t row, std::size_t column) const;

    /// Of a row that was added: whether the column was set, if only to NULL.
    bool WasGiven(std::size_t row, std::size_t column) const;

    /// New current values where there is one; the others stay as they were read, to the last digit. The original values
    /// stay all.
    void Change(std::size_t row, const std::vector<std::optional<Value>>& values, LONG status);

    /// The current values are the database's from now on.
    void Accept(std::size_t row, LONG status);

    /// Back to the original values.
    void Revert(std::size_t row, LONG status);

    /// The database's values as just read: original and current, or underlying only.
    /// @param read  holds the row as its first
    /// @param columns  which column of the store each column of it is
    void Refresh(std::size_t row, std::shared_ptr<RowSet> read, const std::vector<std::size_t>& columns,
                 bool underlyingOnly);

    /// Appends a row; waits for the end of the fetch first.
    /// @return its number
    std::size_t Add(const std::vector<std::optional<Value>>& values, LONG status);

    /// A fetched row that the database has not got yet: it was pending when the rows were saved.
    /// @param given  for every column whether it was set
    void MarkNew(std::size_t row, std::vector<bool> given, LONG status);

    void Delete(std::size_t row, LONG status);

    /// Undoes Delete.
    void Restore(std::size_t row, LONG status);

    /// Rows with pending changes, in the order of their numbers.
    std::vector<std::size_t> PendingRows() const;

    /// Rows touched by the last Delete, Resync, UpdateBatch or CancelBatch.
    const std::vector<std::size_t>& AffectedRows() const noexcept { return affected_; }
    void SetAffected(std::vector<std::size_t> rows) { affected_ = std::move(rows); }

    /// The columns that the database changes with every change of a row, once somebody has asked for them.
    const std::optional<std::vector<std::size_t>>& RowVersions() const noexcept { return rowVersions_; }
    void SetRowVersions(std::vector<std::size_t> columns) { rowVersions_ = std::move(columns); }

private:
    /// Where one value is kept.
    struct Place {
        const RowSet* set = nullptr;
        std::size_t row = 0;
        std::size_t column = 0;
    };
    /// A row that is not simply as fetched; each list has a place for every column.
    struct State {
        std::vector<Place> current;
        std::vector<Place> original;
        std::vector<Place> underlying;
        std::vector<bool> given;  // of an added row, for every column
        LONG status = kStatusUnmodified;
        bool deleted = false;
    };

    const State* Find(std::size_t row) const {
        if (states_.empty()) return nullptr;
        const auto found = states_.find(row);
        return found == states_.end() ? nullptr : &found->second;
    }
    Place Current(std::size_t row, std::size_t column) const {
        const State* state = Find(row);
        return state == nullptr ? Place{fetched_.get(), row, column} : state->current[column];
    }
    State& Touch(std::size_t row);
    std::size_t Keep(const std::vector<std::optional<Value>>& values);

    std::shared_ptr<RowSet> fetched_;
    std::shared_ptr<RowSet> written_;  // every version of a changed or added row, in the order of writing
    std::size_t writtenRows_ = 0;
    std::vector<std::shared_ptr<RowSet>> reread_;
    std::size_t fetchedRows_ = 0;  // settled when the first row is added
    std::size_t added_ = 0;
    std::size_t deleted_ = 0;
    std::uint64_t version_ = 0;
    std::uint64_t restorations_ = 0;
    std::unordered_map<std::size_t, State> states_;
    std::vector<std::size_t> affected_;
    std::optional<std::vector<std::size_t>> rowVersions_;
};

}  // namespace tk::ado
