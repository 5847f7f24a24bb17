#include "tkkernel/platform.h"

namespace {

/// One open key of the registry.
class RegistryKey {
public:
    RegistryKey(HKEY parent, const char* name) {
        if (parent == nullptr || RegOpenKeyExA(parent, name, 0, KEY_READ, &key_) != ERROR_SUCCESS) key_ = nullptr;
    }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey() {
        if (key_ != nullptr) RegCloseKey(key_);
    }

    HKEY Get() const { return key_; }

private:
    HKEY key_ = nullptr;
};

}  // namespace

int CLSIDExist(GUID& clsid) {
    const RegistryKey classes(HKEY_CLASSES_ROOT, "CLSID");
    const RegistryKey entry(classes.Get(), StringFromGuid(clsid));
    if (entry.Get() == nullptr) return 0;
    char server[256] = {};
    LONG size = sizeof(server);
    if (RegQueryValueA(entry.Get(), "InprocServer32", server, &size) != ERROR_SUCCESS) return 0;
    return IsFileExist(server);
}
