#include "win32/text/weights.h"

#include <cstddef>
#include <iterator>

#include "win32/text/han_order_data.h"
#include "win32/text/weight_data.h"

namespace tk::text {
namespace {

constexpr std::uint32_t kHan = 0x10000;     // ideographs: this and their place
constexpr std::uint32_t kOthers = 0x20000;  // units without a row: this and their value

// Blocks of 64 units, numbers 1 and up into a list of rows; 0 says that there is none. Block 0 is the empty one.
template <std::size_t Blocks>
struct Index {
    std::uint16_t block[1024]{};
    std::uint16_t cell[Blocks][64]{};

    constexpr std::uint16_t operator[](char16_t unit) const noexcept { return cell[block[unit >> 6]][unit & 0x3F]; }
};

template <std::size_t Blocks, std::size_t Rows, class UnitOf>
consteval Index<Blocks> IndexOf(UnitOf unitOf) {
    Index<Blocks> index;
    std::uint16_t used = 1;
    for (std::size_t row = 0; row < Rows; ++row) {
        const char16_t unit = unitOf(row);
        std::uint16_t& block = index.block[unit >> 6];
        if (block == 0) block = used++;
        index.cell[block][unit & 0x3F] = static_cast<std::uint16_t>(row + 1);
    }
    if (used != Blocks) throw "Blocks is not the number of blocks in use";
    return index;
}

constexpr std::size_t kHanCount = std::size(kHanOrder) - 1;  // without the literal's terminator
constexpr auto kHanPlaces = IndexOf<447, kHanCount>([](std::size_t row) { return kHanOrder[row]; });
constexpr auto kRows = IndexOf<103, std::size(kWeightRows)>([](std::size_t row) { return kWeightRows[row].unit; });

}  // namespace

Weight WeightOf(char16_t unit, HanOrder order) noexcept {
    if (const std::uint16_t place = kHanPlaces[unit]; place != 0) {
        return {kHan + (order == HanOrder::Pinyin ? place : unit), 0, 0};
    }
    if (const std::uint16_t row = kRows[unit]; row != 0) {
        const WeightRow& weight = kWeightRows[row - 1];
        return {weight.primary, weight.accents, weight.form};
    }
    return {kOthers + unit, 0, 0};
}

bool IsSymbol(const Weight& weight) noexcept {
    return weight.primary != 0 && weight.primary < kFirstDigitWeight;
}

}  // namespace tk::text
