#include "win32/system/class_servers.h"

#include <dlfcn.h>

#include <mutex>
#include <shared_mutex>

#include "win32/datalink/data_links.h"
#include "win32/shell/shell_link.h"
#include "win32/system/class_registry.h"
#include "win32/system/modules.h"

namespace tk::system {
namespace {

using GetClassObjectFunction = HRESULT (*)(REFCLSID, REFIID, LPVOID*);

struct Servers {
    std::shared_mutex lock;
    KeptClassObjects classObjects;
};

Servers& TheServers() {
    static auto& servers = *new Servers;
    return servers;
}

/// The classes that this library serves itself.
HRESULT GetOwnClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
    const HRESULT result = datalink::GetClassObject(clsid, iid, object);
    return result != CLASS_E_CLASSNOTAVAILABLE ? result : shell::GetClassObject(clsid, iid, object);
}

HRESULT LoadServer(const RegisteredClass& entry, GetClassObjectFunction& getClassObject) {
    if (entry.server == kThisLibrary) {
        getClassObject = &GetOwnClassObject;
        return S_OK;
    }
    const std::string path = ServerPath(entry.server);
    // Not closed: objects and threads of the server may live as long as the process. The loader counts, so that a
    // second loading costs nothing.
    void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        return HRESULT_FROM_WIN32(WhyNotLoaded(path));
    }
    getClassObject = reinterpret_cast<GetClassObjectFunction>(dlsym(module, "DllGetClassObject"));
    return getClassObject != nullptr ? S_OK : CO_E_ERRORINDLL;
}

}  // namespace

HRESULT GetServerClassObject(REFCLSID clsid, KeptClassObject& classObject) {
    Servers& servers = TheServers();
    {
        const std::shared_lock lock(servers.lock);
        const auto found = servers.classObjects.find(clsid);
        if (found != servers.classObjects.end()) {
            classObject = found->second;
            return S_OK;
        }
    }
    const auto entry = FindClass(clsid);
    if (!entry) return REGDB_E_CLASSNOTREG;
    GetClassObjectFunction getClassObject = nullptr;
    HRESULT result = LoadServer(*entry, getClassObject);
    if (FAILED(result)) return result;
    KeptClassObject fresh;
    result = getClassObject(clsid, IID_IUnknown, fresh.object.ReceiveVoid());
    if (FAILED(result)) return result;
    if (!fresh.object) return CO_E_ERRORINDLL;
    if (FAILED(fresh.object->QueryInterface(IID_IClassFactory, fresh.factory.ReceiveVoid()))) fresh.factory = {};

    const std::lock_guard lock(servers.lock);
    // Another thread may have been faster; then its class object is the one, and ours is released by the caller.
    classObject = servers.classObjects.try_emplace(clsid, std::move(fresh)).first->second;
    return S_OK;
}

KeptClassObjects TakeKeptClassObjects() {
    Servers& servers = TheServers();
    const std::lock_guard lock(servers.lock);
    return std::exchange(servers.classObjects, {});
}

}  // namespace tk::system
