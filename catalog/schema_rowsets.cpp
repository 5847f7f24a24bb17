// The members that open one schema rowset and hand it out.
#include "catalog/schema_restrictions.h"
#include "driver/guard.h"
#include "driver/messages.h"

using namespace tk::catalog;
using tk::driver::Guard;

namespace {

constexpr long kStateOpen = 1;

IDispatch* Restricted(CTDatabase& database, const Schema& schema, std::initializer_list<Restriction> restrictions) {
    return Guard::Run(database, tk::driver::kOpenSchemaFailed, static_cast<IDispatch*>(nullptr), [&]() -> IDispatch* {
        if (database.GetState() != kStateOpen) return nullptr;
        return database.OpenSchema(schema.id, RestrictionArray(schema, restrictions));
    });
}

IDispatch* Whole(CTDatabase& database, const Schema& schema) {
    return Guard::Run(
        database, tk::driver::kOpenSchemaFailedShort, static_cast<IDispatch*>(nullptr),
        [&]() -> IDispatch* { return database.GetState() == kStateOpen ? database.OpenSchema(schema.id) : nullptr; });
}

}  // namespace

IDispatch* CTDatabase::GetObjectSet(const char* szType, const char* szSchema) {
    return Restricted(*this, kTables, {{1, szSchema}, {3, szType}});
}

IDispatch* CTDatabase::GetPrimaryKeySet(const char* szTable, const char* szSchema) {
    return Restricted(*this, kPrimaryKeys, {{1, szSchema}, {2, szTable}});
}

IDispatch* CTDatabase::GetForeignKeySet(const char* szTable) {
    return Restricted(*this, kForeignKeys, {{5, szTable}});
}

IDispatch* CTDatabase::GetProcedureSet(const char* szSchema) {
    return Restricted(*this, kProcedures, {{1, szSchema}});
}

IDispatch* CTDatabase::GetFieldSet(const char* szTable, const char* szSchema) {
    return Restricted(*this, kColumns, {{1, szSchema}, {2, szTable}});
}

IDispatch* CTDatabase::GetIndexSet(const char* szTable, const char* szIndex, const char* szSchema) {
    return Restricted(*this, kIndexes, {{1, szSchema}, {2, szIndex}, {4, szTable}});
}

IDispatch* CTDatabase::GetTypeSet() {
    return Whole(*this, kProviderTypes);
}

IDispatch* CTDatabase::GetDbNameSet() {
    return Whole(*this, kCatalogs);
}

IDispatch* CTDatabase::GetSchemaSet() {
    return Whole(*this, kSchemata);
}
