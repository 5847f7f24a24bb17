#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

constexpr LONG kNoLimit = 0;
constexpr BYTE kNone = 255;
constexpr int kAnyType = 0;
constexpr int kServerTime = -154;  // the time of Microsoft SQL Server, which has fractions

// SQL type, unsigned, plain code, Field.Type, kept as, bytes, precision, long
constexpr SqlTypeRule kRules[] = {
    {SQL_CHAR, false, kTypeChar, kTypeChar, CellKind::Text, kNoLimit, kNone, false},
    {SQL_VARCHAR, false, kTypeChar, kTypeVarChar, CellKind::Text, kNoLimit, kNone, false},
    {SQL_LONGVARCHAR, false, kTypeChar, kTypeLongVarChar, CellKind::Text, kNoLimit, kNone, true},
    {SQL_WCHAR, false, kTypeWChar, kTypeWChar, CellKind::Text, kNoLimit, kNone, false},
    {SQL_WVARCHAR, false, kTypeWChar, kTypeVarWChar, CellKind::Text, kNoLimit, kNone, false},
    {SQL_WLONGVARCHAR, false, kTypeWChar, kTypeLongVarWChar, CellKind::Text, kNoLimit, kNone, true},
    {SQL_BINARY, false, kTypeBinary, kTypeBinary, CellKind::Bytes, kNoLimit, kNone, false},
    {SQL_VARBINARY, false, kTypeBinary, kTypeVarBinary, CellKind::Bytes, kNoLimit, kNone, false},
    {SQL_LONGVARBINARY, false, kTypeBinary, kTypeLongVarBinary, CellKind::Bytes, kNoLimit, kNone, true},
    {SQL_BIT, false, kTypeBoolean, kTypeBoolean, CellKind::Boolean, 2, kNone, false},
    {SQL_TINYINT, false, kTypeTinyInt, kTypeTinyInt, CellKind::Integer16, 1, 3, false},
    {SQL_TINYINT, true, kTypeUnsignedTinyInt, kTypeUnsignedTinyInt, CellKind::Integer16, 1, 3, false},
    {SQL_SMALLINT, false, kTypeSmallInt, kTypeSmallInt, CellKind::Integer16, 2, 5, false},
    {SQL_SMALLINT, true, kTypeUnsignedSmallInt, kTypeUnsignedSmallInt, CellKind::Integer32, 2, 5, false},
    {SQL_INTEGER, false, kTypeInteger, kTypeInteger, CellKind::Integer32, 4, 10, false},
    {SQL_INTEGER, true, kTypeUnsignedInt, kTypeUnsignedInt, CellKind::Integer64, 4, 10, false},
    {SQL_BIGINT, false, kTypeBigInt, kTypeBigInt, CellKind::Integer64, 8, 19, false},
    {SQL_BIGINT, true, kTypeUnsignedBigInt, kTypeUnsignedBigInt, CellKind::Decimal, 8, 20, false},
    {SQL_REAL, false, kTypeSingle, kTypeSingle, CellKind::Real32, 4, 7, false},
    {SQL_FLOAT, false, kTypeDouble, kTypeDouble, CellKind::Real64, 8, 15, false},
    {SQL_DOUBLE, false, kTypeDouble, kTypeDouble, CellKind::Real64, 8, 15, false},
    {SQL_NUMERIC, false, kTypeNumeric, kTypeNumeric, CellKind::Decimal, 19, kNone, false},
    {SQL_DECIMAL, false, kTypeNumeric, kTypeNumeric, CellKind::Decimal, 19, kNone, false},
    {SQL_DATE, false, kTypeDbDate, kTypeDbDate, CellKind::Date, 6, kNone, false},
    {SQL_TYPE_DATE, false, kTypeDbDate, kTypeDbDate, CellKind::Date, 6, kNone, false},
    {SQL_TIME, false, kTypeDbTime, kTypeDbTime, CellKind::Time, 6, kNone, false},
    {SQL_TYPE_TIME, false, kTypeDbTime, kTypeDbTime, CellKind::Time, 6, kNone, false},
    {kServerTime, false, kTypeDbTime, kTypeDbTime, CellKind::Time, 6, kNone, false},
    {SQL_TIMESTAMP, false, kTypeDbTimestamp, kTypeDbTimestamp, CellKind::Timestamp, 16, kNone, false},
    {SQL_TYPE_TIMESTAMP, false, kTypeDbTimestamp, kTypeDbTimestamp, CellKind::Timestamp, 16, kNone, false},
    {SQL_GUID, false, kTypeGuid, kTypeGuid, CellKind::Guid, 16, kNone, false},
};

constexpr SqlTypeRule kInterval = {kAnyType, false, kTypeChar, kTypeVarChar, CellKind::Text, kNoLimit, kNone, false};
constexpr SqlTypeRule kOther = {kAnyType, false, kTypeWChar, kTypeVarWChar, CellKind::Text, kNoLimit, kNone, false};

}  // namespace

const SqlTypeRule& FindSqlType(int sqlType, bool isUnsigned) noexcept {
    const bool wanted = isUnsigned && IsIntegerType(sqlType);
    for (const SqlTypeRule& rule : kRules) {
        if (rule.sqlType == sqlType && rule.isUnsigned == wanted) return rule;
    }
    constexpr int kFirstInterval = 101;
    constexpr int kLastInterval = 113;
    return sqlType >= kFirstInterval && sqlType <= kLastInterval ? kInterval : kOther;
}

int LongTypeOf(int sqlType) noexcept {
    switch (sqlType) {
        case SQL_VARCHAR:
            return SQL_LONGVARCHAR;
        case SQL_WVARCHAR:
            return SQL_WLONGVARCHAR;
        case SQL_VARBINARY:
            return SQL_LONGVARBINARY;
        default:
            return sqlType;
    }
}

}  // namespace tk::ado
