// ado/odbc/whole_utf8.h - what a length has cut may end within a character: how much of it is whole.
#pragma once

#include <cstddef>
#include <string_view>

namespace tk::ado {

/// The bytes of a UTF-8 text without the character that ends behind them.
constexpr std::size_t WholeUtf8(std::string_view text) noexcept {
    std::size_t start = text.size();
    while (start > 0 && text.size() - start < 4 && (static_cast<unsigned char>(text[start - 1]) & 0xC0) == 0x80)
        --start;
    if (start == 0) return text.size();
    const auto lead = static_cast<unsigned char>(text[start - 1]);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    return text.size() - (start - 1) < length ? start - 1 : text.size();
}

static_assert(WholeUtf8("") == 0 && WholeUtf8("ab") == 2);
static_assert(WholeUtf8("a\xE5\xBA\x93") == 4 && WholeUtf8("a\xE5\xBA") == 1 && WholeUtf8("a\xE5") == 1);
static_assert(WholeUtf8("\xF0\x9F\x98\x80") == 4 && WholeUtf8("\xF0\x9F\x98") == 0 && WholeUtf8("\xC3") == 0);
static_assert(WholeUtf8("\x80\x80") == 2, "no character at all stays as it is");

}  // namespace tk::ado
