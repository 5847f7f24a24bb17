#include <errno.h>

#include <atomic>
#include <cstring>

#include "winsock2.h"

namespace {

constexpr WORD kHighestVersion = MAKEWORD(2, 2);

constexpr struct {
    int error;
    int code;
} kCodes[] = {
    {EINTR, WSAEINTR},
    {EBADF, WSAENOTSOCK},  // a closed socket is none
    {EACCES, WSAEACCES},
    {EPERM, WSAEACCES},
    {EFAULT, WSAEFAULT},
    {EINVAL, WSAEINVAL},
    {EMFILE, WSAEMFILE},
    {ENFILE, WSAEMFILE},
    {EWOULDBLOCK, WSAEWOULDBLOCK},
    {EINPROGRESS, WSAEWOULDBLOCK},  // a connect that goes on
    {EALREADY, WSAEALREADY},
    {ENOTSOCK, WSAENOTSOCK},
    {EDESTADDRREQ, WSAEDESTADDRREQ},
    {EMSGSIZE, WSAEMSGSIZE},
    {EPROTOTYPE, WSAEPROTOTYPE},
    {ENOPROTOOPT, WSAENOPROTOOPT},
    {EPROTONOSUPPORT, WSAEPROTONOSUPPORT},
    {ESOCKTNOSUPPORT, WSAESOCKTNOSUPPORT},
    {EOPNOTSUPP, WSAEOPNOTSUPP},
    {EPFNOSUPPORT, WSAEPFNOSUPPORT},
    {EAFNOSUPPORT, WSAEAFNOSUPPORT},
    {EADDRINUSE, WSAEADDRINUSE},
    {EADDRNOTAVAIL, WSAEADDRNOTAVAIL},
    {ENETDOWN, WSAENETDOWN},
    {ENETUNREACH, WSAENETUNREACH},
    {ENETRESET, WSAENETRESET},
    {ECONNABORTED, WSAECONNABORTED},
    {ECONNRESET, WSAECONNRESET},
    {EPIPE, WSAESHUTDOWN},
    {ENOBUFS, WSAENOBUFS},
    {ENOMEM, WSAENOBUFS},
    {EISCONN, WSAEISCONN},
    {ENOTCONN, WSAENOTCONN},
    {ESHUTDOWN, WSAESHUTDOWN},
    {ETIMEDOUT, WSAETIMEDOUT},
    {ECONNREFUSED, WSAECONNREFUSED},
    {ELOOP, WSAELOOP},
    {ENAMETOOLONG, WSAENAMETOOLONG},
    {EHOSTDOWN, WSAEHOSTDOWN},
    {EHOSTUNREACH, WSAEHOSTUNREACH},
};

constinit std::atomic<int> started = 0;

}  // namespace

int WSAStartup(WORD wVersionRequested, LPWSADATA lpWSAData) {
    if (lpWSAData == nullptr) return WSAEFAULT;
    if (LOBYTE(wVersionRequested) < 1) return WSAVERNOTSUPPORTED;
    *lpWSAData = {};
    const bool lower =
        LOBYTE(wVersionRequested) < 2 || wVersionRequested == MAKEWORD(2, 0) || wVersionRequested == MAKEWORD(2, 1);
    lpWSAData->wVersion = lower ? wVersionRequested : kHighestVersion;
    lpWSAData->wHighVersion = kHighestVersion;
    std::strcpy(lpWSAData->szDescription, "POSIX sockets");
    std::strcpy(lpWSAData->szSystemStatus, "Running");
    started.fetch_add(1);
    return 0;
}

int WSACleanup() {
    int count = started.load();
    while (count > 0) {
        if (started.compare_exchange_weak(count, count - 1)) return 0;
    }
    WSASetLastError(WSANOTINITIALISED);
    return SOCKET_ERROR;
}

int WSAGetLastError() {
    const int error = errno;
    for (const auto& row : kCodes) {
        if (row.error == error) return row.code;
    }
    return error;  // 0, a code that was set below, or one without a counterpart
}

// The platform's numbers start above every errno value, so one variable holds both.
void WSASetLastError(int iError) {
    errno = iError;
}

int closesocket(SOCKET s) {
    return close(s);
}

int ioctlsocket(SOCKET s, long cmd, ULONG* argp) {
    if (argp == nullptr) {
        errno = EFAULT;
        return SOCKET_ERROR;
    }
    int value = static_cast<int>(*argp);
    const int result = ioctl(s, static_cast<unsigned long>(cmd), &value);
    if (result == 0) *argp = static_cast<ULONG>(value);
    return result == 0 ? 0 : SOCKET_ERROR;
}
