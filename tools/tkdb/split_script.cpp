#include "tools/tkdb/split_script.h"

#include <algorithm>

namespace tk::tools {

std::vector<std::string> SplitScript(const std::string& script) {
    std::vector<std::string> statements;
    std::string current;
    const auto finish = [&] {
        const std::size_t first = current.find_first_not_of(" \t\r\n");
        if (first != std::string::npos) {
            const std::size_t last = current.find_last_not_of(" \t\r\n");
            statements.push_back(current.substr(first, last - first + 1));
        }
        current.clear();
    };
    for (std::size_t i = 0; i < script.size(); ++i) {
        const char c = script[i];
        std::size_t end = i;  // the last character of a quoted part or comment
        if (c == '\'' || c == '"' || c == '`') {
            end = std::min(script.find(c, i + 1), script.size() - 1);
        } else if (script.compare(i, 2, "--") == 0) {
            end = std::min(script.find('\n', i), script.size() - 1);
        } else if (script.compare(i, 2, "/*") == 0) {
            const std::size_t close = script.find("*/", i + 2);
            end = close == std::string::npos ? script.size() - 1 : close + 1;
        }
        if (end != i) {
            current.append(script, i, end - i + 1);
            i = end;
        } else if (c == ';') {
            finish();
        } else {
            current += c;
        }
    }
    finish();
    return statements;
}

}  // namespace tk::tools
