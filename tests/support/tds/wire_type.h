// tests/support/tds/wire_type.h - the types of columns and parameters as they travel.
#pragma once

#include <cstdint>

#include "support/tds/bytes.h"
#include "support/tds/cell.h"

namespace tk::test::tds {

enum class Token : std::uint8_t {
    Image = 0x22,
    Text = 0x23,
    Guid = 0x24,
    Integer = 0x26,
    Date = 0x28,
    Time = 0x29,
    DateTime2 = 0x2A,
    NText = 0x63,
    Bit = 0x68,
    Decimal = 0x6A,
    Numeric = 0x6C,
    Float = 0x6D,
    Money = 0x6E,
    DateTime = 0x6F,
    VarBinary = 0xA5,
    VarChar = 0xA7,
    Binary = 0xAD,
    Char = 0xAF,
    NVarChar = 0xE7,
    NChar = 0xEF,
};

/// The size of texts and binaries without limit, which travel in pieces.
constexpr std::uint32_t kMax = 0xFFFF;

struct WireType {
    Token token = Token::NVarChar;
    std::uint32_t size = 0;  // bytes at most
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;
};

inline WireType IntegerType(std::uint32_t size) {
    return {Token::Integer, size};
}
inline WireType NVarCharType(std::uint32_t characters) {
    return {Token::NVarChar, characters * 2};
}

void WriteType(ByteWriter& out, const WireType& type);
/// @throws ProtocolError for a type that is not in the list
WireType ReadType(ByteReader& in);

/// Converts as far as that is needed. @throws SqlError when the cell does not fit
void WriteCell(ByteWriter& out, const WireType& type, const Cell& cell);
/// @throws ProtocolError when the bytes do not make a value of the type
Cell ReadCell(ByteReader& in, const WireType& type);

}  // namespace tk::test::tds
