#include "ado/schema/sparse_columns.h"

#include <map>

#include "ado/odbc/ascii.h"
#include "ado/odbc/odbc_api.h"
#include "ado/odbc/quoted_name.h"

namespace tk::ado {
namespace {

// What stands where in an answer of SQLColumns.
enum ColumnsColumn : std::size_t {
    kTable = 3,
    kName,
    kSqlType,
    kTypeName,
    kSize,
    kDigits = 9,
    kNullable = 11,
    kOctets = 16,
    kIsNullable = 18,
};

constexpr long long kNoLimit = 2147483647;
constexpr long long kTold = 0;       // as "describe table" tells it, in bytes
constexpr long long kHalfTold = -1;  // the same of a text, which takes two bytes a character

/// Where a word stands for a type that the driver gives as text whatever it is, the type is that of the text.
constexpr struct {
    std::string_view word;
    int sqlType;
    long long size;
    int digits = 0;
    const char* name = nullptr;  // for a word that says nothing of the sign
} kTypes[] = {
    {"BINARY", SQL_VARBINARY, kTold},
    {"BOOL", SQL_BIT, 1},
    {"BYTE", SQL_TINYINT, 3, 0, "BYTE UNSIGNED"},
    {"DATETIME", SQL_TYPE_TIMESTAMP, 19},
    {"DOUBLE", SQL_DOUBLE, 15},
    {"FLOAT", SQL_REAL, 7},
    {"INT", SQL_SMALLINT, 5},
    {"LONGINT", SQL_INTEGER, 10},
    {"MEMO", SQL_LONGVARCHAR, kNoLimit},
    {"MONEY", SQL_DECIMAL, 19, 4},
    {"NUMERIC", SQL_VARCHAR, 40},  // its scale is told nowhere: as a number it would lose digits
    {"OLE", SQL_LONGVARBINARY, kNoLimit},
    {"REPID", SQL_GUID, 36},
    {"TEXT", SQL_VARCHAR, kHalfTold},
};

using Sizes = std::map<std::string, long long, std::less<>>;

/// Bytes of each column; of none when the table's name is more than the driver can read.
Sizes SizesOf(const std::shared_ptr<Session>& session, std::string_view table) {
    enum Answer : std::size_t { kColumnName = 1, kType, kBytes };
    Sizes sizes;
    try {
        const std::string sql = "describe table " + QuotedName(std::string(table), session->Quote());
        for (const CatalogRow& row : SelectRows(session, sql, {kColumnName, kType, kBytes}))
            sizes.emplace(row.Text(kColumnName).value_or(""), row.Number(kBytes).value_or(0));
    } catch (const AdoError&) {
        sizes.clear();
    }
    return sizes;
}

}  // namespace

void CompleteColumns(const std::shared_ptr<Session>& session, CatalogRows& columns) {
    std::map<std::string, Sizes, std::less<>> tables;
    for (CatalogRow& column : columns) {
        const std::string_view table = column.Text(kTable).value_or("");
        if (!tables.contains(table)) tables.emplace(table, SizesOf(session, table));
        const Sizes& sizes = tables.find(table)->second;
        const auto told = sizes.find(column.Text(kName).value_or(""));
        const long long bytes = told == sizes.end() ? 0 : told->second;
        column.Set(kNullable, SchemaValue::Number(SQL_NULLABLE_UNKNOWN));
        column.Set(kIsNullable, SchemaValue::Text("YES"));
        const std::string_view word = column.Text(kTypeName).value_or("");
        for (const auto& type : kTypes) {
            if (!EqualsNoCase(type.word, word)) continue;
            const long long size = type.size == kTold ? bytes : type.size == kHalfTold ? bytes / 2 : type.size;
            column.Set(kSqlType, SchemaValue::Number(type.sqlType));
            column.Set(kSize, SchemaValue::Number(size));
            column.Set(kDigits, SchemaValue::Number(type.digits));
            column.Set(kOctets, SchemaValue::Number(type.size == kHalfTold ? bytes : size));
            if (type.name != nullptr) column.Set(kTypeName, SchemaValue::Text(type.name));
        }
    }
}

}  // namespace tk::ado
