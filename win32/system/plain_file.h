// Files that may be opened to be read: whoever opens something else, a pipe for example, may have to wait for ever.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace tk::system {

/// Whether there is a plain file, behind links as well. What cannot be asked about is none.
inline bool IsPlainFile(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

}  // namespace tk::system
