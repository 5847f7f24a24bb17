// tkwin32/thread_messages.h - messages from thread to thread.
//
//   MSG message;
//   PeekMessage(&message, NULL, WM_USER, WM_USER, PM_NOREMOVE);  // from now on this thread has a queue
//   ... hand GetCurrentThreadId() to whoever reports ...
//   while (GetMessage(&message, NULL, 0, 0) > 0) Handle(message);
//
// Windows have no part in this: every message is a thread's own, its hwnd null. A queue exists from the first time its
// thread looks into it until the thread ends.
// Threads: any; a thread reads its own queue alone.
#pragma once

#include "windef.h"

#define WM_NULL 0x0u
#define WM_QUIT 0x12u
#define WM_USER 0x400u
#define WM_APP 0x8000u

#define PM_NOREMOVE 0x0u
#define PM_REMOVE 0x1u
#define PM_NOYIELD 0x2u

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;  // GetTickCount when it was posted
    POINT pt;    // 0, 0: there is no pointer
};
using PMSG = MSG*;
using LPMSG = MSG*;

/// Puts a message behind the others and does not wait for it to be read.
/// @return 0 with ERROR_INVALID_THREAD_ID for a thread without a queue, ERROR_NOT_ENOUGH_QUOTA when 10,000 wait there
WINUSERAPI BOOL WINAPI PostThreadMessageA(DWORD idThread, UINT Msg, WPARAM wParam, LPARAM lParam);

/// The first message whose number lies between the two (both 0: any), without waiting. WM_QUIT is always among them.
/// @param hWnd  null or -1; a window has no messages: 0 with ERROR_INVALID_WINDOW_HANDLE
/// @return 1, or 0 when there is none
WINUSERAPI BOOL WINAPI PeekMessageA(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax, UINT wRemoveMsg);

/// Takes the first such message out, and waits until there is one.
/// @return 0 for WM_QUIT, -1 for a window, else 1
WINUSERAPI BOOL WINAPI GetMessageA(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax);

/// Gives this thread a WM_QUIT with that wParam once all its other messages are read.
WINUSERAPI VOID WINAPI PostQuitMessage(int nExitCode);

#define PostThreadMessage PostThreadMessageA
#define PeekMessage PeekMessageA
#define GetMessage GetMessageA
