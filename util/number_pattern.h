// util/number_pattern.h - numbers by a pattern of digit places, as "#,##0.00" or "0.0%".
#pragma once

#include <string_view>

#include "util/text_builder.h"

namespace tk::util {

/// @param value   finite
/// @param result  receives the text; untouched after a failure
/// @return false for a format that is no pattern
bool FormatByPattern(double value, std::string_view format, TextBuilder& result);

}  // namespace tk::util
