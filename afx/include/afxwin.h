// afxwin.h - the window classes that the library's interface names, controls that keep a list, device contexts and the
// geometry types.
//
//   CListBox list;
//   list.Create(WS_CHILD, CRect(0, 0, 100, 100), &owner, 101);
//   list.AddString("COM1");
//   if (AfxMessageBox("Overwrite?", MB_YESNO | MB_ICONQUESTION) == IDYES) ...
//
// An object destroys the window or the context that it made itself. A handle put into m_hWnd or m_hDC, or attached, is
// borrowed.
// Threads: one caller at a time per object.
#pragma once

#include "afx.h"

class AFX_API CPoint : public POINT {
public:
    CPoint() noexcept : CPoint(0, 0) {}
    CPoint(int initX, int initY) noexcept {
        x = initX;
        y = initY;
    }
    CPoint(POINT initPt) noexcept : POINT(initPt) {}

    void Offset(int xOffset, int yOffset) noexcept {
        x += xOffset;
        y += yOffset;
    }
    BOOL operator==(POINT point) const noexcept { return x == point.x && y == point.y; }
    BOOL operator!=(POINT point) const noexcept { return !(*this == point); }
};

class AFX_API CSize : public SIZE {
public:
    CSize() noexcept : CSize(0, 0) {}
    CSize(int initCX, int initCY) noexcept {
        cx = initCX;
        cy = initCY;
    }
    CSize(SIZE initSize) noexcept : SIZE(initSize) {}

    BOOL operator==(SIZE size) const noexcept { return cx == size.cx && cy == size.cy; }
    BOOL operator!=(SIZE size) const noexcept { return !(*this == size); }
};

class AFX_API CRect : public RECT {
public:
    CRect() noexcept : CRect(0, 0, 0, 0) {}
    CRect(int l, int t, int r, int b) noexcept {
        left = l;
        top = t;
        right = r;
        bottom = b;
    }
    CRect(const RECT& srcRect) noexcept : RECT(srcRect) {}

    int Width() const noexcept { return right - left; }
    int Height() const noexcept { return bottom - top; }
};

class AFX_API CWnd : public CObject {
    DECLARE_DYNAMIC(CWnd)
public:
    CWnd();
    ~CWnd() override;

    HWND GetSafeHwnd() const noexcept;
    BOOL Attach(HWND hWndNew);
    HWND Detach();

    /// @return FALSE when the platform refuses; the last error tells why
    BOOL CreateEx(DWORD dwExStyle, LPCTSTR lpszClassName, LPCTSTR lpszWindowName, DWORD dwStyle, int x, int y,
                  int nWidth, int nHeight, HWND hWndParent, HMENU nIDorHMenu, LPVOID lpParam = NULL);
    BOOL DestroyWindow();
    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    void SetWindowText(LPCTSTR lpszString);
    void GetWindowText(CString& rString) const;

    HWND m_hWnd = NULL;

private:
    BOOL own_ = FALSE;
};

class AFX_API CListBox : public CWnd {
    DECLARE_DYNAMIC(CListBox)
public:
    CListBox();
    ~CListBox() override;

    BOOL Create(DWORD dwStyle, const RECT& rect, CWnd* pParentWnd, UINT nID);
    int GetCount() const;
    int GetCurSel() const;
    int SetCurSel(int nSelect);
    /// @return the index of the new item; LB_ERR
    int AddString(LPCTSTR lpszItem);
    int InsertString(int nIndex, LPCTSTR lpszItem);
    /// @return how many are left; LB_ERR
    int DeleteString(UINT nIndex);
    void ResetContent();
    /// "" for an index that is not there
    void GetText(int nIndex, CString& rString) const;
};

class AFX_API CComboBox : public CWnd {
    DECLARE_DYNAMIC(CComboBox)
public:
    CComboBox();
    ~CComboBox() override;

    BOOL Create(DWORD dwStyle, const RECT& rect, CWnd* pParentWnd, UINT nID);
    int GetCount() const;
    int GetCurSel() const;
    int SetCurSel(int nSelect);
    int AddString(LPCTSTR lpszString);
    int InsertString(int nIndex, LPCTSTR lpszString);
    int DeleteString(UINT nIndex);
    void ResetContent();
    void GetLBText(int nIndex, CString& rString) const;
};

class AFX_API CDC : public CObject {
    DECLARE_DYNAMIC(CDC)
public:
    CDC();
    ~CDC() override;

    HDC GetSafeHdc() const noexcept;
    BOOL Attach(HDC hDC);
    HDC Detach();
    /// @param pDC  may be null: the display
    BOOL CreateCompatibleDC(CDC* pDC);
    BOOL DeleteDC();

    int GetDeviceCaps(int nIndex) const;
    int GetMapMode() const;
    int SetMapMode(int nMapMode);
    CSize SetViewportExt(int cx, int cy);
    CSize SetWindowExt(int cx, int cy);
    CPoint SetViewportOrg(int x, int y);
    CPoint SetWindowOrg(int x, int y);

    void LPtoDP(LPPOINT lpPoints, int nCount = 1) const;
    void LPtoDP(LPRECT lpRect) const;
    /// A size has no sign and no origin: the extents' magnitudes count.
    void LPtoDP(LPSIZE lpSize) const;
    void DPtoLP(LPPOINT lpPoints, int nCount = 1) const;
    void DPtoLP(LPRECT lpRect) const;
    void DPtoLP(LPSIZE lpSize) const;

    HDC m_hDC = NULL;

private:
    BOOL own_ = FALSE;
};

/// Shows a text and waits for the answer. @return ID...; the answer that does least where nobody can be asked
AFX_API int AfxMessageBox(LPCTSTR lpszText, UINT nType = MB_OK, UINT nIDHelp = 0);
