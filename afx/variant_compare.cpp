// When two VARIANTs are the same: type first, then the value, without any conversion.
#include <cstring>

#include "afx/array_compare.h"
#include "afx_variant.h"

namespace {

struct Comparison {
    VARTYPE vt;
    bool (*same)(const VARIANT&, const VARIANT&) noexcept;
};

bool SameText(const VARIANT& first, const VARIANT& second) noexcept {
    const UINT length = SysStringByteLen(first.bstrVal);
    return length == SysStringByteLen(second.bstrVal) &&
           (length == 0 || std::memcmp(first.bstrVal, second.bstrVal, length) == 0);
}

bool SameDecimal(const VARIANT& first, const VARIANT& second) noexcept {
    return first.decVal.signscale == second.decVal.signscale && first.decVal.Hi32 == second.decVal.Hi32 &&
           first.decVal.Lo64 == second.decVal.Lo64;
}

bool Always(const VARIANT&, const VARIANT&) noexcept {
    return true;
}

constexpr Comparison kComparisons[] = {
    {VT_EMPTY, Always},
    {VT_NULL, Always},
    {VT_I2, [](const VARIANT& a, const VARIANT& b) noexcept { return a.iVal == b.iVal; }},
    {VT_I4, [](const VARIANT& a, const VARIANT& b) noexcept { return a.lVal == b.lVal; }},
    {VT_R4, [](const VARIANT& a, const VARIANT& b) noexcept { return a.fltVal == b.fltVal; }},
    {VT_R8, [](const VARIANT& a, const VARIANT& b) noexcept { return a.dblVal == b.dblVal; }},
    {VT_CY, [](const VARIANT& a, const VARIANT& b) noexcept { return a.cyVal.int64 == b.cyVal.int64; }},
    {VT_DATE, [](const VARIANT& a, const VARIANT& b) noexcept { return a.date == b.date; }},
    {VT_BSTR, SameText},
    {VT_DISPATCH, [](const VARIANT& a, const VARIANT& b) noexcept { return a.pdispVal == b.pdispVal; }},
    {VT_ERROR, [](const VARIANT& a, const VARIANT& b) noexcept { return a.scode == b.scode; }},
    {VT_BOOL, [](const VARIANT& a, const VARIANT& b) noexcept { return a.boolVal == b.boolVal; }},
    {VT_UNKNOWN, [](const VARIANT& a, const VARIANT& b) noexcept { return a.punkVal == b.punkVal; }},
    {VT_DECIMAL, SameDecimal},
    {VT_I1, [](const VARIANT& a, const VARIANT& b) noexcept { return a.cVal == b.cVal; }},
    {VT_UI1, [](const VARIANT& a, const VARIANT& b) noexcept { return a.bVal == b.bVal; }},
    {VT_UI2, [](const VARIANT& a, const VARIANT& b) noexcept { return a.uiVal == b.uiVal; }},
    {VT_UI4, [](const VARIANT& a, const VARIANT& b) noexcept { return a.ulVal == b.ulVal; }},
    {VT_I8, [](const VARIANT& a, const VARIANT& b) noexcept { return a.llVal == b.llVal; }},
    {VT_UI8, [](const VARIANT& a, const VARIANT& b) noexcept { return a.ullVal == b.ullVal; }},
    {VT_INT, [](const VARIANT& a, const VARIANT& b) noexcept { return a.intVal == b.intVal; }},
    {VT_UINT, [](const VARIANT& a, const VARIANT& b) noexcept { return a.uintVal == b.uintVal; }},
};

}  // namespace

BOOL COleVariant::operator==(const VARIANT& varSrc) const noexcept {
    if (this == &varSrc) return TRUE;
    if (vt != varSrc.vt) return FALSE;
    if (vt & VT_BYREF) return byref == varSrc.byref;
    if (vt & VT_ARRAY) return tk::afx::SameArrays(parray, varSrc.parray);
    for (const Comparison& comparison : kComparisons) {
        if (comparison.vt == vt) return comparison.same(*this, varSrc);
    }
    return FALSE;
}
