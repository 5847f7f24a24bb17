// ado/odbc/file_identity.h - which file a connection to a file database was opened on, so that the connection is not
// used again for another file of the same name.
#pragma once

#include <sys/stat.h>

#include <string>

#include "win32/system/file_descriptor.h"

namespace tk::ado {

/// Threads: one at a time.
class FileIdentity {
public:
    /// Of a database without a file.
    FileIdentity() = default;

    /// @param path  as the driver names it; empty, or of a file that is not there: as without a file
    explicit FileIdentity(std::string path);

    bool IsKnown() const noexcept { return !path_.empty(); }

    /// False when the name leads to no file, or to another one.
    /// @param now  of a steady clock, in microseconds
    /// @note Most calls ask the file instead of walking the path, which takes less than half as long: the time of its
    ///       last change tells of every change of its own name. What leaves the file as it is may go unnoticed for a
    ///       millisecond: a folder above it that was renamed, something mounted over either of them.
    bool IsStillThere(long long now) noexcept;

private:
    bool WalkPath(long long now) noexcept;
    bool CanAskFile() const noexcept;

    std::string path_;
    system::FileDescriptor file_;  // only names it; none where the file cannot tell
    dev_t device_ = 0;
    ino_t number_ = 0;
    timespec changed_{};          // when the path was last walked
    long long askFileUntil_ = 0;  // 0: a change after that walk might have the same time
};

}  // namespace tk::ado
