#include "ado/odbc/server_probe.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>

#include "ado/odbc/server_life.h"
#include "ado/odbc/waiting_socket.h"
#include "ado/support/sqlite_file.h"

namespace tk::ado {
namespace {

using system::FileDescriptor;
using State = ServerProbe::State;

constexpr int kSeconds = 10;  // for what comes at once

/// Takes connections, and says what it is told to say.
class Listener {
public:
    explicit Listener(int family = AF_INET) : socket_(socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        if (family == AF_INET) {
            auto& address = reinterpret_cast<sockaddr_in&>(address_);
            address.sin_family = AF_INET;
            address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            size_ = sizeof address;
        } else {
            auto& address = reinterpret_cast<sockaddr_un&>(address_);
            address.sun_family = AF_UNIX;
            const std::string path = (folder_.Path() / "s").string();
            path.copy(address.sun_path, sizeof address.sun_path - 1);
            size_ = sizeof address;
        }
        EXPECT_EQ(bind(socket_.Get(), Address(), size_), 0);
        EXPECT_EQ(listen(socket_.Get(), 5), 0);
        if (family == AF_INET) getsockname(socket_.Get(), Address(), &size_);
    }

    FileDescriptor Connect() {
        FileDescriptor client(socket(address_.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(connect(client.Get(), Address(), size_), 0);
        return client;
    }
    FileDescriptor Accept() const { return FileDescriptor(accept(socket_.Get(), nullptr, nullptr)); }
    void Close() { socket_ = FileDescriptor(); }

    /// Takes the connections that wait, and closes them.
    int Pending() const {
        int count = 0;
        for (pollfd polled{socket_.Get(), POLLIN, 0}; poll(&polled, 1, 0) == 1; ++count)
            Accept();
        return count;
    }

private:
    sockaddr* Address() { return reinterpret_cast<sockaddr*>(&address_); }

    test::TemporaryFolder folder_;
    FileDescriptor socket_;
    sockaddr_storage address_{};
    socklen_t size_ = 0;
};

State LookUntil(ServerProbe& probe, State wanted) {
    State state = State::Waiting;
    for (int i = 0; i < kSeconds * 100; ++i) {
        state = probe.Look();
        if (state == wanted) break;
        usleep(10'000);
    }
    return state;
}

TEST(ServerProbe, KnowsAServerByTheFirstByteItSends) {
    for (const int family : {AF_INET, AF_UNIX}) {
        SCOPED_TRACE(family);
        Listener server(family);
        const FileDescriptor client = server.Connect();
        const FileDescriptor first = server.Accept();
        for (const std::string_view question : {std::string_view("ask\0me", 6), std::string_view()}) {
            ServerProbe probe(client.Get(), question);
            const FileDescriptor asked = server.Accept();
            for (int i = 0; i < 20; ++i) {
                EXPECT_EQ(probe.Look(), State::Waiting);
                usleep(1000);
            }
            char got[16] = {};
            EXPECT_EQ(recv(asked.Get(), got, sizeof got, MSG_DONTWAIT),
                      question.empty() ? -1 : static_cast<ssize_t>(question.size()));
            EXPECT_EQ(std::string_view(got, question.size()), question);
            EXPECT_EQ(send(asked.Get(), "!", 1, MSG_NOSIGNAL), 1);
            EXPECT_EQ(LookUntil(probe, State::Alive), State::Alive);
        }
    }
}

TEST(ServerProbe, WaitsForAServerThatOnlyItsSystemAnswersFor) {
    Listener server;
    const FileDescriptor client = server.Connect();
    ServerProbe probe(client.Get(), "ask");
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(probe.Look(), State::Waiting);
        usleep(2000);
    }
}

TEST(ServerProbe, TakesARefusalForLife) {
    Listener server;
    const FileDescriptor client = server.Connect();
    const FileDescriptor accepted = server.Accept();
    server.Close();
    ServerProbe refused(client.Get(), "ask");
    EXPECT_EQ(LookUntil(refused, State::Alive), State::Alive);
    // A connection that is over needs no question.
    const FileDescriptor unconnected(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ServerProbe over(unconnected.Get(), "ask");
    EXPECT_EQ(over.Look(), State::Alive);
}

TEST(ServerProbe, TakesTheEndOfItsConnectionForLife) {
    Listener server;
    const FileDescriptor client = server.Connect();
    const FileDescriptor first = server.Accept();
    ServerProbe probe(client.Get(), {});
    { const FileDescriptor asked = server.Accept(); }
    EXPECT_EQ(LookUntil(probe, State::Alive), State::Alive);
}

constexpr int kPatience = 100;

TEST(ServerLife, AsksOnceForAllWhoWait) {
    Listener server;
    const FileDescriptor first = server.Connect();
    const FileDescriptor second = server.Connect();
    const FileDescriptor peers[] = {server.Accept(), server.Accept()};
    EXPECT_EQ(&ServerLife::Of(first.Get()), &ServerLife::Of(second.Get()));
    ServerLife& life = ServerLife::Of(first.Get());
    const auto look = [&](const FileDescriptor& by) { return life.Look(by.Get(), "ask", kPatience); };
    // Two questions without an answer, however many look.
    ServerLife::Verdict verdict = look(first);
    EXPECT_EQ(verdict, ServerLife::Verdict::Unknown);
    int looks = 0;
    for (; verdict == ServerLife::Verdict::Unknown && looks < kSeconds * 100; ++looks) {
        usleep(10'000);
        verdict = look(looks % 2 == 0 ? second : first);
    }
    EXPECT_EQ(verdict, ServerLife::Verdict::Silent);
    EXPECT_GE(looks, 15);
    EXPECT_EQ(look(second), ServerLife::Verdict::Silent);
    EXPECT_EQ(server.Pending(), 2);
    // It is asked again later, and answers.
    usleep(150'000);
    EXPECT_EQ(look(first), ServerLife::Verdict::Unknown);
    const FileDescriptor asked = server.Accept();
    EXPECT_EQ(send(asked.Get(), "!", 1, MSG_NOSIGNAL), 1);
    for (int i = 0; i < kSeconds * 1000 && look(second) != ServerLife::Verdict::Alive; ++i)
        usleep(1000);
    EXPECT_EQ(look(first), ServerLife::Verdict::Alive);
    EXPECT_EQ(server.Pending(), 0);
}

/// A thread that makes one call and tells its number.
template <class Call>
class Waiting {
public:
    explicit Waiting(Call call)
        : thread_([this, call] {
              number = gettid();
              call();
              isDone = true;
          }) {
        while (number == 0)
            usleep(1000);
    }
    ~Waiting() { thread_.join(); }

    std::optional<WaitingSocket> Find() const {
        std::optional<WaitingSocket> found;
        for (int i = 0; i < kSeconds * 100 && !found; ++i) {
            found = WaitingSocket::Find(number);
            if (!found) usleep(10'000);
        }
        return found;
    }

    std::atomic<pid_t> number = 0;
    std::atomic<bool> isDone = false;

private:
    std::thread thread_;
};

TEST(WaitingSocket, FindsWhatAThreadWaitsFor) {
    Listener server;
    for (const bool isPoll : {true, false}) {
        SCOPED_TRACE(isPoll);
        const FileDescriptor client = server.Connect();
        const FileDescriptor peer = server.Accept();
        Waiting waiting([&] {
            char byte = 0;
            if (isPoll) {
                pollfd polled[2] = {{STDIN_FILENO, 0, 0}, {client.Get(), POLLIN, 0}};
                poll(polled, 2, -1);
            } else {
                recv(client.Get(), &byte, 1, 0);
            }
        });
        const auto found = waiting.Find();
        ASSERT_TRUE(found);
        EXPECT_TRUE(found->IsWaitedFor());
        EXPECT_NE(found->Get(), client.Get());
        EXPECT_FALSE(waiting.isDone);
        found->ShutDown();
        for (int i = 0; i < kSeconds * 100 && !waiting.isDone; ++i)
            usleep(10'000);
        EXPECT_TRUE(waiting.isDone);
        EXPECT_FALSE(found->IsWaitedFor());
        char byte = 0;
        EXPECT_EQ(recv(peer.Get(), &byte, 1, 0), 0);  // the other side hears of it
    }
}

TEST(WaitingSocket, FindsAPollThatWasInterrupted) {
    Listener server;
    const FileDescriptor client = server.Connect();
    const FileDescriptor peer = server.Accept();
    Waiting waiting([&] {
        pollfd polled{client.Get(), POLLIN, 0};
        poll(&polled, 1, -1);
    });
    ASSERT_TRUE(waiting.Find());
    const pid_t self = getpid();
    const pid_t child = fork();
    if (child == 0) {
        kill(self, SIGSTOP);
        usleep(100'000);
        kill(self, SIGCONT);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    const auto found = waiting.Find();
    EXPECT_TRUE(found);
    EXPECT_EQ(send(peer.Get(), "x", 1, MSG_NOSIGNAL), 1);
}

TEST(WaitingSocket, NoticesWhatComesToAPollThatLooksTheSame) {
    Listener server;
    const FileDescriptor client = server.Connect();
    const FileDescriptor peer = server.Accept();
    Waiting waiting([&] {
        for (char byte = 0; byte != '!';) {
            pollfd polled{client.Get(), POLLIN, 0};
            poll(&polled, 1, -1);
            recv(client.Get(), &byte, 1, 0);
        }
    });
    const auto found = waiting.Find();
    ASSERT_TRUE(found);
    EXPECT_TRUE(found->IsWaitedFor());
    EXPECT_EQ(send(peer.Get(), "x", 1, MSG_NOSIGNAL), 1);
    usleep(50'000);  // it waits again, in the same way
    EXPECT_FALSE(found->IsWaitedFor());
    EXPECT_EQ(send(peer.Get(), "!", 1, MSG_NOSIGNAL), 1);
}

TEST(WaitingSocket, FindsNothingElse) {
    EXPECT_FALSE(WaitingSocket::Find(gettid()));  // it runs
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    {
        Waiting waiting([&] {
            char byte = 0;
            EXPECT_EQ(read(ends[0], &byte, 1), 1);
        });
        for (int i = 0; i < 20; ++i) {
            EXPECT_FALSE(WaitingSocket::Find(waiting.number));
            usleep(5000);
        }
        EXPECT_EQ(write(ends[1], "x", 1), 1);
    }
    close(ends[0]);
    close(ends[1]);
    EXPECT_FALSE(WaitingSocket::Find(1 << 30));
}

TEST(WaitingSocket, NoticesThatTheThreadHasGoneOn) {
    Listener server;
    const FileDescriptor client = server.Connect();
    const FileDescriptor peer = server.Accept();
    std::atomic<bool> isOver = false;
    Waiting waiting([&] {
        char byte = 0;
        recv(client.Get(), &byte, 1, 0);
        while (!isOver)
            usleep(1000);
    });
    const auto found = waiting.Find();
    ASSERT_TRUE(found);
    EXPECT_EQ(send(peer.Get(), "x", 1, MSG_NOSIGNAL), 1);
    for (int i = 0; i < kSeconds * 100 && found->IsWaitedFor(); ++i)
        usleep(10'000);
    EXPECT_FALSE(found->IsWaitedFor());
    isOver = true;
}

}  // namespace
}  // namespace tk::ado
