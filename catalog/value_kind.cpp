#include "catalog/value_kind.h"

#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <iterator>

namespace tk::catalog {
namespace {

struct Row {
    unsigned int vt;
    ValueKind kind;
};

constexpr Row kRows[] = {
    {VT_EMPTY, ValueKind::Null},  {VT_NULL, ValueKind::Null},      {VT_I2, ValueKind::Number},
    {VT_I4, ValueKind::Number},   {VT_R4, ValueKind::Number},      {VT_R8, ValueKind::Number},
    {VT_CY, ValueKind::Number},   {VT_DATE, ValueKind::Date},      {VT_BSTR, ValueKind::Text},
    {VT_BOOL, ValueKind::Number}, {VT_DECIMAL, ValueKind::Number}, {VT_I1, ValueKind::Number},
    {VT_UI1, ValueKind::Number},  {VT_UI2, ValueKind::Number},     {VT_UI4, ValueKind::Number},
    {VT_I8, ValueKind::Number},   {VT_UI8, ValueKind::Number},     {VT_INT, ValueKind::Number},
    {VT_UINT, ValueKind::Number}, {VT_LPSTR, ValueKind::Text},     {VT_LPWSTR, ValueKind::Text},
};
static_assert(std::ranges::is_sorted(kRows, {}, &Row::vt));

}  // namespace

ValueKind KindOf(unsigned int vt) noexcept {
    const Row* row = std::ranges::lower_bound(kRows, vt, {}, &Row::vt);
    return row != std::end(kRows) && row->vt == vt ? row->kind : ValueKind::Other;
}

}  // namespace tk::catalog
