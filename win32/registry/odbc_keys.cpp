// The ODBC data sources as keys: Software\ODBC\ODBC.INI\ODBC Data Sources, one value for each.
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "win32/registry/registry_key.h"
#include "win32/system/plain_file.h"

namespace tk::registry {
namespace {

constexpr const char* kPath[] = {"Software", "ODBC", "ODBC.INI", "ODBC Data Sources"};

std::string Trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// Sections of the file that describe the others rather than a data source.
bool IsDataSource(const std::string& section) {
    return !section.empty() && !SameName(section, "ODBC Data Sources") && !SameName(section, "ODBC");
}

/// The sections of an odbc.ini with their drivers, each name once. A file that is none has none.
std::vector<Value> ReadDataSources(const std::string& path) {
    std::vector<Value> sources;
    if (!system::IsPlainFile(path)) return sources;
    std::ifstream file(path, std::ios::binary);
    bool inSource = false;
    for (std::string line; std::getline(file, line);) {
        line = Trimmed(line);
        if (line.starts_with('[')) {
            const auto end = line.find(']');
            const std::string section = end == std::string::npos ? "" : Trimmed(line.substr(1, end - 1));
            inSource = IsDataSource(section) &&
                       std::ranges::none_of(sources, [&](const Value& known) { return SameName(known.name, section); });
            if (inSource) sources.push_back({section, {}});
            continue;
        }
        const auto equals = line.find('=');
        if (!inSource || equals == std::string::npos || line[0] == ';' || line[0] == '#') continue;
        if (SameName(Trimmed(line.substr(0, equals)), "Driver")) sources.back().text = Trimmed(line.substr(equals + 1));
    }
    return sources;
}

std::string HomeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') return home;
    char buffer[4096];
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found);
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

// The driver manager's rules: ODBCINI names the user's file, ODBCSYSINI the folder of the system's.
std::string UserFile() {
    if (const char* named = std::getenv("ODBCINI"); named != nullptr && named[0] != 0) return named;
    return HomeFolder() + "/.odbc.ini";
}
std::string SystemFile() {
    const char* folder = std::getenv("ODBCSYSINI");
    return std::string(folder != nullptr && folder[0] != 0 ? folder : "/etc") + "/odbc.ini";
}

std::optional<Key> FindKey(KeyName name, const std::string& file) {
    if (name.size() > std::size(kPath)) return std::nullopt;
    if (!std::equal(name.begin(), name.end(), kPath, &SameName)) return std::nullopt;
    if (name.size() < std::size(kPath)) return Key{{kPath[name.size()]}, {}};
    return Key{{}, ReadDataSources(file)};
}

}  // namespace

std::optional<Key> FindUserKey(KeyName name) {
    return FindKey(name, UserFile());
}
std::optional<Key> FindSystemKey(KeyName name) {
    return FindKey(name, SystemFile());
}

}  // namespace tk::registry
