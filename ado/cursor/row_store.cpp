#include "ado/cursor/row_store.h"

#include <algorithm>

namespace tk::ado {

RowStore::State& RowStore::Touch(std::size_t row) {
    const auto [place, isNew] = states_.try_emplace(row);
    if (isNew) {
        place->second.current = place->second.original = place->second.underlying = Place{fetched_.get(), row};
    }
    return place->second;
}

RowStore::Place RowStore::Keep(std::span<const VARIANT> values) {
    if (!written_) written_ = RowSet::Build(fetched_->Columns());
    written_->Append(values);
    return Place{written_.get(), writtenRows_++};
}

void RowStore::SetStatus(std::size_t row, LONG status) {
    Touch(row).status = status;
}

void RowStore::ReadOriginal(std::size_t row, std::size_t column, VARIANT& value) const {
    const State* state = Find(row);
    const Place place = state == nullptr ? Place{fetched_.get(), row} : state->original;
    place.set->Read(place.row, column, value);
}

Cell RowStore::OriginalAt(std::size_t row, std::size_t column) const {
    const State* state = Find(row);
    const Place place = state == nullptr ? Place{fetched_.get(), row} : state->original;
    return place.set->At(place.row, column);
}

void RowStore::ReadUnderlying(std::size_t row, std::size_t column, VARIANT& value) const {
    const State* state = Find(row);
    const Place place = state == nullptr ? Place{fetched_.get(), row} : state->underlying;
    place.set->Read(place.row, column, value);
}

void RowStore::Change(std::size_t row, std::span<const VARIANT> values, LONG status) {
    const Place place = Keep(values);
    State& state = Touch(row);
    state.current = place;
    state.status = status;
}

void RowStore::Accept(std::size_t row, LONG status) {
    State& state = Touch(row);
    state.original = state.underlying = state.current;
    state.status = status;
}

void RowStore::Revert(std::size_t row, LONG status) {
    State& state = Touch(row);
    state.current = state.original;
    state.status = status;
}

void RowStore::Refresh(std::size_t row, std::span<const VARIANT> values, bool underlyingOnly) {
    const Place place = Keep(values);
    State& state = Touch(row);
    state.underlying = place;
    if (!underlyingOnly) state.current = state.original = place;
}

std::size_t RowStore::Add(std::span<const VARIANT> values, LONG status) {
    if (added_ == 0) fetchedRows_ = fetched_->CountRows();
    const Place place = Keep(values);
    const std::size_t row = fetchedRows_ + added_;
    states_.emplace(row, State{place, place, place, status, false});
    ++added_;
    ++version_;
    return row;
}

void RowStore::Delete(std::size_t row, LONG status) {
    State& state = Touch(row);
    state.status = status;
    if (state.deleted) return;
    state.deleted = true;
    ++deleted_;
    ++version_;
}

void RowStore::Restore(std::size_t row, LONG status) {
    State& state = Touch(row);
    state.status = status;
    if (!state.deleted) return;
    state.deleted = false;
    --deleted_;
    ++version_;
    ++restorations_;
}

std::vector<std::size_t> RowStore::PendingRows() const {
    std::vector<std::size_t> rows;
    for (const auto& [row, state] : states_) {
        if ((state.status & kStatusPending) != 0) rows.push_back(row);
    }
    std::ranges::sort(rows);
    return rows;
}

}  // namespace tk::ado
