// util/number_pattern.h - numbers by a pattern of digit places, as "#,##0.00" or "0.0%".
#pragma once

#include <afx.h>

#include <optional>
#include <string_view>

namespace tk::util {

/// @param value  finite
/// @return nothing for a format that is no pattern
std::optional<CString> FormatByPattern(double value, std::string_view format);

}  // namespace tk::util
