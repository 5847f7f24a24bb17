#include "support/tds/words.h"

#include <algorithm>

namespace tk::test::tds {
namespace {

bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsPartOfName(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
           c == '@' || c == '#' || c == '$';
}

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// The size of what stands in quotes at the front; a doubled quote is part of it.
std::size_t QuotedSize(std::string_view text, std::size_t at, char end) {
    for (++at; at < text.size(); ++at) {
        if (text[at] != end) continue;
        if (at + 1 == text.size() || text[at + 1] != end) return at + 1;
        ++at;
    }
    return text.size();
}

std::size_t BlankSize(std::string_view text) {
    if (IsBlank(text[0])) return 1;
    if (text.starts_with("--")) return std::min(text.find('\n'), text.size());
    if (!text.starts_with("/*")) return 0;
    const std::size_t end = text.find("*/", 2);
    return end == std::string_view::npos ? text.size() : end + 2;
}

std::size_t WordSize(std::string_view text) {
    if (text[0] == '\'' || text[0] == '"') return QuotedSize(text, 0, text[0]);
    if (text[0] == '[') return QuotedSize(text, 0, ']');
    if ((text[0] == 'N' || text[0] == 'n') && text.size() > 1 && text[1] == '\'') return QuotedSize(text, 1, '\'');
    if (!IsPartOfName(text[0])) return 1;
    return static_cast<std::size_t>(std::ranges::find_if_not(text, IsPartOfName) - text.begin());
}

}  // namespace

bool Word::IsText() const {
    return text.ends_with('\'') || text.ends_with('"');
}

std::string Word::Plain() const {
    std::string_view inner = text;
    const bool isNational = inner.size() > 2 && (inner[0] == 'N' || inner[0] == 'n') && inner[1] == '\'';
    if (isNational) inner.remove_prefix(1);
    if (inner.size() < 2 || (inner[0] != '\'' && inner[0] != '"' && inner[0] != '[')) return std::string(text);
    const char end = inner.back();
    inner = inner.substr(1, inner.size() - 2);
    std::string plain;
    for (std::size_t i = 0; i < inner.size(); ++i) {
        plain += inner[i];
        if (inner[i] == end) ++i;
    }
    return plain;
}

std::vector<Word> WordsOf(std::string_view text) {
    std::vector<Word> words;
    while (!text.empty()) {
        const std::size_t blank = BlankSize(text);
        const std::size_t size = blank != 0 ? blank : WordSize(text);
        if (blank == 0) words.push_back({text.substr(0, size)});
        text.remove_prefix(size);
    }
    return words;
}

bool EqualWords(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, &Lower, &Lower);
}

}  // namespace tk::test::tds
