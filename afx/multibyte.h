// afx/multibyte.h - stepping through GBK text: every search and trim of CString moves with it.
#pragma once

#include <cstddef>

namespace tk::afx {

inline bool IsLead(char ch) noexcept {
    const auto byte = static_cast<unsigned char>(ch);
    return byte >= 0x81 && byte <= 0xFE;
}

inline bool IsTrail(char ch) noexcept {
    const auto byte = static_cast<unsigned char>(ch);
    return byte >= 0x40 && byte != 0x7F && byte != 0xFF;
}

/// Bytes of the character at a place: 2 for a lead byte with a proper second one, else 1. So a half character at the
/// end of a column does not swallow the comma or quote behind it, as in the conversions to wide text.
inline int CharacterLength(const char* at, const char* end) noexcept {
    return IsLead(*at) && at + 1 < end && IsTrail(at[1]) ? 2 : 1;
}

/// Bytes below this are never part of a double-byte character: they can be searched for byte by byte.
inline constexpr unsigned char kFirstTrail = 0x40;
inline bool IsAlwaysAlone(char ch) noexcept {
    return static_cast<unsigned char>(ch) < kFirstTrail;
}

inline const char* NextCharacter(const char* at, const char* end) noexcept {
    return at + CharacterLength(at, end);
}

/// Whether a set of characters, a NUL-terminated text, holds the character at a place.
bool SetHolds(const char* set, const char* setEnd, const char* at, int length) noexcept;

/// The most bytes, up to a limit, that end between two characters.
std::size_t WholeCharacters(const char* text, std::size_t length, std::size_t limit) noexcept;

/// Copies a text into a buffer: cut between characters, always terminated. Room 0 writes nothing.
void CopyCut(char* buffer, std::size_t room, const char* text, std::size_t length) noexcept;

/// Ends the text in a buffer that others have filled, between characters where they filled it to its end.
void EndWithin(char* buffer, std::size_t room) noexcept;

}  // namespace tk::afx
