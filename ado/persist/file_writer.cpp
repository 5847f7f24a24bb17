#include "ado/persist/file_writer.h"

#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <random>
#include <system_error>
#include <utility>

#include "ado/cursor/text.h"
#include "ado/messages.h"
#include "ado/odbc/whole_utf8.h"
#include "ado/persist/file_calls.h"
#include "ado/persist/messages.h"

namespace tk::ado {
namespace {

constexpr mode_t kNewMode = 0666;  // less what the user's mask takes away
constexpr mode_t kPermissions = 0777;

/// A file size limit answers with a signal that ends the process; here it is to be a failed write like any other.
class SizeSignalHeld {
public:
    SizeSignalHeld() noexcept {
        sigemptyset(&signal_);
        sigaddset(&signal_, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &signal_, &before_);
    }
    ~SizeSignalHeld() {
        const int error = errno;
        if (error == EFBIG && sigismember(&before_, SIGXFSZ) == 0) {
            constexpr timespec kNow = {0, 0};
            while (sigtimedwait(&signal_, nullptr, &kNow) < 0 && errno == EINTR) {}
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        errno = error;
    }
    SizeSignalHeld(const SizeSignalHeld&) = delete;
    SizeSignalHeld& operator=(const SizeSignalHeld&) = delete;

private:
    sigset_t signal_;
    sigset_t before_;
};

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string RandomName() {
    constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::string name;
    for (int i = 0; i < 12; ++i)
        name += kLetters[random() % (sizeof kLetters - 1)];
    return name;
}

/// The system's longest name is 255 bytes; the hidden file's name is cut to fit.
std::string TemporaryName(const std::string& target) {
    constexpr std::size_t kMostOfName = 200;
    const std::string folder = FolderOf(target);
    const std::size_t slash = target.rfind('/');
    std::string name = slash == std::string::npos ? target : target.substr(slash + 1);
    if (name.size() > kMostOfName) name.resize(WholeUtf8({name.data(), kMostOfName}));  // some systems ask for UTF-8
    return folder + "/." + name + ".tk-" + RandomName();
}

}  // namespace

FileWriter::FileWriter(std::string path, Existing existing)
    : shown_(path),
      target_(std::move(path)),
      existing_(existing),
      buffer_(std::make_unique_for_overwrite<char[]>(kBuffer)) {
    struct stat found = {};
    if (::stat(target_.c_str(), &found) == 0) {
        if (existing_ == Existing::Refuse) Fail(kTextAlreadyThere);
        if (!S_ISREG(found.st_mode)) Fail(kTextNotAFile);
        if (::access(target_.c_str(), W_OK) != 0) FailSystem(errno);
        oldMode_ = found.st_mode & kPermissions;
        oldOwner_ = found.st_uid;
        oldGroup_ = found.st_gid;
        if (char* const real = ::realpath(target_.c_str(), nullptr)) {
            target_ = real;
            ::free(real);
        }
    }
    Create();
}

FileWriter::~FileWriter() {
    if (file_ >= 0) Files().close(file_);
    if (!temporary_.empty()) Files().remove(temporary_.c_str());
}

void FileWriter::Create() {
    constexpr int kAttempts = 16;
    const mode_t mode = oldMode_ ? mode_t{0600} : kNewMode;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::string name = TemporaryName(target_);
        file_ = Files().open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
        if (file_ >= 0) {
            temporary_ = std::move(name);
            return;
        }
        if (errno != EEXIST && errno != EINTR) break;
    }
    FailSystem(errno);
}

void FileWriter::Fail(std::u16string_view reason) const {
    throw AdoError(ErrorNumber::WritingFile, ToUtf16(shown_) + kColon + std::u16string(reason));
}

void FileWriter::FailSystem(int error) const {
    Fail(ToUtf16(std::generic_category().message(error)));
}

void FileWriter::Write(std::string_view bytes) {
    if (kBuffer - used_ < bytes.size()) {
        Flush();
        if (bytes.size() > kBuffer) return WriteOut(bytes.data(), bytes.size());
    }
    std::memcpy(buffer_.get() + used_, bytes.data(), bytes.size());
    used_ += bytes.size();
}

void FileWriter::Flush() {
    WriteOut(buffer_.get(), used_);
    used_ = 0;
}

void FileWriter::WriteOut(const char* data, std::size_t size) {
    constexpr std::size_t kMostUnwritten = 8 * 1024 * 1024;
    if (isDiscarding_) return;
    const SizeSignalHeld held;
    while (size != 0) {
        const ssize_t done = Files().write(file_, data, size);
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) FailSystem(errno);
        data += done;
        size -= static_cast<std::size_t>(done);
        written_ += static_cast<std::size_t>(done);
    }
    // The disk works while the rest is made, so that the end need not wait for all of it.
    if (written_ - begun_ < kMostUnwritten) return;
    ::sync_file_range(file_, static_cast<off64_t>(begun_), static_cast<off64_t>(written_ - begun_),
                      SYNC_FILE_RANGE_WRITE);
    begun_ = written_;
}

void FileWriter::Restart() {
    used_ = written_ = begun_ = 0;
    isDiscarding_ = false;
    if (Files().truncate(file_, 0) != 0 || ::lseek(file_, 0, SEEK_SET) != 0) FailSystem(errno);
}

void FileWriter::Finish() {
    Flush();
    if (oldMode_) {
        // Another owner's file stays his where the system lets us give it; where not, it is ours with his permissions.
        static_cast<void>(::fchown(file_, oldOwner_, oldGroup_) == 0);
        if (Files().changeMode(file_, *oldMode_) != 0) FailSystem(errno);
    }
    if (Files().sync(file_) != 0) FailSystem(errno);
    if (Files().close(std::exchange(file_, -1)) != 0) FailSystem(errno);
    const auto rename = existing_ == Existing::Refuse ? Files().renameToNew : Files().rename;
    if (rename(temporary_.c_str(), target_.c_str()) != 0) {
        if (existing_ == Existing::Refuse && errno == EEXIST) Fail(kTextAlreadyThere);
        FailSystem(errno);
    }
    temporary_.clear();
    SyncFolder();
}

void FileWriter::SyncFolder() const noexcept {
    // The file is in place; a folder that cannot be synced can only lose the new name, never show half a file.
    const int folder = Files().open(FolderOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (folder < 0) return;
    Files().sync(folder);
    Files().close(folder);
}

}  // namespace tk::ado
