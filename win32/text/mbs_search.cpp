#include "mbstring.h"
#include "win32/text/gbk_steps.h"

namespace {

using tk::text::Byte;
using tk::text::CharacterCode;
using tk::text::CharacterSize;

Byte* Found(const Byte* at) noexcept {
    return const_cast<Byte*>(at);
}

bool IsIn(const Byte* set, unsigned character) noexcept {
    std::size_t size;
    for (; (size = CharacterSize(set)) != 0; set += size) {
        if (CharacterCode(set, size) == character) return true;
    }
    return false;
}

// The first character that is, or is not, in the set; else the terminator.
const Byte* Skip(const Byte* text, const Byte* set, bool whileIn) noexcept {
    std::size_t size;
    while ((size = CharacterSize(text)) != 0 && IsIn(set, CharacterCode(text, size)) == whileIn)
        text += size;
    return text;
}

bool StartsWith(const Byte* text, const Byte* wanted) noexcept {
    for (; *wanted != 0; ++text, ++wanted) {
        if (*text != *wanted) return false;
    }
    return true;
}

}  // namespace

unsigned char* _mbschr(const unsigned char* text, unsigned int character) {
    if (text == nullptr) return nullptr;
    for (;;) {
        const std::size_t size = CharacterSize(text);
        if (CharacterCode(text, size) == character) return Found(text);
        if (size == 0) return nullptr;
        text += size;
    }
}

unsigned char* _mbsrchr(const unsigned char* text, unsigned int character) {
    if (text == nullptr) return nullptr;
    const Byte* last = nullptr;
    for (;;) {
        const std::size_t size = CharacterSize(text);
        if (CharacterCode(text, size) == character) last = text;
        if (size == 0) return Found(last);
        text += size;
    }
}

unsigned char* _mbsstr(const unsigned char* text, const unsigned char* wanted) {
    if (text == nullptr || wanted == nullptr) return nullptr;
    if (*wanted == 0) return Found(text);
    std::size_t size;
    for (; (size = CharacterSize(text)) != 0; text += size) {
        if (StartsWith(text, wanted)) return Found(text);
    }
    return nullptr;
}

std::size_t _mbsspn(const unsigned char* text, const unsigned char* set) {
    if (text == nullptr || set == nullptr) return 0;
    return static_cast<std::size_t>(Skip(text, set, true) - text);
}

std::size_t _mbscspn(const unsigned char* text, const unsigned char* set) {
    if (text == nullptr || set == nullptr) return 0;
    return static_cast<std::size_t>(Skip(text, set, false) - text);
}

unsigned char* _mbspbrk(const unsigned char* text, const unsigned char* set) {
    if (text == nullptr || set == nullptr) return nullptr;
    const Byte* at = Skip(text, set, false);
    return *at == 0 ? nullptr : Found(at);
}

unsigned char* _mbsspnp(const unsigned char* text, const unsigned char* set) {
    if (text == nullptr || set == nullptr) return nullptr;
    const Byte* at = Skip(text, set, true);
    return *at == 0 ? nullptr : Found(at);
}

unsigned char* _mbstok(unsigned char* text, const unsigned char* separators) {
    thread_local Byte* next = nullptr;
    if (text == nullptr) text = next;
    if (text == nullptr || separators == nullptr) return nullptr;
    Byte* token = Found(Skip(text, separators, true));
    if (*token == 0) {
        next = nullptr;
        return nullptr;
    }
    Byte* end = Found(Skip(token, separators, false));
    next = end + CharacterSize(end);
    // The whole separator goes, not half of it.
    while (end != next)
        *end++ = 0;
    return token;
}
