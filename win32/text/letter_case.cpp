#include "win32/text/letter_case.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "win32/text/case_data.h"
#include "win32/text/gbk_tables.h"

namespace tk::text {
namespace {

constexpr std::uint16_t kCaseBlocks = 55;

// The way from a unit to its counterpart, in blocks of 64; block 0 is the empty one.
struct CaseTable {
    std::uint8_t block[1024]{};
    std::int32_t toOther[kCaseBlocks][64]{};
    bool small[kCaseBlocks][64]{};
};

consteval CaseTable Spread() {
    CaseTable table;
    std::uint8_t used = 1;
    const auto put = [&](int unit, int toOther, bool small) {
        std::uint8_t& block = table.block[unit >> 6];
        if (block == 0) block = used++;
        table.toOther[block][unit & 0x3F] = toOther;
        table.small[block][unit & 0x3F] = small;
    };
    for (const CaseRun& run : kCaseRuns) {
        for (int unit = run.first; unit <= run.last; unit += run.step) {
            put(unit, run.toCapital, true);
            put(unit + run.toCapital, -run.toCapital, false);
        }
    }
    if (used != kCaseBlocks) throw "kCaseBlocks is not the number of blocks in use";
    return table;
}

constexpr CaseTable kCase = Spread();

char16_t Map(char16_t unit, bool small) noexcept {
    const std::uint8_t block = kCase.block[unit >> 6];
    if (kCase.small[block][unit & 0x3F] != small) return unit;
    return static_cast<char16_t>(unit + kCase.toOther[block][unit & 0x3F]);
}

template <std::size_t Count>
bool Contains(const UnitRange (&ranges)[Count], char16_t unit) noexcept {
    const auto next = std::ranges::upper_bound(ranges, unit, {}, &UnitRange::first);
    return next != std::begin(ranges) && unit <= std::prev(next)->last;
}

}  // namespace

char16_t ToUpper(char16_t unit) noexcept {
    return Map(unit, true);
}

char16_t ToLower(char16_t unit) noexcept {
    return Map(unit, false);
}

bool IsLetter(char16_t unit) noexcept {
    return Contains(kLetters, unit);
}

bool IsDigit(char16_t unit) noexcept {
    return Contains(kDigits, unit);
}

std::uint16_t MapGbk(std::uint16_t code, CaseMapping mapping) noexcept {
    if (code < 0x80) return mapping(code);
    if (code < 0x100) return code;  // the euro sign and the last byte have no case
    const char16_t unit = GbkPair(static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code));
    const char16_t other = unit == 0 ? unit : mapping(unit);
    if (other == unit) return code;
    const std::uint16_t mapped = GbkCode(other);
    return mapped >= 0x100 ? mapped : code;
}

void MapGbk(char* text, std::size_t bytes, CaseMapping mapping) noexcept {
    for (std::size_t i = 0; i < bytes; ++i) {
        const auto byte = static_cast<std::uint8_t>(text[i]);
        if (byte < kFirstLead || byte > kLastLead || i + 1 == bytes) {
            text[i] = static_cast<char>(MapGbk(byte, mapping));
            continue;
        }
        const auto code = static_cast<std::uint16_t>(byte << 8 | static_cast<std::uint8_t>(text[i + 1]));
        const std::uint16_t mapped = MapGbk(code, mapping);
        text[i] = static_cast<char>(mapped >> 8);
        text[++i] = static_cast<char>(mapped);
    }
}

}  // namespace tk::text
