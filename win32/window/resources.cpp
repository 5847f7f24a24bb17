#include "tkwin32/resources.h"

#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>

#include "tkwin32/menus.h"
#include "tkwin32/text.h"
#include "win32/system/file_names.h"
#include "win32/system/plain_file.h"
#include "win32/window/resource_script.h"
#include "winbase.h"

namespace tk::window {
namespace {

constexpr std::streamsize kLargestScript = 16 << 20;

/// One file as it was when it was read.
struct ScriptFile {
    std::string path;
    struct stat state {};
    ResourceScript script;
};

std::string ContentOf(const std::string& path) {
    if (!system::IsPlainFile(path)) return {};
    std::ifstream file(path, std::ios::binary);
    std::string content;
    for (char piece[4096]; file.read(piece, sizeof piece), file.gcount() > 0;) {
        content.append(piece, static_cast<std::size_t>(file.gcount()));
        if (static_cast<std::streamsize>(content.size()) > kLargestScript) return {};
    }
    return content;
}

std::string IncludeBeside(const std::string& name, void* folder) {
    return ContentOf(*static_cast<const std::string*>(folder) + name);
}

bool SameState(const struct stat& first, const struct stat& second) noexcept {
    return first.st_ino == second.st_ino && first.st_dev == second.st_dev && first.st_size == second.st_size &&
           first.st_mtim.tv_sec == second.st_mtim.tv_sec && first.st_mtim.tv_nsec == second.st_mtim.tv_nsec;
}

std::string ScriptPath(HINSTANCE module) {
    std::string path(1024, '\0');
    const DWORD length = GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size()));
    path.resize(length);
    return path.empty() ? path : system::ToFileSystem(path.c_str()) + ".rc";
}

/// @return null when the module has no script
std::shared_ptr<const ScriptFile> ScriptOf(HINSTANCE module) {
    static auto& lock = *new std::mutex;
    static auto& known = *new std::vector<std::shared_ptr<const ScriptFile>>;
    const std::string path = ScriptPath(module);
    struct stat state {};
    if (path.empty() || stat(path.c_str(), &state) != 0 || !S_ISREG(state.st_mode)) return nullptr;
    const std::lock_guard guard(lock);
    const auto before = std::ranges::find(known, path, [](const auto& file) { return file->path; });
    if (before != known.end() && SameState((*before)->state, state)) return *before;
    std::string folder = path.substr(0, path.rfind('/') + 1);
    auto file = std::make_shared<ScriptFile>();
    file->path = path;
    file->state = state;
    file->script = ParseResourceScript(ContentOf(path), &IncludeBeside, &folder);
    if (before != known.end()) known.erase(before);
    known.push_back(file);
    return file;
}

HMENU BuildMenu(const std::vector<MenuTemplate::Item>& items) {
    const HMENU menu = CreatePopupMenu();
    for (const MenuTemplate::Item& item : items) {
        const auto target =
            (item.flags & MF_POPUP) != 0 ? reinterpret_cast<UINT_PTR>(BuildMenu(item.items)) : item.command;
        AppendMenuA(menu, item.flags, target, item.text.c_str());
    }
    return menu;
}

std::string NameOf(LPCSTR name) {
    if (IS_INTRESOURCE(name)) return std::to_string(reinterpret_cast<ULONG_PTR>(name));
    std::string capitals = name;
    std::ranges::transform(capitals, capitals.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return capitals;
}

}  // namespace
}  // namespace tk::window

using namespace tk::window;

int LoadStringA(HINSTANCE hInstance, UINT uID, LPSTR lpBuffer, int cchBufferMax) {
    if (lpBuffer == nullptr || cchBufferMax <= 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    lpBuffer[0] = 0;
    const auto file = ScriptOf(hInstance);
    const std::string* text = nullptr;
    if (file != nullptr) {
        const auto found = file->script.texts.find(uID);
        if (found != file->script.texts.end()) text = &found->second;
    }
    if (text == nullptr) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return 0;
    }
    const std::size_t length = tk::text::WholeGbkPrefix(*text, static_cast<std::size_t>(cchBufferMax) - 1);
    std::memcpy(lpBuffer, text->data(), length);
    lpBuffer[length] = 0;
    return static_cast<int>(length);
}

HMENU LoadMenuA(HINSTANCE hInstance, LPCSTR lpMenuName) {
    const auto file = ScriptOf(hInstance);
    if (file != nullptr) {
        const auto found = file->script.menus.find(NameOf(lpMenuName));
        if (found != file->script.menus.end()) return BuildMenu(found->second.items);
    }
    SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return nullptr;
}
