#include "winbase.h"

namespace {
constinit thread_local DWORD lastError = 0;
}

DWORD GetLastError() {
    return lastError;
}
void SetLastError(DWORD dwErrCode) {
    lastError = dwErrCode;
}
