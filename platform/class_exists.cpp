#include "platform/registry_key.h"
#include "tkkernel/platform.h"

using tk::platform::RegistryKey;

int CLSIDExist(GUID& clsid) {
    const RegistryKey classes(HKEY_CLASSES_ROOT, "CLSID");
    const RegistryKey entry(classes.Get(), StringFromGuid(clsid));
    if (entry.Get() == nullptr) return 0;
    char server[256] = {};
    LONG size = sizeof(server);
    if (RegQueryValueA(entry.Get(), "InprocServer32", server, &size) != ERROR_SUCCESS) return 0;
    return IsFileExist(server);
}
