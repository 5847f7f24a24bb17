#include "win32/text/gbk_tables.h"

namespace tk::text {
namespace {

// Turned around by the compiler, so that the two directions cannot disagree.
consteval ReverseTable TurnAround() {
    ReverseTable table;
    const auto put = [&](char16_t unit, unsigned code) { table.code[unit] = static_cast<std::uint16_t>(code); };
    put(kEuroSign, kEuroByte);
    put(kLastByteCharacter, kLastByte);
    for (unsigned lead = kFirstLead; lead <= kLastLead; ++lead) {
        for (unsigned trail = kFirstTrail; trail <= 0xFF; ++trail) {
            const char16_t unit = kGbkToUtf16[lead - kFirstLead][trail - kFirstTrail];
            if (unit != 0) put(unit, lead << 8 | trail);
        }
    }
    return table;
}

}  // namespace

constexpr ReverseTable kUtf16ToGbk = TurnAround();

}  // namespace tk::text
