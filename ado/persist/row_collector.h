// ado/persist/row_collector.h - rows from a file, collected into chunks of a row set.
//
//   RowCollector collector(columns, keptAsText, limit);
//   collector.AddFixed<std::int32_t>(0, 7);
//   collector.AddText(1, name);
//   collector.EndRow();
//   auto rows = collector.Finish(columns);
//
// Each row adds a value or a NULL to every column; those that are kept as text or bytes in the order of the columns.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "ado/rowset/chunk.h"
#include "ado/rowset/row_set.h"

namespace tk::ado {

class RowCollector {
public:
    /// @param keptAsText  for each column whether its cells are kept as text or bytes whatever their kind
    RowCollector(const std::vector<Column>& columns, const std::vector<bool>& keptAsText);
    RowCollector(const RowCollector&) = delete;
    RowCollector& operator=(const RowCollector&) = delete;

    bool IsText(std::size_t column) const noexcept { return layout_.At(column).isVariable; }

    void AddNull(std::size_t column) {
        const RowLayout::Place& place = layout_.At(column);
        if (place.isVariable) return builder_.AddNull();
        indicators_[place.slot][inChunk_] = kNull;
    }
    void AddText(std::string_view text) { builder_.AddBytes(text.data(), text.size()); }

    /// A text of the caller's own, for long ones.
    void AddLongText(std::string text) { builder_.AddOutside(std::move(text)); }

    template <class Value>
    void AddFixed(std::size_t column, Value value) {
        const RowLayout::Place& place = layout_.At(column);
        std::memcpy(values_[place.slot].get() + inChunk_ * sizeof value, &value, sizeof value);
        indicators_[place.slot][inChunk_] = 0;
    }

    void EndRow() {
        if (++inChunk_ == chunkRows_ || builder_.ArenaBytes() >= kEnoughBytes) Seal();
    }

    std::size_t Rows() const noexcept { return sealed_ + inChunk_; }

    /// Memory that is held for all rows.
    std::size_t Bytes() const noexcept { return bytes_; }

    std::shared_ptr<RowSet> Finish(std::vector<Column> columns);

private:
    static constexpr long kNull = -1;
    static constexpr std::size_t kEnoughBytes = 4 * 1024 * 1024;

    void Seal();

    RowLayout layout_;
    ChunkBuilder builder_;
    std::size_t chunkRows_;
    std::vector<std::unique_ptr<char[]>> values_;  // by slot
    std::vector<std::unique_ptr<long[]>> indicators_;
    std::size_t inChunk_ = 0;
    std::size_t sealed_ = 0;
    std::size_t bytes_ = 0;
    std::vector<std::unique_ptr<Chunk>> chunks_;
};

}  // namespace tk::ado
