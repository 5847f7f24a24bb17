// Shortcuts as the desktops of this system read them.
#include "tkwin32/text.h"
#include "win32/shell/link_file.h"
#include "win32/system/command_line.h"

namespace tk::shell {
namespace {

/// A value: what would end the line or open an escape is escaped.
std::string Value(const std::string& text) {
    std::string value;
    for (std::size_t i = 0; i < text.size(); ++i) {
        switch (text[i]) {
            case '\\':
                value += "\\\\";
                break;
            case '\n':
                value += "\\n";
                break;
            case '\r':
                value += "\\r";
                break;
            case '\t':
                value += "\\t";
                break;
            case ' ':
                value += i == 0 ? "\\s" : " ";
                break;
            default:
                value += text[i];
        }
    }
    return value;
}

/// A word of a command: in quotation marks where it holds anything a shell would look at; '%' opens a field there.
std::string CommandWord(const std::string& word) {
    constexpr std::string_view kReserved = " \t\n\"'\\><~|&;$*?#()`";
    std::string written;
    for (const char character : word) {
        if (character == '%') written += '%';
        if (character == '"' || character == '`' || character == '$' || character == '\\') written += '\\';
        written += character;
    }
    const bool plain = !word.empty() && word.find_first_of(kReserved) == std::string::npos;
    return plain ? written : '"' + written + '"';
}

}  // namespace

std::string WriteDesktopEntry(const Link& link, const std::string& name) {
    std::string command = CommandWord(text::Utf16ToUtf8(link.target));
    for (const std::string& word : system::SplitCommandLine(text::Utf16ToUtf8(link.arguments)))
        command += ' ' + CommandWord(word);
    std::string entry = "[Desktop Entry]\nType=Application\nVersion=1.0\nName=" + Value(name) + "\n";
    if (!link.description.empty()) entry += "Comment=" + Value(text::Utf16ToUtf8(link.description)) + "\n";
    entry += "Exec=" + Value(command) + "\n";
    if (!link.directory.empty()) entry += "Path=" + Value(text::Utf16ToUtf8(link.directory)) + "\n";
    if (!link.iconPath.empty()) entry += "Icon=" + Value(text::Utf16ToUtf8(link.iconPath)) + "\n";
    return entry + "Terminal=false\n";
}

}  // namespace tk::shell
