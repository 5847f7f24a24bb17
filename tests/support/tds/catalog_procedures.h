// tests/support/tds/catalog_procedures.h - the procedures that tell what the database has: sp_tables, sp_columns, …
#pragma once

#include <span>
#include <string_view>

#include "support/tds/sql_session.h"

namespace tk::test::tds {

/// A procedure that is one SELECT of its arguments.
struct CatalogProcedure {
    std::string_view name;
    std::span<const char* const> parameters;  // in the order in which they may come without names
    std::span<const FixedColumn> columns;
    const char* sql;
};

/// @return null when there is none of the name
const CatalogProcedure* FindCatalogProcedure(std::string_view name);

}  // namespace tk::test::tds
