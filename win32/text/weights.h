// weights.h - what one UTF-16 unit counts for when texts are put in order.
#pragma once

#include <cstdint>

namespace tk::text {

/// The bits of a form, from light to heavy: they decide only between texts that are equal in everything before.
inline constexpr std::uint8_t kFormWidth = 0x01;     // full width, or half width where full is usual
inline constexpr std::uint8_t kFormKatakana = 0x02;  // as opposed to hiragana
inline constexpr std::uint8_t kFormVariant = 0x3C;   // circled, raised, small ...
inline constexpr std::uint8_t kFormUpper = 0x40;     // a capital comes after its small letter

struct WeightRow {
    char16_t unit;
    std::uint16_t primary;  // the letter itself; 0 for what has none
    std::uint16_t accents;  // the sum of its combining marks
    std::uint8_t form;
};

struct Weight {
    std::uint32_t primary;
    std::uint16_t accents;
    std::uint8_t form;
};

enum class HanOrder { Pinyin, CodePoint };

/// The weight of any unit. Units that no table names stand behind the ideographs, by their value.
Weight WeightOf(char16_t unit, HanOrder order) noexcept;

/// Apostrophe and hyphen, which word sort puts aside.
constexpr bool IsSetAside(const Weight& weight) noexcept {
    return weight.primary == 1 || weight.primary == 2;
}

/// Spaces, punctuation and symbols.
bool IsSymbol(const Weight& weight) noexcept;

}  // namespace tk::text
