// collation.h - which of two texts comes first.
#pragma once

#include <string_view>

#include "win32/text/weights.h"

namespace tk::text {

struct CollationOptions {
    HanOrder han = HanOrder::Pinyin;
    bool stringSort = false;     // apostrophe and hyphen are symbols like the others
    bool ignoreSymbols = false;  // spaces and punctuation do not count
    bool ignoreAccents = false;
    std::uint8_t ignoredForms = 0;  // kForm bits that do not count
};

/// @return below, equal to or above zero. The letters decide; between equal letters the accents; then the forms (small
///         letters first); then apostrophes and hyphens: the text without them first, or with them further behind.
int Compare(std::u16string_view first, std::u16string_view second, const CollationOptions& options) noexcept;

}  // namespace tk::text
