// util/number_printf.h - numbers by a format of printf, as "%.2f" or "%08X".
#pragma once

#include <string_view>

#include "util/text_builder.h"

namespace tk::util {

/// @param value   finite
/// @param result  receives the text; what is in it after a failure is of no use
/// @return false for a format that does not have exactly one conversion of a number, and for an integer conversion of a
///         number beyond 64 bits
bool FormatByPrintf(double value, std::string_view format, TextBuilder& result);

}  // namespace tk::util
