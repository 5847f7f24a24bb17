// winnls.h - code pages, locales and text comparison of a Chinese system.
//
//   WCHAR wide[64];
//   int units = MultiByteToWideChar(CP_ACP, 0, name, -1, wide, 64);  // the terminator included
//   if (CompareStringA(LOCALE_USER_DEFAULT, NORM_IGNORECASE, a, -1, b, -1) == CSTR_EQUAL) ...
//
// The system's code page, and every thread's, is 936. Besides it there is 65001 (UTF-8); no other code page is known.
// Threads: any. The locale of SetThreadLocale belongs to the calling thread.
#pragma once

#include "windef.h"
#include "winerror.h"

// ---- Code pages ----------------------------------------------------------------------------------------------------

#define CP_ACP 0u
#define CP_OEMCP 1u
#define CP_THREAD_ACP 3u
#define CP_UTF8 65001u

#define MB_PRECOMPOSED 0x1u
#define MB_ERR_INVALID_CHARS 0x8u
#define WC_ERR_INVALID_CHARS 0x80u
#define WC_NO_BEST_FIT_CHARS 0x400u

/// Turns a text of a code page into UTF-16.
/// @param flags  MB_PRECOMPOSED (936 only; the only form there is) and MB_ERR_INVALID_CHARS
/// @param bytes  length of the text; negative for a text that ends with its terminator, which is converted as well
/// @param units  room in `wide`; 0 asks for the number of units needed
/// @return units stored or needed; 0 with GetLastError(): ERROR_INVALID_PARAMETER (no text, an empty one, no buffer,
///         an unknown code page, both buffers the same), ERROR_INVALID_FLAGS, ERROR_INSUFFICIENT_BUFFER (the characters
///         that fit are stored), ERROR_NO_UNICODE_TRANSLATION (ill-formed text, with MB_ERR_INVALID_CHARS only)
/// @note Without MB_ERR_INVALID_CHARS ill-formed text becomes '?' (936) or U+FFFD (65001).
WINBASEAPI int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int bytes, LPWSTR wide, int units);

/// Turns UTF-16 into a text of a code page.
/// @param flags  WC_NO_BEST_FIT_CHARS (936; always in force: a look-alike never stands in for a character), or
///               WC_ERR_INVALID_CHARS (65001)
/// @param defaultChar  936 only: what stands for a character outside the code page, one or two bytes; null for '?'
/// @param usedDefaultChar  936 only: set to whether the default character was needed; may be null
/// @return bytes stored or needed; 0 with GetLastError() as in MultiByteToWideChar
WINBASEAPI int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int units, LPSTR text, int bytes,
                                          LPCSTR defaultChar, LPBOOL usedDefaultChar);

#define MAX_LEADBYTES 12
#define MAX_DEFAULTCHAR 2

struct CPINFO {
    UINT MaxCharSize;
    BYTE DefaultChar[MAX_DEFAULTCHAR];
    BYTE LeadByte[MAX_LEADBYTES];  // pairs of first and last; ends with two zeros
};
using LPCPINFO = CPINFO*;

WINBASEAPI UINT WINAPI GetACP();
WINBASEAPI UINT WINAPI GetOEMCP();
WINBASEAPI BOOL WINAPI IsValidCodePage(UINT codePage);  // a number, not CP_ACP and its like
WINBASEAPI BOOL WINAPI GetCPInfo(UINT codePage, LPCPINFO info);
WINBASEAPI BOOL WINAPI IsDBCSLeadByte(BYTE byte);
WINBASEAPI BOOL WINAPI IsDBCSLeadByteEx(UINT codePage, BYTE byte);

// ---- Locales -------------------------------------------------------------------------------------------------------

#define LANG_NEUTRAL 0x00
#define LANG_CHINESE 0x04
#define LANG_ENGLISH 0x09
#define LANG_INVARIANT 0x7F
#define SUBLANG_NEUTRAL 0x00
#define SUBLANG_DEFAULT 0x01
#define SUBLANG_SYS_DEFAULT 0x02
#define SUBLANG_CHINESE_SIMPLIFIED 0x02
#define SUBLANG_ENGLISH_US 0x01
#define SORT_DEFAULT 0x0
#define SORT_CHINESE_PRCP 0x0
#define LOCALE_USER_DEFAULT 0x400u
#define LOCALE_SYSTEM_DEFAULT 0x800u
#define LOCALE_NEUTRAL 0x0u
#define LOCALE_INVARIANT 0x7Fu
#define LOCALE_USE_CP_ACP 0x40000000u
#define LOCALE_NOUSEROVERRIDE 0x80000000u

