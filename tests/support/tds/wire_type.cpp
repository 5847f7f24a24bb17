#include "support/tds/wire_type.h"

#include <algorithm>
#include <string_view>

namespace tk::test::tds {
namespace {

/// What stands behind the token of a type.
enum class Shape : std::uint8_t {
    Nothing,
    Size,       // in one byte
    Decimal,    // size, precision, scale
    Scale,      // of the seconds
    LongSize,   // in two bytes
    Characters  // size in two bytes, collation
    ,
    Blob,  // size in four bytes
    Clob   // size in four bytes, collation
};

struct Rule {
    Token token;
    Shape shape;
};

constexpr Rule kRules[] = {
    {Token::Image, Shape::Blob},          {Token::Text, Shape::Clob},        {Token::Guid, Shape::Size},
    {Token::Integer, Shape::Size},        {Token::Date, Shape::Nothing},     {Token::Time, Shape::Scale},
    {Token::DateTime2, Shape::Scale},     {Token::NText, Shape::Clob},       {Token::Bit, Shape::Size},
    {Token::Decimal, Shape::Decimal},     {Token::Numeric, Shape::Decimal},  {Token::Float, Shape::Size},
    {Token::Money, Shape::Size},          {Token::DateTime, Shape::Size},    {Token::VarBinary, Shape::LongSize},
    {Token::VarChar, Shape::Characters},  {Token::Binary, Shape::LongSize},  {Token::Char, Shape::Characters},
    {Token::NVarChar, Shape::Characters}, {Token::NChar, Shape::Characters},
};

Shape ShapeOf(Token token) {
    const auto* const rule = std::ranges::find(kRules, token, &Rule::token);
    if (rule == std::end(kRules)) throw ProtocolError("a type that is not known here");
    return rule->shape;
}

// Chinese_PRC: the code page is 936.
constexpr std::string_view kCollation("\x04\x08\xD0\x00\x00", 5);

}  // namespace

void WriteType(ByteWriter& out, const WireType& type) {
    out.U8(static_cast<std::uint8_t>(type.token));
    switch (ShapeOf(type.token)) {
        case Shape::Nothing:
            break;
        case Shape::Size:
            out.U8(type.size);
            break;
        case Shape::Decimal:
            out.U8(type.size).U8(type.precision).U8(type.scale);
            break;
        case Shape::Scale:
            out.U8(type.scale);
            break;
        case Shape::LongSize:
            out.U16(type.size);
            break;
        case Shape::Characters:
            out.U16(type.size).Raw(kCollation);
            break;
        case Shape::Blob:
            out.U32(type.size);
            break;
        case Shape::Clob:
            out.U32(type.size).Raw(kCollation);
            break;
    }
}

WireType ReadType(ByteReader& in) {
    WireType type;
    type.token = static_cast<Token>(in.U8());
    switch (ShapeOf(type.token)) {
        case Shape::Nothing:
            break;
        case Shape::Size:
            type.size = in.U8();
            break;
        case Shape::Decimal:
            type.size = in.U8();
            type.precision = in.U8();
            type.scale = in.U8();
            break;
        case Shape::Scale:
            type.scale = in.U8();
            break;
        case Shape::LongSize:
            type.size = in.U16();
            break;
        case Shape::Characters:
            type.size = in.U16();
            in.Bytes(kCollation.size());
            break;
        case Shape::Blob:
            type.size = in.U32();
            break;
        case Shape::Clob:
            type.size = in.U32();
            in.Bytes(kCollation.size());
            break;
    }
    return type;
}

}  // namespace tk::test::tds
