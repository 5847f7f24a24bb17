// C types in column-wise blocks that stay bound to the handle. The block is small at first, so that a query for one row
// pays for little. A text longer than its cell is fetched whole by SQLSetPos and SQLGetData.
#include <algorithm>
#include <cstring>

#include "ado/rowset/cell_reader.h"
#include "ado/rowset/fetcher.h"
#include "ado/rowset/odd_moment.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

constexpr std::size_t kSmallestCell = 32;
constexpr std::size_t kUsualCell = 1024;
constexpr std::size_t kLongCell = 256;  // of columns without a limit
constexpr std::size_t kLargestCell = 64 * 1024;
constexpr std::size_t kMostBlockBytes = 4 * 1024 * 1024;

/// One column of the block that the driver fills.
struct BoundColumn {
    std::unique_ptr<char[]> values;
    std::unique_ptr<SQLLEN[]> indicators;
    std::size_t width = 0;
    SQLSMALLINT cType = SQL_C_CHAR;
};

struct BoundBlock final : BoundState {
    std::vector<BoundColumn> columns;
    std::size_t rows = 0;
};

SQLSMALLINT CTypeOf(CellKind kind) {
    switch (kind) {
        case CellKind::Boolean:
            return SQL_C_BIT;
        case CellKind::Integer16:
            return SQL_C_SSHORT;
        case CellKind::Integer32:
            return SQL_C_SLONG;
        case CellKind::Integer64:
            return SQL_C_SBIGINT;
        case CellKind::Real32:
            return SQL_C_FLOAT;
        case CellKind::Real64:
            return SQL_C_DOUBLE;
        case CellKind::Date:
            return SQL_C_TYPE_DATE;
        case CellKind::Timestamp:
            return SQL_C_TYPE_TIMESTAMP;
        case CellKind::Bytes:
            return SQL_C_BINARY;
        case CellKind::Text:
        case CellKind::Decimal:
        case CellKind::Time:
        case CellKind::Guid:
            return SQL_C_CHAR;
    }
    return SQL_C_CHAR;
}

std::size_t CellWidth(const Column& column) {
    if (const std::size_t fixed = FixedWidthOf(column.kind); fixed != 0) return fixed;
    if ((column.attributes & kFieldLong) != 0) return kLongCell;
    constexpr std::size_t kMostBytesOfCharacter = 4;
    const auto described = static_cast<std::size_t>(column.definedSize);
    switch (column.kind) {
        case CellKind::Text:
            return std::clamp(described * kMostBytesOfCharacter + 1, kSmallestCell, kUsualCell);
        case CellKind::Bytes:
            return std::clamp(described, kSmallestCell, kUsualCell);
        default:
            return 48;  // any decimal that is usual, GUID, time
    }
}

class BlockFetcher final : public Fetcher {
public:
    BlockFetcher(Statement::Impl& statement, const RowLayout& layout)
        : statement_(statement),
          layout_(layout),
          builder_(layout),
          widths_(statement.shape->columns.size()),
          fixed_(layout.FixedCount()) {
        std::ranges::transform(statement.shape->columns, widths_.begin(), CellWidth);
    }

    std::size_t FirstRows() const noexcept override { return Fit(statement_.handle->Profile().firstBlockRows); }
    std::size_t FullRows() const noexcept override { return Fit(statement_.handle->Profile().fullBlockRows); }

    std::unique_ptr<Chunk> FetchChunk(std::size_t firstRow, std::size_t rows) override {
        StatementHandle& handle = *statement_.handle;
        rows = Fit(rows);
        Bind(rows);
        handle.SetRowArraySize(rows);
        const StatementHandle::RowCalls calls(handle);
        statement_.ExpectNotEnded();
        const SQLRETURN result = Odbc().Fetch(handle.Get());
        if (result == SQL_NO_DATA) {
            atEnd_ = true;
            return nullptr;
        }
        if (!SQL_SUCCEEDED(result)) statement_.Fail(result);
        const std::size_t fetched = rows == 1 ? 1 : std::min<std::size_t>(handle.RowsFetched(), rows);
        if (fetched < rows) atEnd_ = true;  // a block that is not full is the last one
        if (fetched == 0) return nullptr;
        if (result == SQL_SUCCESS_WITH_INFO && rows > 1) FailOnBadRow(fetched);
        try {
            AddVariableCells(fetched);
            if (statement_.handle->Profile().hidesOddMoments) KeepOddMoments(fetched);
        } catch (...) {
            builder_.Discard();
            throw;
        }
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            const RowLayout::Place& place = layout_.At(i);
            if (place.isVariable) continue;
            fixed_[place.slot] = {block_->columns[i].values.get(), block_->columns[i].indicators.get()};
        }
        return builder_.Seal(firstRow, fetched, fixed_);
    }

