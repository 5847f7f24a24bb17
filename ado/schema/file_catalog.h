// ado/schema/file_catalog.h - the catalog of a database in a file, asked from its own tables: rows as ODBC's catalog
// functions would give them, which the driver gets wrong in sizes, defaults, keys and the order of indexes.
#pragma once

#include <string>

#include "ado/schema/catalog_rows.h"

namespace tk::ado {

/// @param table  UTF-8; empty: all tables and views
CatalogRows FileColumns(const std::shared_ptr<Session>& session, const std::string& table);

CatalogRows FilePrimaryKeys(const std::shared_ptr<Session>& session, const std::string& table);

/// @param table  the table that refers to others; empty: all tables
CatalogRows FileForeignKeys(const std::shared_ptr<Session>& session, const std::string& table);

CatalogRows FileIndexes(const std::shared_ptr<Session>& session, const std::string& table);

}  // namespace tk::ado
