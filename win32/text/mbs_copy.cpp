#include <algorithm>
#include <cstring>

#include "mbstring.h"
#include "win32/text/gbk_steps.h"
#include "win32/text/letter_case.h"

namespace {

using tk::text::Byte;
using tk::text::CharacterSize;

char* Text(Byte* bytes) noexcept {
    return reinterpret_cast<char*>(bytes);
}

const char* Text(const Byte* bytes) noexcept {
    return reinterpret_cast<const char*>(bytes);
}

// The bytes of whole characters among the first `bytes` of a text, half a character at its very end left out.
std::size_t WholeBytes(const Byte* text, std::size_t bytes) noexcept {
    const Byte* at = text;
    std::size_t size;
    while ((size = CharacterSize(at, bytes)) != 0 && !(size == 1 && tk::text::IsLead(*at))) {
        at += size;
        bytes -= size;
    }
    return static_cast<std::size_t>(at - text);
}

Byte* MapCase(Byte* text, tk::text::CaseMapping mapping) noexcept {
    if (text != nullptr) tk::text::MapGbk(Text(text), std::strlen(Text(text)), mapping);
    return text;
}

Byte* Append(Byte* target, const Byte* source, std::size_t bytes) noexcept {
    // Half a character at the end of the target would swallow the first byte of what is appended.
    Byte* end = target + WholeBytes(target, std::strlen(Text(target)));
    std::memcpy(end, source, bytes);
    end[bytes] = 0;
    return target;
}

}  // namespace

unsigned char* _mbscpy(unsigned char* target, const unsigned char* source) {
    if (target == nullptr || source == nullptr) return nullptr;
    std::strcpy(Text(target), Text(source));  // NOLINT(clang-analyzer-security.insecureAPI.strcpy) that is the contract
    return target;
}

unsigned char* _mbscat(unsigned char* target, const unsigned char* source) {
    if (target == nullptr || source == nullptr) return nullptr;
    return Append(target, source, std::strlen(Text(source)));
}

unsigned char* _mbsncpy(unsigned char* target, const unsigned char* source, std::size_t characters) {
    if (target == nullptr || source == nullptr) return nullptr;
    // The count is in characters: what is left of it when the source ends is filled with as many bytes.
    const std::size_t bytes = _mbsnbcnt(source, characters);
    const std::size_t taken = _mbsnccnt(source, bytes);
    std::memcpy(target, source, bytes);
    std::memset(target + bytes, 0, characters - taken);
    return target;
}

unsigned char* _mbsnbcpy(unsigned char* target, const unsigned char* source, std::size_t bytes) {
    if (target == nullptr || source == nullptr) return nullptr;
    const std::size_t whole = WholeBytes(source, bytes);
    std::memcpy(target, source, whole);
    std::memset(target + whole, 0, bytes - whole);
    return target;
}

unsigned char* _mbsncat(unsigned char* target, const unsigned char* source, std::size_t characters) {
    if (target == nullptr || source == nullptr) return nullptr;
    return Append(target, source, _mbsnbcnt(source, characters));
}

unsigned char* _mbsnbcat(unsigned char* target, const unsigned char* source, std::size_t bytes) {
    if (target == nullptr || source == nullptr) return nullptr;
    return Append(target, source, WholeBytes(source, bytes));
}

unsigned char* _mbsdup(const unsigned char* text) {
    return text == nullptr ? nullptr : reinterpret_cast<Byte*>(::strdup(Text(text)));
}

unsigned char* _mbsupr(unsigned char* text) {
    return MapCase(text, tk::text::ToUpper);
}

unsigned char* _mbslwr(unsigned char* text) {
    return MapCase(text, tk::text::ToLower);
}

unsigned char* _mbsrev(unsigned char* text) {
    if (text == nullptr) return nullptr;
    const std::size_t bytes = WholeBytes(text, std::strlen(Text(text)));
    // Turn each pair around first, so that turning the whole text puts it right again.
    for (std::size_t i = 0; i < bytes;) {
        const std::size_t size = CharacterSize(text + i);
        if (size == 2) std::swap(text[i], text[i + 1]);
        i += size;
    }
    std::reverse(text, text + bytes);
    return text;
}

char* _strrev(char* text) {
    return Text(_mbsrev(reinterpret_cast<Byte*>(text)));
}
