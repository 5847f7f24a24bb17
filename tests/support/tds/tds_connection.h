// tests/support/tds/tds_connection.h - one client: its login, and then message after message.
#pragma once

#include <cstdint>
#include <memory>

#include "support/tds/sql_session.h"

namespace tk::test::tds {

/// Borrows a socket and serves it until the other side is gone, says what is no message, or gives a wrong password.
class TdsConnection {
public:
    TdsConnection(int socket, const ServerSettings& settings) : packets_(socket), settings_(settings) {}

    /// Throws nothing.
    void Serve();

private:
    bool LogIn();
    bool Admit(const Message& message);
    void Talk();
    bool Reply(const Message& message);
    void RunTransaction(std::string_view request, Answer& answer);
    void EndTransaction(bool isCommitted, Answer& answer);
    void BeginTransaction(Answer& answer);

    PacketStream packets_;
    const ServerSettings& settings_;
    std::unique_ptr<SqlSession> session_;
    std::uint64_t transaction_ = 0;
};

}  // namespace tk::test::tds
