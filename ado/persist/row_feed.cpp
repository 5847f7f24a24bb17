#include "ado/persist/row_feed.h"

namespace tk::ado {

RowFeed::RowFeed(RowView& view, std::function<bool(std::size_t row)> visible) : rows_(view.Store()), view_(&view) {
    for (const std::size_t row : rows_.PendingRows()) {
        if (rows_.IsDeleted(row) && (!visible || visible(row))) deleted_.push_back(row);
    }
}

bool RowFeed::Classify(std::size_t number, SavedRow& row) const {
    row = {number, RowState::Unchanged, rows_.IsAsFetched(number)};
    if (row.isAsFetched) return true;
    const LONG status = rows_.Status(number);
    const bool isPending = (status & kStatusPending) != 0;
    if (rows_.IsDeleted(number)) {
        row.state = RowState::Deleted;
        return isPending && (status & kStatusNew) == 0;
    }
    if (isPending) row.state = (status & kStatusNew) != 0 ? RowState::Inserted : RowState::Updated;
    return true;
}

bool RowFeed::Next(SavedRow& row) {
    if (view_ == nullptr) {
        while (rows_.HasRow(next_)) {
            if (Classify(next_++, row)) return true;
        }
        return false;
    }
    while (view_->Has(next_)) {
        const std::size_t number = view_->RowAt(next_++);
        if (!rows_.IsDeleted(number) && Classify(number, row)) return true;
    }
    while (nextDeleted_ < deleted_.size()) {
        if (Classify(deleted_[nextDeleted_++], row)) return true;
    }
    return false;
}

}  // namespace tk::ado
