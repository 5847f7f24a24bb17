// schema_restrictions.h - the schema rowsets that the library asks for, and the arrays that restrict them.
//
//   database.OpenSchema(kColumns.id, RestrictionArray(kColumns, {{1, schema}, {2, table}}));
#pragma once

#include <afxdisp.h>

#include <initializer_list>

namespace tk::catalog {

/// A schema of ADO's SchemaEnum, and how many restrictions it is sent.
struct Schema {
    long id;
    DWORD restrictions = 0;
};

inline constexpr Schema kCatalogs = {1};
inline constexpr Schema kColumns = {4, 3};  // of a column's four the name is never restricted
inline constexpr Schema kIndexes = {12, 5};
inline constexpr Schema kProcedures = {16, 2};
inline constexpr Schema kNamedProcedure = {16, 3};
inline constexpr Schema kSchemata = {17};
inline constexpr Schema kTables = {20, 4};
inline constexpr Schema kProviderTypes = {22};
inline constexpr Schema kForeignKeys = {27, 6};
inline constexpr Schema kPrimaryKeys = {28, 3};

struct Restriction {
    long position;     // from 0
    const char* text;  // null: not restricted; "" is a restriction
};

/// One VARIANT for each restriction of the schema, VT_EMPTY where nothing is asked for.
COleSafeArray RestrictionArray(const Schema& schema, std::initializer_list<Restriction> restrictions);

}  // namespace tk::catalog
