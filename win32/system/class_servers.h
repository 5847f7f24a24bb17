// In-process servers: shared objects that export DllGetClassObject, loaded once and never unloaded.
#pragma once

#include <functional>
#include <unordered_map>

#include "objbase.h"
#include "win32/system/interface_pointer.h"

namespace tk::system {

struct GuidHash {
    std::size_t operator()(REFGUID guid) const noexcept {
        std::uint64_t halves[2];
        std::memcpy(halves, &guid, sizeof halves);
        return halves[0] ^ (halves[1] * 0x9E3779B97F4A7C15u);
    }
};

/// A server's class object, kept from its first use.
struct KeptClassObject {
    InterfacePointer<IUnknown> object;
    InterfacePointer<IClassFactory> factory;  // empty when it is none
};
using KeptClassObjects = std::unordered_map<CLSID, KeptClassObject, GuidHash>;

/// Loads the server when it is not there yet. Safe for many threads at once; none waits for another one's loading.
HRESULT GetServerClassObject(REFCLSID clsid, KeptClassObject& classObject);

/// Lets go of all class objects; the caller releases what it gets where no lock is held.
KeptClassObjects TakeKeptClassObjects();

}  // namespace tk::system
