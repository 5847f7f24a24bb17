// Arrays made, freed, copied and resized.
#include <atomic>
#include <cstring>
#include <limits>

#include "win32/automation/heap.h"
#include "win32/automation/safe_array_layout.h"
#include "win32/include/oleauto.h"

using namespace tk::automation;

namespace {

// Memory of these arrays belongs to somebody else: contents are cleared, blocks are not freed.
constexpr USHORT kNotOurMemory = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED;

struct ElementFeatures {
    VARTYPE type;
    USHORT features;
};
// A type code and an IID share the hidden bytes; interfaces keep the IID.
constexpr ElementFeatures kElementFeatures[] = {
    {VT_BSTR, FADF_BSTR | FADF_HAVEVARTYPE},
    {VT_DISPATCH, FADF_DISPATCH | FADF_HAVEIID},
    {VT_UNKNOWN, FADF_UNKNOWN | FADF_HAVEIID},
    {VT_VARIANT, FADF_VARIANT | FADF_HAVEVARTYPE},
    {VT_RECORD, FADF_RECORD},
};

USHORT FeaturesOf(VARTYPE type) {
    for (const ElementFeatures& row : kElementFeatures) {
        if (row.type == type) return row.features;
    }
    return FADF_HAVEVARTYPE;
}

bool IsElementType(VARTYPE type) {
    return (type & ~VT_TYPEMASK) == 0 && FactsOf(type).size != 0;
}

// The last index must be a LONG.
bool FitsIndexRange(const SAFEARRAYBOUND& bound) {
    return std::int64_t{bound.lLbound} + bound.cElements - 1 <= std::numeric_limits<LONG>::max();
}

SAFEARRAY* MakeDescriptor(UINT dimensions) {
    const std::size_t bytes = kHiddenBytes + sizeof(SAFEARRAY) + (dimensions - 1) * sizeof(SAFEARRAYBOUND);
    void* block = TakeZeroed(bytes);
    if (block == nullptr) return nullptr;
    auto* array = reinterpret_cast<SAFEARRAY*>(static_cast<char*>(block) + kHiddenBytes);
    array->cDims = static_cast<USHORT>(dimensions);
    return array;
}

bool IsLocked(SAFEARRAY& array) {
    return std::atomic_ref<ULONG>(array.cLocks).load() != 0;
}

SAFEARRAY* Create(VARTYPE type, UINT dimensions, const SAFEARRAYBOUND* bounds, void* extra) {
    if (bounds == nullptr || (type == VT_RECORD && extra == nullptr)) return nullptr;
    for (UINT i = 0; i < dimensions; ++i) {
        if (!FitsIndexRange(bounds[i])) return nullptr;
    }
    SAFEARRAY* array = nullptr;
    if (FAILED(SafeArrayAllocDescriptorEx(type, dimensions, &array))) return nullptr;
    for (UINT i = 0; i < dimensions; ++i)
        array->rgsabound[i] = bounds[dimensions - 1 - i];
    if (type == VT_RECORD) {
        if (FAILED(SafeArraySetRecordInfo(array, static_cast<IRecordInfo*>(extra))) ||
            FAILED(StoredRecordInfo(array)->GetSize(&array->cbElements))) {
            SafeArrayDestroyDescriptor(array);
            return nullptr;
        }
    } else if ((array->fFeatures & FADF_HAVEIID) != 0 && extra != nullptr) {
        StoreIid(array, *static_cast<const GUID*>(extra));
    }
    if (FAILED(SafeArrayAllocData(array))) {
        SafeArrayDestroyDescriptor(array);
        return nullptr;
    }
    return array;
}

bool SameShape(const SAFEARRAY& first, const SAFEARRAY& second) {
    if (first.cDims != second.cDims || first.cbElements != second.cbElements) return false;
    if (OwnedByElements(first) != OwnedByElements(second)) return false;
    for (USHORT i = 0; i < first.cDims; ++i) {
        if (first.rgsabound[i].cElements != second.rgsabound[i].cElements) return false;
    }
    return true;
}

// A descriptor like the source's, without data.
SAFEARRAY* CopyDescriptor(SAFEARRAY& source) {
    SAFEARRAY* copy = MakeDescriptor(source.cDims);
    if (copy == nullptr) return nullptr;
    constexpr USHORT kHidden = FADF_HAVEIID | FADF_HAVEVARTYPE;
    if ((source.fFeatures & kHidden) != 0) std::memcpy(HiddenOf(copy), HiddenOf(&source), kHiddenBytes);
    copy->fFeatures = source.fFeatures & static_cast<USHORT>(~(kNotOurMemory | FADF_FIXEDSIZE | FADF_RECORD));
    copy->cbElements = source.cbElements;
    std::memcpy(copy->rgsabound, source.rgsabound, source.cDims * sizeof(SAFEARRAYBOUND));
    if ((source.fFeatures & FADF_RECORD) != 0) {
        copy->fFeatures |= FADF_RECORD;
        StoreRecordInfo(copy, nullptr);
        SafeArraySetRecordInfo(copy, StoredRecordInfo(&source));
    }
    return copy;
}

}  // namespace

