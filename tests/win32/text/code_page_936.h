// code_page_936.h - code page 936 from sources of its own: the C library's converter, and literal tables where that one
// has nothing to say. The tests compare the conversions with it.
#pragma once

#include <iconv.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace code_page_936 {

struct Run {
    unsigned first;  // codes with the same lead byte, counting upwards
    unsigned last;
    char16_t unit;  // what the first one means
};

// Rows of the user-defined areas; the trail byte 7F is left out of the count.
inline constexpr struct {
    unsigned firstLead, lastLead, firstTrail, lastTrail;
    char16_t unit;
} kUserDefined[] = {
    {0xAA, 0xAF, 0xA1, 0xFE, 0xE000},
    {0xF8, 0xFE, 0xA1, 0xFE, 0xE234},
    {0xA1, 0xA7, 0x40, 0xA0, 0xE4C6},
};

// What GBK leaves open outside the user-defined areas.
inline constexpr Run kOpen[] = {
    {0xA2AB, 0xA2B0, 0xE766}, {0xA2E3, 0xA2E4, 0xE76C}, {0xA2EF, 0xA2F0, 0xE76E}, {0xA2FD, 0xA2FE, 0xE770},
    {0xA4F4, 0xA4FE, 0xE772}, {0xA5F7, 0xA5FE, 0xE77D}, {0xA6B9, 0xA6C0, 0xE785}, {0xA6D9, 0xA6DF, 0xE78D},
    {0xA6EC, 0xA6ED, 0xE794}, {0xA6F3, 0xA6F3, 0xE796}, {0xA6F6, 0xA6FE, 0xE797}, {0xA7C2, 0xA7D0, 0xE7A0},
    {0xA7F2, 0xA7FE, 0xE7AF}, {0xA896, 0xA8A0, 0xE7BC}, {0xA8BC, 0xA8BC, 0xE7C7}, {0xA8BF, 0xA8BF, 0xE7C8},
    {0xA8C1, 0xA8C4, 0xE7C9}, {0xA8EA, 0xA8FE, 0xE7CD}, {0xA958, 0xA958, 0xE7E2}, {0xA95B, 0xA95B, 0xE7E3},
    {0xA95D, 0xA95F, 0xE7E4}, {0xA989, 0xA995, 0xE7E7}, {0xA997, 0xA9A3, 0xE7F4}, {0xA9F0, 0xA9FE, 0xE801},
    {0xD7FA, 0xD7FE, 0xE810}, {0xFE50, 0xFE7E, 0xE815}, {0xFE80, 0xFEA0, 0xE844},
};

class Reference {
public:
    static const Reference& Get() {
        static const Reference reference;
        return reference;
    }

    // The meaning of a two-byte code, 0 for none.
    char16_t Unit(unsigned code) const { return units_[code]; }
    // The code of a character: a byte, or lead * 256 + trail; -1 for a character outside the code page.
    int Code(char16_t unit) const { return codes_[unit]; }
    std::size_t FromConverter() const { return fromConverter_; }

private:
    Reference() {
        codes_.fill(-1);
        for (unsigned byte = 0; byte < 0x80; ++byte)
            codes_[byte] = static_cast<int>(byte);
        codes_[0x20AC] = 0x80;
        codes_[0xF8F5] = 0xFF;
        AskConverter();
        for (const auto& area : kUserDefined) {
            char16_t unit = area.unit;
            for (unsigned lead = area.firstLead; lead <= area.lastLead; ++lead) {
                for (unsigned trail = area.firstTrail; trail <= area.lastTrail; ++trail) {
                    if (trail != 0x7F) Put(lead << 8 | trail, unit++);
                }
            }
        }
        for (const Run& run : kOpen) {
            for (unsigned code = run.first; code <= run.last; ++code) {
                Put(code, static_cast<char16_t>(run.unit + (code - run.first)));
            }
        }
    }

    void AskConverter() {
        const iconv_t converter = iconv_open("UTF-16LE", "CP936");
        if (converter == iconv_t(-1)) throw std::runtime_error("the C library has no converter for CP936");
        for (unsigned code = 0x8100; code <= 0xFFFF; ++code) {
            char pair[2] = {static_cast<char>(code >> 8), static_cast<char>(code)};
            char out[8];
            char* from = pair;
            char* to = out;
            std::size_t left = 2;
            std::size_t room = sizeof out;
            iconv(converter, nullptr, nullptr, nullptr, nullptr);
            if (iconv(converter, &from, &left, &to, &room) == 0 && left == 0 && to - out == 2) {
                const auto low = static_cast<unsigned char>(out[0]);
                const auto high = static_cast<unsigned char>(out[1]);
                Put(code, static_cast<char16_t>(high << 8 | low));
                ++fromConverter_;
            }
        }
        iconv_close(converter);
    }

    void Put(unsigned code, char16_t unit) {
        if (units_[code] != 0 || codes_[unit] != -1) throw std::runtime_error("a code or a character is there twice");
        units_[code] = unit;
        codes_[unit] = static_cast<int>(code);
    }

    std::array<char16_t, 0x10000> units_{};
    std::array<int, 0x10000> codes_{};
    std::size_t fromConverter_ = 0;
};

}  // namespace code_page_936
