#include "mbstring.h"
#include "win32/text/gbk_steps.h"
#include "win32/text/letter_case.h"
#include "windows.h"

namespace {

using tk::text::Byte;

constexpr std::size_t kAll = static_cast<std::size_t>(-1);

// Takes one character from the front of at most `bytes` bytes. A lead byte without its second byte is the end: 0.
unsigned Take(const Byte*& at, std::size_t& bytes) noexcept {
    const std::size_t size = tk::text::CharacterSize(at, bytes);
    if (size == 0 || (size == 1 && tk::text::IsLead(*at))) return 0;
    const unsigned code = tk::text::CharacterCode(at, size);
    at += size;
    if (bytes != kAll) bytes -= size;
    return code;
}

// @param characters, bytes  whichever limit is reached first
int Compare(const Byte* first, const Byte* second, std::size_t characters, std::size_t bytes,
            bool ignoreCase) noexcept {
    if (characters == 0 || bytes == 0) return 0;
    if (first == nullptr || second == nullptr) return _NLSCMPERROR;
    std::size_t firstLeft = bytes;
    std::size_t secondLeft = bytes;
    for (; characters != 0; --characters) {
        unsigned a = Take(first, firstLeft);
        unsigned b = Take(second, secondLeft);
        if (ignoreCase && a != b) {
            a = tk::text::MapGbk(static_cast<std::uint16_t>(a), tk::text::ToLower);
            b = tk::text::MapGbk(static_cast<std::uint16_t>(b), tk::text::ToLower);
        }
        if (a != b) return a < b ? -1 : 1;
        if (a == 0) break;
    }
    return 0;
}

int Collate(const Byte* first, const Byte* second, DWORD flags) noexcept {
    if (first == nullptr || second == nullptr) return _NLSCMPERROR;
    const int result = CompareStringA(GetSystemDefaultLCID(), SORT_STRINGSORT | flags, reinterpret_cast<LPCSTR>(first),
                                      -1, reinterpret_cast<LPCSTR>(second), -1);
    return result == 0 ? _NLSCMPERROR : result - CSTR_EQUAL;
}

}  // namespace

int _mbscmp(const unsigned char* first, const unsigned char* second) {
    return Compare(first, second, kAll, kAll, false);
}

int _mbsncmp(const unsigned char* first, const unsigned char* second, std::size_t characters) {
    return Compare(first, second, characters, kAll, false);
}

int _mbsnbcmp(const unsigned char* first, const unsigned char* second, std::size_t bytes) {
    return Compare(first, second, kAll, bytes, false);
}

int _mbsicmp(const unsigned char* first, const unsigned char* second) {
    return Compare(first, second, kAll, kAll, true);
}

int _mbsnicmp(const unsigned char* first, const unsigned char* second, std::size_t characters) {
    return Compare(first, second, characters, kAll, true);
}

int _mbsnbicmp(const unsigned char* first, const unsigned char* second, std::size_t bytes) {
    return Compare(first, second, kAll, bytes, true);
}

int _mbscoll(const unsigned char* first, const unsigned char* second) {
    return Collate(first, second, 0);
}

int _mbsicoll(const unsigned char* first, const unsigned char* second) {
    return Collate(first, second, NORM_IGNORECASE);
}
