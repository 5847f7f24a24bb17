// tkwin32/menus.h - menus, made or loaded, shown as a choice to whoever sits at the machine.
//
//   HMENU menu = CreatePopupMenu();
//   AppendMenu(menu, MF_STRING, 101, "Open");
//   UINT chosen = TrackPopupMenu(menu, TPM_RETURNCMD, 0, 0, 0, owner, NULL);
//   DestroyMenu(menu);
//
// Threads: any, one at a time for one menu.
#pragma once

#include "windef.h"

#define MF_BYCOMMAND 0x0u
#define MF_BYPOSITION 0x400u
#define MF_ENABLED 0x0u
#define MF_GRAYED 0x1u
#define MF_DISABLED 0x2u
#define MF_CHECKED 0x8u
#define MF_POPUP 0x10u
#define MF_SEPARATOR 0x800u
#define MF_DEFAULT 0x1000u
#define MF_STRING 0x0u

#define TPM_LEFTALIGN 0x0u
#define TPM_LEFTBUTTON 0x0u
#define TPM_RIGHTBUTTON 0x2u
#define TPM_NONOTIFY 0x80u
#define TPM_RETURNCMD 0x100u

#define GMDI_USEDISABLED 0x1u
#define GMDI_GOINTOPOPUPS 0x2u

WINUSERAPI HMENU WINAPI CreateMenu();
WINUSERAPI HMENU WINAPI CreatePopupMenu();
/// Destroys a menu with its sub-menus. @return FALSE with ERROR_INVALID_MENU_HANDLE for what is none
WINUSERAPI BOOL WINAPI DestroyMenu(HMENU hMenu);
WINUSERAPI BOOL WINAPI IsMenu(HMENU hMenu);
/// @param uIDNewItem  the command; with MF_POPUP a menu, which then belongs to this one
/// @param uFlags  MF_STRING, MF_SEPARATOR, MF_POPUP, with MF_GRAYED, MF_DISABLED, MF_CHECKED
WINUSERAPI BOOL WINAPI AppendMenuA(HMENU hMenu, UINT uFlags, UINT_PTR uIDNewItem, LPCSTR lpNewItem);
/// @return -1 for what is no menu
WINUSERAPI int WINAPI GetMenuItemCount(HMENU hMenu);
/// The command at a position. @return 0 for a separator; -1 for a sub-menu and for what is not there
WINUSERAPI UINT WINAPI GetMenuItemID(HMENU hMenu, int nPos);
/// @param uFlag  MF_BYCOMMAND looks into sub-menus as well
/// @return the MF_... of an item, for a sub-menu with its number of items in the second byte; -1 when there is none
WINUSERAPI UINT WINAPI GetMenuState(HMENU hMenu, UINT uId, UINT uFlags);
/// @return length of the text; with a null buffer the room it needs, without the terminator
WINUSERAPI int WINAPI GetMenuStringA(HMENU hMenu, UINT uIDItem, LPSTR lpString, int cchMax, UINT flags);
/// @return null when there is no sub-menu at that position
WINUSERAPI HMENU WINAPI GetSubMenu(HMENU hMenu, int nPos);
/// @param uItem  a command of this menu, or with fByPos a position; -1 for no default
WINUSERAPI BOOL WINAPI SetMenuDefaultItem(HMENU hMenu, UINT uItem, UINT fByPos);
/// @return -1 when there is none
WINUSERAPI UINT WINAPI GetMenuDefaultItem(HMENU hMenu, UINT fByPos, UINT gmdiFlags);

/// Offers the items: in a window where a display and zenity are there, on the terminal where there is one. Where nobody
/// can be asked nothing is chosen. A chosen command is sent to the owner as WM_COMMAND before this returns, unless the
/// flags ask for it as the result.
/// @param x, y, prcRect  accepted and not needed
/// @return with TPM_RETURNCMD the command, 0 for none; else TRUE. 0 with ERROR_INVALID_MENU_HANDLE, or
///         ERROR_INVALID_WINDOW_HANDLE without a live owner
WINUSERAPI BOOL WINAPI TrackPopupMenu(HMENU hMenu, UINT uFlags, int x, int y, int nReserved, HWND hWnd,
                                      const RECT* prcRect);
/// There is no pointer: 0, 0. @return TRUE
WINUSERAPI BOOL WINAPI GetCursorPos(LPPOINT lpPoint);

#define AppendMenu AppendMenuA
#define GetMenuString GetMenuStringA
