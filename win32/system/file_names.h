// Names of files: GBK at the interface, UTF-8 on the file system.
#pragma once

#include <string>
#include <string_view>

#include "tkwin32/text.h"

namespace tk::system {

/// @param name  may be null, which is an empty name and finds nothing
inline std::string ToFileSystem(const char* name) {
    return name != nullptr ? text::GbkToUtf8(name) : std::string();
}
inline std::string FromFileSystem(std::string_view name) {
    return text::Utf8ToGbk(name);
}

}  // namespace tk::system
