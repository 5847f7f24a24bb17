// afx/letter_case.h - small and capital letters of GBK text, the same on every system whatever its own code page is.
#pragma once

namespace tk::afx {

/// Map a text in place; its length does not change. A letter whose other case is no character of the same size stays.
void MakeCapitals(char* text, int length) noexcept;
void MakeSmall(char* text, int length) noexcept;

/// Compares by the codes of the characters, capitals taken as small letters, up to the first NUL.
/// @return -1, 0 or 1
int CompareIgnoringCase(const char* first, const char* second) noexcept;

}  // namespace tk::afx
