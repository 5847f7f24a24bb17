// util/text.h - borrowed views of texts and the character steps of GBK, shared by the files of this room.
#pragma once

#include <afx.h>

#include <cstddef>
#include <string_view>

namespace tk::util {

inline const char* OrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

/// A null text is an empty one; the view of it points at a terminator like any other.
inline std::string_view View(const char* text) {
    return OrEmpty(text);
}
inline std::string_view View(const CString& text) {
    return {static_cast<LPCTSTR>(text), static_cast<std::size_t>(text.GetLength())};
}

inline CString ToText(std::string_view text) {
    return {text.data(), static_cast<int>(text.size())};
}

/// A position as the interface gives it: -1 for "nowhere".
inline int ToPosition(std::size_t position) {
    return position == std::string_view::npos ? -1 : static_cast<int>(position);
}

constexpr bool IsLeadByte(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code >= 0x81 && code <= 0xFE;
}

constexpr bool IsTrailByte(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code >= 0x40 && code <= 0xFE && code != 0x7F;
}

/// Bytes of the character at a position: 2 for a lead byte with a proper second one, else 1: half a character does not
/// swallow the blank or the separator behind it. CString tells characters apart in the same way.
constexpr std::size_t CharacterLength(std::string_view text, std::size_t position) {
    return IsLeadByte(text[position]) && position + 1 < text.size() && IsTrailByte(text[position + 1]) ? 2 : 1;
}

/// The text within a limit of bytes, cut behind a whole character.
constexpr std::string_view WholeCharacters(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text;
    std::size_t end = 0;
    while (end < limit) {
        const std::size_t next = end + CharacterLength(text, end);
        if (next > limit) break;
        end = next;
    }
    return text.substr(0, end);
}

}  // namespace tk::util
