#include <cstdint>
#include <cstring>
#include <string>

#include "win32/text/gbk_steps.h"
#include "win32/text/letter_case.h"
#include "windows.h"

namespace {

using tk::text::Byte;
using tk::text::CaseMapping;

const Byte* Bytes(LPCSTR text) noexcept {
    return reinterpret_cast<const Byte*>(text);
}

LPSTR Text(const Byte* bytes) noexcept {
    return const_cast<LPSTR>(reinterpret_cast<LPCSTR>(bytes));
}

// No pointer is as small as a character.
template <class Unit>
bool IsSingle(const Unit* text) noexcept {
    return reinterpret_cast<std::uintptr_t>(text) <= 0xFFFF;
}

LPSTR MapA(LPSTR text, CaseMapping mapping) noexcept {
    if (IsSingle(text)) {
        const auto code = static_cast<std::uint16_t>(reinterpret_cast<std::uintptr_t>(text));
        return reinterpret_cast<LPSTR>(static_cast<std::uintptr_t>(tk::text::MapGbk(code, mapping)));
    }
    tk::text::MapGbk(text, std::strlen(text), mapping);
    return text;
}

DWORD MapBufferW(LPWSTR text, std::size_t length, CaseMapping mapping) noexcept {
    if (text == nullptr) return 0;
    for (std::size_t i = 0; i < length; ++i)
        text[i] = mapping(text[i]);
    return static_cast<DWORD>(length);
}

LPWSTR MapW(LPWSTR text, CaseMapping mapping) noexcept {
    if (IsSingle(text)) {
        const auto unit = static_cast<WCHAR>(reinterpret_cast<std::uintptr_t>(text));
        return reinterpret_cast<LPWSTR>(static_cast<std::uintptr_t>(mapping(unit)));
    }
    MapBufferW(text, std::char_traits<WCHAR>::length(text), mapping);
    return text;
}

DWORD MapBufferA(LPSTR text, DWORD length, CaseMapping mapping) noexcept {
    if (text == nullptr) return 0;
    tk::text::MapGbk(text, length, mapping);
    return length;
}

// A single byte of GBK as UTF-16, as far as letters and digits go.
WCHAR Ascii(CHAR character) noexcept {
    const auto byte = static_cast<Byte>(character);
    return byte < 0x80 ? byte : u'\0';
}

}  // namespace

LPSTR WINAPI CharUpperA(LPSTR text) {
    return MapA(text, tk::text::ToUpper);
}

LPWSTR WINAPI CharUpperW(LPWSTR text) {
    return MapW(text, tk::text::ToUpper);
}

LPSTR WINAPI CharLowerA(LPSTR text) {
    return MapA(text, tk::text::ToLower);
}

LPWSTR WINAPI CharLowerW(LPWSTR text) {
    return MapW(text, tk::text::ToLower);
}

DWORD WINAPI CharUpperBuffA(LPSTR text, DWORD length) {
    return MapBufferA(text, length, tk::text::ToUpper);
}

DWORD WINAPI CharUpperBuffW(LPWSTR text, DWORD length) {
    return MapBufferW(text, length, tk::text::ToUpper);
}

DWORD WINAPI CharLowerBuffA(LPSTR text, DWORD length) {
    return MapBufferA(text, length, tk::text::ToLower);
}

DWORD WINAPI CharLowerBuffW(LPWSTR text, DWORD length) {
    return MapBufferW(text, length, tk::text::ToLower);
}

LPSTR WINAPI CharNextA(LPCSTR text) {
    return Text(Bytes(text) + tk::text::CharacterSize(Bytes(text)));
}

LPWSTR WINAPI CharNextW(LPCWSTR text) {
    return const_cast<LPWSTR>(*text == 0 ? text : text + 1);
}

LPSTR WINAPI CharPrevA(LPCSTR start, LPCSTR text) {
    return text > start ? Text(tk::text::PreviousCharacter(Bytes(start), Bytes(text))) : Text(Bytes(start));
}

LPWSTR WINAPI CharPrevW(LPCWSTR start, LPCWSTR text) {
    return const_cast<LPWSTR>(text > start ? text - 1 : start);
}

BOOL WINAPI IsCharAlphaW(WCHAR character) {
    return tk::text::IsLetter(character);
}

BOOL WINAPI IsCharAlphaNumericW(WCHAR character) {
    return tk::text::IsLetter(character) || tk::text::IsDigit(character);
}

BOOL WINAPI IsCharUpperW(WCHAR character) {
    return tk::text::ToLower(character) != character;
}

BOOL WINAPI IsCharLowerW(WCHAR character) {
    return tk::text::ToUpper(character) != character;
}

BOOL WINAPI IsCharAlphaA(CHAR character) {
    return IsCharAlphaW(Ascii(character));
}

BOOL WINAPI IsCharAlphaNumericA(CHAR character) {
    return IsCharAlphaNumericW(Ascii(character));
}

BOOL WINAPI IsCharUpperA(CHAR character) {
    return IsCharUpperW(Ascii(character));
}

BOOL WINAPI IsCharLowerA(CHAR character) {
    return IsCharLowerW(Ascii(character));
}
