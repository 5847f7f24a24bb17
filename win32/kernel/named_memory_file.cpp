#include "win32/kernel/named_memory_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>

#include <cstdlib>

namespace tk::kernel {
namespace {

constexpr off_t kLives = off_t{1} << 40;
constexpr off_t kPreparing = kLives - 1;

bool Lock(int descriptor, off_t byte, short kind) noexcept {
    struct flock lock {};
    lock.l_type = kind;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return fcntl(descriptor, F_SETLK, &lock) == 0;
}

/// Waits up to five seconds for others who prepare the file.
bool LockPreparing(int descriptor) noexcept {
    for (int tries = 0; !Lock(descriptor, kPreparing, F_WRLCK); ++tries) {
        if (errno != EACCES && errno != EAGAIN) return false;
        if (tries == 2500) {
            errno = EBUSY;
            return false;
        }
        const timespec pause = {0, 2'000'000};
        nanosleep(&pause, nullptr);
    }
    return true;
}

}  // namespace

std::string MemoryFilePath() {
    const char* named = secure_getenv("TKKERNEL_OBJECTS");
    std::string path = named != nullptr && named[0] != 0 ? named : "/dev/shm";
    path += "/tkkernel-objects-";
    path += std::to_string(geteuid());
    path += ".1";  // the layout: a library with another one uses a file of its own
    return path;
}

Opened OpenMemoryFile(const std::string& path, bool (*prepare)(int descriptor), system::FileDescriptor& file) {
    file = system::FileDescriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file || !LockPreparing(file.Get())) return Opened::kFailed;
    struct stat facts {};
    if (fstat(file.Get(), &facts) != 0) return Opened::kFailed;
    if (facts.st_nlink == 0) return Opened::kRetry;
    // The folder is everybody's: the file must not be.
    if (!S_ISREG(facts.st_mode) || facts.st_uid != geteuid() || (facts.st_mode & 077) != 0) {
        errno = EACCES;
        return Opened::kFailed;
    }
    const bool prepared = prepare(file.Get());
    const int error = errno;
    Lock(file.Get(), kPreparing, F_UNLCK);
    errno = error;
    return prepared ? Opened::kDone : Opened::kFailed;
}

void RemoveMemoryFile(const std::string& path, int descriptor) noexcept {
    struct stat named {};
    struct stat held {};
    if (stat(path.c_str(), &named) == 0 && fstat(descriptor, &held) == 0 && named.st_ino == held.st_ino &&
        named.st_dev == held.st_dev) {
        unlink(path.c_str());
    }
}

bool ClaimLife(int descriptor, std::uint32_t process) noexcept {
    return Lock(descriptor, kLives + process, F_WRLCK);
}

bool Lives(int descriptor, std::uint32_t process) noexcept {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = kLives + process;
    lock.l_len = 1;
    return fcntl(descriptor, F_GETLK, &lock) != 0 || lock.l_type != F_UNLCK;
}

}  // namespace tk::kernel
