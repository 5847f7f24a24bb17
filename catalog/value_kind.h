// catalog/value_kind.h - what a variant type is to somebody who writes or shows its value.
#pragma once

namespace tk::catalog {

enum class ValueKind { Other, Null, Number, Date, Text };

/// Arrays and references are Other, whatever they hold.
ValueKind KindOf(unsigned int vt) noexcept;

}  // namespace tk::catalog
