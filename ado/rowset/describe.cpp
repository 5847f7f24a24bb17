#include "ado/rowset/describe.h"

#include <tkwin32/text.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

#include "ado/odbc/column_attribute.h"
#include "ado/odbc/whole_utf8.h"
#include "ado/rowset/fetcher.h"
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
        if ((result == SQL_SUCCESS && stored + 2 < size) || size == kMost) break;
    }
    name.resize(stored);
    name.resize(WholeUtf8(name));  // the driver may have cut it within a character
    return name;
}

/// Asks the driver about one column. The record is used again for the next one.
void Ask(StatementHandle& handle, int number, ToldColumn& told) {
    // Driver managers that translate names for a driver give nonsense, and say nothing, where one does not fit: room
    // for 128 characters of any kind.
    char name[512];
    name[0] = name[sizeof name - 1] = '\0';
    SQLSMALLINT nameLength = 0;
    SQLSMALLINT sqlType = 0;
    SQLULEN size = 0;
    SQLSMALLINT digits = 0;
    SQLSMALLINT nullable = SQL_NULLABLE_UNKNOWN;
    const SQLRETURN result =
        Odbc().DescribeCol(handle.Get(), static_cast<SQLUSMALLINT>(number), reinterpret_cast<SQLCHAR*>(name),
                           sizeof name - 1, &nameLength, &sqlType, &size, &digits, &nullable);
    if (!SQL_SUCCEEDED(result)) handle.Throw(result);
    const std::size_t length = strnlen(name, sizeof name);
    if (result != SQL_SUCCESS || length + 2 >= sizeof name) [[unlikely]] {
        told.name = LongName(handle, number);
    } else {
        told.name.assign(name, length);
    }
    const DriverProfile& profile = handle.Profile();
    if (sqlType == SQL_BINARY && profile.hasOnlyLongBinary) sqlType = SQL_LONGVARBINARY;
    if (size == 0 && profile.hasUnlimitedAsZero) sqlType = static_cast<SQLSMALLINT>(LongTypeOf(sqlType));
    told.sqlType = sqlType;
    told.size = size;
    told.digits = digits;
    told.nullable = nullable;
    told.isUnsigned = profile.hasUnsigned && IsIntegerType(sqlType) &&
                      NumberAttribute(handle.Get(), number, SQL_DESC_UNSIGNED, 0) != 0;
    told.isComputed = sqlType == SQL_BIGINT && !HasTableBehind(handle, number);
}

Column MakeColumn(const ToldColumn& told) {
    Column column;
    column.name = text::Utf8ToUtf16(told.name);
    column.sqlType = told.sqlType;
    column.isUnsigned = told.isUnsigned;
    const SqlTypeRule& rule = FindSqlType(told.sqlType, told.isUnsigned);
    column.type = rule.fieldType;
    column.dbType = rule.dbType;
    column.kind = rule.kind;
    column.definedSize = DefinedSize(rule, told.size);
    column.precision = rule.precision;
    if (rule.dbType == kTypeNumeric) {
        column.precision = static_cast<BYTE>(std::min<SQLULEN>(told.size, 255));
        column.scale = static_cast<BYTE>(told.digits);
    } else if (rule.dbType == kTypeDbTimestamp) {
        column.scale = static_cast<BYTE>(std::clamp<int>(told.digits, 0, 9));
    }
    column.attributes = Attributes(rule, told.nullable);
    column.isExpression = told.isComputed;
    return column;
}

}  // namespace

std::shared_ptr<const ResultShape> DescribeResult(StatementHandle& handle, int count) {
    const auto& last = handle.lastShape;
    const auto wanted = static_cast<std::size_t>(count);
    const std::size_t known = last != nullptr && last->told.size() == wanted ? wanted : 0;
    ToldColumn asked;
    std::size_t same = 0;
    for (; same < known; ++same) {
        Ask(handle, static_cast<int>(same) + 1, asked);
        if (asked != last->told[same]) break;
    }
    if (same == known && known != 0) return last;

    std::vector<ToldColumn> told;
    told.reserve(wanted);
    if (known != 0) {
        told.assign(last->told.begin(), last->told.begin() + static_cast<std::ptrdiff_t>(same));
        told.push_back(asked);
    }
    while (told.size() < wanted) {
        Ask(handle, static_cast<int>(told.size()) + 1, asked);
        told.push_back(asked);
    }
    std::vector<Column> columns;
    columns.reserve(wanted);
    std::ranges::transform(told, std::back_inserter(columns), MakeColumn);
    const bool allVariable = KeepsAllAsText(handle.Profile(), columns);
    handle.lastShape = std::make_shared<const ResultShape>(std::move(told), std::move(columns), allVariable);
    return handle.lastShape;
}

bool HasOnlyTableColumns(StatementHandle& handle, int count) noexcept {
    for (int number = 1; number <= count; ++number) {
        if (!HasTableBehind(handle, number)) return false;
    }
    return true;
}

}  // namespace tk::ado
