// winsock2.h - start-up and errors of the network functions, over the POSIX ones, which keep their own names.
// gethostbyname and gethostbyaddr are ours, because the POSIX ones share one answer among all threads and wait as long
// as they like (tkwin32/resolver.h).
//
//   WSADATA data;
//   if (WSAStartup(MAKEWORD(2, 2), &data) != 0) return;
//   SOCKET socket = ::socket(AF_INET, SOCK_STREAM, 0);
//   WSACleanup();
#pragma once

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "windef.h"

using SOCKET = int;
#define INVALID_SOCKET (-1)
#define SOCKET_ERROR (-1)

using SOCKADDR = sockaddr;
using SOCKADDR_IN = sockaddr_in;
using IN_ADDR = in_addr;
using HOSTENT = hostent;
using LPHOSTENT = hostent*;

#define WSADESCRIPTION_LEN 256
#define WSASYS_STATUS_LEN 128

struct WSAData {
    WORD wVersion;      // the version that will be used
    WORD wHighVersion;  // 2.2
    USHORT iMaxSockets;
    USHORT iMaxUdpDg;
    char* lpVendorInfo;
    char szDescription[WSADESCRIPTION_LEN + 1];
    char szSystemStatus[WSASYS_STATUS_LEN + 1];
};
using WSADATA = WSAData;
using LPWSADATA = WSAData*;

#define WSAEINTR 10004
#define WSAEBADF 10009
#define WSAEACCES 10013
#define WSAEFAULT 10014
#define WSAEINVAL 10022
#define WSAEMFILE 10024
#define WSAEWOULDBLOCK 10035
#define WSAEINPROGRESS 10036
#define WSAEALREADY 10037
#define WSAENOTSOCK 10038
#define WSAEDESTADDRREQ 10039
#define WSAEMSGSIZE 10040
#define WSAEPROTOTYPE 10041
#define WSAENOPROTOOPT 10042
#define WSAEPROTONOSUPPORT 10043
#define WSAESOCKTNOSUPPORT 10044
#define WSAEOPNOTSUPP 10045
#define WSAEPFNOSUPPORT 10046
#define WSAEAFNOSUPPORT 10047
#define WSAEADDRINUSE 10048
#define WSAEADDRNOTAVAIL 10049
#define WSAENETDOWN 10050
#define WSAENETUNREACH 10051
#define WSAENETRESET 10052
#define WSAECONNABORTED 10053
#define WSAECONNRESET 10054
#define WSAENOBUFS 10055
#define WSAEISCONN 10056
#define WSAENOTCONN 10057
#define WSAESHUTDOWN 10058
#define WSAETIMEDOUT 10060
#define WSAECONNREFUSED 10061
#define WSAELOOP 10062
#define WSAENAMETOOLONG 10063
#define WSAEHOSTDOWN 10064
#define WSAEHOSTUNREACH 10065
#define WSAVERNOTSUPPORTED 10092
#define WSANOTINITIALISED 10093
#define WSAHOST_NOT_FOUND 11001
#define WSATRY_AGAIN 11002
#define WSANO_RECOVERY 11003
#define WSANO_DATA 11004

/// Counted; the POSIX functions work without it.
/// @param wVersionRequested  low byte major, high byte minor; 1.0 to 2.2, a higher one gets 2.2
/// @return 0, WSAVERNOTSUPPORTED below 1.0, WSAEFAULT without a record
EXTERN_C TKWIN32_API int WSAStartup(WORD wVersionRequested, LPWSADATA lpWSAData);
/// @return 0; SOCKET_ERROR with WSANOTINITIALISED when there is nothing to end
EXTERN_C TKWIN32_API int WSACleanup();
/// What the last network function that failed on this thread left in errno, in the platform's numbers.
EXTERN_C TKWIN32_API int WSAGetLastError();
EXTERN_C TKWIN32_API void WSASetLastError(int iError);
EXTERN_C TKWIN32_API int closesocket(SOCKET s);
/// @param cmd  FIONBIO or FIONREAD
EXTERN_C TKWIN32_API int ioctlsocket(SOCKET s, long cmd, ULONG* argp);

/// The IPv4 addresses of a host.
/// @param name  a name or a dotted address; null or "" for this machine
/// @return the calling thread's, until its next question; null with WSAHOST_NOT_FOUND, WSATRY_AGAIN when the limit of
///         time is over, WSANO_RECOVERY, WSANO_DATA
EXTERN_C TKWIN32_API hostent* TkGetHostByName(const char* name);
/// The host that has an address. @param type  AF_INET
EXTERN_C TKWIN32_API hostent* TkGetHostByAddr(const char* address, int length, int type);
#define gethostbyname TkGetHostByName
#define gethostbyaddr TkGetHostByAddr
