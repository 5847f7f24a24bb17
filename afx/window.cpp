#include "afxwin.h"

IMPLEMENT_DYNAMIC(CWnd, CObject)
IMPLEMENT_DYNAMIC(CListBox, CWnd)
IMPLEMENT_DYNAMIC(CComboBox, CWnd)
IMPLEMENT_DYNAMIC(CDC, CObject)

CWnd::CWnd() = default;
CWnd::~CWnd() = default;

HWND CWnd::GetSafeHwnd() const noexcept {
    return m_hWnd;
}

CListBox::CListBox() = default;
CListBox::~CListBox() = default;

CComboBox::CComboBox() = default;
CComboBox::~CComboBox() = default;

CDC::CDC() = default;
CDC::~CDC() = default;

HDC CDC::GetSafeHdc() const noexcept {
    return m_hDC;
}

int AfxMessageBox(LPCTSTR lpszText, UINT nType, UINT nIDHelp) {
    static_cast<void>(nIDHelp);  // there is no help file to open
    return MessageBoxA(nullptr, lpszText, nullptr, nType);
}
