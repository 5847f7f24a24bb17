#include "ado/odbc/statement_form.h"

#include <array>
#include <cstddef>

#include "ado/odbc/ascii.h"
#include "ado/odbc/text_hash.h"

namespace tk::ado {
namespace {

/// What a character begins.
enum class Begins : std::uint8_t { Nothing, Word, Number, Text, Name, Doubt };

constexpr auto kBegins = [] {
    std::array<Begins, 256> begins{};
    for (unsigned c = 0; c < begins.size(); ++c) {
        if (IsOfWord(static_cast<char>(c))) begins[c] = Begins::Word;
        if (c >= '0' && c <= '9') begins[c] = Begins::Number;
    }
    begins['\''] = Begins::Text;
    for (const unsigned char c : std::string_view("\"`["))
        begins[c] = Begins::Name;
    for (const unsigned char c : std::string_view("$;#-/"))
        begins[c] = Begins::Doubt;
    return begins;
}();

Begins BeginsAt(std::string_view sql, std::size_t at) noexcept {
    return kBegins[static_cast<unsigned char>(sql[at])];
}

/// True for minus and division; other characters of doubt are, or begin, what systems understand differently.
bool IsPlainOperator(std::string_view sql, std::size_t at) noexcept {
    const std::string_view two = sql.substr(at, 2);
    return (sql[at] == '-' && two != "--") || (sql[at] == '/' && two != "/*");
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
        const std::size_t from = at;
        switch (BeginsAt(sql, at)) {
            case Begins::Nothing:
                ++at;
                break;
            case Begins::Word:
                do {
                    ++at;
                } while (at < sql.size() && (BeginsAt(sql, at) == Begins::Word || BeginsAt(sql, at) == Begins::Number));
                break;
            case Begins::Number:
                do {
                    ++at;
                } while (at < sql.size() && BeginsAt(sql, at) == Begins::Number);
                leaveOut(from, at);
                break;
            case Begins::Text:
            case Begins::Name: {
                const std::size_t end = sql.find(sql[at] == '[' ? ']' : sql[at], at + 1);
                if (end == std::string_view::npos) return 0;
                const bool isText = sql[at] == '\'';
                if (at > 0 && sql[at - 1] == '&') return 0;  // U&"..." UESCAPE '...': what it spells stands behind it
                // A name with a quote in it may be none: "a['x]']". Backslashes mean something on some systems.
                if (sql.substr(from, end - from).find_first_of(isText ? "\\" : "\\'", 1) != std::string_view::npos)
                    return 0;
                at = end + 1;
                if (isText) leaveOut(from + 1, end);
                break;
            }
            case Begins::Doubt:
                if (!IsPlainOperator(sql, at)) return 0;
                ++at;
                break;
        }
    }
    leaveOut(sql.size(), sql.size());
    return FinishHash(hash);
}

}  // namespace tk::ado
