// Identifiers as texts: 8-4-4-4-12 hexadecimal digits, with or without braces.
#pragma once

#include <optional>
#include <string_view>

#include "guiddef.h"

namespace tk::system {

inline constexpr std::size_t kGuidDigits = 36;

namespace detail {

template <class Char>
constexpr int HexDigit(Char character) noexcept {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

// Where the two digits of each byte stand, in the order of the memory form read as big-endian groups.
inline constexpr unsigned char kBytePlaces[16] = {0, 2, 4, 6, 9, 11, 14, 16, 19, 21, 24, 26, 28, 30, 32, 34};

}  // namespace detail

/// The form without braces, nothing around it.
template <class Char>
constexpr std::optional<GUID> ParseGuid(std::basic_string_view<Char> text) noexcept {
    if (text.size() != kGuidDigits) return std::nullopt;
    for (const std::size_t place : {8, 13, 18, 23}) {
        if (text[place] != '-') return std::nullopt;
    }
    unsigned char bytes[16] = {};
    for (std::size_t i = 0; i < 16; ++i) {
        const int high = detail::HexDigit(text[detail::kBytePlaces[i]]);
        const int low = detail::HexDigit(text[detail::kBytePlaces[i] + 1u]);
        if (high < 0 || low < 0) return std::nullopt;
        bytes[i] = static_cast<unsigned char>(high * 16 + low);
    }
    GUID guid{};
    guid.Data1 = static_cast<ULONG>(bytes[0]) << 24 | static_cast<ULONG>(bytes[1]) << 16 |
                 static_cast<ULONG>(bytes[2]) << 8 | bytes[3];
    guid.Data2 = static_cast<USHORT>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<USHORT>(bytes[6] << 8 | bytes[7]);
    for (std::size_t i = 0; i < 8; ++i)
        guid.Data4[i] = bytes[8 + i];
    return guid;
}

/// The form in braces.
template <class Char>
constexpr std::optional<GUID> ParseBracedGuid(std::basic_string_view<Char> text) noexcept {
    if (text.size() != kGuidDigits + 2 || text.front() != '{' || text.back() != '}') return std::nullopt;
    return ParseGuid(text.substr(1, kGuidDigits));
}

/// Writes the 36 characters without braces and without a terminator.
template <class Char>
constexpr void WriteGuid(REFGUID guid, Char* target, const char* digits) noexcept {
    const unsigned char bytes[16] = {static_cast<unsigned char>(guid.Data1 >> 24),
                                     static_cast<unsigned char>(guid.Data1 >> 16),
                                     static_cast<unsigned char>(guid.Data1 >> 8),
                                     static_cast<unsigned char>(guid.Data1),
                                     static_cast<unsigned char>(guid.Data2 >> 8),
                                     static_cast<unsigned char>(guid.Data2),
                                     static_cast<unsigned char>(guid.Data3 >> 8),
                                     static_cast<unsigned char>(guid.Data3),
                                     guid.Data4[0],
                                     guid.Data4[1],
                                     guid.Data4[2],
                                     guid.Data4[3],
                                     guid.Data4[4],
                                     guid.Data4[5],
                                     guid.Data4[6],
                                     guid.Data4[7]};
    for (const std::size_t place : {8, 13, 18, 23})
        target[place] = '-';
    for (std::size_t i = 0; i < 16; ++i) {
        target[detail::kBytePlaces[i]] = static_cast<Char>(digits[bytes[i] >> 4]);
        target[detail::kBytePlaces[i] + 1u] = static_cast<Char>(digits[bytes[i] & 15]);
    }
}

inline constexpr char kUpperDigits[] = "0123456789ABCDEF";
inline constexpr char kLowerDigits[] = "0123456789abcdef";

}  // namespace tk::system
