#include "afxwin.h"

IMPLEMENT_DYNAMIC(CListBox, CWnd)
IMPLEMENT_DYNAMIC(CComboBox, CWnd)

namespace {

BOOL CreateControl(CWnd& control, LPCTSTR className, DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    HWND owner = parent != nullptr ? parent->GetSafeHwnd() : nullptr;
    return control.CreateEx(0, className, "", style, static_cast<int>(rect.left), static_cast<int>(rect.top),
                            static_cast<int>(rect.right - rect.left), static_cast<int>(rect.bottom - rect.top), owner,
                            reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)));
}

int Send(const CWnd& control, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return static_cast<int>(control.SendMessage(message, wParam, lParam));
}

int SendText(const CWnd& control, UINT message, int index, LPCTSTR text) {
    return Send(control, message, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text));
}

void ReadText(const CWnd& control, UINT lengthMessage, UINT message, int index, CString& text) {
    const int length = Send(control, lengthMessage, static_cast<WPARAM>(index));
    text.Empty();
    if (length <= 0) return;
    SendText(control, message, index, text.GetBuffer(length));
    text.ReleaseBuffer(length);
}

}  // namespace

CListBox::CListBox() = default;
CListBox::~CListBox() = default;

BOOL CListBox::Create(DWORD dwStyle, const RECT& rect, CWnd* pParentWnd, UINT nID) {
    return CreateControl(*this, "LISTBOX", dwStyle, rect, pParentWnd, nID);
}
int CListBox::GetCount() const {
    return Send(*this, LB_GETCOUNT);
}
int CListBox::GetCurSel() const {
    return Send(*this, LB_GETCURSEL);
}
int CListBox::SetCurSel(int nSelect) {
    return Send(*this, LB_SETCURSEL, static_cast<WPARAM>(nSelect));
}
int CListBox::AddString(LPCTSTR lpszItem) {
    return SendText(*this, LB_ADDSTRING, 0, lpszItem);
}
int CListBox::InsertString(int nIndex, LPCTSTR lpszItem) {
    return SendText(*this, LB_INSERTSTRING, nIndex, lpszItem);
}
int CListBox::DeleteString(UINT nIndex) {
    return Send(*this, LB_DELETESTRING, nIndex);
}
void CListBox::ResetContent() {
    Send(*this, LB_RESETCONTENT);
}
void CListBox::GetText(int nIndex, CString& rString) const {
    ReadText(*this, LB_GETTEXTLEN, LB_GETTEXT, nIndex, rString);
}

CComboBox::CComboBox() = default;
CComboBox::~CComboBox() = default;

BOOL CComboBox::Create(DWORD dwStyle, const RECT& rect, CWnd* pParentWnd, UINT nID) {
    return CreateControl(*this, "COMBOBOX", dwStyle, rect, pParentWnd, nID);
}
int CComboBox::GetCount() const {
    return Send(*this, CB_GETCOUNT);
}
int CComboBox::GetCurSel() const {
    return Send(*this, CB_GETCURSEL);
}
int CComboBox::SetCurSel(int nSelect) {
    return Send(*this, CB_SETCURSEL, static_cast<WPARAM>(nSelect));
}
int CComboBox::AddString(LPCTSTR lpszString) {
    return SendText(*this, CB_ADDSTRING, 0, lpszString);
}
int CComboBox::InsertString(int nIndex, LPCTSTR lpszString) {
    return SendText(*this, CB_INSERTSTRING, nIndex, lpszString);
}
int CComboBox::DeleteString(UINT nIndex) {
    return Send(*this, CB_DELETESTRING, nIndex);
}
void CComboBox::ResetContent() {
    Send(*this, CB_RESETCONTENT);
}
void CComboBox::GetLBText(int nIndex, CString& rString) const {
    ReadText(*this, CB_GETLBTEXTLEN, CB_GETLBTEXT, nIndex, rString);
}
