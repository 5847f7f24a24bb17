// The class registry as keys: CLSID\{...}\InprocServer32, CLSID\{...}\ProgID and ProgID\CLSID.
#include <algorithm>

#include "win32/registry/registry_key.h"
#include "win32/system/class_registry.h"
#include "win32/system/guid_text.h"

namespace tk::registry {
namespace {

constexpr char kClasses[] = "CLSID";
constexpr char kServer[] = "InprocServer32";
constexpr char kProgId[] = "ProgID";

std::string BracedText(REFCLSID clsid) {
    std::string text(system::kGuidDigits + 2, '{');
    system::WriteGuid(clsid, text.data() + 1, system::kUpperDigits);
    text.back() = '}';
    return text;
}

Key OwnValue(std::string text) {
    return {{}, {{std::string(), std::move(text)}}};
}

Key AllNames() {
    Key key{{kClasses}, {}};
    for (const auto& entry : system::AllClasses()) {
        if (!entry.progId.empty()) key.subKeys.push_back(entry.progId);
    }
    return key;
}

Key AllIdentifiers() {
    Key key;
    for (const auto& entry : system::AllClasses())
        key.subKeys.push_back(BracedText(entry.clsid));
    return key;
}

/// @param name  what follows the braced identifier
std::optional<Key> ClassKey(const system::RegisteredClass& entry, KeyName name) {
    if (name.empty()) {
        Key key{{kServer}, {}};
        if (!entry.progId.empty()) key.subKeys.emplace_back(kProgId);
        return key;
    }
    if (name.size() > 1) return std::nullopt;
    if (SameName(name[0], kServer)) return OwnValue(system::ServerPath(entry.server));
    if (SameName(name[0], kProgId) && !entry.progId.empty()) return OwnValue(entry.progId);
    return std::nullopt;
}

std::optional<Key> ProgIdKey(KeyName name) {
    const auto clsid = system::FindProgId(name[0]);
    if (!clsid) return std::nullopt;
    if (name.size() == 1) return Key{{kClasses}, {}};
    return name.size() == 2 && SameName(name[1], kClasses) ? std::optional(OwnValue(BracedText(*clsid))) : std::nullopt;
}

}  // namespace

std::optional<Key> FindClassKey(KeyName name) {
    if (name.empty()) return AllNames();
    if (!SameName(name[0], kClasses)) return ProgIdKey(name);
    if (name.size() == 1) return AllIdentifiers();
    const auto clsid = system::ParseBracedGuid(std::string_view(name[1]));
    const auto entry = clsid ? system::FindClass(*clsid) : std::nullopt;
    return entry ? ClassKey(*entry, name.subspan(2)) : std::nullopt;
}

}  // namespace tk::registry
