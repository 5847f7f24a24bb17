#include "ado/odbc/waiting_socket.h"

#include <fcntl.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cstdio>

namespace tk::ado {
namespace {

using system::FileDescriptor;

/// Calls that wait for a descriptor, and where it stands among their arguments.
struct WaitingCall {
    long number;
    bool isPoll;  // the first argument is an array of pollfd, the second its size; else it is the descriptor
};
constexpr WaitingCall kWaitingCalls[] = {
#ifdef SYS_poll
    {SYS_poll, true},
#endif
    {SYS_ppoll, true},
    {SYS_recvfrom, false},
    {SYS_recvmsg, false},
    {SYS_read, false},
    {SYS_sendto, false},
    {SYS_sendmsg, false},
    {SYS_write, false},
    // A poll that was interrupted, by a debugger or while the machine slept.
    {SYS_restart_syscall, true},
};

bool IsConnected(int descriptor) noexcept {
    sockaddr_storage peer;
    socklen_t size = sizeof peer;
    return getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &size) == 0;
}

/// The first connected socket among those that a poll is for. The array is the waiting thread's: it is read in a way
/// that fails when the thread, and its stack, are gone.
int FindPolled(std::uintptr_t address, std::size_t count) noexcept {
    std::array<pollfd, 8> polled;
    if (count > polled.size()) return -1;  // also what a futex that goes on looks like
    const FileDescriptor memory(open("/proc/self/mem", O_RDONLY | O_CLOEXEC));
    if (!memory) return -1;
    const std::size_t size = count * sizeof(pollfd);
    const ssize_t got = pread(memory.Get(), polled.data(), size, static_cast<off_t>(address));
    if (got != static_cast<ssize_t>(size)) return -1;
    for (std::size_t i = 0; i < count; ++i) {
        if (IsConnected(polled[i].fd)) return polled[i].fd;
    }
    return -1;
}

int FindDescriptor(const char* call) noexcept {
    long number = -1;
    unsigned long first = 0;
    unsigned long second = 0;
    if (std::sscanf(call, "%ld %lx %lx", &number, &first, &second) != 3) return -1;  // "running"
    const auto* const known = std::ranges::find(kWaitingCalls, number, &WaitingCall::number);
    if (known == std::end(kWaitingCalls)) return -1;
    if (known->isPoll) return FindPolled(first, second);
    const int descriptor = static_cast<int>(first);
    return IsConnected(descriptor) ? descriptor : -1;
}

/// What has come on a network connection since it was made; 0 where the system does not count.
std::uint64_t BytesReceived(int socket) noexcept {
    tcp_info info{};
    socklen_t size = sizeof info;
    return getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 ? info.tcpi_bytes_received : 0;
}

}  // namespace

WaitingSocket::WaitingSocket(pid_t thread, const CallText& call, FileDescriptor socket) noexcept
    : thread_(thread), call_(call), socket_(std::move(socket)), received_(BytesReceived(socket_.Get())) {}

WaitingSocket::CallText WaitingSocket::Read(pid_t thread) noexcept {
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/task/%d/syscall", static_cast<int>(thread));
    CallText call;
    const FileDescriptor file(open(path, O_RDONLY | O_CLOEXEC));
    const ssize_t got = file ? read(file.Get(), call.text.data(), call.text.size() - 1) : 0;
    call.size = got > 0 ? static_cast<std::size_t>(got) : 0;
    call.text[call.size] = '\0';
    return call;
}

std::optional<WaitingSocket> WaitingSocket::Find(pid_t thread) noexcept {
    const CallText call = Read(thread);
    const int descriptor = FindDescriptor(call.text.data());
    if (descriptor < 0) return std::nullopt;
    WaitingSocket found(thread, call, FileDescriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 0)));
    if (!found.socket_ || !IsConnected(found.Get()) || !found.IsWaitedFor()) return std::nullopt;
    return found;
}

bool WaitingSocket::IsWaitedFor() const noexcept {
    return Read(thread_).View() == call_.View() && BytesReceived(socket_.Get()) == received_;
}

void WaitingSocket::ShutDown() const noexcept {
    shutdown(socket_.Get(), SHUT_RDWR);
}

}  // namespace tk::ado
