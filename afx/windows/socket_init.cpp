#include <winsock2.h>

#include "afxsock.h"

namespace {

// Ends the host functions with the process, once for the one start that is kept.
struct Sockets {
    WSADATA data{};
    int outcome = WSAStartup(MAKEWORD(1, 1), &data);
    ~Sockets() {
        if (outcome == 0) WSACleanup();
    }
};

}  // namespace

BOOL AfxSocketInit(WSAData* lpwsaData) {
    static Sockets sockets;
    if (sockets.outcome != 0) {
        WSASetLastError(sockets.outcome);
        return FALSE;
    }
    if (lpwsaData != nullptr) *lpwsaData = sockets.data;
    return TRUE;
}
