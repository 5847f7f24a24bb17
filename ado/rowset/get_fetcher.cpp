// One row at a time, every cell by SQLGetData from left to right: what any driver can do.
#include <charconv>

#include <algorithm>

#include "ado/rowset/cell_reader.h"
#include "ado/rowset/date_value.h"
#include "ado/rowset/fetcher.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

class GetFetcher final : public Fetcher {
public:
    GetFetcher(Statement::Impl& statement, const RowLayout& layout) : statement_(statement), builder_(layout) {
        StatementHandle& handle = *statement_.handle;
        handle.SetRowArraySize(1);
        handle.Unbind();
    }

    std::size_t FirstRows() const noexcept override { return 16; }
    std::size_t FullRows() const noexcept override { return 256; }

    std::unique_ptr<Chunk> FetchChunk(std::size_t firstRow, std::size_t rows) override {
        constexpr std::size_t kEnoughBytes = 4 * 1024 * 1024;
        std::size_t done = 0;
        const StatementHandle::RowCalls calls(*statement_.handle);
        try {
            for (; done < rows && builder_.ArenaBytes() < kEnoughBytes; ++done) {
                statement_.ExpectNotEnded();
                const SQLRETURN result = Odbc().Fetch(statement_.handle->Get());
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
    void AddRow() {
        std::string value;
        int number = 0;
        for (const Column& column : statement_.shape->columns) {
            if (!ReadCell(++number, column, value)) {
                builder_.AddNull();
                continue;
            }
            if (column.kind == CellKind::Guid) NormalizeGuid(value);
            builder_.AddBytes(value.data(), value.size());
        }
    }

    bool ReadCell(int number, const Column& column, std::string& value) {
        if (column.kind == CellKind::Date || column.kind == CellKind::Timestamp) {
            return ReadMoment(number, column, value);
        }
        return ReadWholeCell(statement_, number, column.kind == CellKind::Bytes ? SQL_C_BINARY : SQL_C_CHAR, value);
    }

    /// As fields, not as text: a driver's text follows the taste of its platform.
    bool ReadMoment(int number, const Column& column, std::string& value) {
        SQL_TIMESTAMP_STRUCT fields = {};
        SQLLEN indicator = 0;
        const SQLRETURN result = Odbc().GetData(statement_.handle->Get(), static_cast<SQLUSMALLINT>(number),
                                                SQL_C_TYPE_TIMESTAMP, &fields, sizeof fields, &indicator);
        if (!SQL_SUCCEEDED(result)) statement_.Fail(result);
        if (indicator == SQL_NULL_DATA) return false;
        const CalendarTime time = {fields.year,
                                   fields.month,
                                   fields.day,
                                   fields.hour,
                                   fields.minute,
                                   fields.second,
                                   static_cast<int>(fields.fraction)};
        value = FormatCalendarTime(time, column.kind == CellKind::Date ? CalendarForm::Date : CalendarForm::DateTime);
        return true;
    }

    Statement::Impl& statement_;
    ChunkBuilder builder_;
};

}  // namespace

std::unique_ptr<Fetcher> MakeGetFetcher(Statement::Impl& statement, const RowLayout& layout) {
    return std::make_unique<GetFetcher>(statement, layout);
}

bool KeepsAllAsText(const DriverProfile& profile, std::span<const Column> columns) noexcept {
    switch (profile.fetchMode) {
        case FetchMode::NativeBlocks:
            return false;
        case FetchMode::BoundThenGet:
            return std::ranges::any_of(columns, [](const Column& each) { return (each.attributes & kFieldLong) != 0; });
        case FetchMode::TextRows:
        case FetchMode::GetOnly:
            return true;
    }
    return true;
}

std::unique_ptr<Fetcher> MakeFetcher(Statement::Impl& statement, const RowLayout& layout) {
    const DriverProfile& profile = statement.handle->Profile();
    if (profile.fetchMode == FetchMode::TextRows) return MakeTextFetcher(statement, layout);
    if (KeepsAllAsText(profile, statement.shape->columns)) return MakeGetFetcher(statement, layout);
    return MakeBlockFetcher(statement, layout);
}

}  // namespace tk::ado
