// ado/rowset/fetcher.h - rows from a driver into chunks; one kind of fetcher for each way of fetching a driver likes.
#pragma once

#include <memory>
#include <span>

#include "ado/odbc/statement_impl.h"
#include "ado/rowset/chunk.h"

namespace tk::ado {

class Fetcher {
public:
    virtual ~Fetcher() = default;

    /// Up to `rows` further rows as a chunk; null after the last one. Fewer rows do not mean the end.
    /// @throws AdoError with the driver's diagnostics
    virtual std::unique_ptr<Chunk> FetchChunk(std::size_t firstRow, std::size_t rows) = 0;

    /// How many rows it likes to be asked for, first and later.
    virtual std::size_t FirstRows() const noexcept = 0;
    virtual std::size_t FullRows() const noexcept = 0;

    /// True when the last call has seen the end of the result.
    bool AtEnd() const noexcept { return atEnd_; }

    /// Another result with the same columns has taken the place of the one that is at its end.
    void GoOn() noexcept { atEnd_ = false; }

protected:
    bool atEnd_ = false;
};

/// Every value as text, or as bytes, as the driver gives it.
std::unique_ptr<Fetcher> MakeTextFetcher(Statement::Impl& statement, const RowLayout& layout);

/// C types in column-wise blocks.
std::unique_ptr<Fetcher> MakeBlockFetcher(Statement::Impl& statement, const RowLayout& layout);

/// One row at a time, every cell by SQLGetData.
std::unique_ptr<Fetcher> MakeGetFetcher(Statement::Impl& statement, const RowLayout& layout);

/// The layout's choice for the driver: text for all columns, or fixed-width values where the type has them.
bool KeepsAllAsText(const DriverProfile& profile, std::span<const Column> columns) noexcept;

/// The fetcher that the statement's driver likes.
std::unique_ptr<Fetcher> MakeFetcher(Statement::Impl& statement, const RowLayout& layout);

}  // namespace tk::ado
