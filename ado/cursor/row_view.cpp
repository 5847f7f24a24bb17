#include "ado/cursor/row_view.h"

#include <algorithm>

namespace tk::ado {

bool RowView::IsVisible(std::size_t row) const {
    if (!showDeleted_ && store_->IsDeleted(row)) return false;
    return !visible_ || visible_(row);
}

void RowView::TakeNext() {
    const std::size_t row = scanned_++;
    if (IsVisible(row)) order_.push_back(static_cast<std::uint32_t>(row));
}

bool RowView::ScanTo(std::size_t index) {
    while (order_.size() <= index) {
        if (!keys_.empty() || !store_->HasRow(scanned_)) return false;
        TakeNext();
    }
    return true;
}

std::size_t RowView::Count() {
    if (natural_) return store_->CountRows();
    if (keys_.empty()) {
        for (const std::size_t all = store_->CountRows(); scanned_ < all;)
            TakeNext();
    }
    return order_.size();
}

std::size_t RowView::CountArrived() {
    if (natural_) return store_->ArrivedRows();
    if (keys_.empty()) {
        for (const std::size_t arrived = store_->ArrivedRows(); scanned_ < arrived;)
            TakeNext();
    }
    return order_.size();
}

std::optional<std::size_t> RowView::IndexOf(std::size_t row) {
    if (!store_->HasRow(row)) return std::nullopt;
    if (natural_) return row;
    if (keys_.empty()) {
        while (scanned_ <= row)
            TakeNext();
        const auto found = std::ranges::lower_bound(order_, row);
        if (found == order_.end() || *found != row) return std::nullopt;
        return static_cast<std::size_t>(found - order_.begin());
    }
    if (ranks_.empty()) {
        ranks_.resize(store_->CountRows());
        for (std::size_t index = 0; index < order_.size(); ++index) {
            ranks_[order_[index]] = static_cast<std::uint32_t>(index) + 1;
        }
    }
    if (row >= ranks_.size() || ranks_[row] == 0) return std::nullopt;
    return ranks_[row] - 1;
}

void RowView::Rebuild() {
    order_.clear();
    ranks_.clear();
    scanned_ = 0;
    version_ = store_->Version();
    restorations_ = store_->Restorations();
    natural_ = !visible_ && keys_.empty() && !store_->HasDeletedRows();
    if (keys_.empty()) return;
    for (const std::size_t all = store_->CountRows(); scanned_ < all;)
        TakeNext();
    SortRows(*store_, keys_, order_);
}

void RowView::SetFilter(std::function<bool(std::size_t)> visible, bool showDeleted) {
    visible_ = std::move(visible);
    showDeleted_ = showDeleted;
    Rebuild();
}

void RowView::SetSort(std::vector<SortKey> keys) {
    keys_ = std::move(keys);
    Rebuild();
}

void RowView::Update(std::size_t& index, std::optional<std::size_t> added) {
    if (IsCurrent()) return;
    if (restorations_ != store_->Restorations()) {
        const bool had = Has(index);
        const std::size_t row = had ? RowAt(index) : 0;
        Rebuild();
        if (had) index = IndexOf(row).value_or(index);
        return;
    }
    // Changes of the store happen only after the end of its fetch, so everything can be looked at.
    const std::size_t all = store_->CountRows();
    if (natural_ && store_->HasDeletedRows()) {
        natural_ = false;
        scanned_ = all;
        order_.resize(all);
        for (std::size_t row = 0; row < all; ++row)
            order_[row] = static_cast<std::uint32_t>(row);
    }
    version_ = store_->Version();
    if (natural_) return;
    while (scanned_ < all) {
        const std::size_t row = scanned_++;
        if (row == added || IsVisible(row)) order_.push_back(static_cast<std::uint32_t>(row));
    }
    if (!showDeleted_ && store_->HasDeletedRows()) {
        std::size_t kept = 0;
        std::size_t before = 0;
        for (std::size_t i = 0; i < order_.size(); ++i) {
            if (store_->IsDeleted(order_[i])) {
                if (i < index) ++before;
            } else {
                order_[kept++] = order_[i];
            }
        }
        order_.resize(kept);
        index -= before;
    }
    ranks_.clear();
}

}  // namespace tk::ado
