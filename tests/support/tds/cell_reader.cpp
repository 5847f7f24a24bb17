// Values as they come, in the parameters of calls.
#include <array>
#include <bit>
#include <cstdio>

#include "support/tds/decimal_digits.h"
#include "support/tds/moment.h"
#include "support/tds/wire_type.h"

namespace tk::test::tds {
namespace {

constexpr std::size_t kLongestValue = 32 * 1024 * 1024;

Cell FromContent(Token token, std::string_view content) {
    switch (token) {
        case Token::NVarChar:
        case Token::NChar:
        case Token::NText:
            return Utf16ToUtf8(content);
        case Token::VarChar:
        case Token::Char:
        case Token::Text:
            return Cp936ToUtf8(content);
        default:
            return Bytes{std::string(content)};
    }
}

/// A value in pieces, up to one of no length.
Cell ReadPieces(ByteReader& in, Token token) {
    if (in.U64() == ~std::uint64_t{0}) return {};
    std::string content;
    while (const std::uint32_t size = in.U32()) {
        content += in.Bytes(size);
        if (content.size() > kLongestValue) throw ProtocolError("a value is too long");
    }
    return FromContent(token, content);
}

Cell ReadDecimal(std::string_view bytes, unsigned scale) {
    ByteReader in(bytes);
    const bool isNegative = in.U8() == 0;
    constexpr std::size_t kMostBytes = 16;
    constexpr unsigned kMostDecimals = 38;
    if (bytes.size() > kMostBytes + 1 || scale > kMostDecimals) throw ProtocolError("no decimal");
    return DecimalText(isNegative, bytes.substr(1), scale);
}

Cell ReadMoney(std::string_view bytes) {
    ByteReader in(bytes);
    std::int64_t amount = 0;
    if (bytes.size() == 8) {
        amount = in.Signed(4) * 0x1'0000'0000;
        amount += in.U32();
    } else {
        amount = in.Signed(4);
    }
    const std::uint64_t magnitude =
        amount < 0 ? 0 - static_cast<std::uint64_t>(amount) : static_cast<std::uint64_t>(amount);
    ByteWriter digits;
    digits.U64(magnitude);
    return DecimalText(amount < 0, digits.Bytes(), 4);
}

void ExpectMoment(const Moment& moment) {
    constexpr std::int64_t kLastDay = 3'652'058;  // 9999-12-31
    if (moment.day < 0 || moment.day > kLastDay || moment.ticks < 0 || moment.ticks >= kTicksOfDay) {
        throw ProtocolError("no moment");
    }
}

Cell ReadDateTime(std::string_view bytes) {
    ByteReader in(bytes);
    Moment moment;
    if (bytes.size() == 4) {
        moment.day = kDay1900 + in.U16();
        moment.ticks = in.U16() * 60 * kTicksOfSecond;
    } else {
        moment.day = kDay1900 + in.Signed(4);
        // Three hundredths of a second stand for milliseconds: 1 is .003, 2 is .007.
        const std::int64_t milliseconds = (std::int64_t{in.U32()} * 10 + 1) / 3;
        moment.ticks = milliseconds * (kTicksOfSecond / 1000);
    }
    ExpectMoment(moment);
    return FormatMoment(moment, MomentForm::Both);
}

Cell ReadScaledMoment(std::string_view bytes, Token token, unsigned scale) {
    ByteReader in(bytes);
    Moment moment;
    if (token != Token::Date) {
        const std::size_t size = bytes.size() - (token == Token::DateTime2 ? 3 : 0);
        if (size < 3 || size > 5) throw ProtocolError("no time");
        moment.ticks = static_cast<std::int64_t>(in.Number(static_cast<unsigned>(size)));
        for (; scale < 7; ++scale)
            moment.ticks *= 10;
    }
    if (token != Token::Time) moment.day = static_cast<std::int64_t>(in.Number(3));
    ExpectMoment(moment);
    return FormatMoment(moment, token == Token::Date   ? MomentForm::Date
                                : token == Token::Time ? MomentForm::Time
                                                       : MomentForm::Both);
}

Cell ReadFloat(std::string_view bytes) {
    ByteReader in(bytes);
    if (bytes.size() == 4) return static_cast<double>(std::bit_cast<float>(in.U32()));
    return std::bit_cast<double>(in.U64());
}

Cell ReadGuid(std::string_view bytes) {
    std::string text;
    for (const int place : {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15}) {
        if (place < 0) {
            text += '-';
            continue;
        }
        if (static_cast<std::size_t>(place) >= bytes.size()) throw ProtocolError("no identifier");
        std::array<char, 4> room;
        std::snprintf(room.data(), room.size(), "%02X",
                      static_cast<unsigned char>(bytes[static_cast<std::size_t>(place)]));
        text += room.data();
    }
    return text;
}

/// @param bytes  not empty
Cell ReadSmall(const WireType& type, std::string_view bytes) {
    switch (type.token) {
        case Token::Integer: {
            ByteReader in(bytes);
            if (bytes.size() > 8) throw ProtocolError("no integer");
            return bytes.size() == 1 ? std::int64_t{in.U8()} : in.Signed(static_cast<unsigned>(bytes.size()));
        }
        case Token::Bit:
            return std::int64_t{bytes[0] != 0 ? 1 : 0};
        case Token::Float:
            return ReadFloat(bytes);
        case Token::Decimal:
        case Token::Numeric:
            return ReadDecimal(bytes, type.scale);
        case Token::Money:
            return ReadMoney(bytes);
        case Token::DateTime:
            return ReadDateTime(bytes);
        case Token::Date:
        case Token::Time:
        case Token::DateTime2:
            return ReadScaledMoment(bytes, type.token, type.scale);
        default:
            return ReadGuid(bytes);
    }
}

}  // namespace

Cell ReadCell(ByteReader& in, const WireType& type) {
    switch (type.token) {
        case Token::VarBinary:
        case Token::VarChar:
        case Token::Binary:
        case Token::Char:
        case Token::NVarChar:
        case Token::NChar: {
            if (type.size == kMax) return ReadPieces(in, type.token);
            const std::uint16_t size = in.U16();
            if (size == 0xFFFF) return {};
            return FromContent(type.token, in.Bytes(size));
        }
        case Token::Image:
        case Token::Text:
        case Token::NText: {
            const std::uint32_t size = in.U32();
            if (size == 0xFFFFFFFF) return {};
            return FromContent(type.token, in.Bytes(size));
        }
        default: {
            const std::uint8_t size = in.U8();
            if (size == 0) return {};
            return ReadSmall(type, in.Bytes(size));
        }
    }
}

}  // namespace tk::test::tds
