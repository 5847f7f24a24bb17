#include "support/tds/declared_type.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace tk::test::tds {
namespace {

constexpr std::uint32_t kLong = 2'147'483'647;

constexpr TypeName kNames[] = {
    // name, token, bytes, length, unit, ODBC, server's own number, literal, declaration
    {"bit", Token::Bit, 1, 1, 0, -7, 50, nullptr, nullptr},
    {"tinyint", Token::Integer, 1, 3, 0, -6, 38, nullptr, nullptr},
    {"smallint", Token::Integer, 2, 5, 0, 5, 38, nullptr, nullptr},
    {"int", Token::Integer, 4, 10, 0, 4, 38, nullptr, nullptr},
    {"integer", Token::Integer, 4, 10, 0, 4, 38, nullptr, nullptr},
    {"bigint", Token::Integer, 8, 19, 0, -5, 108, nullptr, nullptr},
    {"real", Token::Float, 4, 24, 0, 7, 109, nullptr, nullptr},
    {"float", Token::Float, 8, 53, 0, 6, 109, nullptr, nullptr},
    {"double", Token::Float, 8, 53, 0, 6, 109, nullptr, nullptr},
    {"smallmoney", Token::Money, 4, 10, 0, 3, 110, "$", nullptr},
    {"money", Token::Money, 8, 19, 0, 3, 110, "$", nullptr},
    {"decimal", Token::Decimal, 17, 18, 0, 3, 106, nullptr, "precision,scale"},
    {"numeric", Token::Numeric, 17, 18, 0, 2, 108, nullptr, "precision,scale"},
    {"smalldatetime", Token::DateTime, 4, 16, 0, 93, 111, "'", nullptr},
    {"datetime", Token::DateTime, 8, 23, 0, 93, 111, "'", nullptr},
    {"datetime2", Token::DateTime2, 8, 27, 0, 93, 0, "'", "scale"},
    {"date", Token::Date, 3, 10, 0, 91, 0, "'", nullptr},
    {"time", Token::Time, 5, 16, 0, 92, 0, "'", "scale"},
    {"uniqueidentifier", Token::Guid, 16, 36, 0, -11, 37, "'", nullptr},
    {"char", Token::Char, 0, 1, 1, 1, 39, "'", "length"},
    {"varchar", Token::VarChar, 0, 1, 1, 12, 39, "'", "max length"},
    {"text", Token::Text, kLong, kLong, 1, -1, 35, "'", nullptr},
    {"nchar", Token::NChar, 0, 1, 2, -8, 39, "N'", "length"},
    {"nvarchar", Token::NVarChar, 0, 1, 2, -9, 39, "N'", "max length"},
    {"sysname", Token::NVarChar, 0, 128, 2, -9, 39, "N'", nullptr},
    {"ntext", Token::NText, kLong - 1, kLong / 2, 2, -10, 35, "N'", nullptr},
    {"binary", Token::Binary, 0, 1, 1, -2, 37, "0x", "length"},
    {"varbinary", Token::VarBinary, 0, 1, 1, -3, 37, "0x", "max length"},
    {"image", Token::Image, kLong, kLong, 1, -4, 34, "0x", nullptr},
    {"blob", Token::Image, kLong, kLong, 1, -4, 34, "0x", nullptr},
};

std::string Lower(std::string_view text) {
    std::string lower;
    for (const char c : text)
        lower += c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    return lower;
}

/// The next number behind the place; the other value when none is there.
std::uint32_t TakeNumber(std::string_view& text, std::uint32_t other) {
    text.remove_prefix(std::min(text.find_first_not_of(" (,"), text.size()));
    std::uint32_t number = other;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc() ? number : other;
}

constexpr std::uint8_t kFinest = 7;

}  // namespace

DeclaredType ReadDeclaredType(std::string_view declaration) {
    const std::string lower = Lower(declaration);
    const std::string_view name = std::string_view(lower).substr(0, lower.find_first_of(" ("));
    const auto* const known = std::ranges::find(kNames, name, &TypeName::name);
    if (known == std::end(kNames)) return ReadDeclaredType("nvarchar(4000)");
    DeclaredType type{known, known->defaultLength, 0};
    std::string_view rest = std::string_view(lower).substr(name.size());
    if (type.IsDecimal()) {
        type.length = std::clamp<std::uint32_t>(TakeNumber(rest, type.length), 1, 38);
        type.scale = static_cast<std::uint8_t>(std::min(TakeNumber(rest, 0), type.length));
    } else if (known->token == Token::DateTime2 || known->token == Token::Time) {
        type.scale = static_cast<std::uint8_t>(std::min<std::uint32_t>(TakeNumber(rest, kFinest), kFinest));
    } else if (known->wireSize == 0) {
        constexpr std::uint32_t kMostBytes = 8000;
        const std::uint32_t length = TakeNumber(rest, type.length);
        type.length = length == kMax ? kMax : std::clamp<std::uint32_t>(length, 1, kMostBytes / known->unit);
    }
    return type;
}

std::span<const TypeName> AllTypeNames() {
    return kNames;
}

WireType DeclaredType::Wire() const {
    WireType wire{name->token, name->wireSize, 0, scale};
    if (IsDecimal()) wire.precision = static_cast<std::uint8_t>(length);
    if (name->wireSize == 0) wire.size = length == kMax ? kMax : length * name->unit;
    return wire;
}

bool DeclaredType::IsText() const {
    return name->unit != 0 && !IsBinary();
}
bool DeclaredType::IsBinary() const {
    return name->token == Token::Binary || name->token == Token::VarBinary || name->token == Token::Image;
}
bool DeclaredType::IsDecimal() const {
    return name->token == Token::Decimal || name->token == Token::Numeric;
}
bool DeclaredType::IsMoment() const {
    return name->token == Token::DateTime || name->token == Token::DateTime2 || name->token == Token::Date ||
           name->token == Token::Time;
}

std::uint32_t DeclaredType::Precision() const {
    if (name->token == Token::DateTime2) return scale == 0 ? 19 : 20u + scale;
    if (name->token == Token::Time) return scale == 0 ? 8 : 9u + scale;
    // A length without limit is reported as none.
    return length == kMax && name->unit != 0 ? 0 : length;
}

std::uint32_t DeclaredType::Bytes() const {
    if (IsDecimal()) return length + 2;
    if (name->token == Token::Money) return length + 2;
    if (name->token == Token::Date) return 6;
    if (name->token == Token::DateTime || name->token == Token::DateTime2) return 16;
    if (name->wireSize != 0) return name->wireSize;
    return Precision() * name->unit;
}

int DeclaredType::Scale() const {
    if (name->token == Token::Money) return 4;
    if (name->token == Token::DateTime) return name->wireSize == 4 ? 0 : 3;
    const bool hasScale =
        IsDecimal() || name->token == Token::Integer || name->token == Token::DateTime2 || name->token == Token::Time;
    return hasScale ? scale : -1;
}

int DeclaredType::Radix() const {
    if (name->token == Token::Float) return 2;
    return IsDecimal() || name->token == Token::Money || name->token == Token::Integer ? 10 : 0;
}

}  // namespace tk::test::tds
