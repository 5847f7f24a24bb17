// ado/schema/catalog_rows.h - what a catalog function answered, kept whole: rows of values by ODBC's column numbers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ado/cursor/value.h"
#include "ado/odbc/session.h"
#include "ado/rowset/row_set.h"

namespace tk::ado {

/// One row of the answer.
class CatalogRow {
public:
    explicit CatalogRow(std::vector<Value> cells) : cells_(std::move(cells)) {}

    /// @param column  from 1, as the catalog functions are described; a column that the driver does not have is NULL
    std::optional<std::u16string> Text(std::size_t column) const;
    std::optional<long long> Number(std::size_t column) const;

    /// What is found out beside the answer, in a column behind it.
    void Set(std::size_t column, Value value);

private:
    std::vector<Value> cells_;
};

using CatalogRows = std::vector<CatalogRow>;

CatalogRows ReadRows(const std::shared_ptr<RowSet>& answer);
CatalogRows CallCatalog(const std::shared_ptr<Session>& session, const CatalogCall& call);

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

/// The rows of a SELECT whose columns stand where a catalog function would put them.
CatalogRows SelectRows(const std::shared_ptr<Session>& session, std::string_view sql);

}  // namespace tk::ado
