#include "ado/persist/byte_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "ado/cursor/text.h"
#include "ado/messages.h"
#include "ado/persist/messages.h"

namespace tk::ado {

void ByteSource::Fail(std::u16string_view reason) const {
    std::u16string detail = ToUtf16(Name());
    if (!detail.empty()) detail += kColon;
    throw AdoError(ErrorNumber::ReadingFile, detail.append(reason));
}

FileSource::FileSource(std::string path) : path_(std::move(path)) {
    const auto refuse = [&](std::u16string_view reason) {
        if (file_ >= 0) ::close(file_);
        throw AdoError(ErrorNumber::OpeningFile, ToUtf16(path_) + kColon + std::u16string(reason));
    };
    // Not blocking: a pipe without a writer is refused below, not waited for.
    file_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file_ < 0) refuse(ToUtf16(std::generic_category().message(errno)));
    struct stat found = {};
    if (::fstat(file_, &found) != 0) refuse(ToUtf16(std::generic_category().message(errno)));
    if (!S_ISREG(found.st_mode)) refuse(kTextNotAFile);
    size_ = static_cast<std::uint64_t>(found.st_size);
    ::posix_fadvise(file_, 0, 0, POSIX_FADV_SEQUENTIAL);
}

FileSource::~FileSource() {
    ::close(file_);
}

std::size_t FileSource::Read(char* buffer, std::size_t size) {
    for (;;) {
        const ssize_t count = ::read(file_, buffer, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) Fail(ToUtf16(std::generic_category().message(errno)));
    }
}

void FileSource::Rewind() {
    if (::lseek(file_, 0, SEEK_SET) != 0) Fail(ToUtf16(std::generic_category().message(errno)));
}

}  // namespace tk::ado
