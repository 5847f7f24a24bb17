#include <afxwin.h>

#include "tkkernel/platform.h"

int IsValidMemory(const void* /*pMemory*/, unsigned int /*nLength*/) {
    return 1;  // Contract: never looks
}

int IsValidAddress(const void* pAddress, unsigned int nLength) {
    return AfxIsValidAddress(pAddress, nLength, FALSE) ? 1 : 0;
}

int IsValidString(const char* szText, int nLength) {
    return AfxIsValidString(szText, nLength) ? 1 : 0;
}

int IsValidWindow(CWnd* pWindow) {
    return pWindow != nullptr && IsWindow(pWindow->GetSafeHwnd()) ? 1 : 0;
}

int IsValidClass(CObject* pObject, CRuntimeClass* pClass) {
    if (pClass == nullptr || !IsValidAddress(pObject, sizeof(CObject))) return 0;
    return pObject->IsKindOf(pClass) ? 1 : 0;
}
