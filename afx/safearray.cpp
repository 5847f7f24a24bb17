#include "afx_safearray.h"

#include <cstring>
#include <new>
#include <vector>

#include "afx/array_compare.h"
#include "afx/ole_check.h"

using tk::afx::ThrowIfFailed;

namespace tk::afx {

std::size_t ElementCount(const SAFEARRAY* array) noexcept {
    if (array == nullptr || array->cDims == 0) return 0;
    std::size_t count = 1;
    for (USHORT i = 0; i < array->cDims; ++i)
        count *= array->rgsabound[i].cElements;
    return count;
}

bool SameArrays(const SAFEARRAY* first, const SAFEARRAY* second) noexcept {
    if (first == second) return true;
    if (first == nullptr || second == nullptr) return false;
    if (first->cDims != second->cDims || first->cbElements != second->cbElements) return false;
    if (std::memcmp(first->rgsabound, second->rgsabound, first->cDims * sizeof(SAFEARRAYBOUND)) != 0) return false;
    const std::size_t size = ElementCount(first) * first->cbElements;
    if (size == 0) return true;
    constexpr USHORT kOwning = FADF_BSTR | FADF_UNKNOWN | FADF_DISPATCH | FADF_VARIANT | FADF_RECORD;
    if (((first->fFeatures | second->fFeatures) & kOwning) != 0) return false;
    return std::memcmp(first->pvData, second->pvData, size) == 0;
}

}  // namespace tk::afx

namespace {

// The platform's functions take no const arrays, and 32-bit indexes.
SAFEARRAY* Mutable(const SAFEARRAY* array) noexcept {
    return const_cast<SAFEARRAY*>(array);
}

class Indexes {
public:
    Indexes(const long* given, DWORD count) {
        if (given == nullptr) AfxThrowOleException(E_INVALIDARG);
        if (count > kInline) {
            heap_.resize(count);
            at_ = heap_.data();
        }
        for (DWORD i = 0; i < count; ++i)
            at_[i] = static_cast<LONG>(given[i]);
    }
    LONG* Get() noexcept { return at_; }

private:
    static constexpr DWORD kInline = 8;
    LONG inline_[kInline];
    std::vector<LONG> heap_;
    LONG* at_ = inline_;
};

}  // namespace

COleSafeArray::COleSafeArray() noexcept {
    VariantInit(this);
}

COleSafeArray::COleSafeArray(const SAFEARRAY& saSrc, VARTYPE vtSrc) : COleSafeArray(&saSrc, vtSrc) {}

COleSafeArray::COleSafeArray(LPCSAFEARRAY pSrc, VARTYPE vtSrc) : COleSafeArray() {
    SAFEARRAY* copy = nullptr;
    ThrowIfFailed(SafeArrayCopy(Mutable(pSrc), &copy));
    vt = static_cast<VARTYPE>(vtSrc | VT_ARRAY);
    parray = copy;
}

COleSafeArray::COleSafeArray(const COleSafeArray& saSrc) : COleSafeArray() {
    *this = saSrc;
}
COleSafeArray::COleSafeArray(const VARIANT& varSrc) : COleSafeArray() {
    *this = varSrc;
}
COleSafeArray::COleSafeArray(LPCVARIANT pSrc) : COleSafeArray() {
    *this = pSrc;
}
COleSafeArray::~COleSafeArray() {
    VariantClear(this);
}

COleSafeArray& COleSafeArray::operator=(const COleSafeArray& saSrc) {
    return *this = static_cast<const VARIANT&>(saSrc);
}

COleSafeArray& COleSafeArray::operator=(const VARIANT& varSrc) {
    if (this == &varSrc) return *this;
    if ((varSrc.vt & VT_ARRAY) == 0 && varSrc.vt != VT_EMPTY) AfxThrowOleException(DISP_E_TYPEMISMATCH);
    ThrowIfFailed(VariantCopyInd(this, const_cast<VARIANT*>(&varSrc)));
    return *this;
}

COleSafeArray& COleSafeArray::operator=(LPCVARIANT pSrc) {
    if (pSrc == nullptr) AfxThrowOleException(E_INVALIDARG);
    return *this = *pSrc;
}

void COleSafeArray::Create(VARTYPE vtSrc, DWORD dwDims, DWORD* rgElements) {
    if (dwDims == 0 || rgElements == nullptr) AfxThrowOleException(E_INVALIDARG);
    std::vector<SAFEARRAYBOUND> bounds;
    try {
        bounds.resize(dwDims);
    } catch (const std::exception&) {
        AfxThrowMemoryException();
    }
    for (DWORD i = 0; i < dwDims; ++i)
        bounds[i] = {rgElements[i], 0};
    Create(vtSrc, dwDims, bounds.data());
}

