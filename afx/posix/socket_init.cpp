#include "afxsock.h"

// The host functions need no start here.
BOOL AfxSocketInit(WSAData* lpwsaData) {
    static_cast<void>(lpwsaData);
    return TRUE;
}
