// gbk_steps.h - walking through terminated GBK texts by character.
//
// A lead byte takes the byte after it along, whatever it is, unless that is the terminator: this is how the platform
// steps. The conversions look closer (tkwin32/text.h).
#pragma once

#include <cstddef>
#include <cstdint>

#include "tkwin32/text.h"

namespace tk::text {

using Byte = unsigned char;

constexpr bool IsLead(Byte byte) noexcept {
    return IsGbkLead(static_cast<char>(byte));
}

/// Bytes of the character at `text`: 0 at the terminator, 1 for a lead byte right before it.
constexpr std::size_t CharacterSize(const Byte* text) noexcept {
    if (text[0] == 0) return 0;
    return IsLead(text[0]) && text[1] != 0 ? 2 : 1;
}

/// The same within a stretch of bytes.
constexpr std::size_t CharacterSize(const Byte* text, std::size_t bytes) noexcept {
    if (bytes == 0) return 0;
    return bytes == 1 ? (text[0] != 0 ? 1 : 0) : CharacterSize(text);
}

/// The code of the character at `text`: the byte, or lead * 256 + trail.
constexpr std::uint16_t CharacterCode(const Byte* text, std::size_t size) noexcept {
    return size == 2 ? static_cast<std::uint16_t>(text[0] << 8 | text[1]) : text[0];
}

/// The beginning of the character that ends right before `at`, which is behind `start`. A byte that is no lead byte
/// ends a character; from there on lead bytes pair up.
constexpr const Byte* PreviousCharacter(const Byte* start, const Byte* at) noexcept {
    const Byte* last = at - 1;
    const Byte* run = last;
    while (run > start && IsLead(run[-1]))
        --run;
    return (last - run) % 2 != 0 && *last != 0 ? last - 1 : last;
}

}  // namespace tk::text
