#include "tkkernel/util.h"

void StringToVariant(VARIANT& destination, const char* szText) {
    VariantInit(&destination);  // Contract: what it held is not released
    destination.bstrVal = CString(szText).AllocSysString();
    destination.vt = VT_BSTR;
}

void CopyVariant(VARIANT& destination, const VARIANT& source) {
    if (&destination == &source) return;
    if (SUCCEEDED(VariantClear(&destination))) VariantCopy(&destination, const_cast<VARIANT*>(&source));
}

VARIANT VariantPlus(const VARIANT& first, const VARIANT& second) {
    VARIANT sum;
    VariantInit(&sum);
    if (FAILED(VarAdd(const_cast<VARIANT*>(&first), const_cast<VARIANT*>(&second), &sum))) VariantInit(&sum);
    return sum;
}
