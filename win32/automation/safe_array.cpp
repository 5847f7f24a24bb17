// Arrays in use: bounds, locks, elements, and what kind of elements they are.
#include <atomic>
#include <cstring>

#include "win32/automation/safe_array_layout.h"
#include "win32/include/oleauto.h"

using namespace tk::automation;

namespace {

constexpr ULONG kMaxLocks = 0xFFFF;

HRESULT FindBound(SAFEARRAY* array, UINT dimension, const SAFEARRAYBOUND** bound) {
    if (array == nullptr) return E_INVALIDARG;
    if (dimension == 0 || dimension > array->cDims) return DISP_E_BADINDEX;
    *bound = &array->rgsabound[array->cDims - dimension];
    return S_OK;
}

// Holds the array for the length of one element access.
class ArrayLock {
public:
    explicit ArrayLock(SAFEARRAY* array) : array_(array), result_(SafeArrayLock(array)) {}
    ~ArrayLock() {
        if (SUCCEEDED(result_)) SafeArrayUnlock(array_);
    }
    ArrayLock(const ArrayLock&) = delete;
    ArrayLock& operator=(const ArrayLock&) = delete;
    HRESULT Result() const { return result_; }

private:
    SAFEARRAY* array_;
    HRESULT result_;
};

}  // namespace

UINT SafeArrayGetDim(SAFEARRAY* psa) {
    return psa == nullptr ? 0 : psa->cDims;
}

UINT SafeArrayGetElemsize(SAFEARRAY* psa) {
    return psa == nullptr ? 0 : psa->cbElements;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound) {
    const SAFEARRAYBOUND* bound = nullptr;
    if (plUbound == nullptr) return E_INVALIDARG;
    const HRESULT result = FindBound(psa, nDim, &bound);
    if (FAILED(result)) return result;
    // Unsigned, so that no elements from the lowest index on wrap as on the platform.
    *plUbound = static_cast<LONG>(static_cast<ULONG>(bound->lLbound) + bound->cElements - 1);
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound) {
    const SAFEARRAYBOUND* bound = nullptr;
    if (plLbound == nullptr) return E_INVALIDARG;
    const HRESULT result = FindBound(psa, nDim, &bound);
    if (SUCCEEDED(result)) *plLbound = bound->lLbound;
    return result;
}

HRESULT SafeArrayLock(SAFEARRAY* psa) {
    if (psa == nullptr) return E_INVALIDARG;
    std::atomic_ref<ULONG> locks(psa->cLocks);
    for (ULONG seen = locks.load(); seen < kMaxLocks;) {
        if (locks.compare_exchange_weak(seen, seen + 1)) return S_OK;
    }
    return E_UNEXPECTED;
}

HRESULT SafeArrayUnlock(SAFEARRAY* psa) {
    if (psa == nullptr) return E_INVALIDARG;
    std::atomic_ref<ULONG> locks(psa->cLocks);
    for (ULONG seen = locks.load(); seen != 0;) {
        if (locks.compare_exchange_weak(seen, seen - 1)) return S_OK;
    }
    return E_UNEXPECTED;
}

HRESULT SafeArrayAccessData(SAFEARRAY* psa, void** ppvData) {
    if (psa == nullptr || ppvData == nullptr) return E_INVALIDARG;
    const HRESULT result = SafeArrayLock(psa);
    *ppvData = SUCCEEDED(result) ? psa->pvData : nullptr;
    return result;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* psa) {
    return SafeArrayUnlock(psa);
}

HRESULT SafeArrayPtrOfIndex(SAFEARRAY* psa, LONG* rgIndices, void** ppvData) {
    if (psa == nullptr || rgIndices == nullptr || ppvData == nullptr) return E_INVALIDARG;
    char* place = nullptr;
    const HRESULT result = PlaceOf(*psa, rgIndices, &place);
    if (SUCCEEDED(result)) *ppvData = place;
    return result;
}

HRESULT SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) {
    if (psa == nullptr || rgIndices == nullptr || pv == nullptr) return E_INVALIDARG;
    const ArrayLock lock(psa);
    if (FAILED(lock.Result())) return lock.Result();
    char* place = nullptr;
    const HRESULT result = PlaceOf(*psa, rgIndices, &place);
    if (FAILED(result)) return result;
    // A record is copied over whatever the caller's one holds; the others start from nothing.
    if (OwnedByElements(*psa) != Owns::Record) std::memset(pv, 0, psa->cbElements);
    return CopyElements(*psa, place, static_cast<char*>(pv), 1);
}

