#include "afx_address.h"

BOOL AfxIsValidAddress(const void* lp, UINT nBytes, BOOL bReadWrite) {
    if (lp == nullptr || IsBadReadPtr(lp, nBytes)) return FALSE;
    return !bReadWrite || !IsBadWritePtr(const_cast<void*>(lp), nBytes);
}

BOOL AfxIsValidString(LPCSTR lpsz, int nLength) {
    return lpsz != nullptr && !IsBadStringPtrA(lpsz, static_cast<UINT_PTR>(static_cast<INT_PTR>(nLength)));
}

BOOL AfxIsValidString(LPCWSTR lpsz, int nLength) {
    return lpsz != nullptr && !IsBadStringPtrW(lpsz, static_cast<UINT_PTR>(static_cast<INT_PTR>(nLength)));
}
