// safe_array_layout.h - where an array keeps what its descriptor has no field for, and how an index becomes a place.
#pragma once

#include <cstddef>
#include <cstdint>

#include "win32/automation/value_types.h"

namespace tk::automation {

/// Bytes before the descriptor: an IID, or a type code, or a record's layout, as fFeatures says.
inline constexpr std::size_t kHiddenBytes = 16;

inline char* HiddenOf(SAFEARRAY* array) noexcept {
    return reinterpret_cast<char*>(array) - kHiddenBytes;
}

VARTYPE StoredType(SAFEARRAY* array) noexcept;  // FADF_HAVEVARTYPE
void StoreType(SAFEARRAY* array, VARTYPE type) noexcept;
GUID StoredIid(SAFEARRAY* array) noexcept;  // FADF_HAVEIID
void StoreIid(SAFEARRAY* array, REFGUID iid) noexcept;
IRecordInfo* StoredRecordInfo(SAFEARRAY* array) noexcept;  // FADF_RECORD; borrowed
void StoreRecordInfo(SAFEARRAY* array, IRecordInfo* info) noexcept;

/// The number of elements; false when the data would not fit 32 bits of bytes.
bool CountElements(const SAFEARRAY& array, std::size_t& count) noexcept;

/// What each element owns, by fFeatures.
Owns OwnedByElements(const SAFEARRAY& array) noexcept;

/// The element's place; DISP_E_BADINDEX outside the bounds.
HRESULT PlaceOf(const SAFEARRAY& array, const LONG* indices, char** place) noexcept;

/// Frees what `count` elements own and makes them zero.
void ClearElements(SAFEARRAY& array, char* first, std::size_t count) noexcept;
/// Copies `count` elements into zeroed ones; on failure those already copied stay.
HRESULT CopyElements(SAFEARRAY& array, const char* from, char* to, std::size_t count) noexcept;

}  // namespace tk::automation
