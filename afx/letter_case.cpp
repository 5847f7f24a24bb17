#include "afx/letter_case.h"

#include <windows.h>

#include <cstring>

#include "afx/multibyte.h"
#include "afx/text_codes.h"

namespace tk::afx {
namespace {

enum class Case { Capital, Small };

char MapAscii(char ch, Case wanted) noexcept {
    if (wanted == Case::Capital) return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
    return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch;
}

// The rows of the code page that hold letters: full-width, Greek, Cyrillic, numerals. All else is ideographs and signs.
bool MayBeLetter(const char* character) noexcept {
    const auto lead = static_cast<unsigned char>(character[0]);
    return lead >= 0xA1 && lead <= 0xA9 && static_cast<unsigned char>(character[1]) >= 0xA1;
}

// Writes the other case of a double-byte character, or the character itself.
void MapDouble(char* character, Case wanted) noexcept {
    if (!MayBeLetter(character)) return;
    WCHAR unit = 0;
    if (MultiByteToWideChar(kTextCodePage, MB_ERR_INVALID_CHARS, character, 2, &unit, 1) != 1) return;
    const WCHAR before = unit;
    wanted == Case::Capital ? CharUpperBuffW(&unit, 1) : CharLowerBuffW(&unit, 1);
    char mapped[2];
    BOOL replaced = FALSE;
    if (unit == before ||
        WideCharToMultiByte(kTextCodePage, 0, &unit, 1, mapped, sizeof(mapped), nullptr, &replaced) != 2 || replaced) {
        return;
    }
    std::memcpy(character, mapped, sizeof(mapped));
}

void Map(char* text, int length, Case wanted) noexcept {
    char* const end = text + length;
    for (char* at = text; at < end;) {
        const int size = CharacterLength(at, end);
        if (size == 1) {
            *at = MapAscii(*at, wanted);
        } else {
            MapDouble(at, wanted);
        }
        at += size;
    }
}

// The code of the small letter at a place, which moves behind it.
int NextSmall(const char*& at, const char* end) noexcept {
    const int size = CharacterLength(at, end);
    const char* const character = at;
    at += size;
    if (size == 1) return static_cast<unsigned char>(MapAscii(*character, Case::Small));
    char small[2] = {character[0], character[1]};
    MapDouble(small, Case::Small);
    return static_cast<unsigned char>(small[0]) * 256 + static_cast<unsigned char>(small[1]);
}

}  // namespace

void MakeCapitals(char* text, int length) noexcept {
    Map(text, length, Case::Capital);
}

void MakeSmall(char* text, int length) noexcept {
    Map(text, length, Case::Small);
}

int CompareIgnoringCase(const char* first, const char* second) noexcept {
    const char* const firstEnd = first + std::strlen(first);
    const char* const secondEnd = second + std::strlen(second);
    while (first < firstEnd && second < secondEnd) {
        const int left = NextSmall(first, firstEnd);
        const int right = NextSmall(second, secondEnd);
        if (left != right) return left < right ? -1 : 1;
    }
    return (first < firstEnd) - (second < secondEnd);
}

}  // namespace tk::afx
