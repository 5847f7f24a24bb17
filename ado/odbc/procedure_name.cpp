#include "ado/odbc/procedure_name.h"

#include "ado/odbc/ascii.h"

namespace tk::ado {

ProcedureName ReadProcedureName(std::string_view text) {
    ProcedureName read;
    std::size_t at = 0;
    for (;;) {
        while (at < text.size() && text[at] == ' ')
            ++at;
        std::string part;
        const char open = at < text.size() ? text[at] : ' ';
        const char close = open == '[' ? ']' : open;
        read.isQuoted = open == '"' || open == '`' || open == '[';
        if (read.isQuoted) {
            for (++at; at < text.size(); ++at) {
                if (text[at] == close && text.substr(at + 1, 1) != std::string_view(&close, 1)) break;
                if (text[at] == close) ++at;
                part += text[at];
            }
            if (at < text.size()) ++at;
        } else {
            while (at < text.size() && text[at] != '.' && text[at] != '(' && text[at] != ' ')
                part += text[at++];
        }
        read.name = std::move(part);
        read.length = at;
        if (at >= text.size() || text[at] != '.') return read;
        read.schema = std::move(read.name);
        ++at;
    }
}

std::string ReadCalledName(std::string_view sql) {
    constexpr std::string_view kCall = "call";
    std::string_view rest = Trim(sql);
    const auto skip = [&rest](char letter) {
        if (!rest.starts_with(letter)) return false;
        rest = Trim(rest.substr(1));
        return true;
    };
    if (skip('{') && rest.ends_with('}')) rest = Trim(rest.substr(0, rest.size() - 1));
    if (skip('?') && !skip('=')) return {};
    if (!StartsWithNoCase(rest, kCall)) return {};
    rest.remove_prefix(kCall.size());
    const std::string_view name = Trim(rest);
    // The word alone is not the beginning of another one, but a quoted name may follow it at once.
    const bool isApart = name.size() != rest.size() || name.find_first_of("\"`[") == 0;
    return isApart ? ReadProcedureName(name).name : std::string();
}

}  // namespace tk::ado
