// ado/schema/file_catalog.h - the catalog of a database in a file, asked from its own tables: rows as ODBC's catalog
// functions would give them, which the driver gets wrong in sizes, defaults, keys and the order of indexes.
#pragma once

#include <string>

#include "ado/schema/catalog_rows.h"

namespace tk::ado {

/// Whether the session's database is one to ask like this.
bool AsksFiles(const Session& session);

/// The driver answers for a file that is locked, or is no database, as for an empty one.
/// @throws AdoError that says what is wrong with the file
void ExpectReadableFile(const std::shared_ptr<Session>& session);

/// @param table  UTF-8; empty: all tables and views
CatalogRows FileTables(const std::shared_ptr<Session>& session, const std::string& table);
CatalogRows FileColumns(const std::shared_ptr<Session>& session, const std::string& table);

CatalogRows FilePrimaryKeys(const std::shared_ptr<Session>& session, const std::string& table);

/// @param table  the table that refers to others; empty: all tables
CatalogRows FileForeignKeys(const std::shared_ptr<Session>& session, const std::string& table);

CatalogRows FileIndexes(const std::shared_ptr<Session>& session, const std::string& table);

}  // namespace tk::ado
