#include "afxstr.h"

// Programs carry no string table here, so no text is ever found.
BOOL CString::LoadString(UINT nID) {
    static_cast<void>(nID);
    Empty();
    return FALSE;
}
