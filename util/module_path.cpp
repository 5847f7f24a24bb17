#include "util/module_path.h"

#include <stdlib.h>

#include <algorithm>

#include "util/text.h"

namespace tk::util {
namespace {

constexpr DWORD kPathLimit = 512;

template <std::size_t Size>
void Store(char (&target)[Size], std::string_view text) {
    const std::string_view stored = WholeCharacters(text, Size - 1);
    *std::copy(stored.begin(), stored.end(), target) = '\0';
}

}  // namespace

void SplitPath(const char* path, _tagPATHITEM& item) {
    // The platform's own split knows how paths look here; each of its parts may be as long as the path.
    char drive[_MAX_DRIVE] = {};
    char folder[kPathLimit] = {};
    char name[kPathLimit] = {};
    char extension[kPathLimit] = {};
    _splitpath_s(path, drive, sizeof(drive), folder, sizeof(folder), name, sizeof(name), extension, sizeof(extension));
    Store(item.szFullPath, path);
    Store(item.szDrive, drive);
    Store(item.szDir, folder);
    Store(item.szFileName, name);
    Store(item.szExt, extension);
    Store(item.szHome, View(CString(drive) + folder));
}

}  // namespace tk::util

int GetAppName(_tagPATHITEM* pItem) {
    if (pItem == nullptr) return 0;
    pItem->szFullPath[0] = '\0';
    char path[tk::util::kPathLimit] = {};
    if (GetModuleFileNameA(nullptr, path, sizeof(path)) == 0) return 0;
    path[sizeof(path) - 1] = '\0';
    tk::util::SplitPath(path, *pItem);
    return 1;
}
