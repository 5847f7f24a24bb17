// Catalogs, schemata, tables and procedures.
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

// --- procedures ---

SchemaValue ProcedureType(const CatalogRow& row) {
    const auto type = row.Number(8);
    return SchemaValue::Number(type && *type >= 0 && *type <= 2 ? *type + 1 : 1);
}

constexpr SchemaColumn kProcedureColumns[] = {
    {u"PROCEDURE_CATALOG", Type::Text, 1},
    {u"PROCEDURE_SCHEMA", Type::Text, 2},
    {u"PROCEDURE_NAME", Type::Text, 3},
    {u"PROCEDURE_TYPE", Type::Small, 0, &ProcedureType},
    {u"PROCEDURE_DEFINITION"},
    {u"DESCRIPTION", Type::Text, 7},
    {u"DATE_CREATED", Type::Date},
    {u"DATE_MODIFIED", Type::Date},
};
constexpr unsigned char kProcedureRestrictions[] = {0, 1, 2, 3};
constexpr unsigned char kProcedureOrder[] = {0, 1, 2};

constexpr char kGroupNumber = ';';  // SQL Server tells "P_SAVE;1": the number of a procedure in its group

/// A procedure is found by its name alone.
SchemaValue NameInGroup(const CatalogRow& row, std::size_t restriction) {
    constexpr std::size_t kNameRestriction = 2, kName = 3;
    const auto name = row.Text(kName);
    const std::size_t number = name ? name->rfind(kGroupNumber) : std::string_view::npos;
    const bool hasNumber = restriction == kNameRestriction && number != std::string_view::npos;
    return hasNumber ? SchemaValue::Text(name->substr(0, number)) : SchemaValue();
}

CatalogRows ReadProcedures(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    if (AsksFiles(*session)) ExpectReadableFile(session);
    if (session->Profile().keySource == KeySource::Nothing) return {};
    CatalogCall call;
    call.function = CatalogCall::Function::Procedures;
    call.catalog = restrictions.Text(0);
    call.schema = restrictions.Text(1);
    call.table = restrictions.Text(2);
    CatalogRows rows = CallCatalog(session, call);
    if (!rows.empty() || call.table.find(kGroupNumber) == std::string::npos) return rows;
    call.table.erase(call.table.rfind(kGroupNumber));
    return CallCatalog(session, call);
}

enum : LONG { kCatalogs = 1, kProcedures = 16, kSchemata = 17, kTables = 20 };

constexpr SchemaTable kTablesOfSchemas[] = {
    {kCatalogs, kCatalogColumns, kCatalogRestrictions, kCatalogRestrictions, &ReadCatalogs},
    {kProcedures, kProcedureColumns, kProcedureRestrictions, kProcedureOrder, &ReadProcedures, &NameInGroup},
    {kSchemata, kSchemaColumns, kSchemaRestrictions, kSchemaRestrictions, &ReadSchemata},
    {kTables, kTableColumns, kTableRestrictions, kTableOrder, &ReadTables},
};

}  // namespace

std::span<const SchemaTable> ObjectSchemas() {
    return kTablesOfSchemas;
}

}  // namespace tk::ado
