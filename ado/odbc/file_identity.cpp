#include "ado/odbc/file_identity.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace tk::ado {
namespace {

constexpr long long kTrustedMicroseconds = 1000;
constexpr std::chrono::milliseconds kCoarsestTime{20};  // the kernel's clock for files steps by 10 ms at most

/// File systems whose rename sets the time of change of the file.
constexpr long kExact[] = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC, TMPFS_MAGIC};

bool IsSame(const timespec& first, const timespec& second) noexcept {
    return first.tv_sec == second.tv_sec && first.tv_nsec == second.tv_nsec;
}

std::chrono::system_clock::duration Age(const timespec& time) noexcept {
    return std::chrono::system_clock::now().time_since_epoch() - std::chrono::seconds(time.tv_sec) -
           std::chrono::nanoseconds(time.tv_nsec);
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
    if (file_ && isSettled_ && now - walked_ < kTrustedMicroseconds) {
        struct stat status = {};
        if (fstat(file_.Get(), &status) == 0 && IsSame(status.st_ctim, changed_)) return true;
    }
    return WalkPath(now);
}

bool FileIdentity::WalkPath(long long now) noexcept {
    struct stat status = {};
    if (stat(path_.c_str(), &status) != 0 || status.st_dev != device_ || status.st_ino != number_) return false;
    changed_ = status.st_ctim;
    isSettled_ = Age(changed_) > kCoarsestTime;
    walked_ = now;
    return true;
}

}  // namespace tk::ado
