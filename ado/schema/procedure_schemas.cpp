// Procedures, their parameters and the columns of their results.
#include <string>

#include "ado/schema/column_facts.h"
#include "ado/schema/file_catalog.h"

namespace tk::ado {
namespace {

using namespace column_facts;
using Type = SchemaType;

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
constexpr unsigned char kRestrictions[] = {0, 1, 2, 3};
// Parameters and results stay in the order of their procedure: two may bear one name.
constexpr unsigned char kOrder[] = {0, 1, 2};

constexpr char kGroupNumber = ';';  // SQL Server tells "P_SAVE;1": the number of a procedure in its group

/// A procedure is found by its name alone.
SchemaValue NameInGroup(const CatalogRow& row, std::size_t restriction) {
    constexpr std::size_t kNameRestriction = 2, kName = 3;
    const auto name = row.Text(kName);
    const std::size_t number = name ? name->rfind(kGroupNumber) : std::string_view::npos;
    const bool hasNumber = restriction == kNameRestriction && number != std::string_view::npos;
    return hasNumber ? SchemaValue::Text(name->substr(0, number)) : SchemaValue();
}

CatalogRows Ask(const std::shared_ptr<Session>& session, CatalogCall::Function function,
                const Restrictions& restrictions, std::span<const std::size_t> columns) {
    if (AsksFiles(*session)) ExpectReadableFile(session);
    if (session->Profile().keySource == KeySource::Nothing) return {};
    CatalogCall call;
    call.function = function;
    call.catalog = restrictions.Text(0);
    call.schema = restrictions.Text(1);
    call.table = restrictions.Text(2);
    CatalogRows rows = CallCatalog(session, call, columns);
    if (!rows.empty() || call.table.find(kGroupNumber) == std::string::npos) return rows;
    call.table.erase(call.table.rfind(kGroupNumber));
    return CallCatalog(session, call, columns);
}

CatalogRows ReadProcedures(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    return Ask(session, CatalogCall::Function::Procedures, restrictions, {});
}

// --- parameters and results ---

// SQLProcedureColumns tells what SQLColumns does, and behind the name what each is to the procedure.
constexpr std::size_t kKind = 30;
constexpr std::size_t kAnswer[] = {1, 2, 3, 4, kKind, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18};

SchemaValue ParameterType(const CatalogRow& row) {
    // By ODBC's numbers: input, input and output, a column of a result, output, return value.
    static constexpr int kTypes[] = {0, 1, 2, 0, 3, 4};
    const auto kind = row.Number(kKind);
    if (!kind || *kind < 0 || *kind >= static_cast<long long>(std::size(kTypes))) return SchemaValue();
    return kTypes[*kind] != 0 ? SchemaValue::Number(kTypes[*kind]) : SchemaValue();
}

constexpr SchemaColumn kParameterColumns[] = {
    {u"PROCEDURE_CATALOG", Type::Text, kCatalog},
    {u"PROCEDURE_SCHEMA", Type::Text, kSchema},
    {u"PROCEDURE_NAME", Type::Text, kTable},
    {u"PARAMETER_NAME", Type::Text, kColumnName},
    {u"ORDINAL_POSITION", Type::UnsignedSmall, kOrdinal},
    {u"PARAMETER_TYPE", Type::UnsignedSmall, 0, &ParameterType},
    {u"PARAMETER_HASDEFAULT", Type::Flag, 0, &HasDefault},
    {u"PARAMETER_DEFAULT", Type::Text, 0, &Default},
    {u"IS_NULLABLE", Type::Flag, 0, &Nullable},
    {u"DATA_TYPE", Type::UnsignedSmall, 0, &DbType},
    {u"CHARACTER_MAXIMUM_LENGTH", Type::UnsignedLong, 0, &CharacterLength},
    {u"CHARACTER_OCTET_LENGTH", Type::UnsignedLong, 0, &OctetLength},
    {u"NUMERIC_PRECISION", Type::UnsignedSmall, 0, &NumericPrecision},
    {u"NUMERIC_SCALE", Type::Small, 0, &NumericScale},
    {u"DESCRIPTION", Type::Text, kRemarks},
    {u"TYPE_NAME", Type::Text, kTypeName},
    {u"LOCAL_TYPE_NAME"},
};

constexpr SchemaColumn kResultColumns[] = {
    {u"PROCEDURE_CATALOG", Type::Text, kCatalog},
    {u"PROCEDURE_SCHEMA", Type::Text, kSchema},
    {u"PROCEDURE_NAME", Type::Text, kTable},
    {u"COLUMN_NAME", Type::Text, kColumnName},
    {u"COLUMN_GUID", Type::Guid},
    {u"COLUMN_PROPID", Type::UnsignedLong},
    {u"ROWSET_NUMBER", Type::UnsignedLong},
    {u"ORDINAL_POSITION", Type::UnsignedLong, kOrdinal},
    {u"IS_NULLABLE", Type::Flag, 0, &Nullable},
    {u"DATA_TYPE", Type::UnsignedSmall, 0, &DbType},
    {u"TYPE_GUID", Type::Guid},
    {u"CHARACTER_MAXIMUM_LENGTH", Type::UnsignedLong, 0, &CharacterLength},
    {u"CHARACTER_OCTET_LENGTH", Type::UnsignedLong, 0, &OctetLength},
    {u"NUMERIC_PRECISION", Type::UnsignedSmall, 0, &NumericPrecision},
    {u"NUMERIC_SCALE", Type::Small, 0, &NumericScale},
    {u"DESCRIPTION", Type::Text, kRemarks},
};

CatalogRows ReadParameters(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    constexpr std::string_view kNothing = "void";  // a return value that is none
    CatalogRows rows = Ask(session, CatalogCall::Function::ProcedureColumns, restrictions, kAnswer);
    std::erase_if(
        rows, [&](const CatalogRow& row) { return ParameterType(row).IsNull() || row.Text(kTypeName) == kNothing; });
    return rows;
}

CatalogRows ReadResults(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    constexpr long long kColumnOfResult = 3;
    CatalogRows rows = Ask(session, CatalogCall::Function::ProcedureColumns, restrictions, kAnswer);
    std::erase_if(rows, [&](const CatalogRow& row) { return row.Number(kKind) != kColumnOfResult; });
    return rows;
}

enum : LONG { kProcedures = 16, kParameters = 26, kResults = 29 };

constexpr SchemaTable kTablesOfSchemas[] = {
    {kProcedures, kProcedureColumns, kRestrictions, kOrder, &ReadProcedures, &NameInGroup},
    {kParameters, kParameterColumns, kRestrictions, kOrder, &ReadParameters, &NameInGroup},
    {kResults, kResultColumns, kRestrictions, kOrder, &ReadResults, &NameInGroup},
};

}  // namespace

std::span<const SchemaTable> ProcedureSchemas() {
    return kTablesOfSchemas;
}

}  // namespace tk::ado
