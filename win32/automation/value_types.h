// value_types.h - what each VARTYPE code may be and what it owns; every function of the room asks this one table.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "win32/include/oaidl.h"

namespace tk::automation {

enum class Owns : std::uint8_t { Nothing, Text, Interface, Value, Record };

struct TypeFacts {
    std::uint8_t size = 0;  // bytes as an array element or behind a pointer; 0: neither is possible
    Owns owns = Owns::Nothing;
    bool plain = false;  // may stand in a VARIANT by itself
};

namespace detail {
struct TypeRow {
    VARTYPE type;
    TypeFacts facts;
};
constexpr TypeRow kTypeRows[] = {
    // type       size              owns             by itself
    {VT_EMPTY, {0, Owns::Nothing, true}},
    {VT_NULL, {0, Owns::Nothing, true}},
    {VT_I2, {2, Owns::Nothing, true}},
    {VT_I4, {4, Owns::Nothing, true}},
    {VT_R4, {4, Owns::Nothing, true}},
    {VT_R8, {8, Owns::Nothing, true}},
    {VT_CY, {8, Owns::Nothing, true}},
    {VT_DATE, {8, Owns::Nothing, true}},
    {VT_BSTR, {sizeof(void*), Owns::Text, true}},
    {VT_DISPATCH, {sizeof(void*), Owns::Interface, true}},
    {VT_ERROR, {4, Owns::Nothing, true}},
    {VT_BOOL, {2, Owns::Nothing, true}},
    {VT_VARIANT, {sizeof(VARIANT), Owns::Value, false}},
    {VT_UNKNOWN, {sizeof(void*), Owns::Interface, true}},
    {VT_DECIMAL, {16, Owns::Nothing, true}},
    {VT_I1, {1, Owns::Nothing, true}},
    {VT_UI1, {1, Owns::Nothing, true}},
    {VT_UI2, {2, Owns::Nothing, true}},
    {VT_UI4, {4, Owns::Nothing, true}},
    {VT_I8, {8, Owns::Nothing, true}},
    {VT_UI8, {8, Owns::Nothing, true}},
    {VT_INT, {4, Owns::Nothing, true}},
    {VT_UINT, {4, Owns::Nothing, true}},
    {VT_RECORD, {sizeof(void*), Owns::Record, true}},
};
constexpr auto kTypes = [] {
    std::array<TypeFacts, VT_RECORD + 1> types{};
    for (const TypeRow& row : kTypeRows)
        types[row.type] = row.facts;
    return types;
}();
}  // namespace detail

/// Facts about a type code without its array and reference bits; all zero for one that does not exist.
constexpr TypeFacts FactsOf(VARTYPE type) {
    return type < detail::kTypes.size() ? detail::kTypes[type] : TypeFacts{};
}

/// Whether a VARIANT may bear this type code, bits included.
constexpr bool IsVariantType(VARTYPE type) {
    if ((type & ~(VT_TYPEMASK | VT_ARRAY | VT_BYREF)) != 0) return false;
    const TypeFacts facts = FactsOf(type & VT_TYPEMASK);
    return (type & (VT_ARRAY | VT_BYREF)) == 0 ? facts.plain : facts.size != 0;
}

namespace detail {
constexpr std::uint64_t kSimpleTypes = [] {
    std::uint64_t bits = 0;
    for (const TypeRow& row : kTypeRows) {
        if (row.facts.plain && row.facts.owns == Owns::Nothing) bits |= std::uint64_t{1} << row.type;
    }
    return bits;
}();
}  // namespace detail

/// Whether a VARIANT of this type is its bits and nothing more; the quick question before the exact ones.
constexpr bool IsSimpleType(VARTYPE type) {
    return type < 64 && ((detail::kSimpleTypes >> type) & 1) != 0;
}

static_assert(IsSimpleType(VT_EMPTY) && IsSimpleType(VT_DECIMAL) && !IsSimpleType(VT_BSTR) && !IsSimpleType(15));
static_assert(IsVariantType(VT_EMPTY) && IsVariantType(VT_VARIANT | VT_BYREF) && IsVariantType(VT_VARIANT | VT_ARRAY));
static_assert(!IsVariantType(VT_VARIANT) && !IsVariantType(VT_NULL | VT_BYREF) && !IsVariantType(15));
static_assert(!IsVariantType(VT_VECTOR | VT_I4) && !IsVariantType(VT_RESERVED | VT_I4) && !IsVariantType(131));

}  // namespace tk::automation
