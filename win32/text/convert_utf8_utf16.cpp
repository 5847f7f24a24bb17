#include "tkwin32/text.h"
#include "win32/text/ascii_run.h"
#include "win32/text/conversion_cursor.h"
#include "win32/text/unicode_units.h"

namespace tk::text {

Converted Utf8ToUtf16(std::string_view source, char16_t* buffer, std::size_t capacity) noexcept {
    Cursor<std::uint8_t, char16_t> at(source, buffer, capacity);
    for (;;) {
        const std::size_t ascii = WidenAscii(at.source, at.Both(), at.target);
        at.Advance(ascii, ascii);
        // Chinese text: three bytes, one unit.
        while (at.Left() >= 3 && at.Room() >= 1) {
            const std::uint8_t* s = at.source;
            if ((s[0] & 0xF0) != 0xE0 || (s[1] & 0xC0) != 0x80 || (s[2] & 0xC0) != 0x80) break;
            const auto unit = static_cast<char16_t>((s[0] & 0x0F) << 12 | (s[1] & 0x3F) << 6 | (s[2] & 0x3F));
            if (unit < 0x800 || IsSurrogate(unit)) break;
            *at.target = unit;
            at.Advance(3, 1);
        }
        if (at.Done()) break;
        if (*at.source < 0x80) continue;

        const Decoded one = DecodeUtf8(at.source, at.Left());
        if (one.character >= 0x10000) {
            if (at.Room() < 2) break;
            at.target[0] = static_cast<char16_t>(0xD7C0 + (one.character >> 10));
            at.target[1] = static_cast<char16_t>(0xDC00 | (one.character & 0x3FF));
            at.Advance(one.units, 2);
        } else {
            *at.target = static_cast<char16_t>(one.character);
            at.Advance(one.units, 1);
        }
        at.replaced |= !one.wellFormed;
    }
    return at.Result();
}

Converted Utf16ToUtf8(std::u16string_view source, char* buffer, std::size_t capacity) noexcept {
    Cursor<char16_t, std::uint8_t> at(source, buffer, capacity);
    for (;;) {
        const std::size_t ascii = NarrowAscii(at.source, at.Both(), at.target);
        at.Advance(ascii, ascii);
        while (at.Left() >= 1 && at.Room() >= 3) {
            const char16_t unit = *at.source;
            if (unit < 0x800 || IsSurrogate(unit)) break;
            at.target[0] = static_cast<std::uint8_t>(0xE0 | unit >> 12);
            at.target[1] = static_cast<std::uint8_t>(0x80 | (unit >> 6 & 0x3F));
            at.target[2] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
            at.Advance(1, 3);
        }
        if (at.Done()) break;
        if (*at.source < 0x80) continue;

        const Decoded one = DecodeUtf16(at.source, at.Left());
        const std::size_t size = Utf8Size(one.character);
        if (at.Room() < size) break;
        EncodeUtf8(one.character, at.target);
        at.Advance(one.units, size);
        at.replaced |= !one.wellFormed;
    }
    return at.Result();
}

}  // namespace tk::text
