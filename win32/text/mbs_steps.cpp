#include "mbstring.h"
#include "win32/text/gbk_steps.h"
#include "win32/text/gbk_tables.h"
#include "win32/text/letter_case.h"

namespace {

using tk::text::Byte;
using tk::text::CharacterSize;

// Where the character begins that the byte at `current` belongs to.
const Byte* CharacterAt(const Byte* start, const Byte* current) noexcept {
    const Byte* at = start;
    while (at < current && *at != 0) {
        const std::size_t size = CharacterSize(at);
        if (at + size > current) break;
        at += size;
    }
    return at;
}

// What a character is, and what it is in UTF-16; 0 for half characters and codes above 0xFFFF.
char16_t Unit(unsigned int character) noexcept {
    if (character < 0x80) return static_cast<char16_t>(character);
    if (character > 0xFFFF) return 0;
    return tk::text::GbkPair(static_cast<Byte>(character >> 8), static_cast<Byte>(character & 0xFF));
}

unsigned int Map(unsigned int character, tk::text::CaseMapping mapping) noexcept {
    if (character > 0xFFFF) return character;
    return tk::text::MapGbk(static_cast<std::uint16_t>(character), mapping);
}

}  // namespace

int _ismbblead(unsigned int byte) {
    return byte <= 0xFF && tk::text::IsLead(static_cast<Byte>(byte));
}

int _ismbbtrail(unsigned int byte) {
    return byte <= 0xFF && tk::text::IsGbkTrail(static_cast<char>(byte));
}

int _ismbslead(const unsigned char* start, const unsigned char* current) {
    if (start == nullptr || current == nullptr || current < start) return 0;
    return CharacterAt(start, current) == current && tk::text::IsLead(*current) ? -1 : 0;
}

int _ismbstrail(const unsigned char* start, const unsigned char* current) {
    if (start == nullptr || current == nullptr || current < start) return 0;
    const Byte* at = CharacterAt(start, current);
    return *at != 0 && at + 1 == current ? -1 : 0;
}

int _mbsbtype(const unsigned char* text, std::size_t offset) {
    if (text == nullptr) return _MBC_ILLEGAL;
    const Byte* at = CharacterAt(text, text + offset);
    if (*at == 0) return _MBC_ILLEGAL;
    if (at != text + offset) return tk::text::IsGbkTrail(static_cast<char>(at[1])) ? _MBC_TRAIL : _MBC_ILLEGAL;
    return tk::text::IsLead(*at) ? _MBC_LEAD : _MBC_SINGLE;
}

unsigned int _mbctoupper(unsigned int character) {
    return Map(character, tk::text::ToUpper);
}

unsigned int _mbctolower(unsigned int character) {
    return Map(character, tk::text::ToLower);
}

int _ismbcupper(unsigned int character) {
    const char16_t unit = Unit(character);
    return tk::text::ToLower(unit) != unit;
}

int _ismbclower(unsigned int character) {
    const char16_t unit = Unit(character);
    return tk::text::ToUpper(unit) != unit;
}

int _ismbcalpha(unsigned int character) {
    return tk::text::IsLetter(Unit(character));
}

int _ismbcdigit(unsigned int character) {
    return character >= '0' && character <= '9';
}

int _ismbcalnum(unsigned int character) {
    return _ismbcalpha(character) || _ismbcdigit(character);
}

int _ismbcspace(unsigned int character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

std::size_t _mbclen(const unsigned char* character) {
    if (character == nullptr) return 0;
    return CharacterSize(character) == 2 ? 2 : 1;
}

unsigned int _mbsnextc(const unsigned char* text) {
    return text == nullptr ? 0 : tk::text::CharacterCode(text, CharacterSize(text));
}

unsigned char* _mbsinc(const unsigned char* current) {
    return current == nullptr ? nullptr : const_cast<unsigned char*>(current) + _mbclen(current);
}

unsigned char* _mbsdec(const unsigned char* start, const unsigned char* current) {
    if (start == nullptr || current == nullptr || current <= start) return nullptr;
    return const_cast<unsigned char*>(tk::text::PreviousCharacter(start, current));
}

unsigned char* _mbsninc(const unsigned char* text, std::size_t count) {
    if (text == nullptr) return nullptr;
    return const_cast<unsigned char*>(text) + _mbsnbcnt(text, count);
}

std::size_t _mbslen(const unsigned char* text) {
    return _mbsnccnt(text, static_cast<std::size_t>(-1));
}

std::size_t _mbsnccnt(const unsigned char* text, std::size_t bytes) {
    if (text == nullptr) return 0;
    std::size_t characters = 0;
    std::size_t size;
    for (; (size = CharacterSize(text, bytes)) != 0; text += size, bytes -= size) {
        if (size == 1 && tk::text::IsLead(*text)) break;
        ++characters;
    }
    return characters;
}

std::size_t _mbsnbcnt(const unsigned char* text, std::size_t characters) {
    if (text == nullptr) return 0;
    const Byte* at = text;
    for (; characters != 0; --characters) {
        const std::size_t size = CharacterSize(at);
        if (size == 0 || (size == 1 && tk::text::IsLead(*at))) break;
        at += size;
    }
    return static_cast<std::size_t>(at - text);
}
