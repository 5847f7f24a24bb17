// wingdi.h - device contexts as far as coordinates go: mapping modes, extents and origins.
//
//   HDC context = CreateCompatibleDC(NULL);
//   SetMapMode(context, MM_LOMETRIC);
//   DPtoLP(context, &point, 1);
//   DeleteDC(context);
//
// Nothing is drawn. Every context is of one display of 1280 by 1024 pixels at 96 to the inch.
// Threads: any; one context is used by one at a time.
#pragma once

#include "windef.h"

#define MM_TEXT 1
#define MM_LOMETRIC 2
#define MM_HIMETRIC 3
#define MM_LOENGLISH 4
#define MM_HIENGLISH 5
#define MM_TWIPS 6
#define MM_ISOTROPIC 7
#define MM_ANISOTROPIC 8

#define HORZSIZE 4
#define VERTSIZE 6
#define HORZRES 8
#define VERTRES 10
#define LOGPIXELSX 88
#define LOGPIXELSY 90

#define WINGDIAPI EXTERN_C TKWIN32_API

/// @param hdc  null or a context, whose display is the same
WINGDIAPI HDC WINAPI CreateCompatibleDC(HDC hdc);
/// @return FALSE with ERROR_INVALID_HANDLE for what is no context
WINGDIAPI BOOL WINAPI DeleteDC(HDC hdc);
/// Size in millimetres, resolution in pixels, pixels to the inch; 0 for anything else.
WINGDIAPI int WINAPI GetDeviceCaps(HDC hdc, int index);
/// @return MM_...; 0 for what is no context
WINGDIAPI int WINAPI GetMapMode(HDC hdc);
/// The modes between MM_LOMETRIC and MM_TWIPS have fixed extents and y upwards; the last two keep the extents there
/// are. @return the mode before; 0 for a mode that does not exist
WINGDIAPI int WINAPI SetMapMode(HDC hdc, int iMode);
/// Extents count in MM_ISOTROPIC, which makes the viewport smaller until both axes have one scale, and MM_ANISOTROPIC;
/// elsewhere they stay as they are, which is no failure. 0 is refused.
/// @param lpsz, lppt  receive what was before; may be null
WINGDIAPI BOOL WINAPI SetWindowExtEx(HDC hdc, int x, int y, LPSIZE lpsz);
WINGDIAPI BOOL WINAPI SetViewportExtEx(HDC hdc, int x, int y, LPSIZE lpsz);
WINGDIAPI BOOL WINAPI SetWindowOrgEx(HDC hdc, int x, int y, LPPOINT lppt);
WINGDIAPI BOOL WINAPI SetViewportOrgEx(HDC hdc, int x, int y, LPPOINT lppt);
WINGDIAPI BOOL WINAPI GetWindowExtEx(HDC hdc, LPSIZE lpsize);
WINGDIAPI BOOL WINAPI GetViewportExtEx(HDC hdc, LPSIZE lpsize);
WINGDIAPI BOOL WINAPI GetWindowOrgEx(HDC hdc, LPPOINT lppoint);
WINGDIAPI BOOL WINAPI GetViewportOrgEx(HDC hdc, LPPOINT lppoint);
/// Points of the page to pixels of the device, and back, in place; rounded half up.
/// @return FALSE for what is no context
WINGDIAPI BOOL WINAPI LPtoDP(HDC hdc, LPPOINT lppt, int c);
WINGDIAPI BOOL WINAPI DPtoLP(HDC hdc, LPPOINT lppt, int c);
