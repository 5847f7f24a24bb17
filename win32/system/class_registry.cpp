#include "win32/system/class_registry.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <vector>

#include "win32/system/guid_text.h"
#include "windef.h"

namespace tk::system {
namespace {

constexpr GUID AdoClass(ULONG first) noexcept {
    return {first, 0, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
}

constexpr GUID DataLinkClass(ULONG first) noexcept {
    return {first, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
}

struct BuiltInClass {
    CLSID clsid;
    const char* progId;
    const char* server;
};

constexpr BuiltInClass kBuiltInClasses[] = {
    {AdoClass(0x00000514), "ADODB.Connection", "libtkado.so"},
    {AdoClass(0x00000507), "ADODB.Command", "libtkado.so"},
    {AdoClass(0x00000535), "ADODB.Recordset", "libtkado.so"},
    {AdoClass(0x0000050B), "ADODB.Parameter", "libtkado.so"},
    {DataLinkClass(0x2206CDB2), "DataLinks", kThisLibrary},
    {DataLinkClass(0x2206CDB0), "MSDASC.MSDAINITIALIZE", kThisLibrary},
    {{0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}}, "lnkfile", kThisLibrary},
};

constexpr const char* kSystemFile = "/etc/tkkernel/classes.conf";

/// One file as it was when it was read.
struct ClassFile {
    std::string path;
    struct stat state {};
    bool found = false;
    std::vector<RegisteredClass> classes;
};
using ClassFiles = std::vector<std::shared_ptr<const ClassFile>>;

std::string_view Trimmed(std::string_view text) noexcept {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string_view TakeWord(std::string_view& rest) noexcept {
    const auto end = std::min(rest.find_first_of(" \t"), rest.size());
    const auto word = rest.substr(0, end);
    rest = Trimmed(rest.substr(end));
    return word;
}

/// "{class identifier} ProgID server"; "-" stands for no ProgID, '#' opens a comment line. Anything else is no class.
std::optional<RegisteredClass> ParseLine(std::string_view line, const std::string& folder) {
    std::string_view rest = Trimmed(line);
    const auto clsid = ParseBracedGuid(TakeWord(rest));
    const auto progId = TakeWord(rest);
    if (!clsid || rest.empty()) return std::nullopt;
    RegisteredClass entry{*clsid, progId == "-" ? "" : std::string(progId), std::string(rest)};
    const bool relative = rest.front() != '/' && rest.find('/') != std::string_view::npos;
    if (relative) entry.server.insert(0, folder);
    return entry;
}

bool SameState(const struct stat& first, const struct stat& second) noexcept {
    return first.st_ino == second.st_ino && first.st_dev == second.st_dev && first.st_size == second.st_size &&
           first.st_mtim.tv_sec == second.st_mtim.tv_sec && first.st_mtim.tv_nsec == second.st_mtim.tv_nsec;
}

/// The file as it is now: the given reading when nothing changed since.
std::shared_ptr<const ClassFile> Read(const std::string& path, std::shared_ptr<const ClassFile> known) {
    struct stat state {};
    const bool found = stat(path.c_str(), &state) == 0 && S_ISREG(state.st_mode);
    if (known != nullptr && known->found == found && (!found || SameState(known->state, state))) return known;
    auto file = std::make_shared<ClassFile>();
    file->path = path;
    file->state = state;
    file->found = found;
    if (!found) return file;
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    std::ifstream lines(path);
    for (std::string line; std::getline(lines, line);) {
        if (auto entry = ParseLine(line, folder)) file->classes.push_back(*std::move(entry));
    }
    return file;
}

/// Files in the order they are asked: the environment's, the user's, the system's.
std::vector<std::string> FilePaths() {
    std::vector<std::string> paths;
    // A program that runs with more rights than its user does not load what the user names.
    if (const char* list = secure_getenv("TKKERNEL_CLASSES"); list != nullptr) {
        std::string_view rest = list;
        while (!rest.empty()) {
            const auto end = std::min(rest.find(':'), rest.size());
            if (end != 0) paths.emplace_back(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    const char* config = secure_getenv("XDG_CONFIG_HOME");
    const char* home = secure_getenv("HOME");
    if (config != nullptr && config[0] == '/') {
        paths.push_back(std::string(config) + "/tkkernel/classes.conf");
    } else if (home != nullptr && home[0] == '/') {
        paths.push_back(std::string(home) + "/.config/tkkernel/classes.conf");
    }
    paths.emplace_back(kSystemFile);
    return paths;
}

ClassFiles CurrentFiles() {
    static auto& lock = *new std::mutex;
    static auto& known = *new ClassFiles;
    const std::vector<std::string> paths = FilePaths();
    const std::lock_guard guard(lock);
    ClassFiles files;
    for (const std::string& path : paths) {
        const auto before = std::ranges::find(known, path, [](const auto& file) { return file->path; });
        files.push_back(Read(path, before == known.end() ? nullptr : *before));
    }
    known = files;
    return files;
}

constexpr char Lower(char character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
}

bool SameName(std::string_view wanted, std::string_view registered) noexcept {
    return std::ranges::equal(wanted, registered,
                              [](char first, char second) { return Lower(first) == Lower(second); });
}

/// "ADODB.Recordset.2.8" without ".2.8"; a name without a tail as it is.
std::string_view WithoutVersion(std::string_view name) noexcept {
    for (int parts = 0; parts < 2; ++parts) {
        const auto point = name.rfind('.');
        if (point == std::string_view::npos || point == 0 || point + 1 == name.size()) break;
        if (name.find_first_not_of("0123456789", point + 1) != std::string_view::npos) break;
        name = name.substr(0, point);
    }
    return name;
}

std::optional<CLSID> FindExactProgId(const ClassFiles& files, std::string_view progId) {
    for (const auto& file : files) {
        for (const RegisteredClass& entry : file->classes) {
            if (!entry.progId.empty() && SameName(progId, entry.progId)) return entry.clsid;
        }
    }
    for (const BuiltInClass& entry : kBuiltInClasses) {
        if (SameName(progId, entry.progId)) return entry.clsid;
    }
    return std::nullopt;
}

}  // namespace

std::optional<RegisteredClass> FindClass(REFCLSID clsid) {
    for (const auto& file : CurrentFiles()) {
        const auto found = std::ranges::find(file->classes, clsid, &RegisteredClass::clsid);
        if (found != file->classes.end()) return *found;
    }
    for (const BuiltInClass& entry : kBuiltInClasses) {
        if (entry.clsid == clsid) return RegisteredClass{clsid, entry.progId, entry.server};
    }
    return std::nullopt;
}

std::vector<RegisteredClass> AllClasses() {
    std::vector<RegisteredClass> classes;
    const auto add = [&](const RegisteredClass& entry) {
        if (std::ranges::find(classes, entry.clsid, &RegisteredClass::clsid) == classes.end()) classes.push_back(entry);
    };
    for (const auto& file : CurrentFiles())
        std::ranges::for_each(file->classes, add);
    for (const BuiltInClass& entry : kBuiltInClasses)
        add({entry.clsid, entry.progId, entry.server});
    return classes;
}

std::optional<CLSID> FindProgId(std::string_view progId) {
    const ClassFiles files = CurrentFiles();
    if (const auto exact = FindExactProgId(files, progId)) return exact;
    const auto plain = WithoutVersion(progId);
    return plain == progId ? std::nullopt : FindExactProgId(files, plain);
}

std::string ServerPath(const std::string& server) {
    Dl_info own{};
    if (server.find('/') != std::string::npos || dladdr(kBuiltInClasses, &own) == 0 || own.dli_fname == nullptr) {
        return server;
    }
    const std::string library = own.dli_fname;
    const std::string beside = library.substr(0, library.rfind('/') + 1) + server;
    return beside.find('/') != std::string::npos && access(beside.c_str(), R_OK) == 0 ? beside : server;
}

}  // namespace tk::system
