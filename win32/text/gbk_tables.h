// gbk_tables.h - code page 936 in both directions, each a table look-up without a search.
#pragma once

#include <cstddef>
#include <cstdint>

#include "win32/text/gbk_table_data.h"

namespace tk::text {

inline constexpr std::uint8_t kEuroByte = 0x80;
inline constexpr char16_t kEuroSign = 0x20AC;
inline constexpr std::uint8_t kLastByte = 0xFF;  // no lead byte, yet no error either
inline constexpr char16_t kLastByteCharacter = 0xF8F5;

inline constexpr std::uint8_t kFirstLead = 0x81;
inline constexpr std::uint8_t kLastLead = 0xFE;
inline constexpr std::uint8_t kFirstTrail = 0x40;

/// Characters outside ASCII to GBK, in blocks of 64: the last byte of a UTF-8 sequence picks the cell, the bytes
/// before it the block. A cell is 0 for a character outside the code page, below 0x100 for a single byte, else
/// lead * 256 + trail. All blocks without a character are block 0.
inline constexpr std::size_t kReverseBlocks = 410;

struct ReverseTable {
    std::uint16_t block[1024]{};
    std::uint16_t cell[kReverseBlocks][64]{};
};

extern const ReverseTable kUtf16ToGbk;

/// The GBK code of a UTF-16 unit outside ASCII, 0 when there is none (surrogates included).
inline std::uint16_t GbkCode(char16_t unit) noexcept {
    return kUtf16ToGbk.cell[kUtf16ToGbk.block[unit >> 6]][unit & 0x3F];
}

/// The character of a pair of bytes, 0 when they are no lead and trail byte.
inline char16_t GbkPair(std::uint8_t lead, std::uint8_t trail) noexcept {
    if (lead < kFirstLead || lead > kLastLead || trail < kFirstTrail) return 0;
    return kGbkToUtf16[lead - kFirstLead][trail - kFirstTrail];
}

}  // namespace tk::text
