// ado/cursor/text.h - UTF-8 of the rows and of SQL, UTF-16 of the automation side, and comparing names.
#pragma once

#include <windows.h>

#include <cstring>
#include <string>
#include <string_view>

#include <tkwin32/text.h>

namespace tk::ado {

inline std::u16string ToUtf16(std::string_view utf8) {
    return tk::text::Utf8ToUtf16(utf8);
}
inline std::string ToUtf8(std::u16string_view utf16) {
    return tk::text::Utf16ToUtf8(utf16);
}

/// The same text; quicker than ==, which looks at one unit after the other.
inline bool SameText(std::u16string_view first, std::u16string_view second) noexcept {
    if (first.size() != second.size()) return false;
    return first.empty() || std::memcmp(first.data(), second.data(), first.size() * sizeof(char16_t)) == 0;
}

/// Into a buffer that keeps its memory for the next text.
void StoreUtf16(std::string_view utf8, std::u16string& text);

/// Upper case of one UTF-16 unit; halves of surrogate pairs stay.
char16_t FoldUnit(char16_t unit) noexcept;

/// Names of fields, properties and members: equal without regard to case.
bool SameName(std::u16string_view first, std::u16string_view second) noexcept;

/// A decimal number, for texts of errors.
std::u16string NumberText(long long number);

}  // namespace tk::ado
