#include "tkwin32/crt_text.h"

#include <cerrno>
#include <charconv>
#include <concepts>
#include <cstdlib>
#include <cstring>

#include "win32/text/gbk_steps.h"

namespace {

using tk::text::Byte;

constexpr Byte Small(Byte byte) noexcept {
    return byte >= 'A' && byte <= 'Z' ? static_cast<Byte>(byte + 32) : byte;
}

constexpr Byte Capital(Byte byte) noexcept {
    return byte >= 'a' && byte <= 'z' ? static_cast<Byte>(byte - 32) : byte;
}

Byte* Bytes(char* text) noexcept {
    return reinterpret_cast<Byte*>(text);
}

const Byte* Bytes(const char* text) noexcept {
    return reinterpret_cast<const Byte*>(text);
}

// Both texts are at the same character boundary as long as they are equal, so the first one tells which byte is a
// trail.
int CompareNoCase(const Byte* first, const Byte* second, std::size_t bytes) noexcept {
    bool trail = false;
    for (std::size_t i = 0; i < bytes; ++i) {
        const Byte a = trail ? first[i] : Small(first[i]);
        const Byte b = trail ? second[i] : Small(second[i]);
        if (a != b || a == 0) return a - b;
        trail = !trail && tk::text::IsLead(first[i]);
    }
    return 0;
}

char* MapSingles(char* text, Byte (*map)(Byte) noexcept) noexcept {
    std::size_t size;
    for (Byte* at = Bytes(text); (size = tk::text::CharacterSize(at)) != 0; at += size) {
        if (size == 1) *at = map(*at);
    }
    return text;
}

template <std::unsigned_integral Number>
char* Write(Number value, bool negative, char* buffer, int radix) noexcept {
    if (radix < 2 || radix > 36) {
        errno = EINVAL;
        *buffer = 0;
        return buffer;
    }
    char* at = buffer;
    if (negative) *at++ = '-';
    *std::to_chars(at, at + sizeof(Number) * 8, value, radix).ptr = 0;
    return buffer;
}

template <std::signed_integral Number>
char* Write(Number value, char* buffer, int radix) noexcept {
    const bool negative = radix == 10 && value < 0;
    auto bits = static_cast<std::make_unsigned_t<Number>>(value);
    if (negative) bits = 0 - bits;
    return Write(bits, negative, buffer, radix);
}

}  // namespace

int _stricmp(const char* first, const char* second) {
    return CompareNoCase(Bytes(first), Bytes(second), static_cast<std::size_t>(-1));
}

int _strnicmp(const char* first, const char* second, std::size_t bytes) {
    return CompareNoCase(Bytes(first), Bytes(second), bytes);
}

char* _strupr(char* text) {
    return MapSingles(text, Capital);
}

char* _strlwr(char* text) {
    return MapSingles(text, Small);
}

char* _strdup(const char* text) {
    return text == nullptr ? nullptr : ::strdup(text);
}

char* _itoa(int value, char* buffer, int radix) {
    return Write(value, buffer, radix);
}

char* _ltoa(LONG value, char* buffer, int radix) {
    return Write(value, buffer, radix);
}

char* _ultoa(ULONG value, char* buffer, int radix) {
    return Write(value, false, buffer, radix);
}

char* _i64toa(LONGLONG value, char* buffer, int radix) {
    return Write(value, buffer, radix);
}

char* _ui64toa(ULONGLONG value, char* buffer, int radix) {
    return Write(value, false, buffer, radix);
}

LONGLONG _atoi64(const char* text) {
    const int saved = errno;
    const LONGLONG value = std::strtoll(text, nullptr, 10);
    errno = saved;
    return value;
}
