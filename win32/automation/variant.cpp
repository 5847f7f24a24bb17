// The life of a VARIANT: made, cleared, copied.
#include <cstring>

#include "win32/automation/text_blocks.h"
#include "win32/automation/value_types.h"
#include "win32/include/oleauto.h"

using tk::automation::FactsOf;
using tk::automation::HeaderOf;
using tk::automation::IsSimpleType;
using tk::automation::IsVariantType;
using tk::automation::Owns;

namespace {

HRESULT ClearArray(VARIANT& value) {
    const HRESULT result = SafeArrayDestroy(value.parray);
    if (SUCCEEDED(result)) value.vt = VT_EMPTY;
    return result;
}

// The variant is empty before anything foreign runs, which may come back to it.
HRESULT ClearOwned(VARIANT& value) {
    const VARIANT old = value;
    value.vt = VT_EMPTY;
    if (old.vt == VT_RECORD) {
        if (old.pRecInfo == nullptr) return S_OK;
        if (old.pvRecord != nullptr) old.pRecInfo->RecordDestroy(old.pvRecord);
        old.pRecInfo->Release();
    } else if (old.punkVal != nullptr) {
        old.punkVal->Release();
    }
    return S_OK;
}

// Here and not in VariantClear, so that a copy need not go through the library's symbol table.
inline HRESULT Clear(VARIANT& value) {
    const VARTYPE type = value.vt;
    if (IsSimpleType(type)) {
        value.vt = VT_EMPTY;
        return S_OK;
    }
    if (type == VT_BSTR) {
        value.vt = VT_EMPTY;
        tk::automation::GiveText(value.bstrVal);
        return S_OK;
    }
    if (!IsVariantType(type)) return DISP_E_BADVARTYPE;
    if ((type & VT_BYREF) == 0) {
        if ((type & VT_ARRAY) != 0) return ClearArray(value);
        if (FactsOf(type).owns != Owns::Nothing) return ClearOwned(value);
    }
    value.vt = VT_EMPTY;
    return S_OK;
}

HRESULT CopyText(VARIANT& destination, const VARIANT& source) {
    BSTR copy = nullptr;
    if (source.bstrVal != nullptr) {
        copy = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(source.bstrVal), HeaderOf(source.bstrVal)->bytes);
        if (copy == nullptr) return E_OUTOFMEMORY;
    }
    destination.bstrVal = copy;
    destination.vt = VT_BSTR;
    return S_OK;
}

HRESULT CopyRecord(VARIANT& destination, const VARIANT& source) {
    PVOID record = nullptr;
    if (source.pRecInfo != nullptr && source.pvRecord != nullptr) {
        const HRESULT result = source.pRecInfo->RecordCreateCopy(source.pvRecord, &record);
        if (FAILED(result)) return result;
    }
    if (source.pRecInfo != nullptr) source.pRecInfo->AddRef();
    destination.pvRecord = record;
    destination.pRecInfo = source.pRecInfo;
    destination.vt = VT_RECORD;
    return S_OK;
}

// The destination owns nothing, and stays VT_EMPTY on failure.
HRESULT CopyInto(VARIANT& destination, const VARIANT& source) {
    if (source.vt == VT_BSTR) return CopyText(destination, source);
    if (IsSimpleType(source.vt) || (source.vt & VT_BYREF) != 0) {
        destination = source;
        return S_OK;
    }
    if ((source.vt & VT_ARRAY) != 0) {
        SAFEARRAY* copy = nullptr;
        const HRESULT result = SafeArrayCopy(source.parray, &copy);
        if (FAILED(result)) return result;
        destination.parray = copy;
        destination.vt = source.vt;
        return S_OK;
    }
    if (source.vt == VT_RECORD) return CopyRecord(destination, source);
    if (source.punkVal != nullptr) source.punkVal->AddRef();
    destination.punkVal = source.punkVal;
    destination.vt = source.vt;
    return S_OK;
}

// A variant of the plain type that a VT_BYREF one points to; it borrows, and owns nothing.
HRESULT Dereference(const VARIANT& source, VARIANT& value) {
    if (source.byref == nullptr) return E_INVALIDARG;
    const VARTYPE type = source.vt & ~VT_BYREF;
    if (type == VT_VARIANT) {
        value = *source.pvarVal;
        if (!IsVariantType(value.vt)) return DISP_E_BADVARTYPE;
        if (value.vt == (VT_VARIANT | VT_BYREF)) return E_INVALIDARG;  // one level only, or a ring would never end
        return (value.vt & VT_BYREF) != 0 ? Dereference(VARIANT(value), value) : S_OK;
    }
    if (type == VT_DECIMAL) {
        value.decVal = *source.pdecVal;  // overlays vt
    } else if (type == VT_RECORD) {
        value.pvRecord = source.pvRecord;
        value.pRecInfo = source.pRecInfo;
    } else {
        const std::size_t size = (type & VT_ARRAY) != 0 ? sizeof(SAFEARRAY*) : FactsOf(type).size;
        std::memcpy(&value.llVal, source.byref, size);
    }
    value.vt = type;
    return S_OK;
}

}  // namespace

void VariantInit(VARIANTARG* pvarg) {
    if (pvarg != nullptr) pvarg->vt = VT_EMPTY;
}

HRESULT VariantClear(VARIANTARG* pvarg) {
    return pvarg == nullptr ? E_INVALIDARG : Clear(*pvarg);
}

HRESULT VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc) {
    if (pvargDest == nullptr || pvargSrc == nullptr) return E_INVALIDARG;
    if (pvargDest == pvargSrc) return S_OK;
    if (!IsSimpleType(pvargSrc->vt) && !IsVariantType(pvargSrc->vt)) return DISP_E_BADVARTYPE;
    const HRESULT result = Clear(*pvargDest);
    return FAILED(result) ? result : CopyInto(*pvargDest, *pvargSrc);
}

HRESULT VariantCopyInd(VARIANT* pvarDest, const VARIANTARG* pvargSrc) {
    if (pvarDest == nullptr || pvargSrc == nullptr) return E_INVALIDARG;
    if ((pvargSrc->vt & VT_BYREF) == 0) return VariantCopy(pvarDest, pvargSrc);
    if (!IsVariantType(pvargSrc->vt)) return DISP_E_BADVARTYPE;
    VARIANT borrowed;
    HRESULT result = Dereference(*pvargSrc, borrowed);
    if (FAILED(result)) return result;
    // The source may live in the destination, so the copy is whole before the destination goes.
    VARIANT copy;
    copy.vt = VT_EMPTY;
    result = CopyInto(copy, borrowed);
    if (FAILED(result)) return result;
    result = Clear(*pvarDest);
    if (FAILED(result)) {
        Clear(copy);
        return result;
    }
    *pvarDest = copy;
    return S_OK;
}
