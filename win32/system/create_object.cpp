
#include <atomic>

#include "ole2.h"
#include "tkwin32/remote_activation.h"
#include "win32/system/apartment.h"
#include "win32/system/class_objects.h"
#include "win32/system/class_servers.h"
#include "win32/system/local_machine.h"

namespace tk::system {
namespace {

constinit std::atomic<RemoteActivator> remoteActivator = nullptr;

bool IsElsewhere(const COSERVERINFO* server) {
    return server != nullptr && server->pwszName != nullptr && !IsThisMachine(server->pwszName);
}

HRESULT CreateElsewhere(REFCLSID clsid, DWORD context, const COSERVERINFO* server, DWORD count, MULTI_QI* results) {
    const RemoteActivator activate = remoteActivator.load();
    if (activate == nullptr) return HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
    return activate(clsid, context, server, count, results);
}

/// The class object of the program or of a server, with its factory where that is known already.
HRESULT FindClassObject(REFCLSID clsid, DWORD context, KeptClassObject& classObject) {
    if (!IsInitialized()) return CO_E_NOTINITIALIZED;
    if ((context & (CLSCTX_ALL | CLSCTX_REMOTE_SERVER)) == 0) return E_INVALIDARG;
    classObject.object = FindRegisteredClassObject(clsid, context);
    if (classObject.object) return S_OK;
    if ((context & CLSCTX_INPROC_SERVER) == 0) return REGDB_E_CLASSNOTREG;
    return GetServerClassObject(clsid, classObject);
}

HRESULT Create(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** object) {
    KeptClassObject classObject;
    HRESULT result = FindClassObject(clsid, context, classObject);
    if (FAILED(result)) return result;
    if (!classObject.factory) {
        result = classObject.object->QueryInterface(IID_IClassFactory, classObject.factory.ReceiveVoid());
        if (FAILED(result)) return result;
    }
    return classObject.factory->CreateInstance(outer, iid, object);
}

HRESULT QueryAll(IUnknown& object, MULTI_QI* results, DWORD count) {
    DWORD had = 0;
    for (DWORD i = 0; i < count; ++i) {
        results[i].hr = object.QueryInterface(*results[i].pIID, reinterpret_cast<void**>(&results[i].pItf));
        if (SUCCEEDED(results[i].hr)) ++had;
    }
    return had == count ? S_OK : had != 0 ? CO_S_NOTALLINTERFACES : E_NOINTERFACE;
}

}  // namespace
}  // namespace tk::system

using namespace tk::system;

HRESULT CoGetClassObject(REFCLSID rclsid, DWORD dwClsContext, COSERVERINFO* pServerInfo, REFIID riid, LPVOID* ppv) {
    if (ppv == nullptr) return E_INVALIDARG;
    *ppv = nullptr;
    if (IsElsewhere(pServerInfo)) {
        return IsInitialized() ? HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE) : CO_E_NOTINITIALIZED;
    }
    KeptClassObject classObject;
    const HRESULT result = FindClassObject(rclsid, dwClsContext, classObject);
    return FAILED(result) ? result : classObject.object->QueryInterface(riid, ppv);
}

HRESULT CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext, REFIID riid, LPVOID* ppv) {
    if (ppv == nullptr) return E_POINTER;
    *ppv = nullptr;
    return Create(rclsid, pUnkOuter, dwClsContext, riid, ppv);
}

HRESULT CoCreateInstanceEx(REFCLSID rclsid, IUnknown* punkOuter, DWORD dwClsCtx, COSERVERINFO* pServerInfo,
                           DWORD dwCount, MULTI_QI* pResults) {
    if (dwCount == 0 || pResults == nullptr) return E_INVALIDARG;
    for (DWORD i = 0; i < dwCount; ++i) {
        if (pResults[i].pIID == nullptr || pResults[i].pItf != nullptr) return E_INVALIDARG;
    }
    InterfacePointer<IUnknown> object;
    HRESULT result = CO_E_NOTINITIALIZED;
    if (IsInitialized() && IsElsewhere(pServerInfo)) {
        result = punkOuter != nullptr ? CLASS_E_NOAGGREGATION
                                      : CreateElsewhere(rclsid, dwClsCtx, pServerInfo, dwCount, pResults);
        if (SUCCEEDED(result)) return result;
    } else {
        result = Create(rclsid, punkOuter, dwClsCtx, IID_IUnknown, object.ReceiveVoid());
        if (SUCCEEDED(result)) return QueryAll(*object.Get(), pResults, dwCount);
    }
    for (DWORD i = 0; i < dwCount; ++i)
        pResults[i].hr = result;
    return result;
}

RemoteActivator SetRemoteActivator(RemoteActivator activator) {
    return remoteActivator.exchange(activator);
}

HRESULT CoDisconnectObject(LPUNKNOWN pUnk, DWORD dwReserved) {
    return pUnk == nullptr || dwReserved != 0 ? E_INVALIDARG : S_OK;
}

HRESULT OleRun(LPUNKNOWN pUnknown) {
    if (pUnknown == nullptr) return E_INVALIDARG;
    InterfacePointer<IRunnableObject> runnable;
    if (FAILED(pUnknown->QueryInterface(IID_IRunnableObject, runnable.ReceiveVoid()))) return S_OK;
    return runnable->Run(nullptr);
}
