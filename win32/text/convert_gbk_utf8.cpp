#include "tkwin32/text.h"
#include "win32/text/ascii_run.h"
#include "win32/text/conversion_cursor.h"
#include "win32/text/gbk_tables.h"
#include "win32/text/packed_bytes.h"
#include "win32/text/unicode_units.h"

namespace tk::text {

Converted GbkToUtf8(std::string_view source, char* buffer, std::size_t capacity) noexcept {
    Cursor<std::uint8_t, std::uint8_t> at(source, buffer, capacity);
    for (;;) {
        const std::size_t ascii = CopyAscii(at.source, at.Both(), at.target);
        at.Advance(ascii, ascii);
        while (at.Left() >= 8 && at.Room() >= kFourWrite) {
            const std::uint8_t* s = at.source;
            const std::uint64_t four = std::uint64_t{GbkPair(s[0], s[1])} | std::uint64_t{GbkPair(s[2], s[3])} << 16 |
                                       std::uint64_t{GbkPair(s[4], s[5])} << 32 |
                                       std::uint64_t{GbkPair(s[6], s[7])} << 48;
            if (StoreFour(four, at.target) != 4) break;
            at.Advance(8, 12);
        }
        while (at.Left() >= 2 && at.Room() >= 3) {
            const char16_t unit = GbkPair(at.source[0], at.source[1]);
            if (unit < 0x800) break;
            StoreThree(unit, at.target, at.Room());
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
        while (at.Left() >= kFourRead && at.Room() >= 8) {
            const std::uint64_t four = LoadFour(at.source);
            if (four == 0) break;
            const std::uint64_t codes = GbkCodes(four);
            if (!ArePairs(codes)) break;
            StorePairs(codes, at.target);
            at.Advance(12, 8);
        }
        while (at.Left() >= 3 && at.Room() >= 2) {
            const std::uint16_t code = GbkCode(UnitOfThree(LoadThree(at.source, at.Left())));
            if (code < 0x100) break;
            StorePair(code, at.target);
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
            StorePair(code, at.target);
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
