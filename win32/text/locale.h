// locale.h - the locales this system knows.
#pragma once

#include "windef.h"

namespace tk::text {

inline constexpr LCID kChinese = 0x0804;
inline constexpr LCID kEnglish = 0x0409;

/// The locale behind one of the defaults; 0 for a locale that is not known.
LCID ResolveLocale(LCID locale) noexcept;

}  // namespace tk::text