HRESULT SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) {
    if (psa == nullptr || rgIndices == nullptr) return E_INVALIDARG;
    const ArrayLock lock(psa);
    if (FAILED(lock.Result())) return lock.Result();
    char* place = nullptr;
    HRESULT result = PlaceOf(*psa, rgIndices, &place);
    if (FAILED(result)) return result;
    const Owns owned = OwnedByElements(*psa);
    // Texts and interfaces are pointers already, so they come as pv itself and may be null.
    const bool byPointer = owned == Owns::Text || owned == Owns::Interface;
    if (pv == nullptr && !byPointer) return E_INVALIDARG;
    const char* from = byPointer ? reinterpret_cast<const char*>(&pv) : static_cast<const char*>(pv);
    if (owned == Owns::Nothing || owned == Owns::Record) return CopyElements(*psa, from, place, 1);
    // The new element is whole before the old one goes: it may be part of it.
    alignas(VARIANT) char copy[sizeof(VARIANT)] = {};
    result = CopyElements(*psa, from, copy, 1);
    if (FAILED(result)) return result;
    ClearElements(*psa, place, 1);
    std::memcpy(place, copy, psa->cbElements);
    return S_OK;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt) {
    if (psa == nullptr || pvt == nullptr) return E_INVALIDARG;
    static constexpr struct {
        USHORT feature;
        VARTYPE type;
    } kTypes[] = {
        {FADF_RECORD, VT_RECORD},   {FADF_BSTR, VT_BSTR},       {FADF_DISPATCH, VT_DISPATCH},
        {FADF_UNKNOWN, VT_UNKNOWN}, {FADF_VARIANT, VT_VARIANT},
    };
    if ((psa->fFeatures & FADF_HAVEVARTYPE) != 0) {
        *pvt = StoredType(psa);
        return S_OK;
    }
    for (const auto& row : kTypes) {
        if ((psa->fFeatures & row.feature) != 0) {
            *pvt = row.type;
            return S_OK;
        }
    }
    return E_INVALIDARG;
}

HRESULT SafeArraySetIID(SAFEARRAY* psa, REFGUID guid) {
    if (psa == nullptr || (psa->fFeatures & FADF_HAVEIID) == 0) return E_INVALIDARG;
    StoreIid(psa, guid);
    return S_OK;
}

HRESULT SafeArrayGetIID(SAFEARRAY* psa, GUID* pguid) {
    if (psa == nullptr || pguid == nullptr || (psa->fFeatures & FADF_HAVEIID) == 0) return E_INVALIDARG;
    *pguid = StoredIid(psa);
    return S_OK;
}

HRESULT SafeArraySetRecordInfo(SAFEARRAY* psa, IRecordInfo* prinfo) {
    if (psa == nullptr || (psa->fFeatures & FADF_RECORD) == 0) return E_INVALIDARG;
    if (prinfo != nullptr) prinfo->AddRef();
    if (IRecordInfo* old = StoredRecordInfo(psa)) old->Release();
    StoreRecordInfo(psa, prinfo);
    return S_OK;
}

HRESULT SafeArrayGetRecordInfo(SAFEARRAY* psa, IRecordInfo** prinfo) {
    if (psa == nullptr || prinfo == nullptr || (psa->fFeatures & FADF_RECORD) == 0) return E_INVALIDARG;
    *prinfo = StoredRecordInfo(psa);
    if (*prinfo != nullptr) (*prinfo)->AddRef();
    return S_OK;
}

HRESULT VectorFromBstr(BSTR bstr, SAFEARRAY** ppsa) {
    if (ppsa == nullptr) return E_INVALIDARG;
    const UINT bytes = SysStringByteLen(bstr);
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, bytes);
    if (array == nullptr) return E_OUTOFMEMORY;
    if (bytes != 0) std::memcpy(array->pvData, bstr, bytes);
    *ppsa = array;
    return S_OK;
}

HRESULT BstrFromVector(SAFEARRAY* psa, BSTR* pbstr) {
    if (pbstr == nullptr) return E_INVALIDARG;
    *pbstr = nullptr;
    if (psa == nullptr) return E_INVALIDARG;
    if (psa->cDims != 1) return E_INVALIDARG;
    if (psa->cbElements != 1) return DISP_E_TYPEMISMATCH;
    *pbstr = SysAllocStringByteLen(static_cast<LPCSTR>(psa->pvData), psa->rgsabound[0].cElements);
    return *pbstr == nullptr ? E_OUTOFMEMORY : S_OK;
}
