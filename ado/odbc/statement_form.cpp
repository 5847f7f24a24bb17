#include "ado/odbc/statement_form.h"

#include <cstddef>

#include "ado/odbc/text_hash.h"

namespace tk::ado {
namespace {

constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

constexpr bool IsOfWord(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '_' || (c & 0x80) != 0;
}

}  // namespace

std::uint64_t StatementForm(std::string_view sql) noexcept {
    std::uint64_t hash = kEmptyHash;
    std::size_t begin = 0;  // of what has not been added yet
    const auto leaveOut = [&](std::size_t from, std::size_t to) {
        hash = AddToHash(hash, sql.substr(begin, from - begin));
        begin = to;
    };
    for (std::size_t at = 0; at < sql.size();) {
        const char c = sql[at];
        const std::size_t from = at;
        if (IsDigit(c)) {
            while (at < sql.size() && IsDigit(sql[at]))
                ++at;
            leaveOut(from, at);
        } else if (IsOfWord(c)) {
            while (at < sql.size() && IsOfWord(sql[at]))
                ++at;
        } else if (c == '\'') {
            const std::size_t end = sql.find('\'', at + 1);
            if (end == std::string_view::npos) return 0;
            if (sql.substr(at, end - at).find('\\') != std::string_view::npos) return 0;
            at = end + 1;
            leaveOut(from + 1, end);
        } else if (c == '"') {
            const std::size_t end = sql.find('"', at + 1);
            if (end == std::string_view::npos) return 0;
            at = end + 1;
        } else if (c == '$' || c == ';' || sql.substr(at, 2) == "--" || sql.substr(at, 2) == "/*") {
            return 0;
        } else {
            ++at;
        }
    }
    leaveOut(sql.size(), sql.size());
    return FinishHash(hash);
}

}  // namespace tk::ado
