// tests/support/tds/declared_type.h - what the declared type of a SQLite column is to such a server.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/tds/wire_type.h"

namespace tk::test::tds {

/// One row for each name of a type.
struct TypeName {
    std::string_view name;
    Token token;
    std::uint32_t wireSize;       // bytes; 0: by the declared length
    std::uint32_t defaultLength;  // of texts and binaries without one; the precision of numbers
    std::uint8_t unit;            // bytes of a character or byte
    std::int16_t odbcType;
    std::uint8_t serverType;
    const char* prefix;     // of a literal
    const char* arguments;  // of a declaration
};

struct DeclaredType {
    const TypeName* name;
    std::uint32_t length = 0;  // characters, or the precision of a decimal; kMax without limit
    std::uint8_t scale = 0;

    WireType Wire() const;
    bool IsText() const;
    bool IsBinary() const;
    bool IsDecimal() const;
    bool IsMoment() const;
    std::uint32_t Precision() const;
    std::uint32_t Bytes() const;
    int Scale() const;  // -1: has none
    int Radix() const;  // 0: has none
};

/// A name that is not in the list is an nvarchar(4000); the length kMax stands for "max".
DeclaredType ReadDeclaredType(std::string_view declaration);

std::span<const TypeName> AllTypeNames();

}  // namespace tk::test::tds
