// ado/schema/catalog_rows.h - what a catalog function answered, kept whole: rows of values by ODBC's column numbers.
#pragma once

#include <array>
#include <bitset>
#include <deque>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ado/odbc/session.h"
#include "ado/rowset/row_set.h"
#include "ado/schema/schema_value.h"

namespace tk::ado {

struct SqlTypeRule;

/// Columns of catalog functions, and what is found out beside them, have smaller numbers.
inline constexpr std::size_t kMostCatalogColumns = 32;

/// An answer as it was fetched, and texts that were made of it.
struct CatalogAnswer {
    std::shared_ptr<RowSet> rows;
    std::deque<std::string> made;  // never move

    /// Which column of the answer holds that of the catalog function, from 1; 0: none.
    std::array<unsigned char, kMostCatalogColumns> places = {};
};

/// One row of the answer, read in place.
class CatalogRow {
public:
    CatalogRow(std::shared_ptr<CatalogAnswer> answer, std::size_t row) : answer_(std::move(answer)), row_(row) {}

    /// @param column  from 1, as the catalog functions are described; a column that the driver does not have is NULL
    /// @return UTF-8, valid as long as a row of the same answer
    std::optional<std::string_view> Text(std::size_t column) const;
    std::optional<long long> Number(std::size_t column) const;

    /// What is found out beside the answer, in a column behind it or instead of one.
    void Set(std::size_t column, SchemaValue value);
    void SetMadeText(std::size_t column, std::string text);

    /// Kept for whoever asks for it again and again; null: nobody has.
    mutable const SqlTypeRule* typeRule = nullptr;

private:
    struct Found {
        std::size_t column;
        SchemaValue value;
    };
    const SchemaValue* FindFound(std::size_t column) const noexcept;

    std::shared_ptr<CatalogAnswer> answer_;
    std::size_t row_;
    std::bitset<kMostCatalogColumns> isFound_;
    std::vector<Found> found_;
};

using CatalogRows = std::vector<CatalogRow>;

/// The texts of a row in some columns, for telling rows apart.
std::string TextsOf(const CatalogRow& row, std::span<const std::size_t> columns);

/// @param columns  the numbers by which the columns of the answer are known; empty: as the function has them
CatalogRows CallCatalog(const std::shared_ptr<Session>& session, const CatalogCall& call,
                        std::span<const std::size_t> columns = {});

/// The table that a call is about: the members that name it and its schema, and where the schema stands in the answer.
struct CalledTable {
    std::string CatalogCall::*catalog = &CatalogCall::catalog;
    std::string CatalogCall::*schema = &CatalogCall::schema;
    std::string CatalogCall::*table = &CatalogCall::table;
    std::size_t answeredSchema = 2;
};
inline constexpr CalledTable kForeignTable = {&CatalogCall::foreignCatalog, &CatalogCall::foreignSchema,
                                              &CatalogCall::foreignTable, 6};

/// CallCatalog about a table whose schema need not be named. Some drivers look for it only among the user's own tables:
/// when that gives nothing, every schema that has such a table is asked.
CatalogRows CallForTable(const std::shared_ptr<Session>& session, CatalogCall call, const CalledTable& called = {});

/// The rows of a SELECT.
/// @param columns  the column of a catalog function that each of its columns stands for
CatalogRows SelectRows(const std::shared_ptr<Session>& session, const std::string& sql,
                       std::initializer_list<std::size_t> columns);

/// The same with texts for its parameters.
CatalogRows SelectRows(const std::shared_ptr<Session>& session, const std::string& sql,
                       std::span<const std::size_t> columns, std::initializer_list<std::string_view> parameters);

}  // namespace tk::ado
