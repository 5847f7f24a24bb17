// platform/registry_key.h - one open key of the registry.
#pragma once

#include <windows.h>

namespace tk::platform {

class RegistryKey {
public:
    /// @param parent  null finds nothing
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

}  // namespace tk::platform
