// tkwin32/windows.h - windows without a screen: classes, controls that keep a list, messages to them.
//
//   HWND list = CreateWindowExA(0, "LISTBOX", "", WS_CHILD, 0, 0, 100, 100, owner, NULL, NULL, NULL);
//   SendMessage(list, LB_ADDSTRING, 0, (LPARAM) "COM1");
//   DestroyWindow(list);
//
// A window is a handle with a class procedure, a text, a parent and data of its own; nothing is drawn and nobody
// clicks. The system's classes are STATIC, LISTBOX and COMBOBOX; a program registers others.
// Threads: any. A message runs the window's procedure on the thread that sends it; a control's list is locked for one
// message at a time.
#pragma once

#include "windef.h"

using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

struct WNDCLASSA {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCSTR lpszMenuName;
    LPCSTR lpszClassName;
};
using WNDCLASS = WNDCLASSA;

/// What WM_NCCREATE and WM_CREATE carry in lParam.
struct CREATESTRUCTA {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCSTR lpszName;
    LPCSTR lpszClass;
    DWORD dwExStyle;
};
using CREATESTRUCT = CREATESTRUCTA;
using LPCREATESTRUCT = CREATESTRUCTA*;

#define CW_USEDEFAULT (static_cast<int>(0x80000000))
#define HWND_DESKTOP (static_cast<HWND>(nullptr))
/// The parent of windows that only take messages; as a parent the same as none.
#define HWND_MESSAGE (reinterpret_cast<HWND>(static_cast<LONG_PTR>(-3)))

#define WS_OVERLAPPED 0x00000000u
#define WS_CHILD 0x40000000u
#define WS_VISIBLE 0x10000000u
#define WS_BORDER 0x00800000u
#define WS_VSCROLL 0x00200000u
#define WS_OVERLAPPEDWINDOW 0x00CF0000u
#define CBS_SIMPLE 0x1u
#define CBS_DROPDOWN 0x2u
#define CBS_DROPDOWNLIST 0x3u
#define CBS_SORT 0x100u
#define LBS_NOTIFY 0x1u
#define LBS_SORT 0x2u

#define WM_CREATE 0x0001u
#define WM_DESTROY 0x0002u
#define WM_SETTEXT 0x000Cu
#define WM_GETTEXT 0x000Du
#define WM_GETTEXTLENGTH 0x000Eu
#define WM_CLOSE 0x0010u
#define WM_NCCREATE 0x0081u
#define WM_NCDESTROY 0x0082u
#define WM_COMMAND 0x0111u

// The messages of a list; an index counts from 0, an error is -1.
#define CB_ADDSTRING 0x0143u
#define CB_DELETESTRING 0x0144u
#define CB_GETCOUNT 0x0146u
#define CB_GETCURSEL 0x0147u
#define CB_GETLBTEXT 0x0148u
#define CB_GETLBTEXTLEN 0x0149u
#define CB_INSERTSTRING 0x014Au
#define CB_RESETCONTENT 0x014Bu
#define CB_FINDSTRING 0x014Cu
#define CB_SETCURSEL 0x014Eu
#define CB_GETITEMDATA 0x0150u
#define CB_SETITEMDATA 0x0151u
#define CB_FINDSTRINGEXACT 0x0158u
#define CB_OKAY 0
#define CB_ERR (-1)
#define LB_ADDSTRING 0x0180u
#define LB_INSERTSTRING 0x0181u
#define LB_DELETESTRING 0x0182u
#define LB_RESETCONTENT 0x0184u
#define LB_SETCURSEL 0x0186u
#define LB_GETCURSEL 0x0188u
#define LB_GETTEXT 0x0189u
#define LB_GETTEXTLEN 0x018Au
#define LB_GETCOUNT 0x018Bu
#define LB_FINDSTRING 0x018Fu
#define LB_GETITEMDATA 0x0199u
#define LB_SETITEMDATA 0x019Au
#define LB_FINDSTRINGEXACT 0x01A2u
#define LB_OKAY 0
#define LB_ERR (-1)

#define SW_HIDE 0
#define SW_SHOWNORMAL 1
#define SW_SHOWMINIMIZED 2
#define SW_SHOWMAXIMIZED 3
#define SW_SHOW 5
#define SW_SHOWMINNOACTIVE 7

#define GWLP_WNDPROC (-4)
#define GWLP_HINSTANCE (-6)
#define GWLP_HWNDPARENT (-8)
#define GWLP_ID (-12)
#define GWL_STYLE (-16)
#define GWL_EXSTYLE (-20)
#define GWLP_USERDATA (-21)

