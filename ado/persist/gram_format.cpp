#include "ado/persist/gram_format.h"

#include "ado/rowset/type_map.h"

namespace tk::ado::gram {
namespace {

constexpr std::uint32_t kMostShort = 255;

constexpr struct {
    LONG dbType;
    Coding coding;
    std::uint32_t bytes;
} kCodings[] = {
    {kTypeTinyInt, Coding::Int8, 1},
    {kTypeUnsignedTinyInt, Coding::UInt8, 1},
    {kTypeSmallInt, Coding::Int16, 2},
    {kTypeUnsignedSmallInt, Coding::UInt16, 2},
    {kTypeInteger, Coding::Int32, 4},
    {kTypeUnsignedInt, Coding::UInt32, 4},
    {kTypeBigInt, Coding::Int64, 8},
    {kTypeUnsignedBigInt, Coding::UInt64, 8},
    {kTypeSingle, Coding::Real32, 4},
    {kTypeDouble, Coding::Real64, 8},
    {kTypeCurrency, Coding::Currency, 8},
    {kTypeDate, Coding::Date, 8},
    {kTypeBoolean, Coding::Boolean, 2},
    {kTypeGuid, Coding::Guid, 16},
    {kTypeDecimal, Coding::Decimal, 16},
    {kTypeNumeric, Coding::Numeric, 19},
    {kTypeDbDate, Coding::DbDate, 6},
    {kTypeDbTime, Coding::DbTime, 6},
    {kTypeDbTimestamp, Coding::DbTimestamp, 16},
    {139, Coding::VarNumeric, 0},
};

}  // namespace

bool CodingOf(LONG dbType, LONG attributes, std::uint32_t maximum, GramColumn& column) noexcept {
    if (IsSizedType(dbType)) {
        const bool isText = IsTextType(dbType);
        column.isWide = dbType == kTypeWChar;
        const std::uint64_t bytes =
            maximum == kNoMaximum ? kNoMaximum : std::uint64_t{maximum} * (column.isWide ? 2 : 1);
        column.bytes = static_cast<std::uint32_t>(std::min<std::uint64_t>(bytes, kNoMaximum));
        const bool isFixed = (attributes & kFieldFixed) != 0 && maximum != kNoMaximum && (attributes & kFieldLong) == 0;
        if (isFixed) {
            column.coding = isText ? Coding::FixedText : Coding::FixedBytes;
        } else if (column.bytes <= kMostShort) {
            column.coding = isText ? Coding::ShortText : Coding::ShortBytes;
        } else {
            column.coding = isText ? Coding::LongText : Coding::LongBytes;
        }
        return true;
    }
    for (const auto& row : kCodings) {
        if (row.dbType != dbType) continue;
        column.coding = row.coding;
        column.bytes = row.bytes;
        return true;
    }
    return false;
}

}  // namespace tk::ado::gram
