#include "win32/automation/safe_array_layout.h"

#include <cstring>
#include <limits>

#include "win32/automation/text_blocks.h"
#include "win32/include/oleauto.h"

namespace tk::automation {

namespace {

// The type code is a 32-bit word right before the descriptor, the record's layout a pointer there.
template <class T>
T LoadBefore(SAFEARRAY* array) noexcept {
    T value;
    std::memcpy(&value, reinterpret_cast<char*>(array) - sizeof(T), sizeof(T));
    return value;
}
template <class T>
void StoreBefore(SAFEARRAY* array, const T& value) noexcept {
    std::memcpy(reinterpret_cast<char*>(array) - sizeof(T), &value, sizeof(T));
}

void ClearRecords(SAFEARRAY& array, char* first, std::size_t count) noexcept {
    IRecordInfo* info = StoredRecordInfo(&array);
    if (info == nullptr) return;
    for (std::size_t i = 0; i < count; ++i)
        info->RecordClear(first + i * array.cbElements);
}

HRESULT CopyRecords(SAFEARRAY& array, const char* from, char* to, std::size_t count) noexcept {
    IRecordInfo* info = StoredRecordInfo(&array);
    if (info == nullptr) return E_INVALIDARG;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t offset = i * array.cbElements;
        const HRESULT result = info->RecordCopy(const_cast<char*>(from) + offset, to + offset);
        if (FAILED(result)) return result;
    }
    return S_OK;
}

}  // namespace

VARTYPE StoredType(SAFEARRAY* array) noexcept {
    return static_cast<VARTYPE>(LoadBefore<DWORD>(array));
}
void StoreType(SAFEARRAY* array, VARTYPE type) noexcept {
    StoreBefore<DWORD>(array, type);
}
GUID StoredIid(SAFEARRAY* array) noexcept {
    return LoadBefore<GUID>(array);
}
void StoreIid(SAFEARRAY* array, REFGUID iid) noexcept {
    StoreBefore(array, iid);
}
IRecordInfo* StoredRecordInfo(SAFEARRAY* array) noexcept {
    return LoadBefore<IRecordInfo*>(array);
}
void StoreRecordInfo(SAFEARRAY* array, IRecordInfo* info) noexcept {
    StoreBefore(array, info);
}

bool CountElements(const SAFEARRAY& array, std::size_t& count) noexcept {
    constexpr std::uint64_t kMaxBytes = std::numeric_limits<ULONG>::max();
    std::uint64_t product = 1;
    bool empty = false;
    for (USHORT i = 0; i < array.cDims; ++i) {
        const ULONG elements = array.rgsabound[i].cElements;
        empty = empty || elements == 0;
        if (elements == 0) continue;
        product *= elements;
        if (product * array.cbElements > kMaxBytes || product > kMaxBytes) return false;
    }
    count = empty ? 0 : product;
    return true;
}

Owns OwnedByElements(const SAFEARRAY& array) noexcept {
    if ((array.fFeatures & FADF_BSTR) != 0) return Owns::Text;
    if ((array.fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) != 0) return Owns::Interface;
    if ((array.fFeatures & FADF_VARIANT) != 0) return Owns::Value;
    if ((array.fFeatures & FADF_RECORD) != 0) return Owns::Record;
    return Owns::Nothing;
}

HRESULT PlaceOf(const SAFEARRAY& array, const LONG* indices, char** place) noexcept {
    std::size_t offset = 0;
    std::size_t step = 1;
    for (USHORT i = 0; i < array.cDims; ++i) {
        const SAFEARRAYBOUND& bound = array.rgsabound[array.cDims - 1 - i];  // stored last dimension first
        const std::int64_t index = std::int64_t{indices[i]} - bound.lLbound;
        if (index < 0 || index >= bound.cElements) return DISP_E_BADINDEX;
        offset += static_cast<std::size_t>(index) * step;
        step *= bound.cElements;
    }
    *place = static_cast<char*>(array.pvData) + offset * array.cbElements;
    return S_OK;
}

void ClearElements(SAFEARRAY& array, char* first, std::size_t count) noexcept {
    switch (OwnedByElements(array)) {
        case Owns::Text:
            for (std::size_t i = 0; i < count; ++i)
                GiveText(reinterpret_cast<BSTR*>(first)[i]);
            break;
        case Owns::Interface:
            for (std::size_t i = 0; i < count; ++i) {
                if (auto* held = reinterpret_cast<IUnknown**>(first)[i]) held->Release();
            }
            break;
        case Owns::Value:
            for (std::size_t i = 0; i < count; ++i)
                VariantClear(reinterpret_cast<VARIANT*>(first) + i);
            break;
        case Owns::Record:
            ClearRecords(array, first, count);
            break;
        case Owns::Nothing:
            break;
    }
    if (count != 0) std::memset(first, 0, count * array.cbElements);
}

HRESULT CopyElements(SAFEARRAY& array, const char* from, char* to, std::size_t count) noexcept {
    switch (OwnedByElements(array)) {
        case Owns::Text:
            for (std::size_t i = 0; i < count; ++i) {
                BSTR text = reinterpret_cast<const BSTR*>(from)[i];
                if (text == nullptr) continue;
                BSTR copy = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text));
                if (copy == nullptr) return E_OUTOFMEMORY;
                reinterpret_cast<BSTR*>(to)[i] = copy;
            }
            return S_OK;
        case Owns::Interface:
            for (std::size_t i = 0; i < count; ++i) {
                IUnknown* held = reinterpret_cast<IUnknown* const*>(from)[i];
                if (held != nullptr) held->AddRef();
                reinterpret_cast<IUnknown**>(to)[i] = held;
            }
            return S_OK;
        case Owns::Value:
            for (std::size_t i = 0; i < count; ++i) {
                const HRESULT result =
                    VariantCopy(reinterpret_cast<VARIANT*>(to) + i, reinterpret_cast<const VARIANT*>(from) + i);
                if (FAILED(result)) return result;
            }
            return S_OK;
        case Owns::Record:
            return CopyRecords(array, from, to, count);
        case Owns::Nothing:
            break;
    }
    if (count != 0) std::memcpy(to, from, count * array.cbElements);
    return S_OK;
}

}  // namespace tk::automation
