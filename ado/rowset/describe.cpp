#include "ado/rowset/describe.h"

#include <tkwin32/text.h>

#include <algorithm>
#include <limits>

#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

constexpr LONG kLongBytes = 2147483647;
constexpr LONG kLongWideUnits = 1073741823;

std::string TextAttribute(StatementHandle& handle, int number, SQLUSMALLINT attribute) {
    char buffer[512] = {};
    SQLSMALLINT length = 0;
    const SQLRETURN result = Odbc().ColAttribute(handle.Get(), static_cast<SQLUSMALLINT>(number), attribute, buffer,
                                                 sizeof buffer - 1, &length, nullptr);
    return SQL_SUCCEEDED(result) ? std::string(buffer) : std::string();
}

SQLLEN NumberAttribute(StatementHandle& handle, int number, SQLUSMALLINT attribute, SQLLEN otherwise) {
    SQLLEN value = otherwise;
    const SQLRETURN result =
        Odbc().ColAttribute(handle.Get(), static_cast<SQLUSMALLINT>(number), attribute, nullptr, 0, nullptr, &value);
    return SQL_SUCCEEDED(result) ? value : otherwise;
}

LONG DefinedSize(const SqlTypeRule& rule, SQLULEN described) {
    if (rule.fixedSize != 0) return rule.fixedSize;
    if (rule.isLong) return rule.dbType == kTypeWChar ? kLongWideUnits : kLongBytes;
    // Drivers give 0 or a negative number for a size that they do not know.
    if (described == 0 || described > static_cast<SQLULEN>(kLongBytes)) return kLongBytes;
    return static_cast<LONG>(described);
}

LONG Attributes(const SqlTypeRule& rule, SQLSMALLINT nullable) {
    LONG attributes = kFieldUnknownUpdatable;
    const bool isPlain = rule.fieldType == rule.dbType;  // numbers, dates, CHAR, BINARY
    if (isPlain) attributes |= kFieldFixed;
    if (rule.isLong) attributes |= kFieldLong | kFieldMayDefer;
    if (nullable != SQL_NO_NULLS) attributes |= kFieldIsNullable | kFieldMayBeNull;
    return attributes;
}

Column MakeColumn(StatementHandle& handle, int number) {
    char name[512] = {};
    SQLSMALLINT nameLength = 0;
    SQLSMALLINT sqlType = 0;
    SQLULEN size = 0;
    SQLSMALLINT digits = 0;
    SQLSMALLINT nullable = SQL_NULLABLE_UNKNOWN;
    const SQLRETURN result =
        Odbc().DescribeCol(handle.Get(), static_cast<SQLUSMALLINT>(number), reinterpret_cast<SQLCHAR*>(name),
                           sizeof name - 1, &nameLength, &sqlType, &size, &digits, &nullable);
    if (!SQL_SUCCEEDED(result)) handle.Throw(result);
    if (sqlType == SQL_BINARY && handle.Profile().hasOnlyLongBinary) sqlType = SQL_LONGVARBINARY;

    Column column;
    column.name = text::Utf8ToUtf16(name);
    column.sqlType = sqlType;
    column.isUnsigned = IsIntegerType(sqlType) && NumberAttribute(handle, number, SQL_DESC_UNSIGNED, 0) != 0;
    const SqlTypeRule& rule = FindSqlType(sqlType, column.isUnsigned);
    column.type = rule.fieldType;
    column.dbType = rule.dbType;
    column.kind = rule.kind;
    column.definedSize = DefinedSize(rule, size);
    column.precision = rule.precision;
    if (rule.dbType == kTypeNumeric) {
        column.precision = static_cast<BYTE>(std::min<SQLULEN>(size, 255));
        column.scale = static_cast<BYTE>(digits);
    } else if (rule.dbType == kTypeDbTimestamp) {
        column.scale = static_cast<BYTE>(std::clamp<int>(digits, 0, 9));
    }
    column.attributes = Attributes(rule, nullable);
    if (rule.dbType == kTypeBigInt || rule.dbType == kTypeUnsignedBigInt) {
        column.isExpression = TextAttribute(handle, number, SQL_DESC_BASE_TABLE_NAME).empty();
    }
    return column;
}

}  // namespace

std::vector<Column> DescribeColumns(StatementHandle& handle, int count) {
    std::vector<Column> columns;
    columns.reserve(static_cast<std::size_t>(count));
    for (int number = 1; number <= count; ++number)
        columns.push_back(MakeColumn(handle, number));
    return columns;
}

bool HasOnlyTableColumns(StatementHandle& handle, int count) noexcept {
    for (int number = 1; number <= count; ++number) {
        char table[8] = {};  // empty or not is all that counts
        SQLSMALLINT length = 0;
        const SQLRETURN result = Odbc().ColAttribute(handle.Get(), static_cast<SQLUSMALLINT>(number),
                                                     SQL_DESC_BASE_TABLE_NAME, table, sizeof table, &length, nullptr);
        if (!SQL_SUCCEEDED(result) || table[0] == '\0') return false;
    }
    return true;
}

}  // namespace tk::ado
