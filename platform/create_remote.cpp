// Creating objects on a machine that the caller names, under an account that the caller gives.
#include "platform/credentials.h"
#include "platform/local_host.h"
#include "platform/wide_text.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

namespace tk::platform {
namespace {

constexpr DWORD kAnyServer = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
constexpr DWORD kOtherProcess = CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
static_assert(kAnyServer == 0x15 && kOtherProcess == 0x14);

struct Account {
    const char* user;
    const char* domain;
    const char* password;
};

/// What the platform is told about the other machine. Everything is borrowed.
class ServerInfo {
public:
    ServerInfo(BSTR host, Credentials& credentials) {
        authentication_.dwAuthnSvc = RPC_C_AUTHN_WINNT;
        authentication_.dwAuthzSvc = RPC_C_AUTHZ_NONE;
        authentication_.dwAuthnLevel = RPC_C_AUTHN_LEVEL_CONNECT;
        authentication_.dwImpersonationLevel = RPC_C_IMP_LEVEL_IMPERSONATE;
        authentication_.pAuthIdentityData = credentials.NamesUser() ? &credentials.Identity() : nullptr;
        authentication_.dwCapabilities = EOAC_NONE;
        server_.pwszName = host;
        server_.pAuthInfo = &authentication_;
    }
    ServerInfo(const ServerInfo&) = delete;
    ServerInfo& operator=(const ServerInfo&) = delete;

    COSERVERINFO* Get() { return &server_; }

private:
    COAUTHINFO authentication_ = {};
    COSERVERINFO server_ = {};
};

bool IsHere(const char* host) {
    return host == nullptr || *host == '\0' || IsLocalHost(host) == 1;
}

bool Fail(HRESULT result) {
    SetLastError(static_cast<DWORD>(result));
    return false;
}

/// A proxy that is none needs no account; any other failure counts.
HRESULT SetAccount(IUnknown* object, Credentials& credentials) {
    if (!credentials.NamesUser()) return S_OK;
    const HRESULT result = SetBlanket(object, credentials.Identity());
    return result == E_NOINTERFACE ? S_OK : result;
}

IUnknown* CreateHere(REFCLSID clsid, REFIID iid) {
    void* object = nullptr;
    const HRESULT result = CoCreateInstance(clsid, nullptr, kAnyServer, iid, &object);
    if (SUCCEEDED(result)) return static_cast<IUnknown*>(object);
    Fail(result);
    return nullptr;
}

IUnknown* Create(REFCLSID clsid, REFIID iid, const char* host, const Account& account) {
    if (IsHere(host)) return CreateHere(clsid, iid);
    Credentials credentials(account.user, account.domain, account.password);
    const WideText name(host);
    ServerInfo server(name.Get(), credentials);
    MULTI_QI query = {&iid, nullptr, S_OK};
    HRESULT result = CoCreateInstanceEx(clsid, nullptr, kOtherProcess, server.Get(), 1, &query);
    if (SUCCEEDED(result)) result = query.hr;
    if (SUCCEEDED(result) && query.pItf == nullptr) result = E_NOINTERFACE;
    if (SUCCEEDED(result)) result = SetAccount(query.pItf, credentials);
    if (SUCCEEDED(result)) return query.pItf;
    if (query.pItf != nullptr) query.pItf->Release();  // without the account it asked for, nobody gets it
    Fail(result);
    return nullptr;
}

/// One object for each entry. @return false when there is none at all
bool CreateAllHere(MULTI_QI* results, long count, REFCLSID clsid) {
    HRESULT failure = S_OK;
    long made = 0;
    for (long i = 0; i < count; ++i) {
        void* object = nullptr;
        results[i].hr = CoCreateInstance(clsid, nullptr, kAnyServer, *results[i].pIID, &object);
        results[i].pItf = static_cast<IUnknown*>(object);
        if (SUCCEEDED(results[i].hr)) {
            ++made;
        } else {
            failure = results[i].hr;
        }
    }
    if (FAILED(failure)) Fail(failure);
    return made != 0;
}

/// One object on the other machine, asked for all entries.
bool CreateAllThere(MULTI_QI* results, long count, REFCLSID clsid, const char* host, Credentials& credentials) {
    const WideText name(CString("\\\\") + host);
    ServerInfo server(name.Get(), credentials);
    const HRESULT result =
        CoCreateInstanceEx(clsid, nullptr, kOtherProcess, server.Get(), static_cast<DWORD>(count), results);
    if (SUCCEEDED(result)) return true;
    AddErrorLog(LookupErrorText(static_cast<DWORD>(result)), 0, 0, nullptr);
    return Fail(result);
}

bool IsUsable(const MULTI_QI& entry) {
    return SUCCEEDED(entry.hr) && IsValidAddress(entry.pItf, sizeof(void*));
}

bool CreateAll(MULTI_QI* results, long count, REFCLSID clsid, const IID& iid, const char* host,
               const Account& account) {
    if (results == nullptr || count <= 0) return Fail(E_INVALIDARG);
    for (long i = 0; i < count; ++i)
        results[i] = {&iid, nullptr, S_OK};
    Credentials credentials(account.user, account.domain, account.password);
    const bool created =
        IsHere(host) ? CreateAllHere(results, count, clsid) : CreateAllThere(results, count, clsid, host, credentials);
    if (!created) return false;
    for (long i = 0; i < count; ++i) {
        if (!IsUsable(results[i])) continue;
        const HRESULT result = SetAccount(results[i].pItf, credentials);
        if (FAILED(result)) return Fail(result);
    }
    return true;
}

}  // namespace
}  // namespace tk::platform

using tk::platform::Fail;

IUnknown* CreateIDispatchEx(const char* szProgId, const GUID& iid, const char* szHost, const char* szUser,
                            const char* szDomain, const char* szPassword) {
    CLSID clsid;
    const HRESULT result = CLSIDFromProgID(tk::platform::WideText(szProgId).Get(), &clsid);
    if (SUCCEEDED(result)) return CreateIDispatchEx(clsid, iid, szHost, szUser, szDomain, szPassword);
    Fail(result);
    return nullptr;
}

IUnknown* CreateIDispatchEx(GUID clsid, const GUID& iid, const char* szHost, const char* szUser, const char* szDomain,
                            const char* szPassword) {
    return tk::platform::Create(clsid, iid, szHost, {szUser, szDomain, szPassword});
}

int CreateIDispatchEx(MULTI_QI* pResults, long nCount, GUID clsid, const GUID& iid, const char* szHost,
                      const char* szUser, const char* szDomain, const char* szPassword) {
    return tk::platform::CreateAll(pResults, nCount, clsid, iid, szHost, {szUser, szDomain, szPassword}) ? 1 : 0;
}

IUnknown* CreateIDispatchQueue(GUID /*clsid*/, const GUID& /*iid*/, const char* /*szHost*/, const char* /*szUser*/,
                               const char* /*szDomain*/, const char* /*szPassword*/) {
    return nullptr;  // Contract: creation through a message queue is not offered
}
