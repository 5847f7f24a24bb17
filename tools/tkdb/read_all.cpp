#include "tools/tkdb/read_all.h"

#include <fstream>
#include <iostream>
#include <sstream>

namespace tk::tools {

bool ReadAll(const std::string& file, std::string& content) {
    std::ostringstream text;
    if (file == "-") {
        text << std::cin.rdbuf();
    } else {
        std::ifstream input(file, std::ios::binary);
        if (!input) return false;
        text << input.rdbuf();
    }
    content = text.str();
    return true;
}

}  // namespace tk::tools
