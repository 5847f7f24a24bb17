// util/variant_types.h - which types of values the conversions of this room know.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace tk::util {

/// The database layer's tag for a fixed-point number; its value has the form of VT_DECIMAL.
inline constexpr VARTYPE kNumericType = 131;

/// The decimal in a value of VT_DECIMAL or kNumericType.
inline DECIMAL DecimalOf(const VARIANT& value) {
    DECIMAL decimal = value.decVal;
    decimal.wReserved = 0;  // where the type tag was
    return decimal;
}

}  // namespace tk::util
