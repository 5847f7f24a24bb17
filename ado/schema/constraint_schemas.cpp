// Constraints of tables, and rights to their columns. Both need the table restriction: without it the answer is empty.
#include <algorithm>
#include <set>
#include <string>

#include "ado/cursor/text.h"
#include "ado/error.h"
#include "ado/odbc/ascii.h"
#include "ado/schema/file_catalog.h"
#include "ado/schema/key_rows.h"
#include "ado/schema/schema_table.h"

namespace tk::ado {
namespace {

using Type = SchemaType;

// --- constraints ---

// Of a key's rows the first: its columns, numbered as SQLPrimaryKeys does, and what is found out here.
enum ConstraintColumn : std::size_t {
    kCatalog = 1,
    kSchema = 2,
    kTable = 3,
    kName = 6,
    kKind = 30,
    kDeferrability = 31,
};

// By ODBC's numbers.
constexpr long long kInitiallyDeferred = 5;
constexpr long long kInitiallyImmediate = 6;

SchemaValue Deferrable(const CatalogRow& row) {
    const long long how = row.Number(kDeferrability).value_or(0);
    return SchemaValue::Flag(how == kInitiallyDeferred || how == kInitiallyImmediate);
}
SchemaValue InitiallyDeferred(const CatalogRow& row) {
    return SchemaValue::Flag(row.Number(kDeferrability) == kInitiallyDeferred);
}

constexpr SchemaColumn kConstraintColumns[] = {
    {u"CONSTRAINT_CATALOG", Type::Text, kCatalog},
    {u"CONSTRAINT_SCHEMA", Type::Text, kSchema},
    {u"CONSTRAINT_NAME", Type::Text, kName},
    {u"TABLE_CATALOG", Type::Text, kCatalog},
    {u"TABLE_SCHEMA", Type::Text, kSchema},
    {u"TABLE_NAME", Type::Text, kTable},
    {u"CONSTRAINT_TYPE", Type::Text, kKind},
    {u"IS_DEFERRABLE", Type::Flag, 0, &Deferrable},
    {u"INITIALLY_DEFERRED", Type::Flag, 0, &InitiallyDeferred},
    {u"DESCRIPTION"},
};
constexpr unsigned char kConstraintRestrictions[] = {0, 1, 2, 3, 4, 5, 6};
constexpr unsigned char kConstraintOrder[] = {0, 1, 2, 3, 4, 5};

/// Keeps one row of each key: of a schema, a table, a name.
void KeepFirst(CatalogRows& rows) {
    constexpr std::size_t kWhatTells[] = {kCatalog, kSchema, kTable, kName};
    std::set<std::string> seen;
    std::erase_if(rows, [&](const CatalogRow& row) { return !seen.insert(TextsOf(row, kWhatTells)).second; });
}

/// The keys. Of unique constraints the catalog functions tell the indexes alone.
CatalogRows ReadConstraints(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    const KeyedTable table = {restrictions.Text(3), restrictions.Text(4), restrictions.Text(5)};
    if (table.name.empty() || !TellsKeys(*session)) return {};
    CatalogRows constraints = PrimaryKeyRows(session, table.catalog, table.schema, table.name);
    for (CatalogRow& row : constraints)
        row.Set(kKind, SchemaValue::Text("PRIMARY KEY"));
    // What stands where in the answer of SQLForeignKeys.
    constexpr std::size_t kForeignCatalog = 5, kForeignSchema = 6, kForeignTable = 7, kForeignName = 12,
                          kForeignHow = 14;
    for (CatalogRow& row : ForeignKeyRows(session, {}, table)) {
        row.Set(kDeferrability, SchemaValue::Of(row.Number(kForeignHow)));
        row.Set(kCatalog, SchemaValue::Of(row.Text(kForeignCatalog)));
        row.Set(kSchema, SchemaValue::Of(row.Text(kForeignSchema)));
        row.Set(kTable, SchemaValue::Of(row.Text(kForeignTable)));
        row.Set(kName, SchemaValue::Of(row.Text(kForeignName)));
        row.Set(kKind, SchemaValue::Text("FOREIGN KEY"));
        constraints.push_back(std::move(row));
    }
    KeepFirst(constraints);
    return constraints;
}

// --- rights ---

SchemaValue Grantable(const CatalogRow& row) {
    constexpr std::size_t kIsGrantable = 8;
    const auto word = row.Text(kIsGrantable);
    return word ? SchemaValue::Flag(EqualsNoCase(*word, "YES")) : SchemaValue();
}

constexpr SchemaColumn kRightColumns[] = {
    {u"GRANTOR", Type::Text, 5},        {u"GRANTEE", Type::Text, 6},
    {u"TABLE_CATALOG", Type::Text, 1},  {u"TABLE_SCHEMA", Type::Text, 2},
    {u"TABLE_NAME", Type::Text, 3},     {u"COLUMN_NAME", Type::Text, 4},
    {u"COLUMN_GUID", Type::Guid},       {u"COLUMN_PROPID", Type::UnsignedLong},
    {u"PRIVILEGE_TYPE", Type::Text, 7}, {u"IS_GRANTABLE", Type::Flag, 0, &Grantable},
};
constexpr unsigned char kRightRestrictions[] = {2, 3, 4, 5, 0, 1};
constexpr unsigned char kRightOrder[] = {2, 3, 4, 5, 8};

enum : LONG { kTableConstraints = 10, kColumnPrivileges = 13 };

CatalogRows ReadRights(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    const auto isUnknownCall = [](const ErrorRecord& record) { return record.sqlState == "IM001"; };
    CatalogCall call;
    call.function = CatalogCall::Function::ColumnPrivileges;
    call.catalog = restrictions.Text(0).empty() ? session->CurrentCatalog() : restrictions.Text(0);
    call.schema = restrictions.Text(1);
    call.table = restrictions.Text(2);
    if (call.table.empty()) return {};
    try {
        return CallForTable(session, call);
    } catch (const AdoError& error) {
        if (std::ranges::none_of(error.Records(), isUnknownCall)) throw;
    }
    throw AdoError(ErrorNumber::FeatureNotAvailable, NumberText(kColumnPrivileges));
}

constexpr SchemaTable kTablesOfSchemas[] = {
    {kTableConstraints, kConstraintColumns, kConstraintRestrictions, kConstraintOrder, &ReadConstraints},
    {kColumnPrivileges, kRightColumns, kRightRestrictions, kRightOrder, &ReadRights},
};

}  // namespace

std::span<const SchemaTable> ConstraintSchemas() {
    return kTablesOfSchemas;
}

}  // namespace tk::ado
