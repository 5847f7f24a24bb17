// ado/persist/gram_format.h - the table-gram: tokens, marks and the columns as they are described in it.
//
// All numbers are little-endian, texts UTF-16. Described in docs/saved-recordsets.md.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ado/persist/saved_types.h"
#include "ado/rowset/column.h"

namespace tk::ado::gram {

enum Token : unsigned char {
    kHeader = 0x01,
    kHandlerOptions = 0x02,
    kResultDescriptor = 0x03,
    kTableDescriptor = 0x05,
    kColumnDescriptor = 0x06,
    kRow = 0x07,
    kUpdate = 0x0A,
    kDelete = 0x0C,
    kInsert = 0x0D,
    kEnd = 0x0F,
    kRecordsetContext = 0x10,
    kOfChildren = 0x80,  // with a row's token: of a child recordset
};

inline constexpr std::string_view kHeaderBytes("\x01\x07TG!\0\0\0\0", 9);
inline constexpr std::string_view kHandlerMark("\xB6\x92\xF2\x3F\x04\xB2\xCF\x11\x8D\x23\x00\xAA\x00\x5F\xFE\x58", 16);
inline constexpr std::string_view kResultMark("\xD2\xAD\x63\xF6\x02\xEB\xCF\x11\xB0\xE3\x00\xAA\x00\x3F\x00\x0F", 16);
inline constexpr std::string_view kCursorSet("\xC1\x3C\x8E\xB6\xEB\x6D\xD0\x11\x8D\xF6\x00\xAA\x00\x5F\xFE\x58", 16);
inline constexpr std::string_view kRowsetSet("\xBE\x22\xB5\xC8\xF3\x5C\xCE\x11\xAD\xE5\x00\xAA\x00\x44\x77\x3D", 16);
/// Ours: what the column descriptors cannot say. The id is the column's ordinal * 256 + the figure's number.
inline constexpr std::string_view kFigureSet("\x5E\x1B\x7A\x90\x2C\xD4\x4E\x6F\x9A\x31\x0B\x7F\x52\xC8\x16\xE3", 16);

enum PropertyId : std::uint32_t {
    // kCursorSet in the result descriptor
    kAutoRecalc = 0x0B,
    kUpdateResync = 0x13,
    kUniqueTable = 0x0D,
    kUniqueSchema = 0x0E,
    kUniqueCatalog = 0x0F,
    kResyncCommand = 0x10,
    kReshapeName = 0x12,
    // kRowsetSet in the recordset context
    kCanChange = 0x7F,
    kCanBatch = 0x86,
    kCommandTimeout = 0x22,
    kMaxRows = 0x49,
    // kCursorSet in the recordset context
    kBatchSize = 0x04,
    kUpdateCriteria = 0x05,
    kBackgroundFetch = 0x03,
    kInitialFetch = 0x07,
    kThreadPriority = 0x08,
};

/// Parts of a column descriptor that may be there.
enum Presence : std::uint32_t {
    kHasFriendlyName = 0x800000,
    kHasTable = 0x400000,
    kHasTableOrdinal = 0x200000,
    kHasBaseName = 0x100000,
    kHasCatalog = 0x020000,
    kHasSchema = 0x010000,
    kHasAutoIncrement = 0x000100,
    kHasCalculation = 0x000004,
    kKnownPresence = kHasFriendlyName | kHasTable | kHasTableOrdinal | kHasBaseName | kHasCatalog | kHasSchema |
                     kHasAutoIncrement | kHasCalculation,
};

inline constexpr std::uint32_t kNoMaximum = 0xFFFFFFFF;
inline constexpr std::uint32_t kNoDigits = 0xFF;

/// How the values of a column are written.
enum class Coding : unsigned char {
    Int8,
    UInt8,
    Int16,
    UInt16,
    Int32,
    UInt32,
    Int64,
    UInt64,
    Real32,
    Real64,
    Currency,
    Date,
    Boolean,
    Guid,
    Decimal,
    Numeric,
    VarNumeric,
    DbDate,
    DbTime,
    DbTimestamp,
    FixedText,  // exactly the maximum length
    ShortText,  // one byte tells the bytes that follow
    LongText,   // four bytes do
    FixedBytes,
    ShortBytes,
    LongBytes,
};

/// A column as the values need it.
struct GramColumn {
    Coding coding = Coding::LongText;
    bool isWide = true;       // of texts: UTF-16, not the writer's code page
    bool isNullable = true;   // has a bit in the presence map
    std::size_t target = 0;   // the column it is; kNowhere when it is hidden
    std::uint32_t bytes = 0;  // of values with a width of their own: that; of texts and bytes: the most they may have
    unsigned char precision = 255;
};
inline constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

/// The coding of a type; false when it is none that can be in a table-gram.
/// @param maximum  characters of texts, bytes of others
bool CodingOf(LONG dbType, LONG attributes, std::uint32_t maximum, GramColumn& column) noexcept;

/// Bytes of a map with a bit for each of some columns.
constexpr std::size_t MapBytes(std::size_t columns) noexcept {
    return (columns + 7) / 8;
}

}  // namespace tk::ado::gram