HRESULT SafeArrayAllocDescriptor(UINT cDims, SAFEARRAY** ppsaOut) {
    if (ppsaOut == nullptr) return E_INVALIDARG;
    *ppsaOut = nullptr;
    if (cDims == 0 || cDims > std::numeric_limits<USHORT>::max()) return E_INVALIDARG;
    *ppsaOut = MakeDescriptor(cDims);
    return *ppsaOut == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT SafeArrayAllocDescriptorEx(VARTYPE vt, UINT cDims, SAFEARRAY** ppsaOut) {
    if (ppsaOut != nullptr) *ppsaOut = nullptr;
    if (!IsElementType(vt)) return DISP_E_BADVARTYPE;
    const HRESULT result = SafeArrayAllocDescriptor(cDims, ppsaOut);
    if (FAILED(result)) return result;
    SAFEARRAY* array = *ppsaOut;
    array->fFeatures = FeaturesOf(vt);
    array->cbElements = FactsOf(vt).size;
    if ((array->fFeatures & FADF_HAVEVARTYPE) != 0) StoreType(array, vt);
    if ((array->fFeatures & FADF_HAVEIID) != 0) StoreIid(array, vt == VT_DISPATCH ? IID_IDispatch : IID_IUnknown);
    return S_OK;
}

HRESULT SafeArrayAllocData(SAFEARRAY* psa) {
    std::size_t count = 0;
    if (psa == nullptr || psa->cDims == 0) return E_INVALIDARG;
    if (!CountElements(*psa, count)) return E_OUTOFMEMORY;
    psa->pvData = TakeZeroed(count * psa->cbElements);
    return psa->pvData == nullptr ? E_OUTOFMEMORY : S_OK;
}

SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound) {
    return Create(vt, cDims, rgsabound, nullptr);
}

SAFEARRAY* SafeArrayCreateEx(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound, PVOID pvExtra) {
    return Create(vt, cDims, rgsabound, pvExtra);
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements) {
    return SafeArrayCreateVectorEx(vt, lLbound, cElements, nullptr);
}

SAFEARRAY* SafeArrayCreateVectorEx(VARTYPE vt, LONG lLbound, ULONG cElements, PVOID pvExtra) {
    const SAFEARRAYBOUND bound{cElements, lLbound};
    return Create(vt, 1, &bound, pvExtra);
}

HRESULT SafeArrayDestroyDescriptor(SAFEARRAY* psa) {
    if (psa == nullptr) return S_OK;
    if (IsLocked(*psa)) return DISP_E_ARRAYISLOCKED;
    if ((psa->fFeatures & FADF_RECORD) != 0) SafeArraySetRecordInfo(psa, nullptr);
    if ((psa->fFeatures & kNotOurMemory) == 0) heap.give(HiddenOf(psa));
    return S_OK;
}

