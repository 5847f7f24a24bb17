#include "afxwin.h"

#include <utility>

IMPLEMENT_DYNAMIC(CWnd, CObject)

CWnd::CWnd() = default;

CWnd::~CWnd() {
    if (own_) DestroyWindow();
}

HWND CWnd::GetSafeHwnd() const noexcept {
    return m_hWnd;
}

BOOL CWnd::Attach(HWND hWndNew) {
    if (hWndNew == nullptr || m_hWnd != nullptr) return FALSE;
    m_hWnd = hWndNew;
    return TRUE;
}

HWND CWnd::Detach() {
    own_ = FALSE;
    return std::exchange(m_hWnd, nullptr);
}

BOOL CWnd::CreateEx(DWORD dwExStyle, LPCTSTR lpszClassName, LPCTSTR lpszWindowName, DWORD dwStyle, int x, int y,
                    int nWidth, int nHeight, HWND hWndParent, HMENU nIDorHMenu, LPVOID lpParam) {
    if (m_hWnd != nullptr) return FALSE;
    m_hWnd = ::CreateWindowExA(dwExStyle, lpszClassName, lpszWindowName, dwStyle, x, y, nWidth, nHeight, hWndParent,
                               nIDorHMenu, GetModuleHandleA(nullptr), lpParam);
    own_ = m_hWnd != nullptr;
    return own_;
}

BOOL CWnd::DestroyWindow() {
    if (m_hWnd == nullptr) return FALSE;
    own_ = FALSE;
    return ::DestroyWindow(std::exchange(m_hWnd, nullptr));
}

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) const {
    return ::SendMessageA(m_hWnd, message, wParam, lParam);
}

void CWnd::SetWindowText(LPCTSTR lpszString) {
    ::SetWindowTextA(m_hWnd, lpszString);
}

void CWnd::GetWindowText(CString& rString) const {
    const int length = ::GetWindowTextLengthA(m_hWnd);
    rString.ReleaseBuffer(::GetWindowTextA(m_hWnd, rString.GetBuffer(length), length + 1));
}

int AfxMessageBox(LPCTSTR lpszText, UINT nType, UINT nIDHelp) {
    static_cast<void>(nIDHelp);  // there is no help file to open
    return MessageBoxA(nullptr, lpszText, nullptr, nType);
}