WINBASEAPI LCID WINAPI GetSystemDefaultLCID();  // 0x0804
WINBASEAPI LCID WINAPI GetUserDefaultLCID();
WINBASEAPI LANGID WINAPI GetSystemDefaultLangID();
WINBASEAPI LANGID WINAPI GetUserDefaultLangID();
WINBASEAPI LCID WINAPI GetThreadLocale();
/// @param locale  0x0804, 0x0409, LOCALE_INVARIANT or one of the defaults
/// @return FALSE with ERROR_INVALID_PARAMETER for another one
WINBASEAPI BOOL WINAPI SetThreadLocale(LCID locale);

// ---- Comparison ----------------------------------------------------------------------------------------------------

#define NORM_IGNORECASE 0x1u
#define NORM_IGNORENONSPACE 0x2u
#define NORM_IGNORESYMBOLS 0x4u
#define LINGUISTIC_IGNORECASE 0x10u
#define LINGUISTIC_IGNOREDIACRITIC 0x20u
#define NORM_IGNOREKANATYPE 0x10000u
#define NORM_IGNOREWIDTH 0x20000u
#define NORM_LINGUISTIC_CASING 0x8000000u
#define SORT_STRINGSORT 0x1000u

#define CSTR_LESS_THAN 1
#define CSTR_EQUAL 2
#define CSTR_GREATER_THAN 3

/// Puts two texts in order: symbols, digits, letters, ideographs; these by pinyin for 0x0804, by code for the other
/// locales. Letters count first, then accents, then forms (small letters before capitals, half width before full
/// width), then, unless SORT_STRINGSORT is given, apostrophes and hyphens. Control characters do not count.
/// @param firstLength, secondLength  units of each text; negative for a text that ends with its terminator
/// @return CSTR_LESS_THAN, CSTR_EQUAL or CSTR_GREATER_THAN; 0 with ERROR_INVALID_PARAMETER (no text, unknown locale) or
///         ERROR_INVALID_FLAGS
WINBASEAPI int WINAPI CompareStringW(LCID locale, DWORD flags, LPCWSTR first, int firstLength, LPCWSTR second,
                                     int secondLength);
/// As CompareStringW, for GBK. @return 0 with ERROR_NOT_ENOUGH_MEMORY as well
WINBASEAPI int WINAPI CompareStringA(LCID locale, DWORD flags, LPCSTR first, int firstLength, LPCSTR second,
                                     int secondLength);

/// Compare in the order of CompareString for the locale of the thread. A null text is below every other one.
/// @return -1, 0 or 1; where memory runs out, the order of the bytes
WINBASEAPI int WINAPI lstrcmpA(LPCSTR first, LPCSTR second);
WINBASEAPI int WINAPI lstrcmpW(LPCWSTR first, LPCWSTR second);
WINBASEAPI int WINAPI lstrcmpiA(LPCSTR first, LPCSTR second);  // small and capital letters are the same
WINBASEAPI int WINAPI lstrcmpiW(LPCWSTR first, LPCWSTR second);

// ---- Length, copy ------------------------------------------------------------------------------------------------

WINBASEAPI int WINAPI lstrlenA(LPCSTR text);  // units; 0 for null
WINBASEAPI int WINAPI lstrlenW(LPCWSTR text);
/// @return the target; null, and nothing is stored, when one of the two is null
WINBASEAPI LPSTR WINAPI lstrcpyA(LPSTR target, LPCSTR source);
WINBASEAPI LPWSTR WINAPI lstrcpyW(LPWSTR target, LPCWSTR source);
WINBASEAPI LPSTR WINAPI lstrcatA(LPSTR target, LPCSTR source);
WINBASEAPI LPWSTR WINAPI lstrcatW(LPWSTR target, LPCWSTR source);
/// Copies at most `size` - 1 units and a terminator; nothing when `size` is not positive. lstrcpynA keeps double-byte
/// characters whole.
WINBASEAPI LPSTR WINAPI lstrcpynA(LPSTR target, LPCSTR source, int size);
WINBASEAPI LPWSTR WINAPI lstrcpynW(LPWSTR target, LPCWSTR source, int size);

#define CompareString CompareStringA
#define lstrcmp lstrcmpA
#define lstrcmpi lstrcmpiA
#define lstrlen lstrlenA
#define lstrcpy lstrcpyA
#define lstrcat lstrcatA
#define lstrcpyn lstrcpynA
