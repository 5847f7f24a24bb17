// convert.h - one value of any type into another type; every conversion of the room comes through here.
#pragma once

#include "win32/include/oleauto.h"

namespace tk::automation {

/// How a conversion is to be done. Flags are those of the Var...From... functions.
struct ConvertRules {
    LCID locale = 0;
    ULONG flags = 0;
    bool namedBooleans = true;  // "True" and "False" instead of -1 and 0
    bool defaultValues = true;  // an object stands for its default value
};

/// Converts a plain value: no reference, no array, no object. The result owns nothing of the source.
/// @param target  VT_BSTR or a number type
/// @return DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW, E_OUTOFMEMORY; `result` is then untouched
HRESULT ConvertPlain(const VARIANT& source, VARTYPE target, const ConvertRules& rules, VARIANT& result) noexcept;

/// The same from a NUL-terminated text.
HRESULT ConvertText(const OLECHAR* text, VARTYPE target, const ConvertRules& rules, VARIANT& result) noexcept;

/// The same from an object's default value, which is asked for.
HRESULT ConvertObject(IDispatch* object, VARTYPE target, const ConvertRules& rules, VARIANT& result) noexcept;

/// Asks an object for its default value, and that for its own as long as it is an object.
/// @param value  VT_EMPTY before; afterwards no object; the caller clears it
HRESULT DefaultValueOf(IDispatch* object, LCID locale, VARIANT& value) noexcept;

}  // namespace tk::automation
