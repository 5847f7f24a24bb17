// The two classes behind the Data Link dialog, served by this library itself.
#pragma once

#include "guiddef.h"
#include "winerror.h"

namespace tk::datalink {

/// As a server's DllGetClassObject. @return CLASS_E_CLASSNOTAVAILABLE for every other class
HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object);

}  // namespace tk::datalink
