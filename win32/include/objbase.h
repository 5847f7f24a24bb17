// objbase.h - components: start-up, creation by class, class objects of the program, identifiers as text.
//
//   CoInitializeEx(NULL, COINIT_MULTITHREADED);
//   IDispatch* connection = nullptr;
//   HRESULT result = CoCreateInstance(clsid, nullptr, CLSCTX_SERVER, IID_IDispatch, (void**)&connection);
//
// A class is looked for among the class objects the program registered itself, then in the class registry (see
// win32/README.md); its server is a shared object that exports DllGetClassObject. Objects of another machine come from
// the remote activator the program has set (tkwin32/remote_activation.h); without one naming another machine gives
// 0x800706BA, the server is unavailable.
// Threads: any. Class objects are called from the thread that creates, whatever its apartment.
#pragma once

#include "oaidl.h"
#include "rpc.h"
#include "unknwn.h"
#include "winbase.h"
#include "wtypes.h"

// --- Starting and ending, counted for each thread ---

enum COINIT {
    COINIT_MULTITHREADED = 0x0,
    COINIT_APARTMENTTHREADED = 0x2,
    COINIT_DISABLE_OLE1DDE = 0x4,
    COINIT_SPEED_OVER_MEMORY = 0x8
};

/// Enters a single-threaded apartment, as CoInitializeEx does.
WINOLEAPI CoInitialize(LPVOID pvReserved);
/// @return S_OK; S_FALSE when the thread had entered already; RPC_E_CHANGED_MODE when it had entered the other kind of
///         apartment (then it does not count); E_INVALIDARG for pvReserved or unknown flags
/// @note A thread that never enters may create objects as long as some thread is in the multithreaded apartment.
WINOLEAPI CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit);
/// One for each success. With the last one of the process, registered class objects, kept class objects and the
/// security settings go; servers stay loaded. A thread that ends takes back what it did not give back.
WINOLEAPI_(void) CoUninitialize();

// --- Creating ---

struct COAUTHINFO {
    DWORD dwAuthnSvc;
    DWORD dwAuthzSvc;
    LPWSTR pwszServerPrincName;
    DWORD dwAuthnLevel;
    DWORD dwImpersonationLevel;
    COAUTHIDENTITY* pAuthIdentityData;
    DWORD dwCapabilities;
};

struct COSERVERINFO {
    DWORD dwReserved1;
    LPWSTR pwszName;
    COAUTHINFO* pAuthInfo;
    DWORD dwReserved2;
};

struct MULTI_QI {
    const IID* pIID;
    IUnknown* pItf;
    HRESULT hr;
};

/// @return REGDB_E_CLASSNOTREG; 0x8007007E when the server is not there, 0x800700C1 when it is no shared object of this
///         machine, CO_E_ERRORINDLL when it has no DllGetClassObject; CO_E_NOTINITIALIZED; or what the class object
///         says
WINOLEAPI CoGetClassObject(REFCLSID rclsid, DWORD dwClsContext, COSERVERINFO* pServerInfo, REFIID riid, LPVOID* ppv);
WINOLEAPI CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext, REFIID riid, LPVOID* ppv);
/// @return S_OK when every interface was had, CO_S_NOTALLINTERFACES when some were, E_NOINTERFACE when none was
WINOLEAPI CoCreateInstanceEx(REFCLSID rclsid, IUnknown* punkOuter, DWORD dwClsCtx, COSERVERINFO* pServerInfo,
                             DWORD dwCount, MULTI_QI* pResults);
/// Ends the connections of other machines and processes to an object. Objects have none here. @return S_OK
WINOLEAPI CoDisconnectObject(LPUNKNOWN pUnk, DWORD dwReserved);

// --- Class objects of the program ---

enum REGCLS { REGCLS_SINGLEUSE = 0, REGCLS_MULTIPLEUSE = 1, REGCLS_MULTI_SEPARATE = 2, REGCLS_SUSPENDED = 4 };

/// Offers a class object to the whole process, before any server of the class registry; the newest of a class is found
/// first.
/// @param dwClsContext  CLSCTX_INPROC_SERVER or CLSCTX_LOCAL_SERVER; REGCLS_MULTIPLEUSE as local server is in-process
/// too
/// @param flags  REGCLS_SINGLEUSE, only as local server, is given out once
WINOLEAPI CoRegisterClassObject(REFCLSID rclsid, LPUNKNOWN pUnk, DWORD dwClsContext, DWORD flags, LPDWORD lpdwRegister);
/// May run while others create: they finish with the object they found. @return CO_E_OBJNOTREG for an unknown number
WINOLEAPI CoRevokeClassObject(DWORD dwRegister);
/// Makes all class objects that were registered as suspended available.
WINOLEAPI CoResumeClassObjects();

// --- Security ---

#define RPC_C_AUTHN_NONE 0
#define RPC_C_AUTHN_WINNT 10
#define RPC_C_AUTHN_DEFAULT 0xFFFFFFFFu
#define RPC_C_AUTHZ_NONE 0
#define RPC_C_AUTHN_LEVEL_DEFAULT 0
#define RPC_C_AUTHN_LEVEL_NONE 1
#define RPC_C_AUTHN_LEVEL_CONNECT 2
#define RPC_C_AUTHN_LEVEL_CALL 3
#define RPC_C_AUTHN_LEVEL_PKT 4
#define RPC_C_AUTHN_LEVEL_PKT_INTEGRITY 5
#define RPC_C_AUTHN_LEVEL_PKT_PRIVACY 6
#define RPC_C_IMP_LEVEL_DEFAULT 0
#define RPC_C_IMP_LEVEL_ANONYMOUS 1
#define RPC_C_IMP_LEVEL_IDENTIFY 2
#define RPC_C_IMP_LEVEL_IMPERSONATE 3
#define RPC_C_IMP_LEVEL_DELEGATE 4
#define SEC_WINNT_AUTH_IDENTITY_ANSI 0x1
#define SEC_WINNT_AUTH_IDENTITY_UNICODE 0x2
#define EOAC_NONE 0

