#include "ado/persist/file_calls.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tk::ado {
namespace {

int RenameToNew(const char* from, const char* to) {
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    // The file system cannot do it in one step: a second name never replaces a first.
    if (::link(from, to) != 0) return -1;
    return ::unlink(from);
}

}  // namespace

FileCalls& Files() noexcept {
    static FileCalls calls = {
        [](const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); },
        ::write,
        ::ftruncate,
        ::fchmod,
        ::fsync,
        ::close,
        ::rename,
        RenameToNew,
        ::unlink,
    };
    return calls;
}

}  // namespace tk::ado
