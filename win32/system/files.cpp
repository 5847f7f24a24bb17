#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>

#include "win32/system/file_names.h"
#include "win32/system/system_call_error.h"
#include "winbase.h"

namespace tk::system {
namespace {

/// What a look at a file with OF_EXIST finds. @return the error
DWORD LookFor(const std::string& path, UINT style) {
    struct stat state {};
    if (stat(path.c_str(), &state) != 0) return ErrorFromErrno(errno);
    if (S_ISDIR(state.st_mode)) return ERROR_ACCESS_DENIED;
    // Asked of the rights, not by opening: opening a pipe or a device would already do something.
    const UINT mode = style & 0x3;
    const int rights = (mode != OF_WRITE ? R_OK : 0) | (mode != OF_READ ? W_OK : 0);
    return faccessat(AT_FDCWD, path.c_str(), rights, AT_EACCESS) == 0 ? NO_ERROR : ErrorFromErrno(errno);
}

DWORD AttributesOf(const struct stat& state, const std::string& path) {
    DWORD attributes = 0;
    if (S_ISDIR(state.st_mode)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
    if (S_ISCHR(state.st_mode) || S_ISBLK(state.st_mode)) attributes |= FILE_ATTRIBUTE_DEVICE;
    if ((state.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) attributes |= FILE_ATTRIBUTE_READONLY;
    const std::string name = path.substr(path.rfind('/') + 1);
    if (name.size() > 1 && name[0] == '.' && name != "..") attributes |= FILE_ATTRIBUTE_HIDDEN;
    return attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
}

DWORD StorePath(const std::string& path, DWORD size, LPSTR buffer) {
    if (buffer == nullptr || size <= path.size()) return static_cast<DWORD>(path.size() + 1);
    std::memcpy(buffer, path.c_str(), path.size() + 1);
    return static_cast<DWORD>(path.size());
}

}  // namespace
}  // namespace tk::system

using namespace tk::system;

HFILE OpenFile(LPCSTR lpFileName, LPOFSTRUCT lpReOpenBuff, UINT uStyle) {
    DWORD error = ERROR_NOT_SUPPORTED;
    if (lpFileName == nullptr || lpReOpenBuff == nullptr) {
        error = ERROR_INVALID_PARAMETER;
    } else if ((uStyle & ~0x3u) == OF_EXIST) {
        error = LookFor(ToFileSystem(lpFileName), uStyle);
        *lpReOpenBuff = {};
        lpReOpenBuff->cBytes = sizeof(OFSTRUCT);
        lpReOpenBuff->nErrCode = static_cast<WORD>(error);
        const std::string_view name = lpFileName;
        name.copy(lpReOpenBuff->szPathName, tk::text::WholeGbkPrefix(name, OFS_MAXPATHNAME - 1));
    }
    if (error == NO_ERROR) return 1;
    SetLastError(error);
    return HFILE_ERROR;
}

DWORD GetFileAttributesA(LPCSTR lpFileName) {
    const std::string path = ToFileSystem(lpFileName);
    struct stat state {};
    if (stat(path.c_str(), &state) == 0) return AttributesOf(state, path);
    FailCall();
    return INVALID_FILE_ATTRIBUTES;
}

BOOL DeleteFileA(LPCSTR lpFileName) {
    const std::string path = ToFileSystem(lpFileName);
    return unlink(path.c_str()) == 0 || FailCall();
}

BOOL CreateDirectoryA(LPCSTR lpPathName, LPSECURITY_ATTRIBUTES) {
    const std::string path = ToFileSystem(lpPathName);
    if (mkdir(path.c_str(), 0777) == 0) return TRUE;
    if (errno == ENOENT) errno = ENOTDIR;  // what is missing is the way to it
    return FailCall();
}

BOOL RemoveDirectoryA(LPCSTR lpPathName) {
    const std::string path = ToFileSystem(lpPathName);
    if (rmdir(path.c_str()) == 0) return TRUE;
    if (errno != ENOTDIR) return FailCall();
    SetLastError(ERROR_DIRECTORY);
    return FALSE;
}

DWORD GetTempPathA(DWORD nBufferLength, LPSTR lpBuffer) {
    const char* named = std::getenv("TMPDIR");
    std::string path = named != nullptr && named[0] == '/' ? FromFileSystem(named) : "/tmp";
    if (path.back() != '/') path += '/';
    return StorePath(path, nBufferLength, lpBuffer);
}

DWORD GetCurrentDirectoryA(DWORD nBufferLength, LPSTR lpBuffer) {
    char path[PATH_MAX];
    if (getcwd(path, sizeof path) != nullptr) return StorePath(FromFileSystem(path), nBufferLength, lpBuffer);
    FailCall();
    return 0;
}
