// How Sybase Adaptive Server spells the types of columns.
#include <algorithm>

#include "catalog/column_type.h"

namespace tk::catalog {
namespace {

constexpr int kFixed = 0x10;

// Contract: the size tells a long column here, not its flag.
constexpr bool IsLong(const ColumnType& column) noexcept {
    constexpr int kLongSize = 2'000'000'000;
    return column.size >= kLongSize;
}

const char* BinaryType(const ColumnType& column) {
    return IsLong(column) ? "IMAGE" : "VARBINARY (%d)";
}

// Contract: a fixed column gives VARCHAR, the others give CHAR. It looks swapped; it is the interface.
const char* TextType(const ColumnType& column) {
    if (IsLong(column)) return "TEXT";
    return column.fixedFlag != 0 ? "VARCHAR (%d)" : "CHAR (%d)";
}

const char* TimestampType(const ColumnType& column) {
    return column.fixedFlag == kFixed ? "TIMESTAMP" : "DATETIME";
}

constexpr TypeRule kTypes[] = {
    {2, "SMALLINT"},
    {3, "INT"},
    {4, "FLOAT"},
    {5, "DOUBLE"},
    {6, "MONEY"},
    {11, "BIT"},
    {14, "DECIMAL (%d,%d)", Uses::PrecisionScale},
    {16, "TINYINT"},
    {17, "TINYINT"},
    {20, "UNSIGNED BIGINT"},
    {72, "UNIQUEIDENTIFIER"},
    {.code = 128, .uses = Uses::Size, .choose = &BinaryType},
    {.code = 129, .uses = Uses::Size, .choose = &TextType},
    {131, "NUMERIC (%d,%d)", Uses::PrecisionScale},
    {133, "DATE"},
    {134, "TIME"},
    {.code = 135, .choose = &TimestampType},
};
static_assert(std::ranges::is_sorted(kTypes, {}, &TypeRule::code));

}  // namespace

std::span<const TypeRule> SybaseTypes() noexcept {
    return kTypes;
}

}  // namespace tk::catalog
