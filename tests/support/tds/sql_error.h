// tests/support/tds/sql_error.h - an error as the server tells it.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace tk::test::tds {

struct SqlError : std::exception {
    SqlError(std::int32_t theNumber, std::string theText, std::uint8_t theLevel = 16, std::uint8_t theState = 1)
        : number(theNumber), level(theLevel), state(theState), text(std::move(theText)) {}
    const char* what() const noexcept override { return text.c_str(); }

    std::int32_t number;
    std::uint8_t level;  // the class: from 11 on an error
    std::uint8_t state;
    std::string text;       // UTF-8
    bool endsBatch = true;  // else only its statement
};

/// The client has asked for an end, or is gone.
struct Cancelled {};

}  // namespace tk::test::tds
