// How Oracle spells the types of columns.
#include <algorithm>

#include "catalog/column_type.h"

namespace tk::catalog {
namespace {

constexpr TypeRule kTypes[] = {
    // code, text, arguments, long column, fixed column
    {2, "FLOAT (%d,%d)", Uses::PrecisionScale},
    {3, "FLOAT (%d,%d)", Uses::PrecisionScale},
    {4, "FLOAT (%d,%d)", Uses::PrecisionScale},
    {5, "FLOAT (%d,%d)", Uses::PrecisionScale},
    // Contract: bytes are spelled as text, never as RAW.
    {128, "VARCHAR2 (%d)", Uses::Size, "LONG", "CHAR (%d)"},
    {129, "VARCHAR2 (%d)", Uses::Size, "LONG", "CHAR (%d)"},
    {131, "NUMBER (%d,%d)", Uses::PrecisionScale},
    {135, "DATE"},
    {139, "NUMBER (%d,%d)", Uses::PrecisionScale},
};
static_assert(std::ranges::is_sorted(kTypes, {}, &TypeRule::code));

}  // namespace

std::span<const TypeRule> OracleTypes() noexcept {
    return kTypes;
}

}  // namespace tk::catalog
