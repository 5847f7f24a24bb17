// ado/rowset/type_map.h - SQL types as ODBC describes them, and what the object model makes of them.
#pragma once

#include <windows.h>

#include "ado/odbc/odbc_api.h"
#include "ado/rowset/column.h"

namespace tk::ado {

// Data types of the object model that code has to name.
enum DataType : LONG {
    kTypeEmpty = 0,
    kTypeSmallInt = 2,
    kTypeInteger = 3,
    kTypeSingle = 4,
    kTypeDouble = 5,
    kTypeCurrency = 6,
    kTypeDate = 7,
    kTypeBstr = 8,
    kTypeBoolean = 11,
    kTypeDecimal = 14,
    kTypeTinyInt = 16,
    kTypeUnsignedTinyInt = 17,
    kTypeUnsignedSmallInt = 18,
    kTypeUnsignedInt = 19,
    kTypeBigInt = 20,
    kTypeUnsignedBigInt = 21,
    kTypeGuid = 72,
    kTypeBinary = 128,
    kTypeChar = 129,
    kTypeWChar = 130,
    kTypeNumeric = 131,
    kTypeDbDate = 133,
    kTypeDbTime = 134,
    kTypeDbTimestamp = 135,
    kTypeVarChar = 200,
    kTypeLongVarChar = 201,
    kTypeVarWChar = 202,
    kTypeLongVarWChar = 203,
    kTypeVarBinary = 204,
    kTypeLongVarBinary = 205,
};

// Bits of Field.Attributes.
enum FieldAttribute : LONG {
    kFieldMayDefer = 0x2,
    kFieldUpdatable = 0x4,
    kFieldUnknownUpdatable = 0x8,
    kFieldFixed = 0x10,
    kFieldIsNullable = 0x20,
    kFieldMayBeNull = 0x40,
    kFieldLong = 0x80,
    kFieldKeyColumn = 0x8000,
};

/// One SQL type.
struct SqlTypeRule {
    int sqlType;
    bool isUnsigned;
    LONG dbType;     // plain OLE DB code
    LONG fieldType;  // Field.Type
    CellKind kind;
    LONG fixedSize;  // bytes of the object model's binding structure; 0 for texts and bytes
    BYTE precision;  // 255: none, or as described
    bool isLong;
};

/// Never fails: an unknown type is variable wide text.
const SqlTypeRule& FindSqlType(int sqlType, bool isUnsigned) noexcept;

/// The type of values that have no limit, for one of those that have one; others stay.
int LongTypeOf(int sqlType) noexcept;

/// True where the driver says what is signed; false for text types, of which some drivers say so.
constexpr bool IsIntegerType(int sqlType) noexcept {
    return sqlType == SQL_TINYINT || sqlType == SQL_SMALLINT || sqlType == SQL_INTEGER || sqlType == SQL_BIGINT;
}

}  // namespace tk::ado
