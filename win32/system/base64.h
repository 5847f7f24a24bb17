// Bytes as texts of 64 safe characters, padded with '='.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "windef.h"

namespace tk::system {

std::string ToBase64(std::span<const BYTE> bytes);

/// @return nothing for a text that ToBase64 does not make
std::optional<std::vector<BYTE>> FromBase64(std::string_view text);

}  // namespace tk::system
