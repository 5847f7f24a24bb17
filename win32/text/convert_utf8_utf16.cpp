#include <cstring>

#include "tkwin32/text.h"
#include "win32/text/ascii_run.h"
#include "win32/text/conversion_cursor.h"
#include "win32/text/packed_bytes.h"
#include "win32/text/unicode_units.h"

namespace tk::text {

Converted Utf8ToUtf16(std::string_view source, char16_t* buffer, std::size_t capacity) noexcept {
    Cursor<std::uint8_t, char16_t> at(source, buffer, capacity);
    for (;;) {
        const std::size_t ascii = WidenAscii(at.source, at.Both(), at.target);
        at.Advance(ascii, ascii);
        // Chinese text: three bytes, one unit.
        while (at.Left() >= kFourRead && at.Room() >= 4) {
            const std::uint64_t four = LoadFour(at.source);
            if (four == 0) break;
            std::memcpy(at.target, &four, 8);
            at.Advance(12, 4);
        }
        while (at.Left() >= 3 && at.Room() >= 1) {
            const char16_t unit = UnitOfThree(LoadThree(at.source, at.Left()));
            if (unit == 0) break;
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
        while (at.Left() >= 4 && at.Room() >= kFourWrite) {
            std::uint64_t four;
            std::memcpy(&four, at.source, 8);
            const std::size_t taken = StoreFour(four, at.target);
            // By branches, not by the number: in mixed text the conversion then runs ahead of it.
            if (taken == 4) {
                at.Advance(4, 12);
                continue;
            }
            if (taken == 1) {
                at.Advance(1, 3);
            } else if (taken == 2) {
                at.Advance(2, 6);
            } else if (taken == 3) {
                at.Advance(3, 9);
            }
            // A blank or a digit between characters is not worth the search for more ASCII.
            if (*at.source >= 0x80 || at.Left() < 2 || at.source[1] < 0x80) break;
            *at.target = static_cast<std::uint8_t>(*at.source);
            at.Advance(1, 1);
        }
        while (at.Left() >= 1 && at.Room() >= 3 && TakesThree(*at.source)) {
            StoreThree(*at.source, at.target, at.Room());
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
