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
