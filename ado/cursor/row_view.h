// ado/cursor/row_view.h - which rows of a store are visible, and in which order.
//
// Without filter, order and deleted rows a view is the store itself and costs nothing; otherwise it keeps the visible
// row numbers, found only as far as somebody has looked while the fetch still runs.
//
// Threads: as the store.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "ado/cursor/row_store.h"
#include "ado/cursor/sort.h"

namespace tk::ado {

class RowView {
public:
    explicit RowView(std::shared_ptr<RowStore> store) : store_(std::move(store)) {}

    RowStore& Store() const noexcept { return *store_; }

    /// True when there is a visible row at the index; waits for it.
    bool Has(std::size_t index) { return natural_ ? store_->HasRow(index) : ScanTo(index); }
    std::size_t RowAt(std::size_t index) const { return natural_ ? index : order_[index]; }

    /// All visible rows; waits for the end of the fetch.
    std::size_t Count();

    /// Visible rows among those that have arrived.
    std::size_t CountArrived();

    /// Where a row is, if it is visible.
    std::optional<std::size_t> IndexOf(std::size_t row);

    /// @param visible  empty for all rows
    /// @param showDeleted  whether the test is asked about deleted rows too
    void SetFilter(std::function<bool(std::size_t row)> visible, bool showDeleted);
    void SetSort(std::vector<SortKey> keys);

    /// Takes over what was added or deleted since the last call, here or by another view of the store.
    /// @param index  an index into the view, kept on the row that it meant or on the one that followed it
    /// @param added  a row to show although the filter would not; added rows come last
    void Update(std::size_t& index, std::optional<std::size_t> added = std::nullopt);
    bool IsCurrent() const noexcept { return version_ == store_->Version(); }

private:
    bool ScanTo(std::size_t index);
    bool IsVisible(std::size_t row) const;
    void TakeNext();
    void Rebuild();

    std::shared_ptr<RowStore> store_;
    bool natural_ = true;
    bool showDeleted_ = false;
    std::function<bool(std::size_t)> visible_;
    std::vector<SortKey> keys_;
    std::vector<std::uint32_t> order_;
    std::size_t scanned_ = 0;           // rows of the store that have been looked at
    std::vector<std::uint32_t> ranks_;  // row -> index + 1 of a sorted view; built when first asked for
    std::uint64_t version_ = 0;
    std::uint64_t restorations_ = 0;
};

}  // namespace tk::ado
