#include "tools/tkdb/replacing_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace tk::tools {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBufferBytes = 1 << 18;

[[noreturn]] void Fail(int code) {
    throw std::system_error(code, std::generic_category());
}

void Check(bool done) {
    if (!done) Fail(errno);
}

/// What is written has to be on the disk before its name is.
void Synchronize(const fs::path& file) {
    const int handle = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    Check(handle >= 0);
    const int result = fsync(handle);
    const int code = errno;
    close(handle);
    if (result != 0) Fail(code);
}

}  // namespace

ReplacingFile::ReplacingFile(const fs::path& target) {
    // A link stays a link: what it points to is replaced.
    target_ = fs::exists(target) ? fs::canonical(target) : fs::absolute(target);
    if (fs::exists(target_) && !fs::is_regular_file(target_)) Fail(fs::is_directory(target_) ? EISDIR : EINVAL);
    if (!target_.has_filename()) Fail(EISDIR);
    std::string folder = target_.parent_path() / ".tkdb-XXXXXX";
    Check(mkdtemp(folder.data()) != nullptr);
    folder_ = folder;
    file_ = folder_ / "export";
}

ReplacingFile::~ReplacingFile() {
    if (stream_ != nullptr) std::fclose(stream_);
    std::error_code ignored;  // there is nobody left to tell
    fs::remove_all(folder_, ignored);
}

std::FILE* ReplacingFile::Open() {
    if (stream_ == nullptr) {
        stream_ = std::fopen(file_.c_str(), "wbxe");
        Check(stream_ != nullptr);
        std::setvbuf(stream_, nullptr, _IOFBF, kBufferBytes);
    }
    return stream_;
}

std::uintmax_t ReplacingFile::Size() const noexcept {
    std::uintmax_t bytes = 0;
    std::error_code code;
    for (fs::directory_iterator at(folder_, code), end; !code && at != end; at.increment(code)) {
        std::error_code gone;  // a file may be renamed while we look
        const std::uintmax_t size = at->file_size(gone);
        if (!gone) bytes += size;
    }
    return bytes;
}

void ReplacingFile::Commit() {
    if (stream_ != nullptr) {
        const bool written = std::ferror(stream_) == 0;
        const int code = errno;
        const bool closed = std::fclose(stream_) == 0;
        stream_ = nullptr;
        if (!written) Fail(code != 0 ? code : EIO);
        Check(closed);
    }
    if (fs::exists(target_)) fs::permissions(file_, fs::status(target_).permissions());
    Synchronize(file_);
    fs::rename(file_, target_);
    Synchronize(target_.parent_path());
}

}  // namespace tk::tools
