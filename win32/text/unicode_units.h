// unicode_units.h - one character at a time: UTF-8 sequences and surrogate pairs, well formed or not.
//
// The conversions take common characters in their own loops and come here for everything else.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tk::text {

inline constexpr char32_t kReplacement = 0xFFFD;

/// A character and the units it took. Ill-formed input is kReplacement.
struct Decoded {
    char32_t character;
    std::uint32_t units;
    bool wellFormed;
};

/// Takes one UTF-8 sequence of a text that is not empty. An ill-formed one ends before the first byte that cannot
/// continue it, so no character that follows is swallowed.
inline Decoded DecodeUtf8(const std::uint8_t* source, std::size_t count) noexcept {
    const std::uint8_t lead = source[0];
    if (lead < 0x80) return {lead, 1, true};
    // What may follow a lead byte: E0 and F0 exclude forms that are too long, ED surrogates, F4 what is above U+10FFFF.
    std::uint32_t length;
    std::uint8_t low = 0x80;
    std::uint8_t high = 0xBF;
    char32_t character;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        character = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        character = lead & 0x0Fu;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        character = lead & 0x07u;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return {kReplacement, 1, false};
    }
    for (std::uint32_t i = 1; i < length; ++i) {
        if (i == count || source[i] < low || source[i] > high) return {kReplacement, i, false};
        character = character << 6 | (source[i] & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {character, length, true};
}

constexpr bool IsHighSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}
constexpr bool IsSurrogate(char16_t unit) noexcept {
    return (unit & 0xF800) == 0xD800;
}

/// Takes one character of a UTF-16 text that is not empty. A lone surrogate is ill-formed.
inline Decoded DecodeUtf16(const char16_t* source, std::size_t count) noexcept {
    const char16_t unit = source[0];
    if (!IsSurrogate(unit)) return {unit, 1, true};
    if (IsHighSurrogate(unit) && count > 1 && IsLowSurrogate(source[1])) {
        return {0x10000u + ((unit & 0x3FFu) << 10 | (source[1] & 0x3FFu)), 2, true};
    }
    return {kReplacement, 1, false};
}

/// The bytes of a character in UTF-8.
constexpr std::size_t Utf8Size(char32_t character) noexcept {
    return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

/// Stores a character of Utf8Size bytes.
inline void EncodeUtf8(char32_t character, std::uint8_t* target) noexcept {
    const auto tail = [character](int shift) {
        return static_cast<std::uint8_t>(0x80 | ((character >> shift) & 0x3F));
    };
    if (character < 0x80) {
        target[0] = static_cast<std::uint8_t>(character);
    } else if (character < 0x800) {
        target[0] = static_cast<std::uint8_t>(0xC0 | character >> 6);
        target[1] = tail(0);
    } else if (character < 0x10000) {
        target[0] = static_cast<std::uint8_t>(0xE0 | character >> 12);
        target[1] = tail(6);
        target[2] = tail(0);
    } else {
        target[0] = static_cast<std::uint8_t>(0xF0 | character >> 18);
        target[1] = tail(12);
        target[2] = tail(6);
        target[3] = tail(0);
    }
}

}  // namespace tk::text
