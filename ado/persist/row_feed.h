// ado/persist/row_feed.h - the rows that are to be saved, in order, each with what has become of it.
//
//   RowFeed feed(store);
//   for (SavedRow row; feed.Next(row);) ...
//
// Rows deleted for good are left out, as are new rows that were deleted again. Rows whose deletion is pending come
// where they stood, or last when a view puts the rows in another order.
#pragma once

#include <functional>
#include <vector>

#include "ado/cursor/row_view.h"

namespace tk::ado {

enum class RowState : unsigned char { Unchanged, Updated, Inserted, Deleted };

struct SavedRow {
    std::size_t row = 0;
    RowState state = RowState::Unchanged;
    bool isAsFetched = true;
};

class RowFeed {
public:
    /// All rows of a store, in the order of their numbers; waits for those that are still to arrive.
    explicit RowFeed(RowStore& rows) : rows_(rows) {}

    /// The rows of a view. @param visible  the view's filter, asked about deleted rows too; empty for all
    RowFeed(RowView& view, std::function<bool(std::size_t row)> visible);

    RowStore& Rows() const noexcept { return rows_; }
    bool Next(SavedRow& row);
    void Restart() noexcept { next_ = nextDeleted_ = 0; }

private:
    bool Classify(std::size_t number, SavedRow& row) const;

    RowStore& rows_;
    RowView* view_ = nullptr;
    std::vector<std::size_t> deleted_;  // of a view
    std::size_t next_ = 0;
    std::size_t nextDeleted_ = 0;
};

}  // namespace tk::ado
