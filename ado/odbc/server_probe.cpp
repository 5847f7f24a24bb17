#include "ado/odbc/server_probe.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

namespace tk::ado {

ServerProbe::ServerProbe(int connected, std::string_view question) noexcept : question_(question) {
    sockaddr_storage server;
    socklen_t size = sizeof server;
    auto* const address = reinterpret_cast<sockaddr*>(&server);
    if (getpeername(connected, address, &size) != 0) {
        state_ = State::Alive;  // the connection is over: whoever waits for it is about to find out
        return;
    }
    socket_ = system::FileDescriptor(socket(server.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (connect(socket_.Get(), address, size) != 0 && errno != EINPROGRESS) Fail(errno);
}

ServerProbe::State ServerProbe::Fail(int error) noexcept {
    switch (error) {
        case ECONNREFUSED:  // its machine answers
        case ECONNRESET:
        case EPIPE:
        case EMFILE:  // this one cannot ask: nothing is known
        case ENFILE:
        case ENOBUFS:
        case ENOMEM:
        case EBADF:
        case EAGAIN:
        case EADDRNOTAVAIL:
        case EACCES:
        case EPERM:
        case EAFNOSUPPORT:
        case EPROTONOSUPPORT:
            return state_ = State::Alive;
        default:
            return state_ = State::Silent;
    }
}

ServerProbe::State ServerProbe::Ask() noexcept {
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(socket_.Get(), SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0) return Fail(error);
    isAsked_ = true;
    // A few bytes: a connection that has just been made takes them.
    if (!question_.empty() && send(socket_.Get(), question_.data(), question_.size(), MSG_NOSIGNAL) < 0) {
        return Fail(errno);
    }
    return state_;
}

ServerProbe::State ServerProbe::Look() noexcept {
    if (state_ != State::Waiting) return state_;
    pollfd polled{socket_.Get(), static_cast<short>(isAsked_ ? POLLIN : POLLOUT), 0};
    if (poll(&polled, 1, 0) <= 0) return state_;
    if (!isAsked_) return Ask();
    char byte = 0;
    const ssize_t got = recv(socket_.Get(), &byte, sizeof byte, MSG_DONTWAIT);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) return state_;
    return got < 0 ? Fail(errno) : state_ = State::Alive;
}

}  // namespace tk::ado
