// tkwin32/resources.h - texts and menus of a module, kept beside it in a resource script.
//
//   LoadStringA(GetModuleHandleA(NULL), 101, text, sizeof text);   // from "program.rc" beside "program"
//
// The resources of a module are in the file of its name with ".rc" behind it, in UTF-8, or in GBK behind the line
// `#pragma code_page(936)`. It is an ordinary resource script of which these parts are read:
//
//   #define IDS_TITLE 101                   // numbers, decimal or 0x...; #include "resource.h" reads more of them
//   STRINGTABLE BEGIN IDS_TITLE "text" END  // "" stands for one quotation mark; \n \r \t \\ \" as in C
//   7 MENU BEGIN POPUP "File" BEGIN MENUITEM "Open", 40001, GRAYED  MENUITEM SEPARATOR END END
//
// { and } may stand for BEGIN and END. Anything else is passed over. A file is read again when it changes.
// Threads: any.
#pragma once

#include "windef.h"

#define MAKEINTRESOURCEA(number) (reinterpret_cast<LPSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(number))))
#define MAKEINTRESOURCE MAKEINTRESOURCEA
#define IS_INTRESOURCE(name) ((reinterpret_cast<ULONG_PTR>(name) >> 16) == 0)

/// @param hInstance  null for the program
/// @param cchBufferMax  bytes of the buffer; a longer text is cut behind a whole character
/// @return length of the text; 0 with ERROR_RESOURCE_NAME_NOT_FOUND and an empty buffer when there is none
WINUSERAPI int WINAPI LoadStringA(HINSTANCE hInstance, UINT uID, LPSTR lpBuffer, int cchBufferMax);
/// @param lpMenuName  a name, or MAKEINTRESOURCE of a number
/// @return a menu, the caller's to destroy; null with ERROR_RESOURCE_NAME_NOT_FOUND
WINUSERAPI HMENU WINAPI LoadMenuA(HINSTANCE hInstance, LPCSTR lpMenuName);

#define LoadString LoadStringA
#define LoadMenu LoadMenuA
