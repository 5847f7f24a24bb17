#include "ado/schema/declared_type.h"

#include <array>
#include <charconv>
#include <string>

#include "ado/odbc/odbc_api.h"

namespace tk::ado {
namespace {

/// Where a word stands matters: the first row whose word the declaration begins with counts.
constexpr struct {
    std::string_view word;
    int sqlType;
    int size;
    int digits;
} kWords[] = {
    {"BIGINT", SQL_BIGINT, 19, 0},
    {"BINARY", SQL_BINARY, 0, 0},
    {"BIT", SQL_BIT, 1, 0},
    {"BLOB", SQL_LONGVARBINARY, 0, 0},
    {"BOOL", SQL_BIT, 1, 0},
    {"CHARACTER VARYING", SQL_VARCHAR, 255, 0},
    {"CHAR", SQL_CHAR, 1, 0},
    {"CLOB", SQL_LONGVARCHAR, 0, 0},
    {"CURRENCY", SQL_DECIMAL, 19, 4},
    {"DATETIME", SQL_TYPE_TIMESTAMP, 23, 3},
    {"DATE", SQL_TYPE_DATE, 10, 0},
    {"DECIMAL", SQL_DECIMAL, 18, 0},
    {"DOUBLE", SQL_DOUBLE, 15, 0},
    {"FLOAT", SQL_DOUBLE, 15, 0},
    {"GUID", SQL_GUID, 36, 0},
    {"IMAGE", SQL_LONGVARBINARY, 0, 0},
    {"INT2", SQL_SMALLINT, 5, 0},
    {"INT8", SQL_BIGINT, 19, 0},
    {"INT", SQL_INTEGER, 10, 0},
    {"LONGBLOB", SQL_LONGVARBINARY, 0, 0},
    {"LONGTEXT", SQL_LONGVARCHAR, 0, 0},
    {"MEDIUMINT", SQL_INTEGER, 10, 0},
    {"MEMO", SQL_LONGVARCHAR, 0, 0},
    {"MONEY", SQL_DECIMAL, 19, 4},
    {"NATIVE CHARACTER", SQL_WCHAR, 1, 0},
    {"NCHAR", SQL_WCHAR, 1, 0},
    {"NTEXT", SQL_WLONGVARCHAR, 0, 0},
    {"NUMBER", SQL_NUMERIC, 18, 0},
    {"NUMERIC", SQL_NUMERIC, 18, 0},
    {"NVARCHAR", SQL_WVARCHAR, 255, 0},
    {"REAL", SQL_DOUBLE, 15, 0},
    {"SMALLINT", SQL_SMALLINT, 5, 0},
    {"TEXT", SQL_LONGVARCHAR, 0, 0},
    {"TIMESTAMP", SQL_TYPE_TIMESTAMP, 23, 3},
    {"TIME", SQL_TYPE_TIME, 8, 0},
    {"TINYINT", SQL_TINYINT, 3, 0},
    {"UNIQUEIDENTIFIER", SQL_GUID, 36, 0},
    {"UNSIGNED BIG INT", SQL_BIGINT, 19, 0},
    {"VARBINARY", SQL_VARBINARY, 255, 0},
    {"VARCHAR", SQL_VARCHAR, 255, 0},
    {"VARYING CHARACTER", SQL_VARCHAR, 255, 0},
};

/// Words anywhere in it, by the rules that decide how such a database keeps the values.
constexpr struct {
    std::string_view word;
    int sqlType;
    int size;
} kAffinities[] = {
    {"INT", SQL_INTEGER, 10},     {"CHAR", SQL_VARCHAR, 255},     {"CLOB", SQL_LONGVARCHAR, 0},
    {"TEXT", SQL_LONGVARCHAR, 0}, {"BLOB", SQL_LONGVARBINARY, 0}, {"REAL", SQL_DOUBLE, 15},
    {"FLOA", SQL_DOUBLE, 15},     {"DOUB", SQL_DOUBLE, 15},
};

int NumberAt(std::string_view text, std::size_t at) noexcept {
    while (at < text.size() && (text[at] == ' ' || text[at] == '(' || text[at] == ','))
        ++at;
    int number = 0;
    std::from_chars(text.data() + at, text.data() + text.size(), number);
    return number < 0 ? 0 : number;
}

}  // namespace

DeclaredType ReadDeclaredType(std::string_view declaration) noexcept {
    // Longer ones name no type that anybody knows.
    std::array<char, 128> buffer{};
    const std::size_t length = declaration.size() < buffer.size() ? declaration.size() : buffer.size();
    for (std::size_t i = 0; i < length; ++i) {
        const char c = declaration[i];
        buffer[i] = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    }
    const std::string_view upper(buffer.data(), length);
    DeclaredType type{SQL_VARCHAR, 255, 0};
    bool known = upper.empty();
    for (const auto& row : kWords) {
        if (known || !upper.starts_with(row.word)) continue;
        type = {row.sqlType, row.size, row.digits};
        known = true;
    }
    for (const auto& row : kAffinities) {
        if (known || upper.find(row.word) == std::string_view::npos) continue;
        type = {row.sqlType, row.size, 0};
        known = true;
    }
    if (!known) type = {SQL_NUMERIC, 18, 0};
    if (const std::size_t open = upper.find('('); open != std::string_view::npos) {
        const bool takesSize = type.sqlType == SQL_CHAR || type.sqlType == SQL_VARCHAR || type.sqlType == SQL_WCHAR ||
                               type.sqlType == SQL_WVARCHAR || type.sqlType == SQL_BINARY ||
                               type.sqlType == SQL_VARBINARY || type.sqlType == SQL_NUMERIC ||
                               type.sqlType == SQL_DECIMAL;
        if (takesSize) {
            type.size = NumberAt(upper, open);
            const std::size_t comma = upper.find(',', open);
            if (type.sqlType == SQL_NUMERIC || type.sqlType == SQL_DECIMAL) {
                type.digits = comma == std::string_view::npos ? 0 : NumberAt(upper, comma);
            }
        }
    }
    return type;
}

}  // namespace tk::ado
