#include "ado/persist/saved_column.h"

#include <algorithm>
#include <limits>

#include "ado/persist/saved_types.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

constexpr LONG kNoLimit = 2147483647;
constexpr LONG kNoWideLimit = 1073741823;
constexpr LONG kLeast = std::numeric_limits<LONG>::min();
constexpr LONG kMost = std::numeric_limits<LONG>::max();

LONG FieldType(LONG dbType, LONG attributes) noexcept {
    const bool isLong = (attributes & kFieldLong) != 0;
    const bool isFixed = (attributes & kFieldFixed) != 0;
    switch (dbType) {
        case kTypeChar:
            return isLong ? kTypeLongVarChar : isFixed ? kTypeChar : kTypeVarChar;
        case kTypeWChar:
            return isLong ? kTypeLongVarWChar : isFixed ? kTypeWChar : kTypeVarWChar;
        case kTypeBinary:
            return isLong ? kTypeLongVarBinary : isFixed ? kTypeBinary : kTypeVarBinary;
        default:
            return dbType;
    }
}

/// The code that drivers usually describe a type with.
constexpr struct {
    LONG type;
    int sqlType;
} kUsualSqlTypes[] = {
    {kTypeSmallInt, SQL_SMALLINT},
    {kTypeInteger, SQL_INTEGER},
    {kTypeSingle, SQL_REAL},
    {kTypeDouble, SQL_DOUBLE},
    {kTypeBoolean, SQL_BIT},
    {kTypeTinyInt, SQL_TINYINT},
    {kTypeUnsignedTinyInt, SQL_TINYINT},
    {kTypeUnsignedSmallInt, SQL_SMALLINT},
    {kTypeUnsignedInt, SQL_INTEGER},
    {kTypeBigInt, SQL_BIGINT},
    {kTypeUnsignedBigInt, SQL_BIGINT},
    {kTypeGuid, SQL_GUID},
    {kTypeBinary, SQL_BINARY},
    {kTypeChar, SQL_CHAR},
    {kTypeWChar, SQL_WCHAR},
    {kTypeNumeric, SQL_NUMERIC},
    {kTypeDbDate, SQL_TYPE_DATE},
    {kTypeDbTime, SQL_TYPE_TIME},
    {kTypeDbTimestamp, SQL_TYPE_TIMESTAMP},
    {kTypeVarChar, SQL_VARCHAR},
    {kTypeLongVarChar, SQL_LONGVARCHAR},
    {kTypeVarWChar, SQL_WVARCHAR},
    {kTypeLongVarWChar, SQL_WLONGVARCHAR},
    {kTypeVarBinary, SQL_VARBINARY},
    {kTypeLongVarBinary, SQL_LONGVARBINARY},
};

BYTE ByteOr(const std::optional<LONG>& value, BYTE otherwise) noexcept {
    return value ? static_cast<BYTE>(std::clamp<LONG>(*value, 0, 255)) : otherwise;
}

// What each figure is; the order and the numbers are the files' own and never change.
constexpr ColumnFigure kFigures[] = {
    {1, "type", [](const Column& c) { return c.type; }, [](Column& c, LONG v) { c.type = v; }, 0, 0xFFFF},
    {2, "dbtype", [](const Column& c) { return c.dbType; }, [](Column& c, LONG v) { c.dbType = v; }, 0, 0xFFFF},
    {3, "kind", [](const Column& c) { return static_cast<LONG>(c.kind); },
     [](Column& c, LONG v) { c.kind = static_cast<CellKind>(v); }, 0, static_cast<LONG>(CellKind::Guid)},
    {4, "size", [](const Column& c) { return c.definedSize; }, [](Column& c, LONG v) { c.definedSize = v; }, kLeast,
     kMost},
    {5, "precision", [](const Column& c) { return LONG{c.precision}; },
     [](Column& c, LONG v) { c.precision = static_cast<BYTE>(v); }, 0, 255},
    {6, "scale", [](const Column& c) { return LONG{c.scale}; },
     [](Column& c, LONG v) { c.scale = static_cast<BYTE>(v); }, 0, 255},
    {7, "attributes", [](const Column& c) { return c.attributes; }, [](Column& c, LONG v) { c.attributes = v; }, kLeast,
     kMost},
    {8, "unsigned", [](const Column& c) { return LONG{c.isUnsigned}; },
     [](Column& c, LONG v) { c.isUnsigned = v != 0; }, 0, 1},
    {9, "autoincrement", [](const Column& c) { return LONG{c.isAutoIncrement}; },
     [](Column& c, LONG v) { c.isAutoIncrement = v != 0; }, 0, 1},
    {10, "casesensitive", [](const Column& c) { return LONG{c.isCaseSensitive}; },
     [](Column& c, LONG v) { c.isCaseSensitive = v != 0; }, 0, 1},
    {11, "expression", [](const Column& c) { return LONG{c.isExpression}; },
     [](Column& c, LONG v) { c.isExpression = v != 0; }, 0, 1},
    {12, "searchable", [](const Column& c) { return LONG{c.searchable}; },
     [](Column& c, LONG v) { c.searchable = static_cast<int>(v); }, 1, 4},
    {13, "sqltype", [](const Column& c) { return static_cast<LONG>(c.sqlType); },
     [](Column& c, LONG v) { c.sqlType = static_cast<int>(v); }, -32768, 32767},
    {14, "key", [](const Column& c) { return LONG{c.isKey}; }, [](Column& c, LONG v) { c.isKey = v != 0; }, 0, 1},
};

}  // namespace

Column ColumnOf(const PlainColumn& plain) {
    const SavedType& type = *FindSavedType(plain.dbType);
    Column column;
    column.dbType = plain.dbType;
    column.kind = type.kind;
    column.attributes = plain.attributes;
    // Only texts and bytes come in two kinds; every other value has one width.
    if (!IsSizedType(plain.dbType)) column.attributes |= kFieldFixed;
    if (plain.isKey) column.attributes |= kFieldKeyColumn;
    column.type = FieldType(plain.dbType, column.attributes);
    column.definedSize =
        type.size != 0 ? type.size : plain.size.value_or(plain.dbType == kTypeWChar ? kNoWideLimit : kNoLimit);
    column.precision = ByteOr(plain.precision, type.precision);
    column.scale = ByteOr(plain.scale, 255);
    column.isUnsigned = type.isUnsigned;
    column.isKey = plain.isKey;
    column.isAutoIncrement = plain.isAutoIncrement;
    for (const auto& usual : kUsualSqlTypes) {
        if (usual.type == column.type) column.sqlType = usual.sqlType;
    }
    return column;
}

std::span<const ColumnFigure> ColumnFigures() noexcept {
    return kFigures;
}

bool SetFigure(Column& column, const ColumnFigure& figure, long long value) noexcept {
    if (value < figure.least || value > figure.most) return false;
    figure.write(column, static_cast<LONG>(value));
    return true;
}

}  // namespace tk::ado
