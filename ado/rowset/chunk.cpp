#include "ado/rowset/chunk.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

#include "ado/odbc/odbc_api.h"

namespace tk::ado {

std::size_t FixedWidthOf(CellKind kind) noexcept {
    switch (kind) {
        case CellKind::Boolean:
            return 1;
        case CellKind::Integer16:
            return 2;
        case CellKind::Integer32:
        case CellKind::Real32:
            return 4;
        case CellKind::Integer64:
        case CellKind::Real64:
            return 8;
        case CellKind::Date:
            return sizeof(SQL_DATE_STRUCT);
        case CellKind::Timestamp:
            return sizeof(SQL_TIMESTAMP_STRUCT);
        case CellKind::Text:
        case CellKind::Bytes:
        case CellKind::Decimal:
        case CellKind::Time:  // as text: ODBC's structure has no fraction of a second
        case CellKind::Guid:
            return 0;
    }
    return 0;
}

RowLayout::RowLayout(std::span<const Column> columns, bool allVariable)
    : RowLayout(columns, std::vector<bool>(columns.size(), allVariable)) {}

RowLayout::RowLayout(std::span<const Column> columns, const std::vector<bool>& isVariable) : places_(columns.size()) {
    std::vector<std::size_t> fixed;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::size_t width = isVariable[i] ? 0 : FixedWidthOf(columns[i].kind);
        places_[i].isVariable = width == 0;
        places_[i].width = static_cast<std::uint16_t>(width);
        if (width != 0) {
            fixed.push_back(i);
        } else {
            places_[i].slot = static_cast<std::uint16_t>(variable_.size());
            variable_.push_back(i);
        }
    }
    std::ranges::stable_sort(fixed, std::ranges::greater(), [&](std::size_t i) { return places_[i].width; });
    std::size_t before = 0;
    for (const std::size_t i : fixed) {
        places_[i].slot = static_cast<std::uint16_t>(fixedWidths_.size());
        fixedWidths_.push_back(places_[i].width);
        fixedBefore_.push_back(before);
        before += places_[i].width;
    }
    fixedBefore_.push_back(before);
}

std::string_view Chunk::Outside(const char* index) const noexcept {
    std::uint32_t number = 0;
    std::memcpy(&number, index, sizeof number);
    return outside_[number];
}

std::uint32_t ChunkBuilder::Keep(std::string text) {
    const auto number = static_cast<std::uint32_t>(outside_.size());
    text.shrink_to_fit();
    outsideBytes_ += text.size();
    outside_.push_back(std::move(text));
    return number;
}

void ChunkBuilder::AddOutside(std::string text) {
    const std::uint32_t number = Keep(std::move(text));
    AddBytes(reinterpret_cast<const char*>(&number), sizeof number);
    ends_.back() |= Chunk::kOutside;
}

void ChunkBuilder::Grow(std::size_t size) {
    // Small results are the commonest: pieces of this size are what allocators have at hand for each thread.
    constexpr std::size_t kFirst = 1000;
    constexpr std::size_t kFirstCells = 64;
    if (capacity_ == 0) ends_.reserve(kFirstCells);
    const std::size_t needed = position_ + size;
    if (needed > Chunk::kPosition) throw std::length_error("chunk");
    const std::size_t grown = std::min<std::size_t>(std::max({kFirst, std::size_t{capacity_} * 2, needed}),
                                                    std::size_t{Chunk::kPosition} + 1);
    auto larger = std::make_unique_for_overwrite<char[]>(grown);
    if (position_ != 0) std::memcpy(larger.get(), arena_.get(), position_);
    arena_ = std::move(larger);
    capacity_ = static_cast<std::uint32_t>(grown);
}

std::unique_ptr<Chunk> ChunkBuilder::Seal(std::size_t firstRow, std::size_t rows, std::span<const FixedBlock> fixed) {
    auto chunk = std::make_unique<Chunk>();
    const std::size_t endsBytes = (rows * layout_.VariableCount() * sizeof(std::uint32_t) + 7) / 8 * 8;
    const std::size_t nullBytes = (rows + 7) / 8;
    chunk->firstRow_ = firstRow;
    chunk->rows_ = rows;
    chunk->fixedAt_ = endsBytes;
    chunk->nullsAt_ = endsBytes + layout_.FixedRowBytes() * rows;
    chunk->arenaAt_ = chunk->nullsAt_ + nullBytes * fixed.size();
    const std::size_t size = chunk->arenaAt_ + position_;
    chunk->memory_ = memory_.Take(size);
    chunk->bytes_ = size + outsideBytes_ + outside_.size() * sizeof(std::string) + sizeof(Chunk);

    char* memory = chunk->memory_.get();
    if (!ends_.empty()) std::memcpy(memory, ends_.data(), ends_.size() * sizeof(std::uint32_t));
    for (std::size_t slot = 0; slot < fixed.size(); ++slot) {
        const std::size_t width = layout_.FixedWidth(slot);
        std::memcpy(memory + chunk->fixedAt_ + layout_.FixedBefore(slot) * rows, fixed[slot].values, width * rows);
        char* bits = memory + chunk->nullsAt_ + slot * nullBytes;
        for (std::size_t byte = 0; byte < nullBytes; ++byte) {
            unsigned value = 0;
            const std::size_t last = std::min(rows - byte * 8, std::size_t{8});
            for (std::size_t bit = 0; bit < last; ++bit) {
                value |= static_cast<unsigned>(fixed[slot].indicators[byte * 8 + bit] < 0) << bit;
            }
            bits[byte] = static_cast<char>(value);
        }
    }
    if (position_ != 0) std::memcpy(memory + chunk->arenaAt_, arena_.get(), position_);
    chunk->outside_ = std::move(outside_);
    chunk->outside_.shrink_to_fit();
    Discard();
    return chunk;
}

void ChunkBuilder::Discard() noexcept {
    ends_.clear();
    position_ = 0;
    outside_.clear();
    outsideBytes_ = 0;
}

}  // namespace tk::ado
