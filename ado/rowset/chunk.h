// ado/rowset/chunk.h - some hundred rows in one piece of memory: fixed-width values by column, texts and bytes in an
// arena.
//
// A row costs its values, four bytes for each text and one bit for each fixed-width value. Reading computes two
// addresses and touches nothing else. A finished chunk never changes, so readers need no lock.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ado/rowset/chunk_memory.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// Where the cells of each column are inside a chunk.
class RowLayout {
public:
    /// One column's place: in the arena, or in a fixed-width array.
    struct Place {
        bool isVariable = true;
        std::uint16_t slot = 0;   // among its kind
        std::uint16_t width = 0;  // bytes of a fixed-width value
    };

    /// @param allVariable  every cell is kept as the text or bytes that the driver gave
    RowLayout(std::span<const Column> columns, bool allVariable);

    /// @param isVariable  for each column whether its cells are kept as text or bytes whatever their kind
    RowLayout(std::span<const Column> columns, const std::vector<bool>& isVariable);

    const Place& At(std::size_t column) const noexcept { return places_[column]; }
    std::size_t VariableCount() const noexcept { return variable_.size(); }
    std::span<const std::size_t> VariableColumns() const noexcept { return variable_; }
    std::size_t FixedCount() const noexcept { return fixedWidths_.size(); }

    /// Bytes of the fixed-width values of one row in the slots before this one; widths fall, so that every array is
    /// aligned.
    std::size_t FixedBefore(std::size_t slot) const noexcept { return fixedBefore_[slot]; }
    std::size_t FixedWidth(std::size_t slot) const noexcept { return fixedWidths_[slot]; }
    std::size_t FixedRowBytes() const noexcept { return fixedBefore_.back(); }

private:
    std::vector<Place> places_;
    std::vector<std::size_t> variable_;  // columns, in the order of their slots
    std::vector<std::uint16_t> fixedWidths_;
    std::vector<std::size_t> fixedBefore_;
};

/// Bytes of a fixed-width value of the kind; 0 for kinds that are kept as text or bytes.
std::size_t FixedWidthOf(CellKind kind) noexcept;

class Chunk {
public:
    static constexpr std::uint32_t kNull = 0x80000000u;      // a variable cell without a value
    static constexpr std::uint32_t kOutside = 0x40000000u;   // its arena bytes are the index of a text outside
    static constexpr std::uint32_t kPosition = 0x3FFFFFFFu;  // the end of the cell in the arena

    std::size_t FirstRow() const noexcept { return firstRow_; }
    std::size_t Rows() const noexcept { return rows_; }
    bool Covers(std::size_t row) const noexcept { return row - firstRow_ < rows_; }
    std::size_t Bytes() const noexcept { return bytes_; }

    /// The value of a variable cell; data() is null for NULL. `row` counts within the chunk.
    std::string_view Variable(const RowLayout& layout, std::size_t row, std::size_t slot) const noexcept {
        const std::size_t index = row * layout.VariableCount() + slot;
        const auto* ends = reinterpret_cast<const std::uint32_t*>(memory_.get());
        const std::uint32_t end = ends[index];
        if ((end & kNull) != 0) return {};
        const std::uint32_t begin = index == 0 ? 0 : ends[index - 1] & kPosition;
        const char* start = memory_.get() + arenaAt_ + begin;
        if ((end & kOutside) != 0) return Outside(start);
        return {start, (end & kPosition) - begin};
    }

    bool IsNullFixed(std::size_t row, std::size_t slot) const noexcept {
        const char* bits = memory_.get() + nullsAt_ + slot * ((rows_ + 7) / 8);
        return (bits[row / 8] >> (row % 8) & 1) != 0;
    }

    /// A text that was kept beside the cells.
    std::string_view Text(std::size_t number) const noexcept { return outside_[number]; }

    template <class Value>
    Value Fixed(const RowLayout& layout, std::size_t row, std::size_t slot) const noexcept {
        Value value;
        std::memcpy(&value, memory_.get() + fixedAt_ + layout.FixedBefore(slot) * rows_ + row * sizeof value,
                    sizeof value);
        return value;
    }

private:
    friend class ChunkBuilder;
    std::string_view Outside(const char* index) const noexcept;

    std::shared_ptr<char[]> memory_;
    std::size_t firstRow_ = 0;
    std::size_t rows_ = 0;
    std::size_t fixedAt_ = 0;
    std::size_t nullsAt_ = 0;
    std::size_t arenaAt_ = 0;
    std::size_t bytes_ = 0;
    std::vector<std::string> outside_;  // long texts
};

/// Collects rows and makes chunks of them. The memory it collects in is used again for the next chunk.
class ChunkBuilder {
public:
    explicit ChunkBuilder(const RowLayout& layout) : layout_(layout) {}

    /// A fixed-width column of the rows to come: the block that the driver fills, and its indicators.
    struct FixedBlock {
        const char* values = nullptr;
        const long* indicators = nullptr;  // negative: NULL
    };

    // Variable cells are added row by row, in the order of their slots.
    void AddNull() { ends_.push_back(position_ | Chunk::kNull); }
    void AddBytes(const char* data, std::size_t size) {
        if (size > kLongestInside) return AddOutside(std::string(data, size));
        if (capacity_ - position_ <= size) Grow(size);  // also for the first, empty text
        std::memcpy(arena_.get() + position_, data, size);
        position_ += static_cast<std::uint32_t>(size);
        ends_.push_back(position_);
    }
    void AddOutside(std::string text);

    /// Keeps a text beside the cells; its number, for Chunk::Text, goes into a fixed-width value.
    std::uint32_t Keep(std::string text);

    std::size_t VariableCells() const noexcept { return ends_.size(); }
    std::size_t ArenaBytes() const noexcept { return position_ + outsideBytes_; }

    /// A chunk of `rows` rows; `fixed` has one entry for each fixed slot.
    std::unique_ptr<Chunk> Seal(std::size_t firstRow, std::size_t rows, std::span<const FixedBlock> fixed);

    /// Forgets cells that were added for no row.
    void Discard() noexcept;

private:
    static constexpr std::size_t kLongestInside = 32 * 1024;

    void Grow(std::size_t size);

    const RowLayout& layout_;
    ChunkMemory memory_;
    std::vector<std::uint32_t> ends_;
    std::unique_ptr<char[]> arena_;
    std::uint32_t position_ = 0;
    std::uint32_t capacity_ = 0;
    std::vector<std::string> outside_;
    std::size_t outsideBytes_ = 0;
};

}  // namespace tk::ado
