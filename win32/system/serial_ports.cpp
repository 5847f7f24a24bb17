#include "win32/system/serial_ports.h"

#include <strings.h>
#include <sys/stat.h>

#include <charconv>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include "win32/system/plain_file.h"

namespace tk::system {
namespace {

constexpr int kLastPort = 256;
constexpr const char* kSystemMap = "/etc/tkkernel/ports.conf";

/// 1 to 256; 0 for a name that is no port's.
int PortNumber(std::string_view name) noexcept {
    constexpr std::string_view kDevices = "\\\\.\\";
    if (name.starts_with(kDevices)) name.remove_prefix(kDevices.size());
    if (name.size() < 4 || name.size() > 6 || strncasecmp(name.data(), "COM", 3) != 0) return 0;
    name.remove_prefix(3);
    int number = 0;
    const auto read = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool whole = read.ec == std::errc() && read.ptr == name.data() + name.size() && name[0] != '0';
    return whole && number <= kLastPort ? number : 0;
}

std::vector<std::string> MapPaths() {
    std::vector<std::string> paths;
    // A program that runs with more rights than its user does not open what the user names.
    if (const char* named = secure_getenv("TKKERNEL_PORTS"); named != nullptr && named[0] != 0)
        paths.emplace_back(named);
    const char* config = secure_getenv("XDG_CONFIG_HOME");
    const char* home = secure_getenv("HOME");
    if (config != nullptr && config[0] == '/') {
        paths.push_back(std::string(config) + "/tkkernel/ports.conf");
    } else if (home != nullptr && home[0] == '/') {
        paths.push_back(std::string(home) + "/.config/tkkernel/ports.conf");
    }
    paths.emplace_back(kSystemMap);
    return paths;
}

/// What the first map that is there says about a port; nothing when it says nothing.
std::optional<std::string> MappedDevice(int number) {
    for (const std::string& path : MapPaths()) {
        if (!IsPlainFile(path)) continue;
        std::ifstream file(path);
        if (!file) continue;
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string port;
            std::string device;
            if (!(words >> port >> device) || PortNumber(port) != number) continue;
            if (device == "-") return std::string();
            if (device[0] == '/') return device;
        }
        return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> PortDevice(std::string_view name) {
    const int number = PortNumber(name);
    if (number == 0) return std::nullopt;
    if (auto mapped = MappedDevice(number)) return mapped;
    return "/dev/ttyS" + std::to_string(number - 1);
}

bool HasPort(const std::string& device) {
    struct stat state {};
    if (stat(device.c_str(), &state) != 0 || !S_ISCHR(state.st_mode)) return false;
    char real[PATH_MAX];
    const std::string path = realpath(device.c_str(), real) != nullptr ? real : device;
    // The kernel tells the kind of chip behind a port; 0 is none.
    std::ifstream kind("/sys/class/tty/" + path.substr(path.rfind('/') + 1) + "/type");
    int chip = 0;
    return !(kind >> chip) || chip != 0;
}

}  // namespace tk::system
