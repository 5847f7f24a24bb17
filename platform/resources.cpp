#include <windows.h>

#include <afxwin.h>
#include <atlbase.h>

#include "tkkernel/platform.h"

CString GetResString(unsigned int nId) {
    CString text;
    text.LoadString(nId);
    return text;
}

int OnContextMenu(CComModule& module, HWND hOwner, unsigned int nMenuId, int nSubMenu, unsigned int nDefaultItem,
                  CPoint* pAt) {
    HMENU menu = LoadMenuA(module.GetResourceInstance(), MAKEINTRESOURCEA(nMenuId));
    if (menu == nullptr) return 0;
    HMENU shown = GetSubMenu(menu, nSubMenu);
    POINT at = {0, 0};
    if (pAt != nullptr) {
        at = *pAt;
    } else {
        GetCursorPos(&at);
    }
    if (nDefaultItem != 0) SetMenuDefaultItem(shown, nDefaultItem, FALSE);
    TrackPopupMenu(shown, TPM_RIGHTBUTTON, static_cast<int>(at.x), static_cast<int>(at.y), 0, hOwner, nullptr);
    DestroyMenu(menu);
    return 1;
}
