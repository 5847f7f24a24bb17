#include "win32/system/modules.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <map>
#include <mutex>

#include "win32/system/file_descriptor.h"
#include "win32/system/file_names.h"
#include "win32/system/system_call_error.h"
#include "winbase.h"

namespace tk::system {
namespace {

/// Handles that were given out, with the loads to be taken back: the loader itself may not be asked about any other.
struct Modules {
    std::mutex lock;
    std::map<void*, int> loads;
};

Modules& TheModules() {
    static auto& modules = *new Modules;
    return modules;
}

bool IsKnown(HMODULE module) {
    Modules& modules = TheModules();
    const std::lock_guard lock(modules.lock);
    return modules.loads.contains(module);
}

HMODULE Remember(void* module, int loads) {
    Modules& modules = TheModules();
    const std::lock_guard lock(modules.lock);
    modules.loads[module] += loads;
    return static_cast<HMODULE>(module);
}

/// As the name stands, then with ".so" where it has no extension.
void* Open(const std::string& name, int mode) {
    if (void* module = dlopen(name.c_str(), mode)) return module;
    if (name.find('.', name.rfind('/') + 1) != std::string::npos) return nullptr;
    return dlopen((name + ".so").c_str(), mode);
}

std::string ModulePath(HMODULE module) {
    link_map* map = nullptr;
    if (dlinfo(module, RTLD_DI_LINKMAP, &map) != 0 || map == nullptr) return {};
    return map->l_name[0] != 0 ? map->l_name : ProgramPath();
}

}  // namespace

std::string ProgramPath() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0) return {};
    std::string_view name(path, static_cast<std::size_t>(length));
    // The kernel marks a program whose file was replaced or removed while it runs.
    constexpr std::string_view kDeleted = " (deleted)";
    if (name.ends_with(kDeleted) && access(std::string(name).c_str(), F_OK) != 0) name.remove_suffix(kDeleted.size());
    return std::string(name);
}

DWORD WhyNotLoaded(const std::string& path) {
    // A bare name was looked for by the loader, which passes over what does not fit.
    if (path.find('/') == std::string::npos || access(path.c_str(), F_OK) != 0) return ERROR_MOD_NOT_FOUND;
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    ElfW(Ehdr) header{};
    ElfW(Ehdr) own{};
    // The vdso is the one image that is always there to compare with.
    const auto* image = reinterpret_cast<const void*>(getauxval(AT_SYSINFO_EHDR));
    if (image != nullptr) std::memcpy(&own, image, sizeof own);
    const bool whole = file && read(file.Get(), &header, sizeof header) == static_cast<ssize_t>(sizeof header) &&
                       std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
    const bool fits = whole && image != nullptr && header.e_ident[EI_CLASS] == own.e_ident[EI_CLASS] &&
                      header.e_ident[EI_DATA] == own.e_ident[EI_DATA] && header.e_machine == own.e_machine &&
                      header.e_type == ET_DYN;
    return fits ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT;
}

}  // namespace tk::system

using namespace tk::system;

HMODULE LoadLibraryA(LPCSTR lpLibFileName) {
    if (lpLibFileName == nullptr || lpLibFileName[0] == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::string name = ToFileSystem(lpLibFileName);
    if (void* module = Open(name, RTLD_NOW | RTLD_LOCAL)) return Remember(module, 1);
    SetLastError(WhyNotLoaded(name));
    return nullptr;
}

BOOL FreeLibrary(HMODULE hLibModule) {
    Modules& modules = TheModules();
    {
        const std::lock_guard lock(modules.lock);
        const auto found = modules.loads.find(hLibModule);
        if (found == modules.loads.end() || found->second == 0) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        if (--found->second == 0) modules.loads.erase(found);
    }
    return dlclose(hLibModule) == 0;  // with no lock held: it runs the module's own ending
}

FARPROC GetProcAddress(HMODULE hModule, LPCSTR lpProcName) {
    if (!IsKnown(hModule)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    // A small number instead of a name asks by ordinal, which shared objects do not have.
    const bool ordinal = reinterpret_cast<UINT_PTR>(lpProcName) <= 0xFFFF;
    void* address = ordinal ? nullptr : dlsym(hModule, lpProcName);
    if (address == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
    return reinterpret_cast<FARPROC>(address);
}

HMODULE GetModuleHandleA(LPCSTR lpModuleName) {
    void* module =
        lpModuleName == nullptr ? dlopen(nullptr, RTLD_NOW) : Open(ToFileSystem(lpModuleName), RTLD_NOW | RTLD_NOLOAD);
    if (module == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    dlclose(module);  // the handle is not counted
    return Remember(module, 0);
}

DWORD GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize) {
    if (hModule != nullptr && !IsKnown(hModule)) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return 0;
    }
    const std::string name = FromFileSystem(hModule == nullptr ? ProgramPath() : ModulePath(hModule));
    if (name.empty() || lpFilename == nullptr) {
        SetLastError(name.empty() ? ERROR_MOD_NOT_FOUND : ERROR_INVALID_PARAMETER);
        return 0;
    }
    const std::size_t length = nSize != 0 ? tk::text::WholeGbkPrefix(name, nSize - 1) : 0;
    if (nSize != 0) {
        std::memcpy(lpFilename, name.data(), length);
        lpFilename[length] = 0;
    }
    if (nSize > name.size()) return static_cast<DWORD>(length);
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return nSize;
}
