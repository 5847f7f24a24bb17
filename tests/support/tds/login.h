// tests/support/tds/login.h - the two messages that a connection begins with.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tk::test::tds {

/// The answer to a pre-login: no encryption, one statement at a time.
std::string PreLoginAnswer();

struct Login {
    std::uint32_t packetSize = 0;
    std::string user;
    std::string password;
    std::string database;
};

/// @throws ProtocolError when a place lies outside the message
Login ReadLogin(std::string_view message);

}  // namespace tk::test::tds
