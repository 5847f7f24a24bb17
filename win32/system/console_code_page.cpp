#include <wincon.h>

#include <cstdlib>
#include <string_view>

namespace {

constexpr UINT kGbk = 936;
constexpr UINT kUtf8 = 65001;

/// The locale's name as the environment has it: installed or not, it says what the terminal understands.
std::string_view CharacterLocale() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') return value;
    }
    return {};
}

UINT TerminalCodePage() {
    const std::string_view locale = CharacterLocale();
    const std::string_view name = locale.substr(0, locale.find('@'));
    const std::size_t point = name.find('.');
    if (point == std::string_view::npos) return name == "zh_CN" ? kGbk : kUtf8;
    const std::string_view codeset = name.substr(point + 1);
    return codeset.starts_with("GB") || codeset.starts_with("gb") ? kGbk : kUtf8;
}

}  // namespace

UINT GetConsoleCP() {
    return TerminalCodePage();
}

UINT GetConsoleOutputCP() {
    return TerminalCodePage();
}
