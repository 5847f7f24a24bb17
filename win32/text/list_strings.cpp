#include <cstring>
#include <string>

#include "tkwin32/text.h"
#include "windows.h"

namespace {

template <class Unit>
Unit* Copy(Unit* target, const Unit* source, std::size_t units) noexcept {
    // The platform lets the two overlap.
    std::memmove(target, source, units * sizeof(Unit));
    target[units] = 0;
    return target;
}

template <class Unit>
std::size_t Length(const Unit* text) noexcept {
    return std::char_traits<Unit>::length(text);
}

}  // namespace

int WINAPI lstrlenA(LPCSTR text) {
    return text == nullptr ? 0 : static_cast<int>(Length(text));
}

int WINAPI lstrlenW(LPCWSTR text) {
    return text == nullptr ? 0 : static_cast<int>(Length(text));
}

LPSTR WINAPI lstrcpyA(LPSTR target, LPCSTR source) {
    return target == nullptr || source == nullptr ? nullptr : Copy(target, source, Length(source));
}

LPWSTR WINAPI lstrcpyW(LPWSTR target, LPCWSTR source) {
    return target == nullptr || source == nullptr ? nullptr : Copy(target, source, Length(source));
}

LPSTR WINAPI lstrcatA(LPSTR target, LPCSTR source) {
    if (target == nullptr || source == nullptr) return nullptr;
    Copy(target + Length(target), source, Length(source));
    return target;
}

LPWSTR WINAPI lstrcatW(LPWSTR target, LPCWSTR source) {
    if (target == nullptr || source == nullptr) return nullptr;
    Copy(target + Length(target), source, Length(source));
    return target;
}

LPSTR WINAPI lstrcpynA(LPSTR target, LPCSTR source, int size) {
    if (target == nullptr || source == nullptr) return nullptr;
    if (size <= 0) return target;
    const std::size_t room = static_cast<std::size_t>(size) - 1;
    return Copy(target, source, tk::text::WholeGbkPrefix({source, strnlen(source, room + 1)}, room));
}

LPWSTR WINAPI lstrcpynW(LPWSTR target, LPCWSTR source, int size) {
    if (target == nullptr || source == nullptr) return nullptr;
    if (size <= 0) return target;
    const std::size_t room = static_cast<std::size_t>(size) - 1;
    std::size_t units = 0;
    while (units < room && source[units] != 0)
        ++units;
    return Copy(target, source, units);
}
