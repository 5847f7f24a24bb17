#include "ado/cursor/client_cursor.h"

#include "ado/cursor/text.h"

namespace tk::ado {

ClientCursor::ClientCursor(std::shared_ptr<RowStore> store) : view_(std::move(store)) {
    std::size_t nowhere = 0;
    view_.Update(nowhere);
    StandFirst();
}

void ClientCursor::ThrowNoRecord() {
    throw AdoError(ErrorNumber::NoCurrentRecord);
}

void ClientCursor::FollowChanges() {
    view_.Update(position_);
    if (state_ == State::OnRow) deleted_ = view_.Store().IsDeleted(row_);
}

void ClientCursor::StandFirst() {
    if (!StandAt(0)) state_ = State::AfterLast;
}

bool ClientCursor::StandAt(long long index) {
    if (index < 0 || !view_.Has(static_cast<std::size_t>(index))) return false;
    position_ = static_cast<std::size_t>(index);
    row_ = view_.RowAt(position_);
    state_ = State::OnRow;
    deleted_ = view_.Store().IsDeleted(row_);
    return true;
}

bool ClientCursor::IsInGap() {
    return deleted_ && !(view_.Has(position_) && view_.RowAt(position_) == row_);
}

bool ClientCursor::Bof() {
    TakeChanges();
    return state_ == State::BeforeFirst || (state_ == State::AfterLast && !view_.Has(0));
}

bool ClientCursor::Eof() {
    TakeChanges();
    return state_ == State::AfterLast || (state_ == State::BeforeFirst && !view_.Has(0));
}

void ClientCursor::MoveFirst() {
    TakeChanges();
    if (!StandAt(0)) ThrowNoRecord();
}

void ClientCursor::MoveLast() {
    TakeChanges();
    const std::size_t count = view_.Count();
    if (count == 0) ThrowNoRecord();
    StandAt(static_cast<long long>(count) - 1);
}

void ClientCursor::MoveNext() {
    TakeChanges();
    switch (state_) {
        case State::BeforeFirst:
            if (!StandAt(0)) ThrowNoRecord();
            return;
        case State::OnRow:
            if (!StandAt(static_cast<long long>(position_) + (IsInGap() ? 0 : 1))) state_ = State::AfterLast;
            return;
        case State::AfterLast:
            ThrowNoRecord();
    }
}

void ClientCursor::MovePrevious() {
    TakeChanges();
    switch (state_) {
        case State::BeforeFirst:
            ThrowNoRecord();
        case State::OnRow:
            if (!StandAt(static_cast<long long>(position_) - 1)) state_ = State::BeforeFirst;
            return;
        case State::AfterLast:
            MoveLast();
            return;
    }
}

void ClientCursor::Move(LONG count) {
    TakeChanges();
    if (!view_.Has(0) && state_ != State::OnRow) ThrowNoRecord();
    long long base = 0;
    switch (state_) {
        case State::BeforeFirst:
            if (count <= 0) ThrowNoRecord();
            base = -1;
            break;
        case State::OnRow:
            if (count == 0) return;
            base = static_cast<long long>(position_) - (count > 0 && IsInGap() ? 1 : 0);
            break;
        case State::AfterLast:
            if (count >= 0) ThrowNoRecord();
            base = static_cast<long long>(view_.Count());
            break;
    }
    if (StandAt(base + count)) return;
    state_ = base + count < 0 ? State::BeforeFirst : State::AfterLast;
}

void ClientCursor::MoveFrom(std::size_t row, LONG count) {
    TakeChanges();
    const std::optional<std::size_t> index = view_.IndexOf(row);
    if (!index) {
        if (!view_.Has(0)) ThrowNoRecord();
        throw AdoError(ErrorNumber::InvalidArgument);
    }
    const long long target = static_cast<long long>(*index) + count;
    if (StandAt(target)) return;
    state_ = target < 0 ? State::BeforeFirst : State::AfterLast;
}

LONG ClientCursor::AbsolutePosition() {
    TakeChanges();
    if (state_ == State::OnRow) return static_cast<LONG>(position_) + 1;
    if (!view_.Has(0)) return kPositionUnknown;
    return state_ == State::BeforeFirst ? kPositionBof : kPositionEof;
}

void ClientCursor::SetAbsolutePosition(long long position, LONG given) {
    TakeChanges();
    if (position < 1 || !StandAt(position - 1)) throw AdoError(ErrorNumber::InvalidArgument, NumberText(given));
}

std::size_t ClientCursor::Count() {
    TakeChanges();
    return view_.Count();
}

std::size_t ClientCursor::CountArrived() {
    TakeChanges();
    return view_.CountArrived();
}

std::size_t ClientCursor::Index() {
    TakeChanges();
    if (state_ != State::OnRow) ThrowNoRecord();
    return position_;
}

void ClientCursor::Find(const Criteria& criteria, LONG skip, bool backward, std::optional<std::size_t> start) {
    TakeChanges();
    long long index = 0;
    if (start) {
        const std::optional<std::size_t> found = view_.IndexOf(*start);
        if (!found) throw AdoError(view_.Has(0) ? ErrorNumber::InvalidArgument : ErrorNumber::NoCurrentRecord);
        index = static_cast<long long>(*found);
    } else {
        if (state_ != State::OnRow) ThrowNoRecord();
        index = static_cast<long long>(position_);
        if (IsInGap()) {
            // On a deleted row, whose neighbours stand at this position and before it: the first of them is one row on.
            if (backward) --index;
            if (skip > 0) --skip;
        }
    }
    index += backward ? -static_cast<long long>(skip) : static_cast<long long>(skip);
    const RowStore& rows = view_.Store();
    for (; index >= 0 && view_.Has(static_cast<std::size_t>(index)); index += backward ? -1 : 1) {
        const std::size_t row = view_.RowAt(static_cast<std::size_t>(index));
        if (rows.IsDeleted(row) || !criteria.Matches(rows, row)) continue;
        StandAt(index);
        return;
    }
    // A negative skip may have begun the search beyond the other end.
    state_ = backward ? State::BeforeFirst : State::AfterLast;
}

void ClientCursor::SetFilter(std::function<bool(std::size_t)> visible, bool showDeleted) {
    view_.SetFilter(std::move(visible), showDeleted);
    StandFirst();
}

void ClientCursor::SetSort(std::vector<SortKey> keys) {
    view_.SetSort(std::move(keys));
    StandFirst();
}

void ClientCursor::StandOnAdded(std::size_t row) {
    view_.Update(position_, row);
    if (const auto index = view_.IndexOf(row)) StandAt(static_cast<long long>(*index));
}

int ClientCursor::Compare(std::size_t first, std::size_t second) {
    TakeChanges();
    const auto firstIndex = view_.IndexOf(first);
    const auto secondIndex = view_.IndexOf(second);
    const std::size_t left = firstIndex && secondIndex ? *firstIndex : first;
    const std::size_t right = firstIndex && secondIndex ? *secondIndex : second;
    return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace tk::ado
