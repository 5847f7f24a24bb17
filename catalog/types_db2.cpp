// How IBM DB2 spells the types of columns. Its long types have no flag of their own: one size stands for each.
#include <algorithm>

#include "catalog/column_type.h"

namespace tk::catalog {
namespace {

const char* BinaryType(const ColumnType& column) {
    constexpr int kLongGraphic = 16350;
    return column.fixedFlag != 0 && column.size == kLongGraphic ? "LONG VARGRAPHIC" : "BLOB (%d)";
}

const char* TextType(const ColumnType& column) {
    constexpr int kLongText = 32700;
    if (column.fixedFlag != 0) return "CHAR (%d)";
    return column.size == kLongText ? "LONG VARCHAR" : "VARCHAR (%d)";
}

constexpr TypeRule kTypes[] = {
    {2, "SMALLINT"},
    {3, "INT"},
    {4, "REAL"},
    {5, "DOUBLE"},
    {11, "SMALLINT"},
    {17, "SMALLINT"},
    {20, "BIGINT"},
    {.code = 128, .uses = Uses::Size, .choose = &BinaryType},
    {.code = 129, .uses = Uses::Size, .choose = &TextType},
    {131, "DECIMAL (%d,%d)", Uses::PrecisionScale},
    {133, "DATE"},
    {134, "TIME"},
    {135, "TIMESTAMP"},
};
static_assert(std::ranges::is_sorted(kTypes, {}, &TypeRule::code));

}  // namespace

std::span<const TypeRule> Db2Types() noexcept {
    return kTypes;
}

}  // namespace tk::catalog
