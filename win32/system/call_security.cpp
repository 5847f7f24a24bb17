#include "win32/system/call_security.h"

#include <atomic>

#include "objbase.h"
#include "win32/system/apartment.h"
#include "win32/system/interface_pointer.h"

namespace tk::system {
namespace {

constinit std::atomic<bool> settled = false;

/// Describes the call the thread is serving, null outside one. Borrowed: whoever serves the call keeps the object for
/// that long, so switching counts nothing and hands back exactly what was put in.
constinit thread_local IUnknown* callContext = nullptr;

/// @return RPC_E_CALL_COMPLETE outside a call
template <class Ask>
HRESULT AskCall(Ask ask) {
    InterfacePointer<IServerSecurity> call;
    const HRESULT result = CoGetCallContext(IID_IServerSecurity, call.ReceiveVoid());
    return FAILED(result) ? result : ask(*call.Get());
}

}  // namespace

void ForgetProcessSecurity() noexcept {
    settled.store(false);
}

}  // namespace tk::system

using namespace tk::system;

HRESULT CoInitializeSecurity(PSECURITY_DESCRIPTOR, LONG cAuthSvc, SOLE_AUTHENTICATION_SERVICE* asAuthSvc,
                             void* pReserved1, DWORD dwAuthnLevel, DWORD dwImpLevel, void*, DWORD, void* pReserved3) {
    if (!IsInitialized()) return CO_E_NOTINITIALIZED;
    const bool services = cAuthSvc < -1 || (cAuthSvc > 0 && asAuthSvc == nullptr);
    const bool levels = dwAuthnLevel > RPC_C_AUTHN_LEVEL_PKT_PRIVACY || dwImpLevel > RPC_C_IMP_LEVEL_DELEGATE;
    if (services || levels || pReserved1 != nullptr || pReserved3 != nullptr) return E_INVALIDARG;
    return settled.exchange(true) ? RPC_E_TOO_LATE : S_OK;
}

HRESULT CoSetProxyBlanket(IUnknown* pProxy, DWORD dwAuthnSvc, DWORD dwAuthzSvc, OLECHAR* pServerPrincName,
                          DWORD dwAuthnLevel, DWORD dwImpLevel, RPC_AUTH_IDENTITY_HANDLE pAuthInfo,
                          DWORD dwCapabilities) {
    if (pProxy == nullptr) return E_INVALIDARG;
    InterfacePointer<IClientSecurity> security;
    const HRESULT result = pProxy->QueryInterface(IID_IClientSecurity, security.ReceiveVoid());
    if (FAILED(result)) return result;
    return security->SetBlanket(pProxy, dwAuthnSvc, dwAuthzSvc, pServerPrincName, dwAuthnLevel, dwImpLevel, pAuthInfo,
                                dwCapabilities);
}

HRESULT CoSwitchCallContext(IUnknown* pNewObject, IUnknown** ppOldObject) {
    if (ppOldObject == nullptr) return E_INVALIDARG;
    *ppOldObject = std::exchange(callContext, pNewObject);
    return S_OK;
}

HRESULT CoGetCallContext(REFIID riid, void** ppInterface) {
    if (ppInterface == nullptr) return E_INVALIDARG;
    *ppInterface = nullptr;
    if (callContext == nullptr) return RPC_E_CALL_COMPLETE;
    return callContext->QueryInterface(riid, ppInterface);
}

HRESULT CoImpersonateClient() {
    return AskCall([](IServerSecurity& call) { return call.ImpersonateClient(); });
}

HRESULT CoRevertToSelf() {
    return AskCall([](IServerSecurity& call) { return call.RevertToSelf(); });
}

HRESULT CoQueryClientBlanket(DWORD* pAuthnSvc, DWORD* pAuthzSvc, OLECHAR** pServerPrincName, DWORD* pAuthnLevel,
                             DWORD* pImpLevel, RPC_AUTHZ_HANDLE* pPrivs, DWORD* pCapabilities) {
    return AskCall([&](IServerSecurity& call) {
        return call.QueryBlanket(pAuthnSvc, pAuthzSvc, pServerPrincName, pAuthnLevel, pImpLevel, pPrivs, pCapabilities);
    });
}
