// ado/odbc/quoted_name.h - a name as a statement has it.
#pragma once

#include <string>
#include <string_view>

namespace tk::ado {

/// @param quote  what the driver tells: one character, or empty or a blank where there are no quotes
inline std::string QuotedName(std::string_view name, const std::string& quote) {
    if (quote.empty() || quote == " ") return std::string(name);
    std::string quoted = quote;
    for (const char c : name) {
        quoted += c;
        if (quote.size() == 1 && c == quote[0]) quoted += c;
    }
    return quoted += quote;
}

}  // namespace tk::ado
