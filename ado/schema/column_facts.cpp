#include "ado/schema/column_facts.h"

#include <algorithm>

#include "ado/odbc/ascii.h"
#include "ado/odbc/odbc_api.h"

namespace tk::ado::column_facts {
namespace {

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

/// A length that no column has is none: 0 says "no limit".
SchemaValue Length(const CatalogRow& row, std::size_t column) {
    const SqlTypeRule& rule = RuleOf(row);
    if (!IsText(rule) && !IsBytes(rule) && rule.sqlType != SQL_BIT) return SchemaValue();
    const long long length = row.Number(column).value_or(0);
    return SchemaValue::Number(std::clamp<long long>(length, 0, INT32_MAX));
}

}  // namespace

const SqlTypeRule& RuleOf(const CatalogRow& row) {
    if (row.typeRule != nullptr) return *row.typeRule;
    const auto sqlType = static_cast<int>(row.Number(kDataType).value_or(0));
    const bool isUnsigned =
        IsIntegerType(sqlType) && row.Text(kTypeName).value_or("").find("UNSIGNED") != std::string_view::npos;
    row.typeRule = &FindSqlType(sqlType, isUnsigned);
    return *row.typeRule;
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

}  // namespace tk::ado::column_facts
