// Every value as text, one row at a time, into buffers that stay bound to the handle. A cell longer than its buffer is
// fetched whole by SQLGetData, and its column gets a larger buffer for the rows after it.
#include <algorithm>

#include "ado/rowset/cell_reader.h"
#include "ado/rowset/fetcher.h"

namespace tk::ado {
namespace {

constexpr std::size_t kSmallestCell = 32;  // any number or date
constexpr std::size_t kUsualCell = 256;    // texts
constexpr std::size_t kLargestCell = 64 * 1024;

/// One column of the row that the driver fills.
struct BoundColumn {
    std::unique_ptr<char[]> buffer;
    std::size_t size = 0;
    SQLLEN indicator = 0;
    SQLSMALLINT cType = SQL_C_CHAR;
};

struct BoundRow final : BoundState {
    std::vector<BoundColumn> columns;  // never resized while bound
};

std::size_t BufferSize(const Column& column) {
    if (column.kind != CellKind::Text && column.kind != CellKind::Bytes) return kSmallestCell;
    const auto described = static_cast<std::size_t>(column.definedSize);
    return std::clamp(described * 4 + 1, kSmallestCell, kUsualCell);
}

class TextFetcher final : public Fetcher {
public:
    TextFetcher(Statement::Impl& statement, const RowLayout& layout)
        : statement_(statement), builder_(layout), row_(Bind()) {}

    std::size_t FirstRows() const noexcept override { return 16; }
    std::size_t FullRows() const noexcept override { return 1024; }

    std::unique_ptr<Chunk> FetchChunk(std::size_t firstRow, std::size_t rows) override {
        constexpr std::size_t kEnoughBytes = 4 * 1024 * 1024;
        std::size_t done = 0;
        const StatementHandle::RowCalls calls(*statement_.handle);
        SQLHSTMT handle = statement_.handle->Get();
        const auto fetch = Odbc().Fetch;
        try {
            for (; done < rows && builder_.ArenaBytes() < kEnoughBytes; ++done) {
                statement_.ExpectNotEnded();
                const SQLRETURN result = fetch(handle);
                if (result == SQL_NO_DATA) {
                    atEnd_ = true;
                    break;
                }
                if (!SQL_SUCCEEDED(result)) statement_.Fail(result);
                AddRow();
            }
        } catch (...) {
            builder_.Discard();
            throw;
        }
        if (done == 0) return nullptr;
        return builder_.Seal(firstRow, done, {});
    }

private:
    /// The buffers of the handle's former statement are taken over when they fit.
    BoundRow& Bind() {
        StatementHandle& handle = *statement_.handle;
        handle.SetRowArraySize(1);
        const auto& columns = statement_.shape->columns;
        auto* row = dynamic_cast<BoundRow*>(handle.bound.get());
        if (row == nullptr || row->columns.size() != columns.size()) {
            handle.Unbind();
            auto fresh = std::make_unique<BoundRow>();
            fresh->columns.resize(columns.size());
            row = fresh.get();
            handle.bound = std::move(fresh);
        }
        for (std::size_t i = 0; i < columns.size(); ++i) {
            BoundColumn& bound = row->columns[i];
            const SQLSMALLINT cType = columns[i].kind == CellKind::Bytes ? SQL_C_BINARY : SQL_C_CHAR;
            const std::size_t size = BufferSize(columns[i]);
            if (bound.size >= size && bound.cType == cType) continue;
            bound.cType = cType;
            BindColumn(static_cast<int>(i) + 1, bound, std::max(size, bound.size));
        }
        return *row;
    }

    void BindColumn(int number, BoundColumn& bound, std::size_t size) {
        StatementHandle& handle = *statement_.handle;
        auto buffer = std::make_unique_for_overwrite<char[]>(size);
        const SQLRETURN result = Odbc().BindCol(handle.Get(), static_cast<SQLUSMALLINT>(number), bound.cType,
                                                buffer.get(), static_cast<SQLLEN>(size), &bound.indicator);
        if (!SQL_SUCCEEDED(result)) {
            const auto records = ReadDiagnostics(SQL_HANDLE_STMT, handle.Get());
            handle.Unbind();
            throw MakeError(records);
        }
        bound.buffer = std::move(buffer);
        bound.size = size;
    }

    void AddRow() {
        int number = 0;
        for (BoundColumn& column : row_.columns) {
            ++number;
            const SQLLEN length = column.indicator;
            const std::size_t room = column.size - (column.cType == SQL_C_CHAR ? 1 : 0);
            if (length >= 0 && static_cast<std::size_t>(length) <= room) [[likely]] {
                if (IsGuid(number)) {
                    AddGuid(std::string(column.buffer.get(), static_cast<std::size_t>(length)));
                } else {
                    builder_.AddBytes(column.buffer.get(), static_cast<std::size_t>(length));
                }
            } else if (length == SQL_NULL_DATA) {
                builder_.AddNull();
            } else {
                AddLong(number, column);
            }
        }
    }

    bool IsGuid(int number) const noexcept {
        return statement_.shape->columns[static_cast<std::size_t>(number) - 1].kind == CellKind::Guid;
    }

    void AddGuid(std::string text) {
        NormalizeGuid(text);
        builder_.AddBytes(text.data(), text.size());
    }

    void AddLong(int number, BoundColumn& column) {
        std::string value;
        if (!ReadWholeCell(statement_, number, column.cType, value)) return builder_.AddNull();
        const std::size_t needed = value.size() + 1;
        builder_.AddBytes(value.data(), value.size());
        if (needed <= column.size || needed > kLargestCell) return;
        BindColumn(number, column, std::min(needed * 2, kLargestCell));
    }

    Statement::Impl& statement_;
    ChunkBuilder builder_;
    BoundRow& row_;
};

}  // namespace

std::unique_ptr<Fetcher> MakeTextFetcher(Statement::Impl& statement, const RowLayout& layout) {
    return std::make_unique<TextFetcher>(statement, layout);
}

}  // namespace tk::ado
