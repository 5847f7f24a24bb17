// Values as they are sent.
#include <array>
#include <bit>
#include <cstdio>
#include <cstdlib>

#include "support/tds/decimal_digits.h"
#include "support/tds/messages.h"
#include "support/tds/moment.h"
#include "support/tds/wire_type.h"

namespace tk::test::tds {
namespace {

std::string TextOf(const Cell& cell) {
    if (const auto* text = std::get_if<std::string>(&cell)) return *text;
    if (const auto* bytes = std::get_if<Bytes>(&cell)) return bytes->data;
    if (const auto* integer = std::get_if<std::int64_t>(&cell)) return std::to_string(*integer);
    std::array<char, 40> room{};
    std::snprintf(room.data(), room.size(), "%.15g", std::get<double>(cell));
    return room.data();
}

double RealOf(const Cell& cell) {
    if (const auto* real = std::get_if<double>(&cell)) return *real;
    if (const auto* integer = std::get_if<std::int64_t>(&cell)) return static_cast<double>(*integer);
    const std::string text = TextOf(cell);
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0') throw ConversionError();
    return number;
}

std::int64_t IntegerOf(const Cell& cell, std::uint32_t size) {
    const auto* integer = std::get_if<std::int64_t>(&cell);
    const std::int64_t number = integer != nullptr ? *integer : static_cast<std::int64_t>(RealOf(cell));
    if (size == 8) return number;
    // The smallest type has no sign.
    const std::int64_t low = size == 1 ? 0 : -(std::int64_t{1} << (8 * size - 1));
    const std::int64_t high = size == 1 ? 255 : (std::int64_t{1} << (8 * size - 1)) - 1;
    if (number < low || number > high) throw OverflowError();
    return number;
}

Moment MomentOf(const Cell& cell) {
    const auto moment = ParseMoment(TextOf(cell));
    if (!moment) throw ConversionError();
    return *moment;
}

void WriteDecimal(ByteWriter& out, const WireType& type, const Cell& cell) {
    const DecimalDigits digits = DigitsOf(cell, type.precision, type.scale);
    const unsigned size = type.precision <= 9 ? 4 : type.precision <= 19 ? 8 : type.precision <= 28 ? 12 : 16;
    out.U8(size + 1).U8(digits.isNegative ? 0 : 1).Raw(std::string_view(digits.magnitude).substr(0, size));
}

void WriteMoney(ByteWriter& out, const WireType& type, const Cell& cell) {
    const DecimalDigits digits = DigitsOf(cell, 19, 4);
    ByteReader magnitude(digits.magnitude);
    const std::uint64_t amount = digits.isNegative ? 0 - magnitude.U64() : magnitude.U64();
    // The upper half goes first.
    out.U8(type.size);
    if (type.size == 8) out.U32(amount >> 32);
    out.U32(amount & 0xFFFFFFFF);
}

void WriteDateTime(ByteWriter& out, const WireType& type, const Cell& cell) {
    const Moment moment = MomentOf(cell);
    const std::int64_t day = moment.day - kDay1900;
    out.U8(type.size);
    if (type.size == 4) {
        constexpr std::int64_t kTicksOfMinute = 60 * kTicksOfSecond;
        out.U16(static_cast<std::uint64_t>(day)).U16(static_cast<std::uint64_t>(moment.ticks / kTicksOfMinute));
        return;
    }
    const std::int64_t thirds = (moment.ticks * 300 + kTicksOfSecond / 2) / kTicksOfSecond;
    out.U32(static_cast<std::uint64_t>(day)).U32(static_cast<std::uint64_t>(thirds));
}

unsigned TimeSize(std::uint8_t scale) {
    return scale <= 2 ? 3 : scale <= 4 ? 4 : 5;
}

std::uint64_t ScaledTime(const Moment& moment, std::uint8_t scale) {
    std::int64_t unit = 1;
    for (unsigned i = scale; i < 7; ++i)
        unit *= 10;
    return static_cast<std::uint64_t>(moment.ticks / unit);
}

/// Every text and binary as it is on the wire, without what counts it.
std::string Content(const WireType& type, const Cell& cell) {
    std::string text = TextOf(cell);
    switch (type.token) {
        case Token::NVarChar:
        case Token::NChar:
        case Token::NText:
            return Utf8ToUtf16(text);
        case Token::VarChar:
        case Token::Char:
        case Token::Text:
            return Utf8ToCp936(text);
        default:
            return text;
    }
}

void WriteCounted(ByteWriter& out, const WireType& type, const Cell& cell) {
    std::string content = Content(type, cell);
    if (type.size == kMax) {
        out.U64(content.size());
        if (!content.empty()) out.U32(content.size()).Raw(content);
        out.U32(0);
        return;
    }
    if (content.size() > type.size) throw TruncationError();
    if (type.token == Token::Char) content.resize(type.size, ' ');
    if (type.token == Token::Binary) content.resize(type.size, '\0');
    while (type.token == Token::NChar && content.size() < type.size)
        content += {' ', '\0'};
    out.U16(content.size()).Raw(content);
}

void WriteLarge(ByteWriter& out, const WireType& type, const Cell& cell) {
    const std::string content = Content(type, cell);
    constexpr unsigned kPointerSize = 16;
    constexpr unsigned kStampSize = 8;
    out.U8(kPointerSize).Raw(std::string(kPointerSize + kStampSize, '\1')).U32(content.size()).Raw(content);
}

/// "6F9619FF-8B86-D011-B42D-00C04FC964FF": the first three groups travel with their least byte first.
void WriteGuid(ByteWriter& out, const Cell& cell) {
    std::string digits = TextOf(cell);
    std::erase_if(digits, [](char c) { return c == '-' || c == '{' || c == '}'; });
    constexpr std::size_t kDigits = 32;
    if (digits.size() != kDigits || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        throw ConversionError();
    }
    out.U8(kDigits / 2);
    for (const std::size_t place : {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15})
        out.U8(std::stoul(digits.substr(2 * place, 2), nullptr, 16));
}

void WriteNull(ByteWriter& out, const WireType& type) {
    switch (type.token) {
        case Token::VarBinary:
        case Token::VarChar:
        case Token::Binary:
        case Token::Char:
        case Token::NVarChar:
        case Token::NChar:
            if (type.size == kMax) {
                out.U64(~std::uint64_t{0});
            } else {
                out.U16(0xFFFF);
            }
            break;
        default:
            out.U8(0);
    }
}

}  // namespace

void WriteCell(ByteWriter& out, const WireType& type, const Cell& cell) {
    if (IsNull(cell)) return WriteNull(out, type);
    switch (type.token) {
        case Token::Integer:
            out.U8(type.size).Number(static_cast<std::uint64_t>(IntegerOf(cell, type.size)), type.size);
            break;
        case Token::Bit:
            out.U8(1).U8(RealOf(cell) != 0 ? 1 : 0);
            break;
        case Token::Float:
            out.U8(type.size);
            if (type.size == 4) {
                out.U32(std::bit_cast<std::uint32_t>(static_cast<float>(RealOf(cell))));
            } else {
                out.U64(std::bit_cast<std::uint64_t>(RealOf(cell)));
            }
            break;
        case Token::Decimal:
        case Token::Numeric:
            WriteDecimal(out, type, cell);
            break;
        case Token::Money:
            WriteMoney(out, type, cell);
            break;
        case Token::DateTime:
            WriteDateTime(out, type, cell);
            break;
        case Token::Date:
            out.U8(3).Number(static_cast<std::uint64_t>(MomentOf(cell).day), 3);
            break;
        case Token::Time:
            out.U8(TimeSize(type.scale)).Number(ScaledTime(MomentOf(cell), type.scale), TimeSize(type.scale));
            break;
        case Token::DateTime2: {
            const Moment moment = MomentOf(cell);
            out.U8(TimeSize(type.scale) + 3).Number(ScaledTime(moment, type.scale), TimeSize(type.scale));
            out.Number(static_cast<std::uint64_t>(moment.day), 3);
            break;
        }
        case Token::Guid:
            WriteGuid(out, cell);
            break;
        case Token::Image:
        case Token::Text:
        case Token::NText:
            WriteLarge(out, type, cell);
            break;
        case Token::VarBinary:
        case Token::VarChar:
        case Token::Binary:
        case Token::Char:
        case Token::NVarChar:
        case Token::NChar:
            WriteCounted(out, type, cell);
            break;
    }
}

}  // namespace tk::test::tds
