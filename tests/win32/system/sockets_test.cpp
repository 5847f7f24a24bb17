#include <winsock2.h>

#include "tests/win32/system/support.h"

TEST(Sockets, StartInTheVersionAskedFor) {
    static const struct {
        WORD asked;
        int result;
        WORD version;
    } kRows[] = {
        {0x0001, 0, 0x0001}, {0x0101, 0, 0x0101}, {0x0002, 0, 0x0002}, {0x0102, 0, 0x0102},
        {0x0202, 0, 0x0202}, {0x0302, 0, 0x0202}, {0x0003, 0, 0x0202}, {0x0100, 10092, 0},
    };
    for (const auto& row : kRows) {
        WSADATA data{};
        EXPECT_EQ(WSAStartup(row.asked, &data), row.result) << row.asked;
        EXPECT_EQ(data.wVersion, row.version) << row.asked;
        if (row.result == 0) {
            EXPECT_EQ(data.wHighVersion, 0x0202);
            EXPECT_EQ(WSACleanup(), 0);
        }
    }
    EXPECT_EQ(WSAStartup(0x0202, nullptr), 10014);
}

TEST(Sockets, EndAsOftenAsTheyStarted) {
    WSADATA data;
    EXPECT_EQ(WSAStartup(0x0202, &data), 0);
    EXPECT_EQ(WSAStartup(0x0202, &data), 0);
    EXPECT_EQ(WSACleanup(), 0);
    EXPECT_EQ(WSACleanup(), 0);
    EXPECT_EQ(WSACleanup(), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), 10093);
}

TEST(Sockets, TellTheirErrorsInThePlatformsNumbers) {
    char byte = 0;
    EXPECT_EQ(recv(-1, &byte, 1, 0), -1);
    EXPECT_EQ(WSAGetLastError(), 10038);
    const SOCKET listener = ::socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_NE(listener, INVALID_SOCKET);
    SOCKADDR_IN address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(bind(listener, reinterpret_cast<SOCKADDR*>(&address), sizeof address), 0);
    socklen_t size = sizeof address;
    getsockname(listener, reinterpret_cast<SOCKADDR*>(&address), &size);
    const SOCKET client = ::socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(connect(client, reinterpret_cast<SOCKADDR*>(&address), sizeof address), -1) << "nobody listens";
    EXPECT_EQ(WSAGetLastError(), 10061);
    ULONG yes = 1;
    EXPECT_EQ(ioctlsocket(listener, FIONBIO, &yes), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    EXPECT_EQ(accept(listener, nullptr, nullptr), -1);
    EXPECT_EQ(WSAGetLastError(), 10035);
    EXPECT_EQ(ioctlsocket(listener, FIONBIO, nullptr), SOCKET_ERROR);
    EXPECT_EQ(closesocket(client), 0);
    EXPECT_EQ(closesocket(listener), 0);
    EXPECT_EQ(closesocket(listener), SOCKET_ERROR);
    WSASetLastError(11001);
    EXPECT_EQ(WSAGetLastError(), 11001);
    WSASetLastError(0);
    EXPECT_EQ(WSAGetLastError(), 0);
}