private:
    /// Rows that fit into the memory a block may take.
    std::size_t Fit(std::size_t rows) const noexcept {
        std::size_t rowBytes = 0;
        for (const std::size_t width : widths_)
            rowBytes += width + sizeof(SQLLEN);
        return std::clamp(kMostBlockBytes / std::max<std::size_t>(rowBytes, 1), std::size_t{1}, rows);
    }

    /// Makes the handle's block have at least `rows` rows and cells of the widths wanted now.
    void Bind(std::size_t rows) {
        StatementHandle& handle = *statement_.handle;
        block_ = dynamic_cast<BoundBlock*>(handle.bound.get());
        if (block_ == nullptr || block_->columns.size() != widths_.size()) {
            handle.Unbind();
            auto fresh = std::make_unique<BoundBlock>();
            fresh->columns.resize(widths_.size());
            block_ = fresh.get();
            handle.bound = std::move(fresh);
        }
        const bool grows = rows > block_->rows;
        const std::size_t capacity = std::max(rows, block_->rows);
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            BoundColumn& column = block_->columns[i];
            const SQLSMALLINT cType = CTypeOf(statement_.shape->columns[i].kind);
            const bool isVariable = layout_.At(i).isVariable;
            const bool fits =
                column.cType == cType && (isVariable ? column.width >= widths_[i] : column.width == widths_[i]);
            if (fits && !grows) {
                widths_[i] = column.width;
                continue;
            }
            BindColumn(static_cast<int>(i) + 1, column, cType, widths_[i], capacity);
        }
        block_->rows = capacity;
    }

    void BindColumn(int number, BoundColumn& column, SQLSMALLINT cType, std::size_t width, std::size_t rows) {
        StatementHandle& handle = *statement_.handle;
        auto values = std::make_unique_for_overwrite<char[]>(width * rows);
        auto indicators = std::make_unique<SQLLEN[]>(rows);
        const SQLRETURN result = Odbc().BindCol(handle.Get(), static_cast<SQLUSMALLINT>(number), cType, values.get(),
                                                static_cast<SQLLEN>(width), indicators.get());
        if (!SQL_SUCCEEDED(result)) {
            const auto records = ReadDiagnostics(SQL_HANDLE_STMT, handle.Get());
            handle.Unbind();
            block_ = nullptr;
            throw MakeError(records);
        }
        column.values = std::move(values);
        column.indicators = std::move(indicators);
        column.width = width;
        column.cType = cType;
    }

    void FailOnBadRow(std::size_t fetched) {
        for (std::size_t row = 0; row < fetched; ++row) {
            if (statement_.handle->RowStatus(row) == SQL_ROW_ERROR) statement_.Fail(SQL_ERROR);
        }
    }

    void AddVariableCells(std::size_t fetched) {
        if (layout_.VariableCount() == 0) return;
        for (std::size_t row = 0; row < fetched; ++row) {
            for (const std::size_t index : layout_.VariableColumns()) {
                const BoundColumn& column = block_->columns[index];
                const SQLLEN length = column.indicators[row];
                const std::size_t room = column.width - (column.cType == SQL_C_CHAR ? 1 : 0);
                if (length >= 0 && static_cast<std::size_t>(length) <= room) [[likely]] {
                    AddCell(index, column.values.get() + row * column.width, static_cast<std::size_t>(length));
                } else if (length == SQL_NULL_DATA) {
                    builder_.AddNull();
                } else {
                    AddLong(row, index);
                }
            }
        }
    }

    /// Moments that the driver gave wrongly become texts of the chunk.
    void KeepOddMoments(std::size_t fetched) {
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            const BoundColumn& column = block_->columns[i];
            if (column.cType == SQL_C_TYPE_DATE) {
                KeepOdd<SQL_DATE_STRUCT>(i, column, fetched);
            } else if (column.cType == SQL_C_TYPE_TIMESTAMP) {
                KeepOdd<SQL_TIMESTAMP_STRUCT>(i, column, fetched);
            }
        }
    }

    template <class Fields>
    void KeepOdd(std::size_t index, const BoundColumn& column, std::size_t fetched) {
        DoubtfulMoments doubtful;
        for (std::size_t row = 0; row < fetched; ++row) {
            if (column.indicators[row] < 0) continue;
            Fields fields;
            std::memcpy(&fields, column.values.get() + row * sizeof fields, sizeof fields);
            if (!doubtful.Has(fields)) [[likely]]
                continue;
            auto text = ReadOddMoment(statement_, row, static_cast<int>(index) + 1);
            if (!text) continue;
            SetTextNumber(fields, builder_.Keep(std::move(*text)));
            std::memcpy(column.values.get() + row * sizeof fields, &fields, sizeof fields);
        }
    }

    void AddCell(std::size_t index, const char* data, std::size_t size) {
        if (statement_.shape->columns[index].kind != CellKind::Guid) [[likely]]
            return builder_.AddBytes(data, size);
        std::string text(data, size);
        NormalizeGuid(text);
        builder_.AddBytes(text.data(), text.size());
    }

    /// The cell is longer than the block's; the next block has wider ones.
    void AddLong(std::size_t row, std::size_t index) {
        StatementHandle& handle = *statement_.handle;
        const SQLRETURN result = Odbc().SetPos(handle.Get(), row + 1, SQL_POSITION, SQL_LOCK_NO_CHANGE);
        if (!SQL_SUCCEEDED(result)) statement_.Fail(result);
        std::string value;
        const BoundColumn& column = block_->columns[index];
        if (!ReadWholeCell(statement_, static_cast<int>(index) + 1, column.cType, value)) return builder_.AddNull();
        builder_.AddBytes(value.data(), value.size());
        if (value.size() >= kLargestCell) return;
        widths_[index] = std::max(widths_[index], std::min(value.size() + value.size() / 2, kLargestCell));
    }

    Statement::Impl& statement_;
    const RowLayout& layout_;
    ChunkBuilder builder_;
    std::vector<std::size_t> widths_;
    std::vector<ChunkBuilder::FixedBlock> fixed_;
    BoundBlock* block_ = nullptr;  // the handle's
};

}  // namespace

std::unique_ptr<Fetcher> MakeBlockFetcher(Statement::Impl& statement, const RowLayout& layout) {
    return std::make_unique<BlockFetcher>(statement, layout);
}

}  // namespace tk::ado
