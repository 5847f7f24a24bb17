// letter_case.h - small and capital letters of UTF-16 units and of GBK characters.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tk::text {

struct CaseRun {
    char16_t first;  // small letters
    char16_t last;
    std::uint8_t step;
    std::int32_t toCapital;
};

struct UnitRange {
    char16_t first;
    char16_t last;
};

char16_t ToUpper(char16_t unit) noexcept;
char16_t ToLower(char16_t unit) noexcept;
bool IsLetter(char16_t unit) noexcept;  // ideographs are letters
bool IsDigit(char16_t unit) noexcept;   // decimal digits of any script

using CaseMapping = char16_t (*)(char16_t) noexcept;

/// The GBK code of the counterpart of a character, given as its code: a byte, or lead * 256 + trail. A character whose
/// counterpart is outside the code page, or that is none, stays.
std::uint16_t MapGbk(std::uint16_t code, CaseMapping mapping) noexcept;

/// Maps a GBK text in place; half characters stay. The length does not change.
void MapGbk(char* text, std::size_t bytes, CaseMapping mapping) noexcept;

}  // namespace tk::text