HRESULT SafeArrayDestroyData(SAFEARRAY* psa) {
    if (psa == nullptr) return E_INVALIDARG;
    if (IsLocked(*psa)) return DISP_E_ARRAYISLOCKED;
    if (psa->pvData == nullptr) return S_OK;
    std::size_t count = 0;
    if (!CountElements(*psa, count)) return E_UNEXPECTED;
    ClearElements(*psa, static_cast<char*>(psa->pvData), count);
    if ((psa->fFeatures & kNotOurMemory) == 0) {
        heap.give(psa->pvData);
        psa->pvData = nullptr;
    }
    return S_OK;
}

HRESULT SafeArrayDestroy(SAFEARRAY* psa) {
    if (psa == nullptr) return S_OK;
    const HRESULT result = SafeArrayDestroyData(psa);
    return FAILED(result) ? result : SafeArrayDestroyDescriptor(psa);
}

HRESULT SafeArrayCopyData(SAFEARRAY* psaSource, SAFEARRAY* psaTarget) {
    std::size_t count = 0;
    if (psaSource == nullptr || psaTarget == nullptr || !SameShape(*psaSource, *psaTarget)) return E_INVALIDARG;
    if (!CountElements(*psaSource, count)) return E_INVALIDARG;
    if (psaSource == psaTarget || count == 0) return S_OK;
    if (psaSource->pvData == nullptr || psaTarget->pvData == nullptr) return E_INVALIDARG;
    ClearElements(*psaTarget, static_cast<char*>(psaTarget->pvData), count);
    return CopyElements(*psaSource, static_cast<const char*>(psaSource->pvData), static_cast<char*>(psaTarget->pvData),
                        count);
}

HRESULT SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut) {
    if (ppsaOut == nullptr) return E_INVALIDARG;
    *ppsaOut = nullptr;
    if (psa == nullptr) return S_OK;
    if (psa->cDims == 0 || psa->cbElements == 0) return E_INVALIDARG;
    SAFEARRAY* copy = CopyDescriptor(*psa);
    if (copy == nullptr) return E_OUTOFMEMORY;
    HRESULT result = S_OK;
    if (psa->pvData != nullptr) {
        result = SafeArrayAllocData(copy);
        if (SUCCEEDED(result)) result = SafeArrayCopyData(psa, copy);
    }
    if (FAILED(result)) {
        SafeArrayDestroy(copy);
        return result;
    }
    *ppsaOut = copy;
    return S_OK;
}

HRESULT SafeArrayRedim(SAFEARRAY* psa, SAFEARRAYBOUND* psaboundNew) {
    if (psa == nullptr || psaboundNew == nullptr || psa->cDims == 0) return E_INVALIDARG;
    if (IsLocked(*psa) || (psa->fFeatures & FADF_FIXEDSIZE) != 0) return DISP_E_ARRAYISLOCKED;
    if (!FitsIndexRange(*psaboundNew)) return E_INVALIDARG;
    std::size_t oldCount = 0;
    std::size_t newCount = 0;
    const SAFEARRAYBOUND oldBound = psa->rgsabound[0];  // the last dimension is stored first and varies slowest
    if (!CountElements(*psa, oldCount)) return E_UNEXPECTED;
    psa->rgsabound[0] = *psaboundNew;
    if (!CountElements(*psa, newCount)) {
        psa->rgsabound[0] = oldBound;
        return E_OUTOFMEMORY;
    }
    if (newCount == oldCount && psa->pvData != nullptr) return S_OK;
    void* data = TakeZeroed(newCount * psa->cbElements);
    if (data == nullptr) {
        psa->rgsabound[0] = oldBound;
        return E_OUTOFMEMORY;
    }
    auto* oldData = static_cast<char*>(psa->pvData);
    if (oldData != nullptr) {
        const std::size_t kept = newCount < oldCount ? newCount : oldCount;
        std::memcpy(data, oldData, kept * psa->cbElements);  // moved: ownership goes along
        ClearElements(*psa, oldData + kept * psa->cbElements, oldCount - kept);
        if ((psa->fFeatures & kNotOurMemory) == 0) heap.give(oldData);
    }
    psa->pvData = data;
    return S_OK;
}
