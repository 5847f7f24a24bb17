#include <afxole.h>
#include <afxsock.h>

#include "platform/messages.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

namespace {

HRESULT SettleSecurity(void* descriptor, DWORD authenticationLevel) {
    return CoInitializeSecurity(descriptor, -1, nullptr, nullptr, authenticationLevel, RPC_C_IMP_LEVEL_IMPERSONATE,
                                nullptr, EOAC_NONE, nullptr);
}

/// @return whether the result is a success; a failure's text goes to the event log
bool LoggedSuccess(HRESULT result) {
    if (FAILED(result)) AddErrorLog(LookupErrorText(static_cast<DWORD>(result)), 0, 0, nullptr);
    return SUCCEEDED(result);
}

bool StartSockets() {
    if (AfxSocketInit()) return true;
    AddErrorLog(tk::platform::kSocketsFailed, 1, 0, nullptr);
    return false;
}

HRESULT EnterMultithreaded() {
    return CoInitializeEx(nullptr, COINIT_MULTITHREADED | COINIT_SPEED_OVER_MEMORY);
}

int ShowFailure(const CString& text) {
    MessageBoxA(nullptr, text, nullptr, MB_OK | MB_ICONERROR);
    return 0;
}

}  // namespace

int AfxIDispatchInit() {
    return StartSockets() && LoggedSuccess(EnterMultithreaded()) &&
                   LoggedSuccess(SettleSecurity(nullptr, RPC_C_AUTHN_LEVEL_CONNECT))
               ? 1
               : 0;
}

int AfxIDispatchUIInit() {
    if (!AfxOleInit() || !AfxSocketInit()) return ShowFailure(GetLastErrorText());
    const HRESULT result = SettleSecurity(nullptr, RPC_C_AUTHN_LEVEL_CONNECT);
    return SUCCEEDED(result) ? 1 : ShowFailure(LookupErrorText(static_cast<DWORD>(result)));
}

long AfxDispatchInit() {
    if (!StartSockets()) return 0;
    const HRESULT result = EnterMultithreaded();
    return LoggedSuccess(result) ? result : 0;
}

void AfxIDispatchTerm() {
    CoUninitialize();
}

long AfxISecurityInit(void* pSecurityDescriptor, unsigned long nAuthnLevel) {
    return SettleSecurity(pSecurityDescriptor, static_cast<DWORD>(nAuthnLevel));
}
