#include "platform/credentials.h"
#include "platform/messages.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"
#include "util/fault_guard.h"

namespace tk::platform {
namespace {

/// The calling thread takes the caller's place, and gives it up again.
class Impersonation {
public:
    Impersonation() : active_(SUCCEEDED(CoImpersonateClient())) {}
    Impersonation(const Impersonation&) = delete;
    Impersonation& operator=(const Impersonation&) = delete;
    ~Impersonation() {
        if (active_) CoRevertToSelf();
    }

    bool IsActive() const { return active_; }

private:
    bool active_;
};

CString ReadCaller() {
    const Impersonation caller;
    if (!caller.IsActive()) return CString();
    DWORD service = 0;
    DWORD authorisation = 0;
    DWORD level = 0;
    DWORD impersonation = 0;
    DWORD capabilities = 0;
    OLECHAR* server = nullptr;
    // The caller's name is lent for the length of the call; the server's is ours to free.
    RPC_AUTHZ_HANDLE name = nullptr;
    const HRESULT result =
        CoQueryClientBlanket(&service, &authorisation, &server, &level, &impersonation, &name, &capabilities);
    CString author;
    if (SUCCEEDED(result) && name != nullptr) author = static_cast<const OLECHAR*>(name);
    CoTaskMemFree(server);
    return author;
}

}  // namespace
}  // namespace tk::platform

long AfxSetSecurityEx(IUnknown* pProxy, COAUTHIDENTITY& identity) {
    return tk::platform::SetBlanket(pProxy, identity);
}

long AfxSetSecurity(IUnknown* pProxy, const char* szUser, const char* szDomain, const char* szPassword) {
    tk::platform::Credentials credentials(szUser, szDomain, szPassword);
    return tk::platform::SetBlanket(pProxy, credentials.Identity());
}

CString GetCallAuthor() {
    CString author;
    if (tk::util::RunGuarded([&] { author = tk::platform::ReadCaller(); })) return author;
    AddErrorLog(tk::platform::kCallAuthorFault, 0, 0, nullptr);
    // A fault leaves no time for the way back, which goes through what has just faulted.
    tk::util::RunGuarded([] { CoRevertToSelf(); });
    return CString();
}
