// Catalogs, schemata, tables and views.
#include <set>

#include "ado/schema/file_catalog.h"
#include "ado/schema/schema_table.h"

namespace tk::ado {
namespace {

using Type = SchemaType;

/// Keeps the first row of each name. A driver that cannot ask for names alone lists what bears them, again and again.
void KeepNames(CatalogRows& rows, std::size_t column) {
    std::set<std::string> seen;
    std::erase_if(rows, [&](const CatalogRow& row) {
        const std::string name(row.Text(column).value_or(""));
        return name.empty() || !seen.insert(name).second;
    });
}

// --- catalogs ---

constexpr SchemaColumn kCatalogColumns[] = {{u"CATALOG_NAME", Type::Text, 1}, {u"DESCRIPTION", Type::Text}};
constexpr unsigned char kCatalogRestrictions[] = {0};

CatalogRows ReadCatalogs(const std::shared_ptr<Session>& session, const Restrictions&) {
    if (AsksFiles(*session)) ExpectReadableFile(session);
    CatalogCall call;
    call.function = CatalogCall::Function::Catalogs;
    CatalogRows rows = CallCatalog(session, call);
    KeepNames(rows, 1);
    return rows;
}

// --- schemata ---

constexpr SchemaColumn kSchemaColumns[] = {
    {u"CATALOG_NAME", Type::Text, 1},   {u"SCHEMA_NAME", Type::Text, 2},   {u"SCHEMA_OWNER"},
    {u"DEFAULT_CHARACTER_SET_CATALOG"}, {u"DEFAULT_CHARACTER_SET_SCHEMA"}, {u"DEFAULT_CHARACTER_SET_NAME"},
};
constexpr unsigned char kSchemaRestrictions[] = {0, 1, 2};

CatalogRows ReadSchemata(const std::shared_ptr<Session>& session, const Restrictions&) {
    if (AsksFiles(*session)) ExpectReadableFile(session);
    CatalogCall call;
    call.function = CatalogCall::Function::Schemas;
    CatalogRows rows = CallCatalog(session, call);
    KeepNames(rows, 2);
    return rows;
}

// --- tables ---

constexpr SchemaColumn kTableColumns[] = {
    {u"TABLE_CATALOG", Type::Text, 1},     {u"TABLE_SCHEMA", Type::Text, 2}, {u"TABLE_NAME", Type::Text, 3},
    {u"TABLE_TYPE", Type::Text, 4},        {u"TABLE_GUID", Type::Guid},      {u"DESCRIPTION", Type::Text, 5},
    {u"TABLE_PROPID", Type::UnsignedLong}, {u"DATE_CREATED", Type::Date},    {u"DATE_MODIFIED", Type::Date},
};
constexpr unsigned char kTableRestrictions[] = {0, 1, 2, 3};
constexpr unsigned char kTableOrder[] = {3, 0, 1, 2};

CatalogRows ReadTables(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    if (AsksFiles(*session)) return FileTables(session, restrictions.Text(2));
    CatalogCall call;
    call.function = CatalogCall::Function::Tables;
    // Without a catalog some servers list those of everybody; names are patterns to the driver and meet themselves.
    call.catalog = restrictions.Text(0);
    if (call.catalog.empty()) call.catalog = session->CurrentCatalog();
    call.schema = restrictions.Text(1);
    call.table = restrictions.Text(2);
    return CallForTable(session, call);
}

// --- views ---

// What a view is made of no catalog function tells.
constexpr SchemaColumn kViewColumns[] = {
    {u"TABLE_CATALOG", Type::Text, 1}, {u"TABLE_SCHEMA", Type::Text, 2},
    {u"TABLE_NAME", Type::Text, 3},    {u"VIEW_DEFINITION"},
    {u"CHECK_OPTION", Type::Flag},     {u"IS_UPDATABLE", Type::Flag},
    {u"DESCRIPTION", Type::Text, 5},   {u"DATE_CREATED", Type::Date},
    {u"DATE_MODIFIED", Type::Date},
};
constexpr unsigned char kViewRestrictions[] = {0, 1, 2};

CatalogRows ReadViews(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    constexpr std::size_t kType = 4;
    CatalogRows rows = ReadTables(session, restrictions);
    std::erase_if(rows, [](const CatalogRow& row) { return row.Text(kType) != "VIEW"; });
    return rows;
}

enum : LONG { kCatalogs = 1, kSchemata = 17, kTables = 20, kViews = 23 };

constexpr SchemaTable kTablesOfSchemas[] = {
    {kCatalogs, kCatalogColumns, kCatalogRestrictions, kCatalogRestrictions, &ReadCatalogs},
    {kSchemata, kSchemaColumns, kSchemaRestrictions, kSchemaRestrictions, &ReadSchemata},
    {kTables, kTableColumns, kTableRestrictions, kTableOrder, &ReadTables},
    {kViews, kViewColumns, kViewRestrictions, kViewRestrictions, &ReadViews},
};

}  // namespace

std::span<const SchemaTable> ObjectSchemas() {
    return kTablesOfSchemas;
}

}  // namespace tk::ado
