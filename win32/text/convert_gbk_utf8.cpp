#include "tkwin32/text.h"
#include "win32/text/ascii_run.h"
#include "win32/text/conversion_cursor.h"
#include "win32/text/gbk_tables.h"
#include "win32/text/unicode_units.h"

namespace tk::text {

Converted GbkToUtf8(std::string_view source, char* buffer, std::size_t capacity) noexcept {
    Cursor<std::uint8_t, std::uint8_t> at(source, buffer, capacity);
    for (;;) {
        const std::size_t ascii = CopyAscii(at.source, at.Both(), at.target);
        at.Advance(ascii, ascii);
        while (at.Left() >= 2 && at.Room() >= 3) {
            const char16_t unit = GbkPair(at.source[0], at.source[1]);
            if (unit < 0x800) break;
            at.target[0] = static_cast<std::uint8_t>(0xE0 | unit >> 12);
            at.target[1] = static_cast<std::uint8_t>(0x80 | (unit >> 6 & 0x3F));
            at.target[2] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
            at.Advance(2, 3);
        }
        if (at.Done()) break;
        const std::uint8_t byte = *at.source;
        if (byte < 0x80) continue;

        char16_t unit = at.Left() >= 2 ? GbkPair(byte, at.source[1]) : u'\0';
        const std::size_t units = unit != 0 ? 2 : 1;
        if (unit == 0) unit = byte == kEuroByte ? kEuroSign : byte == kLastByte ? kLastByteCharacter : u'?';
        const std::size_t size = Utf8Size(unit);
        if (at.Room() < size) break;
        EncodeUtf8(unit, at.target);
        at.replaced |= unit == u'?';
        at.Advance(units, size);
    }
    return at.Result();
}

Converted Utf8ToGbk(std::string_view source, char* buffer, std::size_t capacity) noexcept {
    Cursor<std::uint8_t, std::uint8_t> at(source, buffer, capacity);
    for (;;) {
        const std::size_t ascii = CopyAscii(at.source, at.Both(), at.target);
        at.Advance(ascii, ascii);
        while (at.Left() >= 3 && at.Room() >= 2) {
            const std::uint8_t* s = at.source;
            if ((s[0] & 0xF0) != 0xE0 || (s[1] & 0xC0) != 0x80 || (s[2] & 0xC0) != 0x80) break;
            const unsigned block = (s[0] & 0x0Fu) << 6 | (s[1] & 0x3Fu);
            const std::uint16_t code = kUtf16ToGbk.cell[kUtf16ToGbk.block[block]][s[2] & 0x3Fu];
            if (code < 0x100 || block < 0x20) break;  // below block 0x20 three bytes are too long a form
            at.target[0] = static_cast<std::uint8_t>(code >> 8);
            at.target[1] = static_cast<std::uint8_t>(code);
            at.Advance(3, 2);
        }
        if (at.Done()) break;
        if (*at.source < 0x80) continue;

        const Decoded one = DecodeUtf8(at.source, at.Left());
        if (one.character >= 0x10000) {  // one default character for each UTF-16 unit, as on the platform
            if (at.Room() < 2) break;
            at.target[0] = at.target[1] = '?';
            at.Advance(one.units, 2);
            at.replaced = true;
            continue;
        }
        const std::uint16_t code = GbkCode(static_cast<char16_t>(one.character));
        if (code >= 0x100) {
            if (at.Room() < 2) break;
            at.target[0] = static_cast<std::uint8_t>(code >> 8);
            at.target[1] = static_cast<std::uint8_t>(code);
            at.Advance(one.units, 2);
        } else {
            *at.target = code != 0 ? static_cast<std::uint8_t>(code) : std::uint8_t{'?'};
            at.Advance(one.units, 1);
            at.replaced |= code == 0;
        }
    }
    return at.Result();
}

}  // namespace tk::text
