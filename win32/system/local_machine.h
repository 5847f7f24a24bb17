// Names under which this machine is reached.
#pragma once

#include <string_view>

namespace tk::system {

/// "localhost", "127.0.0.1", "." or the own name with or without its domain, in any case, with or without a leading
/// "\\"; an empty name too.
bool IsThisMachine(std::u16string_view name);

}  // namespace tk::system
