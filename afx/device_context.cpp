#include <cstdlib>
#include <utility>

#include "afxwin.h"

IMPLEMENT_DYNAMIC(CDC, CObject)

namespace {

/// A size by the ratio of two extents, without their signs.
LONG ByRatio(LONG length, LONG extent, LONG perExtent) {
    return MulDiv(static_cast<int>(length), std::abs(static_cast<int>(extent)), std::abs(static_cast<int>(perExtent)));
}

struct Extents {
    explicit Extents(HDC context) {
        GetWindowExtEx(context, &window);
        GetViewportExtEx(context, &viewport);
    }
    SIZE window = {1, 1};
    SIZE viewport = {1, 1};
};

}  // namespace

CDC::CDC() = default;

CDC::~CDC() {
    if (own_) DeleteDC();
}

HDC CDC::GetSafeHdc() const noexcept {
    return m_hDC;
}

BOOL CDC::Attach(HDC hDC) {
    if (hDC == nullptr || m_hDC != nullptr) return FALSE;
    m_hDC = hDC;
    return TRUE;
}

HDC CDC::Detach() {
    own_ = FALSE;
    return std::exchange(m_hDC, nullptr);
}

BOOL CDC::CreateCompatibleDC(CDC* pDC) {
    if (m_hDC != nullptr) return FALSE;
    m_hDC = ::CreateCompatibleDC(pDC != nullptr ? pDC->GetSafeHdc() : nullptr);
    own_ = m_hDC != nullptr;
    return own_;
}

BOOL CDC::DeleteDC() {
    own_ = FALSE;
    return m_hDC != nullptr && ::DeleteDC(std::exchange(m_hDC, nullptr));
}

int CDC::GetDeviceCaps(int nIndex) const {
    return ::GetDeviceCaps(m_hDC, nIndex);
}
int CDC::GetMapMode() const {
    return ::GetMapMode(m_hDC);
}
int CDC::SetMapMode(int nMapMode) {
    return ::SetMapMode(m_hDC, nMapMode);
}

CSize CDC::SetViewportExt(int cx, int cy) {
    CSize before;
    ::SetViewportExtEx(m_hDC, cx, cy, &before);
    return before;
}
CSize CDC::SetWindowExt(int cx, int cy) {
    CSize before;
    ::SetWindowExtEx(m_hDC, cx, cy, &before);
    return before;
}
CPoint CDC::SetViewportOrg(int x, int y) {
    CPoint before;
    ::SetViewportOrgEx(m_hDC, x, y, &before);
    return before;
}
CPoint CDC::SetWindowOrg(int x, int y) {
    CPoint before;
    ::SetWindowOrgEx(m_hDC, x, y, &before);
    return before;
}

void CDC::LPtoDP(LPPOINT lpPoints, int nCount) const {
    ::LPtoDP(m_hDC, lpPoints, nCount);
}
void CDC::LPtoDP(LPRECT lpRect) const {
    POINT corners[] = {{lpRect->left, lpRect->top}, {lpRect->right, lpRect->bottom}};
    ::LPtoDP(m_hDC, corners, 2);
    *lpRect = {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
}
void CDC::LPtoDP(LPSIZE lpSize) const {
    const Extents extents(m_hDC);
    lpSize->cx = ByRatio(lpSize->cx, extents.viewport.cx, extents.window.cx);
    lpSize->cy = ByRatio(lpSize->cy, extents.viewport.cy, extents.window.cy);
}
void CDC::DPtoLP(LPPOINT lpPoints, int nCount) const {
    ::DPtoLP(m_hDC, lpPoints, nCount);
}
void CDC::DPtoLP(LPRECT lpRect) const {
    POINT corners[] = {{lpRect->left, lpRect->top}, {lpRect->right, lpRect->bottom}};
    ::DPtoLP(m_hDC, corners, 2);
    *lpRect = {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
}
void CDC::DPtoLP(LPSIZE lpSize) const {
    const Extents extents(m_hDC);
    lpSize->cx = ByRatio(lpSize->cx, extents.window.cx, extents.viewport.cx);
    lpSize->cy = ByRatio(lpSize->cy, extents.window.cy, extents.viewport.cy);
}
