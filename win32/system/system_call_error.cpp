#include "win32/system/system_call_error.h"

#include <errno.h>

#include "winbase.h"

namespace tk::system {
namespace {

constexpr struct {
    int error;
    DWORD code;
} kCodes[] = {
    {0, NO_ERROR},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {ELOOP, ERROR_PATH_NOT_FOUND},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EBADF, ERROR_INVALID_HANDLE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {ENOEXEC, ERROR_BAD_FORMAT},
    {EROFS, ERROR_WRITE_PROTECT},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EEXIST, ERROR_ALREADY_EXISTS},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EPIPE, ERROR_BROKEN_PIPE},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EFBIG, ERROR_DISK_FULL},
    {ENAMETOOLONG, ERROR_BUFFER_OVERFLOW},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {EBUSY, ERROR_BUSY},
    {ETIMEDOUT, ERROR_TIMEOUT},
    {EFAULT, ERROR_NOACCESS},
    {ENOSYS, ERROR_NOT_SUPPORTED},
    {EOPNOTSUPP, ERROR_NOT_SUPPORTED},
};

}  // namespace

DWORD ErrorFromErrno(int error) noexcept {
    for (const auto& row : kCodes) {
        if (row.error == error) return row.code;
    }
    return ERROR_GEN_FAILURE;
}

bool FailCall() noexcept {
    SetLastError(ErrorFromErrno(errno));
    return false;
}

}  // namespace tk::system
