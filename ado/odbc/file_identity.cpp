#include "ado/odbc/file_identity.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <utility>

namespace tk::ado {
namespace {

constexpr long long kTrustedMicroseconds = 1000;

/// File systems whose rename sets the time of change of the file. ext2 and ext3 have the number of ext4.
constexpr long kExact[] = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC, TMPFS_MAGIC};

bool IsSame(const timespec& first, const timespec& second) noexcept {
    return first.tv_sec == second.tv_sec && first.tv_nsec == second.tv_nsec;
}

bool IsBefore(const timespec& first, const timespec& second) noexcept {
    return first.tv_sec < second.tv_sec || (first.tv_sec == second.tv_sec && first.tv_nsec < second.tv_nsec);
}

}  // namespace

FileIdentity::FileIdentity(std::string path) : path_(std::move(path)) {
    struct stat status = {};
    if (path_.empty() || stat(path_.c_str(), &status) != 0) {
        path_.clear();
        return;
    }
    device_ = status.st_dev;
    number_ = status.st_ino;
    // Closing any other descriptor of a file would drop the locks that this process holds on it.
    file_ = system::FileDescriptor(open(path_.c_str(), O_PATH | O_CLOEXEC));
    if (!CanAskFile()) file_ = system::FileDescriptor();
}

/// Where no link is part of the path, which could come to lead elsewhere, and the times of the file are exact.
bool FileIdentity::CanAskFile() const noexcept {
    struct stat status = {};
    struct statfs system = {};
    if (!file_ || fstat(file_.Get(), &status) != 0 || fstatfs(file_.Get(), &system) != 0) return false;
    if (status.st_dev != device_ || status.st_ino != number_) return false;
    if (std::ranges::find(kExact, static_cast<long>(system.f_type)) == std::end(kExact)) return false;
    char* const real = realpath(path_.c_str(), nullptr);
    const bool isReal = real != nullptr && path_ == real;
    free(real);
    return isReal;
}

bool FileIdentity::IsStillThere(long long now) noexcept {
    if (now < askFileUntil_) {
        struct stat status = {};
        if (fstat(file_.Get(), &status) == 0 && IsSame(status.st_ctim, changed_)) return true;
    }
    return WalkPath(now);
}

bool FileIdentity::WalkPath(long long now) noexcept {
    timespec present = {};
    clock_gettime(CLOCK_REALTIME_COARSE, &present);  // what a change gets from here on, or later
    struct stat status = {};
    if (stat(path_.c_str(), &status) != 0 || status.st_dev != device_ || status.st_ino != number_) return false;
    changed_ = status.st_ctim;
    // Small inodes of ext4, and those of its predecessors, keep whole seconds.
    const bool isSettled = changed_.tv_nsec != 0 && IsBefore(changed_, present);
    askFileUntil_ = file_ && isSettled ? now + kTrustedMicroseconds : 0;
    return true;
}

}  // namespace tk::ado
