// ado/persist/saved_types.h - what each data type is called in a saved recordset, and how its cells are kept once read.
#pragma once

#include <windows.h>

#include <string_view>

#include "ado/rowset/column.h"

namespace tk::ado {

/// One plain type code.
struct SavedType {
    LONG dbType;
    CellKind kind;
    LONG size;       // bytes of fixed types, as Field.DefinedSize tells; 0: as described
    BYTE precision;  // 255: none, or as described
    bool isUnsigned;
    std::string_view xmlType;  // dt:type
    std::string_view xmlMore;  // rs:dbtype
    LONG xmlSize;              // dt:maxLength of fixed types
};

/// Null for a code that no saved recordset can hold.
const SavedType* FindSavedType(LONG dbType) noexcept;

/// The type that a schema names; variable wide text for names that are not known.
const SavedType& FindXmlType(std::string_view type, std::string_view more) noexcept;

constexpr bool IsTextType(LONG dbType) noexcept {
    return dbType == 129 || dbType == 130;
}
constexpr bool IsSizedType(LONG dbType) noexcept {
    return IsTextType(dbType) || dbType == 128;
}

/// The most columns a saved recordset may have.
inline constexpr std::size_t kMostColumns = 32767;

}  // namespace tk::ado
