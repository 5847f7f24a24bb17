#include <sys/stat.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "shlobj.h"
#include "tkwin32/text.h"
#include "win32/system/dialog_program.h"
#include "win32/system/file_names.h"

namespace tk::shell {
namespace {

std::optional<std::string> AskForFolder(const std::string& title) {
    if (auto outcome = system::RunDialog({"--file-selection", "--directory", "--title=" + title})) {
        if (outcome->exitCode != 0) return std::nullopt;
        if (outcome->output.ends_with('\n')) outcome->output.pop_back();
        return outcome->output;
    }
    if (!system::HasTerminal()) return std::nullopt;
    system::ShowOnTerminal(title + " ");
    return system::ReadFromTerminal();
}

/// @return the whole path; nothing for what is no folder
std::optional<std::string> FolderOf(const std::string& answer) {
    char path[PATH_MAX];
    struct stat state {};
    if (answer.empty() || realpath(answer.c_str(), path) == nullptr) return std::nullopt;
    if (stat(path, &state) != 0 || !S_ISDIR(state.st_mode)) return std::nullopt;
    return std::string(path);
}

/// One item with the path and its terminator, then the empty item that ends the list.
LPITEMIDLIST MakeList(const std::string& path) {
    const std::size_t item = sizeof(USHORT) + path.size() + 1;
    auto* bytes = static_cast<unsigned char*>(CoTaskMemAlloc(item + sizeof(USHORT)));
    if (bytes == nullptr) return nullptr;
    const auto size = static_cast<USHORT>(item);
    constexpr USHORT kEnd = 0;
    std::memcpy(bytes, &size, sizeof size);
    std::memcpy(bytes + sizeof size, path.c_str(), path.size() + 1);
    std::memcpy(bytes + item, &kEnd, sizeof kEnd);
    return reinterpret_cast<LPITEMIDLIST>(bytes);
}

bool StoreText(const std::string& utf8, LPSTR buffer) {
    const std::string text = system::FromFileSystem(utf8);
    if (text.size() >= MAX_PATH) return false;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return true;
}

}  // namespace
}  // namespace tk::shell

using namespace tk::shell;

LPITEMIDLIST SHBrowseForFolderA(BROWSEINFOA* lpbi) {
    if (lpbi == nullptr) return nullptr;
    const auto answer = AskForFolder(tk::system::ToFileSystem(lpbi->lpszTitle));
    const auto folder = answer ? FolderOf(*answer) : std::nullopt;
    if (!folder) return nullptr;
    if (lpbi->pszDisplayName != nullptr && !StoreText(folder->substr(folder->rfind('/') + 1), lpbi->pszDisplayName)) {
        lpbi->pszDisplayName[0] = 0;
    }
    return MakeList(*folder);
}

BOOL SHGetPathFromIDListA(LPCITEMIDLIST pidl, LPSTR pszPath) {
    if (pszPath == nullptr) return FALSE;
    pszPath[0] = 0;
    if (pidl == nullptr || pidl->mkid.cb <= sizeof(USHORT)) return FALSE;
    const auto* path = reinterpret_cast<const char*>(pidl) + sizeof(USHORT);
    return StoreText(std::string(path, strnlen(path, pidl->mkid.cb - sizeof(USHORT))), pszPath);
}
