// ado/schema/schema_rowset.h - the catalog of a database as rowsets of fixed columns, restricted and sorted.
#pragma once

#include <memory>
#include <vector>

#include "ado/cursor/value.h"
#include "ado/odbc/session.h"
#include "ado/rowset/row_set.h"

namespace tk::ado {

/// The restrictions of OpenSchema: an array of VARIANT, or nothing.
/// @throws AdoError 3001 for anything else
std::vector<Value> ReadRestrictions(const Value& given);

/// @param restrictions  one for each restriction column of the schema, fewer are enough; empty ones do not restrict
/// @throws AdoError 3251 for a schema that is not offered, 3001 for too many restrictions, or the driver's
std::shared_ptr<RowSet> OpenSchemaRowset(const std::shared_ptr<Session>& session, LONG schema,
                                         const std::vector<Value>& restrictions);

}  // namespace tk::ado