/// @return a number above 0; 0 with ERROR_CLASS_ALREADY_EXISTS, or ERROR_INVALID_PARAMETER without name or procedure
/// @note Of the record the procedure, the name and the module count.
WINUSERAPI ATOM WINAPI RegisterClassA(const WNDCLASSA* lpWndClass);
/// @return FALSE with ERROR_CLASS_HAS_WINDOWS while windows of it live, ERROR_CLASS_DOES_NOT_EXIST for others
WINUSERAPI BOOL WINAPI UnregisterClassA(LPCSTR lpClassName, HINSTANCE hInstance);

/// Sends WM_NCCREATE and WM_CREATE, either of which may refuse.
/// @param lpClassName  in either case, or the number of a registered class; places and sizes are passed on, not kept
/// @param hWndParent  null or a live window, which takes this one along when it is destroyed
/// @param hMenu  the number of a child window
/// @return null with ERROR_CANNOT_FIND_WND_CLASS, ERROR_INVALID_WINDOW_HANDLE, or what the window refused with
WINUSERAPI HWND WINAPI CreateWindowExA(DWORD dwExStyle, LPCSTR lpClassName, LPCSTR lpWindowName, DWORD dwStyle, int X,
                                       int Y, int nWidth, int nHeight, HWND hWndParent, HMENU hMenu,
                                       HINSTANCE hInstance, LPVOID lpParam);
/// Sends WM_DESTROY, destroys the children, and sends WM_NCDESTROY, the last message.
WINUSERAPI BOOL WINAPI DestroyWindow(HWND hWnd);
/// Handles are not used again while the process lives.
WINUSERAPI BOOL WINAPI IsWindow(HWND hWnd);
/// @return the procedure's answer; 0 with ERROR_INVALID_WINDOW_HANDLE for a window that is none
WINUSERAPI LRESULT WINAPI SendMessageA(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam);
/// What every window does: keeps its text, is destroyed by WM_CLOSE; 1 for WM_NCCREATE, 0 for anything else.
WINUSERAPI LRESULT WINAPI DefWindowProcA(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam);
WINUSERAPI LRESULT WINAPI CallWindowProcA(WNDPROC lpPrevWndFunc, HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam);

WINUSERAPI HWND WINAPI GetParent(HWND hWnd);
WINUSERAPI int WINAPI GetDlgCtrlID(HWND hWnd);
/// The child with a number. @return null when there is none
WINUSERAPI HWND WINAPI GetDlgItem(HWND hDlg, int nIDDlgItem);
/// @return length of the name as stored, without the terminator
WINUSERAPI int WINAPI GetClassNameA(HWND hWnd, LPSTR lpClassName, int nMaxCount);
/// @param nIndex  GWLP_... or GWL_...; another one is ERROR_INVALID_INDEX
WINUSERAPI LONG_PTR WINAPI GetWindowLongPtrA(HWND hWnd, int nIndex);
/// @return the value before
WINUSERAPI LONG_PTR WINAPI SetWindowLongPtrA(HWND hWnd, int nIndex, LONG_PTR dwNewLong);
/// The three send WM_SETTEXT, WM_GETTEXT and WM_GETTEXTLENGTH.
WINUSERAPI BOOL WINAPI SetWindowTextA(HWND hWnd, LPCSTR lpString);
WINUSERAPI int WINAPI GetWindowTextA(HWND hWnd, LPSTR lpString, int nMaxCount);
WINUSERAPI int WINAPI GetWindowTextLengthA(HWND hWnd);

#define RegisterClass RegisterClassA
#define UnregisterClass UnregisterClassA
#define CreateWindowEx CreateWindowExA
#define CreateWindowA(name, text, style, x, y, width, height, parent, menu, module, data) \
    CreateWindowExA(0, name, text, style, x, y, width, height, parent, menu, module, data)
#define CreateWindow CreateWindowA
#define SendMessage SendMessageA
#define DefWindowProc DefWindowProcA
#define CallWindowProc CallWindowProcA
#define GetClassName GetClassNameA
#define GetWindowLongPtr GetWindowLongPtrA
#define SetWindowLongPtr SetWindowLongPtrA
#define SetWindowText SetWindowTextA
#define GetWindowText GetWindowTextA
#define GetWindowTextLength GetWindowTextLengthA
