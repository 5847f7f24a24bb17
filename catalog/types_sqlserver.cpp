// How Microsoft SQL Server spells the types of columns.
#include <algorithm>

#include "catalog/column_type.h"

namespace tk::catalog {
namespace {

constexpr TypeRule kTypes[] = {
    // code, text, arguments, long column, fixed column
    {2, "SMALLINT"},
    {3, "INT"},
    {4, "REAL"},
    {5, "FLOAT"},
    {6, "MONEY"},
    {11, "BIT"},
    {14, "DECIMAL (%d,%d)", Uses::PrecisionScale},
    {17, "TINYINT"},
    {72, "UNIQUEIDENTIFIER"},
    {128, "VARBINARY (%d)", Uses::Size, "IMAGE", "TIMESTAMP"},
    {129, "VARCHAR (%d)", Uses::Size, "TEXT", "CHAR (%d)"},
    // Contract: a long wide text keeps its length, a long narrow one has none.
    {130, "NVARCHAR (%d)", Uses::Size, "NTEXT (%d)", "NCHAR (%d)"},
    {131, "NUMERIC (%d,%d)", Uses::PrecisionScale},
    {135, "DATETIME"},
};
static_assert(std::ranges::is_sorted(kTypes, {}, &TypeRule::code));

}  // namespace

std::span<const TypeRule> SqlServerTypes() noexcept {
    return kTypes;
}

}  // namespace tk::catalog
