#include "winreg.h"

#include <strings.h>

#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "tkwin32/text.h"
#include "win32/registry/registry_key.h"

namespace tk::registry {
namespace {

struct OpenKey {
    HKEY root;
    std::vector<std::string> name;
    Key content;
};

/// The keys that are open, under handles that are not used again.
struct OpenKeys {
    std::mutex lock;
    std::map<HKEY, std::shared_ptr<const OpenKey>> keys;
    std::uintptr_t last = 0;
};

OpenKeys& TheOpenKeys() {
    static auto& keys = *new OpenKeys;
    return keys;
}

using Finder = std::optional<Key> (*)(KeyName);

Finder FinderOf(HKEY root) noexcept {
    if (root == HKEY_CLASSES_ROOT) return &FindClassKey;
    if (root == HKEY_CURRENT_USER) return &FindUserKey;
    if (root == HKEY_LOCAL_MACHINE) return &FindSystemKey;
    return nullptr;
}

/// @return null for what is no open key; a root is open always
std::shared_ptr<const OpenKey> Find(HKEY handle) {
    if (const Finder find = FinderOf(handle)) return std::make_shared<OpenKey>(OpenKey{handle, {}, *find({})});
    OpenKeys& open = TheOpenKeys();
    const std::lock_guard lock(open.lock);
    const auto found = open.keys.find(handle);
    return found != open.keys.end() ? found->second : nullptr;
}

HKEY Remember(OpenKey key) {
    OpenKeys& open = TheOpenKeys();
    const std::lock_guard lock(open.lock);
    open.last += 4;
    const auto handle = reinterpret_cast<HKEY>(open.last);
    open.keys.emplace(handle, std::make_shared<OpenKey>(std::move(key)));
    return handle;
}

/// The parts of a name in GBK. Only whole characters are looked at: '\' may be the second byte of one.
void AppendParts(LPCSTR subKey, std::vector<std::string>& parts) {
    std::string part;
    for (const char character : text::GbkToUtf8(subKey != nullptr ? subKey : "")) {
        if (character != '\\') {
            part += character;
        } else if (!part.empty()) {
            parts.push_back(std::exchange(part, {}));
        }
    }
    if (!part.empty()) parts.push_back(part);
}

LSTATUS StoreText(const std::string& utf8, LPBYTE buffer, LPDWORD size) {
    if (size == nullptr) return buffer == nullptr ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    const std::string text = text::Utf8ToGbk(utf8);
    const auto needed = static_cast<DWORD>(text.size() + 1);
    const bool fits = buffer == nullptr || *size >= needed;
    if (buffer != nullptr && fits) std::memcpy(buffer, text.c_str(), needed);
    *size = needed;
    return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

LSTATUS StoreName(const std::string& utf8, LPSTR buffer, LPDWORD size) {
    const std::string name = text::Utf8ToGbk(utf8);
    if (*size <= name.size()) return ERROR_MORE_DATA;
    std::memcpy(buffer, name.c_str(), name.size() + 1);
    *size = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
}

}  // namespace

bool SameName(const std::string& first, const std::string& second) noexcept {
    return strcasecmp(first.c_str(), second.c_str()) == 0;
}

}  // namespace tk::registry

using namespace tk::registry;

LSTATUS RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD, REGSAM samDesired, PHKEY phkResult) {
    if (phkResult == nullptr) return ERROR_INVALID_PARAMETER;
    *phkResult = nullptr;
    const auto parent = Find(hKey);
    if (parent == nullptr) return ERROR_INVALID_HANDLE;
    if ((samDesired & KEY_SET_VALUE) != 0) return ERROR_ACCESS_DENIED;
    OpenKey key{parent->root, parent->name, {}};
    AppendParts(lpSubKey, key.name);
    auto content = FinderOf(key.root)(key.name);
    if (!content) return ERROR_FILE_NOT_FOUND;
    key.content = *std::move(content);
    *phkResult = Remember(std::move(key));
    return ERROR_SUCCESS;
}

LSTATUS RegOpenKeyA(HKEY hKey, LPCSTR lpSubKey, PHKEY phkResult) {
    return RegOpenKeyExA(hKey, lpSubKey, 0, KEY_READ, phkResult);
}

LSTATUS RegCloseKey(HKEY hKey) {
    if (FinderOf(hKey) != nullptr) return ERROR_SUCCESS;
    OpenKeys& open = TheOpenKeys();
    const std::lock_guard lock(open.lock);
    return open.keys.erase(hKey) != 0 ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LSTATUS RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD, LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData) {
    const auto key = Find(hKey);
    if (key == nullptr) return ERROR_INVALID_HANDLE;
    const std::string name = tk::text::GbkToUtf8(lpValueName != nullptr ? lpValueName : "");
    for (const Value& value : key->content.values) {
        if (!SameName(value.name, name)) continue;
        if (lpType != nullptr) *lpType = REG_SZ;
        return StoreText(value.text, lpData, lpcbData);
    }
    return ERROR_FILE_NOT_FOUND;
}

LSTATUS RegQueryValueA(HKEY hKey, LPCSTR lpSubKey, LPSTR lpData, PLONG lpcbData) {
    HKEY key = nullptr;
    LSTATUS result = RegOpenKeyExA(hKey, lpSubKey, 0, KEY_READ, &key);
    if (result != ERROR_SUCCESS) return result;
    DWORD size = lpcbData != nullptr && *lpcbData > 0 ? static_cast<DWORD>(*lpcbData) : 0;
    result = RegQueryValueExA(key, nullptr, nullptr, nullptr, reinterpret_cast<LPBYTE>(lpData),
                              lpcbData != nullptr ? &size : nullptr);
    if (lpcbData != nullptr) *lpcbData = static_cast<LONG>(size);
    RegCloseKey(key);
    return result;
}

LSTATUS RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName, LPDWORD, LPDWORD lpType,
                      LPBYTE lpData, LPDWORD lpcbData) {
    const auto key = Find(hKey);
    if (key == nullptr) return ERROR_INVALID_HANDLE;
    if (lpValueName == nullptr || lpcchValueName == nullptr) return ERROR_INVALID_PARAMETER;
    if (dwIndex >= key->content.values.size()) return ERROR_NO_MORE_ITEMS;
    const Value& value = key->content.values[dwIndex];
    if (const LSTATUS result = StoreName(value.name, lpValueName, lpcchValueName); result != ERROR_SUCCESS)
        return result;
    if (lpType != nullptr) *lpType = REG_SZ;
    return StoreText(value.text, lpData, lpcbData);
}

LSTATUS RegEnumKeyExA(HKEY hKey, DWORD dwIndex, LPSTR lpName, LPDWORD lpcchName, LPDWORD, LPSTR, LPDWORD, FILETIME*) {
    const auto key = Find(hKey);
    if (key == nullptr) return ERROR_INVALID_HANDLE;
    if (lpName == nullptr || lpcchName == nullptr) return ERROR_INVALID_PARAMETER;
    if (dwIndex >= key->content.subKeys.size()) return ERROR_NO_MORE_ITEMS;
    return StoreName(key->content.subKeys[dwIndex], lpName, lpcchName);
}
