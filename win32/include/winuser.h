// winuser.h - the user interface without a screen: windows, menus, resources, messages; letters and steps of texts.
//
//   for (LPCSTR at = path; *at != 0; at = CharNextA(at)) if (*at == '\\') last = at;
//
// The A functions take GBK and never mistake the second byte of a character for one of its own. A character keeps its
// size: one whose other case is outside the code page stays as it is.
// Threads: any.
#pragma once

#include "tkwin32/menus.h"
#include "tkwin32/message_box.h"
#include "tkwin32/resources.h"
#include "tkwin32/thread_messages.h"
#include "tkwin32/windows.h"
#include "windef.h"

/// The window of this thread that has the attention. @return null: nobody looks at windows here
inline HWND GetActiveWindow() noexcept {
    return nullptr;
}

/// Turn a text into capitals, or into small letters, in place.
/// @param text  a text that ends with its terminator, or a single character in place of a pointer (a value up to
/// 0xFFFF)
/// @return the text, or the other case of the character
WINUSERAPI LPSTR WINAPI CharUpperA(LPSTR text);
WINUSERAPI LPWSTR WINAPI CharUpperW(LPWSTR text);
WINUSERAPI LPSTR WINAPI CharLowerA(LPSTR text);
WINUSERAPI LPWSTR WINAPI CharLowerW(LPWSTR text);

/// The same for a text of given length. @return units taken; 0 for null
WINUSERAPI DWORD WINAPI CharUpperBuffA(LPSTR text, DWORD length);
WINUSERAPI DWORD WINAPI CharUpperBuffW(LPWSTR text, DWORD length);
WINUSERAPI DWORD WINAPI CharLowerBuffA(LPSTR text, DWORD length);
WINUSERAPI DWORD WINAPI CharLowerBuffW(LPWSTR text, DWORD length);

/// The character after the one at `text`; at the terminator, the terminator.
WINUSERAPI LPSTR WINAPI CharNextA(LPCSTR text);
WINUSERAPI LPWSTR WINAPI CharNextW(LPCWSTR text);
/// The character before `text`; at the start, the start. @param start  the beginning of a character
WINUSERAPI LPSTR WINAPI CharPrevA(LPCSTR start, LPCSTR text);
WINUSERAPI LPWSTR WINAPI CharPrevW(LPCWSTR start, LPCWSTR text);

/// What kind of character a unit is. Of the A functions' single bytes, only ASCII ones are letters or digits;
/// ideographs are letters.
WINUSERAPI BOOL WINAPI IsCharAlphaA(CHAR character);
WINUSERAPI BOOL WINAPI IsCharAlphaW(WCHAR character);
WINUSERAPI BOOL WINAPI IsCharAlphaNumericA(CHAR character);
WINUSERAPI BOOL WINAPI IsCharAlphaNumericW(WCHAR character);
WINUSERAPI BOOL WINAPI IsCharUpperA(CHAR character);
WINUSERAPI BOOL WINAPI IsCharUpperW(WCHAR character);
WINUSERAPI BOOL WINAPI IsCharLowerA(CHAR character);
WINUSERAPI BOOL WINAPI IsCharLowerW(WCHAR character);

#define CharUpper CharUpperA
#define CharLower CharLowerA
#define CharUpperBuff CharUpperBuffA
#define CharLowerBuff CharLowerBuffA
#define CharNext CharNextA
#define CharPrev CharPrevA
#define IsCharAlpha IsCharAlphaA
#define IsCharAlphaNumeric IsCharAlphaNumericA
#define IsCharUpper IsCharUpperA
#define IsCharLower IsCharLowerA
