// ado/schema/sparse_columns.h - the columns of a Jet file, whose driver tells names and its own words for types.
#pragma once

#include "ado/schema/catalog_rows.h"

namespace tk::ado {

/// Adds types, sizes and digits to an answer of SQLColumns; every column may be NULL, as the driver never says.
void CompleteColumns(const std::shared_ptr<Session>& session, CatalogRows& columns);

}  // namespace tk::ado
