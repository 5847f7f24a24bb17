// The class objects a program offers itself, found before any server of the class registry.
#pragma once

#include <list>

#include "objbase.h"
#include "win32/system/interface_pointer.h"

namespace tk::system {

struct RegisteredClassObject {
    DWORD number;
    CLSID clsid;
    InterfacePointer<IUnknown> object;
    DWORD context;
    bool singleUse;
    bool suspended;
};
using RegisteredClassObjects = std::list<RegisteredClassObject>;

/// The newest class object of a class that serves one of the wanted contexts; empty when there is none.
InterfacePointer<IUnknown> FindRegisteredClassObject(REFCLSID clsid, DWORD wantedContext);

/// Empties the list; the caller releases what it gets where no lock is held.
RegisteredClassObjects TakeRegisteredClassObjects();

}  // namespace tk::system
