#include "ado/rowset/describe.h"

#include <tkwin32/text.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "ado/odbc/column_attribute.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

constexpr LONG kLongBytes = 2147483647;
constexpr LONG kLongWideUnits = 1073741823;

bool HasTableBehind(StatementHandle& handle, int number) noexcept {
    char table[8] = {};  // empty or not is all that counts
    SQLSMALLINT length = 0;
    const SQLRETURN result = Odbc().ColAttribute(handle.Get(), static_cast<SQLUSMALLINT>(number),
                                                 SQL_DESC_BASE_TABLE_NAME, table, sizeof table, &length, nullptr);
    return SQL_SUCCEEDED(result) && table[0] != '\0';
}

/// What a driver has cut may end within a character.
void CutAtCharacter(std::string& utf8) {
    const auto isContinuation = [](char byte) { return (byte & 0xC0) == 0x80; };
    std::size_t start = utf8.size();
    while (start > 0 && utf8.size() - start < 4 && isContinuation(utf8[start - 1]))
        --start;
    if (start == 0) return;
    const auto lead = static_cast<unsigned char>(utf8[start - 1]);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    if (utf8.size() - (start - 1) < length) utf8.resize(start - 1);
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

/// A name that did not fit, asked again. Some drivers tell how long it is, others only how much they gave.
std::string LongName(StatementHandle& handle, int number) {
    constexpr std::size_t kMost = 32767;  // lengths are 16 bits wide
    std::string name;
    std::size_t stored = 0;
    for (std::size_t size = 4096;; size = std::min(size * 4, kMost)) {
        name.assign(size, '\0');
        SQLSMALLINT length = 0;
        SQLSMALLINT sqlType = 0;
        SQLULEN columnSize = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT nullable = 0;
        const SQLRETURN result =
            Odbc().DescribeCol(handle.Get(), static_cast<SQLUSMALLINT>(number), reinterpret_cast<SQLCHAR*>(name.data()),
                               static_cast<SQLSMALLINT>(size - 1), &length, &sqlType, &columnSize, &digits, &nullable);
        if (!SQL_SUCCEEDED(result)) handle.Throw(result);
        stored = strnlen(name.data(), size - 1);
        if (stored + 2 < size || size == kMost) break;
    }
    name.resize(stored);
    CutAtCharacter(name);
    return name;
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
    const bool isCut = strnlen(name, sizeof name) + 2 >= sizeof name;
    if (sqlType == SQL_BINARY && handle.Profile().hasOnlyLongBinary) sqlType = SQL_LONGVARBINARY;
    if (size == 0 && handle.Profile().hasUnlimitedAsZero) sqlType = static_cast<SQLSMALLINT>(LongTypeOf(sqlType));

    Column column;
    column.name = text::Utf8ToUtf16(isCut ? LongName(handle, number) : name);
    column.sqlType = sqlType;
    column.isUnsigned = handle.Profile().hasUnsigned && IsIntegerType(sqlType) &&
                        NumberAttribute(handle.Get(), number, SQL_DESC_UNSIGNED, 0) != 0;
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
        column.isExpression = !HasTableBehind(handle, number);
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
        if (!HasTableBehind(handle, number)) return false;
    }
    return true;
}

}  // namespace tk::ado
