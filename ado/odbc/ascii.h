// ado/odbc/ascii.h - keywords and names of statements: their letters, and comparisons without case; bytes above 127
// compare as they are.
#pragma once

#include <algorithm>
#include <string_view>

namespace tk::ado {

constexpr char LowerAscii(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
}

/// Letters, digits, "_" and everything beyond ASCII: what names and keywords are made of on every system.
constexpr bool IsOfWord(char letter) noexcept {
    const auto byte = static_cast<unsigned char>(letter);
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == '_' || byte >= 0x80;
}

constexpr bool EqualsNoCase(std::string_view first, std::string_view second) noexcept {
    return std::ranges::equal(first, second, {}, LowerAscii, LowerAscii);
}

constexpr bool StartsWithNoCase(std::string_view text, std::string_view start) noexcept {
    return text.size() >= start.size() && EqualsNoCase(text.substr(0, start.size()), start);
}

constexpr bool ContainsNoCase(std::string_view text, std::string_view part) noexcept {
    const auto same = [](char first, char second) { return LowerAscii(first) == LowerAscii(second); };
    return part.empty() || std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

constexpr std::string_view Trim(std::string_view text) noexcept {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace tk::ado
