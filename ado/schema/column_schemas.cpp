// Columns and provider types.
#include <algorithm>
#include <set>
#include <utility>

#include "ado/odbc/ascii.h"
#include "ado/rowset/type_map.h"
#include "ado/schema/file_catalog.h"
#include "ado/schema/schema_table.h"
#include "ado/schema/sparse_columns.h"

namespace tk::ado {
namespace {

using Type = SchemaType;

// What stands where in the answers of SQLColumns and SQLGetTypeInfo.
enum ColumnsColumn : std::size_t {
    kSchema = 2,
    kTable,
    kColumnName,
    kDataType,
    kTypeName = 6,
    kSize = 7,
    kDigits = 9,
    kNullable = 11,
    kDefault = 13,
    kOctets = 16,
    kOrdinal = 17,
    kIsNullable = 18,
};

const SqlTypeRule& RuleOf(const CatalogRow& row) {
    if (row.typeRule != nullptr) return *row.typeRule;
    const auto sqlType = static_cast<int>(row.Number(kDataType).value_or(0));
    const bool isUnsigned =
        IsIntegerType(sqlType) && row.Text(kTypeName).value_or("").find("UNSIGNED") != std::string_view::npos;
    row.typeRule = &FindSqlType(sqlType, isUnsigned);
    return *row.typeRule;
}

bool IsText(const SqlTypeRule& rule) {
    return rule.dbType == kTypeChar || rule.dbType == kTypeWChar;
}
bool IsBytes(const SqlTypeRule& rule) {
    return rule.dbType == kTypeBinary;
}
bool IsExact(const SqlTypeRule& rule) {
    return rule.dbType == kTypeNumeric || rule.dbType == kTypeDecimal;
}
bool IsNumeric(const SqlTypeRule& rule) {
    return IsExact(rule) || IsIntegerType(rule.sqlType) || rule.dbType == kTypeSingle || rule.dbType == kTypeDouble ||
           rule.dbType == kTypeCurrency;
}

/// No answer, "NULL" and no default at all are the same.
std::optional<std::string_view> DefaultOf(const CatalogRow& row) {
    auto text = row.Text(kDefault);
    if (text && EqualsNoCase(*text, "NULL")) text.reset();
    return text;
}

bool IsNullable(const CatalogRow& row) {
    return row.Number(kNullable).value_or(1) != 0 && !EqualsNoCase(row.Text(kIsNullable).value_or(""), "NO");
}

SchemaValue HasDefault(const CatalogRow& row) {
    return SchemaValue::Flag(DefaultOf(row).has_value());
}
SchemaValue Default(const CatalogRow& row) {
    return SchemaValue::Of(DefaultOf(row));
}
SchemaValue Nullable(const CatalogRow& row) {
    return SchemaValue::Flag(IsNullable(row));
}
SchemaValue DbType(const CatalogRow& row) {
    return SchemaValue::Number(RuleOf(row).dbType);
}

SchemaValue Flags(const CatalogRow& row) {
    const SqlTypeRule& rule = RuleOf(row);
    LONG flags = kFieldUpdatable;
    const bool isFixed =
        rule.fixedSize != 0 || rule.sqlType == SQL_CHAR || rule.sqlType == SQL_WCHAR || rule.sqlType == SQL_BINARY;
    if (isFixed) flags |= kFieldFixed;
    if (rule.isLong) flags |= kFieldLong;
    if (IsNullable(row)) flags |= kFieldIsNullable | kFieldMayBeNull;
    return SchemaValue::Number(flags);
}

/// A length that no column has is none: 0 says "no limit".
SchemaValue Length(const CatalogRow& row, std::size_t column) {
    const SqlTypeRule& rule = RuleOf(row);
    if (!IsText(rule) && !IsBytes(rule) && rule.sqlType != SQL_BIT) return SchemaValue();
    const long long length = row.Number(column).value_or(0);
    return SchemaValue::Number(std::clamp<long long>(length, 0, INT32_MAX));
}

SchemaValue CharacterLength(const CatalogRow& row) {
    return Length(row, kSize);
}

SchemaValue OctetLength(const CatalogRow& row) {
    const SqlTypeRule& rule = RuleOf(row);
    return IsText(rule) || IsBytes(rule) ? Length(row, kOctets) : SchemaValue();
}

SchemaValue NumericPrecision(const CatalogRow& row) {
    return IsNumeric(RuleOf(row)) ? SchemaValue::Of(row.Number(kSize)) : SchemaValue();
}

SchemaValue NumericScale(const CatalogRow& row) {
    return IsExact(RuleOf(row)) ? SchemaValue::Of(row.Number(kDigits)) : SchemaValue();
}

SchemaValue DateTimePrecision(const CatalogRow& row) {
    const LONG type = RuleOf(row).dbType;
    const bool hasTime = type == kTypeDbTime || type == kTypeDbTimestamp;
    return hasTime ? SchemaValue::Of(row.Number(kDigits)) : SchemaValue();
}

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
