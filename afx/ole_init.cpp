#include <ole2.h>

#include "afxole.h"

namespace {

// What this thread has started with AfxOleInit and not ended yet.
thread_local int startedHere = 0;

}  // namespace

BOOL AfxOleInit() {
    if (FAILED(OleInitialize(nullptr))) return FALSE;
    ++startedHere;
    return TRUE;
}

void AfxOleTerm(BOOL bJustRevoke) {
    if (bJustRevoke || startedHere == 0) return;
    --startedHere;
    OleUninitialize();
}
