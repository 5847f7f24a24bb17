// Arguments of a late-bound call, found by position.
#include "win32/include/oleauto.h"

HRESULT DispGetParam(DISPPARAMS* pdispparams, UINT position, VARTYPE vtTarg, VARIANT* pvarResult, UINT* puArgErr) {
    if (pdispparams == nullptr || pvarResult == nullptr) return E_INVALIDARG;
    const DISPPARAMS& call = *pdispparams;
    if (call.cNamedArgs > call.cArgs || (call.cArgs != 0 && call.rgvarg == nullptr) ||
        (call.cNamedArgs != 0 && call.rgdispidNamedArgs == nullptr)) {
        return E_INVALIDARG;
    }
    // Positional arguments stand last, in reverse order; a named one bears its position as its id.
    UINT index = call.cArgs;
    if (position < call.cArgs - call.cNamedArgs) {
        index = call.cArgs - 1 - position;
    } else {
        for (UINT i = 0; i < call.cNamedArgs && index == call.cArgs; ++i) {
            if (call.rgdispidNamedArgs[i] == static_cast<DISPID>(position)) index = i;
        }
    }
    HRESULT result = DISP_E_PARAMNOTFOUND;
    if (index != call.cArgs) {
        VARIANT converted;
        VariantInit(&converted);
        result = VariantChangeType(&converted, &call.rgvarg[index], 0, vtTarg);
        if (SUCCEEDED(result)) *pvarResult = converted;
    } else {
        index = position;
    }
    if (FAILED(result) && puArgErr != nullptr) *puArgErr = index;
    return result;
}
