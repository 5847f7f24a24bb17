// Columns and provider types.
#include <algorithm>
#include <set>
#include <utility>

#include "ado/odbc/odbc_api.h"
#include "ado/schema/column_facts.h"
#include "ado/schema/file_catalog.h"
#include "ado/schema/sparse_columns.h"

namespace tk::ado {
namespace {

using namespace column_facts;
using Type = SchemaType;

constexpr SchemaColumn kColumnColumns[] = {
    {u"TABLE_CATALOG", Type::Text, 1},
    {u"TABLE_SCHEMA", Type::Text, 2},
    {u"TABLE_NAME", Type::Text, 3},
    {u"COLUMN_NAME", Type::Text, 4},
    {u"COLUMN_GUID", Type::Guid},
    {u"COLUMN_PROPID", Type::UnsignedLong},
    {u"ORDINAL_POSITION", Type::UnsignedLong, 17},
    {u"COLUMN_HASDEFAULT", Type::Flag, 0, &HasDefault},
    {u"COLUMN_DEFAULT", Type::Text, 0, &Default},
    {u"COLUMN_FLAGS", Type::UnsignedLong, 0, &Flags},
    {u"IS_NULLABLE", Type::Flag, 0, &Nullable},
    {u"DATA_TYPE", Type::UnsignedSmall, 0, &DbType},
    {u"TYPE_GUID", Type::Guid},
    {u"CHARACTER_MAXIMUM_LENGTH", Type::UnsignedLong, 0, &CharacterLength},
    {u"CHARACTER_OCTET_LENGTH", Type::UnsignedLong, 0, &OctetLength},
    {u"NUMERIC_PRECISION", Type::UnsignedSmall, 0, &NumericPrecision},
    {u"NUMERIC_SCALE", Type::Small, 0, &NumericScale},
    {u"DATETIME_PRECISION", Type::UnsignedLong, 0, &DateTimePrecision},
    {u"CHARACTER_SET_CATALOG"},
    {u"CHARACTER_SET_SCHEMA"},
    {u"CHARACTER_SET_NAME"},
    {u"COLLATION_CATALOG"},
    {u"COLLATION_SCHEMA"},
    {u"COLLATION_NAME"},
    {u"DOMAIN_CATALOG"},
    {u"DOMAIN_SCHEMA"},
    {u"DOMAIN_NAME"},
    {u"DESCRIPTION", Type::Text, 12},
};
constexpr unsigned char kColumnRestrictions[] = {0, 1, 2, 3};
constexpr unsigned char kColumnOrder[] = {0, 1, 2, 6};

/// Whether they may be those of an index, of a type or of a sequence, or the ones of them that were asked for. An index
/// has neither defaults nor columns that are not null, whatever it is of.
bool MayBeOfNoTable(const CatalogRows& columns) {
    constexpr std::string_view kOfSequence[] = {"last_value", "log_cnt", "is_called"};
    if (columns.empty()) return false;
    const auto isPlain = [](const CatalogRow& column) {
        return column.Number(kNullable).value_or(1) != 0 && !column.Text(kDefault);
    };
    return std::ranges::find(kOfSequence, columns.front().Text(kColumnName)) != std::end(kOfSequence) ||
           std::ranges::all_of(columns, isPlain);
}

/// Keeps the columns of tables and views.
/// @param table  empty: all of them
void KeepColumnsOfTables(const std::shared_ptr<Session>& session, const std::string& table, CatalogRows& columns) {
    constexpr std::size_t kColumns[] = {kSchema, kTable};
    const CatalogRows tables = SelectRows(session, session->Profile().tableQuery, kColumns, {table, table});
    std::set<std::pair<std::string_view, std::string_view>> known;
    const auto nameIn = [](const CatalogRow& row) {
        return std::pair(row.Text(kSchema).value_or(""), row.Text(kTable).value_or(""));
    };
    for (const CatalogRow& found : tables)
        known.insert(nameIn(found));
    std::erase_if(columns, [&](const CatalogRow& column) { return !known.contains(nameIn(column)); });
}

/// As the server does, with gaps behind dropped ones: the driver counts on from table to table, those included that
/// only match as a pattern, but tells the server's number as well.
void NumberAsStored(CatalogRows& columns) {
    constexpr std::size_t kPhysicalNumber = 22;
    for (CatalogRow& column : columns) {
        if (const auto number = column.Number(kPhysicalNumber)) column.Set(kOrdinal, SchemaValue::Number(*number));
    }
}

/// Texts and bytes without limit, where the driver tells their size as 0: as what they are.
void TellUnlimited(CatalogRows& columns) {
    for (CatalogRow& column : columns) {
        const auto sqlType = static_cast<int>(column.Number(kDataType).value_or(0));
        const int longType = LongTypeOf(sqlType);
        if (longType == sqlType || column.Number(kSize).value_or(1) != 0) continue;
        constexpr long long kMostBytes = 2147483647;
        column.Set(kDataType, SchemaValue::Number(longType));
        column.Set(kSize, SchemaValue::Number(longType == SQL_WLONGVARCHAR ? kMostBytes / 2 : kMostBytes));
        column.Set(kOctets, SchemaValue::Number(longType == SQL_WLONGVARCHAR ? kMostBytes - 1 : kMostBytes));
    }
}

/// The word that RuleOf looks for.
void TellUnsignedTiny(CatalogRows& columns) {
    for (CatalogRow& column : columns) {
        if (column.Number(kDataType) == SQL_TINYINT) column.Set(kTypeName, SchemaValue::Text("TINYINT UNSIGNED"));
    }
}

CatalogRows ReadColumns(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    if (AsksFiles(*session)) return FileColumns(session, restrictions.Text(2));
    CatalogCall call;
    call.function = CatalogCall::Function::Columns;
    call.catalog = restrictions.Text(0);
    if (call.catalog.empty()) call.catalog = session->CurrentCatalog();
    call.schema = restrictions.Text(1);
    call.table = restrictions.Text(2);
    call.column = restrictions.Text(3);
    CatalogRows columns = CallForTable(session, call);
    if (session->Profile().tableQuery != nullptr) {
        if (call.table.empty() || MayBeOfNoTable(columns)) KeepColumnsOfTables(session, call.table, columns);
        NumberAsStored(columns);
    }
    if (session->Profile().hasUnlimitedAsZero) TellUnlimited(columns);
    if (session->Profile().hasUnsignedTiny) TellUnsignedTiny(columns);
    if (session->Profile().hasSparseColumns) CompleteColumns(session, columns);
    return columns;
}

// --- provider types ---

constexpr std::size_t kInfoDataType = 2;

const SqlTypeRule& InfoRule(const CatalogRow& row) {
    return FindSqlType(static_cast<int>(row.Number(kInfoDataType).value_or(0)), row.Number(10).value_or(0) != 0);
}

SchemaValue InfoType(const CatalogRow& row) {
    return SchemaValue::Number(InfoRule(row).dbType);
}
SchemaValue InfoFlag(const CatalogRow& row, std::size_t column) {
    const auto number = row.Number(column);
    return number ? SchemaValue::Flag(*number != 0) : SchemaValue();
}
SchemaValue InfoSize(const CatalogRow& row) {
    const auto size = row.Number(3);
    if (!size) return SchemaValue();
    return SchemaValue::Number(std::clamp<long long>(*size, 0, INT32_MAX));
}
SchemaValue InfoNullable(const CatalogRow& row) {
    return InfoFlag(row, 7);
}
SchemaValue InfoCaseSensitive(const CatalogRow& row) {
    return InfoFlag(row, 8);
}
SchemaValue InfoSearchable(const CatalogRow& row) {
    return SchemaValue::Number(row.Number(9).value_or(3) + 1);
}
SchemaValue InfoUnsigned(const CatalogRow& row) {
    return InfoFlag(row, 10);
}
SchemaValue InfoFixedPrecision(const CatalogRow& row) {
    return InfoFlag(row, 11);
}
SchemaValue InfoAutoUnique(const CatalogRow& row) {
    return InfoFlag(row, 12);
}
SchemaValue InfoLong(const CatalogRow& row) {
    return SchemaValue::Flag(InfoRule(row).isLong);
}
/// Behind what the driver says stands whether the row is the first one of its type.
constexpr std::size_t kInfoBestMatch = 20;
SchemaValue InfoBestMatch(const CatalogRow& row) {
    return SchemaValue::Flag(row.Number(kInfoBestMatch).value_or(0) != 0);
}

constexpr SchemaColumn kTypeColumns[] = {
    {u"TYPE_NAME", Type::Text, 1},
    {u"DATA_TYPE", Type::UnsignedSmall, 0, &InfoType},
    {u"COLUMN_SIZE", Type::UnsignedLong, 0, &InfoSize},
    {u"LITERAL_PREFIX", Type::Text, 4},
    {u"LITERAL_SUFFIX", Type::Text, 5},
    {u"CREATE_PARAMS", Type::Text, 6},
    {u"IS_NULLABLE", Type::Flag, 0, &InfoNullable},
    {u"CASE_SENSITIVE", Type::Flag, 0, &InfoCaseSensitive},
    {u"SEARCHABLE", Type::UnsignedLong, 0, &InfoSearchable},
    {u"UNSIGNED_ATTRIBUTE", Type::Flag, 0, &InfoUnsigned},
    {u"FIXED_PREC_SCALE", Type::Flag, 0, &InfoFixedPrecision},
    {u"AUTO_UNIQUE_VALUE", Type::Flag, 0, &InfoAutoUnique},
    {u"LOCAL_TYPE_NAME", Type::Text, 13},
    {u"MINIMUM_SCALE", Type::Small, 14},
    {u"MAXIMUM_SCALE", Type::Small, 15},
    {u"GUID", Type::Guid},
    {u"TYPELIB"},
    {u"VERSION"},
    {u"IS_LONG", Type::Flag, 0, &InfoLong},
    {u"BEST_MATCH", Type::Flag, 0, &InfoBestMatch},
};
constexpr unsigned char kTypeRestrictions[] = {1, 19};

CatalogRows ReadTypes(const std::shared_ptr<Session>& session, const Restrictions&) {
    CatalogCall call;
    call.function = CatalogCall::Function::TypeInfo;
    CatalogRows rows;
    std::vector<LONG> seen;
    for (CatalogRow& row : CallCatalog(session, call)) {
        const LONG type = InfoRule(row).dbType;
        const bool isFirst = std::ranges::find(seen, type) == seen.end();
        if (isFirst) seen.push_back(type);
        row.Set(kInfoBestMatch, SchemaValue::Flag(isFirst));
        rows.push_back(std::move(row));
    }
    return rows;
}

enum : LONG { kColumns = 4, kProviderTypes = 22 };

constexpr SchemaTable kTablesOfSchemas[] = {
    {kColumns, kColumnColumns, kColumnRestrictions, kColumnOrder, &ReadColumns},
    {kProviderTypes, kTypeColumns, kTypeRestrictions, {}, &ReadTypes},
};

}  // namespace

std::span<const SchemaTable> ColumnSchemas() {
    return kTablesOfSchemas;
}

}  // namespace tk::ado
