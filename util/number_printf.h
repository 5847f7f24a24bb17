// util/number_printf.h - numbers by a format of printf, as "%.2f" or "%08X".
#pragma once

#include <afx.h>

#include <optional>
#include <string_view>

namespace tk::util {

/// @param value  finite
/// @return nothing for a format that does not have exactly one conversion of a number, and for an integer conversion
///         of a number beyond 64 bits
std::optional<CString> FormatByPrintf(double value, std::string_view format);

}  // namespace tk::util
