#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "winbase.h"
#include "wingdi.h"

namespace tk::drawing {
namespace {

// One display for all: 1280 by 1024 pixels at 96 to the inch.
constexpr int kWidth = 1280;
constexpr int kHeight = 1024;
constexpr int kPixelsPerInch = 96;
constexpr int kWidthMm = 339;
constexpr int kHeightMm = 271;

/// Logical units to the millimetre of a mode with fixed extents, as a fraction.
struct FixedScale {
    int mode;
    int units;
    int millimetres;
};
constexpr FixedScale kFixedScales[] = {
    {MM_LOMETRIC, 10, 1},       {MM_HIMETRIC, 100, 1},  {MM_LOENGLISH, 1000, 254},
    {MM_HIENGLISH, 10000, 254}, {MM_TWIPS, 14400, 254},
};

struct Context {
    int mode = MM_TEXT;
    SIZE windowExtent = {1, 1};
    SIZE viewportExtent = {1, 1};
    POINT windowOrigin = {0, 0};
    POINT viewportOrigin = {0, 0};

    bool HasFreeExtents() const { return mode == MM_ISOTROPIC || mode == MM_ANISOTROPIC; }
    void SetMode(int newMode);
    void MakeSquare();
};

void Context::SetMode(int newMode) {
    mode = newMode;
    if (mode == MM_TEXT) {
        windowExtent = viewportExtent = {1, 1};
    } else if (mode == MM_ISOTROPIC) {
        // The scale of a tenth of a millimetre until something else is asked for.
        windowExtent = {kWidthMm * 10, kHeightMm * 10};
        viewportExtent = {kWidth, -kHeight};
    }
    const auto fixed = std::ranges::find(kFixedScales, mode, &FixedScale::mode);
    if (fixed == std::end(kFixedScales)) return;
    windowExtent = {MulDiv(kWidthMm, fixed->units, fixed->millimetres),
                    MulDiv(kHeightMm, fixed->units, fixed->millimetres)};
    viewportExtent = {kWidth, -kHeight};
}

/// One unit gets the same length on both axes: the longer one's extent shrinks.
void Context::MakeSquare() {
    if (mode != MM_ISOTROPIC) return;
    const double across = std::fabs(static_cast<double>(viewportExtent.cx) / windowExtent.cx) * kWidthMm / kWidth;
    const double down = std::fabs(static_cast<double>(viewportExtent.cy) / windowExtent.cy) * kHeightMm / kHeight;
    const auto shrunk = [](LONG extent, double factor) {
        const LONG smaller = static_cast<LONG>(std::floor(std::abs(extent) * factor + 0.5));
        return extent < 0 ? -std::max<LONG>(smaller, 1) : std::max<LONG>(smaller, 1);
    };
    if (across > down) {
        viewportExtent.cx = shrunk(viewportExtent.cx, down / across);
    } else if (down > across) {
        viewportExtent.cy = shrunk(viewportExtent.cy, across / down);
    }
}

struct Contexts {
    std::mutex lock;
    std::map<HDC, std::shared_ptr<Context>> all;
    std::uintptr_t last = 0x30000;
};

Contexts& TheContexts() {
    static auto& contexts = *new Contexts;
    return contexts;
}

std::shared_ptr<Context> Find(HDC handle) {
    Contexts& contexts = TheContexts();
    const std::lock_guard lock(contexts.lock);
    const auto found = contexts.all.find(handle);
    if (found != contexts.all.end()) return found->second;
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

/// (value - from) * by / per + to, rounded half up, kept within 32 bits.
LONG Scaled(LONG value, LONG from, LONG by, LONG per, LONG to) {
    const double scaled = (static_cast<double>(value) - from) * by / per + to;
    return static_cast<LONG>(std::clamp(std::floor(scaled + 0.5), -2147483648.0, 2147483647.0));
}

template <typename Record, typename Part>
BOOL Exchange(HDC hdc, Part part, const Record& value, Record* before) {
    const auto context = Find(hdc);
    if (context == nullptr) return FALSE;
    const Record old = std::exchange((*context).*part, value);
    if (before != nullptr) *before = old;
    return TRUE;
}

BOOL SetExtent(HDC hdc, SIZE Context::*part, const SIZE& value, LPSIZE before) {
    const auto context = Find(hdc);
    if (context == nullptr) return FALSE;
    if (before != nullptr) *before = (*context).*part;
    if (!context->HasFreeExtents()) return TRUE;
    if (value.cx == 0 || value.cy == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    (*context).*part = value;
    context->MakeSquare();
    return TRUE;
}

template <typename Record, typename Part>
BOOL Tell(HDC hdc, Part part, Record* target) {
    const auto context = Find(hdc);
    if (context == nullptr || target == nullptr) return FALSE;
    *target = (*context).*part;
    return TRUE;
}

}  // namespace
}  // namespace tk::drawing

using namespace tk::drawing;

HDC CreateCompatibleDC(HDC hdc) {
    if (hdc != nullptr && Find(hdc) == nullptr) return nullptr;
    Contexts& contexts = TheContexts();
    const std::lock_guard lock(contexts.lock);
    contexts.last += 2;
    const auto handle = reinterpret_cast<HDC>(contexts.last);
    contexts.all.emplace(handle, std::make_shared<Context>());
    return handle;
}

BOOL DeleteDC(HDC hdc) {
    Contexts& contexts = TheContexts();
    const std::lock_guard lock(contexts.lock);
    if (contexts.all.erase(hdc) != 0) return TRUE;
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

int GetDeviceCaps(HDC hdc, int index) {
    static constexpr struct {
        int index;
        int value;
    } kFacts[] = {{HORZSIZE, kWidthMm}, {VERTSIZE, kHeightMm},        {HORZRES, kWidth},
                  {VERTRES, kHeight},   {LOGPIXELSX, kPixelsPerInch}, {LOGPIXELSY, kPixelsPerInch}};
    if (Find(hdc) == nullptr) return 0;
    for (const auto& fact : kFacts) {
        if (fact.index == index) return fact.value;
    }
    return 0;
}

int GetMapMode(HDC hdc) {
    const auto context = Find(hdc);
    return context != nullptr ? context->mode : 0;
}

int SetMapMode(HDC hdc, int iMode) {
    const auto context = Find(hdc);
    if (context == nullptr || iMode < MM_TEXT || iMode > MM_ANISOTROPIC) return 0;
    const int before = context->mode;
    context->SetMode(iMode);
    return before;
}

BOOL SetWindowExtEx(HDC hdc, int x, int y, LPSIZE lpsz) {
    return SetExtent(hdc, &Context::windowExtent, SIZE{x, y}, lpsz);
}
BOOL SetViewportExtEx(HDC hdc, int x, int y, LPSIZE lpsz) {
    return SetExtent(hdc, &Context::viewportExtent, SIZE{x, y}, lpsz);
}
BOOL SetWindowOrgEx(HDC hdc, int x, int y, LPPOINT lppt) {
    return Exchange(hdc, &Context::windowOrigin, POINT{x, y}, lppt);
}
BOOL SetViewportOrgEx(HDC hdc, int x, int y, LPPOINT lppt) {
    return Exchange(hdc, &Context::viewportOrigin, POINT{x, y}, lppt);
}
BOOL GetWindowExtEx(HDC hdc, LPSIZE lpsize) {
    return Tell(hdc, &Context::windowExtent, lpsize);
}
BOOL GetViewportExtEx(HDC hdc, LPSIZE lpsize) {
    return Tell(hdc, &Context::viewportExtent, lpsize);
}
BOOL GetWindowOrgEx(HDC hdc, LPPOINT lppoint) {
    return Tell(hdc, &Context::windowOrigin, lppoint);
}
BOOL GetViewportOrgEx(HDC hdc, LPPOINT lppoint) {
    return Tell(hdc, &Context::viewportOrigin, lppoint);
}

BOOL LPtoDP(HDC hdc, LPPOINT lppt, int c) {
    const auto context = Find(hdc);
    if (context == nullptr || (lppt == nullptr && c > 0)) return FALSE;
    const Context& at = *context;
    for (int i = 0; i < c; ++i) {
        lppt[i].x = Scaled(lppt[i].x, at.windowOrigin.x, at.viewportExtent.cx, at.windowExtent.cx, at.viewportOrigin.x);
        lppt[i].y = Scaled(lppt[i].y, at.windowOrigin.y, at.viewportExtent.cy, at.windowExtent.cy, at.viewportOrigin.y);
    }
    return TRUE;
}

BOOL DPtoLP(HDC hdc, LPPOINT lppt, int c) {
    const auto context = Find(hdc);
    if (context == nullptr || (lppt == nullptr && c > 0)) return FALSE;
    const Context& at = *context;
    for (int i = 0; i < c; ++i) {
        lppt[i].x = Scaled(lppt[i].x, at.viewportOrigin.x, at.windowExtent.cx, at.viewportExtent.cx, at.windowOrigin.x);
        lppt[i].y = Scaled(lppt[i].y, at.viewportOrigin.y, at.windowExtent.cy, at.viewportExtent.cy, at.windowOrigin.y);
    }
    return TRUE;
}
