// The server against clients that do not keep to the protocol.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include "ado/odbc/driver_profile.h"
#include "tds_test.h"

namespace tk::ado::test {
namespace {

/// A socket of its own, which gives up after five seconds.
class RawClient {
public:
    explicit RawClient(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        const timeval limit = {5, 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        EXPECT_EQ(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;
    ~RawClient() { close(socket_); }

    void Send(const std::string& bytes) const {
        EXPECT_EQ(send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    void StopSending() const { shutdown(socket_, SHUT_WR); }
    /// All that comes until the other side closes; "still open" when it does not.
    std::string ReadToEnd() const {
        std::string all;
        char room[4096];
        for (;;) {
            const ssize_t got = recv(socket_, room, sizeof room, 0);
            if (got == 0 || (got < 0 && errno == ECONNRESET)) return all;
            if (got < 0) return "still open";
            all.append(room, static_cast<std::size_t>(got));
        }
    }

private:
    int socket_;
};

std::string Packet(int type, const std::string& body, int status = 1, int size = -1) {
    if (size < 0) size = static_cast<int>(body.size()) + 8;
    std::string packet;
    for (const int byte : {type, status, size >> 8, size & 0xFF, 0, 0, 1, 0})
        packet += static_cast<char>(byte);
    return packet + body;
}

TEST(TdsServer, ClosesConnectionsThatAreNotOfItsProtocol) {
    tk::test::TdsServer server;
    const std::string login(94, '\0');
    std::string longText = login;
    longText[0] = 94;
    longText[42] = 127;  // a user of so many characters at the place 0
    const struct {
        const char* label;
        std::string bytes;
    } kRows[] = {
        {"another protocol", "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n"},
        {"an unknown type", Packet(99, "")},
        {"a size below that of the header", Packet(18, "", 1, 3)},
        {"a packet that is not whole", Packet(18, "abc", 1, 100)},
        {"a message that is not whole", Packet(18, "abc", 0)},
        {"a message that changes its type", Packet(18, "abc", 0) + Packet(16, "abc")},
        {"a statement before the login", Packet(1, std::string(30, '\0'))},
        {"an empty login", Packet(16, "")},
        {"a login with another length", Packet(16, login)},
        {"a login with a text outside of it", Packet(16, longText)},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const RawClient client(server.Port());
        client.Send(row.bytes);
        client.StopSending();
        EXPECT_EQ(client.ReadToEnd(), "");
    }
    const Object opened = Object::Create(kConnectionClass);
    EXPECT_TRUE(opened.Call(connection::kOpen, {Text(ToUtf16(server.ConnectionString()))}).Ok());
}

TEST(TdsServer, AnswersTheQuestionForASignOfLife) {
    tk::test::TdsServer server;
    const RawClient client(server.Port());
    client.Send(std::string(*FindProfile("tdsodbc").lifeQuestion));
    client.StopSending();
    const std::string answer = client.ReadToEnd();
    ASSERT_FALSE(answer.empty());
    EXPECT_EQ(answer[0], 4);  // the answer to a login's beginning
}

TEST(TdsServer, EndsWithItsClientsStillThere) {
    const Object opened = Object::Create(kConnectionClass);
    {
        tk::test::TdsServer server;
        ASSERT_TRUE(opened.Call(connection::kOpen, {Text(ToUtf16(server.ConnectionString()))}).Ok());
        const RawClient silent(server.Port());
    }
    EXPECT_FALSE(opened.Call(connection::kExecute, {Text(u"select 1")}).Ok());
}

}  // namespace
}  // namespace tk::ado::test