using RPC_AUTH_IDENTITY_HANDLE = void*;
using RPC_AUTHZ_HANDLE = void*;

struct SOLE_AUTHENTICATION_SERVICE {
    DWORD dwAuthnSvc;
    DWORD dwAuthzSvc;
    OLECHAR* pPrincipalName;
    HRESULT hr;
};

/// Settles the security of calls between processes, once in a process: RPC_E_TOO_LATE the second time.
WINOLEAPI CoInitializeSecurity(PSECURITY_DESCRIPTOR pSecDesc, LONG cAuthSvc, SOLE_AUTHENTICATION_SERVICE* asAuthSvc,
                               void* pReserved1, DWORD dwAuthnLevel, DWORD dwImpLevel, void* pAuthList,
                               DWORD dwCapabilities, void* pReserved3);

inline constexpr IID IID_IClientSecurity = {0x0000013D, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IServerSecurity = {0x0000013E, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// Security of one proxy, seen by the client.
struct IClientSecurity : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryBlanket(IUnknown* pProxy, DWORD* pAuthnSvc, DWORD* pAuthzSvc,
                                                   OLECHAR** pServerPrincName, DWORD* pAuthnLevel, DWORD* pImpLevel,
                                                   void** pAuthInfo, DWORD* pCapabilites) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown* pProxy, DWORD dwAuthnSvc, DWORD dwAuthzSvc,
                                                 OLECHAR* pServerPrincName, DWORD dwAuthnLevel, DWORD dwImpLevel,
                                                 void* pAuthInfo, DWORD dwCapabilities) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyProxy(IUnknown* pProxy, IUnknown** ppCopy) = 0;

protected:
    ~IClientSecurity() = default;
};

/// Security of the call being served, seen by the server.
struct IServerSecurity : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryBlanket(DWORD* pAuthnSvc, DWORD* pAuthzSvc, OLECHAR** pServerPrincName,
                                                   DWORD* pAuthnLevel, DWORD* pImpLevel, void** pPrivs,
                                                   DWORD* pCapabilities) = 0;
    virtual HRESULT STDMETHODCALLTYPE ImpersonateClient() = 0;
    virtual HRESULT STDMETHODCALLTYPE RevertToSelf() = 0;
    virtual BOOL STDMETHODCALLTYPE IsImpersonating() = 0;

protected:
    ~IServerSecurity() = default;
};

/// Asks the proxy's IClientSecurity; an object of this process is no proxy and has none: E_NOINTERFACE.
WINOLEAPI CoSetProxyBlanket(IUnknown* pProxy, DWORD dwAuthnSvc, DWORD dwAuthzSvc, OLECHAR* pServerPrincName,
                            DWORD dwAuthnLevel, DWORD dwImpLevel, RPC_AUTH_IDENTITY_HANDLE pAuthInfo,
                            DWORD dwCapabilities);
/// Puts the object that describes the call being served in place, for the calling thread, and hands out the one before.
WINOLEAPI CoSwitchCallContext(IUnknown* pNewObject, IUnknown** ppOldObject);
/// @return RPC_E_CALL_COMPLETE outside a call
WINOLEAPI CoGetCallContext(REFIID riid, void** ppInterface);
/// The three ask the IServerSecurity of the call being served; RPC_E_CALL_COMPLETE outside one.
WINOLEAPI CoImpersonateClient();
WINOLEAPI CoRevertToSelf();
WINOLEAPI CoQueryClientBlanket(DWORD* pAuthnSvc, DWORD* pAuthzSvc, OLECHAR** pServerPrincName, DWORD* pAuthnLevel,
                               DWORD* pImpLevel, RPC_AUTHZ_HANDLE* pPrivs, DWORD* pCapabilities);

// --- Identifiers and names ---

/// @param lpsz  a braced identifier or a ProgID; null gives the null identifier
/// @return CO_E_CLASSSTRING for anything else
WINOLEAPI CLSIDFromString(LPCOLESTR lpsz, LPCLSID pclsid);
/// @return CO_E_CLASSSTRING when no class has the name; a version tail such as ".2.8" need not be registered
WINOLEAPI CLSIDFromProgID(LPCOLESTR lpszProgID, LPCLSID lpclsid);
/// @param lplpszProgID  freed with CoTaskMemFree
WINOLEAPI ProgIDFromCLSID(REFCLSID clsid, LPOLESTR* lplpszProgID);
WINOLEAPI IIDFromString(LPCOLESTR lpsz, LPIID lpiid);
/// @return 39, or 0 when the buffer holds fewer than 39 characters
WINOLEAPI_(int) StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, int cchMax);
/// @param lplpsz  freed with CoTaskMemFree
WINOLEAPI StringFromCLSID(REFCLSID rclsid, LPOLESTR* lplpsz);
WINOLEAPI StringFromIID(REFIID rclsid, LPOLESTR* lplpsz);
/// A random identifier.
WINOLEAPI CoCreateGuid(GUID* pguid);

// --- Memory that crosses interfaces ---

WINOLEAPI_(LPVOID) CoTaskMemAlloc(SIZE_T cb);
WINOLEAPI_(LPVOID) CoTaskMemRealloc(LPVOID pv, SIZE_T cb);
WINOLEAPI_(void) CoTaskMemFree(LPVOID pv);

// --- What an in-process server exports ---

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv);
STDAPI DllCanUnloadNow();
