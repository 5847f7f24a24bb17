// Coordinates between the two families of the system, whose mapping modes count differently.
#include <windows.h>

#include <afxwin.h>

#include <cstdint>

#include "tkkernel/platform.h"

namespace tk::platform {
namespace {

struct Fraction {
    std::int32_t numerator;
    std::int32_t denominator;

    Fraction Inverse() const { return {denominator, numerator}; }
};

struct Factors {
    Fraction x;
    Fraction y;

    Factors Inverse() const { return {x.Inverse(), y.Inverse()}; }
};

/// From the NT family to the other one.
Factors FactorsOf(int mode) {
    switch (mode) {
        case MM_LOMETRIC:
            return {{2106, 3284}, {1289, 1952}};
        case MM_TWIPS:
            return {{11940, 18615}, {7305, 11066}};
        default:
            return {{1, 1}, {1, 1}};
    }
}

/// Contract: 32 bits throughout; a product beyond them wraps around, and the quotient is cut.
LONG Times(LONG value, const Fraction& factor) {
    const auto product = static_cast<std::uint32_t>(value) * static_cast<std::uint32_t>(factor.numerator);
    return static_cast<std::int32_t>(product) / factor.denominator;
}

void Apply(const Factors& factors, POINT& point) {
    point = {Times(point.x, factors.x), Times(point.y, factors.y)};
}
void Apply(const Factors& factors, RECT& rect) {
    rect = {Times(rect.left, factors.x), Times(rect.top, factors.y), Times(rect.right, factors.x),
            Times(rect.bottom, factors.y)};
}
void Apply(const Factors& factors, SIZE& size) {
    size = {Times(size.cx, factors.x), Times(size.cy, factors.y)};
}

template <typename Record>
void ToOther(Record* record, int mode) {
    if (record != nullptr && IsNT()) Apply(FactorsOf(mode), *record);
}
template <typename Record>
void FromOther(Record* record, int mode) {
    if (record != nullptr && IsNT()) Apply(FactorsOf(mode).Inverse(), *record);
}

template <typename Record>
void ToDevice(CDC* context, Record* record) {
    if (context == nullptr || record == nullptr) return;
    FromOther(record, context->GetMapMode());
    context->LPtoDP(record);
}
template <typename Record>
void ToPage(CDC* context, Record* record) {
    if (context == nullptr || record == nullptr) return;
    context->DPtoLP(record);
    ToOther(record, context->GetMapMode());
}

}  // namespace
}  // namespace tk::platform

void NTtoWin98(RECT* pRect, int nMapMode) {
    tk::platform::ToOther(pRect, nMapMode);
}
void NTtoWin98(SIZE* pSize, int nMapMode) {
    tk::platform::ToOther(pSize, nMapMode);
}
void Win98toNT(RECT* pRect, int nMapMode) {
    tk::platform::FromOther(pRect, nMapMode);
}
void Win98toNT(SIZE* pSize, int nMapMode) {
    tk::platform::FromOther(pSize, nMapMode);
}

void LPtoDP(CDC* pDC, POINT* pPoint) {
    tk::platform::ToDevice(pDC, pPoint);
}
void LPtoDP(CDC* pDC, RECT* pRect) {
    tk::platform::ToDevice(pDC, pRect);
}
void LPtoDP(CDC* pDC, SIZE* pSize) {
    tk::platform::ToDevice(pDC, pSize);
}
void DPtoLP(CDC* pDC, POINT* pPoint) {
    tk::platform::ToPage(pDC, pPoint);
}
void DPtoLP(CDC* pDC, RECT* pRect) {
    tk::platform::ToPage(pDC, pRect);
}
void DPtoLP(CDC* pDC, SIZE* pSize) {
    tk::platform::ToPage(pDC, pSize);
}
