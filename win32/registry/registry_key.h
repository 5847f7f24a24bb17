// What one key of the registry shows, and who knows it.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tk::registry {

struct Value {
    std::string name;  // UTF-8; empty for the key's own value
    std::string text;  // UTF-8
};

struct Key {
    std::vector<std::string> subKeys;
    std::vector<Value> values;
};

/// The parts of a key's name behind its root. In either case.
using KeyName = std::span<const std::string>;

bool SameName(const std::string& first, const std::string& second) noexcept;

/// HKEY_CLASSES_ROOT: the class registry.
std::optional<Key> FindClassKey(KeyName name);

/// HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE: the ODBC data sources of the user or of the system.
std::optional<Key> FindUserKey(KeyName name);
std::optional<Key> FindSystemKey(KeyName name);

}  // namespace tk::registry
