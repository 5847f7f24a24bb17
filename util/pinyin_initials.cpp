#include <algorithm>
#include <array>
#include <cstdint>

#include "tkkernel/util.h"
#include "util/text.h"

namespace tk::util {
namespace {

/// The first character whose pinyin begins with a letter. From B0A1 on GB2312 stands in the order of pinyin.
struct Boundary {
    std::uint16_t code;  // GBK, lead byte first
    char letter;
};
constexpr Boundary kBoundaries[] = {
    {0xB0A1, 'A'}, {0xB0C5, 'B'}, {0xB2C1, 'C'}, {0xB4EE, 'D'}, {0xB6EA, 'E'}, {0xB7A2, 'F'},
    {0xB8C1, 'G'}, {0xB9FE, 'H'}, {0xBBF7, 'J'}, {0xBFA6, 'K'}, {0xC0AC, 'L'}, {0xC2E8, 'M'},
    {0xC4C3, 'N'}, {0xC5B6, 'O'}, {0xC5BE, 'P'}, {0xC6DA, 'Q'}, {0xC8BB, 'R'}, {0xC8F6, 'S'},
    {0xCBFA, 'T'}, {0xCDDA, 'W'}, {0xCEF4, 'X'}, {0xD1B9, 'Y'}, {0xD4D1, 'Z'},
};
static_assert(std::ranges::is_sorted(kBoundaries, {}, &Boundary::code));
static_assert(std::size(kBoundaries) == 23);

constexpr unsigned kFirst = std::begin(kBoundaries)->code;
constexpr unsigned kLast = std::rbegin(kBoundaries)->code;

/// The letter of every code from the first boundary up to the last one: nine thousand bytes instead of a search for
/// each character.
constexpr auto kLetters = [] {
    std::array<char, kLast - kFirst + 1> letters{};
    const Boundary* boundary = kBoundaries;
    for (unsigned at = 0; at < letters.size(); ++at) {
        if (boundary != std::prev(std::end(kBoundaries)) && kFirst + at == boundary[1].code) ++boundary;
        letters[at] = boundary->letter;
    }
    return letters;
}();

constexpr std::size_t kPiece = 256;

/// Writes at most kPiece initials of the text from a position on, and moves the position behind what it read.
/// @return the end of the initials
char* WriteInitials(std::string_view text, std::size_t& position, char* out) {
    const char* const full = out + kPiece;
    std::size_t at = position;
    while (at < text.size() && out != full) {
        const auto lead = static_cast<unsigned char>(text[at++]);
        if (lead < 0x80) {
            *out++ = static_cast<char>(lead);
            continue;
        }
        if (at == text.size()) break;  // half a character has no letter
        const unsigned code = lead * 256U + static_cast<unsigned char>(text[at++]);
        if (code < kFirst) continue;  // symbols and extensions before the first one have no letter
        // Contract: everything from the last boundary on is Z, the rarer characters too, which have another order.
        *out++ = kLetters[std::min(code, kLast) - kFirst];
    }
    position = at;
    return out;
}

}  // namespace
}  // namespace tk::util

CString ToPyHead(const char* pText, int nLength) {
    using namespace tk::util;
    std::string_view text;
    if (pText != nullptr && nLength > 0) text = {pText, static_cast<std::size_t>(nLength)};
    // Contract: a text that would come back as it is gets a mark in front, the empty one too.
    if (std::ranges::all_of(text, [](char ch) { return static_cast<unsigned char>(ch) < 0x80; })) {
        return "v" + ToText(text);
    }
    CString result;
    for (std::size_t at = 0; at < text.size();) {
        char piece[kPiece];
        const char* const end = WriteInitials(text, at, piece);
        result.Append(piece, static_cast<int>(end - piece));
    }
    return result;
}

CString ToPyHead(CString& text) {
    return ToPyHead(text, text.GetLength());
}
