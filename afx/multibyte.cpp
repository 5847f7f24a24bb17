#include "afx/multibyte.h"

#include <cstring>

namespace tk::afx {

bool SetHolds(const char* set, const char* setEnd, const char* at, int length) noexcept {
    for (const char* member = set; member < setEnd;) {
        const int memberLength = CharacterLength(member, setEnd);
        if (memberLength == length && std::memcmp(member, at, static_cast<std::size_t>(length)) == 0) return true;
        member += memberLength;
    }
    return false;
}

std::size_t WholeCharacters(const char* text, std::size_t length, std::size_t limit) noexcept {
    if (length <= limit) return length;
    const char* const end = text + length;
    const char* at = text;
    while (true) {
        const char* const next = NextCharacter(at, end);
        if (static_cast<std::size_t>(next - text) > limit) return static_cast<std::size_t>(at - text);
        at = next;
    }
}

void CopyCut(char* buffer, std::size_t room, const char* text, std::size_t length) noexcept {
    if (buffer == nullptr || room == 0) return;
    const std::size_t kept = WholeCharacters(text, length, room - 1);
    std::memcpy(buffer, text, kept);
    buffer[kept] = '\0';
}

void EndWithin(char* buffer, std::size_t room) noexcept {
    if (room != 0) buffer[WholeCharacters(buffer, strnlen(buffer, room), room - 1)] = '\0';
}

}  // namespace tk::afx
