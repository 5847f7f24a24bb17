// ado/objects/arrays.h - arrays that arrive in a VARIANT, and byte arrays.
#pragma once

#include <span>
#include <vector>

#include "ado/cursor/value.h"

namespace tk::ado {

/// The items of a one-dimensional array of any kind of plain values.
/// @throws AdoError 3001 for anything else
std::vector<Value> ArrayItems(const Value& array);

/// One value as a list of itself, an array as its items.
std::vector<Value> ListItems(const Value& value);

/// The bytes of a VT_ARRAY | VT_UI1; a copy. @throws AdoError 3001 for anything else
std::vector<BYTE> BytesOf(const Value& array);

Value BytesValue(std::span<const BYTE> bytes);

}  // namespace tk::ado
