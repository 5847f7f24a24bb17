#include "ado/persist/saved_types.h"

#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

constexpr BYTE kNone = 255;
constexpr LONG kTypeVarNumeric = 139;

// code, kept as, bytes, precision, unsigned, dt:type, rs:dbtype, dt:maxLength
constexpr SavedType kTypes[] = {
    {kTypeSmallInt, CellKind::Integer16, 2, 5, false, "i2", "", 2},
    {kTypeInteger, CellKind::Integer32, 4, 10, false, "int", "", 4},
    {kTypeSingle, CellKind::Real32, 4, 7, false, "r4", "", 4},
    {kTypeDouble, CellKind::Real64, 8, 15, false, "float", "", 8},
    {kTypeCurrency, CellKind::Decimal, 8, 19, false, "number", "currency", 8},
    {kTypeDate, CellKind::Timestamp, 8, kNone, false, "dateTime", "variantdate", 16},
    {kTypeBoolean, CellKind::Boolean, 2, kNone, false, "boolean", "", 2},
    {kTypeDecimal, CellKind::Decimal, 16, 28, false, "number", "decimal", 16},
    {kTypeTinyInt, CellKind::Integer16, 1, 3, false, "i1", "", 1},
    {kTypeUnsignedTinyInt, CellKind::Integer16, 1, 3, true, "ui1", "", 1},
    {kTypeUnsignedSmallInt, CellKind::Integer32, 2, 5, true, "ui2", "", 2},
    {kTypeUnsignedInt, CellKind::Integer64, 4, 10, true, "ui4", "", 4},
    {kTypeBigInt, CellKind::Integer64, 8, 19, false, "i8", "", 8},
    {kTypeUnsignedBigInt, CellKind::Decimal, 8, 20, true, "ui8", "", 8},
    {kTypeGuid, CellKind::Guid, 16, kNone, false, "uuid", "", 16},
    {kTypeBinary, CellKind::Bytes, 0, kNone, false, "bin.hex", "", 0},
    {kTypeChar, CellKind::Text, 0, kNone, false, "string", "str", 0},
    {kTypeWChar, CellKind::Text, 0, kNone, false, "string", "", 0},
    {kTypeNumeric, CellKind::Decimal, 19, kNone, false, "number", "numeric", 19},
    {kTypeDbDate, CellKind::Date, 6, kNone, false, "date", "", 6},
    {kTypeDbTime, CellKind::Time, 6, kNone, false, "time", "", 6},
    {kTypeDbTimestamp, CellKind::Timestamp, 16, kNone, false, "dateTime", "timestamp", 16},
    {kTypeVarNumeric, CellKind::Decimal, 19, kNone, false, "number", "varnumeric", 19},
};

/// Other spellings, and what a type means when rs:dbtype says nothing that is known.
constexpr struct {
    std::string_view name;
    LONG dbType;
} kSpellings[] = {
    {"i4", kTypeInteger},
    {"r8", kTypeDouble},
    {"i1", kTypeTinyInt},
    {"number", kTypeNumeric},
    {"fixed.14.4", kTypeCurrency},
    {"dateTime", kTypeDbTimestamp},
    {"dateTime.tz", kTypeDbTimestamp},
    {"dateTime.iso8601", kTypeDbTimestamp},
    {"date.iso8601", kTypeDbDate},
    {"time.tz", kTypeDbTime},
    {"time.iso8601", kTypeDbTime},
    {"bin.base16", kTypeBinary},
};

}  // namespace

const SavedType* FindSavedType(LONG dbType) noexcept {
    for (const SavedType& type : kTypes) {
        if (type.dbType == dbType) return &type;
    }
    return nullptr;
}

const SavedType& FindXmlType(std::string_view type, std::string_view more) noexcept {
    for (const SavedType& known : kTypes) {
        if (known.xmlType == type && known.xmlMore == more) return known;
    }
    for (const auto& spelling : kSpellings) {
        if (spelling.name == type) return *FindSavedType(spelling.dbType);
    }
    for (const SavedType& known : kTypes) {
        if (known.xmlType == type) return known;
    }
    return *FindSavedType(kTypeWChar);
}

}  // namespace tk::ado
