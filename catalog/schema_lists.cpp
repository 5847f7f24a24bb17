// Columns, provider types, catalogs and schemata.
#include "catalog/field_description.h"
#include "catalog/messages.h"
#include "driver/guard.h"
#include "driver/invoke.h"
#include "tkkernel/util.h"

using namespace tk::catalog;
using tk::driver::Guard;
using tk::driver::Take;

int CTDatabase::GetAllFields(const char* szTable, CStringArray& ar) {
    const int before = ar.GetSize();
    return ListColumn(GetFieldSet(szTable, nullptr), "COLUMN_NAME", ar) ? ar.GetSize() - before : 0;
}

int CTDatabase::IsFieldNull(const char* szTable, const char* /*szField*/) {
    return Guard::Run(*this, kListObjectsFailed, 0, [&] {
        CTRecordset columns;
        if (!ShowRowset(columns, GetFieldSet(szTable, nullptr)) || columns.GetEof()) return 0;
        // Contract: the table's first column answers for every field, and 1 says that it takes no nulls.
        return Take(BooleanPart, columns.GetValue("IS_NULLABLE")) == VARIANT_FALSE ? 1 : 0;
    });
}

int CTDatabase::GetTypeNames(CStringArray& ar) {
    return ListColumn(GetTypeSet(), "TYPE_NAME", ar);
}

int CTDatabase::GetAllDatabases(CStringArray& ar) {
    ar.RemoveAll();
    return ListColumn(GetDbNameSet(), "CATALOG_NAME", ar);
}

int CTDatabase::GetSchemas(CStringArray& ar) {
    return ListDistinct(GetSchemaSet(), "SCHEMA_NAME", ar);
}

int CTDatabase::GetAllSchemas(CStringArray& ar) {
    if (!GetSchemas(ar)) return 0;
    // Contract: once more when a schema has the user's name.
    ar.Add(GetUser());
    return 1;
}
