#include "tkwin32/text.h"
#include "win32/text/ascii_run.h"
#include "win32/text/conversion_cursor.h"
#include "win32/text/gbk_output.h"
#include "win32/text/gbk_tables.h"

namespace tk::text {

Converted GbkToUtf16(std::string_view source, char16_t* buffer, std::size_t capacity) noexcept {
    Cursor<std::uint8_t, char16_t> at(source, buffer, capacity);
    for (;;) {
        const std::size_t ascii = WidenAscii(at.source, at.Both(), at.target);
        at.Advance(ascii, ascii);
        while (at.Left() >= 2 && at.Room() >= 1) {
            const char16_t unit = GbkPair(at.source[0], at.source[1]);
            if (unit == 0) break;
            *at.target = unit;
            at.Advance(2, 1);
        }
        if (at.Done()) break;
        const std::uint8_t byte = *at.source;
        if (byte < 0x80) continue;

        *at.target = byte == kEuroByte ? kEuroSign : byte == kLastByte ? kLastByteCharacter : u'?';
        at.replaced |= *at.target == u'?';
        at.Advance(1, 1);
    }
    return at.Result();
}

Converted Utf16ToGbk(std::u16string_view source, char* buffer, std::size_t capacity,
                     const GbkDefault& instead) noexcept {
    Cursor<char16_t, std::uint8_t> at(source, buffer, capacity);
    for (;;) {
        const std::size_t ascii = NarrowAscii(at.source, at.Both(), at.target);
        at.Advance(ascii, ascii);
        while (at.Left() >= 1 && at.Room() >= 2) {
            const std::uint16_t code = GbkCode(*at.source);
            if (code < 0x100) break;
            StorePair(code, at.target);
            at.Advance(1, 2);
        }
        if (at.Done()) break;
        if (*at.source < 0x80) continue;

        const std::uint16_t code = GbkCode(*at.source);
        if (code >= 0x100) break;  // a character of two bytes, and room for one
        if (code != 0) {
            *at.target = static_cast<std::uint8_t>(code);
            at.Advance(1, 1);
        } else {
            if (at.Room() < instead.size) break;
            std::copy_n(instead.bytes, instead.size, at.target);
            at.Advance(1, instead.size);
            at.replaced = true;
        }
    }
    return at.Result();
}

Converted Utf16ToGbk(std::u16string_view source, char* buffer, std::size_t capacity) noexcept {
    return Utf16ToGbk(source, buffer, capacity, GbkDefault());
}

}  // namespace tk::text
