#include "ado/cursor/row_store.h"

#include <algorithm>

namespace tk::ado {

RowStore::State& RowStore::Touch(std::size_t row) {
    const auto [found, isNew] = states_.try_emplace(row);
    State& state = found->second;
    if (isNew) {
        for (std::size_t i = 0; i < Columns().size(); ++i)
            state.current.push_back({fetched_.get(), row, i});
        state.original = state.underlying = state.current;
    }
    return state;
}

std::size_t RowStore::Keep(const std::vector<std::optional<Value>>& values) {
    if (!written_) written_ = RowSet::Build(fetched_->Columns());
    const Value null = Value::Null();
    std::vector<VARIANT> borrowed;
    borrowed.reserve(values.size());
    for (const auto& value : values)
        borrowed.push_back(value ? value->Get() : null.Get());
    written_->Append(borrowed);
    return writtenRows_++;
}

void RowStore::SetStatus(std::size_t row, LONG status) {
    Touch(row).status = status;
}

void RowStore::ReadOriginal(std::size_t row, std::size_t column, VARIANT& value) const {
    const State* state = Find(row);
    const Place place = state == nullptr ? Place{fetched_.get(), row, column} : state->original[column];
    place.set->Read(place.row, place.column, value);
}

Cell RowStore::OriginalAt(std::size_t row, std::size_t column) const {
    const State* state = Find(row);
    const Place place = state == nullptr ? Place{fetched_.get(), row, column} : state->original[column];
    return place.set->At(place.row, place.column);
}

void RowStore::ReadUnderlying(std::size_t row, std::size_t column, VARIANT& value) const {
    const State* state = Find(row);
    const Place place = state == nullptr ? Place{fetched_.get(), row, column} : state->underlying[column];
    place.set->Read(place.row, place.column, value);
}

Cell RowStore::UnderlyingAt(std::size_t row, std::size_t column) const {
    const State* state = Find(row);
    const Place place = state == nullptr ? Place{fetched_.get(), row, column} : state->underlying[column];
    return place.set->At(place.row, place.column);
}

bool RowStore::WasGiven(std::size_t row, std::size_t column) const {
    const State* state = Find(row);
    return state != nullptr && column < state->given.size() && state->given[column];
}

void RowStore::Change(std::size_t row, const std::vector<std::optional<Value>>& values, LONG status) {
    const std::size_t kept = Keep(values);
    State& state = Touch(row);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!values[i]) continue;
        state.current[i] = {written_.get(), kept, i};
        if (i < state.given.size()) state.given[i] = true;
    }
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

void RowStore::Refresh(std::size_t row, std::shared_ptr<RowSet> read, const std::vector<std::size_t>& columns,
                       bool underlyingOnly) {
    State& state = Touch(row);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Place place{read.get(), 0, i};
        state.underlying[columns[i]] = place;
        if (!underlyingOnly) state.current[columns[i]] = state.original[columns[i]] = place;
    }
    reread_.push_back(std::move(read));
}

std::size_t RowStore::Add(const std::vector<std::optional<Value>>& values, LONG status) {
    if (added_ == 0) fetchedRows_ = fetched_->CountRows();
    const std::size_t kept = Keep(values);
    const std::size_t row = fetchedRows_ + added_;
    State state;
    for (std::size_t i = 0; i < values.size(); ++i) {
        state.current.push_back({written_.get(), kept, i});
        state.given.push_back(values[i].has_value());
    }
    state.original = state.underlying = state.current;
    state.status = status;
    states_.emplace(row, std::move(state));
    ++added_;
    ++version_;
    return row;
}

void RowStore::MarkNew(std::size_t row, std::vector<bool> given, LONG status) {
    State& state = Touch(row);
    state.given = std::move(given);
    state.status = status;
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
