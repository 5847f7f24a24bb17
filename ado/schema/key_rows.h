// key_rows.h - the keys of a table, as the catalog functions answer them.
#pragma once

#include <string>

#include "ado/schema/catalog_rows.h"

namespace tk::ado {

/// @param table  with the key; UTF-8, as catalog and schema, which may be empty
CatalogRows PrimaryKeyRows(const std::shared_ptr<Session>& session, const std::string& catalog,
                           const std::string& schema, const std::string& table);

/// A table that keys stand in or refer to; without a name: any.
struct KeyedTable {
    std::string catalog;
    std::string schema;
    std::string name;
};

/// @param referred, referring  at least one of them has a name
CatalogRows ForeignKeyRows(const std::shared_ptr<Session>& session, const KeyedTable& referred,
                           const KeyedTable& referring);

/// Whether the driver tells keys at all.
bool TellsKeys(const Session& session);

}  // namespace tk::ado
