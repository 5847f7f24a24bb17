#include "win32/text/locale.h"

#include "windows.h"

namespace tk::text {

LCID ResolveLocale(LCID locale) noexcept {
    locale &= ~LOCALE_USE_CP_ACP;
    if (locale == LOCALE_NEUTRAL || locale == LOCALE_USER_DEFAULT || locale == LOCALE_SYSTEM_DEFAULT) return kChinese;
    return locale == kChinese || locale == kEnglish || locale == LOCALE_INVARIANT ? locale : 0;
}

}  // namespace tk::text

namespace {

thread_local LCID threadLocale = tk::text::kChinese;

}  // namespace

LCID WINAPI GetSystemDefaultLCID() {
    return tk::text::kChinese;
}

LCID WINAPI GetUserDefaultLCID() {
    return tk::text::kChinese;
}

LANGID WINAPI GetSystemDefaultLangID() {
    return static_cast<LANGID>(tk::text::kChinese);
}

LANGID WINAPI GetUserDefaultLangID() {
    return static_cast<LANGID>(tk::text::kChinese);
}

LCID WINAPI GetThreadLocale() {
    return threadLocale;
}

BOOL WINAPI SetThreadLocale(LCID locale) {
    const LCID known = tk::text::ResolveLocale(locale);
    if (known == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    threadLocale = known;
    return TRUE;
}
