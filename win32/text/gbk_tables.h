// gbk_tables.h - code page 936 in both directions, each a table look-up without a search.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "win32/text/gbk_table_data.h"

namespace tk::text {

inline constexpr std::uint8_t kEuroByte = 0x80;
inline constexpr char16_t kEuroSign = 0x20AC;
inline constexpr std::uint8_t kLastByte = 0xFF;  // no lead byte, yet no error either
inline constexpr char16_t kLastByteCharacter = 0xF8F5;

inline constexpr std::uint8_t kFirstLead = 0x81;
inline constexpr std::uint8_t kLastLead = 0xFE;
inline constexpr std::uint8_t kFirstTrail = 0x40;

/// The GBK code of every UTF-16 unit outside ASCII: 0 for a unit outside the code page (surrogates included), below
/// 0x100 for a single byte, else lead * 256 + trail. Flat, because the one load that this saves is a third of the time.
struct ReverseTable {
    std::uint16_t code[0x10000]{};
};

extern const ReverseTable kUtf16ToGbk;

inline std::uint16_t GbkCode(char16_t unit) noexcept {
    return kUtf16ToGbk.code[unit];
}

/// The character of a pair of bytes, 0 when they are no lead and trail byte.
inline char16_t GbkPair(std::uint8_t lead, std::uint8_t trail) noexcept {
    if (lead < kFirstLead || lead > kLastLead || trail < kFirstTrail) return 0;
    return kGbkToUtf16[lead - kFirstLead][trail - kFirstTrail];
}

/// Stores a code of two bytes.
inline void StorePair(std::uint16_t code, std::uint8_t* target) noexcept {
    target[0] = static_cast<std::uint8_t>(code >> 8);
    target[1] = static_cast<std::uint8_t>(code);
}

/// The codes of four units, both in one number with the first one lowest.
inline std::uint64_t GbkCodes(std::uint64_t four) noexcept {
    const auto code = [four](int shift) {
        return std::uint64_t{GbkCode(static_cast<char16_t>(four >> shift))} << shift;
    };
    return code(0) | code(16) | code(32) | code(48);
}

/// Whether all four codes are of two bytes: none has an empty upper byte.
constexpr bool ArePairs(std::uint64_t codes) noexcept {
    constexpr std::uint64_t kLow = 0x00FF00FF00FF00FF;
    constexpr std::uint64_t kCarry = 0x0100010001000100;
    return (((codes >> 8 & kLow) + kLow) & kCarry) == kCarry;
}

inline void StorePairs(std::uint64_t codes, std::uint8_t* target) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
        codes = (codes >> 8 & 0x00FF00FF00FF00FF) | (codes & 0x00FF00FF00FF00FF) << 8;
        std::memcpy(target, &codes, 8);
    } else {
        for (int i = 0; i < 4; ++i)
            StorePair(static_cast<std::uint16_t>(codes >> 16 * i), target + 2 * i);
    }
}

}  // namespace tk::text
