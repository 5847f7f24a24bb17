// ado/cursor/client_cursor.h - the position on a view of rows, and everything that moves it.
//
//   ClientCursor cursor(store);
//   for (; !cursor.Eof(); cursor.MoveNext()) store->Read(cursor.Row(), 0, value);
//
// The cursor stands before the first row, on a row or after the last one; without rows it is before and after at once.
// On a row that has been deleted it stays until it is moved, between the row's neighbours.
//
// Threads: as the store.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "ado/cursor/criteria.h"
#include "ado/cursor/row_view.h"

namespace tk::ado {

/// PositionEnum.
inline constexpr LONG kPositionUnknown = -1;
inline constexpr LONG kPositionBof = -2;
inline constexpr LONG kPositionEof = -3;

class ClientCursor {
public:
    /// Stands on the first row, or nowhere; waits for the first row.
    explicit ClientCursor(std::shared_ptr<RowStore> store);

    RowStore& Store() const noexcept { return view_.Store(); }

    bool Bof();
    bool Eof();

    /// The current row's number, deleted or not.
    /// @throws AdoError 3021 without one
    std::size_t Row() {
        TakeChanges();
        if (state_ != State::OnRow) ThrowNoRecord();
        return row_;
    }

    /// The number of the current row, if there is one that is not deleted; never throws for want of one.
    std::optional<std::size_t> LiveRow() {
        TakeChanges();
        if (state_ != State::OnRow || deleted_) return std::nullopt;
        return row_;
    }
    bool IsOnDeletedRow() {
        TakeChanges();
        return state_ == State::OnRow && deleted_;
    }

    /// Each throws AdoError 3021 where the current position does not allow it.
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    void Move(LONG count);

    /// Counts from a visible row instead; 3001 when the row is not visible.
    void MoveFrom(std::size_t row, LONG count);

    /// To a row; 3001 when it is not visible.
    void MoveTo(std::size_t row) { MoveFrom(row, 0); }
    void MoveAfterLast() { state_ = State::AfterLast; }
    void MoveBeforeFirst() { state_ = State::BeforeFirst; }

    /// The index of the current row from 1, or a PositionEnum value.
    LONG AbsolutePosition();

    /// @throws AdoError 3001 outside 1 to RecordCount
    /// @param given  what the failure names: the position, or the page that it begins
    void SetAbsolutePosition(long long position, LONG given);

    /// All visible rows; waits for the end of the fetch.
    std::size_t Count();

    /// Visible rows so far, without waiting.
    std::size_t CountArrived();

    /// The visible rows' numbers by position, for reading on from the current one.
    bool HasIndex(std::size_t index) { return view_.Has(index); }
    std::size_t RowAtIndex(std::size_t index) const { return view_.RowAt(index); }

    /// The index to read on from: the current row's, or the one behind a deleted row.
    /// @throws AdoError 3021 at BOF and EOF
    std::size_t Index();

    /// Looks for the first row that meets the criteria; stands on it, or at the end of the direction.
    /// @param start  a row to begin with; the current one without it
    /// @param skip  rows passed over first
    void Find(const Criteria& criteria, LONG skip, bool backward, std::optional<std::size_t> start);

    /// Shows the rows that pass; stands on the first one.
    void SetFilter(std::function<bool(std::size_t row)> visible, bool showDeleted = false);
    void SetSort(std::vector<SortKey> keys);

    /// Stands on a row just added to the store, whether or not the filter shows it.
    void StandOnAdded(std::size_t row);

    /// By the order of the view; rows that it does not show come by their numbers.
    int Compare(std::size_t first, std::size_t second);

private:
    enum class State { BeforeFirst, OnRow, AfterLast };

    void TakeChanges() {
        if (!view_.IsCurrent()) FollowChanges();
    }
    void FollowChanges();
    void StandFirst();
    bool StandAt(long long index);
    [[noreturn]] static void ThrowNoRecord();

    /// True on a deleted row that is not shown: position_ is then that of the row behind it.
    bool IsInGap();

    RowView view_;
    State state_ = State::AfterLast;
    bool deleted_ = false;  // the current row is deleted
    std::size_t position_ = 0;
    std::size_t row_ = 0;
};

}  // namespace tk::ado