void COleSafeArray::Create(VARTYPE vtSrc, DWORD dwDims, SAFEARRAYBOUND* rgsabounds) {
    if (dwDims == 0 || dwDims > 0xFFFF || rgsabounds == nullptr) AfxThrowOleException(E_INVALIDARG);
    SAFEARRAY* const made = SafeArrayCreate(vtSrc, dwDims, rgsabounds);
    if (made == nullptr) AfxThrowMemoryException();
    Clear();
    vt = static_cast<VARTYPE>(vtSrc | VT_ARRAY);
    parray = made;
}

void COleSafeArray::CreateOneDim(VARTYPE vtSrc, DWORD dwElements, const void* pvSrcData, long nLBound) {
    SAFEARRAYBOUND bound = {dwElements, static_cast<LONG>(nLBound)};
    Create(vtSrc, 1, &bound);
    if (pvSrcData == nullptr || dwElements == 0) return;
    void* data = nullptr;
    AccessData(&data);
    std::memcpy(data, pvSrcData, static_cast<std::size_t>(dwElements) * GetElemSize());
    UnaccessData();
}

void COleSafeArray::Clear() {
    ThrowIfFailed(VariantClear(this));
}

void COleSafeArray::Destroy() {
    Clear();
}

void COleSafeArray::Attach(VARIANT& varSrc) {
    if ((varSrc.vt & VT_ARRAY) == 0 || (varSrc.vt & VT_BYREF) != 0) AfxThrowOleException(E_INVALIDARG);
    if (this == &varSrc) return;
    Clear();
    static_cast<VARIANT&>(*this) = varSrc;
    varSrc.vt = VT_EMPTY;
}

VARIANT COleSafeArray::Detach() noexcept {
    const VARIANT value = *this;
    vt = VT_EMPTY;
    return value;
}

namespace {

SAFEARRAY* Array(const VARIANT& value) {
    if ((value.vt & VT_ARRAY) == 0 || value.parray == nullptr) AfxThrowOleException(E_INVALIDARG);
    return value.parray;
}

}  // namespace

DWORD COleSafeArray::GetDim() const noexcept {
    return (vt & VT_ARRAY) == 0 ? 0 : SafeArrayGetDim(parray);
}

DWORD COleSafeArray::GetElemSize() const noexcept {
    return (vt & VT_ARRAY) == 0 ? 0 : SafeArrayGetElemsize(parray);
}

void COleSafeArray::GetLBound(DWORD dwDim, long* pLBound) const {
    LONG bound = 0;
    ThrowIfFailed(SafeArrayGetLBound(Array(*this), dwDim, &bound));
    *pLBound = bound;
}

void COleSafeArray::GetUBound(DWORD dwDim, long* pUBound) const {
    LONG bound = 0;
    ThrowIfFailed(SafeArrayGetUBound(Array(*this), dwDim, &bound));
    *pUBound = bound;
}

DWORD COleSafeArray::GetOneDimSize() const {
    if (GetDim() != 1) AfxThrowOleException(E_INVALIDARG);
    return parray->rgsabound[0].cElements;
}

void COleSafeArray::Redim(SAFEARRAYBOUND* psaboundNew) {
    ThrowIfFailed(SafeArrayRedim(Array(*this), psaboundNew));
}

void COleSafeArray::ResizeOneDim(DWORD dwElements) {
    if (GetDim() != 1) AfxThrowOleException(E_INVALIDARG);
    SAFEARRAYBOUND bound = {dwElements, parray->rgsabound[0].lLbound};
    Redim(&bound);
}

void COleSafeArray::GetElement(const long* rgIndices, void* pvData) const {
    Indexes indexes(rgIndices, GetDim());
    ThrowIfFailed(SafeArrayGetElement(Array(*this), indexes.Get(), pvData));
}

void COleSafeArray::PutElement(const long* rgIndices, void* pvData) {
    Indexes indexes(rgIndices, GetDim());
    ThrowIfFailed(SafeArrayPutElement(Array(*this), indexes.Get(), pvData));
}

void COleSafeArray::PtrOfIndex(const long* rgIndices, void** ppvData) {
    Indexes indexes(rgIndices, GetDim());
    ThrowIfFailed(SafeArrayPtrOfIndex(Array(*this), indexes.Get(), ppvData));
}

void COleSafeArray::AccessData(void** ppvData) {
    ThrowIfFailed(SafeArrayAccessData(Array(*this), ppvData));
}
void COleSafeArray::UnaccessData() {
    ThrowIfFailed(SafeArrayUnaccessData(Array(*this)));
}
void COleSafeArray::Lock() {
    ThrowIfFailed(SafeArrayLock(Array(*this)));
}
void COleSafeArray::Unlock() {
    ThrowIfFailed(SafeArrayUnlock(Array(*this)));
}

BOOL COleSafeArray::operator==(const SAFEARRAY& saSrc) const noexcept {
    return (vt & VT_ARRAY) != 0 && tk::afx::SameArrays(parray, &saSrc);
}

BOOL COleSafeArray::operator==(const VARIANT& varSrc) const noexcept {
    return vt == varSrc.vt && ((vt & VT_ARRAY) == 0 || tk::afx::SameArrays(parray, varSrc.parray));
}
