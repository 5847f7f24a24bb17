// tests/support/tds/cell.h - a value between SQLite and the wire.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace tk::test::tds {

struct Bytes {
    std::string data;
};

/// NULL, a number, a text in UTF-8 (decimals and moments are texts as well), bytes.
using Cell = std::variant<std::monostate, std::int64_t, double, std::string, Bytes>;

inline bool IsNull(const Cell& cell) {
    return std::holds_alternative<std::monostate>(cell);
}

}  // namespace tk::test::tds
