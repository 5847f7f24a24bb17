#include "tkwin32/paths.h"

#include <errno.h>

#include <string>
#include <string_view>

#include "tkwin32/text.h"

namespace tk::system {
namespace {

struct PathParts {
    std::string_view folder;  // with its '/'
    std::string_view name;
    std::string_view extension;  // with its point
};

// '/' and '.' are below 0x40 and never the second byte of a character, so both may be looked for as bytes.
PathParts Split(std::string_view path) noexcept {
    const std::string_view folder = path.substr(0, path.rfind('/') + 1);
    const std::string_view last = path.substr(folder.size());
    const std::size_t point = std::min(last.rfind('.'), last.size());
    return {folder, last.substr(0, point), last.substr(point)};
}

void StoreCut(std::string_view part, char* target, std::size_t size) noexcept {
    if (target == nullptr || size == 0) return;
    const std::size_t length = text::WholeGbkPrefix(part, size - 1);
    part.copy(target, length);
    target[length] = 0;
}

struct Target {
    std::string_view part;
    char* buffer;
    SIZE_T size;
};

}  // namespace
}  // namespace tk::system

using namespace tk::system;

void _splitpath(const char* path, char* drive, char* dir, char* fname, char* ext) {
    const PathParts parts = Split(path != nullptr ? path : "");
    StoreCut({}, drive, _MAX_DRIVE);
    StoreCut(parts.folder, dir, _MAX_DIR);
    StoreCut(parts.name, fname, _MAX_FNAME);
    StoreCut(parts.extension, ext, _MAX_EXT);
}

int _splitpath_s(const char* path, char* drive, SIZE_T driveSize, char* dir, SIZE_T dirSize, char* fname,
                 SIZE_T fnameSize, char* ext, SIZE_T extSize) {
    const PathParts parts = Split(path != nullptr ? path : "");
    const Target targets[] = {
        {{}, drive, driveSize},
        {parts.folder, dir, dirSize},
        {parts.name, fname, fnameSize},
        {parts.extension, ext, extSize},
    };
    int result = path != nullptr ? 0 : EINVAL;
    for (const Target& target : targets) {
        if ((target.buffer == nullptr) != (target.size == 0)) result = EINVAL;
    }
    for (const Target& target : targets) {
        if (result == 0 && target.buffer != nullptr && target.part.size() >= target.size) result = ERANGE;
    }
    for (const Target& target : targets)
        StoreCut(result == 0 ? target.part : "", target.buffer, target.size);
    return result;
}

void _makepath(char* path, const char* drive, const char* dir, const char* fname, const char* ext) {
    std::string made;
    if (drive != nullptr && drive[0] != 0) made += {drive[0], ':'};
    if (dir != nullptr && dir[0] != 0) {
        made += dir;
        if (made.back() != '/') made += '/';
    }
    if (fname != nullptr) made += fname;
    if (ext != nullptr && ext[0] != 0) {
        if (ext[0] != '.') made += '.';
        made += ext;
    }
    StoreCut(made, path, _MAX_PATH);
}
