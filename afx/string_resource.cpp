#include "afxstr.h"

BOOL CString::LoadString(UINT nID) {
    Empty();
    const HINSTANCE program = GetModuleHandleA(nullptr);
    for (int room = 256;; room *= 2) {
        const int length = ::LoadStringA(program, nID, GetBuffer(room - 1), room);
        ReleaseBuffer(length);
        if (length < room - 2) return length > 0;  // else it may have been cut, before a character of two bytes
    }
}
