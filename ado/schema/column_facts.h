// column_facts.h - what a row of SQLColumns tells of a column, as schema rowsets have it.
#pragma once

#include "ado/rowset/type_map.h"
#include "ado/schema/schema_table.h"

namespace tk::ado::column_facts {

/// What stands where in the answer.
enum Column : std::size_t {
    kCatalog = 1,
    kSchema = 2,
    kTable = 3,
    kColumnName = 4,
    kDataType = 5,
    kTypeName = 6,
    kSize = 7,
    kDigits = 9,
    kNullable = 11,
    kRemarks = 12,
    kDefault = 13,
    kOctets = 16,
    kOrdinal = 17,
    kIsNullable = 18,
};

const SqlTypeRule& RuleOf(const CatalogRow& row);

SchemaValue HasDefault(const CatalogRow& row);
SchemaValue Default(const CatalogRow& row);
SchemaValue Nullable(const CatalogRow& row);
SchemaValue DbType(const CatalogRow& row);
SchemaValue Flags(const CatalogRow& row);
SchemaValue CharacterLength(const CatalogRow& row);
SchemaValue OctetLength(const CatalogRow& row);
SchemaValue NumericPrecision(const CatalogRow& row);
SchemaValue NumericScale(const CatalogRow& row);
SchemaValue DateTimePrecision(const CatalogRow& row);

}  // namespace tk::ado::column_facts
