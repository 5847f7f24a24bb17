// afxwin.h - the few window classes that the library's interface names: a handle each, and the geometry types.
//
//   CPoint at(10, 20);
//   if (AfxMessageBox("Overwrite?", MB_YESNO | MB_ICONQUESTION) == IDYES) ...
//
// A handle is borrowed: neither class makes or destroys a window.
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

class AFX_API CWnd : public CObject {
    DECLARE_DYNAMIC(CWnd)
public:
    CWnd();
    ~CWnd() override;

    HWND GetSafeHwnd() const noexcept;

    HWND m_hWnd = NULL;
};

class AFX_API CListBox : public CWnd {
    DECLARE_DYNAMIC(CListBox)
public:
    CListBox();
    ~CListBox() override;
};

class AFX_API CComboBox : public CWnd {
    DECLARE_DYNAMIC(CComboBox)
public:
    CComboBox();
    ~CComboBox() override;
};

class AFX_API CDC : public CObject {
    DECLARE_DYNAMIC(CDC)
public:
    CDC();
    ~CDC() override;

    HDC GetSafeHdc() const noexcept;

    HDC m_hDC = NULL;
};

/// Shows a text and waits for the answer. @return ID...; the answer that does least where nobody can be asked
AFX_API int AfxMessageBox(LPCTSTR lpszText, UINT nType = MB_OK, UINT nIDHelp = 0);
