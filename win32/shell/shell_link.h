// The class of shortcuts.
#pragma once

#include "objbase.h"

namespace tk::shell {

/// @return CLASS_E_CLASSNOTAVAILABLE for another class
HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object);

}  // namespace tk::shell
