// Connecting from many threads with a driver that sets the locale of the process and reads its name afterwards.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

#include "session_test.h"
#include "support/postgres_server.h"

namespace {

std::atomic<int> setting = 0;
std::atomic<int> calls = 0;
std::atomic<int> overlaps = 0;

}  // namespace

/// In the place of the C library's, which frees the name that it gave before.
extern "C" __attribute__((visibility("default"))) char* setlocale(int category, const char* name) noexcept {
    using Function = char* (*)(int, const char*);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "setlocale"));
    ++calls;
    if (setting.fetch_add(1) != 0) ++overlaps;
    char* const result = real(category, name);
    usleep(2000);  // the name is read
    --setting;
    return result;
}

namespace tk::ado::test {
namespace {

TEST(ConnectTurn, IsKeptByManyThreadsAtOnce) {
    tk::test::PostgresServer server;
    const std::u16string text = ToUtf16(server.ConnectionString() + ";OLE DB Services=-2");
    calls = overlaps = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 5; ++n) {
                const Object object = Object::Create(kConnectionClass);
                const Outcome outcome = object.Call(connection::kOpen, {Text(text)});
                EXPECT_TRUE(outcome.Ok()) << outcome;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GE(calls, 20) << "the driver sets no locale any more: nothing has to be kept";
    EXPECT_EQ(overlaps, 0);
}

TEST(ConnectTurn, OfOneWhoseServerDoesNotAnswerIsTakenOver) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    tk::test::PostgresServer server;

    const std::string silent =
        "Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=" + std::to_string(ntohs(address.sin_port));
    std::atomic<bool> isDone = false;
    std::thread waiting([&] {
        const Object object = Object::Create(kConnectionClass);
        EXPECT_FALSE(object.Call(connection::kOpen, {Text(ToUtf16(silent + ";Connect Timeout=300"))}).Ok());
        isDone = true;
    });
    const int accepted = accept(listener, nullptr, nullptr);
    EXPECT_GE(accepted, 0);
    for (int i = 0; i < 3; ++i) {
        const Object object = Object::Create(kConnectionClass);
        const Outcome outcome = object.Call(connection::kOpen, {Text(ToUtf16(server.ConnectionString()))});
        EXPECT_TRUE(outcome.Ok()) << outcome;
    }
    EXPECT_FALSE(isDone);
    close(listener);
    close(accepted);
    waiting.join();
}

}  // namespace
}  // namespace tk::ado::test
