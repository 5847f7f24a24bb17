// ado/persist/file_calls.h - the seam in front of the calls that put a file in place, so that a test can fail any of
// them.
#pragma once

#include <sys/types.h>

#include <cstddef>

namespace tk::ado {

struct FileCalls {
    int (*open)(const char* path, int flags, mode_t mode);
    ssize_t (*write)(int file, const void* data, std::size_t size);
    int (*truncate)(int file, off_t size);
    int (*changeMode)(int file, mode_t mode);
    int (*sync)(int file);
    int (*close)(int file);
    int (*rename)(const char* from, const char* to);
    int (*renameToNew)(const char* from, const char* to);  // EEXIST when there is a file already
    int (*remove)(const char* path);
};

/// The system's own calls until somebody else's are put in place.
FileCalls& Files() noexcept;

}  // namespace tk::ado
