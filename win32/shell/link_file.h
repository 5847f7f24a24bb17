// What a shortcut holds, and its forms on disk.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "windef.h"

namespace tk::shell {

struct Link {
    std::u16string target;
    std::u16string description;
    std::u16string relativePath;
    std::u16string directory;
    std::u16string arguments;
    std::u16string iconPath;
    int icon = 0;
    int show = 1;
    WORD hotkey = 0;
};

/// The shell's binary format: a header, the target, the texts in UTF-16.
std::string WriteLinkFile(const Link& link);
/// @return nothing for anything that is no whole shortcut
std::optional<Link> ReadLinkFile(std::string_view content);

/// @param name  what the entry is called
std::string WriteDesktopEntry(const Link& link, const std::string& name);

}  // namespace tk::shell
