// Columns and provider types.
#include <algorithm>

#include "ado/cursor/text.h"
#include "ado/rowset/type_map.h"
#include "ado/schema/file_catalog.h"
#include "ado/schema/schema_table.h"

namespace tk::ado {
namespace {

using Type = SchemaType;

// What stands where in the answers of SQLColumns and SQLGetTypeInfo.
enum ColumnsColumn : std::size_t {
    kDataType = 5,
    kTypeName = 6,
    kSize = 7,
    kDigits = 9,
    kNullable = 11,
    kDefault = 13,
    kOctets = 16,
    kIsNullable = 18,
};

const SqlTypeRule& RuleOf(const CatalogRow& row) {
    const bool isUnsigned = row.Text(kTypeName).value_or(u"").find(u"UNSIGNED") != std::u16string::npos;
    return FindSqlType(static_cast<int>(row.Number(kDataType).value_or(0)), isUnsigned);
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
std::optional<std::u16string> DefaultOf(const CatalogRow& row) {
    auto text = row.Text(kDefault);
    if (text && SameName(*text, u"NULL")) text.reset();
    return text;
}

bool IsNullable(const CatalogRow& row) {
    return row.Number(kNullable).value_or(1) != 0 && !SameName(row.Text(kIsNullable).value_or(u""), u"NO");
}

Value HasDefault(const CatalogRow& row) {
    return Value::Boolean(DefaultOf(row).has_value());
}
Value Default(const CatalogRow& row) {
    return TextValue(DefaultOf(row));
}
Value Nullable(const CatalogRow& row) {
    return Value::Boolean(IsNullable(row));
}
Value DbType(const CatalogRow& row) {
    return Value(RuleOf(row).dbType);
}

Value Flags(const CatalogRow& row) {
    const SqlTypeRule& rule = RuleOf(row);
    LONG flags = kFieldUpdatable;
    const bool isFixed =
        rule.fixedSize != 0 || rule.sqlType == SQL_CHAR || rule.sqlType == SQL_WCHAR || rule.sqlType == SQL_BINARY;
    if (isFixed) flags |= kFieldFixed;
    if (rule.isLong) flags |= kFieldLong;
    if (IsNullable(row)) flags |= kFieldIsNullable | kFieldMayBeNull;
    return Value(flags);
}

/// A length that no column has is none: 0 says "no limit".
Value Length(const CatalogRow& row, std::size_t column) {
    const SqlTypeRule& rule = RuleOf(row);
    if (!IsText(rule) && !IsBytes(rule) && rule.sqlType != SQL_BIT) return Value::Null();
    const long long length = row.Number(column).value_or(0);
    return Value(static_cast<LONG>(length < 0 ? 0 : length > INT32_MAX ? INT32_MAX : length));
}

Value CharacterLength(const CatalogRow& row) {
    return Length(row, kSize);
}

Value OctetLength(const CatalogRow& row) {
    const SqlTypeRule& rule = RuleOf(row);
    return IsText(rule) || IsBytes(rule) ? Length(row, kOctets) : Value::Null();
}

Value NumericPrecision(const CatalogRow& row) {
    return IsNumeric(RuleOf(row)) ? NumberValue(row.Number(kSize)) : Value::Null();
}

Value NumericScale(const CatalogRow& row) {
    return IsExact(RuleOf(row)) ? NumberValue(row.Number(kDigits)) : Value::Null();
}

Value DateTimePrecision(const CatalogRow& row) {
    const LONG type = RuleOf(row).dbType;
    const bool hasTime = type == kTypeDbTime || type == kTypeDbTimestamp;
    return hasTime ? NumberValue(row.Number(kDigits)) : Value::Null();
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

CatalogRows ReadColumns(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    if (AsksFiles(*session)) return FileColumns(session, restrictions.Text(2));
    CatalogCall call;
    call.function = CatalogCall::Function::Columns;
    call.catalog = restrictions.Text(0);
    if (call.catalog.empty()) call.catalog = session->CurrentCatalog();
    call.schema = restrictions.Text(1);
    call.table = restrictions.Text(2);
    call.column = restrictions.Text(3);
    return CallForTable(session, call);
}

// --- provider types ---

constexpr std::size_t kInfoDataType = 2;

const SqlTypeRule& InfoRule(const CatalogRow& row) {
    return FindSqlType(static_cast<int>(row.Number(kInfoDataType).value_or(0)), row.Number(10).value_or(0) != 0);
}

Value InfoType(const CatalogRow& row) {
    return Value(InfoRule(row).dbType);
}
Value InfoFlag(const CatalogRow& row, std::size_t column) {
    const auto number = row.Number(column);
    return number ? Value::Boolean(*number != 0) : Value::Null();
}
Value InfoSize(const CatalogRow& row) {
    const auto size = row.Number(3);
    if (!size) return Value::Null();
    return Value(static_cast<LONG>(*size < 0 ? 0 : *size > INT32_MAX ? INT32_MAX : *size));
}
Value InfoNullable(const CatalogRow& row) {
    return InfoFlag(row, 7);
}
Value InfoCaseSensitive(const CatalogRow& row) {
    return InfoFlag(row, 8);
}
Value InfoSearchable(const CatalogRow& row) {
    return Value(static_cast<LONG>(row.Number(9).value_or(3) + 1));
}
Value InfoUnsigned(const CatalogRow& row) {
    return InfoFlag(row, 10);
}
Value InfoFixedPrecision(const CatalogRow& row) {
    return InfoFlag(row, 11);
}
Value InfoAutoUnique(const CatalogRow& row) {
    return InfoFlag(row, 12);
}
Value InfoLong(const CatalogRow& row) {
    return Value::Boolean(InfoRule(row).isLong);
}
/// Behind what the driver says stands whether the row is the first one of its type.
constexpr std::size_t kInfoBestMatch = 20;
Value InfoBestMatch(const CatalogRow& row) {
    return Value::Boolean(row.Number(kInfoBestMatch).value_or(0) != 0);
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
        row.Set(kInfoBestMatch, Value(isFirst ? LONG{1} : LONG{0}));
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
