#include "win32/system/command_line.h"

namespace tk::system {
namespace {

bool IsBlank(char character) noexcept {
    return character == ' ' || character == '\t';
}

}  // namespace

std::vector<std::string> SplitCommandLine(std::string_view line) {
    std::vector<std::string> words;
    std::size_t at = 0;
    for (;;) {
        while (at < line.size() && IsBlank(line[at]))
            ++at;
        if (at == line.size()) return words;
        std::string& word = words.emplace_back();
        bool quoted = false;
        for (; at < line.size() && (quoted || !IsBlank(line[at])); ++at) {
            std::size_t backslashes = 0;
            while (at < line.size() && line[at] == '\\') {
                ++backslashes;
                ++at;
            }
            const bool mark = at < line.size() && line[at] == '"';
            word.append(mark ? backslashes / 2 : backslashes, '\\');
            if (mark && backslashes % 2 == 0) {
                quoted = !quoted;
            } else if (at < line.size() && (quoted || !IsBlank(line[at]))) {
                word += line[at];
            } else {
                break;  // behind the backslashes the word ends
            }
        }
    }
}

}  // namespace tk::system
