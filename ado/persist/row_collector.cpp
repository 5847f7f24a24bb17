#include "ado/persist/row_collector.h"

#include <algorithm>

namespace tk::ado {
namespace {

constexpr std::size_t kMostRows = 1024;
constexpr std::size_t kMostCells = 256 * 1024;

}  // namespace

RowCollector::RowCollector(const std::vector<Column>& columns, const std::vector<bool>& keptAsText)
    : layout_(columns, keptAsText),
      builder_(layout_),
      chunkRows_(std::clamp<std::size_t>(kMostCells / std::max<std::size_t>(columns.size(), 1), 1, kMostRows)) {
    for (std::size_t slot = 0; slot < layout_.FixedCount(); ++slot) {
        values_.push_back(std::make_unique<char[]>(layout_.FixedWidth(slot) * chunkRows_));
        indicators_.push_back(std::make_unique<long[]>(chunkRows_));
    }
}

void RowCollector::Seal() {
    std::vector<ChunkBuilder::FixedBlock> fixed;
    for (std::size_t slot = 0; slot < values_.size(); ++slot)
        fixed.push_back({values_[slot].get(), indicators_[slot].get()});
    chunks_.push_back(builder_.Seal(sealed_, inChunk_, fixed));
    bytes_ += chunks_.back()->Bytes();
    sealed_ += inChunk_;
    inChunk_ = 0;
}

std::shared_ptr<RowSet> RowCollector::Finish(std::vector<Column> columns) {
    if (inChunk_ != 0) Seal();
    return RowSet::Assemble(std::move(columns), std::move(layout_), std::move(chunks_));
}

}  // namespace tk::ado
