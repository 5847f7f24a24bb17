// tkwin32/message_box.h - a question to whoever sits at the machine.
//
//   if (MessageBox(NULL, text, caption, MB_YESNO | MB_ICONQUESTION) == IDYES) Delete();
//
// A window where a display and zenity are there; a question on the terminal where there is one; otherwise nobody can
// answer, the text goes to standard error, and the answer is the one that does least: No, Cancel, Abort, or OK.
#pragma once

#include "windef.h"

#define MB_OK 0x0u
#define MB_OKCANCEL 0x1u
#define MB_ABORTRETRYIGNORE 0x2u
#define MB_YESNOCANCEL 0x3u
#define MB_YESNO 0x4u
#define MB_RETRYCANCEL 0x5u
#define MB_TYPEMASK 0xFu
#define MB_ICONHAND 0x10u
#define MB_ICONERROR MB_ICONHAND
#define MB_ICONSTOP MB_ICONHAND
#define MB_ICONQUESTION 0x20u
#define MB_ICONEXCLAMATION 0x30u
#define MB_ICONWARNING MB_ICONEXCLAMATION
#define MB_ICONASTERISK 0x40u
#define MB_ICONINFORMATION MB_ICONASTERISK
#define MB_ICONMASK 0xF0u
#define MB_DEFBUTTON1 0x0u
#define MB_DEFBUTTON2 0x100u
#define MB_DEFBUTTON3 0x200u
#define MB_DEFMASK 0xF00u
#define MB_APPLMODAL 0x0u
#define MB_SYSTEMMODAL 0x1000u
#define MB_TASKMODAL 0x2000u
#define MB_SETFOREGROUND 0x10000u
#define MB_TOPMOST 0x40000u
#define MB_SERVICE_NOTIFICATION 0x200000u

#define IDOK 1
#define IDCANCEL 2
#define IDABORT 3
#define IDRETRY 4
#define IDIGNORE 5
#define IDYES 6
#define IDNO 7

/// Waits for the answer.
/// @param hWnd  the owner, not used; lpText, lpCaption  may be null (no text; the usual caption)
/// @return one of ID...; 0 for buttons that do not exist
WINUSERAPI int MessageBoxA(HWND hWnd, LPCSTR lpText, LPCSTR lpCaption, UINT uType);
#define MessageBox MessageBoxA
